// CReorderMat: the Hager numberings. They give labels from the last down to the first; the
// unnumbered set Z stands in the first m_nZ + 1 entries of m_pZ, and behind it entry k
// holds the vertex of label k. m_pLabels is -1 for an unnumbered vertex.
#include "reorder/reordermat.h"

#include <algorithm>
#include <cstdio>
#include <vector>

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

// Moves the vertex at position nPos of Z to position m_nZ, where it takes label m_nZ.
static int TakeFromZ(CReorderMat &g, int nPos) {
    int v = g.m_pZ[nPos];
    g.m_pZ[nPos] = g.m_pZ[g.m_nZ];
    g.m_pZ[g.m_nZ] = v;
    g.m_pLabels[v] = g.m_nZ;
    return v;
}

static void CountNumbered(CReorderMat &g, int v) {
    const LONG *pRow = g.m_ppRows[v];
    for (int j = 0; j < g.m_pRowSizes[v]; j++)
        g.m_pInverse[pRow[j]]++;
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
        CountNumbered(*this, s);
        for (m_nZ = n - 2; m_nZ >= 0; m_nZ--)
            CountNumbered(*this, TakeFromZ(*this, MinZ()));
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
    for (m_nZ = n - 1; m_nZ >= 0; m_nZ--) {
        float fBest = -1.0f;
        int nPos = 0;
        for (int i = 0; i <= m_nZ; i++) {
            if (S[m_pZ[i]] >= fBest) {
                fBest = S[m_pZ[i]];
                nPos = i;
            }
        }
        int v = TakeFromZ(*this, nPos);

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
        }
    }

    EndHagerRun(file, nOldB, nOldEnv, nStart);
}
