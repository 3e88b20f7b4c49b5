// CSparseMatrix operations on the matrix as a whole: imposing one prescribed degree of
// freedom, A A^T, the symmetry test and the flat copy for the array-based solver.
#include "dense/matrix.h"
#include "dense/vector.h"
#include "sparse/sparse_internal.h"
#include "sparse/sparsematrix.h"

using namespace sparse_detail;

void CSparseMatrix::UnifyAndZero(int nRow) {
    FEMMAT_CHECK_INDEX("CSparseMatrix::UnifyAndZero", "row", nRow, -1);
    UnifyRow(nRow, 0.0, NULL);
}

void CSparseMatrix::UnifyAndZero(int nRow, double dValue, CVirtMat *pB) {
    FEMMAT_CHECK_INDEX("CSparseMatrix::UnifyAndZero", "row", nRow, -1);
    FEMMAT_CHECK_OPTIONAL_RHS("CSparseMatrix::UnifyAndZero", pB, std::max(nRow + 1, GetRows()));
    UnifyRow(nRow, dValue, pB);
}

// Row nRow becomes the lone diagonal 1.0 and column nRow leaves every other row; with pB,
// B[nRow] takes dValue and each removed cell's contribution moves into its row of B.
void CSparseMatrix::UnifyRow(int nRow, double dValue, CVirtMat *pB) {
    sparse_detail::CellScope cells(m_pCellPool);
    CMatrix *B = static_cast<CMatrix *>(pB);
    int nc = B != NULL ? B->GetColumns() : 0;
    if (nc > 0) {
        double *bRow = (*B)[nRow];
        for (int k = 0; k < nc; k++)
            bRow[k] = dValue;
    }

    // in front of the first row, or on an empty matrix, the row goes in at the head
    if (m_pFirstRow == NULL || m_pFirstRow->m_nRow > nRow)
        m_pFirstRow = NewRow(nRow, m_pFirstRow);

    row *pPrev = NULL;
    for (row *r = m_pFirstRow; r != NULL; pPrev = r, r = r->m_pNext) {
        if (r->m_nRow == nRow) {
            r->Clear();
            r->m_pFirstCell = NewCell(NULL, 1.0, nRow);
            continue;
        }
        if (r->m_nRow > nRow && pPrev != NULL && pPrev->m_nRow < nRow) {
            // row nRow is missing here: link it in front of r
            pPrev->m_pNext = NewRow(nRow, r);
            pPrev->m_pNext->m_pFirstCell = NewCell(NULL, 1.0, nRow);
        }
        cell *pCell = r->Remove(nRow);
        if (pCell == NULL)
            continue;
        if (nc > 0) {
            double *bRow = (*B)[r->m_nRow];
            for (int k = 0; k < nc; k++)
                bRow[k] -= dValue * pCell->m_dValue;
        }
        delete pCell;
    }
    if (pPrev->m_nRow < nRow) {
        pPrev->m_pNext = NewRow(nRow, NULL);
        pPrev->m_pNext->m_pFirstCell = NewCell(NULL, 1.0, nRow);
    }
}

// Replaces A by A A^T, all pairs of rows; sums of exactly 0.0 get no cell.
void CSparseMatrix::AAT() {
    sparse_detail::CellScope cells(m_pCellPool);
    CSparseMatrix product;
    row *pRowCursor = NULL;
    for (row *a = m_pFirstRow; a != NULL; a = a->m_pNext) {
        cell *pCellCursor = NULL;
        for (row *b = m_pFirstRow; b != NULL; b = b->m_pNext) {
            double s = 0.0;
            cell *pa = a->m_pFirstCell;
            cell *pb = b->m_pFirstCell;
            while (pa != NULL && pb != NULL) {
                if (pa->m_nCol == pb->m_nCol) {
                    s += pb->m_dValue * pa->m_dValue;
                    pa = pa->m_pNext;
                    pb = pb->m_pNext;
                } else if (pa->m_nCol < pb->m_nCol) {
                    pa = pa->m_pNext;
                } else {
                    pb = pb->m_pNext;
                }
            }
            if (s != 0.0)
                product.Add(a->m_nRow, b->m_nRow, s, pRowCursor, pCellCursor);
        }
    }
    row *pOld = m_pFirstRow;
    m_pFirstRow = product.m_pFirstRow;
    product.m_pFirstRow = pOld;
}

// Exact comparison of every position (i, j), j above i, with (j, i). A stored 0.0 without
// a mirror passes below the diagonal and fails above it.
bool CSparseMatrix::IsSym() {
    int n = GetRows();
    if (n == 0)
        return true;
    // Per row index: the row, and a cursor into it that only moves forward as i grows.
    row **pRowOf = new row *[n];
    cell **pCursor = new cell *[n];
    for (int j = 0; j < n; j++)
        pRowOf[j] = NULL;
    for (row *r = m_pFirstRow; r != NULL; r = r->m_pNext) {
        pRowOf[r->m_nRow] = r;
        pCursor[r->m_nRow] = r->m_pFirstCell;
    }

    bool bSym = true;
    for (row *r = m_pFirstRow; r != NULL && bSym; r = r->m_pNext) {
        int i = r->m_nRow;
        cell *c = r->m_pFirstCell;
        for (int j = i + 1; j < n; j++) {
            while (c != NULL && c->m_nCol < j)
                c = c->m_pNext;
            // the mirror (j, i), if row j and that cell exist
            cell *pMirror = NULL;
            if (pRowOf[j] != NULL) {
                cell *&m = pCursor[j];
                while (m != NULL && m->m_nCol < i)
                    m = m->m_pNext;
                if (m != NULL && m->m_nCol == i)
                    pMirror = m;
            }
            if (c != NULL && c->m_nCol == j) {
                if (pMirror == NULL || pMirror->m_dValue != c->m_dValue) {
                    bSym = false;
                    break;
                }
            } else if (pMirror != NULL && pMirror->m_dValue != 0.0) {
                bSym = false;
                break;
            }
        }
    }
    delete[] pCursor;
    delete[] pRowOf;
    return bSym;
}

// Copies the lists into flat arrays for the array-based solver; a row holding the lone
// value 1.0 (a prescribed degree of freedom) contributes nothing. Yields the entry count.
int CSparseMatrix::MakeArrayMat(double *&pValues, int *&pCounts, int *&pColumns, int nRows) {
    pCounts = new int[nRows];
    int nTotal = 0;
    for (row *r = m_pFirstRow; r != NULL; r = r->m_pNext) {
        int nCount = r->NonZeros();
        if (nCount == 1 && r->m_pFirstCell->m_dValue == 1.0)
            nCount = 0;
        pCounts[r->m_nRow] = nCount;
        nTotal += nCount;
    }
    pValues = new double[nTotal];
    pColumns = new int[nTotal];
    int e = 0;
    for (row *r = m_pFirstRow; r != NULL; r = r->m_pNext) {
        cell *c = r->m_pFirstCell;
        for (int q = 0; q < pCounts[r->m_nRow]; q++, c = c->m_pNext) {
            pValues[e] = c->m_dValue;
            pColumns[e] = c->m_nCol;
            e++;
        }
    }
    return nTotal;
}

void CSparseMatrix::MinDegReorder(CVector &) {
    GetRows();
}
