// Helpers of the system-matrix tests: filling and reading back cells, matrices.
#pragma once

#include "common/femtest.h"
#include "dense/matrix.h"
#include "system/systspmat.h"

// Every cell in list order as "(row,column)value", values to 17 digits.
inline std::string Dump(CSparseMatrix &m) {
    std::string s;
    char sz[64];
    for (CSparseMatrix::row *r = m.m_pFirstRow; r != NULL; r = r->m_pNext)
        for (CSparseMatrix::cell *c = r->m_pFirstCell; c != NULL; c = c->m_pNext) {
            snprintf(sz, sizeof sz, " (%d,%d)%.17g", r->m_nRow, c->m_nCol, c->m_dValue);
            s += sz;
        }
    return s.empty() ? s : s.substr(1);
}

inline int CellCount(CSparseMatrix &m) {
    int n = 0;
    for (CSparseMatrix::row *r = m.m_pFirstRow; r != NULL; r = r->m_pNext)
        n += r->NonZeros();
    return n;
}

// Adds the n by n row-major matrix a with the plain Add, which drops its zeros.
inline void Fill(CSystSpMat &m, int n, const std::vector<double> &a) {
    for (int i = 0; i < n * n; i++)
        m.Add(i / n, i % n, a[i]);
}

inline std::vector<double> Column(CMatrix &B, int k) {
    std::vector<double> v;
    for (int i = 0; i < B.GetRows(); i++)
        v.push_back(B[i][k]);
    return v;
}
