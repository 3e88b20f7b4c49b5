// CReorderMat: approximate minimum degree through SuiteSparse's AMD, for fill. Built only
// with the library's AMD option (FEMMAT_HAS_AMD).
#ifdef FEMMAT_HAS_AMD

#include "reorder/reordermat.h"

#include <vector>

#include "amd.h"

void CReorderMat::AMDReorder() {
    CFile file;
    LONG nStart;
    if (!BeginOwnScriptRun(file, nStart))
        return;
    NumberAMD();
    EndOwnScriptRun(file, nStart, true);
}

bool CReorderMat::NumberAMD() {
    const int n = m_nRows;
    if (n == 0)
        return true;
    // The pattern in compressed columns, both triangles; a vertex listed as its own
    // neighbour is left out, as AMD ignores the diagonal anyway.
    std::vector<LONG> columnStart(n + 1);
    int nEntries = 0;
    for (int v = 0; v < n; v++) {
        columnStart[v] = nEntries;
        for (int j = 0; j < m_pRowSizes[v]; j++)
            nEntries += m_ppRows[v][j] != v;
    }
    columnStart[n] = nEntries;
    std::vector<LONG> rows(nEntries > 0 ? nEntries : 1);
    for (int v = 0, k = 0; v < n; v++) {
        for (int j = 0; j < m_pRowSizes[v]; j++) {
            if (m_ppRows[v][j] != v)
                rows[k++] = m_ppRows[v][j];
        }
    }

    std::vector<LONG> pivots(n);
    double control[AMD_CONTROL];
    amd_defaults(control);
    int nStatus = amd_order(n, columnStart.data(), rows.data(), pivots.data(), control, NULL);
    if (nStatus != AMD_OK && nStatus != AMD_OK_BUT_JUMBLED)
        return false;
    for (int k = 0; k < n; k++)
        m_pLabels[pivots[k]] = k;
    return true;
}

#endif
