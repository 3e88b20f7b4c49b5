// CMemFile: a CFile whose bytes live in a vector.
#include "platform/file.h"

#include <cstring>

CMemFile::CMemFile(const void *pData, UINT nSize) {
    SetData(pData, nSize);
}

void CMemFile::SetData(const void *pData, UINT nSize) {
    m_data.assign((const BYTE *)pData, (const BYTE *)pData + nSize);
    m_nPos = 0;
}

UINT CMemFile::Read(void *lpBuf, UINT nCount) {
    if (m_nPos >= m_data.size())
        return 0;
    size_t n = m_data.size() - m_nPos;
    if (n > nCount)
        n = nCount;
    memcpy(lpBuf, m_data.data() + m_nPos, n);
    m_nPos += n;
    return (UINT)n;
}

// Writing past the end fills the gap with zeros, as a file does.
void CMemFile::Write(const void *lpBuf, UINT nCount) {
    if (nCount == 0)
        return;
    if (m_nPos + nCount > m_data.size())
        m_data.resize(m_nPos + nCount);
    memcpy(m_data.data() + m_nPos, lpBuf, nCount);
    m_nPos += nCount;
}

ULONG CMemFile::Seek(LONG lOff, UINT nFrom) {
    long long base = nFrom == end       ? (long long)m_data.size()
                     : nFrom == current ? (long long)m_nPos
                                        : 0;
    long long pos = base + lOff;
    if (pos < 0)
        throw CFileException(CFileException::generic);
    m_nPos = (size_t)pos;
    return (ULONG)m_nPos;
}
