// CSparseMatrix storage: nodes, sizing, queries and list edits.
#include "sparse_test_util.h"

#include <memory>

TEST(SparseStorage, EmptyMatrixAndSizeFromTheLists) {
    CSparseMatrix A;
    EXPECT_EQ(A.GetRows() + A.GetColumns() + A.NumZeros(1.0), 0);
    EXPECT_TRUE(A.GetValue(0, 0) == NULL && A.Max() == 0.0);
    double dTime = 5.0;
    EXPECT_TRUE(A.IsUpper() && A.IsLower(&dTime));
    EXPECT_TRUE(dTime >= 0.0 && dTime < 1000.0);

    Load(A, "7:2=1"); // only row 7: eight rows
    EXPECT_EQ(A.GetRows() * 10 + A.GetColumns(), 83);
    EXPECT_TRUE(A.GetValue(3, 0) == NULL && A.GetValue(7, 1) == NULL);
    EXPECT_EQ(A.m_nRows, 0); // Allocate's counter, untouched by Add
    Load(A, "2:9=3;7:0=1");
    EXPECT_EQ(A.GetColumns(), 10);
    dTime = 5.0;
    EXPECT_FALSE(A.IsUpper() || A.IsLower(&dTime));
    EXPECT_TRUE(dTime >= 0.0 && dTime < 1000.0); // written on the false outcome too
}

TEST(SparseStorage, AllocateMakesFullListsAndReusesNodes) {
    CSparseMatrix A;
    int s1[] = {3, 2}, s2[] = {4, 4, 99, 5}, s3[] = {2, 3, 0, -1}, s4[] = {3, 7}, s0[] = {0};
    EXPECT_TRUE(A.Allocate(s1, 2));
    EXPECT_EQ(Dump(A), "0:0=0,1=0;1:0=0,1=0;2:0=0,1=0");
    A.Allocate(s2, 4);
    EXPECT_EQ(CountCells(A) * 10 + *A.GetValue(3, 3), 165);
    CSparseMatrix::cell *pCell = A.GetFirstRow()->m_pFirstCell;
    A.Allocate(s3, 4); // smaller: the first nodes stay, every value is overwritten
    EXPECT_EQ(Dump(A), "0:0=-1,1=-1,2=-1;1:0=-1,1=-1,2=-1");
    EXPECT_EQ(A.GetFirstRow()->m_pFirstCell, pCell);
    EXPECT_EQ(A.m_nRows * 10 + A.m_nColumns, 23);
    A.Allocate(s4, 1); // one entry: rows without cells
    EXPECT_EQ(Dump(A), "0:;1:;2:");
    EXPECT_TRUE(A.Allocate(s0, 1));
    EXPECT_TRUE(A.GetFirstRow() == NULL && A.m_nRows == 0);
}

TEST(SparseStorage, ListEdits) {
    typedef CSparseMatrix::row row;
    const char *pszTwoRows = "0:1=1,5=5;1:0=1,2=2,5=3,7=4";
    ExpectListCases({
        // row::Add: head, a sum that cancels and stays, in front, end
        {"0:3=3,5=1",
         [](CSparseMatrix &A) {
             row *r = A.GetFirstRow();
             r->Add(0, 4.0);
             r->Add(3, -3.0);
             r->Add(4, 2.0);
             r->Add(9, 7.0);
         },
         "0:0=4,3=0,4=2,5=1,9=7"},
        {"0:4=1,8=2", [](CSparseMatrix &A) { A.GetFirstRow()->Allocate(3, 1.5, 2); },
         "0:2=1.5,3=1.5,4=1.5"},
        {"0:4=1,8=2", [](CSparseMatrix &A) { A.GetFirstRow()->Allocate(0, 1.0, 0); }, "0:"},
        {pszTwoRows, [](CSparseMatrix &A) { A.GetFirstRow()->AddRow(NULL, 2.0); },
         "0:1=3,5=7;1:0=1,2=2,5=3,7=4"},
        // merges: head, in front, equal, append; then a chain from inside a row
        {pszTwoRows,
         [](CSparseMatrix &A) {
             row *r = A.GetFirstRow();
             r->AddRow(r->m_pNext->m_pFirstCell, -1.0);
             r->AddRow(r->m_pNext->m_pFirstCell->m_pNext, 2.0);
         },
         "0:0=-1,1=1,2=2,5=8,7=4;1:0=1,2=2,5=3,7=4"},
        {pszTwoRows,
         [](CSparseMatrix &A) {
             A.GetFirstRow()->m_pFirstCell->DivideAll(2.0);
             A.GetFirstRow()->m_pNext->Multiply(0.5, 2);
         },
         "0:1=0.5,5=2.5;1:0=1,2=1,5=1.5,7=2"},
        // MakeLower is the body of MakeUpper: the upper triangle stays
        {"0:0=1,1=2;1:0=3,1=4", [](CSparseMatrix &A) { A.MakeLower(); }, "0:0=1,1=2;1:1=4"},
        {"0:0=1;1:0=3,1=4;2:1=3", [](CSparseMatrix &A) { A.MakeUpper(); }, "0:0=1;1:1=4;2:"},
        {"0:0=1,3=2", [](CSparseMatrix &A) { (A = 2.0) += 1.0; }, "0:0=3,3=3"},
    });
}

TEST(SparseStorage, RemoveOnlyUnlinksAndMultiplyCounts) {
    CSparseMatrix A;
    Load(A, "0:0=1,2=2,4=3;3:1=4,5=5");
    CSparseMatrix::row *r = A.GetFirstRow();
    std::unique_ptr<CSparseMatrix::cell> pHead(r->Remove(0)), pFar(r->Remove(3, 5));
    EXPECT_EQ(pHead->m_dValue * 10 + pFar->m_dValue, 15.0);
    EXPECT_TRUE(r->Remove(1) == NULL && r->Remove(2, 1) == NULL);
    CSparseMatrix::cell *c = r->m_pFirstCell;
    c->Remove(c); // the cell it is called on is never examined
    std::unique_ptr<CSparseMatrix::cell> pLast(c->Remove(4));
    EXPECT_EQ(Dump(A), "0:2=2;3:1=4");
    CVirtMat::m_Flops = 10;
    r->m_pNext->Multiply(2.0, 0);
    EXPECT_EQ(CVirtMat::m_Flops, 11u);
}

TEST(SparseStorage, MaxNumZerosAndReversal) {
    CSparseMatrix A;
    Load(A, "0:0=-3,4=0;2:1=-1e-17,2=-1e-15;4:4=-1e-300");
    EXPECT_EQ(A.Max(), 0.0);
    EXPECT_EQ(A.NumZeros(0.0) * 10 + A.NumZeros(1.0), 13);
    Load(A, "3:0=2.5");
    EXPECT_EQ(A.Max(), 2.5);
    CSparseMatrix::row *pHead = A.GetFirstRow();
    A.ReverseRows();
    EXPECT_EQ(A.GetFirstRow()->m_nRow * 10 + (pHead->m_pNext == NULL), 41);
}
