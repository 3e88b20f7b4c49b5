// CSystSpMat: LU through the row table, and the Gauss-Seidel iteration (Cholesky has its
// own file).
#include "sparse/sparse_internal.h"
#include "system/systspmat.h"

#include "dense/vector.h"

#include <cmath>
#include <cstdio>
#include <vector>

// A = L U in place without pivoting: left of the diagonal the unit lower factor, from the
// diagonal on the upper factor. 1, or -1 at the first missing diagonal or zero pivot. The
// list's elimination, which reaches the rows through their own table of the list.
int CSystSpMat::LU() {
    return CSparseMatrix::LU();
}

// One symmetric sweep: (D + L) x_new = F - U x_old with L = U^T, on upper storage.
static void SymSweep(CSparseMatrix::row *pRows, int n, const double *pF, const double *pOld,
                     double *pX) {
    // Right-hand side less the upper part applied to the old iterate.
    for (int i = 0; i < n; i++) {
        double s = pF[i];
        for (CSparseMatrix::cell *c = pRows[i].m_pFirstCell->m_pNext; c != NULL; c = c->m_pNext)
            s -= pOld[c->m_nCol] * c->m_dValue;
        pX[i] = s;
    }
    // Forward solve with the transpose: each new value is pushed into the later rows.
    for (int i = 0; i + 1 < n; i++) {
        CSparseMatrix::cell *pDiag = pRows[i].m_pFirstCell;
        double x = pX[i] / pDiag->m_dValue;
        pX[i] = x;
        for (CSparseMatrix::cell *c = pDiag->m_pNext; c != NULL; c = c->m_pNext)
            pX[c->m_nCol] -= x * c->m_dValue;
    }
    if (n > 0)
        pX[n - 1] /= pRows[n - 1].m_pFirstCell->m_dValue;
}

// One in-place sweep on full storage; yields the largest change of a component.
static double FullSweep(CSparseMatrix::row *pRows, int n, const double *pF, double *pX) {
    double dNorm = 0.0;
    for (int i = 0; i < n; i++) {
        double dOld = pX[i];
        double s = pF[i];
        // Left of the diagonal the components are already this sweep's.
        CSparseMatrix::cell *c = pRows[i].m_pFirstCell;
        while (c->m_nCol < i) {
            s -= pX[c->m_nCol] * c->m_dValue;
            c = c->m_pNext;
        }
        double d = c->m_dValue;
        for (c = c->m_pNext; c != NULL; c = c->m_pNext)
            s -= pX[c->m_nCol] * c->m_dValue;
        pX[i] = s / d;
        double dChange = std::fabs(pX[i] - dOld);
        if (dChange >= dNorm)
            dNorm = dChange;
    }
    return dNorm;
}

// True when each of the first n rows has a diagonal as the sweeps take it (the first cell
// in upper storage, else the first cell not left of column i) that is finite and not 0.0.
static bool SweepDiagonalsUsable(const CSparseMatrix::row *pRows, int n, bool bSym) {
    for (int i = 0; i < n; i++) {
        const CSparseMatrix::cell *c = pRows[i].m_pFirstCell;
        while (!bSym && c != NULL && c->m_nCol < i)
            c = c->m_pNext;
        if (c == NULL || c->m_dValue == 0.0 || !std::isfinite(c->m_dValue))
            return false;
    }
    return true;
}

static bool AllFinite(const double *p, int n) {
    for (int i = 0; i < n; i++)
        if (!std::isfinite(p[i]))
            return false;
    return true;
}

// Gauss-Seidel from the start vector vX until a sweep changes no component by dTol or
// more; vX receives the last iterate. 1 if converged, else -1; the report is always shown.
int CSystSpMat::GaussSeidel_Iter(CVector &vF, CVector &vX, double dTol, int nMaxIter) {
    FEMMAT_CHECK_SIZE("CSystSpMat::GaussSeidel_Iter", "the number of rows", m_nTableRows,
                      vF.GetSize());
    FEMMAT_CHECK_SIZE("CSystSpMat::GaussSeidel_Iter", "the size of vX", vX.GetSize(), vF.GetSize());
    const int n = vF.GetSize();
    double dNorm = 0.0;
    int nResult = -1;
    // No usable diagonal: no sweep, vX unchanged, -1, and the report shows 0 sweeps.
    if (!SweepDiagonalsUsable(m_pRowTable, n, CVirtMat::m_bSym))
        nMaxIter = 0;
    int nIter = nMaxIter;
    LONG nStart = AfxClock();

    if (CVirtMat::m_bSym) {
        // old keeps the previous iterate; the two swap storage after each sweep.
        CVector old(n);
        for (int i = 0; i < n; i++)
            old[i] = vX[i];
        int it = 0;
        for (; it < nMaxIter; it++) {
            SymSweep(m_pRowTable, n, vF.GetVector(), old.GetVector(), vX.GetVector());
            old -= vX;
            dNorm = old.InfNorm();
            if (dNorm < dTol) {
                nResult = 1;
                nIter = it + 1;
                break;
            }
            old.SwitchVectors(&vX);
        }
        // Without success the last iterate stands in old: bring it back.
        if (nResult != 1 && nMaxIter > 0)
            old.SwitchVectors(&vX);
    } else {
        for (int it = 0; it < nMaxIter; it++) {
            dNorm = FullSweep(m_pRowTable, n, vF.GetVector(), vX.GetVector());
            if (dNorm < dTol) {
                nResult = 1;
                nIter = it + 1;
                break;
            }
        }
    }

    // A non-finite iterate hides from the norm; it is no solution.
    if (nResult == 1 && !AllFinite(vX.GetVector(), n))
        nResult = -1;

    // Report.
    double dSeconds = (double)(LONG)((ULONG)AfxClock() - (ULONG)nStart) * 0.001;
    char szText[512];
    snprintf(szText, sizeof szText,
             "Used time solving :   %s\r\n Number of iter. :   %u\r\n NEQ             :   %u\r\n "
             "Norm of error   :   %e\r\n Symmetric       :   %u\r\n%u\r\n%u",
             (const char *)CVirtMat::FormatTime(dSeconds), (unsigned)nIter, (unsigned)n, dNorm,
             (unsigned)(CVirtMat::m_bSym ? 1 : 0), 24u, 16u);
    AfxMessageBox(szText, 0, 0);
    return nResult;
}
