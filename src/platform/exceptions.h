// The platform's exceptions. The library throws none of its own; file and archive
// failures arrive as these, thrown by value and caught by reference.
#pragma once

#include <cstring>
#include <string>

class CException {
public:
    virtual ~CException() = default;
};

class CFileException : public CException {
public:
    enum { none, generic, fileNotFound, badPath, accessDenied, sharingViolation, endOfFile };
    explicit CFileException(int cause = none, int osError = 0)
        : m_cause(cause), m_lOsError(osError) {}
    int m_cause;
    int m_lOsError; // errno of the failing call
};

class CArchiveException : public CException {
public:
    enum { none, generic, readOnly, endOfFile, writeOnly, badIndex, badClass, badSchema };
    explicit CArchiveException(int cause = none) : m_cause(cause) {}
    int m_cause;
};

// A call that breaks the limits the library trusts its caller to keep: an index out of
// range, a right-hand side too small, a number twice in one element. Only the checked build
// (FEMMAT_CHECKED) throws it; the message names the call and the offending value.
class CInvalidArgException : public CException {
public:
    explicit CInvalidArgException(std::string message) : m_strMessage(std::move(message)) {}
    // Copies the message, cut to nMaxError bytes with the terminator; TRUE.
    int GetErrorMessage(char *lpszError, unsigned nMaxError, unsigned * = nullptr) const {
        if (nMaxError > 0) {
            strncpy(lpszError, m_strMessage.c_str(), nMaxError - 1);
            lpszError[nMaxError - 1] = '\0';
        }
        return 1;
    }
    const char *GetMessage() const { return m_strMessage.c_str(); }

private:
    std::string m_strMessage;
};
