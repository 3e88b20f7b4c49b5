// CReorderMat: the eliminating minimum-degree numbering in quotient-graph form. It gives the
// labels of the row-by-row walk of reorder_elimination.cpp at a cost near the size of the
// factor instead of its square.
//
// The walk's rows are the elimination graph: every union makes a row the set of neighbours
// the vertex has once its neighbour is gone. Here an eliminated vertex becomes an element
// whose boundary is its row at that moment; a live vertex keeps the elements it touches and
// the original neighbours no element covers yet, and its degree is the size of the union of
// those, which is what the walk's count is. The walk's rows also have an order, which
// decides the chain when several neighbours share the least degree; that order is rebuilt
// only when needed (FirstInRow below).
#include "reorder/reorder_quotient.h"

#include <algorithm>
#include <climits>

CQuotientMinDeg::CQuotientMinDeg(const CReorderMat &g) : m_n(g.m_nRows) {
    // Original rows without a vertex's own entries: a vertex is no neighbour of itself.
    m_rowStart.assign(m_n + 1, 0);
    for (int i = 0; i < m_n; i++) {
        int nSize = 0;
        for (int j = 0; j < g.m_pRowSizes[i]; j++)
            nSize += g.m_ppRows[i][j] != i;
        m_rowStart[i + 1] = m_rowStart[i] + nSize;
    }
    m_rowAdj.resize(m_rowStart[m_n]);
    m_A.resize(m_n);
    for (int i = 0, m = 0; i < m_n; i++) {
        for (int j = 0; j < g.m_pRowSizes[i]; j++) {
            if (g.m_ppRows[i][j] != i)
                m_rowAdj[m++] = g.m_ppRows[i][j];
        }
        m_A[i].assign(m_rowAdj.begin() + m_rowStart[i], m_rowAdj.begin() + m_rowStart[i + 1]);
    }
    m_label.assign(m_n, -1);
    m_elimOrder.assign(m_n, -1);
    m_deg.resize(m_n);
    m_nGone.assign(m_n, 0);
    for (int i = 0; i < m_n; i++)
        m_deg[i] = (int)m_A[i].size();
    m_E.resize(m_n);
    m_single.resize(m_n);
    m_L.resize(m_n);
    m_absorbedBy.assign(m_n, -1);
    m_ufParent.resize(m_n);
    m_ufTime.assign(m_n, 0);
    m_ufSize.assign(m_n, 1);
    for (int i = 0; i < m_n; i++)
        m_ufParent[i] = i;
    m_inL.assign(m_n, 0);
    m_seen.assign(m_n, 0);
    m_wStamp.assign(m_n, 0);
    m_w.assign(m_n, 0);
    m_ancStamp.assign(m_n, 0);
    m_ancBest.assign(m_n, 0);
    m_dirty.assign(m_n, 0);
}

void CQuotientMinDeg::Run(LONG *pLabels) {
    // Minima of the degrees of live vertices, refreshed at each chain's start for the
    // vertices a chain touched.
    int nLeaves = 1;
    while (nLeaves < m_n)
        nLeaves *= 2;
    m_nLeaves = nLeaves;
    m_tree.assign(2 * nLeaves, INT_MAX);
    for (int v = 0; v < m_n; v++)
        m_tree[nLeaves + v] = m_deg[v];
    for (int p = nLeaves - 1; p >= 1; p--)
        m_tree[p] = std::min(m_tree[2 * p], m_tree[2 * p + 1]);

    int k = 0;
    while (k < m_n) {
        // Refresh the minima and choose: the first vertex of least degree, and the gap
        // to the next smallest degree (n counting as a value).
        for (int u : m_dirtyList) {
            m_dirty[u] = 0;
            SetLeaf(u, m_label[u] < 0 ? m_deg[u] : INT_MAX);
        }
        m_dirtyList.clear();
        int nMin = m_tree[1];
        if (nMin == INT_MAX)
            break;
        int p = 1;
        while (p < nLeaves)
            p = m_tree[2 * p] <= nMin ? 2 * p : 2 * p + 1;
        int nChoice = p - nLeaves;
        SetLeaf(nChoice, INT_MAX);
        int nGap = std::min(m_n, m_tree[1]) - nMin;

        // The chain: eliminate, and go on to the first neighbour, in row order, of least
        // new degree while that stays below the threshold.
        int v = nChoice;
        int t = m_deg[v] + nGap + 1;
        for (;;) {
            int nNext = Eliminate(v, k, t);
            if (nNext < 0)
                break;
            k++;
            t = m_deg[nNext] + nGap + 1;
            v = nNext;
        }
        k++;
    }
    for (int v = 0; v < m_n; v++)
        pLabels[v] = m_label[v];
}

void CQuotientMinDeg::SetLeaf(int i, int nValue) {
    int p = i + m_nLeaves;
    m_tree[p] = nValue;
    for (p /= 2; p >= 1; p /= 2) {
        int nMin = std::min(m_tree[2 * p], m_tree[2 * p + 1]);
        if (m_tree[p] == nMin)
            break;
        m_tree[p] = nMin;
    }
}

void CQuotientMinDeg::MarkDirty(int u) {
    if (!m_dirty[u]) {
        m_dirty[u] = 1;
        m_dirtyList.push_back(u);
    }
}

// Removes x from the list a (it stands there at most once); false if it wasn't there.
static bool RemoveFrom(std::vector<int> &a, int x) {
    for (size_t j = 0; j < a.size(); j++) {
        if (a[j] == x) {
            a[j] = a.back();
            a.pop_back();
            return true;
        }
    }
    return false;
}

int CQuotientMinDeg::Eliminate(int v, int nLabel, int t) {
    m_label[v] = nLabel;
    m_elimOrder[nLabel] = v;
    MarkDirty(v);
    std::vector<int> &Ev = m_E[v];

    // The elements v touches merge into v's; their union-find sets join at time nLabel.
    // Elements whose boundary was v alone merge as well, though they lie on no list.
    int nRoot = v;
    int nBig = -1;
    for (int e : Ev) {
        m_absorbedBy[e] = v;
        if (nBig < 0 || m_L[e].size() > m_L[nBig].size())
            nBig = e;
    }
    Ev.insert(Ev.end(), m_single[v].begin(), m_single[v].end());
    std::vector<int>().swap(m_single[v]);
    for (int e : Ev) {
        int r = Find(e);
        if (r == nRoot)
            continue;
        if (m_ufSize[r] > m_ufSize[nRoot])
            std::swap(r, nRoot);
        m_ufParent[r] = nRoot;
        m_ufTime[r] = nLabel;
        m_ufSize[nRoot] += m_ufSize[r];
    }

    // The boundary of the new element: v's row in the walk. The largest old boundary goes
    // first; the rest are the entrants, the only ones that can meet a vertex anew.
    int nStamp = ++m_nStampL;
    m_inL[v] = nStamp;
    std::vector<int> Lv;
    if (nBig >= 0) {
        Lv.swap(m_L[nBig]);
        size_t m = 0;
        for (size_t j = 0; j < Lv.size(); j++) {
            if (Lv[j] != v) {
                Lv[m++] = Lv[j];
                m_inL[Lv[j]] = nStamp;
            }
        }
        Lv.resize(m);
    }
    size_t nFirstNew = Lv.size();
    for (int e : Ev) {
        if (e == nBig)
            continue;
        for (int x : m_L[e]) {
            if (m_inL[x] != nStamp) {
                m_inL[x] = nStamp;
                Lv.push_back(x);
            }
        }
        std::vector<int>().swap(m_L[e]);
    }
    for (int x : m_A[v]) {
        if (m_label[x] >= 0)
            continue;
        // v stays in x's list, counted as gone: a search for it there would cost a
        // star's centre its whole list per leaf. The list sheds such entries at half.
        std::vector<int> &Ax = m_A[x];
        if (2 * ++m_nGone[x] > (int)Ax.size()) {
            size_t m = 0;
            for (int u : Ax) {
                if (m_label[u] < 0)
                    Ax[m++] = u;
            }
            Ax.resize(m);
            m_nGone[x] = 0;
        }
        if (m_inL[x] != nStamp) {
            m_inL[x] = nStamp;
            Lv.push_back(x);
        }
    }
    std::vector<int>().swap(m_A[v]);
    std::vector<int>().swap(Ev);

    // Pairs that now share v's element are no longer uncovered neighbours. From the
    // shorter side, so that a vertex of many neighbours (a star's centre) stays cheap.
    for (size_t j = nFirstNew; j < Lv.size(); j++) {
        int x = Lv[j];
        std::vector<int> &Ax = m_A[x];
        if (Ax.size() > Lv.size()) {
            for (int u : Lv) {
                if (u != x && RemoveFrom(m_A[u], x))
                    RemoveFrom(Ax, u);
            }
            continue;
        }
        for (size_t q = 0; q < Ax.size();) {
            int u = Ax[q];
            if (m_label[u] < 0 && m_inL[u] == nStamp) {
                Ax[q] = Ax.back();
                Ax.pop_back();
                RemoveFrom(m_A[u], x);
            } else {
                q++;
            }
        }
    }

    // Exact degrees: v's boundary, the uncovered neighbours (disjoint from every element
    // of u), and the other elements' parts outside v's boundary (AMD's |Le \ Lv|), which
    // only overlap when there are two or more of them.
    int nBase = (int)Lv.size() - 1;
    int nBest = t;
    int nNext = -1;
    m_ties.clear();
    auto SetDegree = [&](int u, int d) {
        m_deg[u] = d;
        MarkDirty(u);
        if (d < nBest) {
            nBest = d;
            nNext = u;
            m_ties.clear();
            m_ties.push_back(u);
        } else if (d == nBest && nNext >= 0) {
            m_ties.push_back(u);
        }
    };

    // Each boundary vertex trades the absorbed elements for v's. Most have no other
    // element and take their degree at once; the others wait until every other
    // element's part outside v's boundary is counted.
    m_others.clear();
    for (int u : Lv) {
        std::vector<int> &Eu = m_E[u];
        size_t m = 0;
        for (size_t j = 0; j < Eu.size(); j++) {
            int e = Eu[j];
            if (m_absorbedBy[e] == v)
                continue;
            Eu[m++] = e;
            if (m_wStamp[e] != nStamp) {
                m_wStamp[e] = nStamp;
                m_w[e] = (int)m_L[e].size();
            }
            m_w[e]--;
        }
        Eu.resize(m);
        // An element of one vertex adds nothing to its degree: it waits beside the lists
        // for its union-find merge, so that a vertex with many of them stays cheap.
        if (nBase > 0)
            Eu.push_back(v);
        else
            m_single[u].push_back(v);
        if (m == 0)
            SetDegree(u, nBase + (int)m_A[u].size() - m_nGone[u]);
        else
            m_others.push_back(u);
    }
    for (int u : m_others) {
        const std::vector<int> &Eu = m_E[u];
        size_t nOthers = Eu.size() - (nBase > 0 ? 1 : 0);
        int d = nBase + (int)m_A[u].size() - m_nGone[u];
        if (nOthers == 1) {
            d += m_w[Eu[0]];
        } else {
            int nSeen = ++m_nStampSeen;
            for (size_t j = 0; j < nOthers; j++) {
                for (int x : m_L[Eu[j]]) {
                    if (m_inL[x] != nStamp && m_seen[x] != nSeen) {
                        m_seen[x] = nSeen;
                        d++;
                    }
                }
            }
        }
        SetDegree(u, d);
    }
    m_L[v].swap(Lv);
    if (m_ties.size() > 1)
        nNext = FirstInRow(v, m_ties);
    return nNext;
}

int CQuotientMinDeg::Find(int x) const {
    while (m_ufParent[x] != x)
        x = m_ufParent[x];
    return x;
}

int CQuotientMinDeg::OrigPos(int v, int c) const {
    for (int j = m_rowStart[v]; j < m_rowStart[v + 1]; j++) {
        if (m_rowAdj[j] == c)
            return j;
    }
    return -1;
}

// The walk's row of v lists first v's original neighbours, in their order; then, for each
// element that had v on its boundary, in the order of elimination, the vertices of that
// boundary not listed yet, in the boundary's own order, which is the row of that element's
// vertex. A vertex c thus stands in the block of the first element that had both v and c
// on its boundary: the first moment the union-find sets of an original neighbour of v and
// of one of c met (the largest link time on the path between them). Among vertices of one
// block the order is that of the element's row, found the same way.
int CQuotientMinDeg::FirstInRow(int v, std::vector<int> C) {
    for (;;) {
        int nBest = -1, nBestPos = INT_MAX;
        for (int c : C) {
            int nPos = OrigPos(v, c);
            if (nPos >= 0 && nPos < nBestPos) {
                nBestPos = nPos;
                nBest = c;
            }
        }
        if (nBest >= 0)
            return nBest;

        // For the sets of v's neighbours eliminated before it: the earliest moment each
        // union-find ancestor joined one of them.
        int lv = m_label[v];
        int nStamp = ++m_nStampAnc;
        for (int j = m_rowStart[v]; j < m_rowStart[v + 1]; j++) {
            int w = m_rowAdj[j];
            if (m_label[w] < 0 || m_label[w] >= lv)
                continue;
            int rm = m_label[w];
            for (int a = w;;) {
                if (m_ancStamp[a] == nStamp && m_ancBest[a] <= rm)
                    break;
                m_ancStamp[a] = nStamp;
                m_ancBest[a] = rm;
                if (m_ufParent[a] == a)
                    break;
                rm = std::max(rm, m_ufTime[a]);
                if (rm >= lv)
                    break;
                a = m_ufParent[a];
            }
        }
        // Each candidate's block: the earliest meeting with one of its own neighbours.
        std::vector<int> blocks(C.size(), INT_MAX);
        int nFirst = INT_MAX;
        for (size_t i = 0; i < C.size(); i++) {
            int c = C[i];
            int nIns = INT_MAX;
            for (int j = m_rowStart[c]; j < m_rowStart[c + 1]; j++) {
                int w = m_rowAdj[j];
                if (m_label[w] < 0 || m_label[w] >= lv)
                    continue;
                int rm = m_label[w];
                for (int a = w;;) {
                    if (m_ancStamp[a] == nStamp)
                        nIns = std::min(nIns, std::max(m_ancBest[a], rm));
                    if (m_ufParent[a] == a)
                        break;
                    rm = std::max(rm, m_ufTime[a]);
                    if (rm >= std::min(lv, nIns))
                        break;
                    a = m_ufParent[a];
                }
            }
            blocks[i] = nIns;
            nFirst = std::min(nFirst, nIns);
        }
        if (nFirst == INT_MAX)
            return C[0]; // not reached on a symmetric graph
        std::vector<int> inFirst;
        for (size_t i = 0; i < C.size(); i++) {
            if (blocks[i] == nFirst)
                inFirst.push_back(C[i]);
        }
        if (inFirst.size() == 1)
            return inFirst[0];
        v = m_elimOrder[nFirst];
        C.swap(inFirst);
    }
}
