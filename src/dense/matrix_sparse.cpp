// CMatrix: products with a sparse matrix and the conversions between dense and sparse.
// The sparse matrix is only walked, row list then cell list, and each cell costs one pass
// over a dense row: no dense copy of it is made.
#include "dense/matrix.h"
#include "sparse/sparsematrix.h"

typedef CSparseMatrix::row SpRow;
typedef CSparseMatrix::cell SpCell;

// pTo[0..m) += a pFrom[0..m)
static inline void AddRow(double *pTo, const double *pFrom, double a, int m) {
    for (int j = 0; j < m; j++)
        pTo[j] += a * pFrom[j];
}

// X = A X (mode 0) or (A + A^T) X (mode 1, no first-cell rule); zeros for other modes.
void CMatrix::PreMult(CSparseMatrix *A, int nMode) {
    const int n = A->GetRows(), m = GetColumns();
    CMatrix T(n, m, true, 0.0);
    if (nMode == 0 || nMode == 1) {
        for (SpRow *r = A->GetFirstRow(); r != NULL; r = r->m_pNext) {
            double *pTR = T.m_pVector + (size_t)r->m_nRow * m;
            const double *pXR = m_pVector + (size_t)r->m_nRow * m;
            for (SpCell *c = r->m_pFirstCell; c != NULL; c = c->m_pNext) {
                AddRow(pTR, m_pVector + (size_t)c->m_nCol * m, c->m_dValue, m);
                if (nMode == 1)
                    AddRow(T.m_pVector + (size_t)c->m_nCol * m, pXR, c->m_dValue, m);
            }
        }
    }
    TakeOver(T);
}

// out = A X or out += A X; mode 1 takes A as an upper triangle, diagonal first in a row.
void CMatrix::PreMult(CSparseMatrix *A, CMatrix &out, bool bAdd, int nMode) {
    const int n = A->GetRows(), m = GetColumns();
    out.Allocate(n, m, !bAdd, 0.0);
    if (nMode != 0 && nMode != 1)
        return;
    const ULONG nTwo = 2 * (ULONG)m, nFour = 4 * (ULONG)m;
    for (SpRow *r = A->GetFirstRow(); r != NULL; r = r->m_pNext) {
        double *pOutR = out.m_pVector + (size_t)r->m_nRow * m;
        const double *pXR = m_pVector + (size_t)r->m_nRow * m;
        for (SpCell *c = r->m_pFirstCell; c != NULL; c = c->m_pNext) {
            AddRow(pOutR, m_pVector + (size_t)c->m_nCol * m, c->m_dValue, m);
            if (nMode == 0 || c == r->m_pFirstCell) {
                CVirtMat::m_Flops += nTwo;
                continue;
            }
            // the cell stands for its mirror below the diagonal as well
            AddRow(out.m_pVector + (size_t)c->m_nCol * m, pXR, c->m_dValue, m);
            CVirtMat::m_Flops += nFour;
        }
    }
}

// X = A X A^T. T = (A X)^T first, then row R of A against the rows of T; sums of exactly
// 0.0 are left out (X starts at zeros), which keeps a -0.0 out of the result.
void CMatrix::ATthisA(CSparseMatrix *A) {
    const int n = A->GetRows(), m = GetColumns();
    CMatrix T(m, n, true, 0.0);
    double *s = new double[m > 0 ? m : 1];
    // Every s[j] sums over the row's cells in list order, as the single sums would.
    for (SpRow *r = A->GetFirstRow(); r != NULL; r = r->m_pNext) {
        if (r->m_pFirstCell == NULL)
            continue;
        for (int j = 0; j < m; j++)
            s[j] = 0.0;
        for (SpCell *c = r->m_pFirstCell; c != NULL; c = c->m_pNext)
            AddRow(s, m_pVector + (size_t)c->m_nCol * m, c->m_dValue, m);
        for (int j = 0; j < m; j++)
            if (s[j] != 0.0)
                T.m_pVector[(size_t)j * n + r->m_nRow] = s[j];
    }
    Allocate(n, n, true, 0.0);
    for (SpRow *r = A->GetFirstRow(); r != NULL; r = r->m_pNext) {
        if (r->m_pFirstCell == NULL)
            continue;
        for (int i = 0; i < m; i++)
            s[i] = 0.0;
        for (SpCell *c = r->m_pFirstCell; c != NULL; c = c->m_pNext)
            AddRow(s, T.m_pVector + (size_t)c->m_nCol * n, c->m_dValue, m);
        for (int i = 0; i < m; i++)
            if (s[i] != 0.0)
                SetValue(i, r->m_nRow, s[i]);
    }
    delete[] s;
}

// From the last element to the first: each row's last non-zero finds or makes the row,
// the others go in at the head of its cells, and each new row at the head of the list.
void CMatrix::Sparse(CSparseMatrix *&pS) {
    if (pS == NULL)
        pS = new CSparseMatrix;
    const int nCols = GetColumns();
    SpRow *pRow = NULL;
    for (int i = m_nRows - 1; i >= 0; i--) {
        const double *pX = m_pVector + (size_t)i * nCols;
        int j = nCols - 1;
        while (j >= 0 && pX[j] == 0.0)
            j--;
        if (j < 0)
            continue;
        pS->Add(i, j, pX[j], pRow);
        for (j--; j >= 0; j--)
            if (pX[j] != 0.0)
                pRow->Add(j, pX[j]);
    }
}

// X becomes pS densely; the column count reaches the last cell of any row.
void CMatrix::UnSparse(CSparseMatrix *pS) {
    const int n = pS->GetRows();
    int nCols = 0;
    for (SpRow *r = pS->GetFirstRow(); r != NULL; r = r->m_pNext) {
        SpCell *pLast = r->m_pFirstCell;
        for (SpCell *c = pLast; c != NULL; c = c->m_pNext)
            pLast = c;
        if (pLast != NULL && pLast->m_nCol + 1 > nCols)
            nCols = pLast->m_nCol + 1;
    }
    Allocate(n, nCols, true, 0.0);
    for (SpRow *r = pS->GetFirstRow(); r != NULL; r = r->m_pNext)
        for (SpCell *c = r->m_pFirstCell; c != NULL; c = c->m_pNext)
            SetValue(r->m_nRow, c->m_nCol, c->m_dValue);
}
