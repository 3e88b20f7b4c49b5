// The pieces every text writer shares: one formatted field per CFile::Write, the number
// forms, and the dense block that CMatrix and CLongMatrix write alike.
#pragma once

#include "platform/cstring.h"
#include "platform/file.h"

// Number forms of the writers.
enum TextForm { textFixed = 0, textExponent = 1, textGeneral = 2 };

// Formats one field and writes it, without a terminator.
void WriteField(CFile *pFile, const char *pszFormat, ...) __attribute__((format(printf, 2, 3)));

// A plain value field "%s%*.*f%s" (fixed), "%s%*.*e%s" (exponent) or "%s%*g%s" (general).
void WriteValueField(CFile *pFile, int nForm, const CString &strPrefix, const CString &strSuffix,
                     int nWidth, int nPrecision, double dValue);

// The field of a position that holds no value: "%s%*.0f%s" of 0.0.
void WriteZeroField(CFile *pFile, const CString &strPrefix, const CString &strSuffix, int nWidth);

// Values of a dense block, read one at a time.
class CDenseSource {
public:
    virtual ~CDenseSource() = default;
    virtual double Value(int i, int j) = 0;
};

// The dense block: an optional header (an empty line, then the column numbers), one line a
// row in the given form (nForm outside the three forms writes no rows), an optional row
// number in front of each row, and the closing write of whatever the line text still holds.
void WriteDenseBlock(CFile *pFile, const CString &strPrefix, const CString &strSuffix, int nWidth,
                     int nPrecision, int nForm, bool bRowNumbers, bool bHeader, int nRows,
                     int nCols, CDenseSource &source);
