// CArchive: buffering, raw bytes, text lines and object records.
#include "platform/archive.h"

#include <climits>
#include <string>

namespace {
const WORD wNullTag = 0;
const WORD wNewClassTag = 0xFFFF;
const WORD wClassTag = 0x8000;
const WORD wBigObjectTag = 0x7FFF;
const DWORD dwBigClassTag = 0x80000000;
const UINT nMinBufSize = 8; // the largest primitive must fit
} // namespace

CArchive::CArchive(CFile *pFile, UINT nMode, int nBufSize, void *lpBuf)
    : m_pFile(pFile), m_nMode(nMode) {
    if (lpBuf != NULL) {
        m_pBufStart = (BYTE *)lpBuf;
        m_nBufSize = (UINT)nBufSize;
    } else {
        m_nBufSize = nBufSize < (int)nMinBufSize ? nMinBufSize : (UINT)nBufSize;
        m_ownBuf.resize(m_nBufSize);
        m_pBufStart = m_ownBuf.data();
    }
    // Storing fills the buffer up to its end; loading starts with nothing unread.
    m_pBufCur = m_pBufStart;
    m_pBufMax = IsStoring() ? m_pBufStart + m_nBufSize : m_pBufStart;
    m_loadMap.push_back({NULL, NULL});
}

CArchive::~CArchive() {
    try {
        Close();
    } catch (...) {
    }
}

void CArchive::CheckOpen() const {
    if (m_pFile == NULL)
        throw CArchiveException(CArchiveException::generic);
}

void CArchive::Close() {
    if (m_pFile == NULL)
        return;
    Flush();
    m_pFile = NULL;
    // Any use after this reaches Flush or FillBuffer, which refuse it.
    m_pBufCur = m_pBufMax = m_pBufStart;
}

void CArchive::Flush() {
    CheckOpen();
    if (IsStoring()) {
        if (m_pBufCur > m_pBufStart)
            m_pFile->Write(m_pBufStart, (UINT)(m_pBufCur - m_pBufStart));
        m_pBufCur = m_pBufStart;
        m_pFile->Flush();
    } else {
        UINT nUnread = (UINT)(m_pBufMax - m_pBufCur);
        if (nUnread > 0)
            m_pFile->Seek(-(LONG)nUnread, CFile::current);
        m_pBufCur = m_pBufMax = m_pBufStart;
    }
}

UINT CArchive::Refill(UINT nTotal) {
    CheckOpen();
    UINT nUnread = (UINT)(m_pBufMax - m_pBufCur);
    if (m_pBufCur > m_pBufStart) {
        memmove(m_pBufStart, m_pBufCur, nUnread);
        m_pBufCur = m_pBufStart;
        m_pBufMax = m_pBufStart + nUnread;
    }
    // Read as much as fits, but stop as soon as enough is there (the file may be a pipe).
    while (nUnread < nTotal && nUnread < m_nBufSize) {
        UINT n = m_pFile->Read(m_pBufMax, m_nBufSize - nUnread);
        if (n == 0)
            break;
        nUnread += n;
        m_pBufMax += n;
    }
    return nUnread;
}

void CArchive::FillBuffer(UINT nBytesNeeded) {
    if (!IsLoading())
        throw CArchiveException(CArchiveException::writeOnly);
    UINT nTotal = (UINT)(m_pBufMax - m_pBufCur) + nBytesNeeded;
    if (Refill(nTotal) < nTotal)
        throw CArchiveException(CArchiveException::endOfFile);
}

ULONGLONG CArchive::GetBytesLeft() const {
    if (!IsLoading())
        throw CArchiveException(CArchiveException::writeOnly);
    CheckOpen();
    ULONGLONG nBuffered = (ULONGLONG)(m_pBufMax - m_pBufCur);
    ULONG nLength, nPosition;
    try {
        nPosition = m_pFile->GetPosition();
        nLength = m_pFile->GetLength();
    } catch (CFileException &) {
        return ULLONG_MAX;
    }
    // A position past the end (after a seek) leaves nothing to read.
    return nBuffered + (nLength > nPosition ? nLength - nPosition : 0);
}

void CArchive::CheckAvailable(ULONGLONG nCount, UINT nItemSize) const {
    ULONGLONG nLeft = GetBytesLeft();
    // Divided, not multiplied: the product may not fit.
    if (nItemSize > 0 && nCount > nLeft / nItemSize)
        throw CArchiveException(CArchiveException::endOfFile);
}

UINT CArchive::Read(void *lpBuf, UINT nMax) {
    if (!IsLoading())
        throw CArchiveException(CArchiveException::writeOnly);
    BYTE *pDest = (BYTE *)lpBuf;
    UINT nDone = 0;
    while (nDone < nMax) {
        if (m_pBufCur == m_pBufMax && Refill(nMax - nDone) == 0)
            break;
        UINT n = (UINT)(m_pBufMax - m_pBufCur);
        if (n > nMax - nDone)
            n = nMax - nDone;
        memcpy(pDest + nDone, m_pBufCur, n);
        m_pBufCur += n;
        nDone += n;
    }
    return nDone;
}

void CArchive::Write(const void *lpBuf, UINT nMax) {
    if (!IsStoring())
        throw CArchiveException(CArchiveException::readOnly);
    const BYTE *pSrc = (const BYTE *)lpBuf;
    while (nMax > 0) {
        if (m_pBufCur == m_pBufMax)
            Flush();
        UINT n = (UINT)(m_pBufMax - m_pBufCur);
        if (n > nMax)
            n = nMax;
        memcpy(m_pBufCur, pSrc, n);
        m_pBufCur += n;
        pSrc += n;
        nMax -= n;
    }
}

BOOL CArchive::ReadString(CString &rString) {
    if (!IsLoading())
        throw CArchiveException(CArchiveException::writeOnly);
    std::string line;
    bool bAny = false;
    for (;;) {
        if (m_pBufCur == m_pBufMax && Refill(1) == 0)
            break;
        bAny = true;
        BYTE *pEnd = (BYTE *)memchr(m_pBufCur, '\n', (size_t)(m_pBufMax - m_pBufCur));
        if (pEnd != NULL) {
            line.append((const char *)m_pBufCur, (size_t)(pEnd - m_pBufCur));
            m_pBufCur = pEnd + 1;
            break;
        }
        line.append((const char *)m_pBufCur, (size_t)(m_pBufMax - m_pBufCur));
        m_pBufCur = m_pBufMax;
    }
    if (!line.empty() && line.back() == '\r')
        line.pop_back();
    rString = CString(std::move(line));
    return bAny;
}

void CArchive::WriteString(const char *psz) {
    if (psz != NULL)
        Write(psz, (UINT)strlen(psz));
}

void CArchive::WriteClass(const CRuntimeClass *pClassRef) {
    auto it = m_storeMap.find(pClassRef);
    if (it != m_storeMap.end()) {
        if (it->second < wBigObjectTag) {
            *this << (WORD)(wClassTag | it->second);
        } else {
            *this << wBigObjectTag;
            *this << (DWORD)(dwBigClassTag | it->second);
        }
        return;
    }
    WORD nLen = (WORD)strlen(pClassRef->m_lpszClassName);
    *this << wNewClassTag;
    *this << (WORD)pClassRef->m_wSchema;
    *this << nLen;
    Write(pClassRef->m_lpszClassName, nLen);
    m_storeMap[pClassRef] = m_nMapCount++;
}

void CArchive::WriteObject(const CObject *pOb) {
    if (!IsStoring())
        throw CArchiveException(CArchiveException::readOnly);
    if (pOb == NULL) {
        *this << wNullTag;
        return;
    }
    auto it = m_storeMap.find(pOb);
    if (it != m_storeMap.end()) {
        if (it->second < wBigObjectTag) {
            *this << (WORD)it->second;
        } else {
            *this << wBigObjectTag;
            *this << it->second;
        }
        return;
    }
    const CRuntimeClass *pClassRef = pOb->GetRuntimeClass();
    if (pClassRef->m_wSchema == 0xFFFF || pClassRef->m_pfnCreateObject == NULL)
        throw CArchiveException(CArchiveException::badClass);
    WriteClass(pClassRef);
    m_storeMap[pOb] = m_nMapCount++;
    const_cast<CObject *>(pOb)->Serialize(*this);
}

const CRuntimeClass *CArchive::ReadClass(WORD wTag, DWORD dwTag) {
    if (wTag != wNewClassTag) {
        // A class seen before.
        DWORD nIndex = dwTag & ~dwBigClassTag;
        if (nIndex == 0 || nIndex >= m_loadMap.size() || m_loadMap[nIndex].pClass == NULL)
            throw CArchiveException(CArchiveException::badIndex);
        return m_loadMap[nIndex].pClass;
    }
    WORD wSchema, nLen;
    *this >> wSchema >> nLen;
    CheckAvailable(nLen, 1);
    std::string name(nLen, '\0');
    if (Read(&name[0], nLen) != nLen)
        throw CArchiveException(CArchiveException::endOfFile);
    const CRuntimeClass *pClassRef = CRuntimeClass::FromName(name.c_str());
    if (pClassRef == NULL || pClassRef->m_pfnCreateObject == NULL)
        throw CArchiveException(CArchiveException::badClass);
    if (pClassRef->m_wSchema != wSchema)
        throw CArchiveException(CArchiveException::badSchema);
    m_loadMap.push_back({pClassRef, NULL});
    return pClassRef;
}

CObject *CArchive::ReadObject(const CRuntimeClass *pClassRefRequested) {
    if (!IsLoading())
        throw CArchiveException(CArchiveException::writeOnly);
    // The tag: null, an object seen before, or the class of a new object.
    WORD wTag;
    *this >> wTag;
    DWORD dwTag;
    if (wTag == wBigObjectTag)
        *this >> dwTag;
    else if (wTag == wNewClassTag)
        dwTag = dwBigClassTag;
    else
        dwTag = ((DWORD)(wTag & wClassTag) << 16) | (wTag & ~wClassTag);

    if (!(dwTag & dwBigClassTag)) {
        if (dwTag == 0)
            return NULL;
        if (dwTag >= m_loadMap.size() || m_loadMap[dwTag].pOb == NULL)
            throw CArchiveException(CArchiveException::badIndex);
        CObject *pOb = m_loadMap[dwTag].pOb;
        if (pClassRefRequested != NULL && !pOb->IsKindOf(pClassRefRequested))
            throw CArchiveException(CArchiveException::badClass);
        return pOb;
    }

    const CRuntimeClass *pClassRef = ReadClass(wTag, dwTag);
    if (pClassRefRequested != NULL && !pClassRef->IsDerivedFrom(pClassRefRequested))
        throw CArchiveException(CArchiveException::badClass);

    // A new object: mapped before its contents, which may refer back to it.
    CObject *pOb = pClassRef->CreateObject();
    size_t nIndex = m_loadMap.size();
    m_loadMap.push_back({NULL, pOb});
    m_nReadDepth++;
    try {
        pOb->Serialize(*this);
    } catch (...) {
        // The outermost call deletes what this load created, nested objects included.
        if (--m_nReadDepth == 0) {
            for (size_t i = m_loadMap.size(); i-- > nIndex;) {
                delete m_loadMap[i].pOb;
                m_loadMap[i].pOb = NULL;
            }
        }
        throw;
    }
    m_nReadDepth--;
    return pOb;
}
