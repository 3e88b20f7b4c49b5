// CArchive: a buffered binary stream over a CFile, with the platform's object records
// (class name, schema, back references) so that objects can be stored and re-created.
// Numbers are little-endian with no padding; a value may straddle the buffer's end.
#pragma once

#include "platform/cstring.h"
#include "platform/exceptions.h"
#include "platform/file.h"
#include "platform/object.h"

#include <cstring>
#include <map>
#include <vector>

class CArchive {
public:
    enum Mode { store = 0, load = 1 };

    CArchive(CFile *pFile, UINT nMode, int nBufSize = 4096, void *lpBuf = NULL);
    // Closes if still open; never throws.
    ~CArchive();
    CArchive(const CArchive &) = delete;
    CArchive &operator=(const CArchive &) = delete;

    BOOL IsLoading() const { return m_nMode == load; }
    BOOL IsStoring() const { return m_nMode == store; }
    CFile *GetFile() const { return m_pFile; }

    // Storing: writes what is buffered. Loading: gives back what was read ahead.
    // Either way the file stays open and the archive is done.
    void Close();
    // Storing: writes the buffer to the file.
    void Flush();
    // Loading: makes at least nBytesNeeded bytes available, or throws endOfFile.
    void FillBuffer(UINT nBytesNeeded);

    UINT Read(void *lpBuf, UINT nMax);
    void Write(const void *lpBuf, UINT nMax);
    // The next line without its line end; false only at the end with nothing read.
    BOOL ReadString(CString &rString);
    void WriteString(const char *psz);

    void WriteObject(const CObject *pOb);
    // Reads an object record; throws CArchiveException on bad data.
    CObject *ReadObject(const CRuntimeClass *pClassRefRequested);

    CArchive &operator<<(BYTE v) { return Put(&v, sizeof v); }
    CArchive &operator<<(WORD v) { return Put(&v, sizeof v); }
    CArchive &operator<<(LONG v) { return Put(&v, sizeof v); }
    CArchive &operator<<(DWORD v) { return Put(&v, sizeof v); }
    CArchive &operator<<(float v) { return Put(&v, sizeof v); }
    CArchive &operator<<(double v) { return Put(&v, sizeof v); }
    CArchive &operator<<(UINT v) { return Put(&v, sizeof v); }
    CArchive &operator>>(BYTE &v) { return Get(&v, sizeof v); }
    CArchive &operator>>(WORD &v) { return Get(&v, sizeof v); }
    CArchive &operator>>(LONG &v) { return Get(&v, sizeof v); }
    CArchive &operator>>(DWORD &v) { return Get(&v, sizeof v); }
    CArchive &operator>>(float &v) { return Get(&v, sizeof v); }
    CArchive &operator>>(double &v) { return Get(&v, sizeof v); }
    CArchive &operator>>(UINT &v) { return Get(&v, sizeof v); }

private:
    // The platform is little-endian, so values are copied as they lie in memory.
    CArchive &Put(const void *p, UINT n) {
        if (m_pBufCur + n > m_pBufMax)
            Flush();
        memcpy(m_pBufCur, p, n);
        m_pBufCur += n;
        return *this;
    }
    CArchive &Get(void *p, UINT n) {
        if (m_pBufCur + n > m_pBufMax)
            FillBuffer(n - (UINT)(m_pBufMax - m_pBufCur));
        memcpy(p, m_pBufCur, n);
        m_pBufCur += n;
        return *this;
    }
    // Loads more bytes behind those not yet handed out; returns how many are available.
    UINT Refill(UINT nBytesNeeded);
    void WriteClass(const CRuntimeClass *pClassRef);

    CFile *m_pFile;
    UINT m_nMode;
    bool m_bClosed = false;
    std::vector<BYTE> m_ownBuf;
    BYTE *m_pBufStart;
    BYTE *m_pBufCur;
    BYTE *m_pBufMax;
    UINT m_nBufSize;

    // Object records: indices from 1 shared by classes and objects; 0 is null.
    std::map<const void *, DWORD> m_storeMap;
    std::vector<const void *> m_loadMap; // index -> record or object
    std::vector<bool> m_loadIsClass;
};

inline CArchive &operator<<(CArchive &ar, const CObject *pOb) {
    ar.WriteObject(pOb);
    return ar;
}
