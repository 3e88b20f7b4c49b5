// CMatrix: construction, sizing and shape, element access, archive stream.
#include "dense/matrix.h"

#include <cstring>

IMPLEMENT_SERIAL(CMatrix, CVector, 1)

CMatrix::CMatrix() : m_nRows(0) {}

CMatrix::CMatrix(int nRows, int nCols, bool bInit, double dValue)
    : CVector(nRows * nCols, bInit, dValue), m_nRows(nCols == 0 ? 0 : nRows) {}

// A copy of other, or with bTranspose its transpose.
CMatrix::CMatrix(const CMatrix &other, bool bTranspose) : CVector() {
    int nOtherRows = other.m_nRows;
    int nOtherCols = nOtherRows == 0 ? 0 : other.m_nSize / nOtherRows;
    m_nRows = bTranspose ? nOtherCols : nOtherRows;
    if (other.m_nSize <= 0)
        return;
    m_nSize = other.m_nSize;
    m_pVector = new double[m_nSize];
    if (!bTranspose) {
        memcpy(m_pVector, other.m_pVector, sizeof(double) * m_nSize);
        return;
    }
    // (i, j) of the new matrix is (j, i) of other.
    for (int i = 0; i < nOtherCols; i++)
        for (int j = 0; j < nOtherRows; j++)
            m_pVector[i * nOtherRows + j] = other.m_pVector[j * nOtherCols + i];
}

CMatrix::~CMatrix() {}

bool CMatrix::Allocate(int nRows, int nCols, bool bInit, double dValue) {
    int nCount = nRows * nCols;
    bool bResult = CVector::Allocate(nCount, bInit, dValue);
    if (bResult)
        m_nRows = nRows;
    else if (nCount == 0)
        m_nRows = 0;
    return bResult;
}

bool CMatrix::Allocate(int nCount, bool bInit, double dValue) {
    m_nRows = nCount;
    return CVector::Allocate(nCount, bInit, dValue);
}

bool CMatrix::Allocate(int *pSizes, int nDims) {
    int nRows = pSizes[0];
    int nCols = nDims < 2 ? nRows : pSizes[1];
    bool bInit = nDims < 3 ? true : pSizes[2] != 0;
    double dValue = nDims < 4 ? 0.0 : (double)pSizes[3];
    if (!CVector::Allocate(nRows * nCols, bInit, dValue))
        return false;
    m_nRows = nRows;
    return true;
}

bool CMatrix::Resize(int n, bool bIsColumns) {
    // A count of 0 has no shape to give; refusing it keeps the matrix as it was.
    if (n == 0 || m_nSize % n != 0)
        return false;
    m_nRows = bIsColumns ? m_nSize / n : n;
    return true;
}

int CMatrix::GetColumns() {
    return m_nRows == 0 ? 0 : m_nSize / m_nRows;
}

double &CMatrix::GetValueByRef(int i, int j) {
    return m_pVector[i * (m_nSize / m_nRows) + j];
}

double CMatrix::GetValue(int i, int j) {
    return m_pVector[i * (m_nSize / m_nRows) + j];
}

void CMatrix::SetValue(int i, int j, double dValue) {
    m_pVector[i * (m_nSize / m_nRows) + j] = dValue;
}

void CMatrix::AddValue(int i, int j, double dValue) {
    m_pVector[i * (m_nSize / m_nRows) + j] += dValue;
}

CMatrix &CMatrix::operator=(const CMatrix &other) {
    if (this == &other)
        return *this;
    int nCols = other.m_nRows == 0 ? 0 : other.m_nSize / other.m_nRows;
    Allocate(other.m_nRows, nCols, false, 0.0);
    if (m_nSize > 0)
        memcpy(m_pVector, other.m_pVector, sizeof(double) * m_nSize);
    return *this;
}

CVirtRealMat &CMatrix::operator=(double dValue) {
    return CVector::operator=(dValue);
}

void CMatrix::SetVector(double *pValues, int nRows, int nCols) {
    delete[] m_pVector;
    m_pVector = pValues;
    m_nRows = nRows;
    m_nSize = nRows * nCols;
}

double *CMatrix::ReplaceVector(double *pValues, int nSize) {
    m_nRows = nSize;
    return CVector::ReplaceVector(pValues, nSize);
}

// Exchanges buffers with a vector or a matrix; matrices exchange their shapes too.
void CMatrix::SwitchVectors(CVector *pOther) {
    int nOldRows = m_nRows;
    bool bMatrix = pOther->IsKindOf(RUNTIME_CLASS(CMatrix));
    int nNewRows = bMatrix ? ((CMatrix *)pOther)->m_nRows : pOther->m_nSize;
    CVector::SwitchVectors(pOther);
    Resize(nNewRows, false);
    if (bMatrix)
        ((CMatrix *)pOther)->Resize(nOldRows, false);
}

// The vector's stream, then the row count. A throw leaves the old matrix if the vector's
// part had not begun to change it, else an empty one, never new elements in the old shape.
void CMatrix::Serialize(CArchive &ar) {
    if (ar.IsStoring()) {
        CVector::Serialize(ar);
        ar << (LONG)m_nRows;
        return;
    }
    bool bVectorLoaded = false;
    LONG nRows;
    try {
        CVector::Serialize(ar);
        bVectorLoaded = true;
        ar >> nRows;
    } catch (...) {
        if (bVectorLoaded || m_nSize == 0)
            SetVector(NULL, 0, 0);
        throw;
    }
    m_nRows = nRows;
}
