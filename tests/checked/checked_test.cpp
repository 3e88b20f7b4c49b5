// The checked build: each diagnosed misuse throws CInvalidArgException naming the call and
// the offending value, before anything is written. Skipped unless FEMMAT_CHECKED is on.
#include "common/femtest.h"
#include "dense/matrix.h"
#include "skyline/skylinematrix.h"
#include "system/systspmat.h"

#include <cmath>
#include <functional>

namespace {

class Checked : public ::testing::Test {
protected:
    void SetUp() override {
#ifndef FEMMAT_CHECKED
        GTEST_SKIP() << "built without FEMMAT_CHECKED";
#endif
    }
};

// The message of the CInvalidArgException that f throws, or "" when it throws none.
std::string Misuse(const std::function<void()> &f) {
    try {
        f();
    } catch (CInvalidArgException &e) {
        return e.GetMessage();
    }
    return "";
}

#define EXPECT_MISUSE(call, text) EXPECT_EQ(Misuse([&] { call; }), text)

} // namespace

TEST_F(Checked, DofListsOutOfRangeOrRepeated) {
    ReportRecorder reports;
    CReorderMat g(1);
    g.Alloc(3);
    LONG bad[] = {0, 3}, twice[] = {2, -1, 1, 2}, fine[] = {0, -5, 2};
    EXPECT_MISUSE(g.InsertDOFs(bad, 0, 2),
                  "CReorderMat::InsertDOFs: DOF 3 (entry 1) is not below the size 3");
    EXPECT_MISUSE(g.InsertDOFs(twice, 0, 4),
                  "CReorderMat::InsertDOFs: DOF 2 stands twice in one element (entries 0 and 3)");
    EXPECT_MISUSE(g.InsertDOFs(bad, 2, 2), ""); // a pass that does nothing
    EXPECT_MISUSE(g.InsertDOFs(fine, 0, 3), "");
    EXPECT_EQ(g.m_pRowSizes[0] + g.m_pRowSizes[1] + g.m_pRowSizes[2], 2);

    double e[16] = {1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1};
    CVector v(3, true, 0.0);
    CMatrix m(3, 2, true, 0.0);
    CSparseMatrix sp;
    CSystSpMat sys(3);
    CSkylineMatrix sky;
    int sizes[] = {3, 3};
    ASSERT_TRUE(sky.Allocate(sizes, 2));
    EXPECT_MISUSE(v.AddValues(bad, e, 2),
                  "CVector::AddValues: DOF 3 (entry 1) is not below the size 3");
    EXPECT_MISUSE(m.AddValues(fine, e, 3),
                  "CMatrix::AddValues: DOF 2 (entry 2) is not below the size 2");
    EXPECT_MISUSE(sp.AddValues(twice, e, 4),
                  "CSparseMatrix::AddValues: DOF 2 stands twice in one element (entries 0 and 3)");
    EXPECT_MISUSE(sys.AddValues(bad, e, 2),
                  "CSystSpMat::AddValues: DOF 3 (entry 1) is not below the size 3");
    EXPECT_MISUSE(sky.AddValues(bad, e, 2),
                  "CSkylineMatrix::AddValues: DOF 3 (entry 1) is not below the size 3");
    // Repeats are fine in dense and skyline storage, which sum them correctly; nothing was
    // written.
    EXPECT_MISUSE(v.AddValues(twice, e, 4), "");
    EXPECT_TRUE(v[2] == 2.0 && v[1] == 1.0 && v[0] == 0.0);
    EXPECT_EQ(sp.GetFirstRow(), nullptr);
    EXPECT_EQ(sky.m_pValues[sky.m_nValues - 1], 0.0);
}

TEST_F(Checked, PrescribedValues) {
    CSystSpMat A(3);
    A.Add(0, 0, 1);
    A.Add(1, 1, 1);
    A.Add(2, 2, 1);
    CMatrix B(3, 1, true, 0.0), shortB(2, 1, true, 0.0);
    CVector one(1, true, 1.0), two(2, true, 0.0), dofs(1, true, 3.0), nan(1, true, NAN);
    CVector notAMatrix(3, true, 0.0);
    EXPECT_MISUSE(A.SymUnifyAndZero(dofs, one, &B),
                  "CSystSpMat::SymUnifyAndZero: prescribed DOF 3 is outside 0 to 2");
    EXPECT_MISUSE(A.UnifyAndZero2(nan, one, &B),
                  "CSystSpMat::UnifyAndZero2: prescribed DOF nan is outside 0 to 2");
    EXPECT_MISUSE(A.SymUnifyAndZero(two, one, &B),
                  "CSystSpMat::SymUnifyAndZero: the number of values is 1, below the 2 needed");
    EXPECT_MISUSE(
        A.SymUnifyAndZero(one, one, &shortB),
        "CSystSpMat::SymUnifyAndZero: the right-hand side has 2 rows, the matrix needs 3");
    EXPECT_MISUSE(A.UnifyAndZero2(one, one, &notAMatrix),
                  "CSystSpMat::UnifyAndZero2: the right-hand side is a CVector, not a CMatrix");
    CMatrix bc(1, 3, true, -1.0), rhs(3, 1, true, 0.0);
    EXPECT_MISUSE(A.SymHandleBCs(bc, rhs),
                  "CSystSpMat::SymHandleBCs: prescribed DOF -1 is outside 0 to 2");
    bc[0][0] = 2.9; // taken as 2
    CMatrix rhs2(3, 2, true, 0.0);
    EXPECT_MISUSE(A.SymHandleBCs(bc, rhs2), "");
    bc[0][0] = 1.0;
    EXPECT_MISUSE(A.SymHandleBCs(bc, rhs), "CSystSpMat::SymHandleBCs: the number of right-hand "
                                           "sides is 1, below the 2 needed");
    CSparseMatrix S;
    S.Add(4, 4, 1.0);
    EXPECT_MISUSE(S.UnifyAndZero(-1), "CSparseMatrix::UnifyAndZero: row -1 is negative");
    EXPECT_MISUSE(
        S.UnifyAndZero(1, 2.0, &B),
        "CSparseMatrix::UnifyAndZero: the right-hand side has 3 rows, the matrix needs 5");
    EXPECT_MISUSE(S.UnifyAndZero(1, 2.0, NULL), "");
}

TEST_F(Checked, RightHandSidesTooShort) {
    ReportRecorder reports;
    double dTime;
    CMatrix B(2, 1, true, 1.0);
    CSparseMatrix S;
    S.Add(0, 0, 4.0);
    S.Add(0, 2, 1.0); // the last column reaches row 2 of B
    S.Add(1, 1, 4.0);
    for (const char *psz : {"ForwSub", "BackwSub", "DiagMult", "Cholesky_Solve", "LU_Solve"}) {
        std::string call = psz;
        std::string text = Misuse([&] {
            if (call == "ForwSub")
                S.ForwSub(&B, NULL, -1);
            else if (call == "BackwSub")
                S.BackwSub(&B, NULL, 1);
            else if (call == "DiagMult")
                S.DiagMult(&B, NULL, -2);
            else if (call == "Cholesky_Solve")
                S.Cholesky_Solve(&B, dTime);
            else
                S.LU_Solve(&B, dTime);
        });
        EXPECT_EQ(text, "CSparseMatrix::" + call +
                            ": the right-hand side has 2 rows, the matrix needs 3");
    }
    // Nothing was factorised.
    EXPECT_EQ(*S.GetValue(0, 2), 1.0);

    CSkylineMatrix K;
    CMatrix noColumns;
    int sizes[] = {3, 3};
    ASSERT_TRUE(K.Allocate(sizes, 2));
    K = 2.0;
    CVector vx(3, true, 0.0);
    EXPECT_MISUSE(K.Cholesky_Solve(&B, dTime),
                  "CSkylineMatrix::Cholesky_Solve: the right-hand side has 2 rows, the matrix "
                  "needs 3");
    EXPECT_MISUSE(K.ForwSub(&vx, NULL, 1),
                  "CSkylineMatrix::ForwSub: the right-hand side is a CVector, not a CMatrix");
    EXPECT_MISUSE(K.BackwSub(NULL, NULL, 1), "CSkylineMatrix::BackwSub: no right-hand side");
    EXPECT_MISUSE(K.DiagMult(&noColumns, NULL, -2), ""); // no columns: nothing to reach
    EXPECT_EQ(K.m_pValues[0], 2.0);

    // Gauss-Seidel: vX shorter than vF, vF longer than the matrix.
    CVector f3(3, true, 1.0), x2(2, true, 0.0), f4(4, true, 1.0), x4(4, true, 0.0);
    CSystSpMat A(3);
    EXPECT_MISUSE(A.GaussSeidel_Iter(f3, x2, 1e-9, 5),
                  "CSystSpMat::GaussSeidel_Iter: the size of vX is 2, below the 3 needed");
    EXPECT_MISUSE(A.GaussSeidel_Iter(f4, x4, 1e-9, 5),
                  "CSystSpMat::GaussSeidel_Iter: the number of rows is 3, below the 4 needed");
    EXPECT_MISUSE(K.GaussSeidel_Iter(f3, x2, 1e-9, 5),
                  "CSkylineMatrix::GaussSeidel_Iter: the size of x is 2, below the 3 needed");
    EXPECT_MISUSE(K.GaussSeidel_Iter(f4, x4, 1e-9, 5),
                  "CSkylineMatrix::GaussSeidel_Iter: the order of the matrix is 3, below the 4 "
                  "needed");
    EXPECT_TRUE(reports.Texts().empty());
}
