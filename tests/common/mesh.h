// The meshes of the road tests: grids of bilinear quads or of triangles with one or two
// degrees of freedom per node, their element matrices, the host's assembly in labels, and a
// dense reference solve.
#pragma once

#include "dense/matrix.h"
#include "reorder/reordermat.h"

#include <cmath>
#include <vector>

struct RoadMesh {
    int nDOFs = 0;
    int nLocal = 0;                      // degrees of freedom per element
    std::vector<std::vector<LONG>> dofs; // per element; -1 for a dof without equation
    std::vector<int> prescribed;         // the dofs of the edge y = 0
};

// Node-level stiffness of the unit square quad (nodes counter-clockwise) and of the two
// right triangles a quad splits into.
static const double s_Quad[4][4] = {
    {4, -1, -2, -1}, {-1, 4, -1, -2}, {-2, -1, 4, -1}, {-1, -2, -1, 4}};
static const double s_TriB[3][3] = {{1, -1, 0}, {-1, 2, -1}, {0, -1, 1}}; // right angle at 1
static const double s_TriD[3][3] = {{1, 0, -1}, {0, 1, -1}, {-1, -1, 2}}; // right angle at 2

// nx by ny nodes numbered row by row; the last component of the last node has no equation.
inline RoadMesh MakeRoadMesh(int nx, int ny, bool bQuads, int nPerNode) {
    RoadMesh mesh;
    int nNodes = nx * ny;
    std::vector<LONG> eq(nNodes * nPerNode);
    for (int k = 0; k < (int)eq.size(); k++)
        eq[k] = k + 1 < (int)eq.size() ? mesh.nDOFs++ : -1;
    auto Dofs = [&](std::vector<int> nodes) {
        std::vector<LONG> d;
        for (int node : nodes)
            for (int c = 0; c < nPerNode; c++)
                d.push_back(eq[node * nPerNode + c]);
        return d;
    };
    for (int y = 0; y + 1 < ny; y++) {
        for (int x = 0; x + 1 < nx; x++) {
            int a = y * nx + x, b = a + 1, c = a + nx + 1, d = a + nx;
            if (bQuads) {
                mesh.dofs.push_back(Dofs({a, b, c, d}));
            } else {
                mesh.dofs.push_back(Dofs({a, b, c}));
                mesh.dofs.push_back(Dofs({a, c, d}));
            }
        }
    }
    mesh.nLocal = (bQuads ? 4 : 3) * nPerNode;
    for (int x = 0; x < nx; x++)
        for (int c = 0; c < nPerNode; c++)
            mesh.prescribed.push_back(eq[x * nPerNode + c]);
    return mesh;
}

// Element e of the given load, row-major. Symmetric positive definite stiffness plus mass,
// weighted per element and load; bSkew adds an antisymmetric part, so that the matrix stays
// positive definite but is no longer symmetric.
inline std::vector<double> ElementMatrix(const RoadMesh &mesh, int e, int nLoad, bool bSkew) {
    const int L = mesh.nLocal;
    const int nPerNode = L == 4 || L == 3 ? 1 : 2;
    const int nNodes = L / nPerNode;
    const double C[2][2] = {{2.0, 0.5}, {0.5, 1.0}};
    const double w = 1.0 + 0.25 * ((e * 7 + nLoad * 3) % 5);
    std::vector<double> values(L * L);
    for (int p = 0; p < L; p++) {
        for (int q = 0; q < L; q++) {
            int i = p / nPerNode, j = q / nPerNode;
            double k;
            if (nNodes == 4)
                k = s_Quad[i][j] / 6.0;
            else
                k = (e % 2 == 0 ? s_TriB[i][j] : s_TriD[i][j]) / 2.0;
            k += 0.05 * (i == j ? 2.0 : 1.0);
            double c = nPerNode == 1 ? 1.0 : C[p % nPerNode][q % nPerNode];
            values[p * L + q] = w * k * c + (bSkew ? 0.1 * (p - q) / L : 0.0);
        }
    }
    return values;
}

// The load of right-hand side k at dof d.
inline double LoadValue(int d, int k) {
    return k == 0 ? 1.0 + 0.1 * (d % 5) : std::cos(0.3 * d);
}

// The host's assembly: each element's dofs mapped through the numbering, then AddValues.
inline void AssembleInLabels(CVirtRealMat &m, CReorderMat &g, const RoadMesh &mesh, int nLoad,
                             bool bSkew) {
    for (int e = 0; e < (int)mesh.dofs.size(); e++) {
        std::vector<LONG> dofs = mesh.dofs[e];
        for (LONG &d : dofs)
            d = d < 0 ? d : g.f_v(d);
        m.AddValues(dofs.data(), ElementMatrix(mesh, e, nLoad, bSkew).data(), (int)dofs.size());
    }
}

// The two load columns, each dof's values in its label's row.
inline CMatrix LoadsInLabels(CReorderMat &g, const RoadMesh &mesh) {
    CMatrix B(mesh.nDOFs, 2);
    for (int d = 0; d < mesh.nDOFs; d++)
        for (int k = 0; k < 2; k++)
            B[g.f_v(d)][k] = LoadValue(d, k);
    return B;
}

// Solves A x = b (n by n, row-major) by elimination with partial pivoting.
inline std::vector<double> DenseSolve(std::vector<double> A, std::vector<double> b) {
    const int n = (int)b.size();
    for (int k = 0; k < n; k++) {
        int p = k;
        for (int i = k + 1; i < n; i++)
            if (std::fabs(A[i * n + k]) > std::fabs(A[p * n + k]))
                p = i;
        for (int j = 0; j < n; j++)
            std::swap(A[k * n + j], A[p * n + j]);
        std::swap(b[k], b[p]);
        for (int i = k + 1; i < n; i++) {
            double l = A[i * n + k] / A[k * n + k];
            for (int j = k; j < n; j++)
                A[i * n + j] -= l * A[k * n + j];
            b[i] -= l * b[k];
        }
    }
    std::vector<double> x(n);
    for (int i = n - 1; i >= 0; i--) {
        double s = b[i];
        for (int j = i + 1; j < n; j++)
            s -= A[i * n + j] * x[j];
        x[i] = s / A[i * n + i];
    }
    return x;
}

// The dense solution in dof numbering, with value g[d] at the prescribed dofs (g has an
// entry for every dof; only the prescribed ones are read).
inline std::vector<double> ReferenceSolve(const RoadMesh &mesh, int nLoad, bool bSkew, int k,
                                          const std::vector<double> &g) {
    const int n = mesh.nDOFs, L = mesh.nLocal;
    std::vector<double> A(n * n, 0.0);
    for (int e = 0; e < (int)mesh.dofs.size(); e++) {
        std::vector<double> v = ElementMatrix(mesh, e, nLoad, bSkew);
        for (int p = 0; p < L; p++)
            for (int q = 0; q < L; q++)
                if (mesh.dofs[e][p] >= 0 && mesh.dofs[e][q] >= 0)
                    A[mesh.dofs[e][p] * n + mesh.dofs[e][q]] += v[p * L + q];
    }
    std::vector<bool> fixed(n, false);
    for (int d : mesh.prescribed)
        fixed[d] = true;
    std::vector<int> freeDofs;
    for (int d = 0; d < n; d++)
        if (!fixed[d])
            freeDofs.push_back(d);
    const int m = (int)freeDofs.size();
    std::vector<double> Aff(m * m), bf(m);
    for (int a = 0; a < m; a++) {
        int i = freeDofs[a];
        bf[a] = LoadValue(i, k);
        for (int j = 0; j < n; j++)
            if (fixed[j])
                bf[a] -= A[i * n + j] * g[j];
        for (int b = 0; b < m; b++)
            Aff[a * m + b] = A[i * n + freeDofs[b]];
    }
    std::vector<double> xf = DenseSolve(Aff, bf);
    std::vector<double> x(n);
    for (int d = 0; d < n; d++)
        if (fixed[d])
            x[d] = g[d];
    for (int a = 0; a < m; a++)
        x[freeDofs[a]] = xf[a];
    return x;
}
