// CSparseMatrix cursor insertion: the Add family, element assembly and summing assignment.
// A cursor is the caller's hint where the last write landed; one standing past the target
// falls back to the head, so a wrong but harmless cursor only costs a restart.

#include "sparse/sparse_internal.h"
#include "sparse/sparsematrix.h"

using namespace sparse_detail;

// Sums dValue into column nCol, searching from pCell; pCell ends on the cell written.
void CSparseMatrix::row::Add(int nCol, double dValue, cell *&pCell) {
    if (pCell == NULL || pCell->m_nCol > nCol)
        pCell = m_pFirstCell;
    if (pCell == NULL || pCell->m_nCol > nCol) {
        m_pFirstCell = NewCell(m_pFirstCell, dValue, nCol);
        pCell = m_pFirstCell;
        return;
    }
    // pCell stands at or below nCol, so there is always a cell to link from
    for (;;) {
        if (pCell->m_nCol == nCol) {
            pCell->m_dValue += dValue;
            return;
        }
        cell *pNext = pCell->m_pNext;
        if (pNext == NULL || pNext->m_nCol > nCol) {
            pCell->m_pNext = NewCell(pNext, dValue, nCol);
            pCell = pCell->m_pNext;
            return;
        }
        pCell = pNext;
    }
}

// The row of index nRow, searched from pStart (head if NULL or past), made if missing.
CSparseMatrix::row *CSparseMatrix::FindOrMakeRow(int nRow, row *pStart) {
    if (pStart == NULL || pStart->m_nRow > nRow)
        pStart = m_pFirstRow;
    if (pStart == NULL || pStart->m_nRow > nRow) {
        m_pFirstRow = NewRow(nRow, m_pFirstRow);
        return m_pFirstRow;
    }
    row *r = pStart;
    for (;;) {
        if (r->m_nRow == nRow)
            return r;
        row *pNext = r->m_pNext;
        if (pNext == NULL || pNext->m_nRow > nRow) {
            r->m_pNext = NewRow(nRow, pNext);
            return r->m_pNext;
        }
        r = pNext;
    }
}

void CSparseMatrix::Add(int nRow, int nCol, double dValue) {
    sparse_detail::CellScope cells(m_pCellPool);
    if (dValue == 0.0)
        return;
    FindOrMakeRow(nRow, NULL)->Add(nCol, dValue);
}

void CSparseMatrix::Add(int nRow, int nCol, double dValue, cell *&pCell) {
    sparse_detail::CellScope cells(m_pCellPool);
    FindOrMakeRow(nRow, NULL)->Add(nCol, dValue, pCell);
}

void CSparseMatrix::Add(int nRow, int nCol, double dValue, row *&pRow) {
    sparse_detail::CellScope cells(m_pCellPool);
    pRow = FindOrMakeRow(nRow, pRow);
    pRow->Add(nCol, dValue);
}

void CSparseMatrix::Add(int nRow, int nCol, double dValue, row *&pRow, cell *&pCell) {
    sparse_detail::CellScope cells(m_pCellPool);
    pRow = FindOrMakeRow(nRow, pRow);
    pRow->Add(nCol, dValue, pCell);
}

// Sums the n by n row-major element matrix pValues at rows and columns pDOFs; negative
// entries take no part. The first column of each element row is written even for 0.0.
void CSparseMatrix::AddValues(LONG *pDOFs, double *pValues, int n) {
    FEMMAT_CHECK_ELEMENT("CSparseMatrix::AddValues", pDOFs, n, -1);
    sparse_detail::CellScope cells(m_pCellPool);
    if (n < 1)
        return;
    int *pOrder = new int[n];
    int m = SelectAscending(pDOFs, n, pOrder);
    if (m == 0) {
        delete[] pOrder;
        return;
    }

    // row by row with both cursors
    row *pRow = NULL;
    int j0 = pOrder[0];
    for (int p = 0; p < m; p++) {
        int i = pOrder[p];
        const double *pElemRow = pValues + (size_t)i * n;
        cell *pCell = NULL;
        Add(pDOFs[i], pDOFs[j0], pElemRow[j0], pRow, pCell);
        for (int q = 1; q < m; q++) {
            int j = pOrder[q];
            double dValue = pElemRow[j];
            if (dValue == 0.0)
                continue;
            pRow->Add(pDOFs[j], dValue, pCell);
        }
    }
    delete[] pOrder;
}

// Sums the cells of other that are not 0.0 into this matrix through the virtual Add.
CSparseMatrix &CSparseMatrix::operator=(CSparseMatrix &other) {
    sparse_detail::CellScope cells(m_pCellPool);
    row *pRow = NULL;
    for (row *r = other.m_pFirstRow; r != NULL; r = r->m_pNext) {
        cell *pCell = NULL;
        for (cell *p = r->m_pFirstCell; p != NULL; p = p->m_pNext) {
            if (p->m_dValue != 0.0)
                Add(r->m_nRow, p->m_nCol, p->m_dValue, pRow, pCell);
        }
    }
    return *this;
}
