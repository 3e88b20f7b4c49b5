// CSkylineMatrix: root-free Cholesky in place, substitutions, diagonal scaling, the direct
// solve with its report, and Gauss-Seidel on the unfactorised matrix.
#include "skyline/skylinematrix.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "dense/matrix.h"

namespace {

// The timing rule of the substitutions: 1000.0 while running, seconds at the end.
struct CSubTimer {
    double *m_pTime;
    LONG m_nStart;
    explicit CSubTimer(double *pTime) : m_pTime(pTime), m_nStart(0) {
        if (m_pTime) {
            *m_pTime = 1000.0;
            m_nStart = AfxClock();
        }
    }
    void Stop() {
        if (m_pTime)
            *m_pTime = (AfxClock() - m_nStart) / 1000.0;
    }
};

} // namespace

namespace {

// Row i's multiplier j from the dense copy w of row i (first column p), the finished row j
// (Lj: its value in column s onwards, s = the later of p and row j's peak) and the pivots
// D: w[j] less each w[c] L(j, c) D[c] in ascending c, then over D[j].
inline double Multiplier(const double *w, int p, const double *Lj, int s, int j, const double *D) {
    double dValue = w[j - p];
    for (int c = s; c < j; c++)
        dValue -= w[c - p] * Lj[c - s] * D[c];
    return dValue / D[j];
}

// Row i's pivot from its multipliers: its diagonal less each square times the pivot.
inline double Pivot(const double *w, int p, int i, const double *D) {
    double dPivot = w[i - p];
    for (int c = p; c < i; c++)
        dPivot -= std::pow(w[c - p], 2.0) * D[c];
    return dPivot;
}

} // namespace

// Finishes row i in the dense copy w (first column p), its pivot into D[i].
void CSkylineMatrix::FactorRow(int i, double *w, double *D) {
    const int p = PeakRow(i);
    for (int j = p; j < i; j++) {
        const int s = std::max(p, PeakRow(j));
        w[j - p] = Multiplier(w, p, m_ppDiag[j] - (j - s), s, j, D);
    }
    D[i] = w[i - p] = Pivot(w, p, i, D);
}

// Factorises A = L D L^T in place: row by row, each row worked in a dense copy against the
// finished rows above it, whose pivots are kept apart in D. Yields 1.
//
// Each multiplier is one chain of subtractions, as slow as the latency of each step. Two
// neighbouring rows are independent up to the later one's last multiplier, so rows go in
// pairs, their chains side by side over the same finished row; every value sees the
// same operations in the same order as row by row.
int CSkylineMatrix::Cholesky() {
    const int n = m_nRows;
    int nMaxHeight = 0;
    for (int i = 0; i < n; i++)
        nMaxHeight = std::max(nMaxHeight, m_pHeights[i]);
    double *wa = new double[2 * (size_t)nMaxHeight];
    double *wb = wa + nMaxHeight;
    double *D = DiagVect();

    int i = 1;
    for (; i + 1 < n; i += 2) {
        const int a = i, b = i + 1;
        const int pa = PeakRow(a), pb = PeakRow(b);
        double *pRowA = m_ppDiag[a] - (a - pa), *pRowB = m_ppDiag[b] - (b - pb);
        std::copy(pRowA, pRowA + (a - pa + 1), wa);
        std::copy(pRowB, pRowB + (b - pb + 1), wb);

        // Multipliers of both rows in the columns before a.
        for (int j = std::min(pa, pb); j < a; j++) {
            const int sj = PeakRow(j);
            const double *Lj = m_ppDiag[j] - (j - sj); // L(j, sj) onwards
            if (j < pb) {
                const int s = std::max(pa, sj);
                wa[j - pa] = Multiplier(wa, pa, Lj + (s - sj), s, j, D);
                continue;
            }
            if (j < pa) {
                const int s = std::max(pb, sj);
                wb[j - pb] = Multiplier(wb, pb, Lj + (s - sj), s, j, D);
                continue;
            }
            // Each chain runs alone where only its row reaches, then both together.
            const int sa = std::max(pa, sj), sb = std::max(pb, sj);
            double va = wa[j - pa], vb = wb[j - pb];
            for (int c = sa; c < sb; c++)
                va -= wa[c - pa] * Lj[c - sj] * D[c];
            for (int c = sb; c < sa; c++)
                vb -= wb[c - pb] * Lj[c - sj] * D[c];
            for (int c = std::max(sa, sb); c < j; c++) {
                const double l = Lj[c - sj], d = D[c];
                va -= wa[c - pa] * l * d;
                vb -= wb[c - pb] * l * d;
            }
            wa[j - pa] = va / D[j];
            wb[j - pb] = vb / D[j];
        }
        // Row a is complete; row b takes its last multiplier from it.
        D[a] = wa[a - pa] = Pivot(wa, pa, a, D);
        std::copy(wa, wa + (a - pa + 1), pRowA);
        if (pb <= a) {
            const int s = std::max(pb, pa);
            wb[a - pb] = Multiplier(wb, pb, pRowA + (s - pa), s, a, D);
        }
        D[b] = wb[b - pb] = Pivot(wb, pb, b, D);
        std::copy(wb, wb + (b - pb + 1), pRowB);
    }
    if (i < n) {
        const int p = PeakRow(i);
        double *pRow = m_ppDiag[i] - (i - p);
        std::copy(pRow, pRow + (i - p + 1), wa);
        FactorRow(i, wa, D);
        std::copy(wa, wa + (i - p + 1), pRow);
    }
    delete[] D;
    delete[] wa;
    return 1;
}

// Solves with the lower factor for every column of *pB, in place: unit diagonal (nMode 1) or
// the stored one (nMode 2); other modes only time.
void CSkylineMatrix::ForwSub(CVirtMat *pB, double *pTime, int nMode) {
    FEMMAT_CHECK_RHS("CSkylineMatrix::ForwSub", pB, m_nRows);
    CSubTimer timer(pTime);
    if (nMode == 1 || nMode == 2) {
        CMatrix &B = *static_cast<CMatrix *>(pB);
        const int nCols = B.GetColumns();
        double *b = B.m_pVector;
        for (int c = nCols - 1; c >= 0; c--) {
            for (int i = 0; i < m_nRows; i++) {
                const int p = i - m_pHeights[i] + 1;
                const double *pRow = m_ppDiag[i] - (i - p);
                // The running value in a register: the earlier entries are other rows.
                double bi = b[(size_t)i * nCols + c];
                for (int k = p; k < i; k++)
                    bi -= pRow[k - p] * b[(size_t)k * nCols + c];
                if (nMode == 2)
                    bi /= pRow[i - p];
                b[(size_t)i * nCols + c] = bi;
            }
        }
    }
    timer.Stop();
}

// Solves with the upper factor for every column of *pB, in place, by the modes of ForwSub.
// Entry i takes its terms from rows n-1 down to i+1, as a search of every later row would
// give them, but each stored row is walked once: row j, when its own entry is final, pushes
// its share to the entries of the columns it covers.
void CSkylineMatrix::BackwSub(CVirtMat *pB, double *pTime, int nMode) {
    FEMMAT_CHECK_RHS("CSkylineMatrix::BackwSub", pB, m_nRows);
    CSubTimer timer(pTime);
    if (nMode == 1 || nMode == 2) {
        CMatrix &B = *static_cast<CMatrix *>(pB);
        const int nCols = B.GetColumns();
        double *b = B.m_pVector;
        for (int c = nCols - 1; c >= 0; c--) {
            for (int j = m_nRows - 1; j >= 0; j--) {
                const int p = j - m_pHeights[j] + 1;
                const double *pRow = m_ppDiag[j] - (j - p);
                double &bj = b[(size_t)j * nCols + c];
                if (nMode == 2)
                    bj /= pRow[j - p];
                const double dFinal = bj;
                for (int i = p; i < j; i++)
                    b[(size_t)i * nCols + c] -= pRow[i - p] * dFinal;
            }
        }
    }
    timer.Stop();
}

// Scales by the diagonal: the matrix's by pB[i][0] (nMode 1, -1), or the rows of *pB by the
// matrix's (nMode 2, -2). No columns: returns before any timing.
void CSkylineMatrix::DiagMult(CVirtMat *pB, double *pTime, int nMode) {
    FEMMAT_CHECK_RHS("CSkylineMatrix::DiagMult", pB, m_nRows);
    CMatrix &B = *static_cast<CMatrix *>(pB);
    const int nCols = B.GetColumns();
    if (nCols == 0)
        return;
    CSubTimer timer(pTime);
    double *b = B.m_pVector;
    switch (nMode) {
    case 1:
        for (int i = 0; i < m_nRows; i++)
            *m_ppDiag[i] *= b[(size_t)i * nCols];
        break;
    case -1:
        for (int i = 0; i < m_nRows; i++)
            *m_ppDiag[i] /= b[(size_t)i * nCols];
        break;
    case 2:
        for (int i = 0; i < m_nRows; i++) {
            const double d = *m_ppDiag[i];
            for (double *p = b + (size_t)i * nCols, *pEnd = p + nCols; p < pEnd; p++)
                *p *= d;
        }
        break;
    case -2:
        for (int i = 0; i < m_nRows; i++) {
            const double d = *m_ppDiag[i];
            for (double *p = b + (size_t)i * nCols, *pEnd = p + nCols; p < pEnd; p++)
                *p /= d;
        }
        break;
    default:
        break;
    }
    timer.Stop();
}

// Factorises, solves every column of the CMatrix *pB in place and shows the timing report.
int CSkylineMatrix::Cholesky_Solve(CVirtMat *pB, double &dTime) {
    FEMMAT_CHECK_RHS("CSkylineMatrix::Cholesky_Solve", pB, m_nRows);
    m_Flops = 0;
    dTime = 1000.0;
    const LONG nStart = AfxClock();
    const LONG nFactorStart = AfxClock();
    const int nResult = Cholesky();
    if (nResult != 1) {
        dTime = -1.0;
        return nResult;
    }
    const LONG nForwStart = AfxClock();
    ForwSub(pB, NULL, 1);
    const LONG nBackwStart = AfxClock();
    DiagMult(pB, NULL, -2);
    BackwSub(pB, NULL, 1);
    const LONG nEnd = AfxClock();
    dTime = (nEnd - nStart) / 1000.0;

    // The backward time covers the diagonal scaling too.
    char szText[512];
    snprintf(szText, sizeof szText,
             "Used time:\r\n Factorizing  :   %s\r\n Forw. subst. :   %s\r\n Backw. subst.:   "
             "%s\r\n Size stiffm. :   %u\r\n Flops        :   %10.3e",
             (const char *)FormatTime((nForwStart - nFactorStart) / 1000.0),
             (const char *)FormatTime((nBackwStart - nForwStart) / 1000.0),
             (const char *)FormatTime((nEnd - nBackwStart) / 1000.0), (unsigned)m_nValues,
             (double)m_Flops);
    AfxMessageBox(szText, 0, 0);
    return 1;
}

// Gauss-Seidel sweeps from x towards the solution of A x = b, with the timing report.
// Each sweep subtracts the upper triangle at the old values y, then solves with the lower
// triangle and the diagonal; both passes walk m_pValues in storage order.
int CSkylineMatrix::GaussSeidel_Iter(CVector &b, CVector &x, double dTol, int nMaxIter) {
    FEMMAT_CHECK_SIZE("CSkylineMatrix::GaussSeidel_Iter", "the order of the matrix", m_nRows,
                      b.GetSize());
    FEMMAT_CHECK_SIZE("CSkylineMatrix::GaussSeidel_Iter", "the size of x", x.GetSize(),
                      b.GetSize());
    const int n = b.GetSize();
    if (n == 0)
        return 1;
    // A zero or non-finite diagonal: no sweep, x unchanged, -1 (reported as 0 sweeps).
    bool bUsable = true;
    for (int i = 0; i < n; i++)
        if (*m_ppDiag[i] == 0.0 || !std::isfinite(*m_ppDiag[i]))
            bUsable = false;
    if (n == 1) {
        if (!bUsable)
            return -1;
        x[0] = b[0] / (*this)(0, 0);
        return std::isfinite(x[0]) ? 1 : -1;
    }
    if (!bUsable)
        nMaxIter = 0;
    const LONG nStart = AfxClock();
    int nResult = -1;
    double dNorm = 0.0;
    LONG nFirstTicks = 0, nLastTicks = 0;
    CVector y(n);
    for (int i = 0; i < n; i++)
        y[i] = x[i];

    int nSweeps = 0;
    while (nSweeps < nMaxIter) {
        nSweeps++;
        x = b;
        double *px = x.m_pVector;
        const double *py = y.m_pVector;

        // First pass: the strict upper triangle at the old values. Row 0 is its diagonal.
        LONG nTick = AfxClock();
        const double *pA = m_pValues + 1;
        for (int i = 1; i < n; i++) {
            const double yi = py[i];
            for (int k = PeakRow(i); k < i; k++)
                px[k] -= yi * *pA++;
            pA++;
        }
        nFirstTicks += AfxClock() - nTick;

        // Second pass: forward solution with the lower triangle and the diagonal.
        nTick = AfxClock();
        pA = m_pValues;
        for (int i = 0; i < n; i++) {
            double s = px[i];
            for (int k = PeakRow(i); k < i; k++)
                s -= px[k] * *pA++;
            px[i] = s / *pA++;
        }
        nLastTicks += AfxClock() - nTick;

        y -= x;
        dNorm = y.InfNorm();
        if (dNorm < dTol) {
            nResult = 1;
            break;
        }
        y.SwitchVectors(&x);
    }
    if (nResult != 1 && nSweeps > 0)
        y.SwitchVectors(&x); // x takes the newest iterate back
    // A non-finite iterate hides from the norm; it is no solution.
    for (int i = 0; nResult == 1 && i < n; i++)
        if (!std::isfinite(x[i]))
            nResult = -1;
    const LONG nEnd = AfxClock();

    char szText[512];
    snprintf(szText, sizeof szText,
             "Used time solving :   %s\r\nFirst            :   %s\r\nLast             :   "
             "%s\r\n Number of iter. :   %u\r\n NEQ             :   %u\r\n Norm of error   :   %e",
             (const char *)FormatTime((nEnd - nStart) * 0.001),
             (const char *)FormatTime(nFirstTicks * 0.001),
             (const char *)FormatTime(nLastTicks * 0.001),
             (unsigned)(nMaxIter <= 0 ? nMaxIter : nSweeps), (unsigned)n, dNorm);
    AfxMessageBox(szText, 0, 0);
    return nResult;
}
