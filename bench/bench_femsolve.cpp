// femsolve's whole run (read, graph, numbering, pattern, assembly, prescribed values, solve,
// residual, write) on a 2D Poisson mesh of about 1e5 unknowns, against Eigen's
// SimplicialLDLT with AMD factorising and solving the very system femsolve assembled (its
// Matrix Market export). Processor time of the process, since the machine is shared.
//
// The mesh: $FEMSOLVE_BENCH_MESH, or a unit square meshed by the gmsh program (cached in the
// temporary folder), or without gmsh a structured triangle mesh whose nodes are numbered in
// a scrambled order, as a mesh generator's order is no numbering either. femsolve's method
// options come from $FEMSOLVE_BENCH_ARGS (default "--numbering mindeg4").
#include "femsolve.h"
#include "mtx.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#ifdef FEMSOLVE_BENCH_EIGEN
#include <Eigen/SparseCholesky>
#endif

namespace {

double CpuSeconds() {
    timespec ts;
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &ts);
    return ts.tv_sec + ts.tv_nsec * 1e-9;
}

std::string Temp(const std::string &name) {
    const char *t = getenv("TMPDIR");
    return std::string(t ? t : "/tmp") + "/femsolve_bench_" + name;
}

// A structured n by n triangle mesh of the unit square with scrambled node tags.
void WriteScrambledSquare(const std::string &path, int n) {
    int nNodes = (n + 1) * (n + 1);
    std::vector<int> perm(nNodes);
    for (int i = 0; i < nNodes; i++)
        perm[i] = i;
    unsigned s = 12345;
    for (int i = nNodes - 1; i > 0; i--) {
        s = s * 1103515245u + 12345u;
        std::swap(perm[i], perm[(s >> 8) % (i + 1)]);
    }
    auto id = [&](int i, int j) { return perm[j * (n + 1) + i] + 1; };
    FILE *f = fopen(path.c_str(), "w");
    fprintf(f,
            "$MeshFormat\n2.2 0 8\n$EndMeshFormat\n$PhysicalNames\n3\n1 1 \"left\"\n"
            "1 2 \"right\"\n2 3 \"domain\"\n$EndPhysicalNames\n$Nodes\n%d\n",
            nNodes);
    for (int j = 0; j <= n; j++)
        for (int i = 0; i <= n; i++)
            fprintf(f, "%d %.17g %.17g 0\n", id(i, j), (double)i / n, (double)j / n);
    fprintf(f, "$EndNodes\n$Elements\n%d\n", 2 * n + 2 * n * n);
    int t = 0;
    for (int k = 0; k < n; k++) {
        fprintf(f, "%d 1 2 1 1 %d %d\n", ++t, id(0, k), id(0, k + 1));
        fprintf(f, "%d 1 2 2 2 %d %d\n", ++t, id(n, k), id(n, k + 1));
    }
    for (int j = 0; j < n; j++)
        for (int i = 0; i < n; i++) {
            fprintf(f, "%d 2 2 3 3 %d %d %d\n", ++t, id(i, j), id(i + 1, j), id(i + 1, j + 1));
            fprintf(f, "%d 2 2 3 3 %d %d %d\n", ++t, id(i, j), id(i + 1, j + 1), id(i, j + 1));
        }
    fprintf(f, "$EndElements\n");
    fclose(f);
}

std::string BenchMesh() {
    if (const char *m = getenv("FEMSOLVE_BENCH_MESH"))
        return m;
    std::string msh = Temp("square.msh");
    if (std::ifstream(msh))
        return msh;
    std::string geo = Temp("square.geo");
    std::ofstream(geo) << "h = 0.0034;\n"
                          "Point(1) = {0, 0, 0, h}; Point(2) = {1, 0, 0, h};\n"
                          "Point(3) = {1, 1, 0, h}; Point(4) = {0, 1, 0, h};\n"
                          "Line(1) = {1, 2}; Line(2) = {2, 3}; Line(3) = {3, 4};\n"
                          "Line(4) = {4, 1}; Curve Loop(1) = {1, 2, 3, 4};\n"
                          "Plane Surface(1) = {1};\n"
                          "Physical Curve(\"right\") = {2}; Physical Curve(\"left\") = {4};\n"
                          "Physical Surface(\"domain\") = {1};\n";
    std::string cmd = "gmsh -2 -format msh41 " + geo + " -o " + msh + " >/dev/null 2>&1";
    if (std::system(cmd.c_str()) != 0)
        WriteScrambledSquare(msh, 315); // 99856 nodes
    return msh;
}

int Femsolve(std::vector<std::string> args) {
    args.insert(args.begin(), "femsolve");
    std::vector<char *> argv;
    for (auto &a : args)
        argv.push_back(&a[0]);
    FemOptions opt;
    std::string error;
    if (!ParseOptions((int)argv.size(), argv.data(), opt, error))
        return -1;
    std::ostringstream out, err;
    int status = RunFemsolve(opt, out, err);
    if (status != 0)
        fprintf(stderr, "%s", err.str().c_str());
    return status;
}

std::vector<std::string> Args(const std::string &mesh) {
    std::vector<std::string> args = {mesh,     "--fix",    "left=0", "--fix",         "right=1",
                                     "--load", "domain=1", "-o",     Temp("out.vtu"), "-q"};
    std::istringstream extra(getenv("FEMSOLVE_BENCH_ARGS") ? getenv("FEMSOLVE_BENCH_ARGS")
                                                           : "--numbering mindeg4");
    std::string a;
    while (extra >> a)
        args.push_back(a);
    return args;
}

void BM_WholeRunAgainstEigen(benchmark::State &state) {
    std::string mesh = BenchMesh();
    for (auto _ : state) {
        // femsolve, end to end.
        double t0 = CpuSeconds();
        int status = Femsolve(Args(mesh));
        double dFemsolve = CpuSeconds() - t0;
        if (status != 0) {
            state.SkipWithError("femsolve failed");
            return;
        }
        state.counters["femsolve_s"] = dFemsolve;
#ifdef FEMSOLVE_BENCH_EIGEN
        // The same assembled and constrained system, from femsolve's export.
        std::vector<std::string> args = Args(mesh);
        args.insert(args.end(), {"--export", Temp("system.mtx"), "--no-solve", "--numbering",
                                 "none", "--storage", "system"});
        if (Femsolve(args) != 0) {
            state.SkipWithError("export failed");
            return;
        }
        std::ifstream fa(Temp("system.mtx")), fb(Temp("system_rhs.mtx"));
        std::stringstream sa, sb;
        sa << fa.rdbuf();
        sb << fb.rdbuf();
        MtxData A, b;
        std::string error;
        ReadMtx(sa.str(), A, error);
        ReadMtx(sb.str(), b, error);
        // The export lists the lower triangle of the symmetric matrix.
        std::vector<Eigen::Triplet<double>> trip;
        for (size_t k = 0; k < A.values.size(); k++)
            trip.emplace_back(A.rows[k], A.cols[k], A.values[k]);
        Eigen::SparseMatrix<double> M(A.nRows, A.nCols);
        M.setFromTriplets(trip.begin(), trip.end());
        Eigen::VectorXd rhs = Eigen::Map<Eigen::VectorXd>(b.values.data(), b.nRows);
        double t1 = CpuSeconds();
        Eigen::SimplicialLDLT<Eigen::SparseMatrix<double>, Eigen::Lower, Eigen::AMDOrdering<int>>
            ldlt(M);
        Eigen::VectorXd x = ldlt.solve(rhs);
        double dEigen = CpuSeconds() - t1;
        benchmark::DoNotOptimize(x.data());
        state.counters["eigen_s"] = dEigen;
        state.counters["ratio"] = dFemsolve / dEigen;
        state.counters["unknowns"] = A.nRows;
        state.counters["eigen_L_nonzeros"] = (double)ldlt.matrixL().nestedExpression().nonZeros();
#endif
    }
}

} // namespace

BENCHMARK(BM_WholeRunAgainstEigen)->Iterations(1)->Unit(benchmark::kSecond);
