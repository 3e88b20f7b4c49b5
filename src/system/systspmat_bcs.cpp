// CSystSpMat: prescribed values. A prescribed row becomes a row of the identity, its
// column leaves the other rows, and what that column contributed moves to the right-hand
// sides (a CMatrix, one column each).
#include "system/systspmat.h"

#include "dense/matrix.h"

// Row d becomes the single cell 1.0 on its diagonal; the row's first cell object is kept
// for it, or one is made when the row has none.
static void MakeIdentityRow(CSparseMatrix::row &R, int d) {
    CSparseMatrix::cell *c = R.m_pFirstCell;
    if (c == NULL)
        c = new CSparseMatrix::cell;
    else
        R.m_pFirstCell = c->m_pNext;
    R.Clear();
    c->m_pNext = NULL;
    c->m_dValue = 1.0;
    c->m_nCol = d;
    R.m_pFirstCell = c;
}

// B[nRow][k] -= s for every column k.
static void SubtractFromRow(CMatrix &B, int nCols, int nRow, double s) {
    if (nCols == 0)
        return;
    double *pRow = B[nRow];
    for (int k = 0; k < nCols; k++)
        pRow[k] -= s;
}

static void SetRow(CMatrix &B, int nCols, int nRow, double dValue) {
    if (nCols == 0)
        return;
    double *pRow = B[nRow];
    for (int k = 0; k < nCols; k++)
        pRow[k] = dValue;
}

// Full storage: first every row gives up the prescribed columns into pB, then the
// prescribed rows become rows of the identity with the prescribed values in pB.
void CSystSpMat::UnifyAndZero2(CVector &vDOFs, CVector &vValues, CVirtMat *pB) {
    FEMMAT_CHECK_PRESCRIBED("CSystSpMat::UnifyAndZero2", vDOFs, vValues, pB, m_nTableRows);
    CMatrix &B = *static_cast<CMatrix *>(pB);
    const int m = vDOFs.GetSize();
    const int nCols = B.GetColumns();

    // Columns out, the prescribed rows included (their B is overwritten below).
    for (row *R = m_pFirstRow; R != NULL; R = R->m_pNext) {
        for (int i = 0; i < m; i++) {
            cell *c = R->Remove((int)vDOFs[i]);
            if (c == NULL)
                continue;
            SubtractFromRow(B, nCols, R->m_nRow, vValues[i] * c->m_dValue);
            delete c;
        }
    }
    // Rows of the identity.
    for (int i = 0; i < m; i++) {
        int d = (int)vDOFs[i];
        MakeIdentityRow(m_pRowTable[d], d);
        SetRow(B, nCols, d, vValues[i]);
    }
}

// Upper storage, exact for zero values: the prescribed rows become rows of the identity
// first (their cells right of the diagonal go without correction), then the other rows
// give up the prescribed columns into pB.
void CSystSpMat::SymUnifyAndZero(CVector &vDOFs, CVector &vValues, CVirtMat *pB) {
    FEMMAT_CHECK_PRESCRIBED("CSystSpMat::SymUnifyAndZero", vDOFs, vValues, pB, m_nTableRows);
    CMatrix &B = *static_cast<CMatrix *>(pB);
    const int m = vDOFs.GetSize();
    const int nCols = B.GetColumns();

    // Rows of the identity.
    for (int i = 0; i < m; i++) {
        int d = (int)vDOFs[i];
        MakeIdentityRow(m_pRowTable[d], d);
        SetRow(B, nCols, d, vValues[i]);
    }
    // Columns out of the other rows.
    for (row *R = m_pFirstRow; R != NULL; R = R->m_pNext) {
        for (int i = 0; i < m; i++) {
            int d = (int)vDOFs[i];
            if (R->m_nRow == d)
                continue;
            cell *c = R->Remove(d);
            if (c == NULL)
                continue;
            SubtractFromRow(B, nCols, R->m_nRow, vValues[i] * c->m_dValue);
            delete c;
        }
    }
}

// Upper storage; mBC holds a number and one value per right-hand side in each row. The
// link of row r with number d stands at (r, d) if d >= r, else at (d, r).
void CSystSpMat::SymHandleBCs(CMatrix &mBC, CMatrix &mRHS) {
    FEMMAT_CHECK_BC_TABLE("CSystSpMat::SymHandleBCs", mBC, mRHS, m_nTableRows);
    const int nBC = mBC.GetRows();
    const int c = nBC > 0 ? mBC.GetColumns() : 0;

    // Pass 1: every link of a prescribed number moves its contribution into mRHS,
    // the diagonal cell of a prescribed row included. Pass 2 needs this finished.
    for (int r = 0; r < m_nTableRows; r++) {
        for (int b = 0; b < nBC; b++) {
            int d = (int)mBC[b][0];
            cell *pCell = d >= r ? m_pRowTable[r].GetCell(d) : m_pRowTable[d].GetCell(r);
            if (pCell == NULL)
                continue;
            double *pRHS = mRHS[r];
            const double *pValues = mBC[b] + 1;
            for (int k = 0; k < c - 1; k++)
                pRHS[k] -= pValues[k] * pCell->m_dValue;
        }
    }
    // Pass 2: no off-diagonal cell links a prescribed number any more.
    for (int r = 0; r < m_nTableRows; r++) {
        for (int b = 0; b < nBC; b++) {
            int d = (int)mBC[b][0];
            if (d == r)
                continue;
            cell *pCell = d > r ? m_pRowTable[r].Remove(d) : m_pRowTable[d].Remove(r);
            delete pCell;
        }
    }
    // Pass 3: the prescribed rows keep only their diagonal cell, as 1.0.
    for (int b = 0; b < nBC; b++) {
        int d = (int)mBC[b][0];
        row &R = m_pRowTable[d];
        cell *pDiag = R.Remove(d);
        R.Clear();
        if (pDiag != NULL) {
            pDiag->m_pNext = NULL;
            pDiag->m_dValue = 1.0;
            R.m_pFirstCell = pDiag;
        }
    }
}
