// CObjVect and CObjMat: pointer arrays, creation by class, deletion of shared entries,
// archive stream.
#include "auxtypes/objcontainers.h"

#include <unordered_set>
#include <vector>

IMPLEMENT_SERIAL(CObjVect, CObject, 1)
IMPLEMENT_SERIAL(CObjMat, CObject, 1)

// Resizes a pointer array of nOld entries to nNew (none unless bExists); an array of the
// same count stays with its entries.
static void ResizeEntries(CObject **&ppObjects, long long nOld, long long nNew, bool bExists) {
    if (ppObjects != NULL && nOld != nNew) {
        delete[] ppObjects;
        ppObjects = NULL;
    }
    if (!bExists) {
        delete[] ppObjects;
        ppObjects = NULL;
    } else if (ppObjects == NULL) {
        ppObjects = new CObject *[nNew];
    }
}

// Deletes each distinct object of the n entries once, each at its highest index, from the
// top down; every entry ends NULL.
static void DeleteDistinct(CObject **ppObjects, long long n) {
    // Phase 1: the distinct objects in deletion order.
    std::unordered_set<CObject *> seen;
    std::vector<CObject *> order;
    for (long long i = n - 1; i >= 0; i--) {
        CObject *p = ppObjects[i];
        if (p != NULL && seen.insert(p).second)
            order.push_back(p);
        ppObjects[i] = NULL;
    }
    // Phase 2: the deletions.
    for (CObject *p : order)
        delete p;
}

// Throws endOfFile unless the archive holds n more object records: at least two bytes each.
static void CheckRecords(CArchive &ar, long long n) {
    if (n > 0)
        ar.CheckAvailable((ULONGLONG)n, 2);
}

// --- CObjVect ---

CObjVect::CObjVect() : m_nSize(0), m_ppObjects(NULL) {}

CObjVect::~CObjVect() {
    delete[] m_ppObjects;
}

void CObjVect::Allocate(int nSize, bool bInit, CObject *pValue) {
    ResizeEntries(m_ppObjects, m_nSize, nSize, nSize > 0);
    m_nSize = nSize;
    if (bInit)
        *this = pValue;
}

CObjVect &CObjVect::operator=(CObject *pValue) {
    for (int i = 0; m_ppObjects != NULL && i < m_nSize; i++)
        m_ppObjects[i] = pValue;
    return *this;
}

void CObjVect::DeleteEntries() {
    if (m_ppObjects != NULL)
        DeleteDistinct(m_ppObjects, m_nSize);
}

void CObjVect::Serialize(CArchive &ar) {
    if (ar.IsStoring()) {
        ar << (LONG)m_nSize;
        for (int i = 0; i < m_nSize; i++)
            ar.WriteObject(m_ppObjects[i]);
        return;
    }
    LONG nCount;
    ar >> nCount;
    CheckRecords(ar, nCount);
    Allocate(nCount, true, NULL);
    for (int i = 0; i < m_nSize; i++)
        m_ppObjects[i] = ar.ReadObject(NULL);
}

// --- CObjMat ---

CObjMat::CObjMat() : m_nRows(0), m_nColumns(0), m_ppObjects(NULL) {}

CObjMat::~CObjMat() {
    delete[] m_ppObjects;
}

void CObjMat::Allocate(int nRows, int nColumns, bool bInit, CObject *pValue) {
    const long long n = (long long)nRows * nColumns;
    ResizeEntries(m_ppObjects, Count(), n, nRows > 0 && nColumns > 0 && n <= 0x7FFFFFFF);
    m_nRows = nRows;
    m_nColumns = nColumns;
    if (bInit)
        *this = pValue;
}

void CObjMat::Allocate(int nRows, int nColumns, CRuntimeClass *pClass) {
    Allocate(nRows, nColumns, false, NULL);
    if (m_ppObjects == NULL)
        return;
    for (int k = nRows * nColumns - 1; k >= 0; k--)
        m_ppObjects[k] = pClass->CreateObject();
}

CObjMat &CObjMat::operator=(CObject *pValue) {
    for (int k = 0; k < Count(); k++)
        m_ppObjects[k] = pValue;
    return *this;
}

void CObjMat::DeleteEntries() {
    if (m_ppObjects != NULL)
        DeleteDistinct(m_ppObjects, Count());
}

void CObjMat::Serialize(CArchive &ar) {
    if (ar.IsStoring()) {
        ar << (LONG)m_nColumns << (LONG)m_nRows;
        for (int k = 0; k < Count(); k++)
            ar.WriteObject(m_ppObjects[k]);
        return;
    }
    LONG nColumns, nRows;
    ar >> nColumns >> nRows;
    if (nRows > 0 && nColumns > 0)
        CheckRecords(ar, (long long)nRows * nColumns);
    Allocate(nRows, nColumns, true, NULL);
    for (int k = 0; k < Count(); k++)
        m_ppObjects[k] = ar.ReadObject(NULL);
}
