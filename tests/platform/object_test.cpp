// Object records: registration and creation by name, the record layout with back
// references, and the cause of every refusal.
#include "platform_test_util.h"

#include <memory>

class CTestItem : public CObject {
    DECLARE_SERIAL(CTestItem)
public:
    LONG m_nValue = 0;
    void Serialize(CArchive &ar) override {
        if (ar.IsStoring())
            ar << m_nValue;
        else
            ar >> m_nValue;
    }
};
IMPLEMENT_SERIAL(CTestItem, CObject, 1)

class CTestDerived : public CTestItem {
    DECLARE_SERIAL(CTestDerived)
};
IMPLEMENT_SERIAL(CTestDerived, CTestItem, 1)

TEST(CRuntimeClass, DerivationAndCreationByName) {
    std::unique_ptr<CObject> p(CRuntimeClass::FromName("CTestDerived")->CreateObject());
    EXPECT_EQ(p->GetRuntimeClass(), RUNTIME_CLASS(CTestDerived));
    EXPECT_TRUE(p->IsKindOf(RUNTIME_CLASS(CTestItem)) && p->IsKindOf(RUNTIME_CLASS(CObject)));
    EXPECT_FALSE(CTestItem().IsKindOf(RUNTIME_CLASS(CTestDerived)));
}

// null, a new class, the same object again, then a known class.
TEST(CArchiveObjects, RecordLayoutAndRoundTrip) {
    CTestItem a, b;
    a.m_nValue = 5;
    b.m_nValue = -1;
    CMemFile file;
    {
        CArchive ar(&file, CArchive::store, 16);
        ar << (const CObject *)NULL << &a << &a << &b;
    }
    EXPECT_EQ(file.GetData(),
              Bytes({0,   0,   0xFF, 0xFF, 1, 0, 9, 0, 'C',  'T',  'e',  's',  't',  'I', 't',
                     'e', 'm', 5,    0,    0, 0, 2, 0, 0x01, 0x80, 0xFF, 0xFF, 0xFF, 0xFF}));

    file.SeekToBegin();
    CArchive ar(&file, CArchive::load, 16);
    EXPECT_EQ(ar.ReadObject(NULL), nullptr);
    std::unique_ptr<CObject> a1(ar.ReadObject(RUNTIME_CLASS(CTestItem)));
    EXPECT_EQ(ar.ReadObject(RUNTIME_CLASS(CObject)), a1.get());
    CTestItem *pB = NULL;
    ar >> pB;
    std::unique_ptr<CObject> b1(pB);
    EXPECT_EQ(((CTestItem *)a1.get())->m_nValue, 5);
    EXPECT_EQ(pB->m_nValue, -1);
}

namespace {
// Reads one object and gives the cause of the refusal, or -1.
int LoadCause(const std::vector<BYTE> &bytes, const CRuntimeClass *pRequested) {
    CMemFile file(bytes.data(), (UINT)bytes.size());
    CArchive ar(&file, CArchive::load, 16);
    return ArchiveCause([&] { delete ar.ReadObject(pRequested); });
}
} // namespace

TEST(CArchiveObjects, BadDataGivesTheRightCause) {
    CTestItem item;
    CMemFile file;
    CArchive ar(&file, CArchive::store);
    ar << &item;
    ar.Close();
    std::vector<BYTE> good = file.GetData(), unknown = good, schema = good;

    // Every truncation is the end of the file, never a crash; an object already made when
    // its contents run out is freed.
    for (size_t n = 0; n < good.size(); n++)
        EXPECT_EQ(LoadCause(std::vector<BYTE>(good.begin(), good.begin() + (long)n), NULL),
                  CArchiveException::endOfFile);
    EXPECT_EQ(LoadCause(good, RUNTIME_CLASS(CObject)), -1);

    // A class unknown, not what was asked for, or of another schema.
    unknown[8] = 'X';
    schema[2] = 2;
    EXPECT_EQ(LoadCause(unknown, NULL), CArchiveException::badClass);
    EXPECT_EQ(LoadCause(good, RUNTIME_CLASS(CTestDerived)), CArchiveException::badClass);
    EXPECT_EQ(LoadCause(schema, NULL), CArchiveException::badSchema);

    // References to indices not loaded, or of the wrong kind.
    EXPECT_EQ(LoadCause(Bytes({1, 0}), NULL), CArchiveException::badIndex);
    EXPECT_EQ(LoadCause(Bytes({0x01, 0x80}), NULL), CArchiveException::badIndex);
    EXPECT_EQ(LoadCause(Bytes({0xFF, 0x7F, 1, 0, 0, 0x80}), NULL), CArchiveException::badIndex);
}
