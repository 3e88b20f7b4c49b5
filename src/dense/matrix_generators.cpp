// Test matrices: random, triangular patterns, well-conditioned permutations, set rows or
// columns, the deviatoric part. Random values come from AfxRand, so a seeded sequence
// gives fixed matrices.
#include "dense/matrix.h"
#include "platform/afx.h"

// 1/32767: AfxRand() times this spans [0, 1] with both ends.
static const double s_dRandScale = 3.051850947599719e-05;

// AfxRand() * nRange / 32767 in integer arithmetic, in 64 bits so that no range overflows.
static int RandIndex(int nRange) {
    return (int)((long long)AfxRand() * nRange / 32767);
}

void CMatrix::RandMat(int nRows, int nCols, double dMax, double dMin, int nForm) {
    AfxSrand((unsigned)AfxTime());
    double dScale = (dMax - dMin) * s_dRandScale;
    if (nForm == 0) {
        Allocate(nRows, nCols, false, 0.0);
        for (int k = 0; k < m_nSize; k++)
            m_pVector[k] = AfxRand() * dScale + dMin;
        return;
    }
    if (nForm != 1 && nForm != 2 && nForm != -1 && nForm != -2)
        return;
    Allocate(nRows, nCols, true, 0.0);
    // The columns that get values in row i: [first, end), cut at the last column.
    for (int i = 0; i < nRows; i++) {
        int nFirst = nForm == 2 ? i : nForm == -2 ? i + 1 : 0;
        int nEnd = nForm == 1 ? i + 1 : nForm == -1 ? i : nCols;
        if (nEnd > nCols)
            nEnd = nCols;
        for (int j = nFirst; j < nEnd; j++)
            m_pVector[i * nCols + j] = AfxRand() * dScale + dMin;
    }
}

// The triangular pattern below (bLower) or above the diagonal; see LMat and UMat.
static void TriangularPattern(CMatrix &M, int nRows, int nCols, double dFill, double dDiag,
                              bool bAdd, bool bLower) {
    bool bAdding = bAdd && M.m_nSize == nRows * nCols;
    M.Allocate(nRows, nCols, false, 0.0);
    double *a = M.m_pVector;
    for (int i = 0; i < nRows; i++) {
        for (int j = 0; j < nCols; j++) {
            bool bFillSide = bLower ? j < i : j > i;
            double d = j == i ? dDiag : bFillSide ? dFill : 0.0;
            if (!bAdding)
                a[i * nCols + j] = d;
            else if (j == i || bFillSide)
                a[i * nCols + j] += d;
        }
    }
}

void CMatrix::LMat(int nRows, int nCols, double dFill, double dDiag, bool bAdd) {
    TriangularPattern(*this, nRows, nCols, dFill, dDiag, bAdd, true);
}

void CMatrix::UMat(int nRows, int nCols, double dFill, double dDiag, bool bAdd) {
    TriangularPattern(*this, nRows, nCols, dFill, dDiag, bAdd, false);
}

void CMatrix::SetVals(int n, double dValue, bool bAdd, bool bRow) {
    int nCols = GetColumns();
    if (bRow) {
        for (int j = 0; j < nCols; j++)
            m_pVector[n * nCols + j] = dValue;
        return;
    }
    for (int i = 0; i < m_nRows; i++) {
        if (bAdd)
            m_pVector[i * nCols + n] += dValue;
        else
            m_pVector[i * nCols + n] = dValue;
    }
}

// Fills one value near 1.0 per row, at columns drawn from a table of free columns.
void CMatrix::WellCond(int nRows, int nCols, double dSpread) {
    // Phase 1: zeros, and the table of free columns 0, 1, 2, ...
    Allocate(nRows, nCols, true, 0.0);
    CVector free(nRows > nCols ? nRows : nCols);
    free.SetIncremental(1.0, 0.0);
    double *t = free.m_pVector;
    // Phase 2: extra rows share columns drawn at random.
    for (int k = nCols; k < nRows; k++)
        t[k] = t[RandIndex(nCols - 1)];
    // Phase 3: each row takes the first free entry upward from a random start, wrapping.
    for (int i = 0; i < nRows; i++) {
        int k = RandIndex(nRows - 1);
        double dCol = -1.0;
        while (dCol == -1.0) {
            dCol = t[k];
            t[k] = -1.0;
            if (++k == nRows)
                k = 0;
        }
        m_pVector[i * nCols + (int)dCol] = AfxRand() * dSpread * s_dRandScale + 1.0 - dSpread * 0.5;
    }
}

void CMatrix::Dev() {
    int m = m_nRows < GetColumns() ? m_nRows : GetColumns();
    double dMean = Trace() / m;
    int nCols = GetColumns();
    for (int i = 0; i < m; i++)
        m_pVector[i * nCols + i] -= dMean;
}
