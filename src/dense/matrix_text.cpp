// CMatrix text input: a plain block of rows, and a tagged block with comments and nested
// blocks. Both size the matrix in a first pass over the lines and store in a second.
#include "dense/matrix.h"
#include "textio/tagseek.h"
#include "textio/textlines.h"

#include <climits>

using textio_detail::CLineNumbers;
using textio_detail::CountNumbers;
using textio_detail::CTextLines;

namespace {

// Sizes the matrix zero-filled for a read. False when there is nothing to store into:
// no element, or a size that can't be held, which leaves the matrix empty.
bool SizeForRead(CMatrix &m, int nRows, int nCols) {
    if ((long long)nRows * nCols <= INT_MAX && m.Allocate(nRows, nCols, true, 0.0))
        return true;
    m.Allocate(0, 0, true, 0.0); // empty, not a size without storage
    return false;
}

// Stores the numbers of one line as row r, up to the column count.
void StoreRow(CMatrix &m, int r, int nCols, CString &strLine) {
    CLineNumbers numbers(strLine);
    for (int k = 0; k < nCols && numbers.Next(); k++)
        m.SetValue(r, k, numbers.Value());
}

// The lines of a tagged block, handed out as rows. Lines are upper-cased, cut at the
// comment marker and trimmed; blank ones are passed over, and so is a nested block: a
// line that begins with the begin tag's first character, up to the next non-blank line
// that holds the end tag. The block ends at a line holding the end tag, or at the end of
// the file.
class CTaggedBlock {
public:
    CTaggedBlock(CFile *pFile, const CString &strBegin, const CString &strEnd,
                 const CString &strComment)
        : m_lines(pFile), m_strBegin(strBegin), m_strEnd(strEnd), m_strComment(strComment),
          m_nEnd(pFile->GetPosition()) {}

    // The next row of the block; false at its end.
    bool NextRow(CString &strRow) {
        for (;;) {
            if (!ReadPrepared(strRow))
                return false;
            if (strRow.IsEmpty())
                continue;
            if (!m_strEnd.IsEmpty() && strRow.Find(m_strEnd) >= 0)
                return false;
            if (!m_strBegin.IsEmpty() && strRow[0] == m_strBegin[0]) {
                // an empty end tag is in every line: the nested block ends at the next one
                CString strNested;
                while (ReadPrepared(strNested))
                    if (!strNested.IsEmpty() && strNested.Find(m_strEnd) >= 0)
                        break;
                continue;
            }
            return true;
        }
    }
    // Behind the last line read, nested and closing lines included.
    ULONG LineEnd() const { return m_nEnd; }
    void Close() { m_lines.Close(); }

private:
    bool ReadPrepared(CString &strLine) {
        if (!m_lines.Read(strLine))
            return false;
        m_nEnd = m_lines.LineEnd();
        strLine.MakeUpper();
        if (!m_strComment.IsEmpty()) {
            int nComment = strLine.Find(m_strComment);
            if (nComment >= 0)
                strLine = strLine.Left(nComment);
        }
        strLine.TrimLeft();
        strLine.TrimRight();
        return true;
    }

    CTextLines m_lines;
    const CString &m_strBegin;
    const CString &m_strEnd;
    const CString &m_strComment;
    ULONG m_nEnd;
};

} // namespace

// Rows up to the first line without a number; that line is not consumed.
void CMatrix::ReadASCII(CFile *pFile) {
    // pass 1: count the rows and the widest of them
    ULONG nStart = pFile->GetPosition();
    int nRows = 0, nCols = 0;
    CString strLine;
    {
        CTextLines lines(pFile);
        while (lines.Read(strLine)) {
            int n = CountNumbers(strLine);
            if (n > nCols)
                nCols = n;
            if (n == 0)
                break;
            nRows++;
        }
        lines.Close();
    }

    // size, zero-filled, and go back
    bool bStore = SizeForRead(*this, nRows, nCols);
    pFile->Seek((LONG)nStart, CFile::begin);

    // pass 2: store the same rows; the file then stands behind the last of them
    CTextLines lines(pFile);
    for (int r = 0; r < nRows && lines.Read(strLine); r++)
        if (bStore)
            StoreRow(*this, r, nCols, strLine);
    lines.Close();
}

// The block behind the first line at or behind the file's position that holds strBegin.
void CMatrix::ReadASCII(CFile *pFile, CString strBegin, CString strEnd, CString strComment) {
    // find the block; without it nothing changes
    strBegin.MakeUpper();
    strEnd.MakeUpper();
    if (!strComment.IsEmpty())
        strComment.MakeUpper();
    if (!SeekTo(strBegin, *pFile, strComment.IsEmpty() ? NULL : &strComment, true))
        return;
    ULONG nStart = pFile->GetPosition();

    // pass 1: count the rows up to the end of the block or the first row without a number
    int nRows = 0, nCols = 0;
    CString strRow;
    {
        CTaggedBlock block(pFile, strBegin, strEnd, strComment);
        try {
            while (block.NextRow(strRow)) {
                int n = CountNumbers(strRow);
                if (n > nCols)
                    nCols = n;
                if (n == 0)
                    break;
                nRows++;
            }
        } catch (CArchiveException &) {
        }
        block.Close();
    }

    // size, zero-filled, and go back
    bool bStore = SizeForRead(*this, nRows, nCols);
    pFile->Seek((LONG)nStart, CFile::begin);

    // pass 2: store those rows, then read on to the end of the block to place the file
    CTaggedBlock block(pFile, strBegin, strEnd, strComment);
    try {
        for (int r = 0; block.NextRow(strRow); r++)
            if (bStore && r < nRows)
                StoreRow(*this, r, nCols, strRow);
    } catch (CArchiveException &) {
    }
    block.Close();
    pFile->Seek((LONG)block.LineEnd(), CFile::begin);
}
