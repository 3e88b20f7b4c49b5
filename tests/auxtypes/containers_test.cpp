// Integer and object containers: allocation rules, search, shared-entry deletion.
#include "femmat.h"

#include <gtest/gtest.h>

#include <vector>

TEST(CLongContainers, AllocateAlwaysRenewsAndSearchesFindTheFirst) {
    CLongVector v;
    EXPECT_TRUE(v.Allocate(4, true, 5));
    v[2] = 9;
    v[3] = 9;
    EXPECT_EQ(v.Find(9), 2);
    EXPECT_EQ(v.Find(1), -1);
    v += 1;
    EXPECT_EQ(v[0], 6);
    EXPECT_EQ(v.Find(10), 2);
    CLongVector copy(v);
    EXPECT_EQ(copy.Find(10), 2);
    copy = copy; // self-assignment keeps the contents
    EXPECT_EQ(copy[3], 10);
    EXPECT_FALSE(v.Allocate(0, true, 5));
    EXPECT_EQ(v.m_pVector, nullptr);
    EXPECT_EQ(v.GetSize(), 0);
    EXPECT_EQ(v.Find(0), -1);
    copy = v; // an empty source empties the target
    EXPECT_EQ(copy.m_pVector, nullptr);
    int sizes[] = {3, 1, 8};
    EXPECT_TRUE(v.Allocate(sizes, 3));
    EXPECT_EQ(v[1], 8);

    CLongMatrix M;
    int shape[] = {2, 3};
    EXPECT_TRUE(M.Allocate(shape, 2));
    EXPECT_EQ(M[1][2], 0); // initialised with 0 when the flag is left out
    M = 1;
    M[1][1] = 4;
    M.GetValue(0, 2) = 4;
    EXPECT_EQ(M.FindInRow(1, 4), 1); // the column, not the flat index
    EXPECT_EQ(M.FindInCol(1, 4), 1);
    EXPECT_EQ(M.FindInCol(2, 4), 0);
    EXPECT_EQ(M.FindInCol(2, 4, 1), -1);
    EXPECT_EQ(M.FindInCol(1, 4, 1), 1);
    EXPECT_EQ(M.FindInCol(1, 4, 2), -1);
    CLongMatrix P;
    M.GetPointerMat(P, 1);
    EXPECT_EQ(P.GetRows(), 3);
    EXPECT_EQ(P.GetColumns(), 1);
    EXPECT_EQ(std::vector<LONG>(P.m_pVector, P.m_pVector + 3), std::vector<LONG>({1, 4, 7}));
    CLongMatrix C(M);
    C += -1;
    EXPECT_EQ(C[1][1], 3);
    EXPECT_FALSE(C.Allocate(0, 3, true, 1));
    EXPECT_EQ(C.m_pVector, nullptr);
}

// Counts its destructions, to prove each object is deleted exactly once.
struct Counted : CObject {
    explicit Counted(int *pCount) : m_pCount(pCount) {}
    ~Counted() override { ++*m_pCount; }
    int *m_pCount;
};

TEST(CObjContainers, DeleteEntriesDeletesSharedObjectsOnce) {
    int nDeleted = 0;
    Counted *a = new Counted(&nDeleted), *b = new Counted(&nDeleted);
    CObjVect v;
    v.Allocate(4, true, NULL);
    v[0] = a, v[2] = a, v[3] = b;
    v.DeleteEntries();
    EXPECT_EQ(nDeleted, 2);
    for (int i = 0; i < 4; i++)
        EXPECT_EQ(v[i], nullptr);
    v.DeleteEntries();
    EXPECT_EQ(nDeleted, 2);
    CObjVect().DeleteEntries();

    // Allocate of the same size keeps the pointers; the destructor leaves objects alive.
    Counted c(&nDeleted);
    {
        CObjVect w;
        w.Allocate(2, true, &c);
        w.Allocate(2, false, NULL);
        EXPECT_EQ(w[1], &c);
        w.Allocate(0, false, NULL);
        EXPECT_EQ(w.m_ppObjects, nullptr);
        EXPECT_EQ(w.m_nSize, 0);
    }
    EXPECT_EQ(nDeleted, 2);

    CObjMat m;
    m.Allocate(2, 3, true, &c);
    m[1][2] = NULL;
    m.Allocate(3, 2, false, NULL); // same count: entries stay in flat order
    EXPECT_EQ(m[2][0], &c);
    EXPECT_EQ(m[2][1], nullptr);
    m.Allocate(2, 2, RUNTIME_CLASS(CMatrix)); // overwrites, deletes nothing
    EXPECT_EQ(nDeleted, 2);
    for (int k = 0; k < 4; k++)
        EXPECT_TRUE(m.m_ppObjects[k]->IsKindOf(RUNTIME_CLASS(CMatrix)));
    EXPECT_NE(m[0][0], m[1][1]);
    m.DeleteEntries();
    m.Allocate(1, 2, RUNTIME_CLASS(CObject)); // a class that cannot be created
    EXPECT_EQ(m[0][0], nullptr);
}
