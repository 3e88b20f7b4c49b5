// CLongVector and CLongMatrix: owned flat arrays of 32-bit integers for index lists,
// connectivity tables and the like, with a fill, a shift and linear search. They stand
// beside the road for hosts; no matrix class uses them. They derive from CObject, not from
// CVirtMat, and go into archives and text like the real-valued classes.
//
// Unlike CVector, Allocate always makes a new array (old elements are lost, also for the
// same size), and a request for no elements returns false with a properly empty object.
//
// Choices made here:
// - Assigning an object to itself changes nothing (the described free-then-copy would read
//   freed storage). Copy construction copies.
// - The "%li" fields of the integer writers print the 32-bit element with "%i": the same
//   text, since the element is the platform's 32-bit long.
// - A count read from an archive is checked against the bytes the archive can still
//   deliver before anything is allocated; a forged count throws endOfFile.
#pragma once

#include "platform/afx.h"

class CLongVector : public CObject {
    DECLARE_SERIAL(CLongVector)
public:
    CLongVector();
    CLongVector(const CLongVector &other);
    ~CLongVector() override;

    void Serialize(CArchive &ar) override;
    // --- virtual operations, in table order ---
    // Horizontal: an optional line of element numbers, then the elements on one line.
    // Vertical: a line per element, optionally numbered from 1. An empty vertical vector
    // writes nothing.
    virtual void WriteASCII(CFile *pFile, CString strPrefix, CString strSuffix, int nWidth,
                            bool bNumbers, bool bHorizontal);
    // This vector as groups back to back, group g from starts[g] up to starts[g + 1]; a line
    // per group, an optional header of positions and optional group numbers.
    virtual void WriteASCII(CFile *pFile, CString strPrefix, CString strSuffix, int nWidth,
                            CLongVector &starts, bool bHeader, bool bNumbers);
    // pSizes: size, initialise flag, fill value; left out: initialise with 0.
    virtual bool Allocate(int *pSizes, int nDims);
    virtual CLongVector &operator=(LONG nValue);
    virtual CLongVector &operator+=(LONG nValue);

    // A new array of nSize elements (none for nSize 0 or below: false), filled with bInit.
    bool Allocate(int nSize, bool bInit, LONG nValue);
    int GetSize() const { return m_nSize; }
    LONG *GetVector() const { return m_pVector; }
    LONG &operator[](int i) { return m_pVector[i]; }
    // The lowest index holding nValue, or -1.
    int Find(LONG nValue) const;
    CLongVector &operator=(const CLongVector &other);

    int m_nSize;
    LONG *m_pVector; // owned, new[]; NULL when m_nSize is 0 or below
};

class CLongMatrix : public CObject {
    DECLARE_SERIAL(CLongMatrix)
public:
    CLongMatrix();
    CLongMatrix(const CLongMatrix &other);
    ~CLongMatrix() override;

    void Serialize(CArchive &ar) override;
    // --- virtual operations, in table order ---
    // out becomes a column of m_nRows + 1 row starts: entry i is i * m_nColumns + nBase.
    virtual void GetPointerMat(CLongMatrix &out, int nBase);
    // pSizes: rows, columns, initialise flag, fill value; as CMatrix's.
    virtual bool Allocate(int *pSizes, int nDims);
    virtual LONG &GetValue(int r, int c);
    // The dense block of CMatrix's writer, fixed or (bScientific) exponent, each integer
    // written as a double.
    virtual void WriteASCII(CFile *pFile, CString strPrefix, CString strSuffix, int nWidth,
                            int nPrecision, bool bScientific, bool bRowNumbers, bool bHeader);
    virtual CLongMatrix &operator=(LONG nValue);
    virtual CLongMatrix &operator+=(LONG nValue);

    // A new array of nRows * nColumns elements (none unless both are above 0: false).
    bool Allocate(int nRows, int nColumns, bool bInit, LONG nValue);
    int GetRows() const { return m_nRows; }
    int GetColumns() const { return m_nColumns; }
    LONG *GetVector() const { return m_pVector; }
    LONG *operator[](int r) { return m_pVector + r * m_nColumns; }
    // The first row from nStartRow down whose element in column nCol is nValue, or -1.
    int FindInCol(int nCol, LONG nValue) const { return FindInCol(nCol, nValue, 0); }
    int FindInCol(int nCol, LONG nValue, int nStartRow) const;
    // The first column of row nRow holding nValue, or -1.
    int FindInRow(int nRow, LONG nValue) const;
    CLongMatrix &operator=(const CLongMatrix &other);

    int m_nRows;
    int m_nColumns;
    LONG *m_pVector; // owned, new[], row-major; NULL unless both counts are above 0

private:
    // Elements in the array: 0 without one, whatever the counts say after a refused load.
    int Count() const { return m_pVector ? m_nRows * m_nColumns : 0; }
};
