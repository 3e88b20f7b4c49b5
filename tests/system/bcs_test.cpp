// CSystSpMat: prescribed values on full and on upper storage.
#include "system_test_util.h"

TEST(CSystSpMatBCs, UnifyAndZero2EliminatesTheColumnInFullStorage) {
    // {{2, -1}, {-1, 2}}, number 1 with value 3: solving gives {2, 3}.
    CSystSpMat m(2), e(2);
    Fill(m, 2, {2, -1, -1, 2});
    CVector one(1, true, 1.0), three(1, true, 3.0);
    CMatrix B(2, 1, true, 1.0);
    m.UnifyAndZero2(one, three, &B);
    EXPECT_EQ(Dump(m), "(0,0)2 (1,1)1");
    EXPECT_EQ(Column(B, 0), (std::vector<double>{4.0, 3.0}));
    // An empty row gets a fresh cell.
    e.UnifyAndZero2(one, three, &B);
    EXPECT_EQ(Dump(e), "(1,1)1");
}

TEST(CSystSpMatBCs, SymUnifyAndZeroKeepsThePrescribedValues) {
    // A zero value: row 1 becomes the identity, (0,1) goes, B[1] is 0 and B[0] stays.
    CSystSpMat m(2), c(3), e(2);
    Fill(m, 2, {2, -1, 0, 2});
    CVector one(1, true, 1.0), zero(1, true, 0.0), truncated(1, true, 1.9), two(1, true, 2.0);
    CMatrix B(2, 1, true, 7.0), C(3, 1, true, 1.0);
    m.SymUnifyAndZero(one, zero, &B);
    EXPECT_EQ(Dump(m), "(0,0)2 (1,1)1");
    EXPECT_EQ(Column(B, 0), (std::vector<double>{7.0, 0.0}));
    // A value on a chain: row 0 loses (0,1) and is corrected; (1,2) goes with row 1, so
    // row 2 is not; B[1] keeps the value.
    Fill(c, 3, {4, -1, 0, 0, 4, -1, 0, 0, 4});
    c.SymUnifyAndZero(truncated, two, &C);
    EXPECT_EQ(Dump(c), "(0,0)4 (1,1)1 (2,2)4");
    EXPECT_EQ(Column(C, 0), (std::vector<double>{3.0, 2.0, 1.0}));
    // An empty row gets a fresh cell.
    e.SymUnifyAndZero(one, zero, &B);
    EXPECT_EQ(Dump(e), "(1,1)1");
}

TEST(CSystSpMatBCs, SymHandleBCsReachesBothTriangles) {
    // Upper {{2, -1}, {., 2}}, number 1 with 3 for the first right-hand side, 1 for the
    // second; the prescribed rows of the right-hand sides are left to the caller.
    CSystSpMat m(2), e(2);
    Fill(m, 2, {2, -1, 0, 2});
    CMatrix bc(1, 3, true, 1.0), rhs(2, 2, true, 1.0);
    bc[0][1] = 3.0;
    m.SymHandleBCs(bc, rhs);
    EXPECT_EQ(Dump(m), "(0,0)2 (1,1)1");
    EXPECT_EQ(Column(rhs, 0), (std::vector<double>{4.0, -5.0}));
    EXPECT_EQ(Column(rhs, 1), (std::vector<double>{2.0, -1.0}));
    // A prescribed row without a diagonal cell ends empty.
    Fill(e, 2, {0, 2, 0, 1});
    bc[0][0] = 0.0;
    e.SymHandleBCs(bc, rhs);
    EXPECT_EQ(Dump(e), "(1,1)1");
}
