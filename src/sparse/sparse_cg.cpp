// CSparseMatrix conjugate gradients for many right-hand sides at once: each column of B
// has its own step lengths, one common test on the worst column ends the run, and each
// cell is read once per iteration however many columns there are.
#include "dense/matrix.h"
#include "dense/vector.h"
#include "sparse/sparse_internal.h"
#include "sparse/sparsematrix.h"

#include <cmath>
#include <cstdio>

namespace {

typedef CSparseMatrix::row SpRow;
typedef CSparseMatrix::cell SpCell;

// pTo[0..c) += a pFrom[0..c)
inline void AddRow(double *pTo, const double *pFrom, double a, int c) {
    for (int k = 0; k < c; k++)
        pTo[k] += a * pFrom[k];
}

// a / b, except that a residual of exactly zero gives 0.0 where the plain rule has 0/0:
// such a column takes no step and keeps its search direction at zero.
inline double Quotient(double a, double b) {
    return a == 0.0 ? 0.0 : a / b;
}

// The quantity of the stopping test; a zero reference and a zero residual count as met.
inline double Ratio(double dNorm, double v0) {
    return v0 == 0.0 && dNorm == 0.0 ? 0.0 : dNorm / v0;
}

// The product AP = A P, from the lists or from the flat arrays.
class Product {
public:
    virtual ~Product() {}
    virtual void Apply(CMatrix &P, CMatrix &AP) = 0;
};

// The upper triangle on the lists: the first cell counts once, every other for its mirror too.
class ListProduct : public Product {
public:
    explicit ListProduct(SpRow *pFirst) : m_pFirst(pFirst) {}
    void Apply(CMatrix &P, CMatrix &AP) override {
        const int c = P.GetColumns();
        const double *pP = P.m_pVector;
        double *pAP = AP.m_pVector;
        ULONG nFlops = 0;
        for (SpRow *r = m_pFirst; r != NULL; r = r->m_pNext) {
            SpCell *f = r->m_pFirstCell;
            if (f == NULL)
                continue;
            double *pRowAP = pAP + (size_t)r->m_nRow * c;
            const double *pRowP = pP + (size_t)r->m_nRow * c;
            nFlops += 2 * (ULONG)c;
            if (c == 1) {
                // one column: the row's sum stays in a register, in the same order
                const double p = pRowP[0];
                double s = pRowAP[0] + f->m_dValue * pP[f->m_nCol];
                for (SpCell *e = f->m_pNext; e != NULL; e = e->m_pNext) {
                    s += e->m_dValue * pP[e->m_nCol];
                    if (e->m_nCol == r->m_nRow) // its mirror is this very element
                        s += e->m_dValue * p;
                    else
                        pAP[e->m_nCol] += e->m_dValue * p;
                    nFlops += 4;
                }
                pRowAP[0] = s;
                continue;
            }
            AddRow(pRowAP, pP + (size_t)f->m_nCol * c, f->m_dValue, c);
            for (SpCell *e = f->m_pNext; e != NULL; e = e->m_pNext) {
                AddRow(pRowAP, pP + (size_t)e->m_nCol * c, e->m_dValue, c);
                AddRow(pAP + (size_t)e->m_nCol * c, pRowP, e->m_dValue, c);
                nFlops += 4 * (ULONG)c;
            }
        }
        CVirtMat::m_Flops += nFlops;
    }

private:
    SpRow *m_pFirst;
};

// The same on the flat copy; a row of count 0 is a row of the identity.
class ArrayProduct : public Product {
public:
    ArrayProduct(const double *pValues, const int *pCounts, const int *pColumns, int n)
        : m_pValues(pValues), m_pCounts(pCounts), m_pColumns(pColumns), m_n(n) {}
    void Apply(CMatrix &P, CMatrix &AP) override {
        const int c = P.GetColumns();
        const double *pP = P.m_pVector;
        double *pAP = AP.m_pVector;
        const double *pValue = m_pValues;
        const int *pColumn = m_pColumns;
        ULONG nFlops = 0;
        for (int r = 0; r < m_n; r++) {
            const int nCount = m_pCounts[r];
            double *pRowAP = pAP + (size_t)r * c;
            const double *pRowP = pP + (size_t)r * c;
            if (nCount == 0) {
                for (int k = 0; k < c; k++)
                    pRowAP[k] = pRowP[k];
                nFlops += (ULONG)c;
                continue;
            }
            if (c == 1) {
                // one column: the row's sum stays in a register, in the same order
                double s = pRowAP[0];
                for (int q = 0; q < nCount; q++)
                    s += pValue[q] * pP[pColumn[q]];
                pRowAP[0] = s;
                const double p = pRowP[0];
                for (int q = 1; q < nCount; q++)
                    pAP[pColumn[q]] += pValue[q] * p;
            } else {
                for (int q = 0; q < nCount; q++)
                    AddRow(pRowAP, pP + (size_t)pColumn[q] * c, pValue[q], c);
                for (int q = 1; q < nCount; q++)
                    AddRow(pAP + (size_t)pColumn[q] * c, pRowP, pValue[q], c);
            }
            nFlops += (4 * (ULONG)nCount - 2) * (ULONG)c;
            pValue += nCount;
            pColumn += nCount;
        }
        CVirtMat::m_Flops += nFlops;
    }

private:
    const double *m_pValues;
    const int *m_pCounts;
    const int *m_pColumns;
    int m_n;
};

// The work storage of one call: residuals, products, the solution so far, the per-column
// sums of squares and their previous values, and the denominators of the step lengths.
struct Work {
    CMatrix R, AP, X;
    CVector norms, old, den;

    Work(CMatrix &B, int n) : R(B), AP(n, B.GetColumns(), true, 0.0) {
        X.Allocate(B.GetRows(), B.GetColumns(), true, 0.0);
        R.Vect2Norm(norms, -1);
    }
    void Release() {
        norms.Allocate(0, false, 0.0);
        old.Allocate(0, false, 0.0);
        den.Allocate(0, false, 0.0);
        X.Allocate(0, 0, false, 0.0);
        AP.Allocate(0, 0, false, 0.0);
        R.Allocate(0, 0, false, 0.0);
    }
};

// The iterations, P being the caller's B; yields the count completed, the iteration that
// meets the test not counted. norms holds the sums of squares of R when it stops.
int Iterate(Product &product, CMatrix &P, Work &w, int nMaxIter, double dTol, double v0,
            CVector *pTimes) {
    const int m = P.GetRows(), c = P.GetColumns();
    double *pT = pTimes != NULL ? pTimes->m_pVector : NULL;
    w.den.Allocate(c, false, 0.0);
    double *pP = P.m_pVector, *pR = w.R.m_pVector, *pAP = w.AP.m_pVector, *pX = w.X.m_pVector;
    double *pNorms = w.norms.m_pVector, *pOld = w.old.m_pVector, *pDen = w.den.m_pVector;
    for (int nIter = 0; nIter < nMaxIter; nIter++) {
        if (pT != NULL)
            pT[0] -= (double)AfxClock();
        w.AP.Initialize(0.0);
        product.Apply(P, w.AP);
        if (pT != NULL) {
            pT[0] += (double)AfxClock();
            pT[1] -= (double)AfxClock();
        }

        // step lengths: the sum of squares over the column's p^T A p
        w.old = w.norms;
        pOld = w.old.m_pVector;
        for (int k = 0; k < c; k++)
            pDen[k] = 0.0;
        for (int i = 0; i < m; i++)
            for (int k = 0; k < c; k++)
                pDen[k] += pP[i * c + k] * pAP[i * c + k];
        for (int k = 0; k < c; k++)
            pNorms[k] = Quotient(pNorms[k], pDen[k]);

        // the update, and in the same pass the new sums of squares of R, summed row after
        // row as Vect2Norm sums them; the step lengths move to den
        for (int k = 0; k < c; k++) {
            pDen[k] = pNorms[k];
            pNorms[k] = 0.0;
        }
        for (int i = 0; i < m; i++)
            for (int k = 0; k < c; k++) {
                pX[i * c + k] += pDen[k] * pP[i * c + k];
                const double r = pR[i * c + k] - pDen[k] * pAP[i * c + k];
                pR[i * c + k] = r;
                pNorms[k] += r * r;
            }
        if (Ratio(w.norms.InfNorm(), v0) < dTol) {
            if (pT != NULL)
                pT[1] += (double)AfxClock();
            return nIter;
        }

        // the next direction: P beta + R
        for (int k = 0; k < c; k++)
            pOld[k] = Quotient(pNorms[k], pOld[k]);
        for (int i = 0; i < m; i++)
            for (int k = 0; k < c; k++)
                pP[i * c + k] = pP[i * c + k] * pOld[k] + pR[i * c + k];
        if (pT != NULL)
            pT[1] += (double)AfxClock();
    }
    return nMaxIter < 0 ? 0 : nMaxIter;
}

// Row i of M divided by scale[i] in every column.
void DivideRows(CMatrix &M, const double *scale) {
    const int c = M.GetColumns();
    for (int i = 0; i < M.GetRows(); i++)
        for (int k = 0; k < c; k++)
            M.m_pVector[(size_t)i * c + k] /= scale[i];
}

} // namespace

// The flat copy solves: the matrix is left alone, a lone 1.0 row is the identity, and the
// reference of the stopping test is the (scaled) right-hand side.
int CSparseMatrix::ConjGradient2(CVirtMat &mB, double &dNorm, int nMaxIter, double dTol,
                                 CVector *pTimes, bool bScale) {
    CMatrix &B = static_cast<CMatrix &>(mB);
    if (pTimes != NULL)
        pTimes->Allocate(2, true, 0.0);
    const int c = B.GetColumns(), m = B.GetRows(), n = GetRows();
    if (m == 0) {
        dNorm = 0.0;
        return 0;
    }
    double *pValues;
    int *pCounts, *pColumns;
    MakeArrayMat(pValues, pCounts, pColumns, n);

    // scaling by the square roots of the diagonal, on the copy only
    double *scale = NULL;
    if (bScale) {
        scale = new double[n];
        const double *pRow = pValues;
        for (int r = 0; r < n; pRow += pCounts[r], r++)
            scale[r] = pCounts[r] != 0 ? sqrt(pRow[0]) : 1.0;
        int e = 0;
        for (int r = 0; r < n; r++)
            for (int q = 0; q < pCounts[r]; q++, e++)
                pValues[e] /= scale[pColumns[e]] * scale[r];
        DivideRows(B, scale);
    }

    Work w(B, n);
    const double v0 = w.norms.InfNorm();
    dNorm = v0;
    ArrayProduct product(pValues, pCounts, pColumns, n);
    const int nIter = Iterate(product, B, w, nMaxIter, dTol, v0, pTimes);

    if (pTimes != NULL)
        *pTimes *= 0.001;
    delete[] pValues;
    delete[] pCounts;
    delete[] pColumns;
    dNorm = w.norms.InfNorm();
    if (scale != NULL) {
        DivideRows(w.X, scale);
        delete[] scale;
    }
    B.SwitchVectors(&w.X);
    w.Release();
    CVirtMat::m_Flops += (9 * (ULONG)m + 1) * (ULONG)nIter * (ULONG)c;

    if (pTimes != NULL) {
        char szText[512];
        snprintf(szText, sizeof(szText),
                 "Used time:\r\n Solving (1)    :   %s\r\n Solving (2)    :   %s\r\n"
                 " Iter/Eq's      :   %6.3f %%\r\n ||v_0||        :   %.3e\r\n"
                 " ||v_i||         :   %.3e\r\n ||v_i||/||v_0||:   %.3e\r\n (norms are inf-norm)",
                 (const char *)CVirtMat::FormatTime(pTimes->m_pVector[0]),
                 (const char *)CVirtMat::FormatTime(pTimes->m_pVector[1]),
                 100.0 * nIter / GetRows(), v0, dNorm, Ratio(dNorm, v0));
        AfxMessageBox(szText, 0, 0);
    }
    return nIter;
}

// The list form: from the start vector pX0 if given, scaling the lists in place; the
// reference of the stopping test is the right-hand side as passed in.
int CSparseMatrix::ConjGradient(CVirtMat &mB, CVirtMat *pX0, double &dNorm, int nMaxIter,
                                double dTol, CVector *pTimes, bool bScale) {
    CMatrix &B = static_cast<CMatrix &>(mB);
    CMatrix *pStart = static_cast<CMatrix *>(pX0);
    if (pTimes != NULL)
        pTimes->Allocate(2, true, 0.0);
    const int m = B.GetRows(), c = B.GetColumns(), n = GetRows();
    if (m == 0) {
        dNorm = 0.0;
        return 0;
    }
    CVector norms;
    B.Vect2Norm(norms, -1);
    const double v0 = norms.InfNorm();
    dNorm = v0;

    // B becomes the first residual b - A x0
    if (pStart != NULL) {
        *pStart *= -1.0;
        pStart->PreMult(this, B, true, 1);
    }

    // scaling by the square roots of the diagonal, on the lists themselves
    double *scale = NULL;
    if (bScale) {
        scale = new double[n];
        for (int i = 0; i < n; i++)
            scale[i] = 1.0;
        for (SpRow *r = m_pFirstRow; r != NULL; r = r->m_pNext)
            for (SpCell *e = r->m_pFirstCell; e != NULL && e->m_nCol <= r->m_nRow; e = e->m_pNext)
                if (e->m_nCol == r->m_nRow)
                    scale[r->m_nRow] = sqrt(e->m_dValue);
        for (SpRow *r = m_pFirstRow; r != NULL; r = r->m_pNext)
            for (SpCell *e = r->m_pFirstCell; e != NULL; e = e->m_pNext)
                e->m_dValue /= scale[e->m_nCol] * scale[r->m_nRow];
        DivideRows(B, scale);
    }

    Work w(B, n);
    ListProduct product(m_pFirstRow);
    const int nIter = Iterate(product, B, w, nMaxIter, dTol, v0, pTimes);
    CVirtMat::m_Flops += (9 * (ULONG)m + 1) * (ULONG)nIter * (ULONG)c;
    if (pTimes != NULL)
        *pTimes *= 0.001;
    if (scale != NULL) {
        DivideRows(w.X, scale);
        delete[] scale;
    }
    dNorm = w.norms.InfNorm();
    if (pStart != NULL) {
        *pStart *= -1.0;
        *pStart += w.X;
    } else {
        B.SwitchVectors(&w.X);
    }
    return nIter;
}
