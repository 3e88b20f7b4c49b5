// The platform's exceptions. The library throws none of its own; file and archive
// failures arrive as these, thrown by value and caught by reference.
#pragma once

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
