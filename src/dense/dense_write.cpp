// CVector and CMatrix text writers and console dumps.
#include "dense/matrix.h"
#include "textio/writer_internal.h"

#include <iostream>

namespace {
// Values through the matrix's virtual accessor, so a derived class's values are written.
class CMatrixSource : public CDenseSource {
public:
    explicit CMatrixSource(CMatrix &m) : m_m(m) {}
    double Value(int i, int j) override { return m_m.GetValue(i, j); }

private:
    CMatrix &m_m;
};
} // namespace

// All elements on one line, fixed (nFormat 0) or exponent, then one line end.
void CVector::WriteASCII(CFile *pFile, CString strPrefix, CString strSuffix, int nWidth,
                         int nPrecision, int nFormat, bool, bool) {
    int nForm = nFormat == 0 ? textFixed : textExponent;
    for (int i = 0; i < m_nSize; i++)
        WriteValueField(pFile, nForm, strPrefix, strSuffix, nWidth, nPrecision, m_pVector[i]);
    pFile->Write("\r\n", 2);
}

void CMatrix::WriteASCII(CFile *pFile, CString strPrefix, CString strSuffix, int nWidth,
                         int nPrecision, int nFormat, bool bRowNumbers, bool bHeader) {
    CMatrixSource source(*this);
    WriteDenseBlock(pFile, strPrefix, strSuffix, nWidth, nPrecision, nFormat, bRowNumbers, bHeader,
                    m_nRows, GetColumns(), source);
}

// The flat array in storage order, GetColumns values a line.
void CMatrix::COUT(const char *pszSeparator) {
    int nCols = GetColumns();
    for (int i = 0; i < m_nRows; i++) {
        for (int j = 0; j < nCols; j++)
            std::cout << m_pVector[i * nCols + j] << pszSeparator;
        std::cout << std::endl;
    }
}

void CMatrix::Stream() {
    int nCols = GetColumns();
    for (int i = 0; i < m_nRows; i++) {
        for (int j = 0; j < nCols; j++)
            std::cout << GetValue(i, j) << '\t';
        std::cout << std::endl;
    }
}
