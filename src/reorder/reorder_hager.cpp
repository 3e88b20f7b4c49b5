// CReorderMat: the Hager numberings. They give labels from the last down to the first; the
// unnumbered set Z stands in the first m_nZ + 1 entries of m_pZ, and behind it entry k
// holds the vertex of label k. m_pLabels is -1 for an unnumbered vertex.
#include "reorder/reordermat.h"

#include <algorithm>
#include <cstdio>
#include <vector>

namespace {

// Vertices ordered by a pair of keys, the largest on top; a key change costs log n. The
// numberings keep their candidates here instead of scanning all of Z for the best.
class CMaxHeap {
public:
    explicit CMaxHeap(int n) : m_key1(n), m_key2(n), m_where(n, -1) { m_heap.reserve(n); }
    bool Empty() const { return m_heap.empty(); }
    int Top() const { return m_heap[0]; }
    double TopKey() const { return m_key1[m_heap[0]]; }
    // Puts v in with the keys given, or moves it to them.
    void Set(int v, double dKey1, int nKey2) {
        m_key1[v] = dKey1;
        m_key2[v] = nKey2;
        if (m_where[v] < 0) {
            m_where[v] = (int)m_heap.size();
            m_heap.push_back(v);
        }
        Up(m_where[v]);
        Down(m_where[v]);
    }
    void Remove(int v) {
        int i = m_where[v];
        int nLast = m_heap.back();
        m_heap.pop_back();
        m_where[v] = -1;
        if (nLast == v)
            return;
        m_heap[i] = nLast;
        m_where[nLast] = i;
        Up(i);
        Down(m_where[nLast]);
    }

private:
    bool Less(int a, int b) const {
        return m_key1[a] < m_key1[b] || (m_key1[a] == m_key1[b] && m_key2[a] < m_key2[b]);
    }
    void Place(int i, int v) {
        m_heap[i] = v;
        m_where[v] = i;
    }
    void Up(int i) {
        int v = m_heap[i];
        while (i > 0 && Less(m_heap[(i - 1) / 2], v)) {
            Place(i, m_heap[(i - 1) / 2]);
            i = (i - 1) / 2;
        }
        Place(i, v);
    }
    void Down(int i) {
        int v = m_heap[i];
        int n = (int)m_heap.size();
        for (;;) {
            int c = 2 * i + 1;
            if (c >= n)
                break;
            if (c + 1 < n && Less(m_heap[c], m_heap[c + 1]))
                c++;
            if (!Less(v, m_heap[c]))
                break;
            Place(i, m_heap[c]);
            i = c;
        }
        Place(i, v);
    }

    std::vector<double> m_key1;
    std::vector<int> m_key2;
    std::vector<int> m_where; // place of each vertex in m_heap, -1 when out
    std::vector<int> m_heap;
};

} // namespace

float CReorderMat::WFun(int x) {
    if (x > 200)
        return 0.1f;
    return 20.0f / x;
}

int CReorderMat::d_k(int v) {
    int nCount = 0;
    const LONG *pRow = m_ppRows[v];
    for (int j = 0; j < m_pRowSizes[v]; j++)
        if (m_pLabels[pRow[j]] < 0)
            nCount++;
    return nCount;
}

int CReorderMat::r_k(int v) {
    return d_k(v);
}

float CReorderMat::S_k(int v) {
    int d = d_k(v);
    float fSum = 0.0f;
    const LONG *pRow = m_ppRows[v];
    for (int j = 0; j < m_pRowSizes[v]; j++) {
        int u = pRow[j];
        if (m_pLabels[u] > -1)
            fSum += WFun(d_k(u));
    }
    return fSum + WFun(std::min(m_nZ - d + 1, d + 1));
}

int CReorderMat::MinZ() {
    LONG nBest = 0;
    int nPos = 0;
    for (int i = 0; i <= m_nZ; i++) {
        LONG nCount = m_pInverse[m_pZ[i]];
        if (nCount > nBest || (nCount == nBest && m_pZ[i] < m_pZ[nPos])) {
            nBest = nCount;
            nPos = i;
        }
    }
    return nPos;
}

bool CReorderMat::BeginHagerRun(CFile &file, int &nOldB, int &nOldEnv, LONG &nStart) {
    if (!OpenScript(file))
        return false;
    MatlabWrite(&file, "before");
    int v = 0;
    nOldB = GetB(v);
    nStart = AfxClock();
    nOldEnv = Env(NULL);
    InitLabels(-1);
    m_nZ = m_nRows - 1; // also the end value when there is nothing to number
    return true;
}

void CReorderMat::EndHagerRun(CFile &file, int nOldB, int nOldEnv, LONG nStart) {
    LONG nEnd = AfxClock();
    int v = 0;
    int nNewB = GetB(v);
    int nNewEnv = Env(NULL);
    // Percentages of the old values; 0.0 / 0.0 for a graph without edges, printed as is.
    double dBand = (double)nNewB * 100.0 / (double)nOldB;
    double dEnv = (double)nNewEnv * 100.0 / (double)nOldEnv;
    char szText[512];
    snprintf(szText, sizeof(szText),
             "Used time reordering:   %s\r\n Old bandwidth.        :   %u\r\n"
             " New bandwidth        :   %5.1f%%\r\n Old env                   :   %u\r\n"
             " new env                  :   %5.1f%%\r\n",
             (const char *)FormatTime((double)(nEnd - nStart) * 0.001), (unsigned)nOldB, dBand,
             (unsigned)nOldEnv, dEnv);
    AfxMessageBox(szText, 0, 0);
    MatlabWrite(&file, "after");
    WriteScriptTrailer(&file, false);
    file.Close();
}

// Moves the vertex at position nPos of Z to position m_nZ, where it takes label m_nZ. With
// pPos given, keeps the position of each vertex in Z there.
static int TakeFromZ(CReorderMat &g, int nPos, std::vector<int> *pPos = NULL) {
    int v = g.m_pZ[nPos];
    int u = g.m_pZ[g.m_nZ];
    g.m_pZ[nPos] = u;
    g.m_pZ[g.m_nZ] = v;
    g.m_pLabels[v] = g.m_nZ;
    if (pPos != NULL) {
        (*pPos)[u] = nPos;
        (*pPos)[v] = g.m_nZ;
    }
    return v;
}

void CReorderMat::Hager1() {
    CFile file;
    int nOldB, nOldEnv;
    LONG nStart;
    if (!BeginHagerRun(file, nOldB, nOldEnv, nStart))
        return;

    int n = m_nRows;
    if (n > 0) {
        // m_pInverse counts numbered neighbours; the last label goes to a vertex of least
        // degree, the highest such on ties.
        m_pZ = new LONG[n];
        int s = -1, nMinDeg = n + 1;
        for (int i = n - 1; i >= 0; i--) {
            m_pZ[i] = i;
            m_pInverse[i] = 0;
            if (m_pRowSizes[i] < nMinDeg) {
                nMinDeg = m_pRowSizes[i];
                s = i;
            }
        }
        m_pZ[s] = n - 1;
        m_pZ[n - 1] = s;
        m_pLabels[s] = n - 1;

        // MinZ's choice, most numbered neighbours and then the lowest vertex, is the top of
        // a heap on (count, -vertex); a numbered vertex raises its neighbours' counts.
        std::vector<int> pos(n);
        CMaxHeap heap(n);
        for (int i = 0; i < n; i++) {
            pos[m_pZ[i]] = i;
            if (i != s)
                heap.Set(i, 0.0, -i);
        }
        auto CountNumbered = [&](int v) {
            const LONG *pRow = m_ppRows[v];
            for (int j = 0; j < m_pRowSizes[v]; j++) {
                int x = pRow[j];
                m_pInverse[x]++;
                if (m_pLabels[x] < 0)
                    heap.Set(x, m_pInverse[x], -x);
            }
        };
        CountNumbered(s);
        for (m_nZ = n - 2; m_nZ >= 0; m_nZ--) {
            int v = heap.Top();
            heap.Remove(v);
            TakeFromZ(*this, pos[v], &pos);
            CountNumbered(v);
        }
        delete[] m_pZ;
        m_pZ = NULL;
    }

    EndHagerRun(file, nOldB, nOldEnv, nStart);
}

void CReorderMat::Hager2() {
    CFile file;
    int nOldB, nOldEnv;
    LONG nStart;
    if (!BeginHagerRun(file, nOldB, nOldEnv, nStart))
        return;

    // Z lives in m_pInverse, which so ends as the inverse of the labels.
    int n = m_nRows;
    m_pZ = m_pInverse;
    for (int i = n - 1; i >= 0; i--)
        m_pZ[i] = i;
    for (m_nZ = n - 1; m_nZ >= 0; m_nZ--) {
        // Whole scores decide; the last position wins a tie.
        int nBest = -1, nPos = 0;
        for (int i = 0; i <= m_nZ; i++) {
            int s = (int)S_k(m_pZ[i]);
            if (s >= nBest) {
                nBest = s;
                nPos = i;
            }
        }
        TakeFromZ(*this, nPos);
    }

    EndHagerRun(file, nOldB, nOldEnv, nStart);
}

void CReorderMat::Hager3() {
    CFile file;
    int nOldB, nOldEnv;
    LONG nStart;
    if (!BeginHagerRun(file, nOldB, nOldEnv, nStart))
        return;

    // S: the score of an unnumbered vertex, the contribution of a numbered one.
    int n = m_nRows;
    std::vector<float> S(n);
    m_pZ = m_pInverse;
    for (int i = n - 1; i >= 0; i--) {
        m_pZ[i] = i;
        int d = d_k(i);
        S[i] = WFun(std::min(n - d, d + 1));
    }
    float w1 = WFun(1);
    // The pass over Z for the largest score, from -1 and the last position on ties, is the
    // top of a heap on (score, position in Z).
    std::vector<int> pos(n);
    CMaxHeap heap(n);
    for (int i = 0; i < n; i++) {
        pos[i] = i;
        heap.Set(i, S[i], i);
    }
    for (m_nZ = n - 1; m_nZ >= 0; m_nZ--) {
        int nPos = heap.TopKey() >= -1.0 ? pos[heap.Top()] : 0;
        int u = m_pZ[m_nZ]; // takes the place that v leaves
        int v = TakeFromZ(*this, nPos, &pos);
        heap.Remove(v);
        if (u != v)
            heap.Set(u, S[u], pos[u]);

        // Numbered neighbours lose v from their unnumbered ones; at w1, v was the last.
        const LONG *pRow = m_ppRows[v];
        int nSize = m_pRowSizes[v];
        for (int j = 0; j < nSize; j++) {
            int c = pRow[j];
            if (m_pLabels[c] > -1 && S[c] != w1)
                S[c] = WFun(d_k(c));
        }
        int d = d_k(v);
        if (d == 0) {
            S[v] = 0.0f;
            continue;
        }
        // v's own contribution, then the scores of its unnumbered neighbours anew.
        S[v] = WFun(d);
        for (int j = 0; j < nSize; j++) {
            int c = pRow[j];
            if (m_pLabels[c] >= 0)
                continue;
            int e = d_k(c);
            S[c] = WFun(std::min(m_nZ - e, n));
            const LONG *pRowC = m_ppRows[c];
            for (int k = 0; k < m_pRowSizes[c]; k++) {
                int y = pRowC[k];
                if (m_pLabels[y] > -1)
                    S[c] += S[y];
            }
            heap.Set(c, S[c], pos[c]);
        }
    }

    EndHagerRun(file, nOldB, nOldEnv, nStart);
}
