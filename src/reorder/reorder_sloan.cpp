// CReorderMat: Sloan's profile reduction. Per component, from one end of reverse
// Cuthill-McKee's pair towards the other, the next label goes to the vertex of highest priority
// among those next to the numbered ones (preactive) and their neighbours (active); the priority
// rewards distance from the end vertex, so numbering sweeps towards it, and penalises the vertices
// that would add most to the front.
#include "reorder/levelwalk.h"
#include "reorder/reordermat.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace {

enum { Inactive, Preactive, Active, Numbered };

// A max-heap of vertices on a priority with a position per vertex, so that a priority can
// change in place. Equal priorities go to the lower vertex.
class CPriorityHeap {
public:
    explicit CPriorityHeap(int n) : m_pos(n, -1) { m_heap.reserve(64); }
    bool Empty() const { return m_heap.empty(); }
    bool Contains(int v) const { return m_pos[v] >= 0; }
    void Push(int v, std::int64_t nKey) {
        m_heap.push_back({nKey, v});
        m_pos[v] = (int)m_heap.size() - 1;
        Up(m_pos[v]);
    }
    void Raise(int v, std::int64_t nBy) {
        int i = m_pos[v];
        m_heap[i].nKey += nBy;
        if (nBy >= 0)
            Up(i);
        else
            Down(i);
    }
    int Pop() {
        int v = m_heap[0].v;
        m_pos[v] = -1;
        Entry last = m_heap.back();
        m_heap.pop_back();
        if (!m_heap.empty()) {
            m_heap[0] = last;
            m_pos[last.v] = 0;
            Down(0);
        }
        return v;
    }

private:
    struct Entry {
        std::int64_t nKey;
        int v;
    };
    static bool Before(const Entry &a, const Entry &b) {
        return a.nKey > b.nKey || (a.nKey == b.nKey && a.v < b.v);
    }
    void Up(int i) {
        Entry e = m_heap[i];
        while (i > 0) {
            int p = (i - 1) / 2;
            if (!Before(e, m_heap[p]))
                break;
            m_heap[i] = m_heap[p];
            m_pos[m_heap[i].v] = i;
            i = p;
        }
        m_heap[i] = e;
        m_pos[e.v] = i;
    }
    void Down(int i) {
        Entry e = m_heap[i];
        const int n = (int)m_heap.size();
        for (;;) {
            int c = 2 * i + 1;
            if (c >= n)
                break;
            if (c + 1 < n && Before(m_heap[c + 1], m_heap[c]))
                c++;
            if (!Before(m_heap[c], e))
                break;
            m_heap[i] = m_heap[c];
            m_pos[m_heap[i].v] = i;
            i = c;
        }
        m_heap[i] = e;
        m_pos[e.v] = i;
    }

    std::vector<Entry> m_heap;
    std::vector<int> m_pos; // place in m_heap, -1 when out
};

} // namespace

void CReorderMat::SloanReorder(int nW1, int nW2) {
    CFile file;
    LONG nStart;
    if (!BeginOwnScriptRun(file, nStart))
        return;
    NumberSloan(nW1, nW2);
    EndOwnScriptRun(file, nStart, false);
}

// Numbers the component of s from s towards e with labels from nBase on, and yields its
// profile. The component's vertices are inactive at entry.
static long long NumberComponent(CReorderMat &g, CLevelWalk &walk, CPriorityHeap &heap,
                                 std::vector<unsigned char> &status,
                                 std::vector<std::int64_t> &priority, int s, int e, int nW1,
                                 int nW2, int nBase) {
    // Distances to the end vertex seed the priorities.
    const std::int64_t nStep = nW1;
    int nDepth = walk.Walk(e);
    for (int l = 0; l < nDepth; l++) {
        for (int k = walk.m_levelStart[l]; k < walk.m_levelStart[l + 1]; k++) {
            int v = walk.m_order[k];
            priority[v] = (std::int64_t)nW2 * l - nStep * (g.m_pRowSizes[v] + 1);
        }
    }
    // Raises the priority of u by a step as a neighbour leaves its reach (its current
    // degree falls); an inactive u enters the queue.
    auto Touch = [&](int u) {
        priority[u] += nStep;
        if (heap.Contains(u)) {
            heap.Raise(u, nStep);
        } else if (status[u] == Inactive) {
            status[u] = Preactive;
            heap.Push(u, priority[u]);
        }
    };

    int nLabel = nBase;
    status[s] = Preactive;
    heap.Push(s, priority[s]);
    while (!heap.Empty()) {
        int i = heap.Pop();
        const LONG *pRow = g.m_ppRows[i];
        const int nSize = g.m_pRowSizes[i];
        // A preactive vertex brings its neighbours to the front as it is numbered.
        if (status[i] == Preactive) {
            for (int j = 0; j < nSize; j++) {
                if (status[pRow[j]] != Numbered)
                    Touch(pRow[j]);
            }
        }
        g.m_pLabels[i] = nLabel++;
        status[i] = Numbered;
        // Its preactive neighbours become active and pull in theirs.
        for (int j = 0; j < nSize; j++) {
            int u = pRow[j];
            if (status[u] != Preactive)
                continue;
            status[u] = Active;
            priority[u] += nStep;
            heap.Raise(u, nStep);
            const LONG *pRowU = g.m_ppRows[u];
            const int nSizeU = g.m_pRowSizes[u];
            for (int k = 0; k < nSizeU; k++) {
                if (status[pRowU[k]] != Numbered)
                    Touch(pRowU[k]);
            }
        }
    }

    // The profile: each label less the lowest label among its neighbours, if lower.
    long long nProfile = 0;
    for (int k = 0; k < walk.m_nReached; k++) {
        int v = walk.m_order[k];
        LONG nLow = g.m_pLabels[v];
        for (int j = 0; j < g.m_pRowSizes[v]; j++)
            nLow = std::min(nLow, g.m_pLabels[g.m_ppRows[v][j]]);
        nProfile += g.m_pLabels[v] - nLow;
    }
    return nProfile;
}

void CReorderMat::NumberSloan(int nW1, int nW2) {
    const int n = m_nRows;
    std::vector<unsigned char> status(n, Inactive);
    std::vector<std::int64_t> priority(n);
    std::vector<LONG> members, firstLabels;
    CLevelWalk walk(*this);
    CPriorityHeap heap(n);
    int nBase = 0;
    for (int nRoot = 0; nRoot < n; nRoot++) {
        if (status[nRoot] != Inactive)
            continue;
        int s, e;
        walk.PseudoPeripheralPair(nRoot, s, e);
        long long nProfile =
            NumberComponent(*this, walk, heap, status, priority, s, e, nW1, nW2, nBase);
        // From the other end as well: which end does better is a matter of the graph's
        // details, and a second pass costs little. The first wins a tie.
        int nSize = walk.m_nReached;
        if (s != e) {
            members.assign(walk.m_order.begin(), walk.m_order.begin() + nSize);
            firstLabels.resize(nSize);
            for (int k = 0; k < nSize; k++) {
                firstLabels[k] = m_pLabels[members[k]];
                status[members[k]] = Inactive;
            }
            long long nOther =
                NumberComponent(*this, walk, heap, status, priority, e, s, nW1, nW2, nBase);
            if (nProfile <= nOther) {
                for (int k = 0; k < nSize; k++)
                    m_pLabels[members[k]] = firstLabels[k];
            }
        }
        nBase += nSize;
    }
}
