// CSparseMatrix storage: nodes, sizing, queries and list edits.
#include "platform/archive.h"
#include "platform/file.h"
#include "sparse_test_util.h"

TEST(SparseStorage, EmptyMatrixAnswersEveryQuery) {
    CSparseMatrix A;
    EXPECT_EQ(A.GetRows(), 0);
    EXPECT_EQ(A.GetColumns(), 0);
    EXPECT_EQ(A.GetValue(0, 0), nullptr);
    EXPECT_EQ(A.Max(), 0.0);
    EXPECT_EQ(A.NumZeros(1.0), 0);
    EXPECT_TRUE(A.IsUpper());
    double dTime = 5.0;
    EXPECT_TRUE(A.IsLower(&dTime));
    EXPECT_GE(dTime, 0.0);
    EXPECT_LT(dTime, 1000.0);
    A.ReverseRows();
    A.Clear();
    EXPECT_EQ(A.GetFirstRow(), nullptr);
}

TEST(SparseStorage, AllocateMakesFullListsAndReusesNodes) {
    CSparseMatrix A;
    int s1[] = {3, 2};
    EXPECT_TRUE(A.Allocate(s1, 2));
    EXPECT_EQ(Dump(A), "0:0=0,1=0;1:0=0,1=0;2:0=0,1=0");
    EXPECT_EQ(A.m_nRows, 3);
    EXPECT_EQ(A.m_nColumns, 2);

    int s2[] = {4, 4, 99, 5};
    A.Allocate(s2, 4);
    EXPECT_EQ(CountCells(A), 16);
    EXPECT_EQ(*A.GetValue(3, 3), 5.0);
    CSparseMatrix::row *pHead = A.GetFirstRow();
    CSparseMatrix::cell *pCell = pHead->m_pFirstCell;

    // shrinking keeps the first nodes and overwrites every value
    int s3[] = {2, 3, 0, -1};
    A.Allocate(s3, 4);
    EXPECT_EQ(Dump(A), "0:0=-1,1=-1,2=-1;1:0=-1,1=-1,2=-1");
    EXPECT_EQ(A.GetFirstRow(), pHead);
    EXPECT_EQ(pHead->m_pFirstCell, pCell);
    EXPECT_EQ(pHead->m_pNext->m_pNext, nullptr);

    // one entry: rows without cells
    int s4[] = {3, 7};
    A.Allocate(s4, 1);
    EXPECT_EQ(A.GetRows(), 3);
    EXPECT_EQ(A.GetColumns(), 0);
    EXPECT_EQ(A.m_nColumns, 0);

    int s0[] = {0};
    EXPECT_TRUE(A.Allocate(s0, 1));
    EXPECT_EQ(A.GetFirstRow(), nullptr);
    EXPECT_EQ(A.m_nRows, 0);
}

TEST(SparseStorage, SizeComesFromTheLists) {
    CSparseMatrix A;
    Put(A, {{7, 2, 1.0}});
    EXPECT_EQ(A.GetRows(), 8);
    EXPECT_EQ(A.GetColumns(), 3);
    EXPECT_EQ(A.GetValue(3, 0), nullptr);
    EXPECT_EQ(A.GetValue(7, 1), nullptr);
    EXPECT_EQ(*A.GetValue(7, 2), 1.0);
    EXPECT_EQ(A.m_nRows, 0); // Allocate's counter, untouched by Add
    Put(A, {{2, 9, 3.0}, {7, 0, 1.0}});
    EXPECT_EQ(A.GetColumns(), 10);
    EXPECT_FALSE(A.IsUpper());
    EXPECT_FALSE(A.IsLower(NULL));
}

TEST(SparseStorage, RowAddSumsAndKeepsCancelledCells) {
    CSparseMatrix A;
    Put(A, {{0, 5, 1.0}, {0, 1, 2.0}, {0, 3, 3.0}, {0, 0, 4.0}, {0, 9, 5.0}});
    CSparseMatrix::row *r = A.GetFirstRow();
    r->Add(3, -3.0);
    r->Add(4, 6.0);
    r->Add(10, 7.0);
    EXPECT_EQ(Dump(A), "0:0=4,1=2,3=0,4=6,5=1,9=5,10=7");
    EXPECT_EQ(r->NonZeros(), 7);
    EXPECT_EQ(r->NumZeros(0.0), 1);
    EXPECT_NE(r->GetValue(3), nullptr);
    EXPECT_EQ(r->GetCell(2), nullptr);
    EXPECT_EQ(r->Max(), 7.0);
}

TEST(SparseStorage, RowAllocateResizesInPlace) {
    CSparseMatrix A;
    Put(A, {{0, 4, 1.0}, {0, 8, 2.0}});
    CSparseMatrix::row *r = A.GetFirstRow();
    CSparseMatrix::cell *pHead = r->m_pFirstCell;
    r->Allocate(4, 1.5, 2);
    EXPECT_EQ(Dump(A), "0:2=1.5,3=1.5,4=1.5,5=1.5");
    EXPECT_EQ(r->m_pFirstCell, pHead);
    r->Allocate(1, 0.0, 7);
    EXPECT_EQ(Dump(A), "0:7=0");
    r->Allocate(0, 1.0, 0);
    EXPECT_EQ(r->m_pFirstCell, nullptr);
}

TEST(SparseStorage, RemoveOnlyUnlinks) {
    CSparseMatrix A;
    Put(A, {{0, 0, 1.0}, {0, 2, 2.0}, {0, 4, 3.0}, {3, 1, 4.0}, {3, 5, 5.0}});
    CSparseMatrix::row *r0 = A.GetFirstRow();
    CSparseMatrix::cell *pHead = r0->Remove(0);
    ASSERT_NE(pHead, nullptr);
    EXPECT_EQ(pHead->m_dValue, 1.0);
    delete pHead;
    EXPECT_EQ(r0->Remove(1), nullptr);
    CSparseMatrix::cell *p = r0->Remove(3, 5);
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(p->m_dValue, 5.0);
    delete p;
    EXPECT_EQ(r0->Remove(2, 1), nullptr); // no row 2
    // cell::Remove never looks at the cell it is called on
    CSparseMatrix::cell *c2 = r0->m_pFirstCell;
    c2->Remove(c2);
    EXPECT_EQ(c2->Remove(2), nullptr);
    CSparseMatrix::cell *c4 = c2->m_pNext;
    c2->Remove(c4);
    delete c4;
    EXPECT_EQ(Dump(A), "0:2=2;3:1=4");
    A.GetFirstRow()->m_pNext->m_pFirstCell->DivideAll(2.0);
    EXPECT_EQ(*A.GetValue(3, 1), 2.0);
}

TEST(SparseStorage, MultiplyAndAddRow) {
    CSparseMatrix A;
    Put(A, {{0, 1, 1.0}, {0, 5, 5.0}, {1, 0, 1.0}, {1, 2, 2.0}, {1, 5, 3.0}, {1, 7, 4.0}});
    CSparseMatrix::row *r0 = A.GetFirstRow(), *r1 = r0->m_pNext;
    r0->AddRow(NULL, 2.0);
    EXPECT_EQ(Dump(A).substr(0, 11), "0:1=3,5=7;1");
    // merge row 1 into row 0: head insert, equal column, insert before, append
    r0->AddRow(r1->m_pFirstCell, -1.0);
    EXPECT_EQ(Dump(A), "0:0=-1,1=3,2=-2,5=4,7=-4;1:0=1,2=2,5=3,7=4");
    // a chain from inside a row: only the cells behind it
    r0->AddRow(r1->m_pFirstCell->m_pNext->m_pNext, 2.0);
    EXPECT_EQ(Dump(A), "0:0=-1,1=3,2=-2,5=10,7=4;1:0=1,2=2,5=3,7=4");
    CVirtMat::m_Flops = 10;
    r1->Multiply(0.5, 2);
    EXPECT_EQ(CVirtMat::m_Flops, 13u);
    EXPECT_EQ(Dump(A), "0:0=-1,1=3,2=-2,5=10,7=4;1:0=1,2=1,5=1.5,7=2");
}

TEST(SparseStorage, MaxAndNumZerosCountStoredCellsOnly) {
    CSparseMatrix A;
    Put(A, {{0, 0, -3.0}, {0, 4, 0.0}, {2, 1, -1e-17}, {2, 2, -1e-15}, {4, 4, -1e-300}});
    EXPECT_EQ(A.Max(), 0.0);
    EXPECT_EQ(A.NumZeros(0.0), 1);
    EXPECT_EQ(A.NumZeros(1.0), 3);
    Put(A, {{3, 0, 2.5}});
    EXPECT_EQ(A.Max(), 2.5);
}

TEST(SparseStorage, TriangleCutsAndReversal) {
    CSparseMatrix A;
    int s[] = {3, 3};
    A.Allocate(s, 2);
    A = 2.0;
    A += 1.0;
    EXPECT_EQ(CountCells(A), 9);
    EXPECT_EQ(*A.GetValue(2, 0), 3.0);
    A.MakeLower(); // the same body as MakeUpper: keeps the upper triangle
    EXPECT_EQ(Dump(A), "0:0=3,1=3,2=3;1:1=3,2=3;2:2=3");
    EXPECT_TRUE(A.IsUpper());
    A.ReverseRows();
    EXPECT_EQ(A.GetFirstRow()->m_nRow, 2);
    EXPECT_EQ(A.GetFirstRow()->m_pNext->m_pNext->m_pNext, nullptr);
    A.ReverseRows();
    Put(A, {{1, 0, 1.0}});
    A.MakeUpper();
    EXPECT_EQ(Dump(A), "0:0=3,1=3,2=3;1:1=3,2=3;2:2=3");
}

TEST(SparseStorage, RunTimeClassWithoutContents) {
    CObject *pObj = CRuntimeClass::FromName("CSparseMatrix")->CreateObject();
    ASSERT_NE(pObj, nullptr);
    EXPECT_TRUE(pObj->IsKindOf(RUNTIME_CLASS(CVirtRealMat)));
    CSparseMatrix *pA = static_cast<CSparseMatrix *>(pObj);
    Put(*pA, {{0, 0, 1.0}});

    CMemFile file;
    {
        CArchive ar(&file, CArchive::store);
        ar << pObj;
        ar.Close();
    }
    file.SeekToBegin();
    CSparseMatrix *pLoaded = NULL;
    {
        CArchive ar(&file, CArchive::load);
        ar >> pLoaded;
        ar.Close();
    }
    ASSERT_NE(pLoaded, nullptr);
    EXPECT_EQ(pLoaded->GetFirstRow(), nullptr);
    delete pLoaded;
    delete pObj;
}
