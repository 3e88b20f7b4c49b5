// CReorderMat: building the node graph and the small per-vertex operations on it.
#include "reorder/reordermat.h"

CReorderMat::CReorderMat(int nMode) : m_pZ(NULL), m_nZ(0), m_nMode(nMode) {}

CReorderMat::CReorderMat() : m_pZ(NULL), m_nZ(0) {}

CReorderMat::~CReorderMat() {
    // m_pZ belongs to the Hager numberings, which free it themselves.
    delete[] m_pInverse;
    delete[] m_pLabels;
}

void CReorderMat::Alloc(int nRows) {
    if (nRows != m_nRows) {
        delete[] m_pLabels;
        delete[] m_pInverse;
        m_pLabels = NULL;
        m_pInverse = NULL;
        if (nRows > 0) {
            if (m_nMode == 1)
                m_pInverse = new LONG[nRows];
            m_pLabels = new LONG[nRows];
        }
    }
    for (int i = 0; i < nRows; i++)
        m_pLabels[i] = i;
    if (m_nMode == 1 && m_pInverse != NULL) {
        for (int i = 0; i < nRows; i++)
            m_pInverse[i] = 0;
    }
    CArrayArray<LONG>::Alloc(nRows);
}

void CReorderMat::Init() {
    for (int i = 0; i < m_nRows; i++) {
        int nSize = m_pRowSizes[i];
        m_ppRows[i] = new LONG[nSize];
        for (int j = 0; j < nSize; j++)
            m_ppRows[i][j] = -1;
        m_pRowSizes[i] = 0;
    }
}

void CReorderMat::InsertDOFs(LONG *pDOFs, int nPass, int nDOFs) {
    FEMMAT_CHECK_ELEMENT("CReorderMat::InsertDOFs", pDOFs, nPass == 0 || nPass == 1 ? nDOFs : 0,
                         m_nRows);
    if (nPass != 0 && nPass != 1)
        return;
    for (int i = 0; i < nDOFs; i++) {
        LONG a = pDOFs[i];
        if (a < 0)
            continue;
        for (int j = i + 1; j < nDOFs; j++) {
            LONG b = pDOFs[j];
            if (b < 0)
                continue;
            if (nPass == 0) {
                // Every pair counts, so a row's count bounds its degree from above.
                m_pRowSizes[b]++;
                m_pRowSizes[a]++;
            } else if (Find(a, b) == -1) {
                // An edge already there (from another element) is stored once.
                m_ppRows[a][m_pRowSizes[a]++] = b;
                m_ppRows[b][m_pRowSizes[b]++] = a;
            }
        }
    }
}

int CReorderMat::GetRows() {
    return m_nRows;
}

int CReorderMat::f_v(int v) {
    return m_pLabels[v];
}

int CReorderMat::f_v_inv(int l) {
    return m_pInverse[l];
}

void CReorderMat::Move(int a, int b) {
    LONG nTemp = m_pLabels[a];
    m_pLabels[a] = m_pLabels[b];
    m_pLabels[b] = nTemp;
}

int CReorderMat::B_f(int v) {
    int f = f_v(v);
    int nMax = 0;
    const LONG *pRow = m_ppRows[v];
    for (int j = 0; j < m_pRowSizes[v]; j++) {
        int d = f_v(pRow[j]) - f;
        if (d < 0)
            d = -d;
        if (d > nMax)
            nMax = d;
    }
    return nMax;
}

int CReorderMat::Find(int nValue, int nRow) {
    const LONG *pRow = m_ppRows[nRow];
    for (int j = 0; j < m_pRowSizes[nRow]; j++) {
        if (pRow[j] == nValue)
            return j;
    }
    return -1;
}

bool CReorderMat::Check() {
    for (int i = 0; i < m_nRows; i++) {
        const LONG *pRow = m_ppRows[i];
        int nSize = m_pRowSizes[i];
        for (int j = 0; j < nSize; j++) {
            for (int k = j + 1; k < nSize; k++) {
                if (pRow[j] == pRow[k])
                    return false;
            }
        }
    }
    return true;
}

void CReorderMat::InitLabels(int nLabel) {
    for (int i = 0; i < m_nRows; i++)
        m_pLabels[i] = nLabel;
}

void CReorderMat::GenRevCuthillMcKee() {}
