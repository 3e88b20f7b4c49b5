// CMatrix: dense factorisation and solving in place: LU with and without row pivoting,
// the triangular solves, the timed driver, the determinant, Cholesky.
//
// Every element is reached through the virtual accessors and Multiply, so a derived class
// that keeps its elements elsewhere is factorised all the same. For an object whose
// dynamic type is CMatrix itself those calls can only land in CMatrix's own bodies, so
// the algorithms then run on the array directly: the same operations in the same order,
// bit for bit the same results, without a virtual call and a division per element.
#include "dense/matrix.h"

#include <cmath>
#include <typeinfo>

namespace {

// Element access through the virtual table: what a derived class sees.
struct TableAccess {
    CMatrix &m;
    double Get(int i, int j) const { return m.GetValue(i, j); }
    void Set(int i, int j, double dValue) const { m.SetValue(i, j, dValue); }
    void Add(int i, int j, double dValue) const { m.AddValue(i, j, dValue); }
    double &Ref(int i, int j) const { return m.GetValueByRef(i, j); }
    double Multiply(int i, int j, double dFactor) const { return m.Multiply(i, j, dFactor); }
};

// The bodies of CMatrix's own accessors, on the array with the column count taken once.
struct DirectAccess {
    double *p;
    int nCols;
    explicit DirectAccess(CMatrix &m) : p(m.m_pVector), nCols(m.GetColumns()) {}
    double Get(int i, int j) const { return p[i * nCols + j]; }
    void Set(int i, int j, double dValue) const { p[i * nCols + j] = dValue; }
    void Add(int i, int j, double dValue) const { p[i * nCols + j] += dValue; }
    double &Ref(int i, int j) const { return p[i * nCols + j]; }
    double Multiply(int i, int j, double dFactor) const { return p[i * nCols + j] *= dFactor; }
};

// True when no derived class can stand between the algorithms and the elements.
bool HasOwnAccessors(CMatrix &m) {
    return typeid(m) == typeid(CMatrix);
}

// Gaussian elimination with partial pivoting; see LUP_Decomp.
template <class Access> int LupDecomp(Access a, int n, int *&pPerm) {
    pPerm = new int[n];
    for (int i = 0; i < n; i++)
        pPerm[i] = i;
    for (int k = 0; k < n - 1; k++) {
        // Pivot search: strictly greater magnitude, so the topmost of equals wins.
        double dBest = 0.0;
        int p = k;
        for (int i = k; i < n; i++) {
            double dMag = fabs(a.Get(i, k));
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
                double &dK = a.Ref(k, j);
                double &dP = a.Ref(p, j);
                double dSwap = dK;
                dK = dP;
                dP = dSwap;
            }
        // Elimination below the pivot, with one reciprocal per column.
        double dRecip = 1.0 / a.Get(k, k);
        for (int i = k + 1; i < n; i++) {
            double dFactor = a.Multiply(i, k, dRecip);
            for (int j = k + 1; j < n; j++)
                a.Add(i, j, -(a.Get(k, j) * dFactor));
        }
    }
    return 1;
}

// Gaussian elimination without pivoting; see LU.
template <class Access> bool Lu(Access a, int n) {
    for (int k = 0; k < n; k++) {
        double dPivot = a.Get(k, k);
        if (dPivot == 0.0)
            return false;
        for (int i = k + 1; i < n; i++) {
            double dFactor = a.Get(i, k);
            if (dFactor == 0.0)
                continue;
            dFactor = dFactor / dPivot;
            a.Set(i, k, dFactor);
            for (int j = k + 1; j < n; j++)
                a.Add(i, j, -(dFactor * a.Get(k, j)));
        }
    }
    return true;
}

// The triangular solves for nCols right-hand sides; see LUP_Solve.
template <class Access> void LupSolve(Access lu, int n, int *pPerm, Access b, int nCols) {
    if (pPerm != NULL) {
        double *y = new double[n];
        for (int c = 0; c < nCols; c++) {
            // Forward: L y = P b.
            for (int i = 0; i < n; i++) {
                double s = 0.0;
                for (int j = 0; j < i; j++)
                    s -= lu.Get(i, j) * y[j];
                y[i] = b.Get(pPerm[i], c) + s;
            }
            // Backward: U x = y, into b.
            for (int i = n - 1; i >= 0; i--) {
                double s = y[i];
                for (int j = i + 1; j < n; j++)
                    s -= lu.Get(i, j) * b.Get(j, c);
                s /= lu.Get(i, i);
                b.Set(i, c, s);
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
                s -= lu.Get(i, j) * b.Get(j, c);
            b.Add(i, c, s);
        }
        // Backward in place: U x = y.
        for (int i = n - 1; i >= 0; i--) {
            double s = b.Get(i, c);
            for (int j = i + 1; j < n; j++)
                s -= lu.Get(i, j) * b.Get(j, c);
            s /= lu.Get(i, i);
            b.Set(i, c, s);
        }
    }
}

// Right-looking Cholesky on rows; see CMatrix::Cholesky.
template <class Access> int Cholesky(Access a, int n) {
    for (int k = 0; k < n - 1; k++) {
        double d = a.Get(k, k);
        if (d == 0.0)
            return 0;
        // Update the trailing upper triangle with the raw row k.
        for (int i = k + 1; i < n; i++) {
            double p = a.Get(k, i);
            if (p == 0.0)
                continue;
            double t = p / d;
            for (int j = i; j < n; j++)
                a.Add(i, j, -(t * a.Get(k, j)));
        }
        // Row k is finished: zeros to the left, scaled from the diagonal on.
        double s = sqrt(d);
        for (int j = 0; j < k; j++)
            a.Set(k, j, 0.0);
        for (int j = k; j < n; j++)
            a.Set(k, j, a.Get(k, j) / s);
    }
    int k = n - 1;
    double d = a.Get(k, k);
    if (d == 0.0)
        return 0;
    for (int j = 0; j < k; j++)
        a.Set(k, j, 0.0);
    a.Set(k, k, d / sqrt(d));
    return 1;
}

} // namespace

double CMatrix::Multiply(int i, int j, double dFactor) {
    double &dValue = GetValueByRef(i, j);
    dValue *= dFactor;
    return dValue;
}

// Gaussian elimination with partial pivoting: L (unit diagonal) below, U on and above.
// The last pivot is never examined.
int CMatrix::LUP_Decomp(int *&pPerm) {
    if (HasOwnAccessors(*this))
        return LupDecomp(DirectAccess(*this), m_nRows, pPerm);
    return LupDecomp(TableAccess{*this}, m_nRows, pPerm);
}

// Gaussian elimination without pivoting, down to and including the last row.
CMatrix *CMatrix::LU() {
    bool bDone =
        HasOwnAccessors(*this) ? Lu(DirectAccess(*this), m_nRows) : Lu(TableAccess{*this}, m_nRows);
    return bDone ? this : NULL;
}

// Solves LU x = P b in place for every column of pB; pPerm NULL means factors of LU().
void CMatrix::LUP_Solve(CMatrix *pLU, int *pPerm, CMatrix *pB) {
    int nCols = pB->GetColumns();
    if (nCols == 0)
        return;
    if (HasOwnAccessors(*pLU) && HasOwnAccessors(*pB))
        LupSolve(DirectAccess(*pLU), pLU->m_nRows, pPerm, DirectAccess(*pB), nCols);
    else
        LupSolve(TableAccess{*pLU}, pLU->m_nRows, pPerm, TableAccess{*pB}, nCols);
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
    if (m_nRows < 1)
        return 0;
    if (HasOwnAccessors(*this))
        return ::Cholesky(DirectAccess(*this), m_nRows);
    return ::Cholesky(TableAccess{*this}, m_nRows);
}
