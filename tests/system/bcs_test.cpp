// CSystSpMat: prescribed values on full and on upper storage.
#include "system_test_util.h"

// {{2, -1}, {-1, 2}}: both triangles, or the upper one.
static const std::vector<double> s_Full = {2, -1, -1, 2}, s_Upper = {2, -1, 0, 2};

TEST(CSystSpMatBCs, UnifyAndZero2EliminatesTheColumnInFullStorage) {
    CSystSpMat m(2), t(2), e(2);
    Fill(m, 2, s_Full);
    Fill(t, 2, s_Full);
    CVector one(1, true, 1.0), three(1, true, 3.0), twice(2, true, 1.0), later(2, true, 3.0);
    later[1] = 5.0;
    CMatrix B(2, 2, true, 1.0), C(2, 1, true, 1.0); // B's two columns get the same value
    m.UnifyAndZero2(one, three, &B);
    EXPECT_EQ(Dump(m), "(0,0)2 (1,1)1");
    EXPECT_EQ(Column(B, 0), (std::vector<double>{4.0, 3.0}));
    EXPECT_EQ(Column(B, 1), Column(B, 0));
    // A number given twice: the row ends the same, with the later value in B.
    t.UnifyAndZero2(twice, later, &C);
    EXPECT_EQ(Dump(t), "(0,0)2 (1,1)1");
    EXPECT_EQ(Column(C, 0), (std::vector<double>{4.0, 5.0}));
    // An empty row gets a fresh cell; no numbers change nothing.
    CVector none;
    e.UnifyAndZero2(one, three, &C);
    e.UnifyAndZero2(none, none, &C);
    e.SymUnifyAndZero(none, none, &C);
    EXPECT_EQ(Dump(e), "(1,1)1");
    EXPECT_EQ(Column(C, 0), (std::vector<double>{4.0, 3.0}));
}

TEST(CSystSpMatBCs, SymUnifyAndZeroKeepsThePrescribedValues) {
    // A zero value: row 1 becomes the identity, (0,1) goes, B[1] is 0 and B[0] stays.
    CSystSpMat m(2), c(3), e(2);
    Fill(m, 2, s_Upper);
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
    CSystSpMat m(2), e(2);
    Fill(m, 2, s_Upper);
    CMatrix bc(1, 2, true, 1.0), rhs(2, 1, true, 1.0);
    bc[0][1] = 3.0;
    m.SymHandleBCs(bc, rhs);
    EXPECT_EQ(Column(rhs, 0), (std::vector<double>{4.0, -5.0}));
    EXPECT_EQ(Dump(m), "(0,0)2 (1,1)1");
    // A prescribed row without a diagonal cell ends empty.
    Fill(e, 2, {0, 2, 0, 1});
    bc[0][0] = 0.0;
    e.SymHandleBCs(bc, rhs);
    EXPECT_EQ(Dump(e), "(1,1)1");
}
