// The road as a host walks it, on the skyline: graph, numbering, PostReorder, Allocate(graph),
// assembly through f_v, prescribed values imposed by the host, Cholesky_Solve with several
// right-hand sides and Gauss-Seidel, each compared with a dense solve of the same system.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <random>
#include <string>

#include "skyline_test_util.h"

using namespace skytest;

namespace {

enum Numbering { kNone, kMinDeg, kMinDeg2, kMinDeg3, kMinDeg4 };
const char *kNumberingNames[] = {"none", "MinDegReorder", "MinDegReorder2", "MinDegReorder3",
                                 "MinDegReorder4"};

// A rectangular grid of nx by ny nodes, of bilinear quads or of triangles (two per cell),
// with nPerNode degrees of freedom per node, numbered node by node.
struct Mesh {
    int nNodes = 0, nPerNode = 1;
    std::vector<std::vector<int>> elements; // node lists
    std::vector<bool> fixedNode;            // nodes on the edge x = 0

    Mesh(int nx, int ny, bool bQuads, int nDofsPerNode) : nNodes(nx * ny), nPerNode(nDofsPerNode) {
        for (int y = 0; y + 1 < ny; y++)
            for (int x = 0; x + 1 < nx; x++) {
                const int a = y * nx + x, b = a + 1, c = a + nx + 1, d = a + nx;
                if (bQuads) {
                    elements.push_back({a, b, c, d});
                } else {
                    elements.push_back({a, b, d});
                    elements.push_back({b, c, d});
                }
            }
        fixedNode.assign(nNodes, false);
        for (int y = 0; y < ny; y++)
            fixedNode[y * nx] = true;
    }
    int Dofs() const { return nNodes * nPerNode; }
    std::vector<LONG> ElementDofs(size_t e) const {
        std::vector<LONG> dofs;
        for (int node : elements[e])
            for (int k = 0; k < nPerNode; k++)
                dofs.push_back(node * nPerNode + k);
        return dofs;
    }
    // Laplacian stiffness of the element (unit cells) times a coupling block between the
    // degrees of freedom of a node, scaled by dScale: symmetric, row-major.
    std::vector<double> ElementMatrix(size_t e, double dScale) const {
        static const double quad[16] = {4,  -1, -2, -1, -1, 4,  -1, -2,
                                        -2, -1, 4,  -1, -1, -2, -1, 4}; // times 1/6
        static const double tri1[9] = {2, -1, -1, -1, 1, 0, -1, 0, 1};  // times 1/2
        static const double tri2[9] = {1, -1, 0, -1, 2, -1, 0, -1, 1};  // times 1/2
        const size_t nv = elements[e].size();
        const double *pBase = nv == 4 ? quad : (e % 2 == 0 ? tri1 : tri2);
        const double dBase = nv == 4 ? 1.0 / 6.0 : 0.5;
        const double block[4] = {2.0, 1.0, 1.0, 2.0};
        const size_t n = nv * nPerNode;
        std::vector<double> K(n * n);
        for (size_t a = 0; a < nv; a++)
            for (size_t b = 0; b < nv; b++)
                for (int k = 0; k < nPerNode; k++)
                    for (int l = 0; l < nPerNode; l++) {
                        const double dBlock = nPerNode == 1 ? 1.0 : block[k * 2 + l];
                        K[(a * nPerNode + k) * n + b * nPerNode + l] =
                            dScale * dBase * pBase[a * nv + b] * dBlock;
                    }
        return K;
    }
};

// The system of one load: element coefficients, right-hand sides and prescribed values.
struct Load {
    std::vector<double> scales;     // per element
    std::vector<double> rhs;        // nDofs by nCols, original numbering
    std::vector<double> prescribed; // per dof and column (used on fixed dofs only)
    int nCols;

    Load(const Mesh &mesh, int nColumns, unsigned nSeed) : nCols(nColumns) {
        std::mt19937 rng(nSeed);
        std::uniform_real_distribution<double> scale(0.5, 2.0), value(-1.0, 1.0);
        for (size_t e = 0; e < mesh.elements.size(); e++)
            scales.push_back(scale(rng));
        for (int k = 0; k < mesh.Dofs() * nCols; k++) {
            rhs.push_back(value(rng));
            // The last column has homogeneous prescribed values.
            prescribed.push_back(k % nCols == nCols - 1 ? 0.0 : value(rng));
        }
    }
};

// Makes row p of the identity and column p zero for every prescribed p, moving the column
// to the right-hand sides, on a matrix given by an accessor of its stored entries (row < col).
template <class ForEachEntry, class Diagonal>
void ImposePrescribed(int n, int nCols, const std::vector<bool> &fixed,
                      const std::vector<double> &values, double *pB, ForEachEntry forEachEntry,
                      Diagonal diagonal) {
    for (int p = 0; p < n; p++) {
        if (!fixed[p])
            continue;
        forEachEntry(p, [&](int r, double &a) {
            if (!fixed[r])
                for (int c = 0; c < nCols; c++)
                    pB[(size_t)r * nCols + c] -= a * values[(size_t)p * nCols + c];
            a = 0.0;
        });
        diagonal(p) = 1.0;
    }
    for (int p = 0; p < n; p++)
        if (fixed[p])
            for (int c = 0; c < nCols; c++)
                pB[(size_t)p * nCols + c] = values[(size_t)p * nCols + c];
}

// The dense reference in the original numbering: the solution, nDofs by nCols.
std::vector<double> DenseSolution(const Mesh &mesh, const Load &load) {
    const int n = mesh.Dofs();
    std::vector<double> A((size_t)n * n, 0.0);
    for (size_t e = 0; e < mesh.elements.size(); e++) {
        std::vector<LONG> dofs = mesh.ElementDofs(e);
        std::vector<double> K = mesh.ElementMatrix(e, load.scales[e]);
        for (size_t i = 0; i < dofs.size(); i++)
            for (size_t j = 0; j < dofs.size(); j++)
                A[(size_t)dofs[i] * n + dofs[j]] += K[i * dofs.size() + j];
    }
    std::vector<bool> fixed(n);
    for (int d = 0; d < n; d++)
        fixed[d] = mesh.fixedNode[d / mesh.nPerNode];
    std::vector<double> B = load.rhs;
    ImposePrescribed(
        n, load.nCols, fixed, load.prescribed, B.data(),
        [&](int p, auto fn) {
            for (int r = 0; r < n; r++)
                if (r != p) {
                    A[(size_t)p * n + r] = 0.0;
                    fn(r, A[(size_t)r * n + p]);
                }
        },
        [&](int p) -> double & { return A[(size_t)p * n + p]; });
    DenseSolve(A, B, n, load.nCols);
    return B;
}

// Graph of the mesh, numbered as asked, resolved with PostReorder.
void NumberGraph(CReorderMat &graph, const Mesh &mesh, Numbering numbering) {
    std::vector<std::vector<LONG>> lists;
    for (size_t e = 0; e < mesh.elements.size(); e++)
        lists.push_back(mesh.ElementDofs(e));
    BuildGraph(graph, mesh.Dofs(), lists);
    switch (numbering) {
    case kNone:
        break;
    case kMinDeg:
        graph.MinDegReorder(NULL);
        break;
    case kMinDeg2:
        graph.MinDegReorder2();
        break;
    case kMinDeg3:
        graph.MinDegReorder3();
        break;
    case kMinDeg4:
        graph.MinDegReorder4();
        break;
    }
    // A numbering that couldn't open its script would leave the identity.
    if (numbering >= kMinDeg2) {
        bool bIdentity = true;
        for (int v = 0; v < graph.GetRows(); v++)
            bIdentity = bIdentity && graph.f_v(v) == v;
        EXPECT_FALSE(bIdentity);
    }
    graph.PostReorder();
}

// Assembly through f_v and the host's prescribed values; B gets the right-hand sides in
// labels.
void AssembleSkyline(CSkylineMatrix &m, CReorderMat &graph, const Mesh &mesh, const Load &load,
                     CMatrix &B) {
    const int n = mesh.Dofs();
    for (size_t e = 0; e < mesh.elements.size(); e++) {
        std::vector<LONG> dofs = mesh.ElementDofs(e);
        for (LONG &d : dofs)
            d = graph.f_v(d);
        std::vector<double> K = mesh.ElementMatrix(e, load.scales[e]);
        m.AddValues(dofs.data(), K.data(), (int)dofs.size());
    }
    ASSERT_TRUE(B.Allocate(n, load.nCols, true, 0.0));
    std::vector<bool> fixed(n);
    std::vector<double> values((size_t)n * load.nCols);
    for (int d = 0; d < n; d++) {
        const int l = graph.f_v(d);
        fixed[l] = mesh.fixedNode[d / mesh.nPerNode];
        for (int c = 0; c < load.nCols; c++) {
            B[l][c] = load.rhs[(size_t)d * load.nCols + c];
            values[(size_t)l * load.nCols + c] = load.prescribed[(size_t)d * load.nCols + c];
        }
    }
    ImposePrescribed(
        n, load.nCols, fixed, values, B.m_pVector,
        [&](int p, auto fn) {
            for (int r = m.PeakRow(p); r < p; r++)
                fn(r, m(r, p));
            for (int j = p + 1; j < n; j++)
                if (m.PeakRow(j) <= p)
                    fn(j, m(p, j));
        },
        [&](int p) -> double & { return m(p, p); });
}

// Largest difference relative to the largest magnitude of the reference, per column.
double RelativeError(CMatrix &B, CReorderMat &graph, const std::vector<double> &X, int nCols) {
    double dWorst = 0.0;
    const int n = graph.GetRows();
    for (int c = 0; c < nCols; c++) {
        double dDiff = 0.0, dRef = 0.0;
        for (int d = 0; d < n; d++) {
            dDiff = std::max(dDiff, std::fabs(B[graph.f_v(d)][c] - X[(size_t)d * nCols + c]));
            dRef = std::max(dRef, std::fabs(X[(size_t)d * nCols + c]));
        }
        dWorst = std::max(dWorst, dDiff / dRef);
    }
    return dWorst;
}

class SkylineRoad : public ::testing::Test {
protected:
    void SetUp() override {
        m_bOldSym = CVirtMat::m_bSym;
        CVirtMat::m_bSym = true;
        m_strScript = ::testing::TempDir() + "skyline_road_reord.m";
        CReorderMat::SetScriptName(m_strScript.c_str());
    }
    void TearDown() override {
        CVirtMat::m_bSym = m_bOldSym;
        std::remove(m_strScript.c_str());
    }
    bool m_bOldSym = false;
    std::string m_strScript;
    ReportRecorder m_recorder;
};

} // namespace

TEST_F(SkylineRoad, CholeskySolveMatchesDenseUnderEveryNumbering) {
    const struct {
        int nx, ny;
        bool bQuads;
        int nPerNode;
    } meshes[] = {{9, 7, true, 1}, {7, 6, true, 2}, {8, 7, false, 1}, {6, 5, false, 2}};
    for (const auto &shape : meshes) {
        const Mesh mesh(shape.nx, shape.ny, shape.bQuads, shape.nPerNode);
        for (int k = kNone; k <= kMinDeg4; k++) {
            SCOPED_TRACE(std::string(shape.bQuads ? "quads " : "triangles ") +
                         std::to_string(shape.nPerNode) + " dof(s), " + kNumberingNames[k]);
            CReorderMat graph(0);
            NumberGraph(graph, mesh, (Numbering)k);
            CSkylineMatrix m;
            ASSERT_TRUE(m.Allocate(graph));

            // First load, three right-hand sides at once.
            const Load load(mesh, 3, 100 + k);
            CMatrix B;
            AssembleSkyline(m, graph, mesh, load, B);
            m_recorder.Clear();
            double dTime = 0.0;
            ASSERT_EQ(m.Cholesky_Solve(&B, dTime), 1);
            EXPECT_LT(RelativeError(B, graph, DenseSolution(mesh, load), 3), 1e-9);
            ASSERT_EQ(m_recorder.Texts().size(), 1u);
            const std::string strSize = "Size stiffm. :   " + std::to_string(m.m_nValues) + "\r\n";
            EXPECT_NE(m_recorder.Texts()[0].find(strSize), std::string::npos);

            // Next load over the same profile: Allocate with the same size clears the values.
            const int nValues = m.m_nValues;
            ASSERT_TRUE(m.Allocate(graph));
            EXPECT_EQ(m.m_nValues, nValues);
            const Load second(mesh, 2, 200 + k);
            AssembleSkyline(m, graph, mesh, second, B);
            ASSERT_EQ(m.Cholesky_Solve(&B, dTime), 1);
            EXPECT_LT(RelativeError(B, graph, DenseSolution(mesh, second), 2), 1e-9);
        }
    }
}

TEST_F(SkylineRoad, GaussSeidelReachesTheDenseSolution) {
    const Mesh mesh(6, 5, true, 1);
    for (int k : {kNone, kMinDeg4}) {
        SCOPED_TRACE(kNumberingNames[k]);
        CReorderMat graph(0);
        NumberGraph(graph, mesh, (Numbering)k);
        CSkylineMatrix m;
        ASSERT_TRUE(m.Allocate(graph));
        const Load load(mesh, 1, 300 + k);
        CMatrix B;
        AssembleSkyline(m, graph, mesh, load, B);

        const int n = mesh.Dofs();
        CVector b(n), x(n, true, 0.0);
        for (int i = 0; i < n; i++)
            b[i] = B[i][0];
        m_recorder.Clear();
        EXPECT_EQ(m.GaussSeidel_Iter(b, x, 1e-14, 5000), 1);
        ASSERT_EQ(m_recorder.Texts().size(), 1u);
        EXPECT_NE(m_recorder.Texts()[0].find(" NEQ             :   " + std::to_string(n)),
                  std::string::npos);

        CMatrix X(n, 1);
        for (int i = 0; i < n; i++)
            X[i][0] = x[i];
        EXPECT_LT(RelativeError(X, graph, DenseSolution(mesh, load), 1), 1e-9);

        // The matrix is unchanged: the direct solve afterwards agrees too.
        double dTime = 0.0;
        ASSERT_EQ(m.Cholesky_Solve(&B, dTime), 1);
        EXPECT_LT(RelativeError(B, graph, DenseSolution(mesh, load), 1), 1e-9);
    }
}
