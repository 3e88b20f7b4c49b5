// Helpers for the CSparseMatrix tests: lists written and read back in one text form.
#pragma once

#include "../common/femtest.h"
#include "../common/mesh.h"
#include "dense/matrix.h"
#include "sparse/sparsematrix.h"

#include <sstream>

// Builds lists from the text that Dump writes ("row:col=value,col=value;row:..."); every
// cell is stored, 0.0 included, and "row:" makes a row without cells.
inline void Load(CSparseMatrix &A, const std::string &text) {
    std::istringstream rows(text);
    for (std::string strRow; std::getline(rows, strRow, ';');) {
        const int nRow = std::stoi(strRow);
        CSparseMatrix::row *pRow = NULL;
        std::istringstream cells(strRow.substr(strRow.find(':') + 1));
        for (std::string strCell; std::getline(cells, strCell, ',');)
            A.Add(nRow, std::stoi(strCell), std::stod(strCell.substr(strCell.find('=') + 1)), pRow);
        if (pRow == NULL) {
            A.Add(nRow, 0, 0.0, pRow);
            delete pRow->Remove(0);
        }
    }
}

// Lists loaded from that text on construction.
struct Lists : CSparseMatrix {
    explicit Lists(const std::string &text) { Load(*this, text); }
};

// "row:col=value,col=value;row:..." in list order, so that a broken sort order shows.
inline std::string Dump(CSparseMatrix &A) {
    std::ostringstream os;
    os.precision(17);
    for (CSparseMatrix::row *r = A.GetFirstRow(); r != NULL; r = r->m_pNext) {
        os << (r == A.GetFirstRow() ? "" : ";") << r->m_nRow << ":";
        for (CSparseMatrix::cell *c = r->m_pFirstCell; c != NULL; c = c->m_pNext)
            os << (c == r->m_pFirstCell ? "" : ",") << c->m_nCol << "=" << c->m_dValue;
    }
    return os.str();
}

inline std::vector<double> Flat(const CMatrix &m) {
    return std::vector<double>(m.m_pVector, m.m_pVector + m.m_nSize);
}
