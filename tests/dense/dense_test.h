// Helpers of the dense tests: vectors and matrices from lists, their contents as lists,
// and the bytes of an object's Serialize.
#pragma once

#include "dense/matrix.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

typedef std::vector<double> V;

inline CVector MakeVector(const V &values) {
    CVector v((int)values.size(), false, 0.0);
    std::copy(values.begin(), values.end(), v.m_pVector);
    return v;
}

// An r by c matrix with the given elements in row-major order.
inline CMatrix MakeMatrix(int nRows, int nCols, const V &values) {
    CMatrix m(nRows, nCols, false, 0.0);
    std::copy(values.begin(), values.begin() + m.m_nSize, m.m_pVector);
    return m;
}

inline V Flat(const CVector &v) {
    return V(v.m_pVector, v.m_pVector + v.m_nSize);
}

inline std::vector<BYTE> Store(CVector &v) {
    CMemFile file;
    {
        CArchive ar(&file, CArchive::store);
        v.Serialize(ar);
    }
    return file.GetData();
}

inline void Load(CVector &v, const std::vector<BYTE> &bytes) {
    CMemFile file(bytes.data(), (UINT)bytes.size());
    CArchive ar(&file, CArchive::load);
    v.Serialize(ar);
}
