// CSparseMatrix storage: the cell and row nodes, sizing, clearing and the plain queries.
#include "sparse/sparse_internal.h"
#include "sparse/sparsematrix.h"

using namespace sparse_detail;

IMPLEMENT_SERIAL(CSparseMatrix, CVirtRealMat, 1)

// ---------------------------------------------------------------------------------------
// cell

void CSparseMatrix::cell::Remove(cell *pCell) {
    for (cell *p = this; p->m_pNext != NULL; p = p->m_pNext) {
        if (p->m_pNext == pCell) {
            p->m_pNext = pCell->m_pNext;
            CellPool::NoteUnlink();
            return;
        }
    }
}

CSparseMatrix::cell *CSparseMatrix::cell::Remove(int nCol) {
    for (cell *p = this; p->m_pNext != NULL; p = p->m_pNext) {
        cell *pFound = p->m_pNext;
        if (pFound->m_nCol == nCol) {
            p->m_pNext = pFound->m_pNext;
            CellPool::NoteUnlink();
            return pFound;
        }
    }
    return NULL;
}

void CSparseMatrix::cell::DivideAll(double d) {
    for (cell *p = this; p != NULL; p = p->m_pNext)
        p->m_dValue /= d;
}

// ---------------------------------------------------------------------------------------
// row

CSparseMatrix::row::~row() {
    Clear();
}

void CSparseMatrix::row::Clear() {
    cell *p = m_pFirstCell;
    while (p != NULL) {
        cell *pNext = p->m_pNext;
        delete p;
        p = pNext;
    }
    m_pFirstCell = NULL;
}

// Sums dValue into column nCol; a missing cell is made in its sorted place.
void CSparseMatrix::row::Add(int nCol, double dValue) {
    cell *pFromHead = NULL;
    Add(nCol, dValue, pFromHead);
}

// Resizes to exactly nCells cells in columns nFirstCol.., all dValue, reusing cells.
void CSparseMatrix::row::Allocate(int nCells, double dValue, int nFirstCol) {
    // Cells keep their objects but change columns.
    if (m_pFirstCell != NULL)
        CellPool::NoteUnlink();
    cell **ppLink = &m_pFirstCell;
    for (int i = 0; i < nCells; i++) {
        if (*ppLink == NULL)
            *ppLink = NewCell(NULL, 0.0, 0);
        (*ppLink)->m_dValue = dValue;
        (*ppLink)->m_nCol = nFirstCol + i;
        ppLink = &(*ppLink)->m_pNext;
    }
    // free what is left over
    cell *p = *ppLink;
    *ppLink = NULL;
    while (p != NULL) {
        cell *pNext = p->m_pNext;
        delete p;
        p = pNext;
    }
}

CSparseMatrix::cell *CSparseMatrix::row::Remove(int nCol) {
    cell *p = m_pFirstCell;
    if (p == NULL)
        return NULL;
    if (p->m_nCol == nCol) {
        m_pFirstCell = p->m_pNext;
        CellPool::NoteUnlink();
        return p;
    }
    return p->Remove(nCol);
}

CSparseMatrix::cell *CSparseMatrix::row::Remove(int nRow, int nCol) {
    for (row *r = this; r != NULL; r = r->m_pNext) {
        if (r->m_nRow == nRow)
            return r->Remove(nCol);
    }
    return NULL;
}

CSparseMatrix::cell *CSparseMatrix::row::GetCell(int nCol) {
    cell *p = m_pFirstCell;
    while (p != NULL && p->m_nCol < nCol)
        p = p->m_pNext;
    return (p != NULL && p->m_nCol == nCol) ? p : NULL;
}

double *CSparseMatrix::row::GetValue(int nCol) {
    cell *p = GetCell(nCol);
    return p != NULL ? &p->m_dValue : NULL;
}

void CSparseMatrix::row::Multiply(double dFactor, int nFirstCol) {
    for (cell *p = m_pFirstCell; p != NULL; p = p->m_pNext) {
        if (p->m_nCol >= nFirstCol) {
            p->m_dValue *= dFactor;
            CVirtMat::m_Flops += 1;
        }
    }
}

// Merges dFactor times the chain from pCell into this row; pCell NULL shifts every cell.
void CSparseMatrix::row::AddRow(cell *pCell, double dFactor) {
    if (pCell == NULL) {
        for (cell *p = m_pFirstCell; p != NULL; p = p->m_pNext)
            p->m_dValue += dFactor;
        return;
    }
    // ppLink is the link in front of the row's current cell
    cell **ppLink = &m_pFirstCell;
    while (pCell != NULL) {
        cell *p = *ppLink;
        if (p == NULL || p->m_nCol > pCell->m_nCol) {
            *ppLink = NewCell(p, dFactor * pCell->m_dValue, pCell->m_nCol);
            ppLink = &(*ppLink)->m_pNext;
            pCell = pCell->m_pNext;
        } else if (p->m_nCol == pCell->m_nCol) {
            p->m_dValue += dFactor * pCell->m_dValue;
            ppLink = &p->m_pNext;
            pCell = pCell->m_pNext;
        } else {
            ppLink = &p->m_pNext;
        }
    }
}

int CSparseMatrix::row::NonZeros() {
    int nCount = 0;
    for (cell *p = m_pFirstCell; p != NULL; p = p->m_pNext)
        nCount++;
    return nCount;
}

int CSparseMatrix::row::NumZeros(double dUlps) {
    int nCount = 0;
    for (cell *p = m_pFirstCell; p != NULL; p = p->m_pNext) {
        if (ApproxEqual(p->m_dValue, 0.0, dUlps))
            nCount++;
    }
    return nCount;
}

double CSparseMatrix::row::Max() {
    double dMax = 0.0;
    for (cell *p = m_pFirstCell; p != NULL; p = p->m_pNext) {
        if (p->m_dValue > dMax)
            dMax = p->m_dValue;
    }
    return dMax;
}

// ---------------------------------------------------------------------------------------
// CSparseMatrix: construction, sizing, whole-matrix values

CSparseMatrix::CSparseMatrix() : m_nRows(0), m_nColumns(0), m_pFirstRow(NULL), m_pCellPool(NULL) {}

CSparseMatrix::~CSparseMatrix() {
    Clear();
    // Cells still linked elsewhere keep their slabs until they are freed.
    if (m_pCellPool != NULL)
        m_pCellPool->Release();
}

void CSparseMatrix::Clear() {
    row *r = m_pFirstRow;
    while (r != NULL) {
        row *pNext = r->m_pNext;
        delete r;
        r = pNext;
    }
    m_pFirstRow = NULL;
    m_nRows = 0;
    m_nColumns = 0;
}

// Makes the lists full: pSizes[0] rows of pSizes[1] cells holding pSizes[3], reusing nodes.
bool CSparseMatrix::Allocate(int *pSizes, int nDims) {
    sparse_detail::CellScope cells(m_pCellPool);
    int nRowCount = pSizes[0];
    if (nRowCount <= 0) {
        Clear();
        return true;
    }
    m_nColumns = nDims >= 2 ? pSizes[1] : 0;
    double dFill = nDims >= 4 ? (double)pSizes[3] : 0.0;
    if (m_pFirstRow == NULL)
        m_pFirstRow = NewRow(0, NULL);

    // reuse the rows there are
    row *pLast = NULL;
    row *r = m_pFirstRow;
    m_nRows = 0;
    while (r != NULL && m_nRows < nRowCount) {
        r->Allocate(m_nColumns, dFill, 0);
        r->m_nRow = m_nRows;
        pLast = r;
        r = r->m_pNext;
        m_nRows++;
    }
    // append the rows missing
    while (m_nRows < nRowCount) {
        row *pNew = NewRow(m_nRows, NULL);
        pNew->Allocate(m_nColumns, dFill, 0);
        pLast->m_pNext = pNew;
        pLast = pNew;
        m_nRows++;
    }
    // cut off the rows left over
    pLast->m_pNext = NULL;
    while (r != NULL) {
        row *pNext = r->m_pNext;
        delete r;
        r = pNext;
    }
    return true;
}

CVirtRealMat &CSparseMatrix::operator=(double d) {
    for (row *r = m_pFirstRow; r != NULL; r = r->m_pNext) {
        for (cell *p = r->m_pFirstCell; p != NULL; p = p->m_pNext)
            p->m_dValue = d;
    }
    return *this;
}

CVirtRealMat &CSparseMatrix::operator+=(double d) {
    for (row *r = m_pFirstRow; r != NULL; r = r->m_pNext) {
        for (cell *p = r->m_pFirstCell; p != NULL; p = p->m_pNext)
            p->m_dValue += d;
    }
    return *this;
}

// ---------------------------------------------------------------------------------------
// CSparseMatrix: queries

double *CSparseMatrix::GetValue(int nRow, int nCol) {
    row *r = m_pFirstRow;
    while (r != NULL && r->m_nRow < nRow)
        r = r->m_pNext;
    if (r == NULL || r->m_nRow != nRow)
        return NULL;
    return r->GetValue(nCol);
}

int CSparseMatrix::GetRows() {
    row *r = m_pFirstRow;
    if (r == NULL)
        return 0;
    while (r->m_pNext != NULL)
        r = r->m_pNext;
    return r->m_nRow + 1;
}

int CSparseMatrix::GetColumns() {
    int nColumns = 0;
    for (row *r = m_pFirstRow; r != NULL; r = r->m_pNext) {
        cell *p = r->m_pFirstCell;
        if (p == NULL)
            continue;
        while (p->m_pNext != NULL)
            p = p->m_pNext;
        if (p->m_nCol + 1 > nColumns)
            nColumns = p->m_nCol + 1;
    }
    return nColumns;
}

double CSparseMatrix::Max() {
    double dMax = 0.0;
    for (row *r = m_pFirstRow; r != NULL; r = r->m_pNext) {
        double dRowMax = r->Max();
        if (dRowMax > dMax)
            dMax = dRowMax;
    }
    return dMax;
}

int CSparseMatrix::NumZeros(double dUlps) {
    int nCount = 0;
    for (row *r = m_pFirstRow; r != NULL; r = r->m_pNext)
        nCount += r->NumZeros(dUlps);
    return nCount;
}

bool CSparseMatrix::IsUpper() {
    for (row *r = m_pFirstRow; r != NULL; r = r->m_pNext) {
        if (r->m_pFirstCell != NULL && r->m_pFirstCell->m_nCol < r->m_nRow)
            return false;
    }
    return true;
}

// True unless a cell stands right of the diagonal; times itself into *pTime on both outcomes.
bool CSparseMatrix::IsLower(double *pTime) {
    LONG nStart = StartTiming(pTime);
    bool bLower = true;
    for (row *r = m_pFirstRow; r != NULL && bLower; r = r->m_pNext) {
        for (cell *p = r->m_pFirstCell; p != NULL; p = p->m_pNext) {
            if (p->m_nCol > r->m_nRow) {
                bLower = false;
                break;
            }
        }
    }
    StopTiming(pTime, nStart);
    return bLower;
}

// ---------------------------------------------------------------------------------------
// CSparseMatrix: list edits

// Frees the leading cells of each row that stand left of the diagonal.
void CSparseMatrix::MakeUpper() {
    for (row *r = m_pFirstRow; r != NULL; r = r->m_pNext)
        FreeCellsLeftOfDiagonal(r);
}

// One body with MakeUpper, which a derived class's override of MakeUpper does not change.
void CSparseMatrix::MakeLower() {
    CSparseMatrix::MakeUpper();
}

void CSparseMatrix::ReverseRows() {
    row *pReversed = NULL;
    row *r = m_pFirstRow;
    while (r != NULL) {
        row *pNext = r->m_pNext;
        r->m_pNext = pReversed;
        pReversed = r;
        r = pNext;
    }
    m_pFirstRow = pReversed;
}
