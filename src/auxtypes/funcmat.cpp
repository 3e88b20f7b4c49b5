#include "auxtypes/funcmat.h"

#include <cstdarg>
#include <new>

CFuncMat::CFuncMat() : m_nRows(0), m_nColumns(0), m_ppFuncs(NULL) {}

CFuncMat::CFuncMat(int nRows, int nColumns, bool bInit, double *pFill)
    : m_nRows(0), m_nColumns(0), m_ppFuncs(NULL) {
    Allocate(nRows, nColumns, bInit, pFill);
}

CFuncMat::~CFuncMat() {
    delete[] m_ppFuncs;
}

bool CFuncMat::Allocate(int *pSizes, int nDims) {
    int nRows = pSizes[0];
    int nColumns = nDims >= 2 ? pSizes[1] : nRows;
    bool bInit = nDims >= 3 ? pSizes[2] != 0 : true;
    return Allocate(nRows, nColumns, bInit, NULL) > 0;
}

// Sizes the array to nRows * nColumns entries, keeping an array of that count as it is.
int CFuncMat::Allocate(int nRows, int nColumns, bool bInit, double *pFill) {
    long long n = (long long)nRows * nColumns;
    if (n < 0 || n > 0x7FFFFFFF)
        return -1;
    // Phase 1: the array, kept when its count stands.
    if (m_ppFuncs == NULL || (long long)m_nRows * m_nColumns != n) {
        delete[] m_ppFuncs;
        m_ppFuncs = new (std::nothrow) double *[n];
    }
    m_nRows = nRows;
    m_nColumns = nColumns;
    if (m_ppFuncs == NULL)
        return n == 0 ? 0 : -1;
    // Phase 2: the fill.
    if (bInit)
        for (long long k = 0; k < n; k++)
            m_ppFuncs[k] = pFill;
    return (int)n;
}

double CFuncMat::EvalFunc(int r, int c, double x) {
    return reinterpret_cast<PFUNC1>(m_ppFuncs[r * m_nColumns + c])(x);
}

// Shapes out like this matrix; the number of entries both arrays hold.
int CFuncMat::ShapeOut(CMatrix &out) const {
    out.Allocate(m_nRows, m_nColumns, false, 0.0);
    int n = m_ppFuncs ? m_nRows * m_nColumns : 0;
    return out.m_nSize < n ? out.m_nSize : n;
}

void CFuncMat::EvalFunc(CMatrix &out, double x) {
    int n = ShapeOut(out);
    for (int k = 0; k < n; k++)
        out.m_pVector[k] = m_ppFuncs[k] ? reinterpret_cast<PFUNC1>(m_ppFuncs[k])(x) : 0.0;
}

void CFuncMat::EvalFunc(CMatrix &out, double x, ...) const {
    va_list args;
    va_start(args, x);
    double y = va_arg(args, double);
    va_end(args);
    int n = ShapeOut(out);
    for (int k = 0; k < n; k++)
        out.m_pVector[k] = m_ppFuncs[k] ? reinterpret_cast<PFUNC2>(m_ppFuncs[k])(x, y) : 0.0;
}
