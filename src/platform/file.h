// CFile and CMemFile: binary files by name or in memory. The text readers, writers,
// archives and the reorderers' diagnostic script go through these.
#pragma once

#include "platform/cstring.h"
#include "platform/exceptions.h"
#include "platform/types.h"

#include <vector>

class CFile {
public:
    enum OpenFlags {
        modeRead = 0,
        modeWrite = 1,
        modeReadWrite = 2,
        shareExclusive = 0x10,
        modeCreate = 0x1000,
        modeNoTruncate = 0x2000,
        typeBinary = 0x8000
    };
    enum SeekPosition { begin = 0, current = 1, end = 2 };

    CFile();
    // Opens or throws CFileException.
    CFile(const char *pszFileName, UINT nOpenFlags);
    // Closes a file left open.
    virtual ~CFile();
    CFile(const CFile &) = delete;
    CFile &operator=(const CFile &) = delete;

    // Non-zero on success. Every open takes an advisory lock without waiting:
    // exclusive for shareExclusive, shared otherwise; a refused open leaves the file as
    // it was (modeCreate truncates only once the lock is held). A directory is refused.
    // A file this object still had open is closed first.
    virtual BOOL Open(const char *pszFileName, UINT nOpenFlags, CFileException *pError = NULL);
    virtual void Close();
    // Bytes actually read; fewer than asked only at the end. Errors throw CFileException.
    virtual UINT Read(void *lpBuf, UINT nCount);
    // Writes all bytes or throws CFileException.
    virtual void Write(const void *lpBuf, UINT nCount);
    // New position from the start; a position before the start throws CFileException.
    virtual ULONG Seek(LONG lOff, UINT nFrom);
    void SeekToBegin() { Seek(0, begin); }
    ULONG SeekToEnd() { return Seek(0, end); }
    virtual ULONG GetPosition() const;
    virtual ULONG GetLength() const;
    virtual void Flush() {}

    bool IsOpen() const { return m_hFile >= 0; }
    const CString &GetFilePath() const { return m_strFileName; }

protected:
    int m_hFile = -1;
    CString m_strFileName;
};

// A CFile over a growable memory buffer; tests and hosts use it instead of temporary files.
class CMemFile : public CFile {
public:
    CMemFile() = default;
    // Starts with a copy of the given bytes, positioned at the start.
    CMemFile(const void *pData, UINT nSize);

    BOOL Open(const char *, UINT, CFileException * = NULL) override { return FALSE; }
    void Close() override {}
    UINT Read(void *lpBuf, UINT nCount) override;
    void Write(const void *lpBuf, UINT nCount) override;
    ULONG Seek(LONG lOff, UINT nFrom) override;
    ULONG GetPosition() const override { return (ULONG)m_nPos; }
    ULONG GetLength() const override { return (ULONG)m_data.size(); }

    // The bytes written so far, and a way to hand new ones in (position back to 0).
    const std::vector<BYTE> &GetData() const { return m_data; }
    void SetData(const void *pData, UINT nSize);

private:
    std::vector<BYTE> m_data;
    size_t m_nPos = 0;
};
