// CSparseMatrix whole-matrix operations: prescribed rows, A A^T, symmetry, flat copies.
#include "dense/vector.h"
#include "sparse_test_util.h"

TEST(SparseStructure, UnifyAndZeroPlacesTheIdentityRow) {
    CSparseMatrix E;
    E.UnifyAndZero(2);
    EXPECT_EQ(Dump(E), "2:2=1");
    EXPECT_EQ(E.GetRows(), 3);

    CSparseMatrix A;
    Put(A, {{0, 0, 1.0}, {0, 1, 2.0}, {1, 0, 3.0}, {1, 1, 4.0}});
    A.UnifyAndZero(1);
    EXPECT_EQ(Dump(A), "0:0=1;1:1=1");

    CSparseMatrix G; // a gap: the row is made between its neighbours
    Put(G, {{0, 0, 1.0}, {0, 1, 2.0}, {2, 1, 3.0}, {2, 2, 4.0}});
    G.UnifyAndZero(1);
    EXPECT_EQ(Dump(G), "0:0=1;1:1=1;2:2=4");
    G.UnifyAndZero(5);
    EXPECT_EQ(Dump(G), "0:0=1;1:1=1;2:2=4;5:5=1");

    CSparseMatrix H; // in front of the first row: the new head
    Put(H, {{3, 1, 1.0}, {3, 3, 2.0}, {4, 1, 5.0}});
    H.UnifyAndZero(1);
    EXPECT_EQ(Dump(H), "1:1=1;3:3=2;4:");
}

TEST(SparseStructure, UnifyAndZeroMovesTheColumnToTheRightHandSides) {
    CSparseMatrix A;
    Put(A, {{0, 0, 2.0}, {0, 1, -1.0}, {1, 0, -1.0}, {1, 1, 2.0}});
    CMatrix B = Column({1.0, 1.0});
    A.UnifyAndZero(1, 3.0, &B);
    EXPECT_EQ(Dump(A), "0:0=2;1:1=1");
    EXPECT_EQ(Flat(B), (std::vector<double>{4.0, 3.0}));

    CSparseMatrix C; // rows below and above, two right-hand sides
    Put(C, {{0, 0, 1.0}, {0, 2, 2.0}, {3, 2, 0.5}, {3, 3, 1.0}});
    CMatrix B2 = Column({1, 1, 1, 1, 1, 1, 1, 1}, 2);
    C.UnifyAndZero(2, 2.0, &B2);
    EXPECT_EQ(Dump(C), "0:0=1;2:2=1;3:3=1");
    EXPECT_EQ(Flat(B2), (std::vector<double>{-3, -3, 1, 1, 2, 2, 0, 0}));
}

TEST(SparseStructure, AATMatchesTheDenseProduct) {
    CSparseMatrix A;
    Put(A, {{0, 0, 1.0}, {0, 1, 2.0}, {1, 1, 3.0}});
    A.AAT();
    EXPECT_EQ(Dump(A), "0:0=5,1=6;1:0=6,1=9");

    CSparseMatrix O; // orthogonal rows: no cell for a sum of 0.0
    Put(O, {{0, 0, 1.0}, {0, 1, 1.0}, {2, 0, 1.0}, {2, 1, -1.0}});
    O.AAT();
    EXPECT_EQ(Dump(O), "0:0=2;2:2=2");

    CSparseMatrix E;
    E.AAT();
    EXPECT_EQ(E.GetFirstRow(), nullptr);
}

TEST(SparseStructure, IsSymComparesBothTriangles) {
    CSparseMatrix A;
    EXPECT_TRUE(A.IsSym());
    Put(A, {{0, 0, 1.0}, {0, 1, 2.0}, {1, 0, 2.0}, {1, 1, 1.0}, {2, 2, 1.0}});
    EXPECT_TRUE(A.IsSym());
    *A.GetValue(1, 0) = 2.0000001;
    EXPECT_FALSE(A.IsSym());

    CSparseMatrix L; // zeros below the diagonal without mirrors pass
    Put(L, {{0, 0, 1.0}, {1, 0, 0.0}, {2, 1, 0.0}, {2, 2, 1.0}});
    EXPECT_TRUE(L.IsSym());
    CSparseMatrix U; // a stored 0.0 above the diagonal without a mirror fails
    Put(U, {{0, 0, 1.0}, {0, 2, 0.0}, {2, 2, 1.0}});
    EXPECT_FALSE(U.IsSym());
    CSparseMatrix M; // the mirror row is missing altogether
    Put(M, {{0, 0, 1.0}, {0, 1, 1.0}, {2, 2, 1.0}});
    EXPECT_FALSE(M.IsSym());
}

TEST(SparseStructure, MakeArrayMatDropsALoneOne) {
    CSparseMatrix A;
    Put(A, {{0, 0, 1.0}, {1, 0, 2.0}, {1, 1, 3.0}, {2, 2, 1.0}, {2, 3, 0.0}});
    double *pValues = NULL;
    int *pCounts = NULL, *pColumns = NULL;
    EXPECT_EQ(A.MakeArrayMat(pValues, pCounts, pColumns, 3), 4);
    EXPECT_EQ(std::vector<int>(pCounts, pCounts + 3), (std::vector<int>{0, 2, 2}));
    EXPECT_EQ(std::vector<double>(pValues, pValues + 4), (std::vector<double>{2, 3, 1, 0}));
    EXPECT_EQ(std::vector<int>(pColumns, pColumns + 4), (std::vector<int>{0, 1, 2, 3}));
    delete[] pValues;
    delete[] pCounts;
    delete[] pColumns;

    CVector v(3, true, 1.0);
    A.MinDegReorder(v);
    EXPECT_EQ(Dump(A), "0:0=1;1:0=2,1=3;2:2=1,3=0");
}

// The operations reach each other through the virtual table, so a derived class's
// override is what runs.
class CountingSparse : public CSparseMatrix {
public:
    int m_nAdds = 0, m_nMirrorAdds = 0, m_nCholesky = 0, m_nReversals = 0, m_nClears = 0;
    using CSparseMatrix::Add;
    void Add(int nRow, int nCol, double dValue, row *&pRow, cell *&pCell) override {
        m_nAdds++;
        CSparseMatrix::Add(nRow, nCol, dValue, pRow, pCell);
    }
    void Add(int nRow, int nCol, double dValue, row *&pRow) override {
        m_nMirrorAdds++;
        CSparseMatrix::Add(nRow, nCol, dValue, pRow);
    }
    int Cholesky() override {
        m_nCholesky++;
        return CSparseMatrix::Cholesky();
    }
    void ReverseRows() override {
        m_nReversals++;
        CSparseMatrix::ReverseRows();
    }
    void Clear() override {
        m_nClears++;
        CSparseMatrix::Clear();
    }
};

TEST(SparseStructure, OverridesAreReached) {
    CountingSparse A;
    CVirtRealMat *pBase = &A;
    LONG dofs[] = {0, 1};
    double values[] = {2.0, 1.0, 1.0, 2.0};
    pBase->AddValues(dofs, values, 2);
    EXPECT_EQ(A.m_nAdds, 2); // one per element row
    CSparseMatrix other;
    Put(other, {{0, 0, 1.0}, {0, 1, 0.0}, {1, 1, 1.0}});
    static_cast<CSparseMatrix &>(A) = other;
    EXPECT_EQ(A.m_nAdds, 4); // one per cell that is not 0.0
    A.Mirror(1.0);
    EXPECT_EQ(A.m_nMirrorAdds, 1);
    A.MakeUpper();
    CMatrix B = Column({1.0, 1.0});
    double dTime;
    EXPECT_EQ(pBase->Cholesky_Solve(&B, dTime), 1);
    EXPECT_EQ(A.m_nCholesky, 1);
    EXPECT_EQ(A.m_nReversals, 2);
    int s[] = {0};
    pBase->Allocate(s, 1);
    EXPECT_EQ(A.m_nClears, 1);
}
