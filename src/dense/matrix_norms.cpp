// CMatrix: norms, trace, extreme elements of a row or column, search, and the scans
// that yield the largest and smallest value of a quantity over all rows or columns.
#include "dense/matrix.h"

#include <cmath>

double CMatrix::Frobenius() {
    return Length();
}

// The greatest column sum of magnitudes.
double CMatrix::OneNorm() {
    int nCols = GetColumns();
    double dMax = 0.0;
    for (int j = 0; j < nCols; j++) {
        double dSum = 0.0;
        for (int k = j; k < m_nSize; k += nCols)
            dSum += fabs(m_pVector[k]);
        if (dSum > dMax)
            dMax = dSum;
    }
    return dMax;
}

// The greatest row sum of magnitudes.
double CMatrix::InfNorm() {
    int nCols = GetColumns();
    double dMax = 0.0;
    const double *pRow = m_pVector;
    for (int i = 0; i < m_nRows; i++, pRow += nCols) {
        double dSum = 0.0;
        for (int j = 0; j < nCols; j++)
            dSum += fabs(pRow[j]);
        if (dSum > dMax)
            dMax = dSum;
    }
    return dMax;
}

double CMatrix::Trace() {
    int nCols = GetColumns();
    int m = m_nRows < nCols ? m_nRows : nCols;
    double dSum = 0.0;
    for (int i = 0; i < m; i++)
        dSum += m_pVector[i * (nCols + 1)];
    return dSum;
}

// 2-norms (nMode above 0) or sums of squares (0 or below) of the columns (|nMode| 1) or
// of the rows (any other mode), in one pass over the array.
void CMatrix::Vect2Norm(CVector &out, int nMode) {
    int nCols = m_nSize / m_nRows;
    bool bColumns = nMode == 1 || nMode == -1;
    out.Allocate(bColumns ? nCols : m_nRows, true, 0.0);
    double *pOut = out.m_pVector;
    const double *pValue = m_pVector;
    for (int i = 0; i < m_nRows; i++)
        for (int j = 0; j < nCols; j++, pValue++) {
            double dSquare = *pValue * *pValue;
            if (bColumns)
                pOut[j] += dSquare;
            else
                pOut[i] += dSquare;
        }
    if (nMode > 0)
        for (int k = 0; k < out.m_nSize; k++)
            pOut[k] = sqrt(pOut[k]);
}

// Columns are walked by flat index from j in steps of the column count.
double &CMatrix::MaxInCol(int j) {
    int nCols = GetColumns();
    double *pBest = m_pVector + j;
    for (int k = j + nCols; k < m_nSize; k += nCols)
        if (m_pVector[k] > *pBest)
            pBest = m_pVector + k;
    return *pBest;
}

double &CMatrix::MinInCol(int j) {
    int nCols = GetColumns();
    double *pBest = m_pVector + j;
    for (int k = j + nCols; k < m_nSize; k += nCols)
        if (m_pVector[k] < *pBest)
            pBest = m_pVector + k;
    return *pBest;
}

// "At least the best" makes the lowest of equal magnitudes win.
double &CMatrix::fabsMaxInCol(int j) {
    int nCols = GetColumns();
    double *pBest = m_pVector + j;
    double dBest = 0.0;
    for (int k = j; k < m_nSize; k += nCols)
        if (fabs(m_pVector[k]) >= dBest) {
            dBest = fabs(m_pVector[k]);
            pBest = m_pVector + k;
        }
    return *pBest;
}

double CMatrix::MaxInRow(int i) {
    int nCols = GetColumns();
    const double *pRow = m_pVector + (size_t)i * nCols;
    double dMax = pRow[0];
    for (int j = 1; j < nCols; j++)
        if (pRow[j] > dMax)
            dMax = pRow[j];
    return dMax;
}

int CMatrix::FindInRow(int i, double dValue) {
    int nCols = GetColumns();
    const double *pRow = m_pVector + (size_t)i * nCols;
    for (int j = 0; j < nCols; j++)
        if (pRow[j] == dValue)
            return j;
    return -1;
}

int CMatrix::FindInCol(int j, double dValue) {
    int nCols = GetColumns();
    for (int i = 0; i < m_nRows; i++)
        if (m_pVector[(size_t)i * nCols + j] == dValue)
            return i;
    return -1;
}

// The scan shared by GetMaxMinLength and GetMaxMin1/2/3. fSample(p, nStride) makes one
// sample from the selected elements of a row (bCols) or column starting at p, where the
// selected indices are columns (bCols) or rows, nStride apart in storage.
template <class Sample>
static void ScanMaxMin(CMatrix &M, bool bCols, double &dMax, double &dMin, Sample fSample) {
    if (M.m_nSize == 0) {
        dMax = 0.0;
        dMin = 0.0;
        return;
    }
    int nCols = M.m_nSize / M.m_nRows;
    // Rows are nCols apart; within a row the selected columns are 1 apart.
    int nCount = bCols ? M.m_nRows : nCols;
    int nStep = bCols ? nCols : 1;
    int nStride = bCols ? 1 : nCols;
    const double *p = M.m_pVector;
    dMax = dMin = fSample(p, nStride);
    for (int k = 1; k < nCount; k++) {
        p += nStep;
        double dSample = fSample(p, nStride);
        if (dSample > dMax)
            dMax = dSample;
        else if (dSample < dMin)
            dMin = dSample;
    }
}

void CMatrix::GetMaxMinLength(double &dMax, double &dMin, int n1, int n2, bool bCols) {
    ScanMaxMin(*this, bCols, dMax, dMin, [=](const double *p, int s) {
        double a = p[n1 * s], b = p[n2 * s];
        return a * a + b * b;
    });
    dMax = sqrt(dMax);
    dMin = sqrt(dMin);
}

void CMatrix::GetMaxMinLength(double &dMax, double &dMin, int n1, int n2, int n3, bool bCols) {
    ScanMaxMin(*this, bCols, dMax, dMin, [=](const double *p, int s) {
        double a = p[n1 * s], b = p[n2 * s], c = p[n3 * s];
        return a * a + b * b + c * c;
    });
    dMax = sqrt(dMax);
    dMin = sqrt(dMin);
}

void CMatrix::GetMaxMin1(double (*pFunc)(double), double &dMax, double &dMin, int n1, bool bCols) {
    ScanMaxMin(*this, bCols, dMax, dMin, [=](const double *p, int s) { return pFunc(p[n1 * s]); });
}

// pFunc gets a scratch array filled anew for each sample, so it may change it.
void CMatrix::GetMaxMin2(double (*pFunc)(double *), double &dMax, double &dMin, int n1, int n2,
                         bool bCols) {
    ScanMaxMin(*this, bCols, dMax, dMin, [=](const double *p, int s) {
        double aValues[2] = {p[n1 * s], p[n2 * s]};
        return pFunc(aValues);
    });
}

void CMatrix::GetMaxMin3(double (*pFunc)(double *), double &dMax, double &dMin, int n1, int n2,
                         int n3, bool bCols) {
    ScanMaxMin(*this, bCols, dMax, dMin, [=](const double *p, int s) {
        double aValues[3] = {p[n1 * s], p[n2 * s], p[n3 * s]};
        return pFunc(aValues);
    });
}
