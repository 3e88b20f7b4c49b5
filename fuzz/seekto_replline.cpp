// Searches arbitrary bytes for a tag. Input: a flag byte (search from the current
// position, which of SeekTo and SeekTo_ReplLine, the kind of comment marker), a byte for
// the start position, then the tag's line and the file. A failed search must leave the
// file at its start, a successful one behind the start, within the file, with a tag that
// the prepared line holds.
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
    if (size < 2)
        return 0;
    unsigned nFlags = data[0];
    std::string rest((const char *)data + 2, size - 2);
    size_t nEol = rest.find('\n');
    std::string tag = nEol == std::string::npos ? rest : rest.substr(0, nEol);
    std::string text = nEol == std::string::npos ? std::string() : rest.substr(nEol + 1);

    bool bFromCurrent = (nFlags & 1) != 0;
    CMemFile file(text.data(), (UINT)text.size());
    ULONG nStart = text.empty() ? 0 : data[1] % (text.size() + 1);
    file.Seek((LONG)nStart, CFile::begin);
    if (!bFromCurrent)
        nStart = 0;

    CString strComment;
    CString *pstrComment = NULL;
    switch ((nFlags >> 2) & 3) {
    case 1:
        pstrComment = &strComment; // empty: every line is cut to nothing
        break;
    case 2:
        strComment = ";";
        pstrComment = &strComment;
        break;
    case 3:
        strComment = CString(tag.substr(0, 1));
        pstrComment = &strComment;
        break;
    }

    CString strTag(tag);
    bool bFound = (nFlags & 2) ? SeekTo_ReplLine(strTag, file, pstrComment, bFromCurrent)
                               : SeekTo(strTag, file, pstrComment, bFromCurrent);
    ULONG nPos = file.GetPosition();
    if (!bFound) {
        Check(nPos == nStart);
    } else {
        Check(nPos > nStart && nPos <= file.GetLength());
        if (nFlags & 2) {
            CString strUpper(tag);
            strUpper.MakeUpper();
            Check(strTag.Find(strUpper) >= 0);
        }
    }
    return 0;
}
