// CSparseMatrix direct factorisations: root-free Cholesky of the upper triangle, LU of the
// full lists without pivoting, and the two solvers built on them. Fill-in is linked into
// the lists where the walk stands; nothing searches a row from its head per update.
#include <cstdio>
#include <vector>

#include "dense/matrix.h"
#include "sparse/sparse_internal.h"
#include "sparse/sparsematrix.h"

using namespace sparse_detail;

// A = U^T D U in place on the upper triangle: pivots d_i first in each row, u_ij behind.
// Yields 1, or -1 at the first missing row, misplaced diagonal or pivot not above 0.0.
int CSparseMatrix::Cholesky() {
    sparse_detail::CellScope cells(m_pCellPool);
    int i = 0;
    for (row *r = m_pFirstRow; r != NULL; r = r->m_pNext, i++) {
        // the pivot
        if (r->m_nRow != i)
            return -1;
        cell *c = r->m_pFirstCell;
        if (c == NULL || c->m_nCol != r->m_nRow)
            return -1;
        double d = c->m_dValue;
        if (d <= 0.0)
            return -1;
        CVirtMat::m_Flops += 1;

        // update the rows below with each off-diagonal cell, then scale that cell
        row *t = r->m_pNext;
        for (cell *a = c->m_pNext; a != NULL; a = a->m_pNext) {
            double f = -a->m_dValue;
            if (f == 0.0)
                continue;
            f = f / d;
            while (t != NULL && t->m_nRow < a->m_nCol)
                t = t->m_pNext;
            if (t == NULL || t->m_nRow != a->m_nCol)
                return -1; // a column without its row: not a square list
            cell *pCursor = NULL;
            for (cell *b = a; b != NULL; b = b->m_pNext) {
                CVirtMat::m_Flops += 2;
                t->Add(b->m_nCol, f * b->m_dValue, pCursor);
            }
            a->m_dValue = a->m_dValue / d;
        }
    }
    return 1;
}

// A = L U in place, unit diagonal of L implied, no pivoting. Yields 1, or -1 at the first
// missing row, row not standing on its diagonal, or pivot of exactly 0.0.
int CSparseMatrix::LU() {
    sparse_detail::CellScope cells(m_pCellPool);
    int n = 0;
    for (row *r = m_pFirstRow; r != NULL; r = r->m_pNext)
        n++;
    // Entry t: the first cell of row t that elimination has not passed yet. The rows wait
    // in one list per column of their entry, so that a pivot finds the rows with a cell in
    // its column without looking at the others. Rows are independent of each other in one
    // elimination step, so the order within a list changes no value.
    std::vector<row *> pRowAt(n);
    std::vector<cell *> pEntry(n);
    std::vector<int> pWaiting(n, -1), pNextWaiting(n, -1);
    auto wait = [&](int t) {
        cell *e = pEntry[t];
        if (e != NULL && e->m_nCol >= 0 && e->m_nCol < n) {
            pNextWaiting[t] = pWaiting[e->m_nCol];
            pWaiting[e->m_nCol] = t;
        }
    };
    int t = 0;
    for (row *r = m_pFirstRow; r != NULL; r = r->m_pNext, t++) {
        pRowAt[t] = r;
        pEntry[t] = r->m_pFirstCell;
        wait(t);
    }

    for (int k = 0; k < n; k++) {
        row *r = pRowAt[k];
        cell *p = pEntry[k];
        if (r->m_nRow != k || p == NULL || p->m_nCol != k || p->m_dValue == 0.0)
            return -1;
        // eliminate column k from the later rows that have a cell there
        t = pWaiting[k];
        pWaiting[k] = -1;
        while (t >= 0) {
            int nNext = pNextWaiting[t];
            if (t > k) {
                cell *e = pEntry[t];
                if (e->m_dValue != 0.0) {
                    e->m_dValue = e->m_dValue / p->m_dValue;
                    double dL = e->m_dValue;
                    cell *pCursor = e;
                    for (cell *b = p->m_pNext; b != NULL; b = b->m_pNext)
                        pRowAt[t]->Add(b->m_nCol, -(b->m_dValue * dL), pCursor);
                }
                // step behind e; that may be a cell just created
                pEntry[t] = e->m_pNext;
                wait(t);
            }
            t = nNext;
        }
    }
    return 1;
}

// Factorises by Cholesky and solves for every column of pB; m_Flops counts this solve alone.
int CSparseMatrix::Cholesky_Solve(CVirtMat *pB, double &dTime) {
    FEMMAT_CHECK_RHS("CSparseMatrix::Cholesky_Solve", pB, std::max(GetRows(), GetColumns()));
    CVirtMat::m_Flops = 0;
    LONG nStart = StartTiming(&dTime);
    int nResult = Cholesky();
    if (nResult != 1) {
        dTime = -1.0;
        return nResult;
    }
    ForwSub(pB, NULL, -1);
    DiagMult(pB, NULL, -2);
    BackwSub(pB, NULL, 1);
    StopTiming(&dTime, nStart);
    return 1;
}

// Factorises by LU, solves for every column of pB and reports the three spans.
int CSparseMatrix::LU_Solve(CVirtMat *pB, double &dTime) {
    FEMMAT_CHECK_RHS("CSparseMatrix::LU_Solve", pB, std::max(GetRows(), GetColumns()));
    LONG nStart = StartTiming(&dTime);
    int nResult = LU();
    if (nResult != 1) {
        dTime = -1.0;
        return nResult;
    }
    LONG nFactorised = AfxClock();
    ForwSub(pB, NULL, 1);
    LONG nForward = AfxClock();
    BackwSub(pB, NULL, 2);
    LONG nBackward = AfxClock();

    double dFactor = (double)(LONG)((ULONG)nFactorised - (ULONG)nStart) / 1000.0;
    double dForw = (double)(LONG)((ULONG)nForward - (ULONG)nFactorised) / 1000.0;
    double dBackw = (double)(LONG)((ULONG)nBackward - (ULONG)nForward) / 1000.0;
    dTime = (double)(LONG)((ULONG)nBackward - (ULONG)nStart) / dTime;

    char szText[256];
    snprintf(szText, sizeof(szText),
             "Used time:\r\n Factorizing  :   %s\r\n Forw. subst. :   %s\r\n Backw. subst.:   "
             "%s\r\n",
             (const char *)CVirtMat::FormatTime(dFactor), (const char *)CVirtMat::FormatTime(dForw),
             (const char *)CVirtMat::FormatTime(dBackw));
    AfxMessageBox(szText, 0, 0);
    return 1;
}
