// CSystSpMat: prescribed values. A prescribed row becomes a row of the identity, its
// column leaves the other rows, and what that column contributed moves to the right-hand
// sides (a CMatrix, one column each).
#include "sparse/sparse_internal.h"
#include "system/patternindex_internal.h"
#include "system/systspmat.h"

#include "dense/matrix.h"

#include <algorithm>
#include <utility>
#include <vector>

// Row d becomes the single cell 1.0 on its diagonal; the row's first cell object is kept
// for it, or one is made when the row has none.
static void MakeIdentityRow(CSparseMatrix::row &R, int d, sparse_detail::PatternIndex *pIndex) {
    if (pIndex != NULL)
        pIndex->DropRow(d);
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

// The prescribed entries by number: for number d, the indices i of the list with that
// number, ascending, in pIndex[pStart[d]] to pIndex[pStart[d + 1] - 1]. Numbers at or past
// nRows have no equation here and are left out.
struct PrescribedByNumber {
    std::vector<int> pStart, pIndex;
    PrescribedByNumber(const std::vector<int> &numbers, int nRows) : pStart(nRows + 1, 0) {
        for (int d : numbers)
            if (d >= 0 && d < nRows)
                pStart[d + 1]++;
        for (int d = 0; d < nRows; d++)
            pStart[d + 1] += pStart[d];
        pIndex.resize(pStart[nRows]);
        std::vector<int> pFill(pStart.begin(), pStart.end() - 1);
        for (int i = 0; i < (int)numbers.size(); i++)
            if (numbers[i] >= 0 && numbers[i] < nRows)
                pIndex[pFill[numbers[i]]++] = i;
    }
    bool Has(int d) const {
        return d >= 0 && d < (int)pStart.size() - 1 && pStart[d] < pStart[d + 1];
    }
    int First(int d) const { return pIndex[pStart[d]]; }
};

static std::vector<int> Numbers(CVector &vDOFs) {
    std::vector<int> numbers(vDOFs.GetSize());
    for (int i = 0; i < vDOFs.GetSize(); i++)
        numbers[i] = (int)vDOFs[i];
    return numbers;
}

// Takes the cells of prescribed columns out of row R (its own diagonal kept when
// bKeepDiagonal) and their contributions off R's row of B, in the order of the list:
// the first entry with a number finds its cell, a repeat finds none.
static void TakeColumnsOut(CSparseMatrix::row &R, const PrescribedByNumber &byNumber,
                           CVector &vValues, CMatrix &B, int nCols, bool bKeepDiagonal,
                           std::vector<std::pair<int, CSparseMatrix::cell *>> &hits,
                           sparse_detail::PatternIndex *pIndex) {
    hits.clear();
    CSparseMatrix::cell **ppLink = &R.m_pFirstCell;
    while (*ppLink != NULL) {
        CSparseMatrix::cell *c = *ppLink;
        if (byNumber.Has(c->m_nCol) && !(bKeepDiagonal && c->m_nCol == R.m_nRow)) {
            *ppLink = c->m_pNext;
            hits.emplace_back(byNumber.First(c->m_nCol), c);
        } else {
            ppLink = &c->m_pNext;
        }
    }
    if (pIndex != NULL && !hits.empty())
        pIndex->DropRow(R.m_nRow);
    std::sort(hits.begin(), hits.end());
    for (auto &h : hits) {
        SubtractFromRow(B, nCols, R.m_nRow, vValues[h.first] * h.second->m_dValue);
        delete h.second;
    }
}

// Full storage: first every row gives up the prescribed columns into pB, then the
// prescribed rows become rows of the identity with the prescribed values in pB.
void CSystSpMat::UnifyAndZero2(CVector &vDOFs, CVector &vValues, CVirtMat *pB) {
    FEMMAT_CHECK_PRESCRIBED("CSystSpMat::UnifyAndZero2", vDOFs, vValues, pB, m_nTableRows);
    sparse_detail::CellScope cells(m_pCellPool);
    CMatrix &B = *static_cast<CMatrix *>(pB);
    const int m = vDOFs.GetSize();
    const int nCols = B.GetColumns();
    if (m == 0)
        return;
    std::vector<int> numbers = Numbers(vDOFs);
    PrescribedByNumber byNumber(numbers, m_nTableRows);
    sparse_detail::PatternIndex *pIndex = CurrentIndex();

    // Columns out, the prescribed rows included (their B is overwritten below).
    std::vector<std::pair<int, cell *>> hits;
    for (row *R = m_pFirstRow; R != NULL; R = R->m_pNext)
        TakeColumnsOut(*R, byNumber, vValues, B, nCols, false, hits, pIndex);
    // Rows of the identity.
    for (int i = 0; i < m; i++) {
        int d = numbers[i];
        MakeIdentityRow(m_pRowTable[d], d, pIndex);
        SetRow(B, nCols, d, vValues[i]);
    }
    if (pIndex != NULL)
        pIndex->Resync(*m_pCellPool);
}

// Upper storage, exact for zero values: the prescribed rows become rows of the identity
// first (their cells right of the diagonal go without correction), then the other rows
// give up the prescribed columns into pB.
void CSystSpMat::SymUnifyAndZero(CVector &vDOFs, CVector &vValues, CVirtMat *pB) {
    FEMMAT_CHECK_PRESCRIBED("CSystSpMat::SymUnifyAndZero", vDOFs, vValues, pB, m_nTableRows);
    sparse_detail::CellScope cells(m_pCellPool);
    CMatrix &B = *static_cast<CMatrix *>(pB);
    const int m = vDOFs.GetSize();
    const int nCols = B.GetColumns();
    if (m == 0)
        return;
    std::vector<int> numbers = Numbers(vDOFs);
    sparse_detail::PatternIndex *pIndex = CurrentIndex();

    // Rows of the identity.
    for (int i = 0; i < m; i++) {
        int d = numbers[i];
        MakeIdentityRow(m_pRowTable[d], d, pIndex);
        SetRow(B, nCols, d, vValues[i]);
    }
    // Columns out of the other rows.
    PrescribedByNumber byNumber(numbers, m_nTableRows);
    std::vector<std::pair<int, cell *>> hits;
    for (row *R = m_pFirstRow; R != NULL; R = R->m_pNext)
        TakeColumnsOut(*R, byNumber, vValues, B, nCols, true, hits, pIndex);
    if (pIndex != NULL)
        pIndex->Resync(*m_pCellPool);
}

// Upper storage; mBC holds a number and one value per right-hand side in each row. The
// link of row r with number d stands at (r, d) if d >= r, else at (d, r).
void CSystSpMat::SymHandleBCs(CMatrix &mBC, CMatrix &mRHS) {
    FEMMAT_CHECK_BC_TABLE("CSystSpMat::SymHandleBCs", mBC, mRHS, m_nTableRows);
    const int nBC = mBC.GetRows();
    if (nBC == 0)
        return;
    const int c = mBC.GetColumns();
    const int n = m_nTableRows;
    std::vector<int> numbers(nBC);
    for (int b = 0; b < nBC; b++)
        numbers[b] = (int)mBC[b][0];
    PrescribedByNumber byNumber(numbers, n);
    sparse_detail::PatternIndex *pIndex = CurrentIndex();

    // Pass 1: every link of a prescribed number moves its contribution into mRHS, the
    // diagonal cell of a prescribed row included. Links are gathered in one walk over the
    // cells as (row of mRHS, entry b, cell), then taken off each row in the order of b.
    // Pass 2 needs this finished.
    struct Link {
        int r, b;
        cell *pCell;
        bool operator<(const Link &o) const { return r != o.r ? r < o.r : b < o.b; }
    };
    std::vector<Link> links;
    for (int r = 0; r < n; r++) {
        row &R = m_pRowTable[r];
        bool bPrescribedRow = byNumber.Has(r);
        for (cell *p = R.m_pFirstCell; p != NULL; p = p->m_pNext) {
            int d = p->m_nCol;
            // (r, d) with d at or right of r links row r with a prescribed d.
            if (d >= r && byNumber.Has(d))
                for (int k = byNumber.pStart[d]; k < byNumber.pStart[d + 1]; k++)
                    links.push_back({r, byNumber.pIndex[k], p});
            // (r, d) with d right of a prescribed r links row d with r.
            if (bPrescribedRow && d > r && d < n)
                for (int k = byNumber.pStart[r]; k < byNumber.pStart[r + 1]; k++)
                    links.push_back({d, byNumber.pIndex[k], p});
        }
    }
    std::sort(links.begin(), links.end());
    for (const Link &l : links) {
        double *pRHS = mRHS[l.r];
        const double *pValues = mBC[l.b] + 1;
        for (int k = 0; k < c - 1; k++)
            pRHS[k] -= pValues[k] * l.pCell->m_dValue;
    }

    // Pass 2: no off-diagonal cell links a prescribed number any more: out go the cells
    // right of the diagonal in a prescribed column, and those of a prescribed row.
    for (int r = 0; r < n; r++) {
        row &R = m_pRowTable[r];
        bool bPrescribedRow = byNumber.Has(r);
        cell **ppLink = &R.m_pFirstCell;
        while (*ppLink != NULL) {
            cell *p = *ppLink;
            if (p->m_nCol > r && (bPrescribedRow || byNumber.Has(p->m_nCol))) {
                *ppLink = p->m_pNext;
                delete p;
                if (pIndex != NULL)
                    pIndex->DropRow(r);
            } else {
                ppLink = &p->m_pNext;
            }
        }
    }
    // Pass 3: the prescribed rows keep only their diagonal cell, as 1.0.
    for (int b = 0; b < nBC; b++) {
        int d = numbers[b];
        row &R = m_pRowTable[d];
        if (pIndex != NULL)
            pIndex->DropRow(d);
        cell *pDiag = R.Remove(d);
        R.Clear();
        if (pDiag != NULL) {
            pDiag->m_pNext = NULL;
            pDiag->m_dValue = 1.0;
            R.m_pFirstCell = pDiag;
        }
    }
    if (pIndex != NULL)
        pIndex->Resync(*m_pCellPool);
}
