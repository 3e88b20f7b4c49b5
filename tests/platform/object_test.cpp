#include "platform_test_util.h"

#include "platform/afx.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

class CTestItem : public CObject {
    DECLARE_SERIAL(CTestItem)
public:
    LONG m_nValue = 0;
    double m_dValue = 0.0;
    void Serialize(CArchive &ar) override {
        if (ar.IsStoring())
            ar << m_nValue << m_dValue;
        else
            ar >> m_nValue >> m_dValue;
    }
};
IMPLEMENT_SERIAL(CTestItem, CObject, 1)

class CTestDerived : public CTestItem {
    DECLARE_SERIAL(CTestDerived)
};
IMPLEMENT_SERIAL(CTestDerived, CTestItem, 1)

// Schema 2, holding a reference it does not own.
class CTestLink : public CObject {
    DECLARE_SERIAL(CTestLink)
public:
    CObject *m_pRef = NULL;
    void Serialize(CArchive &ar) override {
        if (ar.IsStoring())
            ar << m_pRef;
        else
            m_pRef = ar.ReadObject(NULL);
    }
};
IMPLEMENT_SERIAL(CTestLink, CObject, 2)

class CTestDynamic : public CObject {
    DECLARE_DYNAMIC(CTestDynamic)
};
IMPLEMENT_DYNAMIC(CTestDynamic, CObject)

// A class without a record of its own reports CObject.
class CTestPlain : public CObject {};

namespace {

// Reads one object from the bytes and returns the cause of the exception, or -1.
int LoadCause(const std::vector<BYTE> &bytes, const CRuntimeClass *pRequested) {
    CMemFile file(bytes.data(), (UINT)bytes.size());
    CArchive ar(&file, CArchive::load, 16);
    try {
        delete ar.ReadObject(pRequested);
    } catch (CArchiveException &e) {
        return e.m_cause;
    }
    return -1;
}

std::vector<BYTE> Store(const CObject *pOb) {
    CMemFile file;
    {
        CArchive ar(&file, CArchive::store);
        ar << pOb;
    }
    return file.GetData();
}

} // namespace

TEST(CRuntimeClass, RecordsDerivationAndCreationByName) {
    EXPECT_EQ(CObject::classCObject.m_wSchema, 0xFFFFu);
    EXPECT_STREQ(RUNTIME_CLASS(CTestDerived)->m_lpszClassName, "CTestDerived");
    EXPECT_EQ(RUNTIME_CLASS(CTestLink)->m_wSchema, 2u);

    EXPECT_EQ(CRuntimeClass::FromName("CTestDerived"), RUNTIME_CLASS(CTestDerived));
    EXPECT_EQ(CRuntimeClass::FromName("CTestDynamic"), nullptr); // not serial, not registered
    EXPECT_EQ(CRuntimeClass::FromName("NoSuchClass"), nullptr);

    std::unique_ptr<CObject> p(CRuntimeClass::FromName("CTestDerived")->CreateObject());
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(p->GetRuntimeClass(), RUNTIME_CLASS(CTestDerived));
    EXPECT_TRUE(p->IsKindOf(RUNTIME_CLASS(CTestDerived)));
    EXPECT_TRUE(p->IsKindOf(RUNTIME_CLASS(CTestItem)));
    EXPECT_TRUE(p->IsKindOf(RUNTIME_CLASS(CObject)));
    EXPECT_FALSE(p->IsKindOf(RUNTIME_CLASS(CTestLink)));
    EXPECT_FALSE(CTestItem().IsKindOf(RUNTIME_CLASS(CTestDerived)));
    EXPECT_EQ(RUNTIME_CLASS(CTestDynamic)->CreateObject(), nullptr);
    EXPECT_EQ(CTestPlain().GetRuntimeClass(), RUNTIME_CLASS(CObject));

    // Registering again changes nothing and does not loop the list.
    AfxClassInit(RUNTIME_CLASS(CTestItem));
    EXPECT_EQ(CRuntimeClass::FromName("CTestItem"), RUNTIME_CLASS(CTestItem));
    EXPECT_EQ(CRuntimeClass::FromName("NoSuchClass"), nullptr);
}

// null, a new class, the same object again, a known class, a class of another schema.
TEST(CArchiveObjects, RecordLayoutAndRoundTrip) {
    CTestItem a, b;
    a.m_nValue = 5;
    a.m_dValue = 1.0;
    b.m_nValue = -1;
    CTestLink link;
    link.m_pRef = &a;

    CMemFile file;
    {
        CArchive ar(&file, CArchive::store, 16);
        ar << (const CObject *)NULL << &a << &a << &b << &link;
    }
    std::vector<BYTE> expected =
        Bytes({0,    0,                                                       // null
               0xFF, 0xFF, 1,    0,    9,    0,    'C',  'T',  'e', 's', 't', // class 1
               'I',  't',  'e',  'm',  5,    0,    0,    0,                   // a = 2
               0,    0,    0,    0,    0,    0,    0xF0, 0x3F,                //
               2,    0,                                                       // a again
               0x01, 0x80, 0xFF, 0xFF, 0xFF, 0xFF,                            // b = 3
               0,    0,    0,    0,    0,    0,    0,    0,                   //
               0xFF, 0xFF, 2,    0,    9,    0,    'C',  'T',  'e', 's', 't', // class 4
               'L',  'i',  'n',  'k',  2,    0});                             // link
    EXPECT_EQ(file.GetData(), expected);

    file.SeekToBegin();
    CArchive ar(&file, CArchive::load, 16);
    EXPECT_EQ(ar.ReadObject(NULL), nullptr);
    std::unique_ptr<CObject> a1(ar.ReadObject(RUNTIME_CLASS(CTestItem)));
    CObject *a2 = ar.ReadObject(RUNTIME_CLASS(CObject));
    std::unique_ptr<CObject> b1(ar.ReadObject(NULL));
    std::unique_ptr<CObject> link1(ar.ReadObject(RUNTIME_CLASS(CTestLink)));
    EXPECT_EQ(a1.get(), a2);
    ASSERT_EQ(a1->GetRuntimeClass(), RUNTIME_CLASS(CTestItem));
    EXPECT_EQ(((CTestItem *)a1.get())->m_nValue, 5);
    EXPECT_EQ(((CTestItem *)a1.get())->m_dValue, 1.0);
    EXPECT_EQ(((CTestItem *)b1.get())->m_nValue, -1);
    EXPECT_EQ(((CTestLink *)link1.get())->m_pRef, a1.get());
}

TEST(CArchiveObjects, SerialOperatorAndCycles) {
    CTestLink self;
    self.m_pRef = &self;
    std::vector<BYTE> data = Store(&self);
    CMemFile file(data.data(), (UINT)data.size());
    CArchive ar(&file, CArchive::load);
    CTestLink *p = NULL;
    ar >> p;
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(p->m_pRef, p);
    delete p;
}

// Indices from 0x7FFF on take the long forms, for objects and classes alike.
TEST(CArchiveObjects, LongIndexForms) {
    const int nItems = 0x7FFF;
    std::vector<CTestItem> items(nItems);
    CTestDerived d1, d2;
    CMemFile file;
    {
        CArchive ar(&file, CArchive::store);
        for (const CTestItem &it : items)
            ar << &it;
        ar << &d1 << &d2 << &items.back() << &items.front();
    }
    // Class CTestItem is 1, items 2 .. 0x8000, class CTestDerived 0x8001, d1 0x8002.
    const std::vector<BYTE> &data = file.GetData();
    size_t nTail = 18 + 12 + 6 + 12 + 6 + 2;
    std::vector<BYTE> tail(data.end() - (long)nTail, data.end());
    std::vector<BYTE> expectedTail = Bytes(
        {0xFF, 0xFF, 1, 0, 12, 0, 'C', 'T', 'e', 's', 't', 'D', 'e', 'r', 'i', 'v', 'e', 'd'});
    ASSERT_EQ(tail.size(), nTail);
    EXPECT_EQ(std::vector<BYTE>(tail.begin(), tail.begin() + 18), expectedTail);
    tail.erase(tail.begin(), tail.begin() + 18 + 12);
    EXPECT_EQ(tail, Bytes({0xFF, 0x7F, 0x01, 0x80, 0, 0x80, 0,    0,    0,    0, 0, 0, 0,
                           0,    0,    0,    0,    0, 0xFF, 0x7F, 0x00, 0x80, 0, 0, 2, 0}));

    file.SeekToBegin();
    CArchive ar(&file, CArchive::load);
    std::vector<std::unique_ptr<CObject>> loaded;
    for (int k = 0; k < nItems; k++)
        loaded.emplace_back(ar.ReadObject(RUNTIME_CLASS(CTestItem)));
    std::unique_ptr<CObject> e1(ar.ReadObject(NULL)), e2(ar.ReadObject(NULL));
    EXPECT_EQ(e2->GetRuntimeClass(), RUNTIME_CLASS(CTestDerived));
    EXPECT_EQ(ar.ReadObject(NULL), loaded.back().get());
    EXPECT_EQ(ar.ReadObject(NULL), loaded.front().get());
}

TEST(CArchiveObjects, WriteRefusesClassesThatCannotBeArchived) {
    CTestDynamic dyn;
    CTestPlain plain;
    for (const CObject *p : {(const CObject *)&dyn, (const CObject *)&plain}) {
        CMemFile file;
        CArchive ar(&file, CArchive::store);
        try {
            ar << p;
            FAIL() << "no exception";
        } catch (CArchiveException &e) {
            EXPECT_EQ(e.m_cause, CArchiveException::badClass);
        }
    }
}

TEST(CArchiveObjects, BadDataGivesTheRightCause) {
    CTestItem item;
    std::vector<BYTE> good = Store(&item);

    // Every truncation is the end of the file, never a crash or a leak.
    for (size_t n = 0; n < good.size(); n++) {
        std::vector<BYTE> cut(good.begin(), good.begin() + (long)n);
        EXPECT_EQ(LoadCause(cut, NULL), CArchiveException::endOfFile) << n;
    }
    EXPECT_EQ(LoadCause(good, NULL), -1);

    // Class: unknown, or not what the caller asked for.
    std::vector<BYTE> unknown = good;
    unknown[8] = 'X';
    EXPECT_EQ(LoadCause(unknown, NULL), CArchiveException::badClass);
    EXPECT_EQ(LoadCause(good, RUNTIME_CLASS(CTestDerived)), CArchiveException::badClass);
    EXPECT_EQ(LoadCause(good, RUNTIME_CLASS(CTestLink)), CArchiveException::badClass);
    EXPECT_EQ(LoadCause(good, RUNTIME_CLASS(CObject)), -1);
    // A class that cannot be archived is not known by name.
    EXPECT_EQ(LoadCause(Bytes({0xFF, 0xFF, 0xFF, 0xFF, 12, 0, 'C', 'T', 'e', 's', 't', 'D', 'y',
                               'n', 'a', 'm', 'i', 'c'}),
                        NULL),
              CArchiveException::badClass);

    // Schema other than the class's.
    std::vector<BYTE> schema = good;
    schema[2] = 2;
    EXPECT_EQ(LoadCause(schema, NULL), CArchiveException::badSchema);

    // References to indices not loaded, or of the wrong kind.
    EXPECT_EQ(LoadCause(Bytes({1, 0}), NULL), CArchiveException::badIndex);
    EXPECT_EQ(LoadCause(Bytes({0x01, 0x80}), NULL), CArchiveException::badIndex);
    EXPECT_EQ(LoadCause(Bytes({0xFF, 0x7F, 5, 0, 0, 0}), NULL), CArchiveException::badIndex);
    EXPECT_EQ(LoadCause(Bytes({0xFF, 0x7F, 1, 0, 0, 0x80}), NULL), CArchiveException::badIndex);
    EXPECT_EQ(LoadCause(Bytes({0xFF, 0x7F, 0, 0, 0, 0}), NULL), -1); // long null
}

// An object refused after it was made is freed; one met again is checked against the request.
TEST(CArchiveObjects, LaterFailuresInOneArchive) {
    CTestItem item;
    CTestLink link;
    link.m_pRef = &item;
    CMemFile file;
    {
        CArchive ar(&file, CArchive::store);
        ar << &item << &item << &link;
    }
    std::vector<BYTE> data = file.GetData();

    CMemFile in(data.data(), (UINT)data.size());
    CArchive ar(&in, CArchive::load);
    std::unique_ptr<CObject> first(ar.ReadObject(NULL));
    try {
        ar.ReadObject(RUNTIME_CLASS(CTestDerived));
        FAIL() << "no exception";
    } catch (CArchiveException &e) {
        EXPECT_EQ(e.m_cause, CArchiveException::badClass);
    }

    // The link's reference points at an object index that the data never defines.
    data.back() = 9;
    CMemFile in2(data.data(), (UINT)data.size());
    CArchive ar2(&in2, CArchive::load);
    std::unique_ptr<CObject> item2(ar2.ReadObject(NULL));
    EXPECT_EQ(ar2.ReadObject(NULL), item2.get());
    try {
        ar2.ReadObject(NULL); // the link is made, then refused, and must not leak
        FAIL() << "no exception";
    } catch (CArchiveException &e) {
        EXPECT_EQ(e.m_cause, CArchiveException::badIndex);
    }
}
