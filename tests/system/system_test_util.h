// Helpers of the system-matrix tests: reading the cells back, recording reports, the
// symmetric flag, and the meshes and dense reference of the road tests.
#pragma once

#include "system/systspmat.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <tuple>
#include <vector>

typedef std::tuple<int, int, double> Cell;

// Every cell in list order as (row, column, value).
inline std::vector<Cell> Cells(CSparseMatrix &m) {
    std::vector<Cell> cells;
    for (CSparseMatrix::row *r = m.m_pFirstRow; r != NULL; r = r->m_pNext)
        for (CSparseMatrix::cell *c = r->m_pFirstCell; c != NULL; c = c->m_pNext)
            cells.emplace_back(r->m_nRow, c->m_nCol, c->m_dValue);
    return cells;
}

inline int CellCount(CSparseMatrix &m) {
    int n = 0;
    for (CSparseMatrix::row *r = m.m_pFirstRow; r != NULL; r = r->m_pNext)
        for (CSparseMatrix::cell *c = r->m_pFirstCell; c != NULL; c = c->m_pNext)
            n++;
    return n;
}

// The table and the list are the same rows in the same order.
inline void ExpectLinked(CSystSpMat &m) {
    ASSERT_EQ(m.m_pFirstRow, m.m_nTableRows > 0 ? m.m_pRowTable : nullptr);
    for (int i = 0; i < m.m_nTableRows; i++) {
        EXPECT_EQ(m.m_pRowTable[i].m_nRow, i);
        EXPECT_EQ(m.m_pRowTable[i].m_pNext,
                  i + 1 < m.m_nTableRows ? &m.m_pRowTable[i + 1] : nullptr);
    }
    EXPECT_EQ(m.m_nRows, 0);
    EXPECT_EQ(m.m_nColumns, 0);
}

// Records every report shown while it lives; restores the previous handler after.
class ReportRecorder {
public:
    ReportRecorder() : m_pfnPrevious(AfxSetReportHandler(&Record)) { Texts().clear(); }
    ~ReportRecorder() { AfxSetReportHandler(m_pfnPrevious); }
    static std::vector<std::string> &Texts() {
        static std::vector<std::string> s_texts;
        return s_texts;
    }

private:
    static int Record(const char *pszText) {
        Texts().push_back(pszText);
        return 1;
    }
    AfxReportHandler m_pfnPrevious;
};

// Sets CVirtMat::m_bSym for the test's duration and puts it back to false after.
class SymFlag {
public:
    explicit SymFlag(bool bSym) { CVirtMat::m_bSym = bSym; }
    ~SymFlag() { CVirtMat::m_bSym = false; }
};

// The Gauss-Seidel report as the tests expect it, for a run of no measurable time.
inline std::string GaussSeidelReport(unsigned nIter, unsigned nEq, double dNorm, bool bSym) {
    char sz[512];
    snprintf(sz, sizeof sz,
             "Used time solving :   0 m 0.00 s\r\n Number of iter. :   %u\r\n NEQ             :   "
             "%u\r\n Norm of error   :   %e\r\n Symmetric       :   %u\r\n24\r\n16",
             nIter, nEq, dNorm, bSym ? 1u : 0u);
    return sz;
}

// Largest |x - ref| over largest |ref|.
inline double RelativeError(const std::vector<double> &x, const std::vector<double> &ref) {
    double dErr = 0.0, dRef = 0.0;
    for (size_t i = 0; i < ref.size(); i++) {
        dErr = std::fmax(dErr, std::fabs(x[i] - ref[i]));
        dRef = std::fmax(dRef, std::fabs(ref[i]));
    }
    return dErr / dRef;
}
