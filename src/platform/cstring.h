// CString: the counted single-byte string of the original platform, on std::string.
// Only what the library and its hosts use: text readers, writers and reports.
#pragma once

#include <string>

class CString {
public:
    CString() = default;
    CString(const char *psz) : m_str(psz ? psz : "") {}
    CString(const std::string &s) : m_str(s) {}
    CString(std::string &&s) : m_str(std::move(s)) {}
    CString(char ch, int nRepeat = 1) : m_str(nRepeat > 0 ? nRepeat : 0, ch) {}

    CString &operator=(const char *psz) {
        m_str = psz ? psz : "";
        return *this;
    }
    CString &operator=(char ch) {
        m_str.assign(1, ch);
        return *this;
    }
    CString &operator+=(const CString &s) {
        m_str += s.m_str;
        return *this;
    }
    CString &operator+=(const char *psz) {
        if (psz)
            m_str += psz;
        return *this;
    }
    CString &operator+=(char ch) {
        m_str += ch;
        return *this;
    }

    operator const char *() const { return m_str.c_str(); }
    const std::string &str() const { return m_str; }

    int GetLength() const { return (int)m_str.size(); }
    bool IsEmpty() const { return m_str.empty(); }
    void Empty() { m_str.clear(); }
    char GetAt(int nIndex) const { return m_str[nIndex]; }
    char operator[](int nIndex) const { return m_str[nIndex]; }
    void SetAt(int nIndex, char ch) { m_str[nIndex] = ch; }

    // Replaces the contents with the printf-style result, of any length.
    void Format(const char *pszFormat, ...) __attribute__((format(printf, 2, 3)));

    // Index of the first occurrence at or after nStart; -1 if none, or if nStart is negative
    // or past the end.
    int Find(char ch, int nStart = 0) const;
    int Find(const char *pszSub, int nStart = 0) const;

    // Counts and positions are clamped to the string.
    CString Left(int nCount) const;
    CString Right(int nCount) const;
    CString Mid(int nFirst) const;
    CString Mid(int nFirst, int nCount) const;

    void MakeUpper();
    void MakeLower();
    // White space, or the given characters, are removed at that end.
    void TrimLeft();
    void TrimLeft(const char *pszTargets);
    void TrimRight();
    void TrimRight(const char *pszTargets);

    friend bool operator==(const CString &a, const CString &b) { return a.m_str == b.m_str; }
    friend bool operator==(const CString &a, const char *b) { return a.m_str == (b ? b : ""); }
    friend bool operator!=(const CString &a, const CString &b) { return !(a == b); }
    friend bool operator!=(const CString &a, const char *b) { return !(a == b); }
    // Without these the conversion to const char * would compare or offset pointers.
    friend bool operator==(const char *a, const CString &b) { return b == a; }
    friend bool operator!=(const char *a, const CString &b) { return !(b == a); }
    friend CString operator+(const CString &a, char ch) { return CString(a.m_str + ch); }
    friend CString operator+(char ch, const CString &b) { return CString(ch + b.m_str); }
    friend CString operator+(const CString &a, const CString &b) {
        return CString(a.m_str + b.m_str);
    }
    friend CString operator+(const CString &a, const char *b) {
        return CString(a.m_str + (b ? b : ""));
    }
    friend CString operator+(const char *a, const CString &b) {
        return CString((a ? a : "") + b.m_str);
    }

private:
    std::string m_str;
};
