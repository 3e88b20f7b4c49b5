// CMatrix: dense factorisation and solving in place: LU with and without row pivoting,
// the triangular solves, the timed driver, the determinant, Cholesky.
// Every element is reached through the virtual accessors and Multiply, so a derived
// class that keeps its elements elsewhere is factorised all the same.
#include "dense/matrix.h"

#include <cmath>

double CMatrix::Multiply(int i, int j, double dFactor) {
    double &dValue = GetValueByRef(i, j);
    dValue *= dFactor;
    return dValue;
}

// Gaussian elimination with partial pivoting: L (unit diagonal) below, U on and above.
// The last pivot is never examined.
int CMatrix::LUP_Decomp(int *&pPerm) {
    int n = m_nRows;
    pPerm = new int[n];
    for (int i = 0; i < n; i++)
        pPerm[i] = i;
    for (int k = 0; k < n - 1; k++) {
        // Pivot search: strictly greater magnitude, so the topmost of equals wins.
        double dBest = 0.0;
        int p = k;
        for (int i = k; i < n; i++) {
            double dMag = fabs(GetValue(i, k));
            if (dMag > dBest) {
                dBest = dMag;
                p = i;
            }
        }
        if (dBest == 0.0) {
            delete[] pPerm;
            pPerm = NULL;
            return -1;
        }
        int nTemp = pPerm[k];
        pPerm[k] = pPerm[p];
        pPerm[p] = nTemp;
        if (p != k)
            for (int j = 0; j < n; j++) {
                double &dK = GetValueByRef(k, j);
                double &dP = GetValueByRef(p, j);
                double dSwap = dK;
                dK = dP;
                dP = dSwap;
            }
        // Elimination below the pivot, with one reciprocal per column.
        double dRecip = 1.0 / GetValue(k, k);
        for (int i = k + 1; i < n; i++) {
            double dFactor = Multiply(i, k, dRecip);
            for (int j = k + 1; j < n; j++)
                AddValue(i, j, -(GetValue(k, j) * dFactor));
        }
    }
    return 1;
}

// Gaussian elimination without pivoting, down to and including the last row.
CMatrix *CMatrix::LU() {
    int n = m_nRows;
    for (int k = 0; k < n; k++) {
        double dPivot = GetValue(k, k);
        if (dPivot == 0.0)
            return NULL;
        for (int i = k + 1; i < n; i++) {
            double dFactor = GetValue(i, k);
            if (dFactor == 0.0)
                continue;
            dFactor = dFactor / dPivot;
            SetValue(i, k, dFactor);
            for (int j = k + 1; j < n; j++)
                AddValue(i, j, -(dFactor * GetValue(k, j)));
        }
    }
    return this;
}

// Solves LU x = P b in place for every column of pB; pPerm NULL means factors of LU().
void CMatrix::LUP_Solve(CMatrix *pLU, int *pPerm, CMatrix *pB) {
    int n = pLU->m_nRows;
    int nCols = pB->GetColumns();
    if (nCols == 0)
        return;
    if (pPerm != NULL) {
        double *y = new double[n];
        for (int c = 0; c < nCols; c++) {
            // Forward: L y = P b.
            for (int i = 0; i < n; i++) {
                double s = 0.0;
                for (int j = 0; j < i; j++)
                    s -= pLU->GetValue(i, j) * y[j];
                y[i] = pB->GetValue(pPerm[i], c) + s;
            }
            // Backward: U x = y, into pB.
            for (int i = n - 1; i >= 0; i--) {
                double s = y[i];
                for (int j = i + 1; j < n; j++)
                    s -= pLU->GetValue(i, j) * pB->GetValue(j, c);
                s /= pLU->GetValue(i, i);
                pB->SetValue(i, c, s);
            }
        }
        delete[] y;
        return;
    }
    for (int c = 0; c < nCols; c++) {
        // Forward in place: L y = b.
        for (int i = 0; i < n; i++) {
            double s = 0.0;
            for (int j = 0; j < i; j++)
                s -= pLU->GetValue(i, j) * pB->GetValue(j, c);
            pB->AddValue(i, c, s);
        }
        // Backward in place: U x = y.
        for (int i = n - 1; i >= 0; i--) {
            double s = pB->GetValue(i, c);
            for (int j = i + 1; j < n; j++)
                s -= pLU->GetValue(i, j) * pB->GetValue(j, c);
            s /= pLU->GetValue(i, i);
            pB->SetValue(i, c, s);
        }
    }
}

// Factorises and solves A X = B in place; dSeconds gets the factorisation's time alone.
bool CMatrix::SolveAxEqb(CMatrix *pB, bool bPivot, double &dSeconds) {
    dSeconds = 0.0;
    LONG nStart = AfxClock();
    int *pPerm = NULL;
    if (bPivot) {
        LUP_Decomp(pPerm);
        if (pPerm == NULL)
            return false;
    } else if (LU() == NULL) {
        return false;
    }
    LONG nEnd = AfxClock();
    LUP_Solve(this, pPerm, pB);
    delete[] pPerm;
    dSeconds = (double)(nEnd - nStart) * 0.001;
    return true;
}

// The product of the diagonal of an unpivoted LU of a copy; no sign to correct.
double CMatrix::Det() {
    CMatrix copy(*this, false);
    if (copy.LU() == NULL)
        return 0.0;
    int nCols = copy.GetColumns();
    int m = m_nRows < nCols ? m_nRows : nCols;
    double dProduct = 1.0;
    for (int i = 0; i < m; i++) {
        if (dProduct == 0.0)
            return 0.0;
        dProduct *= copy.m_pVector[i * (nCols + 1)];
    }
    return dProduct;
}

double CMatrix::SubDetSqMat(int i, int j, int nOrder) {
    if (nOrder != 2)
        return 0.0;
    return GetValue(i, j) * GetValue(i + 1, j + 1) - GetValue(i + 1, j) * GetValue(i, j + 1);
}

// A = R^T R in place, R upper, reading only the upper triangle; zeros below.
// 0 on a pivot of exactly zero; a negative pivot gives not-a-number and goes on.
int CMatrix::Cholesky() {
    int n = m_nRows;
    if (n < 1)
        return 0;
    for (int k = 0; k < n - 1; k++) {
        double d = GetValue(k, k);
        if (d == 0.0)
            return 0;
        // Update the trailing upper triangle with the raw row k.
        for (int i = k + 1; i < n; i++) {
            double p = GetValue(k, i);
            if (p == 0.0)
                continue;
            double t = p / d;
            for (int j = i; j < n; j++)
                AddValue(i, j, -(t * GetValue(k, j)));
        }
        // Row k is finished: zeros to the left, scaled from the diagonal on.
        double s = sqrt(d);
        for (int j = 0; j < k; j++)
            SetValue(k, j, 0.0);
        for (int j = k; j < n; j++)
            SetValue(k, j, GetValue(k, j) / s);
    }
    int k = n - 1;
    double d = GetValue(k, k);
    if (d == 0.0)
        return 0;
    for (int j = 0; j < k; j++)
        SetValue(k, j, 0.0);
    SetValue(k, k, d / sqrt(d));
    return 1;
}
