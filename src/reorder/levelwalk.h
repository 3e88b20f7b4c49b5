// Rooted level structures on the node graph, for the bandwidth and profile numberings:
// breadth-first walks inside one component, and George and Liu's search for a
// pseudo-peripheral pair of vertices. Internal to the reorder folder.
#pragma once

#include "reorder/arrayarray.h"

#include <vector>

class CLevelWalk {
public:
    explicit CLevelWalk(const CArrayArray<LONG> &g);

    // Walks breadth first from nRoot over its component; yields the number of levels.
    // m_order then holds the m_nReached vertices level by level, level l from
    // m_levelStart[l] to m_levelStart[l + 1].
    int Walk(int nRoot);
    // From nRoot, a pair at the ends of a longest walk found by George and Liu's search:
    // nStart is the pseudo-peripheral vertex, nEnd the root of the last walk before it,
    // which lies in nStart's last level. The last walk made is nStart's.
    void PseudoPeripheralPair(int nRoot, int &nStart, int &nEnd);

    std::vector<LONG> m_order;
    int m_nReached = 0;
    std::vector<int> m_levelStart;

private:
    const CArrayArray<LONG> &m_g;
    std::vector<unsigned> m_mark; // == m_nWalk: reached by the current walk
    unsigned m_nWalk = 0;
};
