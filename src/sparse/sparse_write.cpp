// CSparseMatrix text writer and console dump, walking the row list once.
#include "sparse/sparsematrix.h"
#include "textio/writer_internal.h"

#include <iostream>

// Dense listing (nFormat not 0): every row up to the last of the list as a full line, values
// in the exponent form, zero fields elsewhere. Row listing (nFormat 0): a label with the
// index of each list row's first line, one zero field per absent row, each row's line
// stopping behind its last cell, values fixed.
void CSparseMatrix::WriteASCII(CFile *pFile, CString strPrefix, CString strSuffix, int nWidth,
                               int nPrecision, int nFormat, bool bRowNumbers, bool) {
    if (m_pFirstRow == NULL) {
        pFile->Write("\r\n", 2);
        return;
    }
    const bool bDense = nFormat != 0;
    const int nForm = bDense ? textExponent : textFixed;
    const int nCols = bDense ? GetColumns() : 0;
    int r = 0;
    for (row *pRow = m_pFirstRow; pRow != NULL; pRow = pRow->m_pNext) {
        // Phase 1: the rows missing before this one.
        if (!bDense)
            WriteField(pFile, "%u         ", (unsigned)r);
        for (; r < pRow->m_nRow; r++) {
            if (bDense) {
                if (bRowNumbers)
                    WriteField(pFile, "%*u", nWidth, (unsigned)(r + 1));
                for (int c = 0; c < nCols; c++)
                    WriteZeroField(pFile, strPrefix, strSuffix, nWidth);
                pFile->Write("\r\n", 2);
            } else {
                WriteZeroField(pFile, strPrefix, strSuffix, nWidth);
                pFile->Write("\r\n", 2);
            }
        }
        // Phase 2: the row's own line.
        if (bDense && bRowNumbers)
            WriteField(pFile, "%*u", nWidth, (unsigned)(r + 1));
        int c = 0;
        for (cell *pCell = pRow->m_pFirstCell; pCell != NULL; pCell = pCell->m_pNext) {
            for (; c < pCell->m_nCol; c++)
                WriteZeroField(pFile, strPrefix, strSuffix, nWidth);
            WriteValueField(pFile, nForm, strPrefix, strSuffix, nWidth, nPrecision,
                            pCell->m_dValue);
            c = pCell->m_nCol + 1;
        }
        for (; c < nCols; c++)
            WriteZeroField(pFile, strPrefix, strSuffix, nWidth);
        pFile->Write("\r\n", 2);
        r++;
    }
    pFile->Write("\r\n", 2);
}

// Absent rows print one 0; a row prints 0 for each column before a cell, stopping at its last.
void CSparseMatrix::COUT(const char *pszSeparator) {
    int r = 0;
    for (row *pRow = m_pFirstRow; pRow != NULL; pRow = pRow->m_pNext, r++) {
        for (; r < pRow->m_nRow; r++)
            std::cout << 0 << pszSeparator << std::endl;
        int c = 0;
        for (cell *pCell = pRow->m_pFirstCell; pCell != NULL; pCell = pCell->m_pNext) {
            for (; c < pCell->m_nCol; c++)
                std::cout << 0 << pszSeparator;
            std::cout << pCell->m_dValue << pszSeparator;
            c = pCell->m_nCol + 1;
        }
        std::cout << std::endl;
    }
}
