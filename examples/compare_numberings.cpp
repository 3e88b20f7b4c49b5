// Compares every numbering femmat has on one graph, and the tabu search after each: the
// bandwidth, the envelope (sum of the bandwidths at the vertices), the size of the skyline
// matrix that the numbering gives, and the time the call took.
//
//   compare_numberings FILE.graph...    graphs of "n m" and m lines "i j" (0-based edges)
//   compare_numberings --grid N         the graph of an N by N grid of bilinear quads
//
// With more than one graph a last table sums every column over all of them. Times are the
// host's wall clock around the call, the diagnostic script included; on a busy machine they
// are noisy. The library's reports are swallowed and its script goes to a temporary file.
#include "femmat.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <unistd.h>
#include <vector>

// The numberings, one row each: a new numbering of the library is one more line here.
struct Numbering {
    const char *pszName;
    void (*pfnRun)(CReorderMat &g);
};

static const Numbering s_numberings[] = {
    {"none", [](CReorderMat &) {}},
    {"MinDegReorder", [](CReorderMat &g) { g.MinDegReorder(NULL); }},
    {"MinDegReorder2", [](CReorderMat &g) { g.MinDegReorder2(); }},
    {"MinDegReorder3", [](CReorderMat &g) { g.MinDegReorder3(); }},
    {"MinDegReorder4", [](CReorderMat &g) { g.MinDegReorder4(); }},
    {"Hager1", [](CReorderMat &g) { g.Hager1(); }},
    {"Hager2", [](CReorderMat &g) { g.Hager2(); }},
    {"Hager3", [](CReorderMat &g) { g.Hager3(); }},
    {"ReverseCuthillMcKee", [](CReorderMat &g) { g.ReverseCuthillMcKee(); }},
    {"SloanReorder", [](CReorderMat &g) { g.SloanReorder(); }},
#ifdef FEMMAT_HAS_AMD
    {"AMDReorder", [](CReorderMat &g) { g.AMDReorder(); }},
#endif
};

// The searches that improve a numbering; each starts with its tabu marks cleared.
static const Numbering s_searches[] = {
    {"+ TabuReorder", [](CReorderMat &g) { g.TabuReorder(); }},
    {"+ TabuReorder2", [](CReorderMat &g) { g.TabuReorder2(); }},
};

static int Swallow(const char *) {
    return 1;
}

typedef std::vector<std::vector<LONG>> Elements;

// "n m", then m edges; false when the file can't be read or an edge leaves the graph.
static bool ReadGraph(const char *pszPath, int &n, Elements &elements) {
    FILE *pFile = fopen(pszPath, "r");
    if (pFile == NULL)
        return false;
    int m = 0;
    bool bOk = fscanf(pFile, "%d %d", &n, &m) == 2 && n >= 0 && m >= 0;
    elements.clear();
    for (int k = 0; bOk && k < m; k++) {
        long i = 0, j = 0;
        bOk = fscanf(pFile, "%ld %ld", &i, &j) == 2 && i >= 0 && j >= 0 && i < n && j < n;
        if (bOk)
            elements.push_back({(LONG)i, (LONG)j});
    }
    fclose(pFile);
    return bOk;
}

// (N + 1) by (N + 1) nodes row by row, one quad per grid cell.
static void GridGraph(int nCells, int &n, Elements &elements) {
    n = (nCells + 1) * (nCells + 1);
    elements.clear();
    for (int r = 0; r < nCells; r++)
        for (int c = 0; c < nCells; c++) {
            LONG a = r * (nCells + 1) + c;
            elements.push_back({a, a + 1, a + nCells + 2, a + nCells + 1});
        }
}

static void BuildGraph(CReorderMat &g, int n, Elements &elements) {
    g.Alloc(n);
    for (auto &e : elements)
        g.InsertDOFs(e.data(), 0, (int)e.size());
    g.Init();
    for (auto &e : elements)
        g.InsertDOFs(e.data(), 1, (int)e.size());
}

struct Measures {
    double dBand = 0, dEnv = 0, dSkyline = 0, dSeconds = 0;
    void operator+=(const Measures &o) {
        dBand += o.dBand;
        dEnv += o.dEnv;
        dSkyline += o.dSkyline;
        dSeconds += o.dSeconds;
    }
};

// Runs one step on g and measures the numbering it leaves.
static Measures Run(CReorderMat &g, const Numbering &step) {
    Measures m;
    auto tStart = std::chrono::steady_clock::now();
    step.pfnRun(g);
    m.dSeconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - tStart).count();
    g.PostReorder();
    int nBand = 0;
    m.dEnv = (double)g.Env64(&nBand);
    m.dBand = nBand;
    CSkylineMatrix sky;
    sky.Allocate(g);
    m.dSkyline = g.GetRows() > 0 ? sky.m_nValues : 0;
    return m;
}

static void PrintHeader(const char *pszTitle) {
    printf("\n%s\n", pszTitle);
    printf("%-26s %10s %14s %14s %10s\n", "numbering", "bandwidth", "envelope", "skyline",
           "time [s]");
}

static void PrintRow(const std::string &strName, const Measures &m) {
    printf("%-26s %10.0f %14.0f %14.0f %10.3f\n", strName.c_str(), m.dBand, m.dEnv, m.dSkyline,
           m.dSeconds);
}

const int kNumberings = sizeof(s_numberings) / sizeof(s_numberings[0]);
const int kSearches = sizeof(s_searches) / sizeof(s_searches[0]);

// One table for one graph; adds its rows to the totals.
static void Compare(const char *pszTitle, int n, Elements &elements,
                    std::vector<Measures> &totals) {
    CReorderMat g(1);
    BuildGraph(g, n, elements);
    char szTitle[512];
    snprintf(szTitle, sizeof(szTitle), "%s: %d vertices, %zu elements", pszTitle, n,
             elements.size());
    PrintHeader(szTitle);
    size_t nRow = 0;
    for (const Numbering &numbering : s_numberings) {
        // Every numbering starts from the graph's own order.
        for (int v = 0; v < n; v++)
            g.m_pLabels[v] = v;
        Measures m = Run(g, numbering);
        PrintRow(numbering.pszName, m);
        totals[nRow++] += m;
        std::vector<LONG> labels(g.m_pLabels, g.m_pLabels + n);
        for (const Numbering &search : s_searches) {
            std::copy(labels.begin(), labels.end(), g.m_pLabels);
            g.InitTabu(0);
            Measures t = Run(g, search);
            PrintRow(std::string("  ") + search.pszName, t);
            totals[nRow++] += t;
        }
    }
}

int main(int argc, char **argv) {
    if (argc < 2) {
        fprintf(stderr, "usage: %s FILE.graph...\n       %s --grid N\n", argv[0], argv[0]);
        return 2;
    }
    AfxSetReportHandler(Swallow);
    std::string strScript = "/tmp/compare_numberings_" + std::to_string(getpid()) + ".m";
    CReorderMat::SetScriptName(strScript.c_str());

    std::vector<Measures> totals(kNumberings * (1 + kSearches));
    int nGraphs = 0;
    Elements elements;
    int n = 0;
    if (strcmp(argv[1], "--grid") == 0) {
        int nCells = argc > 2 ? atoi(argv[2]) : 0;
        if (nCells < 1) {
            fprintf(stderr, "--grid needs a size of at least 1\n");
            return 2;
        }
        GridGraph(nCells, n, elements);
        std::string strTitle =
            "grid of " + std::to_string(nCells) + " by " + std::to_string(nCells) + " quads";
        Compare(strTitle.c_str(), n, elements, totals);
        nGraphs = 1;
    } else {
        for (int i = 1; i < argc; i++) {
            if (!ReadGraph(argv[i], n, elements)) {
                fprintf(stderr, "%s: not a graph file, skipped\n", argv[i]);
                continue;
            }
            Compare(argv[i], n, elements, totals);
            nGraphs++;
        }
    }

    if (nGraphs > 1) {
        PrintHeader(("sum over " + std::to_string(nGraphs) + " graphs").c_str());
        size_t nRow = 0;
        for (const Numbering &numbering : s_numberings) {
            PrintRow(numbering.pszName, totals[nRow++]);
            for (const Numbering &search : s_searches)
                PrintRow(std::string("  ") + search.pszName, totals[nRow++]);
        }
    }
    std::remove(strScript.c_str());
    return nGraphs > 0 ? 0 : 1;
}
