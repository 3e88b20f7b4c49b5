// Reverse Cuthill-McKee, Sloan and AMD against Boost.Graph's cuthill_mckee_ordering and
// sloan_ordering: first a table per graph (bandwidth, profile, best time of a few runs) on
// the thirty dwt graphs, a 1000 by 1000 grid and a 100^3-node mesh of hexahedra, then the
// same runs as Google benchmarks. The times are of the numberings alone, without script or
// report. Boost is optional: without it only our columns appear.
//
//   bench_numberings [--table-only] [--no-table] [--small] [benchmark flags]
//
// --small leaves the two large graphs out of the table; Boost's Sloan on the mesh runs only
// with --boost-sloan-mesh (it takes hours), its columns otherwise repeat ours.
#include "reorder/reordermat.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#ifdef FEMMAT_BENCH_BOOST
#include <boost/graph/compressed_sparse_row_graph.hpp>
#include <boost/graph/cuthill_mckee_ordering.hpp>
#include <boost/graph/sloan_ordering.hpp>
#endif

// Reaches the numberings without their script and report.
class CBenchGraph : public CReorderMat {
public:
    CBenchGraph() : CReorderMat(0) {}
    using CReorderMat::NumberRCM;
    using CReorderMat::NumberSloan;
#ifdef FEMMAT_HAS_AMD
    using CReorderMat::NumberAMD;
#endif
};

typedef std::vector<std::pair<LONG, LONG>> EdgeList;

static void BuildFromElements(CReorderMat &g, int n,
                              const std::function<void(std::function<void(LONG *, int)>)> &each) {
    g.Alloc(n);
    each([&](LONG *pDOFs, int nDOFs) { g.InsertDOFs(pDOFs, 0, nDOFs); });
    g.Init();
    each([&](LONG *pDOFs, int nDOFs) { g.InsertDOFs(pDOFs, 1, nDOFs); });
}

static bool LoadGraph(const std::string &strName, CReorderMat &g) {
    std::ifstream in(std::string(FEMMAT_GRAPH_DATA) + "/" + strName + ".graph");
    int n = 0, m = 0;
    if (!(in >> n >> m))
        return false;
    EdgeList edges(m);
    for (auto &e : edges)
        in >> e.first >> e.second;
    BuildFromElements(g, n, [&](std::function<void(LONG *, int)> add) {
        for (auto e : edges) {
            LONG dofs[2] = {e.first, e.second};
            add(dofs, 2);
        }
    });
    return (bool)in;
}

// nx by nx vertices, each joined to its four neighbours.
static void BuildGrid(CReorderMat &g, int nx) {
    BuildFromElements(g, nx * nx, [&](std::function<void(LONG *, int)> add) {
        for (int y = 0; y < nx; y++) {
            for (int x = 0; x < nx; x++) {
                LONG a = y * nx + x;
                LONG right[2] = {a, a + 1}, up[2] = {a, a + nx};
                if (x + 1 < nx)
                    add(right, 2);
                if (y + 1 < nx)
                    add(up, 2);
            }
        }
    });
}

// nx^3 nodes, the hexahedra between them joining each node to its 26 neighbours.
static void BuildMesh3D(CReorderMat &g, int nx) {
    BuildFromElements(g, nx * nx * nx, [&](std::function<void(LONG *, int)> add) {
        for (int z = 0; z + 1 < nx; z++) {
            for (int y = 0; y + 1 < nx; y++) {
                for (int x = 0; x + 1 < nx; x++) {
                    LONG a = (z * nx + y) * nx + x;
                    LONG s = nx, t = nx * nx;
                    LONG dofs[8] = {a,     a + 1,     a + s + 1,     a + s,
                                    a + t, a + t + 1, a + t + s + 1, a + t + s};
                    add(dofs, 8);
                }
            }
        }
    });
}

struct Measures {
    long long nBand = 0;
    long long nProfile = 0; // lower triangle: label less the lowest neighbour label, per row
};

static Measures Measure(const CReorderMat &g, const std::vector<LONG> &labels) {
    Measures m;
    for (int v = 0; v < g.m_nRows; v++) {
        LONG nLow = labels[v];
        for (int j = 0; j < g.m_pRowSizes[v]; j++) {
            LONG f = labels[g.m_ppRows[v][j]];
            nLow = std::min(nLow, f);
            m.nBand = std::max<long long>(m.nBand, std::abs(f - labels[v]));
        }
        m.nProfile += labels[v] - nLow;
    }
    return m;
}

static std::vector<LONG> Labels(const CReorderMat &g) {
    return std::vector<LONG>(g.m_pLabels, g.m_pLabels + g.m_nRows);
}

#ifdef FEMMAT_BENCH_BOOST
// Both directions of every edge, 32-bit vertices as in the node graph.
typedef boost::compressed_sparse_row_graph<boost::directedS, boost::no_property, boost::no_property,
                                           boost::no_property, unsigned, unsigned>
    BoostGraph;
typedef boost::graph_traits<BoostGraph>::vertex_descriptor BoostVertex;

static std::unique_ptr<BoostGraph> MakeBoostGraph(const CReorderMat &g) {
    std::vector<std::pair<unsigned, unsigned>> arcs;
    for (int v = 0; v < g.m_nRows; v++)
        for (int j = 0; j < g.m_pRowSizes[v]; j++)
            arcs.push_back({(unsigned)v, (unsigned)g.m_ppRows[v][j]});
    return std::make_unique<BoostGraph>(boost::edges_are_unsorted_multi_pass, arcs.begin(),
                                        arcs.end(), (unsigned)g.m_nRows);
}

// Boost's reverse Cuthill-McKee; labels from its ordering.
static void BoostRCM(BoostGraph &bg, std::vector<LONG> &labels) {
    const unsigned n = num_vertices(bg);
    std::vector<BoostVertex> order(n);
    std::vector<boost::default_color_type> colors(n);
    auto color = boost::make_iterator_property_map(colors.begin(), get(boost::vertex_index, bg));
    boost::cuthill_mckee_ordering(bg, order.rbegin(), color, boost::make_out_degree_map(bg));
    labels.resize(n);
    for (unsigned k = 0; k < n; k++)
        labels[order[k]] = k;
}

// Boost's Sloan with its default weights, once per component (it numbers one).
static void BoostSloan(BoostGraph &bg, const std::vector<unsigned> &roots,
                       std::vector<LONG> &labels) {
    const unsigned n = num_vertices(bg);
    std::vector<BoostVertex> order;
    order.reserve(n);
    std::vector<boost::default_color_type> colors(n);
    std::vector<double> priorities(n);
    auto index = get(boost::vertex_index, bg);
    auto color = boost::make_iterator_property_map(colors.begin(), index);
    auto priority = boost::make_iterator_property_map(priorities.begin(), index);
    auto degree = boost::make_out_degree_map(bg);
    for (unsigned r : roots) {
        BoostVertex s = r;
        BoostVertex e = boost::sloan_start_end_vertices(bg, s, color, degree);
        boost::sloan_ordering(bg, s, e, std::back_inserter(order), color, degree, priority);
    }
    labels.resize(n);
    for (unsigned k = 0; k < order.size(); k++)
        labels[order[k]] = k;
}
#endif

// The first vertex of each component.
static std::vector<unsigned> ComponentRoots(const CReorderMat &g) {
    std::vector<unsigned> roots;
    std::vector<char> seen(g.m_nRows, 0);
    std::vector<int> stack;
    for (int r = 0; r < g.m_nRows; r++) {
        if (seen[r])
            continue;
        roots.push_back(r);
        seen[r] = 1;
        stack.push_back(r);
        while (!stack.empty()) {
            int v = stack.back();
            stack.pop_back();
            for (int j = 0; j < g.m_pRowSizes[v]; j++) {
                int u = g.m_ppRows[v][j];
                if (!seen[u]) {
                    seen[u] = 1;
                    stack.push_back(u);
                }
            }
        }
    }
    return roots;
}

// A graph of the table and of the benchmarks, built once on first use.
struct BenchGraph {
    CBenchGraph g;
    std::vector<unsigned> roots;
#ifdef FEMMAT_BENCH_BOOST
    std::unique_ptr<BoostGraph> bg;
#endif
};

static std::vector<std::string> DwtNames() {
    return {"dwt_59",  "dwt_66",  "dwt_72",   "dwt_87",   "dwt_162",  "dwt_193",
            "dwt_198", "dwt_209", "dwt_221",  "dwt_234",  "dwt_245",  "dwt_307",
            "dwt_310", "dwt_346", "dwt_361",  "dwt_419",  "dwt_492",  "dwt_503",
            "dwt_512", "dwt_592", "dwt_607",  "dwt_758",  "dwt_869",  "dwt_878",
            "dwt_918", "dwt_992", "dwt_1005", "dwt_1007", "dwt_1242", "dwt_2680"};
}

static BenchGraph &Graph(const std::string &strName) {
    static std::map<std::string, std::unique_ptr<BenchGraph>> s_graphs;
    auto &p = s_graphs[strName];
    if (!p) {
        p = std::make_unique<BenchGraph>();
        if (strName == "grid1000")
            BuildGrid(p->g, 1000);
        else if (strName == "hex100")
            BuildMesh3D(p->g, 100);
        else if (!LoadGraph(strName, p->g))
            std::fprintf(stderr, "missing graph %s\n", strName.c_str());
        p->roots = ComponentRoots(p->g);
#ifdef FEMMAT_BENCH_BOOST
        p->bg = MakeBoostGraph(p->g);
#endif
    }
    return *p;
}

enum Method { OurRCM, OurSloan, OurAMD, BoostRCMMethod, BoostSloanMethod };

static void Run(BenchGraph &bg, Method m, std::vector<LONG> &labels) {
    switch (m) {
    case OurRCM:
        bg.g.NumberRCM();
        break;
    case OurSloan:
        bg.g.NumberSloan(2, 1);
        break;
    case OurAMD:
#ifdef FEMMAT_HAS_AMD
        bg.g.NumberAMD();
#endif
        break;
#ifdef FEMMAT_BENCH_BOOST
    case BoostRCMMethod:
        BoostRCM(*bg.bg, labels);
        return;
    case BoostSloanMethod:
        BoostSloan(*bg.bg, bg.roots, labels);
        return;
#else
    default:
        return;
#endif
    }
    labels = Labels(bg.g);
}

// The best time of some runs (3, or more up to 0.3 s in all, fewer past 20 s), and the
// labels.
static double BestSeconds(BenchGraph &bg, Method m, std::vector<LONG> &labels) {
    double dBest = 1e30, dTotal = 0.0;
    for (int k = 0; k < 3 || (dTotal < 0.3 && k < 200); k++) {
        if (dTotal > 20.0)
            break;
        auto t0 = std::chrono::steady_clock::now();
        Run(bg, m, labels);
        double d = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
        dBest = std::min(dBest, d);
        dTotal += d;
    }
    return dBest;
}

static void PrintTable(bool bLarge, bool bBoostSloanLarge) {
    std::vector<std::string> names = DwtNames();
    if (bLarge) {
        names.push_back("grid1000");
        names.push_back("hex100");
    }
    std::printf("%-9s %8s | %6s %6s %8s %8s %6s | %9s %9s %8s %8s %6s\n", "graph", "n", "bw", "bwB",
                "ms", "msB", "t/tB", "prof", "profB", "ms", "msB", "t/tB");
    int nBandWorse = 0, nProfileWorse = 0;
    double dLogTime = 0.0;
    int nTimed = 0;
    for (const std::string &strName : names) {
        BenchGraph &bg = Graph(strName);
        std::vector<LONG> l;
        double tR = BestSeconds(bg, OurRCM, l);
        Measures mR = Measure(bg.g, l);
        double tS = BestSeconds(bg, OurSloan, l);
        Measures mS = Measure(bg.g, l);
        Measures mRB, mSB;
        double tRB = 0.0, tSB = 0.0;
#ifdef FEMMAT_BENCH_BOOST
        tRB = BestSeconds(bg, BoostRCMMethod, l);
        mRB = Measure(bg.g, l);
        // Boost's Sloan grows faster than linearly: 130 s on the grid, hours on the mesh.
        if (strName != "hex100" || bBoostSloanLarge) {
            tSB = BestSeconds(bg, BoostSloanMethod, l);
            mSB = Measure(bg.g, l);
        } else {
            mSB = mS;
        }
        nBandWorse += mR.nBand > mRB.nBand;
        nProfileWorse += mS.nProfile > mSB.nProfile;
        dLogTime += std::log(tR / tRB);
        nTimed++;
#endif
        std::printf(
            "%-9s %8d | %6lld %6lld %8.3f %8.3f %6.2f | %9lld %9lld %8.3f %8.3f %6.2f%s%s\n",
            strName.c_str(), bg.g.m_nRows, mR.nBand, mRB.nBand, tR * 1e3, tRB * 1e3,
            tRB > 0 ? tR / tRB : 0.0, mS.nProfile, mSB.nProfile, tS * 1e3, tSB * 1e3,
            tSB > 0 ? tS / tSB : 0.0, mR.nBand > mRB.nBand ? "  bw>" : "",
            mS.nProfile > mSB.nProfile ? "  prof>" : "");
        std::fflush(stdout);
    }
    if (nTimed > 0)
        std::printf("RCM bandwidth above Boost's on %d graphs, Sloan profile above Boost's on %d; "
                    "RCM time over Boost's, geometric mean %.2f\n",
                    nBandWorse, nProfileWorse, std::exp(dLogTime / nTimed));
    std::fflush(stdout);
}

static void BM_Numbering(benchmark::State &state, std::string strName, Method m) {
    BenchGraph &bg = Graph(strName);
    std::vector<LONG> labels;
    for (auto _ : state) {
        Run(bg, m, labels);
        benchmark::ClobberMemory();
    }
    Measures ms = Measure(bg.g, labels);
    state.counters["band"] = (double)ms.nBand;
    state.counters["profile"] = (double)ms.nProfile;
}

static void RegisterAll() {
    std::vector<std::string> names = DwtNames();
    names.push_back("grid1000");
    names.push_back("hex100");
    struct {
        Method m;
        const char *pszName;
    } methods[] = {{OurRCM, "RCM"},
#ifdef FEMMAT_BENCH_BOOST
                   {BoostRCMMethod, "BoostRCM"},
#endif
                   {OurSloan, "Sloan"},
#ifdef FEMMAT_BENCH_BOOST
                   {BoostSloanMethod, "BoostSloan"},
#endif
#ifdef FEMMAT_HAS_AMD
                   {OurAMD, "AMD"}
#endif
    };
    for (const auto &method : methods) {
        for (const std::string &strName : names) {
            // AMD on the 26-neighbour mesh would dominate the run; it is a fill numbering.
            // Boost's Sloan on it takes hours.
            if ((method.m == OurAMD || method.m == BoostSloanMethod) && strName == "hex100")
                continue;
            auto *b =
                benchmark::RegisterBenchmark((std::string(method.pszName) + "/" + strName).c_str(),
                                             BM_Numbering, strName, method.m);
            b->Unit(benchmark::kMillisecond);
            if (strName == "grid1000" || strName == "hex100")
                b->Iterations(method.m == BoostSloanMethod ? 1 : 3);
        }
    }
}

int main(int argc, char **argv) {
    bool bTable = true, bBench = true, bLarge = true, bBoostSloanLarge = false;
    std::vector<char *> args;
    for (int i = 0; i < argc; i++) {
        if (std::strcmp(argv[i], "--table-only") == 0)
            bBench = false;
        else if (std::strcmp(argv[i], "--no-table") == 0)
            bTable = false;
        else if (std::strcmp(argv[i], "--boost-sloan-mesh") == 0)
            bBoostSloanLarge = true;
        else if (std::strcmp(argv[i], "--small") == 0)
            bLarge = false;
        else
            args.push_back(argv[i]);
    }
    if (bTable)
        PrintTable(bLarge, bBoostSloanLarge);
    if (!bBench)
        return 0;
    int nArgs = (int)args.size();
    benchmark::Initialize(&nArgs, args.data());
    RegisterAll();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
