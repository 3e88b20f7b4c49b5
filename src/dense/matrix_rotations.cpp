// Rotation vectors to quaternions and rotation matrices; plain-angle rotation matrices.
#include "dense/matrix.h"

#include <cmath>

double CVector::VectToQuat(double *pVector, double *pQuat) {
    double t =
        std::sqrt(pVector[0] * pVector[0] + pVector[1] * pVector[1] + pVector[2] * pVector[2]);
    double c = std::cos(t / 2);
    // sin(t/2)/t by its series near 0, where the quotient loses its digits
    double f;
    if (t < 0.0001) {
        double t2 = t * t;
        f = 0.5 - t2 * 0.0625 * 0.3333333333333333 + t2 * t2 * 0.00026041666666666666 -
            t2 * t2 * t2 * 1.5500992063492063e-06;
    } else {
        f = std::sin(t / 2) / t;
    }
    for (int i = 0; i < 3; i++)
        pQuat[i] = f * pVector[i];
    double n = std::sqrt(pQuat[0] * pQuat[0] + pQuat[1] * pQuat[1] + pQuat[2] * pQuat[2] + c * c);
    for (int i = 0; i < 3; i++)
        pQuat[i] /= n;
    return c / n;
}

// This matrix becomes the rotation about v by the length of v.
CMatrix &CMatrix::MakeRotMat(CVector &v) {
    double q[3];
    double q0 = CVector::VectToQuat(v.m_pVector, q);
    double q1 = q[0], q2 = q[1], q3 = q[2];
    Allocate(3, 3, false, 0.0);
    double *a = m_pVector;
    a[0] = 2 * (q1 * q1 + q0 * q0) - 1;
    a[4] = 2 * (q2 * q2 + q0 * q0) - 1;
    a[8] = 2 * (q3 * q3 + q0 * q0) - 1;
    a[1] = 2 * (q2 * q1 - q3 * q0);
    a[3] = 2 * (q2 * q1 + q3 * q0);
    a[2] = 2 * (q3 * q1 + q2 * q0);
    a[6] = 2 * (q3 * q1 - q2 * q0);
    a[5] = 2 * (q3 * q2 - q1 * q0);
    a[7] = 2 * (q3 * q2 + q1 * q0);
    return *this;
}

void CMatrix::RotMat(double dAngle1, double dAngle2) {
    double s = std::sin(dAngle1), c = std::cos(dAngle1);
    double S = std::sin(dAngle2), C = std::cos(dAngle2);
    Allocate(3, 3, false, 0.0);
    double *a = m_pVector;
    a[0] = ((1 - C) * s * s + C + (C - 1) * s * s) * c;
    a[1] = ((C - 1) * c * c - (s * s + C - s * s * C)) * s;
    a[2] = c * S;
    a[3] = (c * c + C - c * c * C + (C - 1) * c * c) * s;
    a[4] = (c * c + C - c * c * C - (C - 1) * s * s) * c;
    a[5] = -s * S;
    a[6] = (s * s - c * c) * S;
    a[7] = 2 * c * S * s;
    a[8] = C;
}

void CMatrix::RotMat2D(CMatrix &R, double dAngle, bool bTransposed) {
    double s = std::sin(dAngle), c = std::cos(dAngle);
    R.Allocate(2, 2, false, 0.0);
    double *a = R.m_pVector;
    a[0] = c;
    a[3] = c;
    a[1] = bTransposed ? s : -s;
    a[2] = bTransposed ? -s : s;
}
