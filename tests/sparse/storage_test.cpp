// CSparseMatrix storage: sizing, queries and the row edits no other operation makes.
#include "sparse_test_util.h"

#include <memory>

TEST(SparseStorage, SizeComesFromTheListsAndAllocateReusesNodes) {
    CSparseMatrix A;
    EXPECT_TRUE(A.GetRows() == 0 && A.IsUpper() && A.IsLower(NULL));
    Load(A, "7:2=-1"); // only row 7: eight rows
    EXPECT_EQ(A.GetRows() * 10 + A.GetColumns(), 83);
    EXPECT_TRUE(A.GetValue(3, 0) == NULL && A.GetValue(7, 1) == NULL);
    EXPECT_TRUE(A.Max() == 0.0 && A.m_nRows == 0); // the floor; Add leaves Allocate's counter
    Load(A, "2:1=-1e-17,5=0,7=0,9=0;4:0=2.5");
    EXPECT_EQ(A.GetColumns() * 10 + A.Max(), 102.5);
    EXPECT_EQ(A.NumZeros(0.0) * 10 + A.NumZeros(1.0), 34);
    double dTime = 5.0;
    EXPECT_FALSE(A.IsUpper() || A.IsLower(&dTime));
    EXPECT_TRUE(dTime >= 0.0 && dTime < 1000.0); // written on the false outcome too

    // the first nodes are renumbered and refilled, the rest freed
    CSparseMatrix::cell *pCell = A.GetFirstRow()->m_pFirstCell;
    int s2[] = {2, 3, 0, -1}, s0[] = {0};
    EXPECT_TRUE(A.Allocate(s2, 4));
    EXPECT_EQ(Dump(A), "0:0=-1,1=-1,2=-1;1:0=-1,1=-1,2=-1");
    EXPECT_TRUE(A.GetFirstRow()->m_pFirstCell == pCell && A.m_nRows * 10 + A.m_nColumns == 23);
    EXPECT_TRUE(A.Allocate(s0, 1) && A.GetFirstRow() == NULL && A.m_nRows == 0);
}

// Remove only unlinks; cell::Remove never examines the cell it is called on.
TEST(SparseStorage, RowEdits) {
    Lists A("0:0=4,2=-2,3=3;3:2=4,5=6");
    CSparseMatrix::row *r = A.GetFirstRow();
    std::unique_ptr<CSparseMatrix::cell> pFar(r->Remove(3, 5)), pNext(r->m_pFirstCell->m_pNext);
    EXPECT_TRUE(pFar->m_dValue == 6.0 && r->Remove(1) == NULL && r->Remove(2, 1) == NULL);
    r->m_pFirstCell->Remove(r->m_pFirstCell);
    r->m_pFirstCell->Remove(pNext.get());
    CVirtMat::m_Flops = 10;
    r->Multiply(0.5, 3);
    EXPECT_EQ(CVirtMat::m_Flops, 11u);
    EXPECT_EQ(Dump(A), "0:0=4,3=1.5;3:2=4");
}
