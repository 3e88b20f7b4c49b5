// CObjVect and CObjMat: vectors and matrices of pointers to objects of any CObject class,
// for hosts that keep mixed objects together and archive them in one go. No matrix class
// uses them.
//
// Ownership has two layers: a container owns its array of pointers, never the objects.
// The destructor, Allocate, assignment and Serialize delete no object; only DeleteEntries
// does, once per distinct object however many entries hold it. Entries may be NULL.
//
// Choices made here:
// - DeleteEntries finds the distinct objects in one pass (a hash set) instead of clearing
//   the lower duplicates of each entry: the same objects are deleted, in the same order
//   (each at its highest index, from the top down), but every entry is already NULL when
//   the first destructor runs.
// - A count read from an archive is checked against the bytes the archive can still
//   deliver (each entry takes at least two bytes) before the array is made.
// - Copying is not offered: it would give two owners of one array.
#pragma once

#include "platform/afx.h"

class CObjVect : public CObject {
    DECLARE_SERIAL(CObjVect)
public:
    CObjVect();
    ~CObjVect() override;
    CObjVect(const CObjVect &) = delete;
    CObjVect &operator=(const CObjVect &) = delete;

    // Entries as CArchive::WriteObject records; loading reads each with no expected class.
    void Serialize(CArchive &ar) override;

    // An array of the same size stays with its entries; another size makes a new one
    // (none for nSize 0 or below). With bInit every entry becomes pValue.
    void Allocate(int nSize, bool bInit, CObject *pValue);
    CObject *&operator[](int i) { return m_ppObjects[i]; }
    CObjVect &operator=(CObject *pValue);
    // Deletes each distinct object once; all entries end NULL, the array stays.
    void DeleteEntries();

    int m_nSize;
    CObject **m_ppObjects; // owned, new[]; NULL when empty
};

class CObjMat : public CObject {
    DECLARE_SERIAL(CObjMat)
public:
    CObjMat();
    ~CObjMat() override;
    CObjMat(const CObjMat &) = delete;
    CObjMat &operator=(const CObjMat &) = delete;

    // Columns first, then rows, then the entries' records in flat order.
    void Serialize(CArchive &ar) override;
    // Sizes as the other form, then fills with new objects of pClass, from the last index
    // down; a class that cannot be created gives NULL entries. Old entries are not deleted.
    virtual void Allocate(int nRows, int nColumns, CRuntimeClass *pClass);

    // An array of the same count stays, with its entries in flat order; none unless both
    // counts are above 0. With bInit every entry becomes pValue.
    void Allocate(int nRows, int nColumns, bool bInit, CObject *pValue);
    CObject **operator[](int r) { return m_ppObjects + r * m_nColumns; }
    CObjMat &operator=(CObject *pValue);
    void DeleteEntries();

    int m_nRows;
    int m_nColumns;
    CObject **m_ppObjects; // owned, new[], row-major; NULL when empty

private:
    // Entries in the array: 0 without one, whatever the counts say after a refused load.
    int Count() const { return m_ppObjects ? m_nRows * m_nColumns : 0; }
};
