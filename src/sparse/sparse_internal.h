// Small helpers shared by the CSparseMatrix sources: node creation and the timing rule
// of the sparse solvers. Not part of the public interface.
#pragma once

#include "platform/runtime.h"
#include "sparse/cellpool.h"
#include "sparse/sparsematrix.h"

namespace sparse_detail {

inline CSparseMatrix::cell *NewCell(CSparseMatrix::cell *pNext, double dValue, int nCol) {
    CSparseMatrix::cell *p = new CSparseMatrix::cell;
    p->m_pNext = pNext;
    p->m_dValue = dValue;
    p->m_nCol = nCol;
    return p;
}

// A row without cells, linked in front of pNext.
inline CSparseMatrix::row *NewRow(int nRow, CSparseMatrix::row *pNext) {
    CSparseMatrix::row *p = new CSparseMatrix::row;
    p->m_pFirstCell = NULL;
    p->m_pNext = pNext;
    p->m_nRow = nRow;
    return p;
}

// Frees the leading cells of r that stand left of its diagonal.
inline void FreeCellsLeftOfDiagonal(CSparseMatrix::row *r) {
    CSparseMatrix::cell *p = r->m_pFirstCell;
    while (p != NULL && p->m_nCol < r->m_nRow) {
        CSparseMatrix::cell *pNext = p->m_pNext;
        delete p;
        p = pNext;
    }
    r->m_pFirstCell = p;
}

// Lists the local indices of the non-negative entries of pDOFs by ascending number into
// pOrder (room for n) and yields their count: the selection order of AddValues. Of equal
// numbers the first wins; a repeated number makes the remaining places repeat the index
// found last, as the selection naturally does.
inline int SelectAscending(const LONG *pDOFs, int n, int *pOrder) {
    int m = 0;
    for (int k = 0; k < n; k++)
        if (pDOFs[k] >= 0)
            m++;
    LONG nPrev = -1;
    int nBest = 0;
    for (int p = 0; p < m; p++) {
        bool bFound = false;
        for (int k = 0; k < n; k++) {
            if (pDOFs[k] <= nPrev)
                continue;
            if (!bFound || pDOFs[k] < pDOFs[nBest]) {
                nBest = k;
                bFound = true;
                // Nothing can beat the next number.
                if (pDOFs[k] == nPrev + 1)
                    break;
            }
        }
        pOrder[p] = nBest;
        nPrev = pDOFs[nBest];
    }
    return m;
}

// Elapsed ticks since nStart; a difference of two signed 32-bit clock readings.
inline double TicksSince(LONG nStart) {
    return (double)(LONG)((ULONG)AfxClock() - (ULONG)nStart);
}

// The timing rule: the variable holds 1000.0 while the operation runs, then seconds.
// A NULL pointer switches the measuring off.
inline LONG StartTiming(double *pTime) {
    if (pTime == NULL)
        return 0;
    *pTime = 1000.0;
    return AfxClock();
}

inline void StopTiming(double *pTime, LONG nStart) {
    if (pTime != NULL)
        *pTime = TicksSince(nStart) / *pTime;
}

} // namespace sparse_detail
