// Helpers of the text readers: the line reader and the numbers of one line. Not part of
// the public interface.
#pragma once

#include "platform/afx.h"

namespace textio_detail {

// The lines of a file through a loading archive with a 4096-byte buffer; a line ends in
// CR LF or LF, and the line end is not part of it.
class CTextLines {
public:
    explicit CTextLines(CFile *pFile) : m_pFile(pFile), m_ar(pFile, CArchive::load, 4096) {}
    // False at the end of the file with nothing read.
    bool Read(CString &strLine) { return m_ar.ReadString(strLine) != FALSE; }
    // Where the file stands behind the last line handed out, whatever its line end.
    ULONG LineEnd() const { return m_pFile->GetPosition() - m_ar.GetReadAhead(); }
    // Detaches from the file, which then stands behind the last line handed out.
    void Close() { m_ar.Close(); }

private:
    CFile *m_pFile;
    CArchive m_ar;
};

// The skip and collect steps of the number reader, without the expansions.
void ScanNumber(int &nPos, const CString &strLine, CString &strToken);

// The numbers of one line, in order, as a loop of CVirtMat::ReadNumber gives them; the
// line is expanded in place as the loop goes.
class CLineNumbers {
public:
    explicit CLineNumbers(CString &strLine);
    // Moves to the next number; false when the line holds no further number.
    bool Next();
    // The value of the current number: what strtod reads of its token.
    double Value() const;

private:
    CString &m_strLine;
    int m_nPos = 0;
    CString m_strToken;
    int m_nLastWord; // behind it nothing can expand, so the expansion searches are skipped
};

// The count of numbers on the line (which is expanded in place).
int CountNumbers(CString &strLine);

} // namespace textio_detail
