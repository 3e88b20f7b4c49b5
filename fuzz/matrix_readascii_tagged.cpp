// Reads arbitrary bytes as tagged matrix blocks. Input: the begin tag, the end tag and the
// comment marker on the first three lines, then the file, read by successive calls in
// file order. A call that finds no block must change nothing; one that does must leave a
// matrix whose shape and buffer agree, with the file moved on.
#include "femmat.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

static void Check(bool bOk) {
    if (!bOk)
        abort();
}

// The next line of s from nFrom, moving nFrom behind it.
static std::string TakeLine(const std::string &s, size_t &nFrom) {
    size_t nEol = s.find('\n', nFrom);
    if (nEol == std::string::npos)
        nEol = s.size();
    std::string line = s.substr(nFrom < s.size() ? nFrom : s.size(), nEol - nFrom);
    nFrom = nEol < s.size() ? nEol + 1 : s.size();
    return line;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    std::string input((const char *)data, size);
    size_t nFrom = 0;
    CString strBegin(TakeLine(input, nFrom));
    CString strEnd(TakeLine(input, nFrom));
    CString strComment(TakeLine(input, nFrom));
    CMemFile file(input.data() + nFrom, (UINT)(input.size() - nFrom));

    CMatrix m(1, 3, true, 7.0);
    for (int nBlock = 0; nBlock < 6; nBlock++) {
        ULONG nBefore = file.GetPosition();
        int nOldSize = m.m_nSize;
        double *pOld = m.m_pVector;
        m.ReadASCII(&file, strBegin, strEnd, strComment);
        ULONG nAfter = file.GetPosition();
        if (nAfter == nBefore) {
            // not found: the matrix is untouched
            Check(m.m_nSize == nOldSize && m.m_pVector == pOld);
            break;
        }
        Check(nAfter > nBefore && nAfter <= file.GetLength());
        Check(m.m_nSize == m.m_nRows * m.GetColumns());
        Check((m.m_nSize == 0) == (m.m_pVector == NULL));
    }
    return 0;
}
