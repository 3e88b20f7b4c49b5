// CSkylineMatrix text writer and console dump: the full square, upper triangle from the
// profile, zeros below the diagonal and outside the profile.
#include "skyline/skylinematrix.h"
#include "textio/writer_internal.h"

#include <iostream>

void CSkylineMatrix::WriteASCII(CFile *pFile, CString strPrefix, CString strSuffix, int nWidth,
                                int nPrecision, int, bool, bool) {
    for (int r = 0; r < m_nRows; r++) {
        for (int c = 0; c < m_nRows; c++) {
            if (r <= c && PeakRow(c) <= r)
                WriteValueField(pFile, textExponent, strPrefix, strSuffix, nWidth, nPrecision,
                                (*this)(r, c));
            else
                WriteZeroField(pFile, strPrefix, strSuffix, nWidth);
        }
        pFile->Write("\r\n", 2);
    }
}

void CSkylineMatrix::COUT(const char *pszSeparator) {
    for (int r = 0; r < m_nRows; r++) {
        for (int c = 0; c < m_nRows; c++) {
            if (r <= c && PeakRow(c) <= r)
                std::cout << (*this)(r, c) << pszSeparator;
            else
                std::cout << 0 << pszSeparator;
        }
        std::cout << std::endl;
    }
}
