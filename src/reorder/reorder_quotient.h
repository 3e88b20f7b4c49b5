// The eliminating minimum-degree numbering of CReorderMat::MinDegReorder4 in quotient-graph
// form: the labels of the row-by-row walk at a cost near the size of the factor. Used by
// MinDegReorder4 only; not part of the library's interface.
#pragma once

#include "reorder/reordermat.h"

#include <vector>

class CQuotientMinDeg {
public:
    // Reads the graph's rows as they stand (a vertex's own entries left out).
    explicit CQuotientMinDeg(const CReorderMat &g);
    // Writes the labels 0 to n-1.
    void Run(LONG *pLabels);

private:
    // Labels v, makes it an element and yields the chain's next vertex or -1.
    int Eliminate(int v, int nLabel, int t);
    // The first of the vertices C in the walk's row of v.
    int FirstInRow(int v, std::vector<int> C);
    int OrigPos(int v, int c) const;
    int Find(int x) const;
    void SetLeaf(int i, int nValue);
    void MarkDirty(int u);

    int m_n;
    std::vector<int> m_rowStart, m_rowAdj;  // original rows
    std::vector<int> m_label;               // -1 while live
    std::vector<int> m_elimOrder;           // vertex of each label
    std::vector<int> m_deg;                 // degree in the elimination graph
    std::vector<std::vector<int>> m_A;      // original neighbours no shared element covers
    std::vector<int> m_nGone;               // entries of m_A eliminated but not yet shed
    std::vector<std::vector<int>> m_E;      // elements a live vertex lies on
    std::vector<std::vector<int>> m_L;      // boundary of a live element
    std::vector<std::vector<int>> m_single; // elements whose boundary is the vertex alone
    std::vector<int> m_absorbedBy;
    // Union-find of eliminated vertices without path compression; a link keeps the label
    // at which its two sets met.
    std::vector<int> m_ufParent, m_ufTime, m_ufSize;
    std::vector<int> m_inL, m_seen, m_wStamp, m_w, m_ancStamp, m_ancBest;
    int m_nStampL = 0, m_nStampSeen = 0, m_nStampAnc = 0;
    std::vector<int> m_ties;
    std::vector<int> m_others; // boundary vertices on other elements too
    // Tree of degree minima, refreshed lazily from the dirty list.
    int m_nLeaves = 1;
    std::vector<int> m_tree;
    std::vector<char> m_dirty;
    std::vector<int> m_dirtyList;
};
