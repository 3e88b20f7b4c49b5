// CSparseMatrix whole-matrix operations: prescribed rows, A A^T, mirroring, symmetry, flat
// copies, and the virtual-table contract.
#include "sparse_test_util.h"

// Mirror frees what lies below the diagonal on entry, and a row left empty goes.
TEST(SparseStructure, UnifyAndZeroAATAndMirror) {
    auto unify1 = [](CSparseMatrix &A) { A.UnifyAndZero(1); };
    auto aat = [](CSparseMatrix &A) { A.AAT(); };
    auto mirror = [](CSparseMatrix &A) { EXPECT_GE(A.Mirror(1.0), 0.0); };
    ExpectListCases({
        {"", [](CSparseMatrix &A) { A.UnifyAndZero(2); }, "2:2=1"},
        {"0:0=1,1=2;1:0=3,1=4", unify1, "0:0=1;1:1=1"},
        {"0:0=1,1=2;2:1=3,2=4", unify1, "0:0=1;1:1=1;2:2=4"}, // a gap
        {"0:0=1,5=2;2:2=4", [](CSparseMatrix &A) { A.UnifyAndZero(5); }, "0:0=1;2:2=4;5:5=1"},
        {"3:1=1,3=2;4:1=5", unify1, "1:1=1;3:3=2;4:"}, // in front of the first row: new head
        {"", aat, ""},
        {"0:0=1,1=2;1:1=3", aat, "0:0=5,1=6;1:0=6,1=9"},
        {"0:0=1,1=1;2:0=1,1=-1", aat, "0:0=2;2:2=2"}, // a sum of 0.0 makes no cell
        {"0:0=1,1=2;1:0=9,1=3", mirror, "0:0=1,1=2;1:0=2,1=3"},
        {"0:0=1,1=2;1:1=3", [](CSparseMatrix &A) { A.Mirror(-1.0); }, "0:0=1,1=2;1:0=-2,1=3"},
        {"0:0=1,2=5;1:0=7;2:2=1", mirror, "0:0=1,2=5;2:0=5,2=1"},
        {"0:1=5", mirror, "0:1=5;1:0=5"},
    });
    // the prescribed value leaves through the column into every right-hand side, from rows
    // below and above; row 2's own cells go with no correction
    CSparseMatrix C;
    Load(C, "0:0=1,2=2;2:0=5,2=7;3:2=0.5,3=1");
    CMatrix B(4, 2, true, 1.0);
    C.UnifyAndZero(2, 2.0, &B);
    EXPECT_EQ(Dump(C), "0:0=1;2:2=1;3:3=1");
    EXPECT_EQ(Flat(B), (std::vector<double>{-3, -3, 1, 1, 2, 2, 0, 0}));
}

TEST(SparseStructure, IsSymComparesBothTriangles) {
    auto isSym = [](const char *pszCells) {
        CSparseMatrix A;
        Load(A, pszCells);
        return A.IsSym();
    };
    EXPECT_TRUE(isSym("") && isSym("0:0=1,1=2;1:0=2,1=1;2:2=1"));
    EXPECT_TRUE(isSym("0:0=1;1:0=0;2:1=0,2=1")); // zeros below without mirrors pass
    EXPECT_FALSE(isSym("0:0=1,1=2;1:0=2.0000001,1=1"));
    EXPECT_FALSE(isSym("0:0=1,2=0;2:2=1"));           // a zero above without a mirror fails
    EXPECT_FALSE(isSym("0:0=1,1=1;2:2=1"));           // the mirror row is missing
    EXPECT_FALSE(isSym("0:0=1,2=1;1:1=1;2:0=1,1=5")); // no cell above, a value below
}

TEST(SparseStructure, MakeArrayMatDropsALoneOne) {
    CSparseMatrix A;
    Load(A, "0:0=1;1:0=2,1=3;2:2=1,3=0;3:3=2");
    double *pValues = NULL;
    int *pCounts = NULL, *pColumns = NULL;
    EXPECT_EQ(A.MakeArrayMat(pValues, pCounts, pColumns, 4), 5);
    EXPECT_EQ(std::vector<int>(pCounts, pCounts + 4), (std::vector<int>{0, 2, 2, 1}));
    EXPECT_EQ(std::vector<double>(pValues, pValues + 5), (std::vector<double>{2, 3, 1, 0, 2}));
    EXPECT_EQ(std::vector<int>(pColumns, pColumns + 5), (std::vector<int>{0, 1, 2, 3, 3}));
    delete[] pValues;
    delete[] pCounts;
    delete[] pColumns;
}

// The operations reach each other through the virtual table, so a derived class's
// override is what runs.
class CountingSparse : public CSparseMatrix {
public:
    int m_nAdds = 0, m_nRowAdds = 0, m_nReversals = 0, m_nClears = 0;
    using CSparseMatrix::Add;
    void Add(int nRow, int nCol, double dValue, row *&pRow, cell *&pCell) override {
        m_nAdds++;
        CSparseMatrix::Add(nRow, nCol, dValue, pRow, pCell);
    }
    void Add(int nRow, int nCol, double dValue, row *&pRow) override {
        m_nRowAdds++;
        CSparseMatrix::Add(nRow, nCol, dValue, pRow);
    }
    void ReverseRows() override { m_nReversals++, CSparseMatrix::ReverseRows(); }
    void Clear() override { m_nClears++, CSparseMatrix::Clear(); }
};

TEST(SparseStructure, OverridesAreReached) {
    CObject *pByName = CRuntimeClass::FromName("CSparseMatrix")->CreateObject();
    EXPECT_TRUE(pByName->IsKindOf(RUNTIME_CLASS(CVirtRealMat)));
    delete pByName;
    CountingSparse A;
    CVirtRealMat *pBase = &A;
    LONG dofs[] = {0, 1};
    double values[] = {2.0, 1.0, 1.0, 2.0};
    pBase->AddValues(dofs, values, 2);
    EXPECT_EQ(A.m_nAdds, 2); // one per element row
    CSparseMatrix other;
    Load(other, "0:0=1,1=0;3:0=-1");
    static_cast<CSparseMatrix &>(A) = other; // sums the cells that are not 0.0
    EXPECT_EQ(A.m_nAdds, 4);
    EXPECT_EQ(Dump(A), "0:0=3,1=1;1:0=1,1=2;3:0=-1");
    A.Mirror(1.0);
    EXPECT_EQ(A.m_nRowAdds, 1);
    CMatrix B = Rhs({1.0, 1.0});
    A.BackwSub(&B, NULL, 1);
    EXPECT_EQ(A.m_nReversals, 2);
    int s[] = {0};
    pBase->Allocate(s, 1);
    EXPECT_EQ(A.m_nClears, 1);
}
