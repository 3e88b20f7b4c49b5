// Helpers of the skyline tests: a recording report handler, report matching with the time
// fields left open, node graphs from element lists and a dense reference solver.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <regex>
#include <string>
#include <vector>

#include "dense/matrix.h"
#include "reorder/reordermat.h"
#include "skyline/skylinematrix.h"

namespace skytest {

// Records every report while alive, then restores the previous handler.
class ReportRecorder {
public:
    ReportRecorder() {
        Texts().clear();
        m_pfnPrevious = AfxSetReportHandler(&ReportRecorder::Record);
    }
    ~ReportRecorder() { AfxSetReportHandler(m_pfnPrevious); }
    static std::vector<std::string> &Texts() {
        static std::vector<std::string> texts;
        return texts;
    }
    void Clear() { Texts().clear(); }

private:
    static int Record(const char *pszText) {
        Texts().push_back(pszText);
        return 0;
    }
    AfxReportHandler m_pfnPrevious;
};

// True when text equals the expected report, each "{T}" in it standing for a time field
// "%u m %2.2f s".
inline bool MatchesReport(const std::string &text, const std::string &expected) {
    std::string pattern;
    for (size_t i = 0; i < expected.size(); i++) {
        if (expected.compare(i, 3, "{T}") == 0) {
            pattern += "\\d+ m \\d+\\.\\d\\d s";
            i += 2;
            continue;
        }
        if (std::string(".^$|()[]{}*+?\\/-").find(expected[i]) != std::string::npos)
            pattern += '\\';
        pattern += expected[i];
    }
    return std::regex_match(text, std::regex(pattern));
}

// Feeds element lists to a graph in the host's calling order; labels stay the identity.
inline void BuildGraph(CReorderMat &graph, int n, std::vector<std::vector<LONG>> elements) {
    graph.Alloc(n);
    for (auto &e : elements)
        graph.InsertDOFs(e.data(), 0, (int)e.size());
    graph.Init();
    for (auto &e : elements)
        graph.InsertDOFs(e.data(), 1, (int)e.size());
}

// Sets the labels (vertex -> label) and resolves them.
inline void SetLabels(CReorderMat &graph, const std::vector<int> &labels) {
    for (size_t v = 0; v < labels.size(); v++)
        graph.m_pLabels[v] = labels[v];
    graph.PostReorder();
}

// Checks the storage invariants tying heights, diagonal indices and addresses together.
inline void ExpectConsistent(CSkylineMatrix &m) {
    int nSum = 0;
    for (int i = 0; i < m.m_nRows; i++) {
        EXPECT_GE(m.m_pHeights[i], 1) << "row " << i;
        nSum += m.m_pHeights[i];
        EXPECT_EQ(m.m_pDiagIndex[i], nSum - 1) << "row " << i;
        EXPECT_EQ(m.m_ppDiag[i], m.m_pValues + nSum - 1) << "row " << i;
    }
    EXPECT_EQ(m.m_nValues, nSum);
}

// Solves the dense row-major n by n system A X = B (nCols columns) with the library's dense
// solver, row pivoting on; X lands in B.
inline void DenseSolve(const std::vector<double> &A, std::vector<double> &B, int n, int nCols) {
    CMatrix M(n, n), X(n, nCols);
    std::copy(A.begin(), A.end(), M.m_pVector);
    std::copy(B.begin(), B.end(), X.m_pVector);
    double dSeconds = 0.0;
    ASSERT_TRUE(M.SolveAxEqb(&X, true, dSeconds));
    std::copy(X.m_pVector, X.m_pVector + X.m_nSize, B.begin());
}

} // namespace skytest
