// CVector text input: every number from the file's position to its end.
#include "dense/vector.h"
#include "textio/textlines.h"

#include <climits>

using textio_detail::CLineNumbers;
using textio_detail::CountNumbers;
using textio_detail::CTextLines;

// Lines without a number end nothing; the file then stands behind the last number's line.
void CVector::ReadASCII(CFile *pFile) {
    // pass 1: count
    ULONG nStart = pFile->GetPosition();
    long long nTotal = 0;
    CString strLine;
    {
        CTextLines lines(pFile);
        while (lines.Read(strLine))
            nTotal += CountNumbers(strLine);
        lines.Close();
    }

    // size without fill, every element will be written; go back
    bool bStore = nTotal <= INT_MAX && Allocate((int)nTotal, false, 0.0);
    if (!bStore && nTotal > 0)
        Allocate(0, false, 0.0); // nothing can be stored: empty, not a size without storage
    pFile->Seek((LONG)nStart, CFile::begin);

    // pass 2: the same numbers, in order, up to the last one
    CTextLines lines(pFile);
    long long nDone = 0;
    while (nDone < nTotal && lines.Read(strLine)) {
        CLineNumbers numbers(strLine);
        while (nDone < nTotal && numbers.Next()) {
            if (bStore)
                m_pVector[nDone] = numbers.Value();
            nDone++;
        }
    }
    lines.Close();
}
