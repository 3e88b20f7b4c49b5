// CMatrix: dense products: with another matrix from the right, the two-sided congruences,
// the rank-one update and the products with a vector.
#include "dense/matrix.h"

#include <cstring>

void CMatrix::TakeOver(CMatrix &T) {
    delete[] m_pVector;
    m_pVector = T.m_pVector;
    m_nSize = T.m_nSize;
    m_nRows = T.m_nRows;
    T.m_pVector = NULL;
    T.m_nSize = 0;
    T.m_nRows = 0;
}

// X = X B. Each element sums its products in ascending k from 0.0; the loops run k before
// j so that B is read by rows, which leaves every element's order of sums unchanged.
CMatrix &CMatrix::operator*=(CMatrix &B) {
    const int r = m_nRows, m = GetColumns(), c = B.GetColumns();
    if (m == c) {
        // in place, one row at a time through a copy of it
        double *x = new double[c > 0 ? c : 1];
        for (int i = 0; i < r; i++) {
            double *pRow = m_pVector + (size_t)i * c;
            memcpy(x, pRow, sizeof(double) * c);
            for (int j = 0; j < c; j++)
                pRow[j] = 0.0;
            for (int k = 0; k < c; k++) {
                const double *pB = B.m_pVector + (size_t)k * c;
                for (int j = 0; j < c; j++)
                    pRow[j] += pB[j] * x[k];
            }
        }
        delete[] x;
        return *this;
    }
    CMatrix T(r, c, true, 0.0);
    for (int i = 0; i < r; i++) {
        double *pT = T.m_pVector + (size_t)i * c;
        const double *pX = m_pVector + (size_t)i * m;
        for (int k = 0; k < m; k++) {
            const double *pB = B.m_pVector + (size_t)k * c;
            for (int j = 0; j < c; j++)
                pT[j] += pB[j] * pX[k];
        }
    }
    TakeOver(T);
    return *this;
}

// X = X B as operator*= computes it, every element read and written through the accessors.
void CMatrix::PostMult(CMatrix &B) {
    const int r = m_nRows, m = GetColumns(), c = B.GetColumns();
    if (m == c) {
        double *x = new double[c > 0 ? c : 1];
        for (int i = 0; i < r; i++) {
            for (int k = 0; k < c; k++) {
                x[k] = GetValue(i, k);
                SetValue(i, k, 0.0);
            }
            for (int j = 0; j < c; j++)
                for (int k = 0; k < c; k++)
                    AddValue(i, j, B.GetValue(k, j) * x[k]);
        }
        delete[] x;
        return;
    }
    CMatrix T(r, c, true, 0.0);
    for (int i = 0; i < r; i++)
        for (int j = 0; j < c; j++)
            for (int k = 0; k < m; k++)
                T.AddValue(i, j, B.GetValue(k, j) * GetValue(i, k));
    TakeOver(T);
}

// X = Q X^T Q^T by way of T = Q X.
void CMatrix::PostPreMult(CMatrix &Q, int) {
    const int m = GetColumns(), v = Q.m_nRows;
    CMatrix T(v, m, true, 0.0);
    for (int i = 0; i < v; i++) {
        double *pT = T.m_pVector + (size_t)i * m;
        const double *pQ = Q.m_pVector + (size_t)i * m;
        for (int k = 0; k < m; k++) {
            const double *pX = m_pVector + (size_t)k * m;
            for (int j = 0; j < m; j++)
                pT[j] += pX[j] * pQ[k];
        }
    }
    Allocate(v, v, false, 0.0);
    for (int i = 0; i < v; i++) {
        const double *pQ = Q.m_pVector + (size_t)i * m;
        for (int j = 0; j < v; j++) {
            const double *pT = T.m_pVector + (size_t)j * m;
            double s = 0.0;
            for (int k = 0; k < m; k++)
                s += pQ[k] * pT[k];
            m_pVector[(size_t)i * v + j] = s;
        }
    }
}

// The slices of one flag: k elements apart by nStride, slice after slice nStep apart.
// bTransposed takes R(j, i) for new element i, else R(i, j).
static void MultiplySlices(double *pFirst, int nSlices, int nStep, int nStride, CMatrix &R,
                           bool bTransposed, double *x) {
    const int k = R.GetColumns();
    for (int s = 0; s < nSlices; s++) {
        double *p = pFirst + (size_t)s * nStep;
        for (int j = 0; j < k; j++)
            x[j] = p[(size_t)j * nStride];
        for (int i = 0; i < k; i++) {
            double dSum = 0.0;
            for (int j = 0; j < k; j++)
                dSum += (bTransposed ? R.m_pVector[j * k + i] : R.m_pVector[i * k + j]) * x[j];
            p[(size_t)i * nStride] = dSum;
        }
    }
}

// Bits 1 and 4 rewrite each column's k elements from row nFirst, bits 2 and 8 each row's k
// elements from column nFirst; 1 and 2 with R^T, 4 and 8 with R, applied 1, 2, 4, 8.
void CMatrix::SubMult(CMatrix &R, int nFirst, unsigned int nFlags) {
    const int k = R.GetColumns(), nCols = GetColumns();
    double *x = new double[k > 0 ? k : 1];
    double *pRows = m_pVector + (size_t)nFirst * nCols; // element (nFirst, 0)
    double *pCols = m_pVector + nFirst;                 // element (0, nFirst)
    if (nFlags & 1)
        MultiplySlices(pRows, nCols, 1, nCols, R, true, x);
    if (nFlags & 2)
        MultiplySlices(pCols, m_nRows, nCols, 1, R, true, x);
    if (nFlags & 4)
        MultiplySlices(pRows, nCols, 1, nCols, R, false, x);
    if (nFlags & 8)
        MultiplySlices(pCols, m_nRows, nCols, 1, R, false, x);
    delete[] x;
}

// Row after row of M gains t b (or b reversed) with t = dFactor times a's next element.
void CMatrix::vectAvectBT(CMatrix &M, CVector &a, CVector &b, double &dFactor, bool bReverse) {
    double *pM = M.m_pVector;
    const int n = a.m_nSize, m = b.m_nSize;
    for (int i = 0; i < n; i++) {
        const double t = dFactor * a.m_pVector[bReverse ? n - 1 - i : i];
        if (t == 0.0) {
            pM += m;
            continue;
        }
        if (bReverse)
            for (int j = m - 1; j >= 0; j--)
                *pM++ += t * b.m_pVector[j];
        else
            for (int j = 0; j < m; j++)
                *pM++ += t * b.m_pVector[j];
    }
}

// Mode 1: out += X in; mode 2: out += X^T in. X's array is walked as one flat sequence,
// each row taking as many elements as the vector it meets has.
void CMatrix::ApplyTo(CVector &in, CVector &out, int nMode) {
    const double *pX = m_pVector;
    if (nMode == 1) {
        for (int i = 0; i < m_nRows; i++) {
            double s = 0.0;
            for (int j = 0; j < in.m_nSize; j++)
                s += *pX++ * in.m_pVector[j];
            out.m_pVector[i] += s;
        }
    } else if (nMode == 2) {
        for (int i = 0; i < m_nRows; i++) {
            const double dIn = in.m_pVector[i];
            for (int j = 0; j < out.m_nSize; j++)
                out.m_pVector[j] += dIn * *pX++;
        }
    }
}

// v = X v (mode 1) or X^T v (mode 2) through a vector of zeros that then trades arrays
// with v; any other mode leaves v with that empty vector's nothing.
void CMatrix::ApplyTo(CVector &v, int nMode) {
    CVector local;
    if (nMode == 1)
        local.CVector::Allocate(m_nRows, true, 0.0);
    else if (nMode == 2)
        local.CVector::Allocate(GetColumns(), true, 0.0);
    ApplyTo(v, local, nMode);
    v.SwitchVectors(&local);
}
