// CReorderMat: the tabu search. It improves the labels it finds by swapping a vertex of
// large bandwidth with a neighbour near the middle of its higher neighbours; m_pInverse
// holds the tabu marks (the turn at which a vertex is free again).
#include "reorder/reordermat.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

void CReorderMat::InitTabu(LONG nValue) {
    for (int i = 0; i < m_nRows; i++)
        m_pInverse[i] = nValue;
}

void CReorderMat::TrackLabels(bool bOn) {
    m_labelIndex.clear();
    if (!bOn)
        return;
    // Only a permutation has one vertex per label; otherwise mid keeps its scan.
    m_labelIndex.assign(m_nRows, -1);
    for (int v = 0; v < m_nRows; v++) {
        int l = f_v(v);
        if (l < 0 || l >= m_nRows || m_labelIndex[l] != -1) {
            m_labelIndex.clear();
            return;
        }
        m_labelIndex[l] = v;
    }
}

void CReorderMat::TabuMove(int a, int b) {
    Move(a, b);
    if (m_labelIndex.empty())
        return;
    int la = f_v(a), lb = f_v(b);
    if (la >= 0 && la < m_nRows && lb >= 0 && lb < m_nRows) {
        m_labelIndex[la] = a;
        m_labelIndex[lb] = b;
    } else {
        m_labelIndex.clear();
    }
}

int CReorderMat::FindLabel(int m) {
    if (!m_labelIndex.empty()) {
        // Labels are a permutation here, so no vertex holds a label outside 0 to n-1.
        if (m < 0 || m >= m_nRows)
            return -1;
        int v = m_labelIndex[m];
        if (f_v(v) == m)
            return v;
    }
    for (int v = 0; v < m_nRows; v++)
        if (f_v(v) == m)
            return v;
    return -1;
}

int CReorderMat::mid(int &v) {
    int f = f_v(v);
    int hi = f, lo = m_nRows;
    const LONG *pRow = m_ppRows[v];
    for (int j = 0; j < m_pRowSizes[v]; j++) {
        int l = f_v(pRow[j]);
        if (l > f) {
            hi = std::max(hi, l);
            lo = std::min(lo, l);
        }
    }
    int m = (hi + lo + 1) / 2;
    int w = FindLabel(m);
    if (w >= 0)
        v = w;
    return m;
}

bool CReorderMat::IsCandidate(int a, int b) {
    int c = a;
    int m = mid(c);
    if (std::abs(m - f_v(b)) < std::abs(m - f_v(a)))
        return true;
    return m_pInverse[b] < m_nZ;
}

int CReorderMat::GetClosestToMid(int v) {
    int c = v;
    int m = mid(c);
    int nBest = std::abs(m - f_v(v));
    int w = v;
    const LONG *pRow = m_ppRows[v];
    for (int j = 0; j < m_pRowSizes[v]; j++) {
        int u = pRow[j];
        if (IsCandidate(v, u) && std::abs(m - f_v(u)) < nBest) {
            nBest = std::abs(m - f_v(u));
            w = u;
        }
    }
    return w;
}

int CReorderMat::NumMovables(int v, int nLimit) {
    int nCount = 0;
    const LONG *pRow = m_ppRows[v];
    for (int j = 0; j < m_pRowSizes[v]; j++)
        if (m_pInverse[pRow[j]] < nLimit)
            nCount++;
    return nCount;
}

// The random start (nRand * nRows - 1) / 32767, truncated toward 0: spreads 0 to 32767
// over the vertices. In 64 bits, since the product leaves 32 bits above 65538 vertices.
static int RandomVertex(int nRand, int nRows) {
    return (int)(((long long)nRand * nRows - 1) / 32767);
}

void CReorderMat::TabuReorder() {
    CFile file;
    if (!OpenScript(file))
        return;
    MatlabWrite(&file, "before");

    LONG nStart = AfxClock();
    int n = m_nRows;
    int nTenure = std::max(1, n / 10);
    int v = 0;
    int nOldB = GetB(v);
    AfxSrand((unsigned)AfxTime());
    int nOldEnv = Env(NULL);
    int nNewB = nOldB, nNewEnv = nOldEnv;
    int nSwitches = 0;

    // One turn per vertex; a switch stands unless it widened the moved vertex's band.
    TrackLabels(true);
    for (m_nZ = 0; m_nZ < n; m_nZ++) {
        int w = GetClosestToMid(v);
        if (w == v) {
            v = RandomVertex(AfxRand(), m_nRows);
            continue;
        }
        if (m_pInverse[w] > m_nZ)
            continue;
        int nOldBf = B_f(v);
        TabuMove(v, w);
        int e = Env(NULL);
        int x = 0;
        int b = GetB(x);
        if (B_f(v) <= nOldBf) {
            nSwitches++;
            m_pInverse[v] = m_nZ + nTenure;
            m_pInverse[w] = m_nZ + nTenure;
            nNewEnv = e;
            nNewB = b;
        } else {
            TabuMove(v, w);
        }
        v = x;
    }
    TrackLabels(false);

    // Report first, then the script's end.
    LONG nEnd = AfxClock();
    char szText[512];
    snprintf(szText, sizeof(szText),
             "Used time reordering:   %s\r\n Old bandwidth. :   %u\r\n New bandwidth  :   %u\r\n"
             " Nr. of switches:   %u\r\n Old env        :   %u\r\n new env        :   %u\r\n",
             (const char *)FormatTime((double)(nEnd - nStart) * 0.001), (unsigned)nOldB,
             (unsigned)nNewB, (unsigned)nSwitches, (unsigned)nOldEnv, (unsigned)nNewEnv);
    AfxMessageBox(szText, 0, 0);
    MatlabWrite(&file, "after");
    WriteScriptTrailer(&file, false);
    file.Close();
}

void CReorderMat::TabuReorder2() {
    int n = m_nRows;
    int c = 0;
    m_nZ = 0;
    if (n == 0)
        return;
    int nTenure = n / 100;

    TrackLabels(true);
    while (c < n) {
        m_nZ = c + 1; // IsCandidate then passes exactly the vertices the search finds free
        int b = -1, nPartner = -1, nBest = 0;
        for (int i = 0; i < n; i++) {
            if (m_pInverse[i] > c)
                continue;
            int w = i;
            mid(w);
            if (m_pInverse[w] > c)
                continue;
            int nScore = IsCandidate(w, i) ? B_f(i) : 0;
            if (nScore > nBest) {
                nBest = nScore;
                b = i;
                nPartner = w;
            }
        }
        if (b < 0)
            break;
        TabuMove(b, nPartner);
        m_pInverse[b] = c + nTenure;
        m_pInverse[nPartner] = c + nTenure;
        c++;
    }
    m_nZ = c;
    TrackLabels(false);
}
