// A short host program walking femmat's road: the heat equation -div grad u = 1 on the unit
// square, bilinear quads on an n by n grid of nodes, u = 0 on the left edge.
//   graph -> numbering -> pattern -> assembly -> prescribed values -> solve
// The same system is solved on the sparse system matrix and on the skyline matrix, and the
// two answers are compared.
#include "femmat.h"

#include <cmath>
#include <cstdio>
#include <vector>

// Reports of the solvers and reorderers go to the console instead of a message box.
static int PrintReport(const char *pszText) {
    printf("---- report ----\n%s\n----------------\n", pszText);
    return 1;
}

int main() {
    const int n = 20; // nodes per side
    const double h = 1.0 / (n - 1);
    const int nDOFs = n * n;
    AfxSetReportHandler(PrintReport);
    CReorderMat::SetScriptName("example_road.m");

    // Element connectivity: the four corner nodes of each quad, counter-clockwise.
    std::vector<std::vector<LONG>> elements;
    for (int j = 0; j + 1 < n; j++)
        for (int i = 0; i + 1 < n; i++) {
            LONG a = j * n + i;
            elements.push_back({a, a + 1, a + 1 + n, a + n});
        }
    // Stiffness of a square bilinear element (independent of its size in 2D).
    double ke[16] = {4, -1, -2, -1, -1, 4, -1, -2, -2, -1, 4, -1, -1, -2, -1, 4};
    for (double &k : ke)
        k /= 6.0;

    // 1. Graph: two passes over the elements.
    CReorderMat graph(1);
    graph.Alloc(nDOFs);
    for (auto &e : elements)
        graph.InsertDOFs(e.data(), 0, 4);
    graph.Init();
    for (auto &e : elements)
        graph.InsertDOFs(e.data(), 1, 4);

    // 2. Numbering.
    int nBand = 0;
    long long nEnvBefore = graph.Env64(&nBand);
    printf("natural numbering: bandwidth %d, envelope %lld\n", nBand, nEnvBefore);
    graph.MinDegReorder4();
    graph.PostReorder();
    long long nEnvAfter = graph.Env64(&nBand);
    printf("minimum degree:    bandwidth %d, envelope %lld\n", nBand, nEnvAfter);

    // 3. Pattern: the skyline from the graph first, since the system matrix spends it.
    CSkylineMatrix sky;
    sky.Allocate(graph);
    CSystSpMat A;
    A.Allocate(graph);

    // 4. Assembly of the upper triangle, element by element, in label order.
    CVirtMat::m_bSym = true;
    CMatrix B(nDOFs, 1, true, 0.0);
    for (auto &e : elements) {
        LONG labels[4];
        for (int k = 0; k < 4; k++)
            labels[k] = graph.f_v(e[k]);
        A.AddValues(labels, ke, 4);
        sky.AddValues(labels, ke, 4);
        for (int k = 0; k < 4; k++)
            B.AddValue(labels[k], 0, h * h / 4.0);
    }
    CMatrix Bsky = B;

    // 5. Prescribed values: u = 0 on the left edge (node column i = 0).
    CVector vDOFs(n, false, 0.0), vValues(n, true, 0.0);
    for (int j = 0; j < n; j++)
        vDOFs[j] = graph.f_v(j * n);
    A.SymUnifyAndZero(vDOFs, vValues, &B);
    // The skyline leaves this to the host: identity row and column, value 0 on the right.
    for (int j = 0; j < n; j++) {
        int d = (int)vDOFs[j];
        for (int c = 0; c < nDOFs; c++) {
            int nRow = c > d ? c : d, nCol = c < d ? c : d;
            if (c != d && sky.PeakRow(nRow) <= nCol)
                sky(nCol, nRow) = 0.0; // (column, row) of the lower triangle
        }
        sky(d, d) = 1.0;
        Bsky.SetValue(d, 0, 0.0);
    }

    // 6. Solution.
    double dTime = 0.0;
    int nOk = A.Cholesky_Solve(&B, dTime);
    printf("system matrix Cholesky_Solve: %d in %.3f s, %u flops\n", nOk, dTime,
           (unsigned)CVirtMat::m_Flops);
    nOk = sky.Cholesky_Solve(&Bsky, dTime);
    printf("skyline Cholesky_Solve: %d in %.3f s\n", nOk, dTime);

    double dDiff = 0.0, dMax = 0.0;
    for (int v = 0; v < nDOFs; v++) {
        int l = graph.f_v(v);
        dDiff = fmax(dDiff, fabs(B.GetValue(l, 0) - Bsky.GetValue(l, 0)));
        dMax = fmax(dMax, B.GetValue(l, 0));
    }
    printf("max u = %.6f at the right edge, sparse vs skyline differ by %.2e\n", dMax, dDiff);
    CVirtMat::m_bSym = false;
    return 0;
}
