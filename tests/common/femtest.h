// Helpers shared by the test programs: a report recorder, report matching with open time
// fields, a private script file for the reorderers, the symmetric flag, node graphs from
// element lists and the shared graph files, and a relative error.
#pragma once

#include "frame/virtmat.h"
#include "reorder/reordermat.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <fstream>
#include <regex>
#include <sstream>
#include <string>
#include <unistd.h>
#include <vector>

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

// True when text equals the expected report, each "{T}" standing for a time field
// "%u m %2.2f s" of any value.
inline bool MatchesReport(const std::string &text, const std::string &expected) {
    std::string pattern;
    for (size_t i = 0; i < expected.size(); i++) {
        if (expected.compare(i, 3, "{T}") == 0) {
            pattern += "\\d+ m \\d+\\.\\d\\d s"; // %2.2f never pads: "5.67"
            i += 2;
            continue;
        }
        if (std::string(".^$|()[]{}*+?\\/-").find(expected[i]) != std::string::npos)
            pattern += '\\';
        pattern += expected[i];
    }
    return std::regex_match(text, std::regex(pattern));
}

// A fresh directory holding the reorderers' script while it lives, so that tests running
// side by side never share "Reord.m"; the previous name comes back after.
class ScriptDir {
public:
    ScriptDir() : m_strOldName(CReorderMat::GetScriptName()) {
        char szTemplate[] = "/tmp/femmat_test_XXXXXX";
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

// Sets CVirtMat::m_bSym for the test's duration and puts it back to false after.
class SymFlag {
public:
    explicit SymFlag(bool bSym) { CVirtMat::m_bSym = bSym; }
    ~SymFlag() { CVirtMat::m_bSym = false; }
};

typedef std::vector<std::vector<LONG>> ElementList;

// The host's road to a graph: Alloc, counting pass, Init, inserting pass.
inline void BuildGraph(CReorderMat &g, int n, const ElementList &elements) {
    g.Alloc(n);
    for (const auto &e : elements)
        g.InsertDOFs(const_cast<LONG *>(e.data()), 0, (int)e.size());
    g.Init();
    for (const auto &e : elements)
        g.InsertDOFs(const_cast<LONG *>(e.data()), 1, (int)e.size());
}

// Reads a graph of tests/data/graphs ("n m", then m lines "i j") as two-vertex elements;
// false when the file is missing.
inline bool LoadGraphFile(const std::string &strName, int &n, ElementList &edges) {
    std::ifstream in(std::string(FEMMAT_TEST_DATA) + "/graphs/" + strName + ".graph");
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

// Largest |x - ref| over largest |ref|.
inline double RelativeError(const std::vector<double> &x, const std::vector<double> &ref) {
    double dErr = 0.0, dRef = 0.0;
    for (size_t i = 0; i < ref.size(); i++) {
        dErr = std::fmax(dErr, std::fabs(x[i] - ref[i]));
        dRef = std::fmax(dRef, std::fabs(ref[i]));
    }
    return dErr / dRef;
}
