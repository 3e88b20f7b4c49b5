// CLongVector and CLongMatrix: storage, search, text, archive stream.
#include "auxtypes/longcontainers.h"
#include "textio/writer_internal.h"

#include <algorithm>
#include <new>

IMPLEMENT_SERIAL(CLongVector, CObject, 1)
IMPLEMENT_SERIAL(CLongMatrix, CObject, 1)

// --- CLongVector ---

CLongVector::CLongVector() : m_nSize(0), m_pVector(NULL) {}

CLongVector::CLongVector(const CLongVector &other) : CObject(), m_nSize(0), m_pVector(NULL) {
    *this = other;
}

CLongVector::~CLongVector() {
    delete[] m_pVector;
}

bool CLongVector::Allocate(int nSize, bool bInit, LONG nValue) {
    m_nSize = nSize;
    delete[] m_pVector;
    m_pVector = nSize > 0 ? new (std::nothrow) LONG[nSize] : NULL;
    if (m_pVector == NULL)
        return false;
    if (bInit)
        std::fill(m_pVector, m_pVector + nSize, nValue);
    return true;
}

bool CLongVector::Allocate(int *pSizes, int nDims) {
    bool bInit = nDims < 2 ? true : pSizes[1] != 0;
    LONG nValue = nDims < 3 ? 0 : pSizes[2];
    return Allocate(pSizes[0], bInit, nValue);
}

int CLongVector::Find(LONG nValue) const {
    for (int i = 0; i < m_nSize; i++)
        if (m_pVector[i] == nValue)
            return i;
    return -1;
}

CLongVector &CLongVector::operator=(const CLongVector &other) {
    if (&other == this)
        return *this;
    Allocate(other.m_nSize, false, 0);
    if (m_pVector != NULL)
        std::copy(other.m_pVector, other.m_pVector + m_nSize, m_pVector);
    return *this;
}

CLongVector &CLongVector::operator=(LONG nValue) {
    if (m_pVector != NULL)
        std::fill(m_pVector, m_pVector + m_nSize, nValue);
    return *this;
}

CLongVector &CLongVector::operator+=(LONG nValue) {
    for (int i = 0; i < m_nSize && m_pVector != NULL; i++)
        m_pVector[i] += nValue;
    return *this;
}

void CLongVector::WriteASCII(CFile *pFile, CString strPrefix, CString strSuffix, int nWidth,
                             bool bNumbers, bool bHorizontal) {
    const char *p = strPrefix, *s = strSuffix;
    if (bHorizontal) {
        if (bNumbers) {
            for (int i = 0; i < m_nSize; i++)
                WriteField(pFile, "%s%*i%s", p, nWidth, i + 1, s);
            pFile->Write("\r\n", 2);
        }
        for (int i = 0; i < m_nSize; i++)
            WriteField(pFile, "%s%*i%s", p, nWidth, m_pVector[i], s);
        pFile->Write("\r\n", 2);
        return;
    }
    for (int i = 0; i < m_nSize; i++) {
        if (bNumbers)
            WriteField(pFile, "%*u%s%*i%s\r\n", nWidth, (unsigned)(i + 1), p, nWidth, m_pVector[i],
                       s);
        else
            WriteField(pFile, "%s%*i%s\r\n", p, nWidth, m_pVector[i], s);
    }
}

// Writes the groups of a compressed row table, one line each.
void CLongVector::WriteASCII(CFile *pFile, CString strPrefix, CString strSuffix, int nWidth,
                             CLongVector &starts, bool bHeader, bool bNumbers) {
    const char *p = strPrefix, *s = strSuffix;
    const int nGroups = starts.m_nSize - 1;
    // Phase 1: the header, positions 1 to the largest group's size.
    if (bHeader) {
        int nLargest = 0;
        for (int g = 0; g < nGroups; g++)
            nLargest = std::max(nLargest, (int)(starts[g + 1] - starts[g]));
        if (bNumbers) {
            CString strPad;
            strPad.Format("%*u", nWidth, 0u);
            strPad.TrimRight("0");
            strPad += " ";
            pFile->Write((const char *)strPad, strPad.GetLength());
        }
        for (int j = 1; j <= nLargest; j++)
            WriteField(pFile, "%s%*i%s", p, nWidth, j, s);
        pFile->Write("\r\n", 2);
    }
    // Phase 2: a line per group.
    for (int g = 0; g < nGroups; g++) {
        for (LONG k = starts[g]; k < starts[g + 1]; k++) {
            if (bNumbers && k == starts[g])
                WriteField(pFile, "%*u%s%*i%s", nWidth, (unsigned)(g + 1), p, nWidth, m_pVector[k],
                           s);
            else
                WriteField(pFile, "%s%*i%s", p, nWidth, m_pVector[k], s);
        }
        pFile->Write("\r\n", 2);
    }
}

void CLongVector::Serialize(CArchive &ar) {
    if (ar.IsStoring()) {
        ar << (LONG)m_nSize << (LONG)1;
        for (int i = 0; i < m_nSize; i++)
            ar << m_pVector[i];
        return;
    }
    LONG nCount, nIgnored;
    ar >> nCount >> nIgnored;
    if (nCount > 0)
        ar.CheckAvailable((ULONGLONG)nCount, sizeof(LONG));
    Allocate(nCount, false, 0);
    for (int i = 0; i < m_nSize && m_pVector != NULL; i++)
        ar >> m_pVector[i];
}

// --- CLongMatrix ---

CLongMatrix::CLongMatrix() : m_nRows(0), m_nColumns(0), m_pVector(NULL) {}

CLongMatrix::CLongMatrix(const CLongMatrix &other)
    : CObject(), m_nRows(0), m_nColumns(0), m_pVector(NULL) {
    *this = other;
}

CLongMatrix::~CLongMatrix() {
    delete[] m_pVector;
}

bool CLongMatrix::Allocate(int nRows, int nColumns, bool bInit, LONG nValue) {
    m_nRows = nRows;
    m_nColumns = nColumns;
    delete[] m_pVector;
    m_pVector = NULL;
    long long n = (long long)nRows * nColumns;
    if (nRows > 0 && nColumns > 0 && n <= 0x7FFFFFFF)
        m_pVector = new (std::nothrow) LONG[n];
    if (m_pVector == NULL)
        return false;
    if (bInit)
        std::fill(m_pVector, m_pVector + n, nValue);
    return true;
}

bool CLongMatrix::Allocate(int *pSizes, int nDims) {
    int nColumns = nDims < 2 ? pSizes[0] : pSizes[1];
    bool bInit = nDims < 3 ? true : pSizes[2] != 0;
    LONG nValue = nDims < 4 ? 0 : pSizes[3];
    return Allocate(pSizes[0], nColumns, bInit, nValue);
}

LONG &CLongMatrix::GetValue(int r, int c) {
    return m_pVector[r * m_nColumns + c];
}

void CLongMatrix::GetPointerMat(CLongMatrix &out, int nBase) {
    out.Allocate(m_nRows + 1, 1, false, 0);
    for (int i = 0; i <= m_nRows && out.m_pVector != NULL; i++)
        out.m_pVector[i] = i * m_nColumns + nBase;
}

int CLongMatrix::FindInCol(int nCol, LONG nValue, int nStartRow) const {
    if (m_nColumns <= 0)
        return -1;
    const int nEnd = Count();
    for (int k = nStartRow * m_nColumns + nCol; k < nEnd; k += m_nColumns)
        if (m_pVector[k] == nValue)
            return k / m_nColumns;
    return -1;
}

int CLongMatrix::FindInRow(int nRow, LONG nValue) const {
    const LONG *pRow = m_pVector + nRow * m_nColumns;
    for (int c = 0; c < m_nColumns; c++)
        if (pRow[c] == nValue)
            return c;
    return -1;
}

CLongMatrix &CLongMatrix::operator=(const CLongMatrix &other) {
    if (&other == this)
        return *this;
    Allocate(other.m_nRows, other.m_nColumns, false, 0);
    if (m_pVector != NULL)
        std::copy(other.m_pVector, other.m_pVector + Count(), m_pVector);
    return *this;
}

CLongMatrix &CLongMatrix::operator=(LONG nValue) {
    std::fill(m_pVector, m_pVector + Count(), nValue);
    return *this;
}

CLongMatrix &CLongMatrix::operator+=(LONG nValue) {
    for (int k = 0; k < Count(); k++)
        m_pVector[k] += nValue;
    return *this;
}

namespace {
class CLongMatrixSource : public CDenseSource {
public:
    explicit CLongMatrixSource(CLongMatrix &m) : m_m(m) {}
    double Value(int i, int j) override { return (double)m_m.GetValue(i, j); }

private:
    CLongMatrix &m_m;
};
} // namespace

void CLongMatrix::WriteASCII(CFile *pFile, CString strPrefix, CString strSuffix, int nWidth,
                             int nPrecision, bool bScientific, bool bRowNumbers, bool bHeader) {
    CLongMatrixSource source(*this);
    WriteDenseBlock(pFile, strPrefix, strSuffix, nWidth, nPrecision,
                    bScientific ? textExponent : textFixed, bRowNumbers, bHeader, m_nRows,
                    GetColumns(), source);
}

void CLongMatrix::Serialize(CArchive &ar) {
    if (ar.IsStoring()) {
        ar << (LONG)m_nRows << (LONG)m_nColumns;
        for (int k = 0; k < Count(); k++)
            ar << m_pVector[k];
        return;
    }
    LONG nRows, nColumns;
    ar >> nRows >> nColumns;
    if (nRows > 0 && nColumns > 0)
        ar.CheckAvailable((ULONGLONG)nRows * (ULONGLONG)nColumns, sizeof(LONG));
    Allocate(nRows, nColumns, false, 0);
    for (int k = 0; k < Count(); k++)
        ar >> m_pVector[k];
}
