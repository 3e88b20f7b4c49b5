// CSparseMatrix whole-matrix operations: prescribed rows, A A^T, mirroring, symmetry, flat
// copies, and the virtual-table contract.
#include "sparse_test_util.h"

#include <memory>

TEST(SparseStructure, UnifyAndZeroAATAndMirror) {
    const struct {
        const char *pszBefore;
        void (*pfnEdit)(CSparseMatrix &);
        const char *pszAfter;
    } cases[] = {
        {"", [](CSparseMatrix &A) { A.UnifyAndZero(2); }, "2:2=1"},
        {"0:0=1,1=2;1:0=3,1=4", [](CSparseMatrix &A) { A.UnifyAndZero(1); }, "0:0=1;1:1=1"},
        // a new row in the gap
        {"0:0=1,1=2;2:1=3,2=4", [](CSparseMatrix &A) { A.UnifyAndZero(1); }, "0:0=1;1:1=1;2:2=4"},
        {"0:0=1,5=2;2:2=4", [](CSparseMatrix &A) { A.UnifyAndZero(5); }, "0:0=1;2:2=4;5:5=1"},
        // in front of the first row: the new head
        {"3:1=1,3=2;4:1=5", [](CSparseMatrix &A) { A.UnifyAndZero(1); }, "1:1=1;3:3=2;4:"},
        {"", [](CSparseMatrix &A) { A.AAT(); }, ""},
        {"0:0=1,1=2;1:1=3", [](CSparseMatrix &A) { A.AAT(); }, "0:0=5,1=6;1:0=6,1=9"},
        // a sum of 0.0 makes no cell
        {"0:0=1,1=1;2:0=1,1=-1", [](CSparseMatrix &A) { A.AAT(); }, "0:0=2;2:2=2"},
        {"0:0=1,1=2;1:1=3", [](CSparseMatrix &A) { A.Mirror(-1.0); }, "0:0=1,1=2;1:0=-2,1=3"},
        {"0:1=5", [](CSparseMatrix &A) { EXPECT_GE(A.Mirror(1.0), 0.0); }, "0:1=5;1:0=5"},
        {"0:0=1,1=2;1:0=3,1=4", [](CSparseMatrix &A) { A.MakeLower(); }, "0:0=1,1=2;1:1=4"},
        {"0:0=1,3=2", [](CSparseMatrix &A) { (A = 2.0) += 1.0; }, "0:0=3,3=3"},
    };
    for (const auto &t : cases) {
        Lists A(t.pszBefore);
        t.pfnEdit(A);
        EXPECT_EQ(Dump(A), t.pszAfter) << t.pszBefore;
    }
    // the prescribed value leaves through the column into every right-hand side, from rows
    // below and above; row 2's own cells go with no correction
    Lists C("0:0=1,2=2;2:0=5,2=7;3:2=0.5,3=1");
    CMatrix B(4, 2, true, 1.0);
    C.UnifyAndZero(2, 2.0, &B);
    EXPECT_EQ(Dump(C), "0:0=1;2:2=1;3:3=1");
    EXPECT_EQ(Flat(B), (std::vector<double>{-3, -3, 1, 1, 2, 2, 0, 0}));
}

TEST(SparseStructure, IsSymComparesBothTriangles) {
    EXPECT_TRUE(Lists("").IsSym() && Lists("0:0=1,1=2;1:0=2,1=1;2:2=1").IsSym());
    EXPECT_TRUE(Lists("0:0=1;1:0=0;2:1=0,2=1").IsSym()); // zeros below without mirrors pass
    EXPECT_FALSE(Lists("0:0=1,1=2;1:0=2.0000001,1=1").IsSym());
    EXPECT_FALSE(Lists("0:0=1,2=0;2:2=1").IsSym());           // a zero above without a mirror fails
    EXPECT_FALSE(Lists("0:0=1,1=1;2:2=1").IsSym());           // the mirror row is missing
    EXPECT_FALSE(Lists("0:0=1,2=1;1:1=1;2:0=1,1=5").IsSym()); // no cell above, a value below
}

TEST(SparseStructure, MakeArrayMatDropsALoneOne) {
    Lists A("0:0=1;1:0=2,1=3;2:2=1,3=0;3:3=2");
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
// override is what runs: each logs a letter.
class LoggingSparse : public CSparseMatrix {
public:
    std::string m_strCalls;
    using CSparseMatrix::Add;
    void Add(int nRow, int nCol, double dValue, row *&pRow, cell *&pCell) override {
        m_strCalls += 'A';
        CSparseMatrix::Add(nRow, nCol, dValue, pRow, pCell);
    }
    void Add(int nRow, int nCol, double dValue, row *&pRow) override {
        m_strCalls += 'M';
        CSparseMatrix::Add(nRow, nCol, dValue, pRow);
    }
    void ReverseRows() override { m_strCalls += 'R', CSparseMatrix::ReverseRows(); }
    void Clear() override { m_strCalls += 'C', CSparseMatrix::Clear(); }
};

TEST(SparseStructure, OverridesAreReached) {
    std::unique_ptr<CObject> pByName(CRuntimeClass::FromName("CSparseMatrix")->CreateObject());
    EXPECT_TRUE(pByName->IsKindOf(RUNTIME_CLASS(CVirtRealMat)));
    LoggingSparse A;
    CVirtRealMat *pBase = &A;
    LONG dofs[] = {0, 1};
    double values[] = {2.0, 1.0, 4.0, 2.0};
    pBase->AddValues(dofs, values, 2); // one Add per element row
    Lists other("0:0=1,1=0;3:0=-1");
    static_cast<CSparseMatrix &>(A) = other; // sums the cells that are not 0.0
    A.Mirror(1.0);                           // (1, 0) and row 3 go; (0, 1) comes back mirrored
    EXPECT_EQ(Dump(A), "0:0=3,1=1;1:0=1,1=2");
    CMatrix B(2, 1, true, 1.0);
    A.BackwSub(&B, NULL, 1);
    int s[] = {0};
    pBase->Allocate(s, 1);
    EXPECT_EQ(A.m_strCalls, "AAAAMRRC");
}
