// Helpers for the CSparseMatrix tests: lists written and read back in one text form,
// table-driven list edits, right-hand sides.
#pragma once

#include "../common/femtest.h"
#include "../common/mesh.h"
#include "dense/matrix.h"
#include "sparse/sparsematrix.h"

#include <functional>

// Builds lists from the text that Dump writes ("row:col=value,col=value;row:..."); every
// cell is stored, 0.0 included.
inline void Load(CSparseMatrix &A, const std::string &text) {
    int nRow = 0;
    for (size_t i = 0; i < text.size();) {
        size_t nEnd = std::min(text.find_first_of(",;", i), text.size());
        std::string strCell = text.substr(i, nEnd - i);
        size_t nColon = strCell.find(':');
        if (nColon != std::string::npos) {
            nRow = std::stoi(strCell);
            strCell = strCell.substr(nColon + 1);
        }
        CSparseMatrix::cell *pCell = NULL;
        CSparseMatrix::row *pRow = NULL;
        if (strCell.empty()) { // a new row without cells
            A.Add(nRow, 0, 0.0, pRow);
            delete pRow->Remove(0);
        } else {
            A.Add(nRow, std::stoi(strCell), std::stod(strCell.substr(strCell.find('=') + 1)),
                  pCell);
        }
        i = nEnd + 1;
    }
}

// "row:col=value,col=value;row:..." in list order, so that a broken sort order shows.
inline std::string Dump(CSparseMatrix &A) {
    std::string s;
    for (CSparseMatrix::row *r = A.GetFirstRow(); r != NULL; r = r->m_pNext) {
        s += (r == A.GetFirstRow() ? "" : ";") + std::to_string(r->m_nRow) + ":";
        for (CSparseMatrix::cell *c = r->m_pFirstCell; c != NULL; c = c->m_pNext) {
            char sz[64];
            snprintf(sz, sizeof(sz), "%s%d=%.17g", c == r->m_pFirstCell ? "" : ",", c->m_nCol,
                     c->m_dValue);
            s += sz;
        }
    }
    return s;
}

// One edit of a list: the cells before, the edit, the cells after.
struct ListCase {
    const char *pszBefore;
    std::function<void(CSparseMatrix &)> edit;
    const char *pszAfter;
};

inline void ExpectListCases(const std::vector<ListCase> &cases) {
    for (size_t k = 0; k < cases.size(); k++) {
        CSparseMatrix A;
        Load(A, cases[k].pszBefore);
        cases[k].edit(A);
        EXPECT_EQ(Dump(A), cases[k].pszAfter) << "case " << k;
    }
}

// Right-hand sides from row-major values, nCols to a row.
inline CMatrix Rhs(const std::vector<double> &v, int nCols = 1) {
    CMatrix B((int)v.size() / nCols, nCols, false, 0.0);
    std::copy(v.begin(), v.end(), B.m_pVector);
    return B;
}

inline std::vector<double> Flat(const CMatrix &m) {
    return std::vector<double>(m.m_pVector, m.m_pVector + m.m_nSize);
}
