// Test matrices: random forms, triangular patterns, well-conditioned permutations, Dev.
#include "dense_test.h"
#include "platform/afx.h"

TEST(Generators, RandMatFormsAndRanges) {
    CMatrix M;
    M.RandMat(3, 3, 5.0, 5.0, 0);
    EXPECT_EQ(Flat(M), V(9, 5.0));
    M.RandMat(2, 3, 1.0, 0.0, 0);
    for (double d : Flat(M))
        EXPECT_TRUE(d >= 0.0 && d <= 1.0);

    // Which elements get values, per form; a range above 0 tells them from the zeros.
    struct {
        int nForm;
        bool (*pTaken)(int, int);
    } forms[] = {{1, [](int i, int j) { return j <= i; }},
                 {2, [](int i, int j) { return j >= i; }},
                 {-1, [](int i, int j) { return j < i; }},
                 {-2, [](int i, int j) { return j > i; }}};
    for (auto &f : forms) {
        M.RandMat(3, 4, 2.0, 1.0, f.nForm);
        ASSERT_EQ(M.m_nRows, 3);
        for (int i = 0; i < 3; i++)
            for (int j = 0; j < 4; j++)
                EXPECT_EQ(M.GetValue(i, j) >= 1.0, f.pTaken(i, j)) << f.nForm << " " << i << j;
    }
    // The seed is the time: a fixed time gives fixed values.
    AfxTimeSource pfnOld = AfxSetTimeSource([]() -> time_t { return 12345; });
    M.RandMat(2, 2, 1.0, 0.0, 0);
    EXPECT_EQ(Flat(M),
              V({0.2314523758659627, 0.5848567155980102, 0.7872249519333476, 0.6752220221564379}));
    M.RandMat(3, 3, 2.0, -1.0, 1);
    EXPECT_EQ(Flat(M), V({-0.30564287240211185, 0, 0, 0.7545701467940307, 1.3616748558000427, 0,
                          1.0256660664693138, -0.46641438032166505, 1.1428571428571428}));
    AfxSetTimeSource(pfnOld);

    CMatrix before = M;
    M.RandMat(3, 3, 1.0, 0.0, 5);
    EXPECT_EQ(Flat(M), Flat(before));
}

TEST(Generators, TriangularPatternsStoreOrAdd) {
    CMatrix M;
    M.LMat(2, 2, 7.0, 1.0, false);
    EXPECT_EQ(Flat(M), V({1, 0, 7, 1}));
    M.UMat(2, 2, 7.0, 1.0, false);
    EXPECT_EQ(Flat(M), V({1, 7, 0, 1}));
    M = MakeMatrix(2, 2, {1, 2, 3, 4});
    M.LMat(2, 2, 7.0, 1.0, true);
    EXPECT_EQ(Flat(M), V({2, 2, 10, 5}));
    M = MakeMatrix(2, 2, {1, 2, 3, 4});
    M.UMat(2, 2, 7.0, 1.0, true);
    EXPECT_EQ(Flat(M), V({2, 9, 3, 5}));
    M = MakeMatrix(3, 3, {1, 2, 3, 4, 5, 6, 7, 8, 9});
    M.LMat(2, 2, 7.0, 1.0, true); // count differs: stored
    EXPECT_EQ(Flat(M), V({1, 0, 7, 1}));
    M.UMat(2, 3, 7.0, 1.0, false);
    EXPECT_EQ(Flat(M), V({1, 7, 7, 0, 1, 7}));

    M = MakeMatrix(2, 3, {1, 2, 3, 4, 5, 6});
    M.SetVals(1, 9.0, true, true); // a row is always stored
    EXPECT_EQ(Flat(M), V({1, 2, 3, 9, 9, 9}));
    M.SetVals(1, 9.0, true, false);
    EXPECT_EQ(Flat(M), V({1, 11, 3, 9, 18, 9}));
    M.SetVals(2, 0.5, false, false);
    EXPECT_EQ(Flat(M), V({1, 11, 0.5, 9, 18, 0.5}));
}

TEST(Generators, WellCondFollowsTheSeededSequence) {
    CMatrix M;
    AfxSrand(1);
    M.WellCond(3, 3, 0.5);
    EXPECT_EQ(Flat(M),
              V({1.03179265724662, 0, 0, 0, 1.1543702505569629, 0, 0, 0, 0.98993652150029}));
    AfxSrand(7);
    M.WellCond(4, 2, 0.0); // extra rows share columns
    EXPECT_EQ(Flat(M), V({0, 1, 1, 0, 1, 0, 1, 0}));
    for (unsigned seed = 0; seed < 20; seed++) {
        AfxSrand(seed);
        M.WellCond(2, 4, 0.0);
        EXPECT_EQ(M.GetValue(0, 2) + M.GetValue(0, 3) + M.GetValue(1, 2) + M.GetValue(1, 3), 0.0);
        AfxSrand(seed);
        M.WellCond(5, 5, 0.0); // a permutation matrix
        for (int i = 0; i < 5; i++) {
            double dRow = 0, dCol = 0;
            for (int j = 0; j < 5; j++) {
                dRow += M.GetValue(i, j);
                dCol += M.GetValue(j, i);
            }
            EXPECT_EQ(dRow, 1.0);
            EXPECT_EQ(dCol, 1.0);
        }
    }
}

TEST(Generators, DevTakesTheDiagonalMean) {
    CMatrix M = MakeMatrix(2, 2, {2, 1, 1, 4});
    M.Dev();
    EXPECT_EQ(Flat(M), V({-1, 1, 1, 1}));
    M = MakeMatrix(2, 3, {1, 9, 9, 9, 3, 9});
    M.Dev(); // the square part's diagonal
    EXPECT_EQ(Flat(M), V({-1, 9, 9, 9, 1, 9}));
    CMatrix empty;
    empty.Dev();
    EXPECT_EQ(empty.m_nSize, 0);
}
