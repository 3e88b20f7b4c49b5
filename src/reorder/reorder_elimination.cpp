// CReorderMat: minimum degree with true elimination (MinDegReorder4). A plain CReorderMat
// runs it in quotient-graph form (reorder_quotient.cpp); the row-by-row walk here, on a
// working copy of the adjacency, serves derived classes, whose unions, f_v and Copy must be
// reached through the table, and labels at entry that are negative. An unnumbered vertex
// holds -1 - its label at entry in m_pLabels, a numbered one its label.
#include "reorder/reorder_quotient.h"

#include <typeinfo>

void CReorderMat::MinDegReorder4() {
    int n = m_nRows;
    bool bWalk = typeid(*this) != typeid(CReorderMat);
    for (int v = 0; v < n && !bWalk; v++)
        bWalk = m_pLabels[v] < 0;
    if (!bWalk) {
        CFile file;
        if (!OpenScript(file))
            return;
        MatlabWrite(&file, "before");
        LONG nStart = AfxClock();
        CQuotientMinDeg(*this).Run(m_pLabels);
        EndScriptedRun(file, nStart);
        return;
    }

    // The eliminations destroy the rows: keep an exact copy to restore them from.
    CArrayArray<LONG> saved;
    saved.Alloc(n);
    for (int i = 0; i < n; i++) {
        int nSize = m_pRowSizes[i];
        saved.SetRowSize(i, nSize);
        for (int j = 0; j < nSize; j++)
            saved.m_ppRows[i][j] = m_ppRows[i][j];
    }

    CFile file;
    if (!OpenScript(file))
        return;
    MatlabWrite(&file, "before");
    // A vertex is no neighbour of itself (Copy puts the rows back as they were): an
    // element listing a degree of freedom twice leaves it in its own row, where it would
    // count towards its degree, could keep it from ever being chosen, and so from a label.
    for (int i = 0; i < n; i++) {
        int m = 0;
        for (int j = 0; j < m_pRowSizes[i]; j++) {
            if (m_ppRows[i][j] != i)
                m_ppRows[i][m++] = m_ppRows[i][j];
        }
        m_pRowSizes[i] = m;
    }
    LONG nStart = AfxClock();

    for (int v = 0; v < n; v++)
        m_pLabels[v] = -1 - m_pLabels[v];
    int k = 0;
    while (k < n) {
        // Least current degree, and the gap to the next smallest (n counting as a value).
        int nMin = n;
        int nGap = 0;
        int nChoice = -1;
        for (int v = 0; v < n; v++) {
            if (m_pLabels[v] >= 0)
                continue;
            int d = m_pRowSizes[v];
            if (d < nMin) {
                nGap = nMin - d;
                nMin = d;
                nChoice = v;
            } else if (nGap >= d - nMin) {
                nGap = d - nMin;
            }
        }
        if (nChoice < 0)
            break; // only labels negative at entry can get here
        SetLabels(nChoice, k, nGap);
        k++;
    }
    Copy(saved);

    EndScriptedRun(file, nStart);
}

int CReorderMat::SetLabels(int nVertex, int &nLabel, int nGap) {
    // A loop in place of the chain's recursion: its length can reach the vertex count.
    for (;;) {
        m_pLabels[nVertex] = nLabel;
        int t = m_pRowSizes[nVertex] + nGap + 1;
        int nNext = -1;
        // Eliminate: the unnumbered neighbours become each other's neighbours.
        const LONG *pRow = m_ppRows[nVertex];
        for (int j = 0; j < m_pRowSizes[nVertex]; j++) {
            int u = pRow[j];
            if (f_v(u) >= 0)
                continue;
            int d = UnionAdj_Ex_p_i(u, nVertex);
            if (d < t) {
                t = d;
                nNext = u;
            }
        }
        if (nNext < 0)
            return t;
        nLabel++;
        nVertex = nNext;
    }
}

int CReorderMat::UnionAdj_Ex_p_i(int i, int p) {
    LONG *pOld = m_ppRows[i];
    int nOld = m_pRowSizes[i];
    const LONG *pP = m_ppRows[p];
    int nP = m_pRowSizes[p];

    // Membership in the old row i is marked on the counts of its entries: a count is never
    // negative, so a complemented one marks a vertex of row i until the union is made.
    // The union is then linear without scratch storage; searching row i for each entry of
    // row p made MinDegReorder4 twenty times slower on a 200 by 200 grid of quads.
    for (int j = 0; j < nOld; j++) {
        int &nSize = m_pRowSizes[pOld[j]];
        if (nSize >= 0)
            nSize = ~nSize;
    }

    // Count: the old row less p, plus the new entries of row p.
    int c = 0;
    for (int j = 0; j < nOld; j++) {
        if (pOld[j] != p)
            c++;
    }
    for (int j = 0; j < nP; j++) {
        LONG x = pP[j];
        if (x != i && m_pRowSizes[x] >= 0)
            c++;
    }

    // Fill: the old row in its order without p, then row p's new entries in theirs.
    LONG *pNew = NULL;
    if (c > 0) {
        pNew = new LONG[c];
        int m = 0;
        for (int j = 0; j < nOld; j++) {
            if (pOld[j] != p)
                pNew[m++] = pOld[j];
        }
        for (int j = 0; j < nP; j++) {
            LONG x = pP[j];
            if (x != i && m_pRowSizes[x] >= 0)
                pNew[m++] = x;
        }
    }

    // Unmark before the count of i changes (i may stand in its own row).
    for (int j = 0; j < nOld; j++) {
        int &nSize = m_pRowSizes[pOld[j]];
        if (nSize < 0)
            nSize = ~nSize;
    }
    delete[] pOld;
    m_ppRows[i] = pNew;
    m_pRowSizes[i] = c;
    return c;
}
