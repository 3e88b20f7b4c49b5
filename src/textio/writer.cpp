// Shared text writer pieces.
#include "textio/writer_internal.h"

#include <cstdarg>
#include <cstdio>
#include <vector>

void WriteField(CFile *pFile, const char *pszFormat, ...) {
    char szSmall[256];
    va_list args;
    va_start(args, pszFormat);
    int nLength = vsnprintf(szSmall, sizeof szSmall, pszFormat, args);
    va_end(args);
    if (nLength < 0)
        return;
    if (nLength < (int)sizeof szSmall) {
        pFile->Write(szSmall, (UINT)nLength);
        return;
    }
    // A wide field or a long prefix: format again into a buffer that fits.
    std::vector<char> text(nLength + 1);
    va_start(args, pszFormat);
    vsnprintf(text.data(), text.size(), pszFormat, args);
    va_end(args);
    pFile->Write(text.data(), (UINT)nLength);
}

void WriteValueField(CFile *pFile, int nForm, const CString &strPrefix, const CString &strSuffix,
                     int nWidth, int nPrecision, double dValue) {
    const char *p = strPrefix, *s = strSuffix;
    if (nForm == textFixed)
        WriteField(pFile, "%s%*.*f%s", p, nWidth, nPrecision, dValue, s);
    else if (nForm == textExponent)
        WriteField(pFile, "%s%*.*e%s", p, nWidth, nPrecision, dValue, s);
    else
        WriteField(pFile, "%s%*g%s", p, nWidth, dValue, s);
}

void WriteZeroField(CFile *pFile, const CString &strPrefix, const CString &strSuffix, int nWidth) {
    WriteField(pFile, "%s%*.0f%s", (const char *)strPrefix, nWidth, 0.0, (const char *)strSuffix);
}

// The first field of a row with its number in front: "%*u %s<value form>%s".
static void WriteNumberedField(CFile *pFile, int nForm, const CString &strPrefix,
                               const CString &strSuffix, int nWidth, int nPrecision, unsigned nRow,
                               double dValue) {
    const char *p = strPrefix, *s = strSuffix;
    int nNumberWidth = nWidth - nPrecision;
    if (nForm == textFixed)
        WriteField(pFile, "%*u %s%*.*f%s", nNumberWidth, nRow, p, nWidth, nPrecision, dValue, s);
    else if (nForm == textExponent)
        WriteField(pFile, "%*u %s%*.*e%s", nNumberWidth, nRow, p, nWidth, nPrecision, dValue, s);
    else
        WriteField(pFile, "%*u %s%*g%s", nNumberWidth, nRow, p, nWidth, dValue, s);
}

// Writes the block; the line text doubles as the last thing written, so a block without
// rows repeats its header (or writes one line end) at the close.
void WriteDenseBlock(CFile *pFile, const CString &strPrefix, const CString &strSuffix, int nWidth,
                     int nPrecision, int nForm, bool bRowNumbers, bool bHeader, int nRows,
                     int nCols, CDenseSource &source) {
    CString strText = "\r\n";
    // Phase 1: the header, a pad over the row numbers, then the column numbers.
    if (bHeader) {
        CString strField;
        if (bRowNumbers) {
            strField.Format("%*u", nWidth - nPrecision, 0u);
            strField.TrimRight("0");
            strText += strField + "  ";
        }
        for (int j = 1; j <= nCols; j++) {
            strField.Format("%s%*u%s", (const char *)strPrefix, nWidth, (unsigned)j,
                            (const char *)strSuffix);
            strText += strField;
        }
        strText += "\r\n";
        pFile->Write((const char *)strText, strText.GetLength());
    }
    // Phase 2: the rows.
    if (nForm == textFixed || nForm == textExponent || nForm == textGeneral) {
        for (int i = 0; i < nRows; i++) {
            for (int j = 0; j < nCols; j++) {
                if (j == 0 && bRowNumbers)
                    WriteNumberedField(pFile, nForm, strPrefix, strSuffix, nWidth, nPrecision,
                                       (unsigned)(i + 1), source.Value(i, j));
                else
                    WriteValueField(pFile, nForm, strPrefix, strSuffix, nWidth, nPrecision,
                                    source.Value(i, j));
            }
            strText = "\r\n";
            pFile->Write((const char *)strText, strText.GetLength());
        }
    }
    // Phase 3: the close.
    pFile->Write((const char *)strText, strText.GetLength());
}
