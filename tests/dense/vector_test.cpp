// CVector: storage, the size rules of its arithmetic, norms and searches, the virtual-table
// contract and the archive stream.
#include "dense_test.h"

#include <cmath>

TEST(Vector, AllocateTruncAndArrayHandover) {
    CVector v = MakeVector({2.5, 9, 2.5});
    double *pArray = v.GetVector();
    int sizes[2] = {3, 0};
    EXPECT_TRUE(v.Allocate(sizes, 2)); // the same size, not initialised: all kept
    EXPECT_EQ(v.GetVector(), pArray);
    EXPECT_EQ(Flat(v), (V{2.5, 9, 2.5}));
    EXPECT_FALSE(v.Allocate(0, true, 1.0));
    EXPECT_EQ(v.GetVector(), nullptr);

    CVector t = MakeVector({0, 1, 2, 3, 4}), w = t;
    t.Trunc(1, 3);
    EXPECT_EQ(Flat(t), (V{1, 2}));
    w.Trunc(1, 0);
    EXPECT_EQ(Flat(w), (V{1, 2, 3, 4}));
    w.Trunc(3, 3);
    EXPECT_EQ(w.GetVector(), nullptr);

    // Handed-over arrays are owned and freed by their new holder.
    v.SetVector(2, new double[2]{8, 9});
    w.SwitchVectors(&v);
    EXPECT_EQ(Flat(w), (V{8, 9}));
    EXPECT_EQ(v.GetVector(), nullptr);
}

TEST(Vector, AdditionsGrowToTheLongerOperand) {
    CVector three = MakeVector({1, 2, 3}), five = MakeVector({10, 20, 30, 40, 50}), add = three;
    add.Add(five, 0.5);
    EXPECT_EQ(Flat(add), (V{6, 12, 18, 20, 25}));
    EXPECT_EQ(Flat(CVector(three) += five), (V{11, 22, 33, 40, 50}));
    EXPECT_EQ(Flat(CVector(three) -= five), (V{-9, -18, -27, -40, -50}));
    EXPECT_EQ(Flat(CVector(five) -= three), (V{9, 18, 27, 40, 50}));
    EXPECT_EQ(Flat(CVector().LinComb(2.0, three, 0.5, five)), (V{7, 14, 21, 20, 25}));

    // The target may be an operand of full length.
    three += three;
    five.LinComb(1.0, five, -1.0, three);
    EXPECT_EQ(Flat(five), (V{8, 16, 24, 40, 50}));
}

TEST(Vector, NormsElementwiseAndAplusBC) {
    CVector v = MakeVector({3, -1, 2}), w = MakeVector({1, 2, 3, 4, 5}), e;
    EXPECT_EQ(V({v.Sum(), v.Mean(), v.ZeroNorm(), v.InfNorm(), v.PNorm(1.0), v.PNorm(3.0)}),
              V({4, 4.0 / 3, 1, 3, 6, pow(36.0, 1.0 / 3.0)}));
    EXPECT_EQ(V({e.Sum(), e.ZeroNorm(), e.InfNorm(), e.Length(), v.Dot(e)}), V(5, 0.0));
    EXPECT_EQ(v.Dot(w), 7.0); // three products
    EXPECT_EQ(CVector(4, true, 0.0).PNorm(0.0), 4.0);

    CVector zero(3, true, 0.0), n = MakeVector({3, 4});
    EXPECT_EQ(zero.Normalize(), 0.0);
    EXPECT_TRUE(zero == 0.0);
    EXPECT_EQ(n.Normalize(), 5.0);
    EXPECT_EQ(Flat(n), (V{3.0 / 5.0, 4.0 / 5.0}));
    v *= 2.0;
    v /= 4.0;
    v.Scale(&w);
    EXPECT_EQ(Flat(v), (V{1.5, -1, 3}));
    v.SetIncremental(0.1, 1.0);
    EXPECT_EQ(Flat(v), (V{1.0, 1.0 + 0.1, 1.0 + 0.1 + 0.1})); // running sums
    CVector x = MakeVector({1, 0, 1}), y = MakeVector({0, 1, 0});
    v.CrossProd(&x, &y);
    EXPECT_EQ(Flat(v), (V{-1, 0, 1}));
    LONG idx[4] = {2, -1, 0, 2};
    double val[4] = {1.0, 100.0, 2.0, 0.5};
    v.AddValues(idx, val, 4);
    EXPECT_EQ(Flat(v), (V{1, 0, 2.5}));

    double a[2] = {1, 100}, b[2] = {2, 0.5};
    CVector::AplusBC(a, b, 2, 0.0); // 0.0 means no factor, not nothing
    EXPECT_EQ(V(a, a + 2), (V{3, 100.5}));
}

TEST(Vector, SearchesExtremesAndComparison) {
    CVector v = MakeVector({2, 5, 5, 1, 1, 7});
    // nEnd 0 means the end; the range excludes nEnd; a start at the end finds nothing.
    std::vector<int> found = {v.Find(5.0, 0, 0),  v.Find(7.0, 0, 5),  v.Find(7.0, 6, 0),
                              v.Count(1.0, 0, 0), v.Count(1.0, 4, 6), v.Count(1.0, 6, 0)};
    EXPECT_EQ(found, (std::vector<int>{1, -1, -1, 2, 1, 0}));
    EXPECT_EQ(&v.Min(), &v[3]); // the first of equal extremes
    v.Max() = 0.0;
    EXPECT_EQ(&v.Max(), &v[1]);

    CVector a = MakeVector({1, 2}), e, e2;
    EXPECT_TRUE(a == MakeVector({1, 2}) && a != MakeVector({1, 2, 0}));
    EXPECT_TRUE(a != MakeVector({1, std::nextafter(2.0, 3.0)})); // exact, no tolerance
    EXPECT_TRUE(e == e2 && e == 0 && e == 1.5 && e != CVector(1, true, 0.0));
    EXPECT_TRUE(CVector(3, true, 1.0) == 1 && CVector(3, true, 1.0) != 2);
}

namespace {
// Overrides that the vector's own operations must reach through the table.
class CCountingVector : public CVector {
public:
    int m_nAllocCalls = 0;
    double Sum() override { return 10.0; }
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
    EXPECT_EQ(v.Mean(), 2.5);
    CVector a = MakeVector({1, 2, 3});
    v.LinComb(1.0, a, 1.0, a);
    v.CrossProd(&a, &a);
    EXPECT_EQ(v.m_nAllocCalls, 2);
}

TEST(VectorArchive, StreamIsByteExactAndLoadsBack) {
    CVector empty, v = MakeVector({1.0, -2.0});
    EXPECT_EQ(Store(empty), std::vector<BYTE>(4, 0));
    std::vector<BYTE> bytes = Store(v);
    EXPECT_EQ(bytes, (std::vector<BYTE>{2, 0, 0, 0, 0, 0, 0, 0,   0, 0, 0xF0, 0x3F, //
                                        0, 0, 0, 0, 0, 0, 0, 0xC0}));

    // An unchanged count keeps the array; another count replaces it.
    CVector same(2, true, 0.0), other(5, true, 0.0);
    double *pArray = same.GetVector();
    Load(same, bytes);
    EXPECT_EQ(same.GetVector(), pArray);
    EXPECT_TRUE(same == v);
    Load(other, bytes);
    EXPECT_TRUE(other == v);
}
