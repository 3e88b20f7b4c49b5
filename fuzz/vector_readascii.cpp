// Reads arbitrary bytes as a vector after a few bytes have been stepped over: the vector
// must hold every number of the rest, which a loop of the number reader counts again.
#include "femmat.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

static void Check(bool bOk) {
    if (!bOk)
        abort();
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size == 0)
        return 0;
    size_t nSkip = data[0] % size;
    CMemFile file(data, (UINT)size);
    file.Seek((LONG)nSkip, CFile::begin);
    CVector v(3, true, 1.0);
    v.ReadASCII(&file);
    Check(file.GetPosition() >= nSkip && file.GetPosition() <= size);
    Check((v.m_nSize == 0) == (v.m_pVector == NULL));

    // count again, line by line, with the public number reader
    int nCount = 0;
    std::string rest((const char *)data + nSkip, size - nSkip);
    size_t nFrom = 0;
    while (nFrom < rest.size()) {
        size_t nEol = rest.find('\n', nFrom);
        if (nEol == std::string::npos)
            nEol = rest.size();
        std::string line = rest.substr(nFrom, nEol - nFrom);
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        nFrom = nEol + 1;
        CString strLine(line), strToken;
        int nPos = 0;
        for (;;) {
            CVirtMat::ReadNumber(nPos, strLine, strToken);
            if (strToken.IsEmpty())
                break;
            Check(nCount < v.m_nSize);
            double d = v.m_pVector[nCount], dExpected = strtod(strToken, NULL);
            Check(d == dExpected || (d != d && dExpected != dExpected));
            nCount++;
        }
    }
    Check(nCount == v.m_nSize);
    return 0;
}
