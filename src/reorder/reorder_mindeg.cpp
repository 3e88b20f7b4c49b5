// CReorderMat: the three minimum-degree numberings without elimination.
//
// During a run an unnumbered vertex holds minus its degree in m_pLabels (0 or negative)
// and a numbered one its label plus 1 (positive). Each turn picks the first vertex, in
// vertex order, of least score. Scanning all vertices for it makes a run quadratic (on a
// 200 by 200 grid of quads 1 s for variant 2, 6 s for variant 3, 15 s for variant 1); here
// minimum trees give the same vertex in log time and a turn rescores only the vertices
// whose score it changed (each then takes 20 ms or less there).
#include "reorder/reordermat.h"

#include <algorithm>
#include <climits>
#include <cstdio>
#include <vector>

// "Used time reordering:   %u m %2.2f s\r\n" for the time from nStart to nEnd (ms ticks).
static void BuildReport(char (&szText)[128], LONG nStart, LONG nEnd) {
    double dSeconds = (double)(nEnd - nStart) * 0.001;
    snprintf(szText, sizeof(szText), "Used time reordering:   %s\r\n",
             (const char *)CVirtMat::FormatTime(dSeconds));
}

void CReorderMat::EndScriptedRun(CFile &file, LONG nStart) {
    LONG nEnd = AfxClock();
    MatlabWrite(&file, "after");
    WriteScriptTrailer(&file, true);
    file.Close();
    char szText[128];
    BuildReport(szText, nStart, nEnd);
    AfxMessageBox(szText, 0, 0);
}

namespace {

// A value per vertex (INT_MAX for none), with the smallest value and the first vertex at or
// below a bound found in log time: a complete binary tree of minima over the vertices.
class CMinTree {
public:
    explicit CMinTree(int n) : m_nLeaves(1) {
        while (m_nLeaves < n)
            m_nLeaves *= 2;
        m_tree.assign(2 * m_nLeaves, INT_MAX);
    }
    void Set(int i, int nValue) {
        int p = i + m_nLeaves;
        m_tree[p] = nValue;
        for (p /= 2; p >= 1; p /= 2)
            m_tree[p] = std::min(m_tree[2 * p], m_tree[2 * p + 1]);
    }
    int Min() const { return m_tree[1]; }
    int Get(int i) const { return m_tree[i + m_nLeaves]; }
    // The first vertex whose value is at most nBound, or -1.
    int FirstAtMost(int nBound) const {
        if (m_tree[1] > nBound)
            return -1;
        int p = 1;
        while (p < m_nLeaves)
            p = m_tree[2 * p] <= nBound ? 2 * p : 2 * p + 1;
        return p - m_nLeaves;
    }

private:
    int m_nLeaves;
    std::vector<int> m_tree;
};

} // namespace

// Variant 1 scores vertex i with max(0, M_i - k), M_i being the largest degree carried by
// an unnumbered neighbour (0 if none). The first vertex of least score is then the first
// one with M_i at most max(min M, k): a tree query on M. A turn changes the values of b
// and k only, so M changes only around them.
static int MaxCarriedDegree(CReorderMat &g, int i) {
    int nMax = 0;
    const LONG *pRow = g.m_ppRows[i];
    for (int j = 0; j < g.m_pRowSizes[i]; j++) {
        int fu = g.f_v(pRow[j]);
        if (fu <= 0 && -fu > nMax)
            nMax = -fu;
    }
    return nMax;
}

static void RescoreNeighbours(CReorderMat &g, CMinTree &tree, int w) {
    const LONG *pRow = g.m_ppRows[w];
    for (int j = 0; j < g.m_pRowSizes[w]; j++) {
        int u = pRow[j];
        if (g.f_v(u) <= 0)
            tree.Set(u, MaxCarriedDegree(g, u));
    }
}

void CReorderMat::MinDegReorder(CFile *pFile) {
    int n = m_nRows;
    if (pFile != NULL)
        MatlabWrite(pFile, "before");
    LONG nStart = AfxClock();

    // Static degrees: only the overwrite at vertex k changes what a vertex carries.
    for (int v = 0; v < n; v++)
        m_pLabels[v] = -m_pRowSizes[v];
    CMinTree tree(n);
    for (int v = 0; v < n; v++)
        tree.Set(v, MaxCarriedDegree(*this, v));
    for (int k = 0; k < n - 1; k++) {
        // The first unnumbered vertex of least score.
        int b = tree.FirstAtMost(std::max(tree.Min(), k));
        bool bCarried = m_pLabels[k] <= 0 && k != b;
        if (m_pLabels[k] <= 0)
            m_pLabels[k] = m_pLabels[b];
        m_pLabels[b] = k + 1;

        // Only the neighbours of b and of k see a changed value.
        tree.Set(b, INT_MAX);
        RescoreNeighbours(*this, tree, b);
        if (bCarried)
            RescoreNeighbours(*this, tree, k);
    }
    // The one vertex left takes the last label; then labels from 0.
    for (int v = 0; v < n; v++) {
        if (m_pLabels[v] <= 0)
            m_pLabels[v] = n;
        m_pLabels[v]--;
    }

    LONG nEnd = AfxClock();
    char szText[128];
    BuildReport(szText, nStart, nEnd);
    if (pFile != NULL) {
        MatlabWrite(pFile, "after");
        WriteScriptTrailer(pFile, true);
    }
    AfxMessageBox(szText, 0, 0);
}

void CReorderMat::MinDegReorder2() {
    CFile file;
    if (!OpenScript(file))
        return;
    MatlabWrite(&file, "before");
    LONG nStart = AfxClock();

    // The first unnumbered vertex of least current degree is a tree query; the scan with
    // its lower bound would find the same vertex.
    int n = m_nRows;
    CMinTree tree(n);
    for (int v = 0; v < n; v++) {
        m_pLabels[v] = -m_pRowSizes[v];
        tree.Set(v, m_pRowSizes[v]);
    }
    for (int k = 0; k < n; k++) {
        int b = tree.FirstAtMost(tree.Min());
        const LONG *pRow = m_ppRows[b];
        for (int j = 0; j < m_pRowSizes[b]; j++) {
            int u = pRow[j];
            if (m_pLabels[u] < 0) {
                m_pLabels[u]++;
                tree.Set(u, -m_pLabels[u]);
            }
        }
        m_pLabels[b] = k + 1;
        tree.Set(b, INT_MAX);
    }
    for (int v = 0; v < n; v++)
        m_pLabels[v]--;

    EndScriptedRun(file, nStart);
}

// Variant 3 scores vertex i at turn k with max(|hi - k|, |k - lo|) = max(A - k, k - B),
// A and B being the larger and smaller of hi and lo (lo <= hi when i has neighbours that
// count, and A = n, B = 0 when it has none). Vertices with A + B >= 2k score A - k (the
// near family), the others k - B (the far family). A and B change only for the neighbours
// of the vertex just numbered; otherwise, as k grows, a vertex only passes from the near
// family to the far one, which buckets by A + B tell. Each family keeps its score less the
// turn's share (A, or -B) in a minimum tree.
namespace {

class CDistanceChoice {
public:
    explicit CDistanceChoice(CReorderMat &g)
        : m_g(g), m_n(g.m_nRows), m_near(m_n), m_far(m_n), m_A(m_n), m_B(m_n),
          m_buckets(2 * m_n + 1), m_nNextKey(0) {}

    // Scores vertex i anew from its unnumbered neighbours, for the turn k.
    void Update(int i, int k) {
        int nHi = 0, nLo = m_n;
        const LONG *pRow = m_g.m_ppRows[i];
        for (int j = 0; j < m_g.m_pRowSizes[i]; j++) {
            int u = pRow[j];
            if (m_g.m_pLabels[u] < 0) {
                nHi = std::max(nHi, u);
                nLo = std::min(nLo, u);
            }
        }
        m_A[i] = std::max(nHi, nLo);
        m_B[i] = std::min(nHi, nLo);
        int nKey = m_A[i] + m_B[i];
        if (nKey >= 2 * k) {
            m_near.Set(i, m_A[i]);
            m_far.Set(i, INT_MAX);
            m_buckets[nKey].push_back(i);
        } else {
            m_near.Set(i, INT_MAX);
            m_far.Set(i, -m_B[i]);
        }
    }
    void Remove(int i) {
        m_near.Set(i, INT_MAX);
        m_far.Set(i, INT_MAX);
    }
    // The first unnumbered vertex of least score at turn k.
    int Choose(int k) {
        // Vertices whose key fell below 2k pass to the far family (stale entries skipped).
        for (; m_nNextKey < 2 * k && m_nNextKey < (int)m_buckets.size(); m_nNextKey++) {
            for (int i : m_buckets[m_nNextKey]) {
                if (m_near.Get(i) != INT_MAX && m_A[i] + m_B[i] == m_nNextKey) {
                    m_near.Set(i, INT_MAX);
                    m_far.Set(i, -m_B[i]);
                }
            }
            std::vector<int>().swap(m_buckets[m_nNextKey]);
        }
        // The better family's first vertex of least score; on a tie the earlier vertex.
        int b = INT_MAX, nBest = INT_MAX;
        if (m_near.Min() != INT_MAX) {
            nBest = m_near.Min() - k;
            b = m_near.FirstAtMost(m_near.Min());
        }
        if (m_far.Min() != INT_MAX) {
            int nFar = m_far.Min() + k;
            int bFar = m_far.FirstAtMost(m_far.Min());
            if (nFar < nBest || (nFar == nBest && bFar < b))
                b = bFar;
        }
        return b;
    }

private:
    CReorderMat &m_g;
    int m_n;
    CMinTree m_near;                         // A of the near family
    CMinTree m_far;                          // -B of the far family
    std::vector<int> m_A;                    // larger of hi and lo
    std::vector<int> m_B;                    // smaller of hi and lo
    std::vector<std::vector<int>> m_buckets; // near-family vertices by A + B
    int m_nNextKey;                          // keys below it have been passed on
};

} // namespace

void CReorderMat::MinDegReorder3() {
    CFile file;
    if (!OpenScript(file))
        return;
    MatlabWrite(&file, "before");
    LONG nStart = AfxClock();

    int n = m_nRows;
    for (int v = 0; v < n; v++)
        m_pLabels[v] = -m_pRowSizes[v];
    CDistanceChoice choice(*this);
    for (int v = 0; v < n; v++)
        choice.Update(v, 0);
    for (int k = 0; k < n; k++) {
        // The vertex whose unnumbered neighbours' numbers lie least far from k.
        int b = choice.Choose(k);
        const LONG *pRow = m_ppRows[b];
        for (int j = 0; j < m_pRowSizes[b]; j++) {
            if (m_pLabels[pRow[j]] < 0)
                m_pLabels[pRow[j]]++;
        }
        m_pLabels[b] = k + 1;
        choice.Remove(b);
        // b no longer counts for its neighbours. (A neighbour whose value reaches 0 stops
        // counting too, but all of its own neighbours are numbered by then.)
        for (int j = 0; j < m_pRowSizes[b]; j++) {
            int u = pRow[j];
            if (m_pLabels[u] <= 0)
                choice.Update(u, k + 1);
        }
    }
    for (int v = 0; v < n; v++)
        m_pLabels[v]--;

    EndScriptedRun(file, nStart);
}
