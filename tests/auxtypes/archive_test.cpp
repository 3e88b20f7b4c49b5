// Archive streams of the containers and vectors: field order, sharing, hostile input.
#include "femmat.h"

#include <gtest/gtest.h>

#include <functional>
#include <vector>

typedef std::vector<BYTE> Bytes;

static Bytes Stored(CObject &ob) {
    CMemFile file;
    {
        CArchive ar(&file, CArchive::store);
        ob.Serialize(ar);
    }
    return file.GetData();
}

static void LoadInto(CObject &ob, const Bytes &bytes) {
    CMemFile file(bytes.data(), (UINT)bytes.size());
    CArchive ar(&file, CArchive::load);
    ob.Serialize(ar);
}

static Bytes Le(std::initializer_list<LONG> values) {
    Bytes out;
    for (LONG v : values)
        for (int k = 0; k < 4; k++)
            out.push_back((BYTE)((DWORD)v >> (8 * k)));
    return out;
}

TEST(ArchiveStreams, FieldOrderOfEachClass) {
    CVector v;
    EXPECT_EQ(Stored(v), Bytes(4, 0));
    CMatrix m;
    EXPECT_EQ(Stored(m), Bytes(8, 0));
    CLongVector lv;
    lv.Allocate(2, true, 7);
    EXPECT_EQ(Stored(lv), Le({2, 1, 7, 7}));
    CLongMatrix lm;
    lm.Allocate(2, 3, true, -1);
    Bytes lmBytes = Stored(lm);
    EXPECT_EQ(Bytes(lmBytes.begin(), lmBytes.begin() + 8), Le({2, 3})); // rows first
    CObjMat om;
    om.Allocate(2, 3, true, NULL);
    EXPECT_EQ(Stored(om), Bytes({3, 0, 0, 0, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));

    // the constant 1 of CLongVector is not read
    CLongVector back;
    LoadInto(back, Le({2, 12345, 4, -5}));
    EXPECT_EQ(back.GetSize(), 2);
    EXPECT_EQ(back[1], -5);
    CLongMatrix lmBack;
    LoadInto(lmBack, lmBytes);
    EXPECT_EQ(lmBack.GetRows(), 2);
    EXPECT_EQ(lmBack[1][2], -1);
    CObjMat omBack;
    LoadInto(omBack, Stored(om));
    EXPECT_EQ(omBack.m_nRows, 2);
    EXPECT_EQ(omBack.m_nColumns, 3);
}

TEST(ArchiveStreams, ContainersKeepSharingAndNulls) {
    CMatrix *a = new CMatrix(2, 2, true, 1.5), *b = new CMatrix(1, 3, true, -2);
    CObjVect v;
    v.Allocate(4, true, NULL);
    v[0] = a, v[1] = b, v[3] = a;
    CMemFile file;
    {
        CArchive ar(&file, CArchive::store);
        ar << &v;
    }
    v.DeleteEntries();
    CMemFile in(file.GetData().data(), (UINT)file.GetData().size());
    CArchive ar(&in, CArchive::load);
    CObjVect *pBack = NULL;
    ar >> pBack;
    ASSERT_NE(pBack, nullptr);
    EXPECT_EQ((*pBack)[2], nullptr);
    EXPECT_EQ((*pBack)[0], (*pBack)[3]);
    CMatrix *pA = (CMatrix *)(*pBack)[0], *pB = (CMatrix *)(*pBack)[1];
    EXPECT_EQ(pA->GetRows(), 2);
    EXPECT_EQ(pA->GetValue(1, 1), 1.5);
    EXPECT_EQ(pB->GetColumns(), 3);
    EXPECT_EQ(pB->GetValue(0, 2), -2.0);
    pBack->DeleteEntries();
    delete pBack;

    // a sparse matrix has no contents in an archive
    CSparseMatrix s;
    s.Add(0, 0, 1.0);
    CMemFile sf;
    {
        CArchive sa(&sf, CArchive::store);
        sa << &s;
    }
    CMemFile sin(sf.GetData().data(), (UINT)sf.GetData().size());
    CArchive sl(&sin, CArchive::load);
    CSparseMatrix *pS = NULL;
    sl >> pS;
    ASSERT_NE(pS, nullptr);
    EXPECT_EQ(pS->GetFirstRow(), nullptr);
    delete pS;
}

// Stores each class through WriteObject, then loads every shorter prefix: each must throw a
// platform exception, and (under the sanitizers) leak nothing.
TEST(ArchiveStreams, EveryTruncationThrows) {
    CMatrix shared(2, 2, true, 3.0);
    CObjVect inner;
    inner.Allocate(2, true, &shared);
    CObjVect ov;
    ov.Allocate(3, true, NULL);
    ov[0] = &shared, ov[1] = &inner;
    CObjMat om;
    om.Allocate(1, 2, true, &inner);
    CLongVector lv;
    lv.Allocate(3, true, 9);
    CLongMatrix lm;
    lm.Allocate(2, 2, true, 4);
    CVector vec(3, true, 0.25);
    CObject *objects[] = {&shared, &vec, &lv, &lm, &ov, &om};
    for (CObject *pObject : objects) {
        CMemFile file;
        {
            CArchive ar(&file, CArchive::store);
            ar << pObject;
        }
        const Bytes &bytes = file.GetData();
        for (size_t n = 0; n < bytes.size(); n++) {
            CMemFile in(bytes.data(), (UINT)n);
            CArchive ar(&in, CArchive::load);
            bool bThrew = false;
            try {
                delete ar.ReadObject(NULL);
            } catch (CException &) {
                bThrew = true;
            }
            EXPECT_TRUE(bThrew) << pObject->GetRuntimeClass()->m_lpszClassName << " " << n;
        }
    }
}

TEST(ArchiveStreams, ForgedCountsThrowBeforeAllocating) {
    std::function<CObject *()> makers[] = {
        [] { return new CVector; },     [] { return new CMatrix; },  [] { return new CLongVector; },
        [] { return new CLongMatrix; }, [] { return new CObjVect; }, [] { return new CObjMat; },
    };
    Bytes forged = Le({0x7FFFFFF0, 0x7FFFFFF0});
    for (auto &make : makers) {
        CObject *pObject = make();
        try {
            LoadInto(*pObject, forged);
            ADD_FAILURE() << pObject->GetRuntimeClass()->m_lpszClassName;
        } catch (CArchiveException &e) {
            EXPECT_EQ(e.m_cause, CArchiveException::endOfFile);
        }
        delete pObject; // still valid after the failed load
    }
}
