// CArchive: a buffered binary stream over a CFile, with the platform's object records
// (class name, schema, back references) so that objects can be stored and re-created.
// Numbers are little-endian with no padding; a value may straddle the buffer's end.
//
// Object records: indices count from 1 (0 is null) and are shared by classes and objects.
//   null object        WORD 0
//   object seen before WORD index, or WORD 0x7FFF then DWORD index from 0x7FFF on
//   new object         its class, then the object takes the next index and Serialize runs
//   class seen before  WORD 0x8000 | index, or WORD 0x7FFF then DWORD 0x80000000 | index
//   new class          WORD 0xFFFF, WORD schema, WORD name length, the name's bytes;
//                      it takes the next index
// When loading fails inside ReadObject, every object that call created (the failing one and
// all it had read so far, nested containers included) is deleted before the exception
// leaves it: none of them has reached the caller, so nothing leaks and nothing the caller
// holds is touched.
#pragma once

#include "platform/cstring.h"
#include "platform/exceptions.h"
#include "platform/file.h"
#include "platform/object.h"

#include <cstring>
#include <map>
#include <vector>

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "archives copy numbers as they lie");

class CArchive {
public:
    enum Mode { store = 0, load = 1 };

    // Uses lpBuf of nBufSize bytes if given, else a buffer of its own (at least 8 bytes).
    CArchive(CFile *pFile, UINT nMode, int nBufSize = 4096, void *lpBuf = NULL);
    // Closes if still open; never throws.
    ~CArchive();
    CArchive(const CArchive &) = delete;
    CArchive &operator=(const CArchive &) = delete;

    BOOL IsLoading() const { return m_nMode == load; }
    BOOL IsStoring() const { return m_nMode == store; }
    CFile *GetFile() const { return m_pFile; }

    // Storing: writes what is buffered. Loading: gives back what was read ahead, so the
    // file stands right behind the last byte handed out. Either way the file stays open
    // and the archive is done.
    void Close();
    // Storing: writes the buffer to the file. Loading: gives back what was read ahead.
    void Flush();
    // Loading: makes nBytesNeeded bytes available beyond those still unread in the
    // buffer, or throws endOfFile.
    void FillBuffer(UINT nBytesNeeded);
    // Loading: bytes read ahead from the file and not yet handed out, so that a reader
    // knows where the file stands behind what it took.
    UINT GetReadAhead() const { return (UINT)(m_pBufMax - m_pBufCur); }

    // Loading: how many bytes the archive can still hand out: those it has read ahead plus
    // what its file holds behind the file's position. A file that cannot tell its position
    // (a pipe) is unbounded: the result is then ULLONG_MAX.
    ULONGLONG GetBytesLeft() const;
    // Loading: throws endOfFile unless nCount items of nItemSize bytes each can still be
    // read. Every loader that reads a count from the archive calls this before it
    // allocates for the count, so that a damaged count costs an exception, not memory:
    // no load allocates more than the archive can deliver.
    void CheckAvailable(ULONGLONG nCount, UINT nItemSize) const;

    // Up to nMax raw bytes; fewer only at the end of the file.
    UINT Read(void *lpBuf, UINT nMax);
    void Write(const void *lpBuf, UINT nMax);
    // The next line without its line end (LF or CR LF); false only at the end with nothing read.
    BOOL ReadString(CString &rString);
    // Writes the text as it is, adding no line end.
    void WriteString(const char *psz);

    // Throws badClass for an object whose class cannot be archived (schema 0xFFFF).
    void WriteObject(const CObject *pOb);
    // Reads an object record; pClassRefRequested NULL accepts any class. Throws
    // CArchiveException: badClass (unknown class, or not derived from the one requested),
    // badSchema, badIndex, endOfFile.
    CObject *ReadObject(const CRuntimeClass *pClassRefRequested);

    CArchive &operator<<(BYTE v) { return Put(&v, sizeof v); }
    CArchive &operator<<(WORD v) { return Put(&v, sizeof v); }
    CArchive &operator<<(LONG v) { return Put(&v, sizeof v); }
    CArchive &operator<<(DWORD v) { return Put(&v, sizeof v); } // also UINT
    CArchive &operator<<(float v) { return Put(&v, sizeof v); }
    CArchive &operator<<(double v) { return Put(&v, sizeof v); }
    CArchive &operator>>(BYTE &v) { return Get(&v, sizeof v); }
    CArchive &operator>>(WORD &v) { return Get(&v, sizeof v); }
    CArchive &operator>>(LONG &v) { return Get(&v, sizeof v); }
    CArchive &operator>>(DWORD &v) { return Get(&v, sizeof v); }
    CArchive &operator>>(float &v) { return Get(&v, sizeof v); }
    CArchive &operator>>(double &v) { return Get(&v, sizeof v); }

private:
    // The platform is little-endian, so values are copied as they lie in memory.
    CArchive &Put(const void *p, UINT n) {
        if (m_nMode != store)
            throw CArchiveException(CArchiveException::readOnly);
        if (n > (UINT)(m_pBufMax - m_pBufCur))
            Flush();
        memcpy(m_pBufCur, p, n);
        m_pBufCur += n;
        return *this;
    }
    CArchive &Get(void *p, UINT n) {
        if (m_nMode != load)
            throw CArchiveException(CArchiveException::writeOnly);
        if (n > (UINT)(m_pBufMax - m_pBufCur))
            FillBuffer(n - (UINT)(m_pBufMax - m_pBufCur));
        memcpy(p, m_pBufCur, n);
        m_pBufCur += n;
        return *this;
    }
    // Moves the unread bytes to the front and reads behind them until nTotal bytes are
    // unread or the file ends; returns how many are unread.
    UINT Refill(UINT nTotal);
    void WriteClass(const CRuntimeClass *pClassRef);
    // The class of a new object record, after its tag has been read.
    const CRuntimeClass *ReadClass(WORD wTag, DWORD dwTag);
    void CheckOpen() const;

    CFile *m_pFile; // NULL once closed
    UINT m_nMode;
    std::vector<BYTE> m_ownBuf;
    BYTE *m_pBufStart;
    BYTE *m_pBufCur;
    BYTE *m_pBufMax;
    UINT m_nBufSize;

    // Storing: record (class or object) -> index.
    std::map<const void *, DWORD> m_storeMap;
    DWORD m_nMapCount = 1;
    // Loading: index -> class or object; entry 0 stands for null.
    struct LoadEntry {
        const CRuntimeClass *pClass;
        CObject *pOb;
    };
    std::vector<LoadEntry> m_loadMap;
    // Loading: how deep ReadObject calls are nested.
    int m_nReadDepth = 0;
};

inline CArchive &operator<<(CArchive &ar, const CObject *pOb) {
    ar.WriteObject(pOb);
    return ar;
}
