// CReorderMat: reverse Cuthill-McKee, the level walks it shares with Sloan's numbering, and
// the frame of a run of the numberings beside the described ones.
#include "reorder/levelwalk.h"
#include "reorder/reordermat.h"

#include <algorithm>
#include <cstdio>

CLevelWalk::CLevelWalk(const CArrayArray<LONG> &g)
    : m_order(g.m_nRows), m_g(g), m_mark(g.m_nRows, 0) {}

int CLevelWalk::Walk(int nRoot) {
    // Marks from earlier walks go stale by the count; only a wrap needs a reset.
    if (++m_nWalk == 0) {
        std::fill(m_mark.begin(), m_mark.end(), 0u);
        m_nWalk = 1;
    }
    const unsigned nWalk = m_nWalk;
    m_levelStart.clear();
    m_mark[nRoot] = nWalk;
    m_order[0] = nRoot;
    int nTail = 1;
    int nHead = 0;
    while (nHead < nTail) {
        m_levelStart.push_back(nHead);
        int nLevelEnd = nTail;
        for (; nHead < nLevelEnd; nHead++) {
            int v = m_order[nHead];
            const LONG *pRow = m_g.m_ppRows[v];
            const int nSize = m_g.m_pRowSizes[v];
            for (int j = 0; j < nSize; j++) {
                int u = pRow[j];
                if (m_mark[u] != nWalk) {
                    m_mark[u] = nWalk;
                    m_order[nTail++] = u;
                }
            }
        }
    }
    m_levelStart.push_back(nTail);
    m_nReached = nTail;
    return (int)m_levelStart.size() - 1;
}

void CLevelWalk::PseudoPeripheralPair(int nRoot, int &nStart, int &nEnd) {
    int r = nRoot;
    int nDepth = Walk(r);
    for (;;) {
        // A single vertex is its own pair.
        if (nDepth == 1) {
            nStart = nEnd = r;
            return;
        }
        // The vertex of least degree in the last level, the first reached on a tie.
        int x = -1;
        for (int k = m_levelStart[nDepth - 1]; k < m_nReached; k++) {
            int v = m_order[k];
            if (x < 0 || m_g.m_pRowSizes[v] < m_g.m_pRowSizes[x])
                x = v;
        }
        int nDepthX = Walk(x);
        if (nDepthX <= nDepth) {
            nStart = x;
            nEnd = r;
            return;
        }
        r = x;
        nDepth = nDepthX;
    }
}

bool CReorderMat::BeginOwnScriptRun(CFile &file, LONG &nStart) {
    if (!OpenScript(file))
        return false;
    MatlabWrite(&file, "before");
    nStart = AfxClock();
    return true;
}

void CReorderMat::EndOwnScriptRun(CFile &file, LONG nStart, bool bMinDegTrailer) {
    LONG nEnd = AfxClock();
    MatlabWrite(&file, "after");
    WriteScriptTrailer(&file, bMinDegTrailer);
    file.Close();
    char szText[128];
    snprintf(szText, sizeof(szText), "Used time reordering:   %s\r\n",
             (const char *)CVirtMat::FormatTime((double)(nEnd - nStart) * 0.001));
    AfxMessageBox(szText, 0, 0);
}

void CReorderMat::ReverseCuthillMcKee() {
    CFile file;
    LONG nStart;
    if (!BeginOwnScriptRun(file, nStart))
        return;
    NumberRCM();
    EndOwnScriptRun(file, nStart, false);
}

// Sorts a short run of vertices by degree, keeping the order of equal degrees.
static void SortByDegree(LONG *pFirst, LONG *pLast, const int *pDegrees) {
    if (pLast - pFirst > 16) {
        std::stable_sort(pFirst, pLast,
                         [pDegrees](LONG a, LONG b) { return pDegrees[a] < pDegrees[b]; });
        return;
    }
    for (LONG *p = pFirst + 1; p < pLast; p++) {
        LONG v = *p;
        int d = pDegrees[v];
        LONG *q = p;
        for (; q > pFirst && pDegrees[q[-1]] > d; q--)
            *q = q[-1];
        *q = v;
    }
}

void CReorderMat::NumberRCM() {
    const int n = m_nRows;
    // -1 marks a vertex not yet reached by the numbering.
    for (int v = 0; v < n; v++)
        m_pLabels[v] = -1;
    CLevelWalk walk(*this);
    std::vector<LONG> sequence(n);
    int nBase = 0;
    for (int nRoot = 0; nRoot < n; nRoot++) {
        if (m_pLabels[nRoot] >= 0)
            continue;
        int s, e;
        walk.PseudoPeripheralPair(nRoot, s, e);

        // Cuthill-McKee from s: the queue is the sequence itself.
        sequence[nBase] = s;
        m_pLabels[s] = 0;
        int nTail = nBase + 1;
        for (int nHead = nBase; nHead < nTail; nHead++) {
            int v = sequence[nHead];
            const LONG *pRow = m_ppRows[v];
            const int nSize = m_pRowSizes[v];
            int nFirst = nTail;
            for (int j = 0; j < nSize; j++) {
                int u = pRow[j];
                if (m_pLabels[u] < 0) {
                    m_pLabels[u] = 0;
                    sequence[nTail++] = u;
                }
            }
            SortByDegree(sequence.data() + nFirst, sequence.data() + nTail, m_pRowSizes);
        }
        // Reversed within the component, which keeps its place among the others.
        for (int k = nBase; k < nTail; k++)
            m_pLabels[sequence[k]] = nBase + nTail - 1 - k;
        nBase = nTail;
    }
}
