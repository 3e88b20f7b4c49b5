// The tag search over the lines of a file.
#include "textio/tagseek.h"

#include "textio/textlines.h"

using textio_detail::CTextLines;

// The search of both functions; strTag comes back upper-cased, and when found as the
// prepared line that held it.
bool SeekTo_ReplLine(CString &strTag, CFile &file, CString *pstrComment, bool bFromCurrent) {
    // start: an empty rest of the file changes nothing
    if (!bFromCurrent)
        file.Seek(0, CFile::begin);
    ULONG nStart = file.GetPosition();
    if (nStart >= file.GetLength())
        return false;

    // search; an archive failure ends it as the end of the file would
    CTextLines lines(&file);
    bool bFound = false;
    if (pstrComment != NULL)
        pstrComment->MakeUpper();
    try {
        strTag.MakeUpper();
        CString strLine;
        while (lines.Read(strLine)) {
            strLine.TrimLeft();
            strLine.TrimRight();
            strLine.MakeUpper();
            if (pstrComment != NULL) {
                int nComment = strLine.Find(*pstrComment);
                if (nComment >= 0)
                    strLine = strLine.Left(nComment);
            }
            if (strLine.Find(strTag) >= 0) {
                strTag = strLine;
                bFound = true;
                break;
            }
        }
    } catch (CArchiveException &) {
        bFound = false;
    }

    // place: behind the tag's line, where the reader stopped, or back at the start
    lines.Close();
    if (!bFound)
        file.Seek((LONG)nStart, CFile::begin);
    return bFound;
}

bool SeekTo(CString strTag, CFile &file, CString *pstrComment, bool bFromCurrent) {
    return SeekTo_ReplLine(strTag, file, pstrComment, bFromCurrent);
}
