// CSystSpMat: the row table, sizing from a count or from the reordered graph, and assembly.
#include "system/systspmat.h"

#include "reorder/reordermat.h"
#include "sparse/sparse_internal.h"
#include "system/patternindex_internal.h"

IMPLEMENT_SERIAL(CSystSpMat, CSparseMatrix, 1)

CSystSpMat::CSystSpMat() : m_pRowTable(NULL), m_nTableRows(0), m_pIndex(NULL) {}

CSystSpMat::CSystSpMat(int nRows) : m_pRowTable(NULL), m_nTableRows(0), m_pIndex(NULL) {
    if (nRows >= 1)
        MakeTable(nRows);
}

CSystSpMat::~CSystSpMat() {
    // The base destructor then finds an empty list and deletes nothing singly.
    FreeTable();
}

void CSystSpMat::FreeTable() {
    DropIndex();
    m_pFirstRow = NULL;
    delete[] m_pRowTable;
    m_pRowTable = NULL;
    m_nTableRows = 0;
}

sparse_detail::PatternIndex *CSystSpMat::CurrentIndex() {
    if (m_pIndex != NULL && !m_pIndex->IsCurrent(m_pCellPool))
        DropIndex();
    return m_pIndex;
}

void CSystSpMat::DropIndex() {
    delete m_pIndex;
    m_pIndex = NULL;
}

void CSystSpMat::MakeTable(int nRows) {
    m_pRowTable = new row[nRows];
    m_nTableRows = nRows;
    for (int i = 0; i < nRows; i++) {
        m_pRowTable[i].m_pFirstCell = NULL;
        m_pRowTable[i].m_nRow = i;
    }
    FixPointers();
}

void CSystSpMat::FixPointers() {
    m_pFirstRow = m_nTableRows > 0 ? m_pRowTable : NULL;
    for (int i = 0; i + 1 < m_nTableRows; i++)
        m_pRowTable[i].m_pNext = &m_pRowTable[i + 1];
    if (m_nTableRows > 0)
        m_pRowTable[m_nTableRows - 1].m_pNext = NULL;
}

// One body with GetRows, which a derived class's override of GetRows does not change.
int CSystSpMat::GetColumns() {
    return CSystSpMat::GetRows();
}

int CSystSpMat::GetRows() {
    return m_nTableRows;
}

void CSystSpMat::Clear() {
    FreeTable();
}

bool CSystSpMat::Allocate(int *pSizes, int /*nDims*/) {
    int nRows = pSizes[0];
    if (nRows < 1) {
        FreeTable();
    } else if (nRows != m_nTableRows) {
        FreeTable();
        MakeTable(nRows);
    }
    // The same size keeps every cell, fill-in included, for the next assembly.
    operator=(0.0);
    return true;
}

bool CSystSpMat::Allocate(CReorderMat &graph) {
    sparse_detail::CellScope cells(m_pCellPool);
    int n = graph.GetRows();
    if (n == 0) {
        Allocate(&n, 1);
        return true;
    }
    if (n == m_nTableRows) {
        // The pattern stays; the graph is not read.
        operator=(0.0);
        return true;
    }
    FreeTable();
    MakeTable(n);
    for (int r = 0; r < n; r++) {
        // The neighbours of the vertex with label r, turned into sorted labels in place.
        int v = graph.f_v_inv(r);
        LONG *pAdj = graph.m_ppRows[v];
        int nCount = graph.m_pRowSizes[v];
        for (int k = 0; k < nCount; k++)
            pAdj[k] = graph.f_v(pAdj[k]);
        QuickSortLongs(pAdj, nCount);

        // Lower labels belong to the lower triangle.
        int s = 0;
        while (s < nCount && pAdj[s] <= r)
            s++;

        // Diagonal first, then the higher labels.
        row &R = m_pRowTable[r];
        R.Allocate(nCount - s + 1, 0.0, 0);
        cell *c = R.m_pFirstCell;
        c->m_nCol = r;
        for (int k = s; k < nCount; k++) {
            c = c->m_pNext;
            c->m_nCol = pAdj[k];
        }
    }
    m_pIndex = new sparse_detail::PatternIndex(m_pRowTable, n, *m_pCellPool);
    return true;
}

void CSystSpMat::Add(int nRow, int nCol, double dValue) {
    sparse_detail::CellScope cells(m_pCellPool);
    if (dValue == 0.0)
        return;
    m_pRowTable[nRow].Add(nCol, dValue);
}

void CSystSpMat::Add(int nRow, int nCol, double dValue, cell *&pCell) {
    sparse_detail::CellScope cells(m_pCellPool);
    if (dValue == 0.0)
        return;
    m_pRowTable[nRow].Add(nCol, dValue, pCell);
}

void CSystSpMat::Add(int nRow, int nCol, double dValue, row *&pRow) {
    sparse_detail::CellScope cells(m_pCellPool);
    if (dValue == 0.0)
        return;
    pRow = &m_pRowTable[nRow];
    pRow->Add(nCol, dValue);
}

void CSystSpMat::Add(int nRow, int nCol, double dValue, row *&pRow, cell *&pCell) {
    sparse_detail::CellScope cells(m_pCellPool);
    if (dValue == 0.0)
        return;
    pRow = &m_pRowTable[nRow];
    pRow->Add(nCol, dValue, pCell);
}

// Sums the element into its cells: found through the pattern index where it can tell,
// else by one cursor walk along the row per element row, a missing cell made in its place.
void CSystSpMat::AddValues(LONG *pDOFs, double *pValues, int n) {
    FEMMAT_CHECK_ELEMENT("CSystSpMat::AddValues", pDOFs, n, m_nTableRows);
    sparse_detail::CellScope cells(m_pCellPool);
    if (n < 1)
        return;
    // Elements are small: their order lives on the stack.
    int pSmall[64];
    int *pOrder = n <= 64 ? pSmall : new int[n];
    int m = sparse_detail::SelectAscending(pDOFs, n, pOrder);
    const sparse_detail::PatternIndex *pIndex = CurrentIndex();
    if (pIndex != NULL)
        for (int a = 0; a < m; a++)
            pIndex->Prefetch(pDOFs[pOrder[a]]);

    // Each row of the element takes its columns in ascending order.
    const bool bSym = CVirtMat::m_bSym;
    for (int a = 0; a < m; a++) {
        int i = pOrder[a];
        const int r = pDOFs[i];
        row &R = m_pRowTable[r];
        cell *pCursor = NULL;
        LONG k = 0;
        const double *pElemRow = pValues + (size_t)i * n;
        for (int b = 0; b < m; b++) {
            int j = pOrder[b];
            const int nCol = pDOFs[j];
            if (bSym && nCol < r)
                continue;
            double dValue = pElemRow[j];
            if (dValue == 0.0)
                continue;
            cell *c = pIndex != NULL ? pIndex->Find(r, nCol, k) : NULL;
            if (c != NULL)
                c->m_dValue += dValue;
            else
                R.Add(nCol, dValue, pCursor);
        }
    }
    if (pOrder != pSmall)
        delete[] pOrder;
}

CSystSpMat &CSystSpMat::operator=(CSystSpMat &other) {
    // The base sums through the virtual Add, which here goes to this object's table.
    CSparseMatrix::operator=(other);
    return *this;
}
