// Loading vectors and matrices from damaged archives: a count the archive cannot back is
// refused before any allocation, and an object whose load throws stays valid.
#include "dense_test.h"

#include <cstdlib>
#include <new>

// Array requests above the limit fail as from an exhausted heap; the largest request is
// kept. All array forms go to the scalar ones, so that every array pairs with its delete.
static size_t s_nArrayLimit = SIZE_MAX;
static size_t s_nLargestArray = 0;
void *operator new[](std::size_t nBytes) {
    if (nBytes > s_nLargestArray)
        s_nLargestArray = nBytes;
    if (nBytes > s_nArrayLimit)
        throw std::bad_alloc();
    return ::operator new(nBytes);
}
void *operator new[](std::size_t nBytes, const std::nothrow_t &) noexcept {
    if (nBytes > s_nLargestArray)
        s_nLargestArray = nBytes;
    return nBytes > s_nArrayLimit ? nullptr : ::operator new(nBytes, std::nothrow);
}
void operator delete[](void *p, const std::nothrow_t &) noexcept {
    ::operator delete(p);
}
void operator delete[](void *p) noexcept {
    ::operator delete(p);
}
void operator delete[](void *p, std::size_t) noexcept {
    ::operator delete(p);
}

namespace {

struct ArrayLimit {
    explicit ArrayLimit(size_t nBytes) {
        s_nArrayLimit = nBytes;
        s_nLargestArray = 0;
    }
    ~ArrayLimit() { s_nArrayLimit = SIZE_MAX; }
};

// A file that fails to read after its first nGood bytes, as a disk can; its length is the
// length it claims.
class CFailingFile : public CMemFile {
public:
    CFailingFile(const std::vector<BYTE> &bytes, UINT nGood)
        : CMemFile(bytes.data(), (UINT)bytes.size()), m_nGood(nGood) {}
    UINT Read(void *lpBuf, UINT nCount) override {
        if (GetPosition() + nCount > m_nGood)
            throw CFileException(CFileException::generic, 5);
        return CMemFile::Read(lpBuf, nCount);
    }

private:
    UINT m_nGood;
};

template <class F> int Cause(F f) {
    try {
        f();
    } catch (CArchiveException &e) {
        return e.m_cause;
    } catch (CException &) {
        return 100;
    } catch (std::bad_alloc &) {
        return 200;
    }
    return -1;
}

std::vector<BYTE> Bytes(const char *p, size_t n) {
    return std::vector<BYTE>((const BYTE *)p, (const BYTE *)p + n);
}

} // namespace

// A 4-byte file claiming 2^31-1 elements once asked for 16 GB; now nothing above the
// file's size is requested, and the vector keeps its contents.
TEST(DenseArchiveLoad, CountBeyondTheArchiveIsRefusedBeforeAllocating) {
    CVector v(3, true, 1.0);
    CMatrix m = MakeMatrix(2, 2, {1, 2, 3, 4});
    std::vector<BYTE> bytes = Store(m);
    bytes.resize(4 + 8 * 3);
    ArrayLimit limit(SIZE_MAX);
    EXPECT_EQ(Cause([&] { Load(v, Bytes("\xFF\xFF\xFF\x7F", 4)); }), CArchiveException::endOfFile);
    EXPECT_TRUE(v.GetSize() == 3 && v == 1.0);
    // One element short of its count, in a vector and in a matrix.
    EXPECT_EQ(Cause([&] { Load(v, bytes); }), CArchiveException::endOfFile);
    EXPECT_EQ(Cause([&] { Load(m, bytes); }), CArchiveException::endOfFile);
    EXPECT_TRUE(v.GetSize() == 3 && v == 1.0);
    EXPECT_TRUE(m.GetRows() == 2 && Flat(m) == V({1, 2, 3, 4}));
    EXPECT_LE(s_nLargestArray, bytes.size());
}

// The old array used to be freed before the new one was asked for; when that failed, the
// destructor freed it a second time.
TEST(DenseArchiveLoad, FailedAllocationKeepsTheOldContents) {
    CVector big(1000, true, 0.5);
    CMatrix bigm(10, 100, true, 0.5);
    std::vector<BYTE> vbytes = Store(big), mbytes = Store(bigm);
    CVector v(3, true, 1.0);
    CMatrix m = MakeMatrix(2, 2, {1, 2, 3, 4});
    {
        ArrayLimit limit(1024);
        EXPECT_EQ(Cause([&] { Load(v, vbytes); }), 200);
        EXPECT_EQ(Cause([&] { Load(m, mbytes); }), 200);
    }
    EXPECT_TRUE(v.GetSize() == 3 && v == 1.0);
    EXPECT_TRUE(m.GetRows() == 2 && Flat(m) == V({1, 2, 3, 4}));
    Load(m, mbytes);
    EXPECT_TRUE(m.GetRows() == 10 && m.GetColumns() == 100 && m == 0.5);
}

// A read that fails inside the elements leaves the old contents when a new array was being
// filled, an empty object when the old one was being overwritten; a matrix whose row count
// is missing is empty rather than new elements in the old shape.
TEST(DenseArchiveLoad, ThrowDuringTheElementsLeavesOldOrEmpty) {
    CVector two = MakeVector({5, 6}), three = MakeVector({7, 8, 9});
    std::vector<BYTE> bytes = Store(three);
    for (CVector *p : {&two, &three}) {
        CFailingFile file(bytes, 4 + 8);
        CArchive ar(&file, CArchive::load, 8);
        EXPECT_EQ(Cause([&] { p->Serialize(ar); }), 100);
    }
    EXPECT_TRUE(Flat(two) == V({5, 6}));
    EXPECT_TRUE(three.GetSize() == 0 && three.GetVector() == NULL);

    CMatrix m = MakeMatrix(2, 2, {1, 2, 3, 4}), same = m;
    bytes = Store(m);
    bytes.pop_back();
    EXPECT_EQ(Cause([&] { Load(m, bytes); }), CArchiveException::endOfFile);
    EXPECT_TRUE(m.GetSize() == 0 && m.GetRows() == 0 && m.GetVector() == NULL);
    // A negative count is taken as it stands: no array, nothing read.
    Load(same, Bytes("\xFE\xFF\xFF\xFF\x03\x00\x00\x00", 8));
    EXPECT_TRUE(same.GetSize() == -2 && same.GetVector() == NULL && same.GetRows() == 3);
}
