// CVector: the size rules of its arithmetic, its norms and searches, storage operations,
// the virtual-table contract and the archive stream.
#include "dense/vector.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace {

CVector Make(std::vector<double> values) {
    CVector v((int)values.size(), false, 0.0);
    for (int i = 0; i < (int)values.size(); i++)
        v[i] = values[i];
    return v;
}

std::vector<double> Values(const CVector &v) {
    return std::vector<double>(v.GetVector(), v.GetVector() + v.GetSize());
}

} // namespace

TEST(Vector, ConstructionAndAllocate) {
    CVector empty(0, true, 1.0);
    EXPECT_EQ(empty.GetSize(), 0);
    EXPECT_EQ(empty.GetVector(), nullptr);

    CVector v;
    EXPECT_FALSE(v.Allocate(0, true, 1.0));
    EXPECT_EQ(v.GetVector(), nullptr);
    EXPECT_TRUE(v.Allocate(3, true, 2.5));
    EXPECT_EQ(Values(v), (std::vector<double>{2.5, 2.5, 2.5}));
    double *pArray = v.GetVector();
    v[1] = 9.0;
    // Same size without initialising keeps array and contents.
    EXPECT_TRUE(v.Allocate(3, false, 0.0));
    EXPECT_EQ(v.GetVector(), pArray);
    EXPECT_EQ(v[1], 9.0);
    // Another size loses them.
    EXPECT_TRUE(v.Allocate(4, true, 0.0));
    EXPECT_TRUE(v == 0.0);

    CVector copy(&v);
    EXPECT_TRUE(copy == v);
    EXPECT_NE(copy.GetVector(), v.GetVector());
}

TEST(Vector, AssignmentKeepsOrReplacesTheArray) {
    CVector a = Make({1, 2, 3}), b = Make({4, 5, 6}), c = Make({7}), e;
    double *pArray = a.GetVector();
    a = b;
    EXPECT_EQ(a.GetVector(), pArray);
    EXPECT_EQ(Values(a), Values(b));
    a = c;
    EXPECT_EQ(Values(a), (std::vector<double>{7}));
    a = e;
    EXPECT_EQ(a.GetSize(), 0);
    EXPECT_EQ(a.GetVector(), nullptr);
}

TEST(Vector, AdditionsGrowToTheLongerOperand) {
    CVector a = Make({1, 2, 3}), b = Make({10, 20, 30, 40, 50});
    CVector sum = a;
    sum += b;
    EXPECT_EQ(Values(sum), (std::vector<double>{11, 22, 33, 40, 50}));
    CVector diff = a;
    diff -= b;
    EXPECT_EQ(Values(diff), (std::vector<double>{-9, -18, -27, -40, -50}));
    CVector scaled = a;
    scaled.Add(b, 0.5);
    EXPECT_EQ(Values(scaled), (std::vector<double>{6, 12, 18, 20, 25}));
    // A longer target keeps its length and its tail.
    CVector longer = b;
    longer += a;
    EXPECT_EQ(Values(longer), (std::vector<double>{11, 22, 33, 40, 50}));
    // Operands stay as they were.
    EXPECT_EQ(Values(a), (std::vector<double>{1, 2, 3}));
    // Empty plus empty stays empty.
    CVector e1, e2;
    e1 += e2;
    EXPECT_EQ(e1.GetSize(), 0);
    EXPECT_EQ(e1.GetVector(), nullptr);
    // Adding a vector to itself doubles it.
    CVector self = Make({1, 2});
    self += self;
    EXPECT_EQ(Values(self), (std::vector<double>{2, 4}));
}

TEST(Vector, LinCombSizesAndAliases) {
    CVector a = Make({1, 2, 3}), b = Make({1, 1});
    CVector r;
    r.LinComb(2.0, a, 3.0, b);
    EXPECT_EQ(Values(r), (std::vector<double>{5, 7, 6}));
    r.LinComb(2.0, b, 3.0, a);
    EXPECT_EQ(Values(r), (std::vector<double>{5, 8, 9}));
    // The target may be the full-length operand.
    a.LinComb(1.0, a, -1.0, b);
    EXPECT_EQ(Values(a), (std::vector<double>{0, 1, 3}));
    CVector e1, e2;
    r.LinComb(1.0, e1, 1.0, e2);
    EXPECT_EQ(r.GetSize(), 0);
    EXPECT_EQ(r.GetVector(), nullptr);
}

TEST(Vector, ElementwiseAndReductions) {
    CVector v = Make({3, -1, 2});
    EXPECT_EQ(v.Sum(), 4.0);
    EXPECT_EQ(v.Mean(), 4.0 / 3);
    EXPECT_EQ(v.ZeroNorm(), 1.0);
    EXPECT_EQ(v.InfNorm(), 3.0);
    EXPECT_EQ(v.PNorm(1.0), 6.0);
    EXPECT_EQ(v.PNorm(2.0), pow(14.0, 0.5));
    EXPECT_EQ(v.PNorm(3.0), pow(27.0 + 1.0 + 8.0, 1.0 / 3.0));
    EXPECT_EQ(v.Length(), sqrt(14.0));
    EXPECT_EQ(CVector(4, true, 0.0).PNorm(0.0), 4.0);
    CVector e;
    EXPECT_EQ(e.Sum(), 0.0);
    EXPECT_EQ(e.InfNorm(), 0.0);
    EXPECT_EQ(e.ZeroNorm(), 0.0);
    EXPECT_EQ(e.Length(), 0.0);

    CVector w = Make({1, 2, 3, 4, 5});
    EXPECT_EQ(v.Dot(w), 3.0 - 2.0 + 6.0);
    EXPECT_EQ(v.Dot(e), 0.0);

    CVector zero(3, true, 0.0);
    EXPECT_EQ(zero.Normalize(), 0.0);
    EXPECT_TRUE(zero == 0.0);
    CVector n = Make({3, 4});
    EXPECT_EQ(n.Normalize(), 5.0);
    EXPECT_EQ(Values(n), (std::vector<double>{3.0 / 5.0, 4.0 / 5.0}));

    CVector s = Make({1, 2, 3});
    s *= 2.0;
    s /= 4.0;
    EXPECT_EQ(Values(s), (std::vector<double>{0.5, 1.0, 1.5}));
    CVector f = Make({2, 3, 4});
    s.Scale(&f);
    EXPECT_EQ(Values(s), (std::vector<double>{1.0, 3.0, 6.0}));

    CVector inc(4, false, 0.0);
    inc.SetIncremental(1.0, 0.0);
    EXPECT_EQ(Values(inc), (std::vector<double>{0, 1, 2, 3}));
    inc.SetIncremental(0.1, 0.0);
    EXPECT_EQ(inc[3], 0.1 + 0.1 + 0.1); // running sums, not 3 * 0.1
    inc = 2.0;
    inc += 1.0;
    EXPECT_TRUE(inc == 3);

    CVector a = Make({1, 0, 1}), b = Make({0, 1, 0}), c;
    c.CrossProd(&a, &b);
    EXPECT_EQ(Values(c), (std::vector<double>{-1, 0, 1}));
}

TEST(Vector, AddValuesAndAplusBC) {
    CVector v(4, true, 0.0);
    LONG idx[4] = {3, -1, 0, 3};
    double val[4] = {1.0, 100.0, 2.0, 0.5};
    v.AddValues(idx, val, 4);
    EXPECT_EQ(Values(v), (std::vector<double>{2, 0, 0, 1.5}));
    v.AddValues(idx, val, 0);
    EXPECT_EQ(Values(v), (std::vector<double>{2, 0, 0, 1.5}));

    double pa[2] = {1, 1}, pb[2] = {2, 3};
    CVector::AplusBC(pa, pb, 2, 0.0);
    EXPECT_EQ(pa[0], 3.0);
    EXPECT_EQ(pa[1], 4.0);
    CVector::AplusBC(pa, pb, 2, -1.0);
    EXPECT_EQ(pa[0], 1.0);
    EXPECT_EQ(pa[1], 1.0);
}

TEST(Vector, FindCountAndExtremes) {
    CVector v = Make({2, 5, 5, 1, 1, 7});
    EXPECT_EQ(v.Find(5.0, 0, 0), 1);
    EXPECT_EQ(v.Find(5.0, 2, 0), 2);
    EXPECT_EQ(v.Find(7.0, 0, 5), -1);
    EXPECT_EQ(v.Find(7.0, 6, 0), -1);
    EXPECT_EQ(v.Count(1.0, 0, 0), 2);
    EXPECT_EQ(v.Count(1.0, 4, 6), 1);
    EXPECT_EQ(v.Count(1.0, 6, 0), 0);

    CVector m = Make({2, 5, 5});
    EXPECT_EQ(&m.Max(), &m[1]);
    CVector n = Make({3, 1, 1, 4});
    EXPECT_EQ(&n.Min(), &n[1]);
    n.Max() = -1.0;
    EXPECT_EQ(n[3], -1.0);
}

TEST(Vector, ExactComparison) {
    CVector a = Make({1, 2}), b = Make({1, 2}), c = Make({1, 2, 0}), e, e2;
    EXPECT_TRUE(a == b);
    EXPECT_FALSE(a != b);
    EXPECT_FALSE(a == c);
    b[1] = std::nextafter(2.0, 3.0);
    EXPECT_TRUE(a != b);
    EXPECT_TRUE(e == e2);
    EXPECT_TRUE(e == 0);
    EXPECT_TRUE(e == 1.5);
    EXPECT_FALSE(e == CVector(1, true, 0.0));
    CVector ones(3, true, 1.0);
    EXPECT_TRUE(ones == 1);
    EXPECT_TRUE(ones != 2);
}

TEST(Vector, TruncSetReplaceSwitch) {
    CVector v = Make({0, 1, 2, 3, 4});
    v.Trunc(1, 3);
    EXPECT_EQ(Values(v), (std::vector<double>{1, 2}));
    CVector w = Make({0, 1, 2, 3, 4});
    w.Trunc(1, 0);
    EXPECT_EQ(Values(w), (std::vector<double>{1, 2, 3, 4}));
    w.Trunc(3, 3);
    EXPECT_EQ(w.GetSize(), 0);
    EXPECT_EQ(w.GetVector(), nullptr);
    w.Trunc(0, 1); // nothing to keep, nothing happens
    EXPECT_EQ(w.GetSize(), 0);

    double *pOwn = new double[2]{8, 9};
    v.SetVector(2, pOwn);
    EXPECT_EQ(v.GetVector(), pOwn);
    double *pNew = new double[1]{5};
    double *pOld = v.ReplaceVector(pNew, 1);
    EXPECT_EQ(pOld, pOwn);
    delete[] pOld;
    EXPECT_EQ(Values(v), (std::vector<double>{5}));

    CVector x = Make({1, 2, 3}), y = Make({4});
    double *px = x.GetVector(), *py = y.GetVector();
    x.SwitchVectors(&y);
    EXPECT_EQ(x.GetVector(), py);
    EXPECT_EQ(y.GetVector(), px);
    EXPECT_EQ(x.GetSize(), 1);
    EXPECT_EQ(y.GetSize(), 3);
}

namespace {

// Overrides reached only through the virtual table.
class CCountingVector : public CVector {
public:
    int m_nSumCalls = 0, m_nAllocCalls = 0;
    double Sum() override {
        m_nSumCalls++;
        return 10.0;
    }
    using CVector::Allocate;
    bool Allocate(int nSize, bool bInit, double dValue) override {
        m_nAllocCalls++;
        return CVector::Allocate(nSize, bInit, dValue);
    }
};

} // namespace

TEST(Vector, VirtualCallsReachOverrides) {
    CCountingVector v;
    int sizes[1] = {4};
    v.Allocate(sizes, 1); // the int-array form calls the typed form directly
    EXPECT_EQ(v.m_nAllocCalls, 0);
    EXPECT_EQ(v.Mean(), 2.5);
    EXPECT_EQ(v.m_nSumCalls, 1);
    CVector a = Make({1, 2}), b = Make({3});
    v.LinComb(1.0, a, 1.0, b);
    EXPECT_EQ(v.m_nAllocCalls, 1);
    CVector c = Make({1, 2, 3});
    v.CrossProd(&c, &c);
    EXPECT_EQ(v.m_nAllocCalls, 2);
    EXPECT_TRUE(v == 0.0);
}

namespace {

std::vector<BYTE> Store(CVector &v) {
    CMemFile file;
    {
        CArchive ar(&file, CArchive::store);
        v.Serialize(ar);
        ar.Close();
    }
    return file.GetData();
}

void Load(CVector &v, const std::vector<BYTE> &bytes) {
    CMemFile file(bytes.data(), (UINT)bytes.size());
    CArchive ar(&file, CArchive::load);
    v.Serialize(ar);
    ar.Close();
}

} // namespace

TEST(VectorArchive, StreamIsByteExact) {
    CVector empty;
    EXPECT_EQ(Store(empty), (std::vector<BYTE>{0, 0, 0, 0}));
    CVector v = Make({1.0, -2.0});
    EXPECT_EQ(Store(v), (std::vector<BYTE>{2,    0,    0, 0, 0, 0, 0, 0, 0, 0,
                                           0xF0, 0x3F, 0, 0, 0, 0, 0, 0, 0, 0xC0}));
}

TEST(VectorArchive, RoundTripThroughObjectRecords) {
    CVector source = Make({4.0, 5.0});
    CMemFile file;
    {
        CArchive ar(&file, CArchive::store);
        ar << (CObject *)&source;
        ar.Close();
    }
    file.SeekToBegin();
    CArchive ar(&file, CArchive::load);
    CVector *pLoaded = NULL;
    ar >> pLoaded;
    ASSERT_NE(pLoaded, nullptr);
    EXPECT_TRUE(pLoaded->IsKindOf(RUNTIME_CLASS(CVector)));
    EXPECT_TRUE(*pLoaded == source);
    delete pLoaded;
    CObject *pByName = CRuntimeClass::FromName("CVector")->CreateObject();
    EXPECT_TRUE(pByName->IsKindOf(RUNTIME_CLASS(CVirtRealMat)));
    delete pByName;
}

TEST(VectorArchive, LoadKeepsTheArrayWhenTheCountIsUnchanged) {
    CVector source = Make({1.5, 2.5, 3.5});
    std::vector<BYTE> bytes = Store(source);

    CVector same(3, true, 0.0);
    double *pArray = same.GetVector();
    Load(same, bytes);
    EXPECT_EQ(same.GetVector(), pArray);
    EXPECT_TRUE(same == source);

    CVector other(5, true, 0.0);
    Load(other, bytes);
    EXPECT_TRUE(other == source);

    CVector full = Make({1, 2}), empty;
    Load(full, Store(empty));
    EXPECT_EQ(full.GetSize(), 0);
    EXPECT_EQ(full.GetVector(), nullptr);

    // A truncated stream is the platform's exception, not a crash.
    bytes.resize(bytes.size() - 3);
    CVector cut;
    EXPECT_THROW(Load(cut, bytes), CArchiveException);
}
