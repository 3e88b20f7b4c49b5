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
    EXPECT_EQ(Dump(A), "0:0=5,1=5,2=5,3=5;1:0=5,1=5,2=5,3=5;2:0=5,1=5,2=5,3=5;3:0=5,1=5,2=5,3=5");
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

// The row operations in turn on the same lists.
TEST(SparseStorage, RowEdits) {
    CSparseMatrix A;
    Load(A, "0:3=3,5=1;1:0=1,2=2,5=3,7=4;3:4=1");
    CSparseMatrix::row *r = A.GetFirstRow(), *r1 = r->m_pNext, *r3 = r1->m_pNext;
    r->Add(0, 4.0);  // head
    r->Add(3, -3.0); // a sum that cancels: the cell stays
    r->Add(4, 2.0);  // in front of a cell
    r->Add(9, 7.0);  // end
    EXPECT_TRUE(r->NonZeros() == 5 && r->NumZeros(0.0) == 1 && *r->GetValue(3) == 0.0);
    EXPECT_EQ(r->GetCell(2), nullptr);
    r->AddRow(r1->m_pFirstCell, -1.0);          // equal, in front, row steps
    r3->AddRow(r1->m_pFirstCell->m_pNext, 2.0); // head, row steps, append
    r1->AddRow(NULL, 1.0);
    EXPECT_EQ(Dump(A), "0:0=3,2=-2,3=0,4=2,5=-2,7=-4,9=7;1:0=2,2=3,5=4,7=5;3:2=4,4=1,5=6,7=8");
    r1->m_pFirstCell->m_pNext->DivideAll(2.0);
    CVirtMat::m_Flops = 10;
    r3->Multiply(0.5, 5);
    EXPECT_EQ(CVirtMat::m_Flops, 12u);
    EXPECT_EQ(Dump(A), "0:0=3,2=-2,3=0,4=2,5=-2,7=-4,9=7;1:0=2,2=1.5,5=2,7=2.5;3:2=4,4=1,5=3,7=4");

    // Remove only unlinks; cell::Remove never examines the cell it is called on
    std::unique_ptr<CSparseMatrix::cell> pHead(r->Remove(0)), pFar(r->Remove(3, 7));
    EXPECT_EQ(pHead->m_dValue * 10 + pFar->m_dValue, 34.0);
    EXPECT_TRUE(r->Remove(1) == NULL && r->Remove(2, 1) == NULL);
    CSparseMatrix::cell *c = r->m_pFirstCell;
    c->Remove(c);
    std::unique_ptr<CSparseMatrix::cell> pNext(c->Remove(4));
    r1->Allocate(3, 1.5, 2); // resized in place, the rest freed
    r3->Allocate(0, 1.0, 0);
    EXPECT_EQ(Dump(A), "0:2=-2,3=0,5=-2,7=-4,9=7;1:2=1.5,3=1.5,4=1.5;3:");
}

// MakeLower is the body of MakeUpper: the upper triangle stays.
TEST(SparseStorage, WholeListEdits) {
    ExpectListCases({
        {"0:0=1,1=2;1:0=3,1=4", [](CSparseMatrix &A) { A.MakeLower(); }, "0:0=1,1=2;1:1=4"},
        {"0:0=1;1:0=3,1=4;2:1=3", [](CSparseMatrix &A) { A.MakeUpper(); }, "0:0=1;1:1=4;2:"},
        {"0:0=1,3=2", [](CSparseMatrix &A) { (A = 2.0) += 1.0; }, "0:0=3,3=3"},
        {"0:0=1;1:1=1;4:0=1",
         [](CSparseMatrix &A) {
             A.ReverseRows();
             EXPECT_EQ(A.GetFirstRow()->m_nRow * 10 + A.GetFirstRow()->m_pNext->m_nRow, 41);
             A.ReverseRows();
         },
         "0:0=1;1:1=1;4:0=1"},
    });
}

TEST(SparseStorage, MaxAndNumZerosCountStoredCellsOnly) {
    CSparseMatrix A;
    Load(A, "0:0=-3,4=0;2:1=-1e-17,2=-1e-15;4:4=-1e-300");
    EXPECT_EQ(A.Max(), 0.0);
    EXPECT_EQ(A.NumZeros(0.0) * 10 + A.NumZeros(1.0), 13);
    Load(A, "3:0=2.5");
    EXPECT_EQ(A.Max(), 2.5);
}
