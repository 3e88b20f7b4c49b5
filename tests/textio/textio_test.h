// Helpers of the text input tests: memory files from text, the same text with LF line
// ends, line offsets, and files whose reads fail from a given byte on.
#pragma once

#include "femmat.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

typedef std::vector<double> V;

const double dPi = 3.141592653589793;

struct TextFile : CMemFile {
    explicit TextFile(const std::string &text) : CMemFile(text.data(), (UINT)text.size()) {}
};

inline std::string ToLF(std::string text) {
    std::string out;
    for (size_t i = 0; i < text.size(); i++)
        if (!(text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n'))
            out += text[i];
    return out;
}

// The offset at which line k (from 0) begins; the text's length if it has fewer lines.
inline ULONG LineStart(const std::string &text, int k) {
    size_t nPos = 0;
    for (int i = 0; i < k && nPos < text.size(); i++) {
        size_t nEol = text.find('\n', nPos);
        nPos = nEol == std::string::npos ? text.size() : nEol + 1;
    }
    return (ULONG)nPos;
}

// Runs a check on the text with CR LF line ends and on the same text with LF ends.
template <class F> void ForBothLineEnds(const std::string &crlf, F check) {
    for (const std::string &text : {crlf, ToLF(crlf)}) {
        SCOPED_TRACE(text.find('\r') == std::string::npos ? "LF" : "CR LF");
        check(text);
    }
}

inline V Flat(const CVector &v) {
    return V(v.m_pVector, v.m_pVector + v.m_nSize);
}

// A memory file whose reads throw E once its position reaches nFailAt.
template <class E> struct FailingFile : TextFile {
    FailingFile(const std::string &text, ULONG nFailAt) : TextFile(text), m_nFailAt(nFailAt) {}
    UINT Read(void *lpBuf, UINT nCount) override {
        ULONG nPos = GetPosition();
        if (nPos >= m_nFailAt)
            throw E();
        return TextFile::Read(lpBuf, nCount < m_nFailAt - nPos ? nCount : m_nFailAt - nPos);
    }
    ULONG m_nFailAt;
};
