// Helpers of the node-graph tests: graph building, access to the protected measures,
// a report recorder, a temporary script directory and file reading.
#pragma once

#include "reorder/reordermat.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <unistd.h>
#include <vector>

// Opens the protected operations the tests look at.
class TestGraph : public CReorderMat {
public:
    explicit TestGraph(int nMode = 0) : CReorderMat(nMode) {}
    using CReorderMat::B_f;
    using CReorderMat::Move;
};

typedef std::vector<std::vector<LONG>> ElementList;

// The host's road: Alloc, counting pass, Init, inserting pass.
inline void BuildGraph(CReorderMat &g, int n, const ElementList &elements) {
    g.Alloc(n);
    for (const auto &e : elements)
        g.InsertDOFs(const_cast<LONG *>(e.data()), 0, (int)e.size());
    g.Init();
    for (const auto &e : elements)
        g.InsertDOFs(const_cast<LONG *>(e.data()), 1, (int)e.size());
}

inline std::vector<LONG> Row(const CReorderMat &g, int i) {
    return std::vector<LONG>(g.m_ppRows[i], g.m_ppRows[i] + g.m_pRowSizes[i]);
}

inline std::vector<LONG> Labels(const CReorderMat &g) {
    return std::vector<LONG>(g.m_pLabels, g.m_pLabels + g.m_nRows);
}

inline bool IsPermutation(const CReorderMat &g) {
    std::vector<int> seen(g.m_nRows, 0);
    for (int v = 0; v < g.m_nRows; v++) {
        LONG l = g.m_pLabels[v];
        if (l < 0 || l >= g.m_nRows || seen[l]++)
            return false;
    }
    return true;
}

// Elements of an n by n grid of bilinear quads; nodes numbered row by row.
inline ElementList GridElements(int n) {
    ElementList elements;
    for (int r = 0; r < n; r++) {
        for (int c = 0; c < n; c++) {
            LONG a = r * (n + 1) + c;
            elements.push_back({a, a + 1, a + n + 2, a + n + 1});
        }
    }
    return elements;
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
        return IDOK;
    }
    AfxReportHandler m_pfnPrevious;
};

// A fresh directory for script files, removed with its contents after the test.
class ScriptDir {
public:
    ScriptDir() : m_strOldName(CReorderMat::GetScriptName()) {
        char szTemplate[] = "/tmp/reorder_test_XXXXXX";
        const char *pszDir = mkdtemp(szTemplate);
        m_strDir = pszDir ? pszDir : "/tmp";
        m_strScript = m_strDir + "/Reord.m";
        CReorderMat::SetScriptName(m_strScript.c_str());
    }
    ~ScriptDir() {
        CReorderMat::SetScriptName(m_strOldName.c_str());
        std::remove(m_strScript.c_str());
        rmdir(m_strDir.c_str());
    }
    const std::string &Script() const { return m_strScript; }
    bool Exists() const { return access(m_strScript.c_str(), F_OK) == 0; }
    std::string Read() const {
        std::ifstream in(m_strScript, std::ios::binary);
        std::stringstream ss;
        ss << in.rdbuf();
        return ss.str();
    }

private:
    std::string m_strOldName;
    std::string m_strDir;
    std::string m_strScript;
};

// Reads a graph file of the shared data ("n m", then m lines "i j"); false when missing.
inline bool LoadGraphFile(const std::string &strName, int &n, ElementList &edges) {
    const char *pszDir = std::getenv("FEMMAT_GRAPHS");
    std::string strPath =
        std::string(pszDir ? pszDir : "/work/shared/data/graphs") + "/" + strName + ".graph";
    std::ifstream in(strPath);
    int m = 0;
    if (!(in >> n >> m))
        return false;
    edges.clear();
    for (int k = 0; k < m; k++) {
        LONG i, j;
        in >> i >> j;
        edges.push_back({i, j});
    }
    return (bool)in;
}
