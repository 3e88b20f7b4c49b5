// Object records: the layout with back references, creation by class name on loading,
// and the cause of every refusal.
#include "platform_test_util.h"

#include <memory>

class CTestItem : public CObject {
    DECLARE_SERIAL(CTestItem)
public:
    explicit CTestItem(LONG nValue = 0) : m_nValue(nValue) {}
    LONG m_nValue;
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

// null, a new class, the same object again, then a known class.
TEST(CArchiveObjects, RecordLayoutAndRoundTrip) {
    CTestItem a(5), b(-1);
    CMemFile file;
    {
        CArchive ar(&file, CArchive::store, 16);
        ar << (const CObject *)NULL << &a << &a << &b;
    }
    EXPECT_EQ(
        file.GetData(),
        (std::vector<BYTE>{0,   0,   0xFF, 0xFF, 1, 0, 9, 0, 'C',  'T',  'e',  's',  't',  'I', 't',
                           'e', 'm', 5,    0,    0, 0, 2, 0, 0x01, 0x80, 0xFF, 0xFF, 0xFF, 0xFF}));

    file.SeekToBegin();
    CArchive ar(&file, CArchive::load, 16);
    EXPECT_EQ(ar.ReadObject(NULL), nullptr);
    std::unique_ptr<CObject> a1(ar.ReadObject(RUNTIME_CLASS(CTestItem)));
    EXPECT_EQ(ar.ReadObject(RUNTIME_CLASS(CObject)), a1.get());
    std::unique_ptr<CObject> b1(ar.ReadObject(NULL));
    EXPECT_EQ(((CTestItem *)a1.get())->m_nValue, 5);
    EXPECT_EQ(((CTestItem *)b1.get())->m_nValue, -1);
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
    const std::vector<BYTE> good{0xFF, 0xFF, 1,   0,   9,   0, 'C', 'T', 'e', 's',
                                 't',  'I',  't', 'e', 'm', 0, 0,   0,   0};
    std::vector<BYTE> unknown = good, schema = good;

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
    EXPECT_EQ(LoadCause({1, 0}, NULL), CArchiveException::badIndex);
    EXPECT_EQ(LoadCause({0x01, 0x80}, NULL), CArchiveException::badIndex);
    EXPECT_EQ(LoadCause({0xFF, 0x7F, 1, 0, 0, 0x80}, NULL), CArchiveException::badIndex);
}
