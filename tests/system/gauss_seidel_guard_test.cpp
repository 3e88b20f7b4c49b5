// GaussSeidel_Iter where a row has no usable diagonal, or where the iterate stops being finite.
#include "system_test_util.h"

#include <cmath>

static bool ShowsNoSweep(const std::string &text) {
    return text.find("Number of iter. :   0\r\n") != std::string::npos &&
           text.find("Norm of error   :   0.000000e+00") != std::string::npos;
}

// A row without cells used to be read through NULL; a diagonal of 0.0, infinity or NaN gave
// NaN and claimed convergence (NaN hides from the norm). Now: -1, no sweep, vX as it was.
TEST(CSystSpMatGaussSeidel, NoUsableDiagonalFailsWithoutSweeping) {
    ReportRecorder reports;
    for (bool bSym : {false, true}) {
        SymFlag sym(bSym);
        for (double dDiag : {-1.0, 0.0, HUGE_VAL, -HUGE_VAL, std::nan("")}) {
            CSystSpMat A(3);
            A.Add(0, 0, 2);
            A.Add(1, 1, 2);
            if (dDiag != -1.0) { // -1.0: row 2 stays without cells
                A.Add(1, 2, 1);
                A.Add(2, 2, 2);
                A.m_pRowTable[1].m_pFirstCell->m_dValue = dDiag;
            }
            CVector F(3, true, 1.0), X(3, true, 5.0);
            EXPECT_EQ(A.GaussSeidel_Iter(F, X, 1e-12, 10), -1) << bSym << " " << dDiag;
            EXPECT_TRUE(X == 5.0);
            EXPECT_TRUE(ShowsNoSweep(reports.Texts().back())) << reports.Texts().back();
        }
    }
    // Full storage: a row whose cells all lie left of its diagonal has none to divide by;
    // a first cell right of the diagonal is taken as the diagonal, as before.
    SymFlag sym(false);
    CSystSpMat L(2), U(2);
    L.Add(0, 0, 2);
    L.Add(1, 0, 1);
    U.Add(0, 1, 2);
    U.Add(1, 1, 4);
    CVector F(2, true, 4.0), X(2, true, 0.0), Y(2, true, 0.0);
    EXPECT_EQ(L.GaussSeidel_Iter(F, X, 1e-12, 10), -1);
    EXPECT_TRUE(X == 0.0);
    EXPECT_EQ(U.GaussSeidel_Iter(F, Y, 1e-12, 10), 1);
    EXPECT_TRUE(Y[0] == 2.0 && Y[1] == 1.0);
}

TEST(CSystSpMatGaussSeidel, NonFiniteIterateIsNoSolution) {
    ReportRecorder reports;
    for (bool bSym : {false, true}) {
        SymFlag sym(bSym);
        CSystSpMat A(2);
        A.Add(0, 0, 2);
        A.Add(1, 1, 2);
        CVector F(2, true, 1.0), X(2, true, 0.0);
        F[1] = std::nan("");
        EXPECT_EQ(A.GaussSeidel_Iter(F, X, 1e-12, 10), -1);
        EXPECT_TRUE(X[0] == 0.5 && std::isnan(X[1]));
    }
}
