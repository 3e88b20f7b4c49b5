// CSystSpMat: prescribed values on full and on upper storage.
#include "system_test_util.h"

#include "dense/matrix.h"

typedef std::vector<Cell> Cells_t;

// {{2, -1}, {-1, 2}} in full storage, or its upper triangle.
static void Fill2(CSystSpMat &m, bool bFull) {
    m.Add(0, 0, 2.0);
    m.Add(0, 1, -1.0);
    if (bFull)
        m.Add(1, 0, -1.0);
    m.Add(1, 1, 2.0);
}

static std::vector<double> Column(CMatrix &B, int k) {
    std::vector<double> v;
    for (int i = 0; i < B.GetRows(); i++)
        v.push_back(B[i][k]);
    return v;
}

TEST(CSystSpMatBCs, UnifyAndZero2EliminatesTheColumnInFullStorage) {
    CSystSpMat m(2);
    Fill2(m, true);
    CVector dofs(1, true, 1.0), values(1, true, 3.0);
    CMatrix B(2, 2, true, 1.0); // two right-hand sides, the same prescribed value
    m.UnifyAndZero2(dofs, values, &B);
    EXPECT_EQ(Cells(m), (Cells_t{{0, 0, 2.0}, {1, 1, 1.0}}));
    EXPECT_EQ(Column(B, 0), (std::vector<double>{4.0, 3.0}));
    EXPECT_EQ(Column(B, 1), (std::vector<double>{4.0, 3.0}));
    double dTime;
    ReportRecorder reports;
    EXPECT_EQ(m.LU_Solve(&B, dTime), 1);
    EXPECT_EQ(Column(B, 0), (std::vector<double>{2.0, 3.0}));

    // A number given twice: the row ends the same, with the later value in B.
    CSystSpMat t(2);
    Fill2(t, true);
    CVector twice(2, true, 1.0), vals(2);
    vals[0] = 3.0;
    vals[1] = 5.0;
    CMatrix C(2, 1, true, 1.0);
    t.UnifyAndZero2(twice, vals, &C);
    EXPECT_EQ(Cells(t), (Cells_t{{0, 0, 2.0}, {1, 1, 1.0}}));
    EXPECT_EQ(Column(C, 0), (std::vector<double>{4.0, 5.0}));
}

TEST(CSystSpMatBCs, SymUnifyAndZeroWithZeroValues) {
    CSystSpMat m(2);
    Fill2(m, false);
    CVector dofs(1, true, 1.0), values(1, true, 0.0);
    CMatrix B(2, 1);
    B[0][0] = 7.0;
    B[1][0] = 9.0;
    m.SymUnifyAndZero(dofs, values, &B);
    EXPECT_EQ(Cells(m), (Cells_t{{0, 0, 2.0}, {1, 1, 1.0}}));
    EXPECT_EQ(Column(B, 0), (std::vector<double>{7.0, 0.0}));
}

TEST(CSystSpMatBCs, SymUnifyAndZeroWithAValueCorrectsOnlyTheRowsBelowIt) {
    // Upper storage of a 3 by 3 chain; prescribing row 1 to 2.0 corrects row 0 by its cell
    // (0,1), while (1,2) goes with row 1 in step 1 and row 2 gets nothing.
    CSystSpMat m(3);
    m.Add(0, 0, 4.0);
    m.Add(0, 1, -1.0);
    m.Add(1, 1, 4.0);
    m.Add(1, 2, -1.0);
    m.Add(2, 2, 4.0);
    CVector dofs(1, true, 1.9), values(1, true, 2.0); // the number is truncated
    CMatrix B(3, 1, true, 1.0);
    m.SymUnifyAndZero(dofs, values, &B);
    EXPECT_EQ(Cells(m), (Cells_t{{0, 0, 4.0}, {1, 1, 1.0}, {2, 2, 4.0}}));
    EXPECT_EQ(Column(B, 0), (std::vector<double>{3.0, 2.0, 1.0}));
}

TEST(CSystSpMatBCs, PrescribedRowWithoutCellsGetsAFreshOne) {
    CSystSpMat m(3);
    m.Add(0, 0, 1.0);
    m.Add(0, 2, 1.0);
    CVector dofs(1, true, 2.0), values(1, true, 0.0);
    CMatrix B(3, 1, true, 1.0);
    m.SymUnifyAndZero(dofs, values, &B);
    EXPECT_EQ(Cells(m), (Cells_t{{0, 0, 1.0}, {2, 2, 1.0}}));
    CSystSpMat f(2);
    CMatrix C(2, 1, true, 1.0);
    CVector one(1, true, 0.0), val(1, true, 4.0);
    f.UnifyAndZero2(one, val, &C);
    EXPECT_EQ(Cells(f), (Cells_t{{0, 0, 1.0}}));
    EXPECT_EQ(Column(C, 0), (std::vector<double>{4.0, 1.0}));

    // No prescribed numbers: nothing changes.
    CVector none;
    f.UnifyAndZero2(none, none, &C);
    f.SymUnifyAndZero(none, none, &C);
    EXPECT_EQ(Cells(f), (Cells_t{{0, 0, 1.0}}));
    EXPECT_EQ(Column(C, 0), (std::vector<double>{4.0, 1.0}));
}

TEST(CSystSpMatBCs, SymHandleBCsReachesBothTriangles) {
    CSystSpMat m(2);
    Fill2(m, false);
    CMatrix bc(1, 2);
    bc[0][0] = 1.0;
    bc[0][1] = 3.0;
    CMatrix rhs(2, 1, true, 1.0);
    m.SymHandleBCs(bc, rhs);
    EXPECT_EQ(Column(rhs, 0), (std::vector<double>{4.0, -5.0}));
    EXPECT_EQ(Cells(m), (Cells_t{{0, 0, 2.0}, {1, 1, 1.0}}));
}

TEST(CSystSpMatBCs, SymHandleBCsServesEveryRightHandSideWithItsOwnValue) {
    // Upper storage of {{4,-1,-1},{-1,4,-1},{-1,-1,4}}; number 0 prescribed to 1 and 10.
    CSystSpMat m(3);
    for (int i = 0; i < 3; i++)
        for (int j = i; j < 3; j++)
            m.Add(i, j, i == j ? 4.0 : -1.0);
    CMatrix bc(1, 3);
    bc[0][0] = 0.0;
    bc[0][1] = 1.0;
    bc[0][2] = 10.0;
    CMatrix rhs(3, 2, true, 0.0);
    m.SymHandleBCs(bc, rhs);
    // Rows 1 and 2 reach the number through (0,1) and (0,2) of the prescribed row.
    EXPECT_EQ(Column(rhs, 0), (std::vector<double>{-4.0, 1.0, 1.0}));
    EXPECT_EQ(Column(rhs, 1), (std::vector<double>{-40.0, 10.0, 10.0}));
    EXPECT_EQ(Cells(m), (Cells_t{{0, 0, 1.0}, {1, 1, 4.0}, {1, 2, -1.0}, {2, 2, 4.0}}));

    // A prescribed row without a diagonal cell ends empty.
    CSystSpMat e(2);
    e.Add(0, 1, 2.0);
    e.Add(1, 1, 1.0);
    CMatrix bc0(1, 2, true, 0.0);
    CMatrix r0(2, 1, true, 0.0);
    e.SymHandleBCs(bc0, r0);
    EXPECT_EQ(Cells(e), (Cells_t{{1, 1, 1.0}}));
}
