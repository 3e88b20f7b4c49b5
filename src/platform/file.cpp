// CFile on POSIX descriptors, with an advisory lock taken at open.
#include "platform/file.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

static int CauseOf(int nErr) {
    switch (nErr) {
    case ENOENT:
        return CFileException::fileNotFound;
    case EACCES:
    case EPERM:
    case EISDIR:
    case EROFS:
        return CFileException::accessDenied;
    case ENOTDIR:
    case ENAMETOOLONG:
    case ELOOP:
        return CFileException::badPath;
    case EWOULDBLOCK:
        return CFileException::sharingViolation;
    default:
        return CFileException::generic;
    }
}

CFile::CFile() = default;

CFile::CFile(const char *pszFileName, UINT nOpenFlags) {
    CFileException e;
    if (!Open(pszFileName, nOpenFlags, &e))
        throw e;
}

CFile::~CFile() {
    if (m_hFile >= 0)
        CFile::Close();
}

// Opens without truncating, takes the lock without waiting, and only then truncates,
// so that a refused open never harms the file another holder has open.
BOOL CFile::Open(const char *pszFileName, UINT nOpenFlags, CFileException *pError) {
    if (m_hFile >= 0)
        Close();
    int nAccess = O_RDONLY;
    if ((nOpenFlags & 3) == modeWrite)
        nAccess = O_WRONLY;
    else if ((nOpenFlags & 3) == modeReadWrite)
        nAccess = O_RDWR;
    int nFlags = nAccess | O_CLOEXEC;
    if (nOpenFlags & modeCreate)
        nFlags |= O_CREAT;

    int fd = pszFileName ? open(pszFileName, nFlags, 0666) : -1;
    int nErr = pszFileName ? errno : ENOENT;
    if (fd >= 0) {
        struct stat st;
        nErr = 0;
        if (fstat(fd, &st) != 0)
            nErr = errno;
        else if (S_ISDIR(st.st_mode))
            nErr = EISDIR;
        else if (flock(fd, ((nOpenFlags & shareExclusive) ? LOCK_EX : LOCK_SH) | LOCK_NB) != 0)
            nErr = errno == EINTR ? EWOULDBLOCK : errno;
        else if ((nOpenFlags & modeCreate) && !(nOpenFlags & modeNoTruncate) &&
                 ftruncate(fd, 0) != 0)
            nErr = errno;
        if (nErr != 0) {
            close(fd);
            fd = -1;
        }
    }
    if (fd < 0) {
        if (pError) {
            pError->m_cause = CauseOf(nErr);
            pError->m_lOsError = nErr;
        }
        return FALSE;
    }
    m_hFile = fd;
    m_strFileName = pszFileName;
    return TRUE;
}

void CFile::Close() {
    if (m_hFile >= 0)
        close(m_hFile); // releases the lock
    m_hFile = -1;
    m_strFileName.Empty();
}

UINT CFile::Read(void *lpBuf, UINT nCount) {
    UINT nDone = 0;
    while (nDone < nCount) {
        ssize_t n = read(m_hFile, (char *)lpBuf + nDone, nCount - nDone);
        if (n < 0) {
            if (errno == EINTR)
                continue;
            throw CFileException(CauseOf(errno), errno);
        }
        if (n == 0)
            break;
        nDone += (UINT)n;
    }
    return nDone;
}

void CFile::Write(const void *lpBuf, UINT nCount) {
    UINT nDone = 0;
    while (nDone < nCount) {
        ssize_t n = write(m_hFile, (const char *)lpBuf + nDone, nCount - nDone);
        if (n < 0) {
            if (errno == EINTR)
                continue;
            throw CFileException(CauseOf(errno), errno);
        }
        nDone += (UINT)n;
    }
}

ULONG CFile::Seek(LONG lOff, UINT nFrom) {
    int nWhence = nFrom == end ? SEEK_END : nFrom == current ? SEEK_CUR : SEEK_SET;
    off_t pos = lseek(m_hFile, (off_t)lOff, nWhence);
    if (pos < 0)
        throw CFileException(CFileException::generic, errno);
    return (ULONG)pos;
}

ULONG CFile::GetPosition() const {
    off_t pos = lseek(m_hFile, 0, SEEK_CUR);
    if (pos < 0)
        throw CFileException(CFileException::generic, errno);
    return (ULONG)pos;
}

ULONG CFile::GetLength() const {
    struct stat st;
    if (fstat(m_hFile, &st) != 0)
        throw CFileException(CFileException::generic, errno);
    return (ULONG)st.st_size;
}
