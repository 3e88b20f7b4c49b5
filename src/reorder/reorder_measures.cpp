// CReorderMat: the measures of a numbering (envelope, bandwidth), the label inverse, and the
// two text outputs: the diagnostic script for Matlab and the plot table.
#include "reorder/reordermat.h"

#include <cstdio>
#include <string>

// The one path of the script; a function-level static so that it stands before first use.
static CString &ScriptName() {
    static CString s_strName("Reord.m");
    return s_strName;
}

void CReorderMat::SetScriptName(const char *pszName) {
    ScriptName() = pszName;
}

const char *CReorderMat::GetScriptName() {
    return ScriptName();
}

bool CReorderMat::OpenScript(CFile &file) {
    UINT nFlags = CFile::modeCreate | CFile::modeReadWrite | CFile::shareExclusive;
    return file.Open(ScriptName(), nFlags) != 0;
}

void CReorderMat::WriteScriptTrailer(CFile *pFile, bool bMinDeg) {
    static const char szShort[] =
        "\r\n\r\nclose all;\r\n figure;\r\n spy(before);\r\n figure;\r\n spy(after);\r\n";
    static const char szMinDeg[] =
        "\r\n\r\nclose all;\r\n figure;\r\n spy(before);\r\n figure;\r\n "
        "spy(after);\r\n r = symmmd(before);\r\nfigure;\r\n "
        "spy(before(r,r));\r\n";
    if (bMinDeg)
        pFile->Write(szMinDeg, sizeof(szMinDeg) - 1);
    else
        pFile->Write(szShort, sizeof(szShort) - 1);
}

int CReorderMat::Env(int *pBandwidth) {
    // Summed modulo 2^32, so that an envelope past the int range wraps as a 32-bit sum
    // does instead of overflowing; Env64 has the true value.
    unsigned nEnv = 0;
    int nBand = 0;
    for (int v = 0; v < m_nRows; v++) {
        int b = B_f(v);
        nEnv += (unsigned)b;
        if (b > nBand)
            nBand = b;
    }
    if (pBandwidth != NULL)
        *pBandwidth = nBand;
    return (int)nEnv;
}

long long CReorderMat::Env64(int *pBandwidth) {
    long long nEnv = 0;
    int nBand = 0;
    for (int v = 0; v < m_nRows; v++) {
        int b = B_f(v);
        nEnv += b;
        if (b > nBand)
            nBand = b;
    }
    if (pBandwidth != NULL)
        *pBandwidth = nBand;
    return nEnv;
}

int CReorderMat::GetB(int &v) {
    int nBand = 0;
    v = 0;
    for (int i = 0; i < m_nRows; i++) {
        int b = B_f(i);
        if (b > nBand) {
            nBand = b;
            v = i;
        }
    }
    return nBand;
}

void CReorderMat::PostReorder() {
    if (m_pInverse == NULL && m_nRows > 0)
        m_pInverse = new LONG[m_nRows];
    for (int v = 0; v < m_nRows; v++)
        m_pInverse[f_v(v)] = v;
}

// Appends n in decimal, as "%u" would.
static void AppendUnsigned(std::string &strOut, unsigned n) {
    char szDigits[10];
    int nLen = 0;
    do {
        szDigits[nLen++] = (char)('0' + n % 10);
        n /= 10;
    } while (n != 0);
    while (nLen > 0)
        strOut += szDigits[--nLen];
}

// Appends one line "name(r,c) = value;\r\n" of the script.
static void AppendEntry(std::string &strOut, const char *pszName, unsigned r, unsigned c,
                        unsigned nValue) {
    strOut += pszName;
    strOut += '(';
    AppendUnsigned(strOut, r);
    strOut += ',';
    AppendUnsigned(strOut, c);
    strOut += ") = ";
    AppendUnsigned(strOut, nValue);
    strOut += ";\r\n";
}

void CReorderMat::MatlabWrite(CFile *pFile, CString sName) {
    // Lines go out without a terminator, gathered into blocks of some 64 KB.
    CString strHead;
    strHead.Format("%s = sparse(%u,%u);\r\n", (const char *)sName, (unsigned)m_nRows,
                   (unsigned)m_nRows);
    pFile->Write((const char *)strHead, strHead.GetLength());

    std::string strOut;
    for (int i = 0; i < m_nRows; i++) {
        unsigned nRowPos = (unsigned)f_v(i) + 1;
        const LONG *pRow = m_ppRows[i];
        for (int j = 0; j < m_pRowSizes[i]; j++) {
            int u = pRow[j];
            AppendEntry(strOut, sName, nRowPos, (unsigned)f_v(u) + 1, (unsigned)u + 1);
        }
        AppendEntry(strOut, sName, nRowPos, nRowPos, (unsigned)i + 1);
        if (strOut.size() >= 65536) {
            pFile->Write(strOut.data(), (UINT)strOut.size());
            strOut.clear();
        }
    }
    if (!strOut.empty())
        pFile->Write(strOut.data(), (UINT)strOut.size());
}

void CReorderMat::WritePlotASCII(CFile *pFile) {
    std::string strLine;
    char szCell[16];
    for (int i = 0; i < m_nRows; i++) {
        // The vertex of label i; a label nobody holds gets no line.
        int v = 0;
        while (v < m_nRows && f_v(v) != i)
            v++;
        if (v == m_nRows)
            continue;

        strLine.clear();
        const LONG *pRow = m_ppRows[v];
        int nSize = m_pRowSizes[v];
        for (int j = 0; j < m_nRows; j++) {
            if (j == i) {
                snprintf(szCell, sizeof(szCell), "%7u", (unsigned)f_v(v) + 1);
                strLine += szCell;
                continue;
            }
            int k = 0;
            while (k < nSize && f_v(pRow[k]) != j)
                k++;
            if (k < nSize) {
                snprintf(szCell, sizeof(szCell), "%7u", (unsigned)pRow[k] + 1);
                strLine += szCell;
            } else {
                strLine += "   0";
            }
        }
        strLine += "\r\n";
        pFile->Write(strLine.data(), (UINT)strLine.size());
    }
}
