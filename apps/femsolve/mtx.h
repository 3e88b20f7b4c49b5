// Matrix Market files for femsolve: a sparse system matrix in coordinate form, right-hand
// sides and solutions in array form. Real and integer fields, general and symmetric
// matrices are read; a symmetric file holds one triangle and stands for both.
#pragma once

#include <string>
#include <vector>

struct MtxData {
    int nRows = 0, nCols = 0;
    bool bSymmetric = false;     // the file stated symmetry: only one triangle is listed
    bool bArray = false;         // dense column-major values instead of triplets
    std::vector<int> rows, cols; // 0-based, coordinate form
    std::vector<double> values;  // coordinate values, or nRows * nCols column-major
};

// Reads a whole .mtx text. False with a one-line reason in error on malformed input.
bool ReadMtx(const std::string &text, MtxData &data, std::string &error);

// Writes the upper triangle of a symmetric matrix (rows[k] <= cols[k]) as a symmetric
// coordinate file: the lower triangle is what the format lists, so the pairs are swapped.
bool WriteMtxSymmetric(const std::string &path, int n, const std::vector<int> &rows,
                       const std::vector<int> &cols, const std::vector<double> &values);
// Writes nRows by nCols column-major values as a dense array file.
bool WriteMtxArray(const std::string &path, int nRows, int nCols,
                   const std::vector<double> &values);
