// CVector: construction, storage, filling, archive stream.
#include "dense/matrix.h"
#include "dense/vector.h"

#include <cstring>
#include <new>

IMPLEMENT_SERIAL(CVector, CVirtRealMat, 1)

CVector::CVector() : m_nSize(0), m_pVector(NULL) {}

CVector::CVector(int nSize, bool bInit, double dValue) : m_nSize(0), m_pVector(NULL) {
    if (nSize <= 0)
        return;
    m_nSize = nSize;
    m_pVector = new double[nSize];
    if (bInit)
        for (int i = 0; i < nSize; i++)
            m_pVector[i] = dValue;
}

CVector::CVector(CVector *pOther) : m_nSize(0), m_pVector(NULL) {
    *this = *pOther;
}

CVector::CVector(const CVector &other) : CVirtRealMat(), m_nSize(0), m_pVector(NULL) {
    *this = other;
}

CVector::~CVector() {
    delete[] m_pVector;
}

bool CVector::Allocate(int nSize, bool bInit, double dValue) {
    // A new size loses the old contents; the same size keeps them.
    if (nSize != m_nSize && m_pVector != NULL) {
        delete[] m_pVector;
        m_pVector = NULL;
    }
    m_nSize = nSize;
    if (nSize == 0)
        return false;
    if (m_pVector == NULL) {
        m_pVector = new (std::nothrow) double[nSize];
        if (m_pVector == NULL)
            return false;
    }
    if (bInit)
        for (int i = 0; i < nSize; i++)
            m_pVector[i] = dValue;
    return true;
}

bool CVector::Allocate(int *pSizes, int nDims) {
    bool bInit = nDims < 2 ? true : pSizes[1] != 0;
    double dValue = nDims < 3 ? 0.0 : (double)pSizes[2];
    return CVector::Allocate(pSizes[0], bInit, dValue);
}

CVector &CVector::operator=(const CVector &other) {
    if (this == &other)
        return *this;
    if (m_nSize != other.m_nSize) {
        delete[] m_pVector;
        m_pVector = other.m_nSize > 0 ? new double[other.m_nSize] : NULL;
        m_nSize = other.m_nSize;
    }
    if (m_nSize > 0)
        memcpy(m_pVector, other.m_pVector, sizeof(double) * m_nSize);
    return *this;
}

void CVector::SetVector(int nSize, double *pValues) {
    delete[] m_pVector;
    m_pVector = pValues;
    m_nSize = nSize;
}

double *CVector::ReplaceVector(double *pValues, int nSize) {
    double *pOld = m_pVector;
    m_pVector = pValues;
    m_nSize = nSize;
    return pOld;
}

void CVector::SwitchVectors(CVector *pOther) {
    double *pValues = m_pVector;
    int nSize = m_nSize;
    m_pVector = pOther->m_pVector;
    m_nSize = pOther->m_nSize;
    pOther->m_pVector = pValues;
    pOther->m_nSize = nSize;
    // A matrix partner keeps its shape consistent with the array it took over.
    if (pOther->IsKindOf(RUNTIME_CLASS(CMatrix)))
        ((CMatrix *)pOther)->Resize(m_nSize, false);
}

void CVector::Trunc(int nFirst, int nEnd) {
    if (m_pVector == NULL)
        return;
    if (nEnd < 1 || nEnd > m_nSize)
        nEnd = m_nSize;
    double *pNew = NULL;
    int nKept = 0;
    if (nFirst < nEnd) {
        nKept = nEnd - nFirst;
        pNew = new double[nKept];
        memcpy(pNew, m_pVector + nFirst, sizeof(double) * nKept);
    }
    delete[] m_pVector;
    m_pVector = pNew;
    m_nSize = nKept;
}

void CVector::Initialize(double dValue) {
    for (int i = 0; i < m_nSize; i++)
        m_pVector[i] = dValue;
}

CVirtRealMat &CVector::operator=(double dValue) {
    CVector::Initialize(dValue);
    return *this;
}

CVirtRealMat &CVector::operator+=(double dValue) {
    for (int i = 0; i < m_nSize; i++)
        m_pVector[i] += dValue;
    return *this;
}

void CVector::SetIncremental(double dStep, double dStart) {
    // Running sums, not dStart + i * dStep: the rounding is part of the result.
    double dValue = dStart;
    for (int i = 0; i < m_nSize; i++) {
        m_pVector[i] = dValue;
        dValue += dStep;
    }
}

void CVector::AddValues(LONG *pIndices, double *pValues, int nCount) {
    FEMMAT_CHECK_DOFS("CVector::AddValues", pIndices, nCount, m_nSize);
    for (int i = 0; i < nCount; i++)
        if (pIndices[i] >= 0)
            m_pVector[pIndices[i]] += pValues[i];
}

void CVector::Serialize(CArchive &ar) {
    if (ar.IsStoring()) {
        ar << (LONG)m_nSize;
        for (int i = 0; i < m_nSize; i++)
            ar << m_pVector[i];
        return;
    }
    // Loading. The count is checked against what the archive still holds and a new array
    // is made before the old one goes, so that a throw leaves the old contents; an
    // unchanged count keeps the array and overwrites it, and a throw there empties it.
    LONG nCount;
    ar >> nCount;
    if (nCount > 0)
        ar.CheckAvailable((ULONGLONG)nCount, sizeof(double));
    double *pValues = m_pVector;
    if (nCount != m_nSize)
        pValues = nCount > 0 ? new double[nCount] : NULL;
    try {
        for (int i = 0; i < nCount; i++)
            ar >> pValues[i];
    } catch (...) {
        if (pValues != m_pVector)
            delete[] pValues;
        else
            SetVector(0, NULL);
        throw;
    }
    if (pValues != m_pVector) {
        delete[] m_pVector;
        m_pVector = pValues;
    }
    m_nSize = nCount;
}
