// CArrayArray: an array of separately sized arrays. It is the storage under the node graph
// (CReorderMat derives from CArrayArray<LONG>) and the scratch copy of the graph that the
// eliminating minimum-degree numbering works on. It stands at the very start of the road:
// graph, then numbering, pattern, assembly, prescribed values, solve.
//
// m_ppRows and m_pRowSizes are either both NULL (no row table was ever made) or both hold
// m_nRows entries, even for 0 rows. A row's capacity isn't stored: the entries in use are
// the first m_pRowSizes[i]; a row pointer may be NULL (row without storage).
//
// It has no run-time record of its own and reports CVirtMat as its class; it is never
// archived. Only the instantiation on LONG is used.
//
// Choice made here: Copy onto the object itself leaves it as it is.
#pragma once

#include "frame/virtmat.h"

#include <cstring>

template <class T> class CArrayArray : public CVirtMat {
public:
    int m_nRows = 0;
    T **m_ppRows = NULL;
    int *m_pRowSizes = NULL;

    CArrayArray() = default;
    CArrayArray(const CArrayArray &) = delete;
    CArrayArray &operator=(const CArrayArray &) = delete;
    ~CArrayArray() override { Clear(); }

    // Alloc(pSizes[0]); with nDims >= 2 and rows, every row gets pSizes[1] entries, contents
    // not set, and that count. Always true.
    bool Allocate(int *pSizes, int nDims) override {
        Alloc(pSizes[0]);
        if (nDims >= 2 && pSizes[0] >= 1) {
            for (int i = 0; i < m_nRows; i++)
                SetRowSize(i, pSizes[1]);
        }
        return true;
    }
    // A graph is neither read nor written as text.
    void ReadASCII(CFile *) override {}
    void WriteASCII(CFile *, CString, CString, int, int, int, bool, bool) override {}

    // Makes this object an exact copy of other: rows of exactly the entries in use, an empty
    // row an array of no entries (not NULL).
    virtual void Copy(const CArrayArray<T> &other) {
        if (&other == this)
            return;
        ClearRows();
        if (other.m_nRows != m_nRows) {
            FreeTables();
            AllocTables(other.m_nRows);
        }
        for (int i = 0; i < m_nRows; i++) {
            int nSize = other.m_pRowSizes[i];
            m_pRowSizes[i] = nSize;
            m_ppRows[i] = new T[nSize];
            if (nSize > 0)
                std::memcpy(m_ppRows[i], other.m_ppRows[i], sizeof(T) * nSize);
        }
    }

    // Sets the number of rows and empties every row; the same count keeps the table.
    virtual void Alloc(int nRows) {
        ClearRows();
        if (nRows == m_nRows)
            return;
        FreeTables();
        AllocTables(nRows);
    }

    // Gives row nRow an array of nSize entries, contents not set; an array of that very
    // count stays as it is.
    void SetRowSize(int nRow, int nSize) {
        if (m_ppRows[nRow] != NULL && m_pRowSizes[nRow] == nSize)
            return;
        m_pRowSizes[nRow] = nSize;
        delete[] m_ppRows[nRow];
        m_ppRows[nRow] = new T[nSize];
    }

    // Frees every row array; counts 0, pointers NULL. The table stays.
    void ClearRows() {
        for (int i = 0; i < m_nRows; i++) {
            if (m_ppRows[i] != NULL) {
                m_pRowSizes[i] = 0;
                delete[] m_ppRows[i];
                m_ppRows[i] = NULL;
            }
        }
    }

    // Frees the rows and the table; back to no rows.
    void Clear() {
        ClearRows();
        FreeTables();
        m_nRows = 0;
    }

private:
    void FreeTables() {
        delete[] m_ppRows;
        delete[] m_pRowSizes;
        m_ppRows = NULL;
        m_pRowSizes = NULL;
    }
    // Tables of nRows entries (also for 0), all counts 0 and all rows NULL.
    void AllocTables(int nRows) {
        m_nRows = nRows;
        m_ppRows = new T *[nRows];
        m_pRowSizes = new int[nRows];
        for (int i = 0; i < nRows; i++) {
            m_ppRows[i] = NULL;
            m_pRowSizes[i] = 0;
        }
    }
};
