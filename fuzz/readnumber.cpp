// Reads arbitrary bytes as one line of numbers, and expands the symbols from an arbitrary
// search index: every token must be a run of number characters, each call must move on,
// the loop must end, and an expansion can only grow a line by its replacements. The
// readers' own loop, which skips searches that can't change the line, must give the same
// tokens and the same line.
#include "femmat.h"
#include "textio/textlines.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

static void Check(bool bOk) {
    if (!bOk)
        abort();
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size == 0)
        return 0;
    std::string text((const char *)data + 1, size - 1);
    int nLength = (int)text.size();
    // every word is at least one byte and becomes at most 17
    int nMaxLength = 17 * nLength + 1;

    // the readers' loop over the whole line
    CString strLine(text), strToken;
    CString strReaderLine(text);
    textio_detail::CLineNumbers numbers(strReaderLine);
    int nPos = 0, nTokens = 0;
    for (;;) {
        int nBefore = nPos;
        CVirtMat::ReadNumber(nPos, strLine, strToken);
        Check(strLine.GetLength() <= nMaxLength);
        bool bMore = numbers.Next();
        Check(bMore == !strToken.IsEmpty());
        Check(!bMore || numbers.Value() == strtod(strToken, NULL) ||
              numbers.Value() != numbers.Value());
        Check(strReaderLine == strLine);
        if (strToken.IsEmpty()) {
            Check(nPos == (nBefore < strLine.GetLength() ? strLine.GetLength() : nBefore));
            break;
        }
        Check(nPos > nBefore && nPos <= strLine.GetLength());
        for (char c : strToken.str())
            Check(c != 0 && strchr("0123456789+-.eE", c) != NULL);
        (void)strtod(strToken, NULL);
        Check(++nTokens <= nMaxLength);
    }
    // at the end of the line a further call finds nothing and changes nothing
    CString strAfter = strLine;
    int nEnd = nPos;
    CVirtMat::ReadNumber(nPos, strLine, strToken);
    Check(strToken.IsEmpty() && nPos == nEnd && strLine == strAfter);

    // each expansion by itself, from an index that may lie behind the end
    int nStart = data[0] % (nLength + 3);
    CString strPi(text), strIs(text), strG(text);
    CVirtMat::ReplacePI(strPi, nStart);
    CVirtMat::ReplaceIs(strIs, nStart);
    CVirtMat::ReplaceGravity(strG, nStart);
    // text before the search index is never changed
    int nKeep = nStart < nLength ? nStart : nLength;
    for (const CString *p : {&strPi, &strIs, &strG}) {
        Check(p->GetLength() <= nMaxLength);
        Check(p->str().compare(0, (size_t)(nKeep > 0 ? nKeep - 1 : 0), text, 0,
                               (size_t)(nKeep > 0 ? nKeep - 1 : 0)) == 0);
    }
    return 0;
}
