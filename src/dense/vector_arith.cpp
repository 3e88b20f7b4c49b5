// CVector: element-wise arithmetic, reductions, norms, searches and comparison.
#include "dense/vector.h"

#include <cmath>

CVector &CVector::operator*=(double dValue) {
    for (int i = 0; i < m_nSize; i++)
        m_pVector[i] *= dValue;
    return *this;
}

CVector &CVector::operator/=(double dValue) {
    for (int i = 0; i < m_nSize; i++)
        m_pVector[i] /= dValue;
    return *this;
}

void CVector::Scale(double dValue) {
    *this *= dValue;
}

void CVector::Scale(CVector *pOther) {
    for (int i = 0; i < m_nSize; i++)
        m_pVector[i] *= pOther->m_pVector[i];
}

// this[i] += dFactor * other[i], growing to the other's length; the other is unchanged.
void CVector::AddScaled(const CVector &other, double dFactor) {
    int n = m_nSize, m = other.m_nSize;
    // Phase 1: both empty.
    if (n == 0 && m == 0) {
        delete[] m_pVector;
        m_pVector = NULL;
        return;
    }
    // Phase 2: the other fits; the tail keeps its values.
    if (m <= n) {
        for (int i = 0; i < m; i++)
            m_pVector[i] += dFactor * other.m_pVector[i];
        return;
    }
    // Phase 3: grow to the other's length; the new tail is the other's, scaled.
    double *pNew = new double[m];
    for (int i = 0; i < n; i++)
        pNew[i] = m_pVector[i] + dFactor * other.m_pVector[i];
    for (int i = n; i < m; i++)
        pNew[i] = dFactor * other.m_pVector[i];
    delete[] m_pVector;
    m_pVector = pNew;
    m_nSize = m;
}

CVector &CVector::operator+=(CVector &other) {
    AddScaled(other, 1.0);
    return *this;
}

CVector &CVector::operator-=(CVector &other) {
    AddScaled(other, -1.0);
    return *this;
}

void CVector::Add(CVector &other, double dFactor) {
    AddScaled(other, dFactor);
}

CVector &CVector::LinComb(double dA, CVector &A, double dB, CVector &B) {
    int nA = A.m_nSize, nB = B.m_nSize;
    int s = nA > nB ? nA : nB;
    if (s == 0) {
        delete[] m_pVector;
        m_pVector = NULL;
        m_nSize = 0;
        return *this;
    }
    // Sized through the table; a full-length operand may be the target itself.
    Allocate(s, false, 0.0);
    int nShort = nA < nB ? nA : nB;
    for (int i = 0; i < nShort; i++)
        m_pVector[i] = dA * A.m_pVector[i] + dB * B.m_pVector[i];
    if (nA > nB)
        for (int i = nShort; i < s; i++)
            m_pVector[i] = dA * A.m_pVector[i];
    else
        for (int i = nShort; i < s; i++)
            m_pVector[i] = dB * B.m_pVector[i];
    return *this;
}

void CVector::CrossProd(CVector *pA, CVector *pB) {
    Allocate(3, false, 0.0);
    const double *a = pA->m_pVector, *b = pB->m_pVector;
    m_pVector[0] = a[1] * b[2] - a[2] * b[1];
    m_pVector[1] = a[2] * b[0] - a[0] * b[2];
    m_pVector[2] = a[0] * b[1] - a[1] * b[0];
}

void CVector::AplusBC(double *pA, double *pB, int nCount, double dFactor) {
    // 0.0 stands for "no factor", not for "add nothing".
    if (dFactor == 0.0) {
        for (int i = 0; i < nCount; i++)
            pA[i] += pB[i];
        return;
    }
    for (int i = 0; i < nCount; i++)
        pA[i] += pB[i] * dFactor;
}

double CVector::Dot(CVector &other) {
    int n = m_nSize < other.m_nSize ? m_nSize : other.m_nSize;
    double dSum = 0.0;
    for (int i = 0; i < n; i++)
        dSum += m_pVector[i] * other.m_pVector[i];
    return dSum;
}

double CVector::Sum() {
    double dSum = 0.0;
    for (int i = 0; i < m_nSize; i++)
        dSum += m_pVector[i];
    return dSum;
}

double CVector::Mean() {
    return Sum() / m_nSize;
}

double CVector::Length() const {
    double dSum = 0.0;
    for (int i = 0; i < m_nSize; i++)
        dSum += m_pVector[i] * m_pVector[i];
    return sqrt(dSum);
}

double CVector::Normalize() {
    double dLength = Length();
    if (dLength != 0.0)
        for (int i = 0; i < m_nSize; i++)
            m_pVector[i] /= dLength;
    return dLength;
}

double CVector::PNorm(double dP) {
    if (dP == 0.0)
        return (double)m_nSize;
    double dSum = 0.0;
    if (dP == 1.0) {
        for (int i = 0; i < m_nSize; i++)
            dSum += fabs(m_pVector[i]);
        return dSum;
    }
    for (int i = 0; i < m_nSize; i++)
        dSum += pow(fabs(m_pVector[i]), dP);
    return pow(dSum, 1.0 / dP);
}

double CVector::InfNorm() {
    double dMax = 0.0;
    for (int i = 0; i < m_nSize; i++)
        if (fabs(m_pVector[i]) > dMax)
            dMax = fabs(m_pVector[i]);
    return dMax;
}

double CVector::ZeroNorm() {
    if (m_nSize == 0)
        return 0.0;
    double dMin = fabs(m_pVector[0]);
    for (int i = 1; i < m_nSize; i++)
        if (fabs(m_pVector[i]) < dMin)
            dMin = fabs(m_pVector[i]);
    return dMin;
}

double &CVector::Max() {
    int k = 0;
    for (int i = 1; i < m_nSize; i++)
        if (m_pVector[i] > m_pVector[k])
            k = i;
    return m_pVector[k];
}

double &CVector::Min() {
    int k = 0;
    for (int i = 1; i < m_nSize; i++)
        if (m_pVector[i] < m_pVector[k])
            k = i;
    return m_pVector[k];
}

int CVector::Find(double dValue, int nFirst, int nEnd) {
    if (nEnd < 1)
        nEnd = m_nSize;
    for (int i = nFirst; i < nEnd; i++)
        if (m_pVector[i] == dValue)
            return i;
    return -1;
}

int CVector::Count(double dValue, int nFirst, int nEnd) {
    if (nEnd < 1)
        nEnd = m_nSize;
    int nCount = 0;
    for (int i = nFirst; i < nEnd; i++)
        if (m_pVector[i] == dValue)
            nCount++;
    return nCount;
}

bool CVector::operator==(const CVector &other) const {
    if (m_nSize != other.m_nSize)
        return false;
    for (int i = 0; i < m_nSize; i++)
        if (m_pVector[i] != other.m_pVector[i])
            return false;
    return true;
}

bool CVector::operator==(double dValue) const {
    for (int i = 0; i < m_nSize; i++)
        if (m_pVector[i] != dValue)
            return false;
    return true;
}

bool CVector::operator==(int nValue) const {
    return *this == (double)nValue;
}
