// CSparseMatrix storage: sizing, queries and the row edits no other operation makes.
#include "sparse_test_util.h"

#include <memory>

TEST(SparseStorage, SizeAndQueriesComeFromTheLists) {
    CSparseMatrix A;
    EXPECT_TRUE(A.GetRows() == 0 && A.IsUpper() && A.IsLower(NULL));
    Load(A, "7:2=-1"); // only row 7: eight rows
    EXPECT_EQ(A.GetRows() * 10 + A.GetColumns(), 83);
    EXPECT_TRUE(A.GetValue(3, 0) == NULL && A.GetValue(7, 1) == NULL);
    EXPECT_EQ(A.Max(), 0.0); // the floor
    EXPECT_EQ(A.m_nRows, 0); // Allocate's counter, untouched by Add
    Load(A, "2:9=-1e-17;4:0=2.5,1=0");
    EXPECT_EQ(A.GetColumns() * 10 + A.Max(), 102.5);
    EXPECT_EQ(A.NumZeros(0.0) * 10 + A.NumZeros(1.0), 12);
    double dTime = 5.0;
    EXPECT_FALSE(A.IsUpper() || A.IsLower(&dTime));
    EXPECT_TRUE(dTime >= 0.0 && dTime < 1000.0); // written on the false outcome too
}

TEST(SparseStorage, AllocateMakesFullListsAndReusesNodes) {
    CSparseMatrix A;
    int s1[] = {4, 4, 99, 5}, s2[] = {2, 3, 0, -1}, s0[] = {0};
    EXPECT_TRUE(A.Allocate(s1, 4));
    EXPECT_EQ(A.GetRows() * 100 + A.GetColumns() * 10 + A.Max(), 445.0); // 4 by 4 of 5.0
    CSparseMatrix::cell *pCell = A.GetFirstRow()->m_pFirstCell;
    A.Allocate(s2, 4); // smaller: the first nodes stay, the rest go, every value overwritten
    EXPECT_EQ(Dump(A), "0:0=-1,1=-1,2=-1;1:0=-1,1=-1,2=-1");
    EXPECT_EQ(A.GetFirstRow()->m_pFirstCell, pCell);
    EXPECT_EQ(A.m_nRows * 10 + A.m_nColumns, 23);
    EXPECT_TRUE(A.Allocate(s0, 1) && A.GetFirstRow() == NULL && A.m_nRows == 0);
}

// Remove only unlinks; cell::Remove never examines the cell it is called on.
TEST(SparseStorage, RowEdits) {
    CSparseMatrix A;
    Load(A, "0:0=4,2=-2,3=3,7=-4;1:0=2,2=3,5=4,7=5;3:2=4,5=6");
    CSparseMatrix::row *r = A.GetFirstRow(), *r1 = r->m_pNext, *r3 = r1->m_pNext;
    std::unique_ptr<CSparseMatrix::cell> pHead(r->Remove(0)), pFar(r->Remove(3, 5));
    EXPECT_EQ(pHead->m_dValue * 10 + pFar->m_dValue, 46.0);
    EXPECT_TRUE(r->Remove(1) == NULL && r->Remove(2, 1) == NULL);
    CSparseMatrix::cell *c = r->m_pFirstCell;
    c->Remove(c);
    std::unique_ptr<CSparseMatrix::cell> pNext(c->Remove(3));
    r1->Allocate(3, 1.5, 2); // resized in place, the rest freed
    r3->Allocate(0, 1.0, 0);
    CVirtMat::m_Flops = 10;
    r->Multiply(0.5, 5);
    EXPECT_EQ(CVirtMat::m_Flops, 11u);
    EXPECT_EQ(Dump(A), "0:2=-2,7=-2;1:2=1.5,3=1.5,4=1.5;3:");
}
