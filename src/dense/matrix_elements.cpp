// CMatrix: element operations: assembly, row and column scaling, identity, column
// extraction, transposition, symmetric/skew split, symmetry test, whole-buffer arithmetic.
#include "dense/matrix.h"

// Adds the nCount by nCount element matrix (row-major) at the rows and columns named by
// pIndices; a negative index leaves out its row and column.
void CMatrix::AddValues(LONG *pIndices, double *pValues, int nCount) {
    FEMMAT_CHECK_DOFS("CMatrix::AddValues", pIndices, nCount, std::min(m_nRows, GetColumns()));
    if (nCount < 1)
        return;
    int nCols = GetColumns();
    for (int i = 0; i < nCount; i++) {
        if (pIndices[i] < 0)
            continue;
        double *pRow = m_pVector + (size_t)pIndices[i] * nCols;
        const double *pElemRow = pValues + (size_t)i * nCount;
        for (int j = 0; j < nCount; j++)
            if (pIndices[j] >= 0)
                pRow[pIndices[j]] += pElemRow[j];
    }
}

void CMatrix::MultiplyRow(int i, double dFactor) {
    int nCols = GetColumns();
    double *pRow = m_pVector + (size_t)i * nCols;
    for (int j = 0; j < nCols; j++)
        pRow[j] *= dFactor;
}

void CMatrix::MultiplyCol(int j, double dFactor) {
    int nCols = GetColumns();
    for (int k = j; k < m_nSize; k += nCols)
        m_pVector[k] *= dFactor;
}

void CMatrix::MultiplySubRow(int i, int nFirst, int nEnd, double dFactor) {
    double *pRow = m_pVector + (size_t)i * GetColumns();
    for (int j = nFirst; j < nEnd; j++)
        pRow[j] *= dFactor;
}

void CMatrix::Identity(int n, double dDiagonal) {
    Allocate(n, n, true, 0.0);
    for (int i = 0; i < n; i++)
        m_pVector[(size_t)i * (n + 1)] = dDiagonal;
}

// Copies column j into the first m_nRows elements of out; a shorter out is sized first.
void CMatrix::GetColVect(CVector &out, int j) {
    if (out.m_nSize < m_nRows)
        out.Allocate(m_nRows, false, 0.0);
    int nCols = GetColumns();
    for (int i = 0; i < m_nRows; i++)
        out.m_pVector[i] = m_pVector[(size_t)i * nCols + j];
}

void CMatrix::Transpose() {
    int nRows = m_nRows;
    int nCols = GetColumns();
    if (nRows == nCols) {
        for (int i = 0; i < nRows; i++)
            for (int j = i + 1; j < nCols; j++) {
                double dTemp = m_pVector[i * nCols + j];
                m_pVector[i * nCols + j] = m_pVector[j * nCols + i];
                m_pVector[j * nCols + i] = dTemp;
            }
        return;
    }
    // (i, j) goes to index j * nRows + i of a new array.
    double *pNew = new double[m_nSize];
    for (int i = 0; i < nRows; i++)
        for (int j = 0; j < nCols; j++)
            pNew[j * nRows + i] = m_pVector[i * nCols + j];
    delete[] m_pVector;
    m_pVector = pNew;
    m_nRows = nCols;
}

// New symmetric and skew parts of a square matrix; only their upper triangles and
// diagonals are written.
void CMatrix::Split(CMatrix *&pSym, CMatrix *&pSkew) {
    int n = m_nRows;
    pSym = new CMatrix(n, n, false, 0.0);
    pSkew = new CMatrix(n, n, false, 0.0);
    double *pA = m_pVector;
    double *pS = pSym->m_pVector;
    double *pK = pSkew->m_pVector;
    for (int i = n - 1; i >= 0; i--)
        for (int j = i + 1; j < n; j++) {
            double dUpper = pA[i * n + j];
            double dLower = pA[j * n + i];
            pS[i * n + j] = (dUpper + dLower) * 0.5;
            pK[i * n + j] = (dUpper - dLower) * 0.5;
        }
    for (int i = 0; i < n; i++) {
        pS[i * n + i] = pA[i * n + i];
        pK[i * n + i] = 0.0;
    }
}

// Exact symmetry, compared from the last row up through GetValue.
bool CMatrix::CheckSymm() {
    if (GetColumns() != m_nRows)
        return false;
    for (int i = m_nRows - 1; i >= 0; i--)
        for (int j = i + 1; j < m_nRows; j++)
            if (GetValue(i, j) != GetValue(j, i))
                return false;
    return true;
}

CMatrix &CMatrix::operator*=(double dValue) {
    CVector::operator*=(dValue);
    return *this;
}

CMatrix &CMatrix::operator/=(double dValue) {
    CVector::operator/=(dValue);
    return *this;
}

CMatrix &CMatrix::operator+=(CMatrix &other) {
    CVector::operator+=(other);
    return *this;
}

CMatrix &CMatrix::operator-=(CMatrix &other) {
    CVector::operator-=(other);
    return *this;
}
