// The whole road on generated meshes, step by step, as a plain timer program:
//   bench_road DIM N NUMBERING
// DIM 2: an N by N node grid of bilinear quads; DIM 3: an N^3 grid of trilinear bricks;
// Laplace stiffness, one degree of freedom per node, zero values on the face y = 0.
// NUMBERING: natural (grid order), mindeg4 (CReorderMat::MinDegReorder4) or amd (Eigen's
// AMD permutation handed to the graph as its labels; needs Eigen).
//
// With Eigen (FEMMAT_HAVE_EIGEN) the assembled and constrained matrix is also solved by
// SimplicialLDLT at the same numbering and with its own AMD, and re-assembled with
// coeffRef; the ratios femmat / Eigen are printed. Times are this thread's processor time,
// one run each: the machine is shared, so compare figures within one run. Both
// re-assemblies start with the caches flushed, after their matrix was set to zero.
#include "dense/matrix.h"
#include "poisson.h"
#include "system/systspmat.h"

#include <malloc.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#ifdef FEMMAT_HAVE_EIGEN
#include <Eigen/OrderingMethods>
#include <Eigen/SparseCholesky>
#endif

using namespace poisson;

namespace {

// The mesh: nodes of an N^DIM grid, elements of 2^DIM nodes with one stiffness matrix.
struct Mesh {
    int nDim, n;
    std::vector<double> K; // element stiffness, row-major
    int Nodes() const { return nDim == 2 ? n * n : n * n * n; }
    int Elements() const { return nDim == 2 ? (n - 1) * (n - 1) : (n - 1) * (n - 1) * (n - 1); }
    int PerElement() const { return nDim == 2 ? 4 : 8; }
    void Dofs(int e, LONG *d) const {
        if (nDim == 2) {
            QuadDofs(n, e, d);
            return;
        }
        int m = n - 1;
        int x = e % m, y = e / m % m, z = e / (m * m);
        for (int k = 0; k < 8; k++) {
            int dx = k & 1, dy = (k >> 1) & 1, dz = (k >> 2) & 1;
            d[k] = ((z + dz) * n + (y + dy)) * n + (x + dx);
        }
    }
    // Nodes on the face y = 0.
    std::vector<int> Prescribed() const {
        std::vector<int> v;
        for (int i = 0; i < Nodes(); i++)
            if ((i / n) % n == 0)
                v.push_back(i);
        return v;
    }
};

Mesh MakeMesh(int nDim, int n) {
    Mesh m{nDim, n, {}};
    if (nDim == 2) {
        m.K.assign(s_Quad, s_Quad + 16);
        return m;
    }
    // Unit trilinear brick: 1/3 on the diagonal, 0 along an edge, -1/12 across a face or
    // the body. The zeros stay in the pattern and reach the factorisation as stored 0.0.
    m.K.resize(64);
    for (int a = 0; a < 8; a++)
        for (int b = 0; b < 8; b++) {
            int nDiff = __builtin_popcount(a ^ b);
            m.K[a * 8 + b] = nDiff == 0 ? 1.0 / 3 : nDiff == 1 ? 0.0 : -1.0 / 12;
        }
    return m;
}

void BuildGraph(CReorderMat &g, const Mesh &mesh) {
    LONG d[8];
    g.Alloc(mesh.Nodes());
    for (int e = 0; e < mesh.Elements(); e++) {
        mesh.Dofs(e, d);
        g.InsertDOFs(d, 0, mesh.PerElement());
    }
    g.Init();
    for (int e = 0; e < mesh.Elements(); e++) {
        mesh.Dofs(e, d);
        g.InsertDOFs(d, 1, mesh.PerElement());
    }
}

void AssembleMesh(CSystSpMat &m, const Mesh &mesh, const std::vector<int> &labels) {
    LONG d[8];
    std::vector<double> values(mesh.K);
    for (int e = 0; e < mesh.Elements(); e++) {
        mesh.Dofs(e, d);
        for (int k = 0; k < mesh.PerElement(); k++)
            d[k] = labels[d[k]];
        m.AddValues(d, values.data(), mesh.PerElement());
    }
}

// Both re-assemblies start from memory, not from a cache that the step before happened to
// leave warm for one of them.
void FlushCaches() {
    static std::vector<char> s_buffer(64 << 20);
    static char s_c = 0;
    memset(s_buffer.data(), ++s_c, s_buffer.size());
}

size_t HeapBytes() {
    struct mallinfo2 mi = mallinfo2();
    return mi.uordblks + mi.hblkhd;
}

int CountCells(CSystSpMat &m) {
    return poisson::CountCells(m);
}

#ifdef FEMMAT_HAVE_EIGEN
typedef Eigen::SparseMatrix<double> SpMat;

// The upper triangle the cells hold, as an Eigen matrix (row r, column c: Eigen stores
// it column-major, so the transpose is taken for the upper view).
SpMat ToEigen(CSystSpMat &m) {
    std::vector<Eigen::Triplet<double>> t;
    for (int r = 0; r < m.m_nTableRows; r++)
        for (CSparseMatrix::cell *c = m.m_pRowTable[r].m_pFirstCell; c; c = c->m_pNext)
            t.emplace_back(r, c->m_nCol, c->m_dValue);
    SpMat A(m.m_nTableRows, m.m_nTableRows);
    A.setFromTriplets(t.begin(), t.end());
    return A;
}

// AMD of the node graph, as labels: labels[v] is the new number of vertex v.
std::vector<int> AmdLabels(const Mesh &mesh) {
    std::vector<Eigen::Triplet<double>> t;
    LONG d[8];
    for (int e = 0; e < mesh.Elements(); e++) {
        mesh.Dofs(e, d);
        for (int a = 0; a < mesh.PerElement(); a++)
            for (int b = 0; b < mesh.PerElement(); b++)
                t.emplace_back(d[a], d[b], 1.0);
    }
    SpMat A(mesh.Nodes(), mesh.Nodes());
    A.setFromTriplets(t.begin(), t.end());
    Eigen::AMDOrdering<int> amd;
    Eigen::PermutationMatrix<Eigen::Dynamic, Eigen::Dynamic, int> P;
    amd(A.selfadjointView<Eigen::Upper>(), P);
    // Eigen's P maps new index to old; its inverse gives each vertex its label.
    std::vector<int> labels(mesh.Nodes());
    for (int i = 0; i < mesh.Nodes(); i++)
        labels[P.indices()[i]] = i;
    return labels;
}
#endif

struct Timer {
    double t0 = CpuMs();
    double Lap() {
        double t = CpuMs(), d = t - t0;
        t0 = t;
        return d;
    }
};

void Row(const char *pszStep, double dMs, const char *pszNote = "") {
    printf("  %-38s %10.1f ms  %s\n", pszStep, dMs, pszNote);
}

} // namespace

int main(int argc, char **argv) {
    int nDim = argc > 1 ? atoi(argv[1]) : 2;
    int n = argc > 2 ? atoi(argv[2]) : 100;
    std::string strNumbering = argc > 3 ? argv[3] : "natural";
    AfxSetReportHandler(&Silent);
    ScriptFile script("bench_road");
    CVirtMat::m_bSym = true;

    Mesh mesh = MakeMesh(nDim, n);
    const int nDOFs = mesh.Nodes();
    printf("%dD mesh, %d DOFs, %d elements, numbering %s\n", nDim, nDOFs, mesh.Elements(),
           strNumbering.c_str());
    Timer tm;

    // Graph and numbering.
    CReorderMat g(0);
    BuildGraph(g, mesh);
    Row("graph", tm.Lap());
    if (strNumbering == "mindeg4") {
        g.MinDegReorder4();
    } else if (strNumbering == "amd") {
#ifdef FEMMAT_HAVE_EIGEN
        std::vector<int> amd = AmdLabels(mesh);
        for (int v = 0; v < nDOFs; v++)
            g.m_pLabels[v] = amd[v];
#else
        printf("amd needs Eigen\n");
        return 1;
#endif
    } else {
        for (int v = 0; v < nDOFs; v++)
            g.m_pLabels[v] = v;
    }
    g.PostReorder();
    Row("numbering", tm.Lap());
    std::vector<int> labels(nDOFs);
    for (int v = 0; v < nDOFs; v++)
        labels[v] = g.f_v(v);

    // Pattern, assembly.
    size_t nHeap0 = HeapBytes();
    CSystSpMat m;
    tm.Lap();
    m.Allocate(g);
    Row("pattern Allocate(graph)", tm.Lap());
    AssembleMesh(m, mesh, labels);
    Row("assembly", tm.Lap());

    // Prescribed zeros through SymHandleBCs; its right-hand side rows set by the host.
    std::vector<int> fixed = mesh.Prescribed();
    CMatrix mBC((int)fixed.size(), 2, true, 0.0);
    for (size_t b = 0; b < fixed.size(); b++)
        mBC[(int)b][0] = labels[fixed[b]];
    CMatrix B(nDOFs, 1, true, 1.0);
    tm.Lap();
    m.SymHandleBCs(mBC, B);
    double dBCs = tm.Lap();
    for (size_t b = 0; b < fixed.size(); b++)
        B[labels[fixed[b]]][0] = 0.0;
    Row("prescribed values SymHandleBCs", dBCs);
    int nPatternCells = CountCells(m);

#ifdef FEMMAT_HAVE_EIGEN
    SpMat A = ToEigen(m);
    Eigen::VectorXd b(nDOFs);
    for (int i = 0; i < nDOFs; i++)
        b[i] = B[i][0];
#endif

    // Solve: Cholesky_Solve as a whole.
    tm.Lap();
    double dTime = 0.0;
    if (m.Cholesky_Solve(&B, dTime) != 1) {
        printf("Cholesky_Solve failed\n");
        return 1;
    }
    double dSolve = tm.Lap();
    Row("Cholesky_Solve", dSolve);
    int nCells = CountCells(m);
    size_t nHeap1 = HeapBytes();
    double dTable = (double)m.m_nTableRows * sizeof(CSparseMatrix::row);
    printf("  cells: pattern %d, factor %d; heap of the matrix %.1f MB, %.1f bytes per cell "
           "beside the row table\n",
           nPatternCells, nCells, (nHeap1 - nHeap0) / 1e6,
           ((double)(nHeap1 - nHeap0) - dTable) / nCells);

    // Next load over the kept pattern, then the steps one by one.
    m.Allocate(g);
    Row("  Allocate again: every cell to 0.0", tm.Lap());
    FlushCaches();
    tm.Lap();
    AssembleMesh(m, mesh, labels);
    double dReassembly = tm.Lap();
    Row("re-assembly into the kept pattern", dReassembly, "(fill-in kept as cells)");
    CVector vDOFs((int)fixed.size()), vValues((int)fixed.size(), true, 0.0);
    for (size_t k = 0; k < fixed.size(); k++)
        vDOFs[(int)k] = labels[fixed[k]];
    CMatrix B2(nDOFs, 1, true, 1.0);
    tm.Lap();
    m.SymUnifyAndZero(vDOFs, vValues, &B2);
    Row("prescribed values SymUnifyAndZero", tm.Lap());
    m.Cholesky();
    Row("  Cholesky", tm.Lap());
    m.ForwSub(&B2, NULL, -1);
    Row("  ForwSub -1", tm.Lap());
    m.DiagMult(&B2, NULL, -2);
    Row("  DiagMult -2", tm.Lap());
    m.BackwSub(&B2, NULL, 1);
    Row("  BackwSub 1", tm.Lap());
    printf("  solution check B[%d] = %.17g\n", nDOFs / 2, B[nDOFs / 2][0]);

#ifdef FEMMAT_HAVE_EIGEN
    // Eigen on the same matrix: the same numbering, then its own AMD.
    tm.Lap();
    Eigen::SimplicialLDLT<SpMat, Eigen::Upper, Eigen::NaturalOrdering<int>> same(A);
    Eigen::VectorXd x = same.solve(b);
    double dSame = tm.Lap();
    Eigen::SimplicialLDLT<SpMat, Eigen::Upper, Eigen::AMDOrdering<int>> amd(A);
    Eigen::VectorXd y = amd.solve(b);
    double dAmd = tm.Lap();
    double dDiff = 0.0;
    for (int i = 0; i < nDOFs; i++)
        dDiff = std::max(dDiff, std::fabs(x[i] - B[i][0]));
    char sz[64];
    snprintf(sz, sizeof sz, "ratio %.2f", dSolve / dSame);
    Row("Eigen SimplicialLDLT same numbering", dSame, sz);
    snprintf(sz, sizeof sz, "ratio %.2f", dSolve / dAmd);
    Row("Eigen SimplicialLDLT with AMD", dAmd, sz);
    printf("  largest difference of the solutions %.3g\n", dDiff);

    // Eigen re-assembly with coeffRef into the pattern of a first full assembly, which
    // holds every position an element writes, as femmat's kept pattern does.
    std::vector<Eigen::Triplet<double>> t;
    LONG d[8];
    const int nLocal = mesh.PerElement();
    for (int e = 0; e < mesh.Elements(); e++) {
        mesh.Dofs(e, d);
        for (int i = 0; i < nLocal; i++)
            for (int j = 0; j < nLocal; j++)
                if (labels[d[j]] >= labels[d[i]])
                    t.emplace_back(labels[d[i]], labels[d[j]], mesh.K[i * nLocal + j]);
    }
    SpMat K(nDOFs, nDOFs);
    K.setFromTriplets(t.begin(), t.end());
    K *= 0.0;
    FlushCaches();
    tm.Lap();
    for (int e = 0; e < mesh.Elements(); e++) {
        mesh.Dofs(e, d);
        for (int i = 0; i < nLocal; i++)
            for (int j = 0; j < nLocal; j++) {
                int r = labels[d[i]], c = labels[d[j]];
                double v = mesh.K[i * nLocal + j];
                if (c >= r && v != 0.0)
                    K.coeffRef(r, c) += v;
            }
    }
    double dEigenAsm = tm.Lap();
    snprintf(sz, sizeof sz, "ratio %.2f", dReassembly / dEigenAsm);
    Row("Eigen coeffRef re-assembly", dEigenAsm, sz);
#endif
    CVirtMat::m_bSym = false;
    return 0;
}
