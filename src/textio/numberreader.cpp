// The number reader and its symbols: pi, the unit vectors and gravity become numbers in
// the line's text before the next number is looked for.
#include "frame/virtmat.h"
#include "textio/textlines.h"

#include <cstdlib>
#include <string>

namespace {

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}
bool IsSign(char c) {
    return c == '+' || c == '-';
}
bool IsDecimalMark(char c) {
    return c == '.' || c == ',';
}
bool IsExponent(char c) {
    return c == 'E' || c == 'e';
}
// The start and end of the line count as well; callers test those by index.
bool IsBoundary(char c) {
    return c == '-' || c == ' ' || c == '\t';
}

// One symbol's written forms, in search order, all of one length, and its replacement;
// pszNegated, if given, replaces the word together with a "-" in front of it.
struct Symbol {
    const char *pszForms[3];
    int nLength;
    const char *pszPlain;
    const char *pszNegated;
};

// pi as "%.15f" prints it
const Symbol symPi = {{"PI", "Pi", "pi"}, 2, "3.141592653589793", NULL};
const Symbol symI1 = {{"I1", "i1", NULL}, 2, "1 0 0", NULL};
const Symbol symI2 = {{"I2", "i2", NULL}, 2, "0 1 0", "0 -1 0"};
const Symbol symI3 = {{"I3", "i3", NULL}, 2, "0 0 1", "0 0 -1"};
const Symbol symG = {{"G", "g", NULL}, 1, "9.81", NULL};

// Expands the words of one symbol found at or behind the search index nIndex, which only
// grows. The first form in the order that occurs at all wins each pass, wherever it stands.
void Expand(CString &strLine, int &nIndex, const Symbol &sym) {
    for (;;) {
        int i = -1;
        for (int f = 0; f < 3 && sym.pszForms[f] != NULL && i < 0; f++)
            i = strLine.Find(sym.pszForms[f], nIndex);
        if (i < 0)
            return;
        nIndex = i + 1;

        // A word needs a boundary on both sides; the whole line counts as left neighbour.
        const std::string &s = strLine.str();
        size_t nRight = (size_t)i + (size_t)sym.nLength;
        if (nRight < s.size() && !IsBoundary(s[nRight]))
            continue;
        if (i > 0 && !IsBoundary(s[i - 1]))
            continue;

        size_t nLeft = (size_t)i;
        const char *pszNumber = sym.pszPlain;
        if (sym.pszNegated != NULL && i > 0 && s[i - 1] == '-') {
            nLeft--; // the sign goes into the replacement
            pszNumber = sym.pszNegated;
        }
        std::string t;
        t.reserve(s.size() + 8);
        t.append(s, 0, nLeft);
        t += pszNumber;
        t.append(s, nRight, std::string::npos);
        strLine = CString(std::move(t));
    }
}

// The index of the last word of any symbol with boundaries on both sides, or -1. Only
// such a word can be replaced, and a replacement never makes one (it starts and ends with
// a digit and holds no letter), so a call whose index lies behind it changes nothing.
int LastWord(const CString &strLine) {
    const std::string &s = strLine.str();
    int nLength = (int)s.size();
    for (int i = nLength - 1; i >= 0; i--) {
        int nWord = 0;
        char c = s[i];
        if (c == 'G' || c == 'g') {
            nWord = 1;
        } else if (i + 1 < nLength) {
            char d = s[i + 1];
            if ((c == 'P' && (d == 'I' || d == 'i')) || (c == 'p' && d == 'i') ||
                ((c == 'I' || c == 'i') && d >= '1' && d <= '3'))
                nWord = 2;
        }
        if (nWord > 0 && (i + nWord == nLength || IsBoundary(s[i + nWord])) &&
            (i == 0 || IsBoundary(s[i - 1])))
            return i;
    }
    return -1;
}

} // namespace

void CVirtMat::ReplacePI(CString &strLine, int nStart) {
    if (strLine.IsEmpty())
        return;
    Expand(strLine, nStart, symPi);
}

// Three loops, one per vector; the search index carries over from one to the next.
void CVirtMat::ReplaceIs(CString &strLine, int nStart) {
    if (strLine.IsEmpty())
        return;
    Expand(strLine, nStart, symI1);
    Expand(strLine, nStart, symI2);
    Expand(strLine, nStart, symI3);
}

// A line that is the word alone comes out as "9.81" from the ordinary search as well.
void CVirtMat::ReplaceGravity(CString &strLine, int nStart) {
    if (strLine.IsEmpty())
        return;
    Expand(strLine, nStart, symG);
}

// Sets strToken to the next number at or behind nPos (empty: none) and nPos behind it.
void CVirtMat::ReadNumber(int &nPos, CString &strLine, CString &strToken) {
    ReplacePI(strLine, nPos);
    ReplaceIs(strLine, nPos);
    ReplaceGravity(strLine, nPos);
    textio_detail::ScanNumber(nPos, strLine, strToken);
}

namespace textio_detail {

void ScanNumber(int &nPos, const CString &strLine, CString &strToken) {
    strToken.Empty();
    const std::string &s = strLine.str();
    int nLength = (int)s.size();

    // skip to a digit, or to a sign right in front of a digit or a decimal mark
    while (nPos < nLength) {
        char c = s[nPos];
        if (IsDigit(c))
            break;
        if (IsSign(c) && nPos < nLength - 1) {
            char cNext = s[nPos + 1];
            if (IsDigit(cNext))
                break;
            if (IsDecimalMark(cNext)) {
                strToken += c;
                strToken += "0.";
                nPos += 2;
                break;
            }
        }
        nPos++;
    }

    // collect the run of number characters, in any order; strtod judges it later
    while (nPos < nLength) {
        char c = s[nPos];
        if (!IsDigit(c) && !IsSign(c) && !IsDecimalMark(c) && !IsExponent(c))
            break;
        strToken += c == ',' ? '.' : c;
        nPos++;
    }
}

CLineNumbers::CLineNumbers(CString &strLine) : m_strLine(strLine), m_nLastWord(LastWord(strLine)) {}

// A replacement always lengthens the line, so an unchanged length means no change.
bool CLineNumbers::Next() {
    if (m_nPos > m_nLastWord) {
        ScanNumber(m_nPos, m_strLine, m_strToken);
    } else {
        int nLength = m_strLine.GetLength();
        CVirtMat::ReadNumber(m_nPos, m_strLine, m_strToken);
        if (m_strLine.GetLength() != nLength)
            m_nLastWord = LastWord(m_strLine);
    }
    return !m_strToken.IsEmpty();
}

double CLineNumbers::Value() const {
    return strtod(m_strToken, NULL);
}

int CountNumbers(CString &strLine) {
    CLineNumbers numbers(strLine);
    int n = 0;
    while (numbers.Next())
        n++;
    return n;
}

} // namespace textio_detail
