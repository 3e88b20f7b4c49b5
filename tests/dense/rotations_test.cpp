// Rotation vectors, quaternions and rotation matrices.
#include "dense_test.h"

#include <cmath>

static const double s_dPi = 3.14159265358979323846;

// Max |R^T R - I| and the determinant of a 3 by 3 matrix.
static void OrthonormalityOf(CMatrix &R, double &dOffIdentity, double &dDet) {
    dOffIdentity = 0.0;
    for (int i = 0; i < 3; i++)
        for (int j = 0; j < 3; j++) {
            double d = 0.0;
            for (int k = 0; k < 3; k++)
                d += R.GetValue(k, i) * R.GetValue(k, j);
            dOffIdentity = std::fmax(dOffIdentity, std::fabs(d - (i == j)));
        }
    double *a = R.m_pVector;
    dDet = a[0] * (a[4] * a[8] - a[5] * a[7]) - a[1] * (a[3] * a[8] - a[5] * a[6]) +
           a[2] * (a[3] * a[7] - a[4] * a[6]);
}

TEST(Rotations, QuaternionOfZeroSeriesAndClosedForm) {
    double v0[3] = {0, 0, 0}, q[3];
    EXPECT_EQ(CVector::VectToQuat(v0, q), 1.0);
    EXPECT_EQ(q[0], 0.0);
    EXPECT_EQ(q[1], 0.0);
    EXPECT_EQ(q[2], 0.0);

    double vHalfPi[3] = {0, 0, s_dPi / 2};
    EXPECT_NEAR(CVector::VectToQuat(vHalfPi, q), std::cos(s_dPi / 4), 1e-15);
    EXPECT_NEAR(q[2], std::sin(s_dPi / 4), 1e-15);

    // pi about x: scalar part 0, vector part the axis
    double vPi[3] = {s_dPi, 0, 0};
    EXPECT_NEAR(CVector::VectToQuat(vPi, q), 0.0, 1e-15);
    EXPECT_NEAR(q[0], 1.0, 1e-15);

    // both sides of the series' threshold agree with sin(t/2)/t to rounding
    for (double t : {0.00009, 0.0001}) {
        double v[3] = {t * 0.6, 0, t * 0.8};
        double q0 = CVector::VectToQuat(v, q);
        EXPECT_NEAR(q0, std::cos(t / 2), 1e-16);
        EXPECT_NEAR(q[2], 0.8 * std::sin(t / 2), 1e-19);
        EXPECT_NEAR(q0 * q0 + q[0] * q[0] + q[1] * q[1] + q[2] * q[2], 1.0, 1e-15);
    }
}

TEST(Rotations, MakeRotMatIsAProperRotationAboutTheVector) {
    CMatrix R(1, 1);
    CVector v = MakeVector({0, 0, 0});
    R.MakeRotMat(v);
    EXPECT_EQ(Flat(R), V({1, 0, 0, 0, 1, 0, 0, 0, 1}));

    v = MakeVector({0, 0, s_dPi / 2});
    EXPECT_EQ(&R.MakeRotMat(v), &R);
    EXPECT_NEAR(R.GetValue(0, 1), -1.0, 1e-15); // x goes to y, counter-clockwise
    EXPECT_NEAR(R.GetValue(1, 0), 1.0, 1e-15);

    for (V axis : {V{0.3, -1.2, 2.0}, V{-2.5, 0.1, 0.4}, V{1e-5, 2e-5, -1e-5}}) {
        v = MakeVector(axis);
        R.MakeRotMat(v);
        double dOff, dDet;
        OrthonormalityOf(R, dOff, dDet);
        EXPECT_LT(dOff, 1e-14);
        EXPECT_NEAR(dDet, 1.0, 1e-14);
        // the axis is left where it is
        for (int i = 0; i < 3; i++)
            EXPECT_NEAR(R.GetValue(i, 0) * axis[0] + R.GetValue(i, 1) * axis[1] +
                            R.GetValue(i, 2) * axis[2],
                        axis[i], 1e-14);
    }
}

TEST(Rotations, PlainAngleMatrices) {
    double a = 0.7, s = std::sin(a), c = std::cos(a);
    CMatrix R;
    R.RotMat(a, 0.0); // about the third axis
    V about3 = Flat(R);
    V expected3 = {c, -s, 0, s, c, 0, 0, 0, 1};
    for (int k = 0; k < 9; k++)
        EXPECT_NEAR(about3[k], expected3[k], 1e-15) << k;
    R.RotMat(0.0, a); // about the second axis
    V about2 = Flat(R);
    V expected2 = {c, 0, s, 0, 1, 0, -s, 0, c};
    for (int k = 0; k < 9; k++)
        EXPECT_NEAR(about2[k], expected2[k], 1e-15) << k;

    CMatrix P(5, 5), T;
    CMatrix::RotMat2D(P, a, false);
    CMatrix::RotMat2D(T, a, true);
    EXPECT_EQ(Flat(P), V({c, -s, s, c}));
    EXPECT_EQ(Flat(T), V({c, s, -s, c}));
}
