// CString: the operations that need more than one line.
#include "platform/cstring.h"

#include <cctype>
#include <cstdarg>
#include <cstdio>
#include <cstring>

void CString::Format(const char *pszFormat, ...) {
    // First try a stack buffer; a longer result is formatted again into one of its size.
    char buf[256];
    va_list args;
    va_start(args, pszFormat);
    va_list args2;
    va_copy(args2, args);
    int n = vsnprintf(buf, sizeof buf, pszFormat, args);
    va_end(args);
    if (n < 0) {
        m_str.clear();
    } else if ((size_t)n < sizeof buf) {
        m_str.assign(buf, (size_t)n);
    } else {
        std::string s((size_t)n, '\0');
        vsnprintf(&s[0], (size_t)n + 1, pszFormat, args2);
        m_str.swap(s);
    }
    va_end(args2);
}

int CString::Find(char ch, int nStart) const {
    if (nStart < 0 || nStart >= GetLength())
        return -1;
    size_t pos = m_str.find(ch, (size_t)nStart);
    return pos == std::string::npos ? -1 : (int)pos;
}

int CString::Find(const char *pszSub, int nStart) const {
    if (pszSub == NULL || nStart < 0 || nStart > GetLength())
        return -1;
    size_t pos = m_str.find(pszSub, (size_t)nStart);
    return pos == std::string::npos ? -1 : (int)pos;
}

CString CString::Left(int nCount) const {
    if (nCount < 0)
        nCount = 0;
    return CString(m_str.substr(0, (size_t)nCount));
}

CString CString::Right(int nCount) const {
    if (nCount < 0)
        nCount = 0;
    if (nCount >= GetLength())
        return *this;
    return CString(m_str.substr(m_str.size() - (size_t)nCount));
}

CString CString::Mid(int nFirst) const {
    return Mid(nFirst, GetLength());
}

CString CString::Mid(int nFirst, int nCount) const {
    if (nFirst < 0)
        nFirst = 0;
    if (nCount < 0 || nFirst >= GetLength())
        return CString();
    return CString(m_str.substr((size_t)nFirst, (size_t)nCount));
}

void CString::MakeUpper() {
    for (char &c : m_str)
        c = (char)toupper((unsigned char)c);
}

void CString::MakeLower() {
    for (char &c : m_str)
        c = (char)tolower((unsigned char)c);
}

static bool IsSpace(char c) {
    return isspace((unsigned char)c) != 0;
}

void CString::TrimLeft() {
    size_t i = 0;
    while (i < m_str.size() && IsSpace(m_str[i]))
        i++;
    m_str.erase(0, i);
}

void CString::TrimLeft(const char *pszTargets) {
    if (pszTargets == NULL)
        return;
    size_t i = 0;
    while (i < m_str.size() && strchr(pszTargets, m_str[i]) != NULL && m_str[i] != '\0')
        i++;
    m_str.erase(0, i);
}

void CString::TrimRight() {
    size_t n = m_str.size();
    while (n > 0 && IsSpace(m_str[n - 1]))
        n--;
    m_str.resize(n);
}

void CString::TrimRight(const char *pszTargets) {
    if (pszTargets == NULL)
        return;
    size_t n = m_str.size();
    while (n > 0 && m_str[n - 1] != '\0' && strchr(pszTargets, m_str[n - 1]) != NULL)
        n--;
    m_str.resize(n);
}
