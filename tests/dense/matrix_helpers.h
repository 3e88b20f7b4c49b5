// Small helpers for the CMatrix tests: building a matrix from its rows and reading it
// back as a flat list.
#pragma once

#include "dense/matrix.h"

#include <vector>

// An r by c matrix with the given elements in row-major order.
inline CMatrix MakeMatrix(int nRows, int nCols, const std::vector<double> &values) {
    CMatrix m(nRows, nCols, false, 0.0);
    for (int k = 0; k < nRows * nCols; k++)
        m.m_pVector[k] = values[k];
    return m;
}

inline std::vector<double> Flat(const CMatrix &m) {
    return std::vector<double>(m.m_pVector, m.m_pVector + m.m_nSize);
}
