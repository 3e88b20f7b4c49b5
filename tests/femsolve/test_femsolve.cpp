// femsolve end to end: exact fields, convergence, the elasticity patch test, the Matrix
// Market round trip, every error path and the files only gmsh reads, on meshes written here.
#include "femsolve.h"
#include "mesh.h"
#include "mtx.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

// gmsh leaks what it read of a truncated binary 2.2 file; only its allocations are exempt
// from the sanitizer build's leak check.
extern "C" const char *__lsan_default_suppressions() {
    return "leak:libgmsh.so\n";
}

namespace {

std::string TempPath(const std::string &name) {
    return ::testing::TempDir() + "femsolve_" + name;
}

void WriteFile(const std::string &path, const std::string &text) {
    std::ofstream(path, std::ios::binary) << text;
}

std::string ReadFile(const std::string &path) {
    std::ifstream f(path);
    std::stringstream s;
    s << f.rdbuf();
    return s.str();
}

// Unit square of n by n cells, triangles or quadrangles, interior nodes moved by a smooth
// map so that no result is exact by symmetry. Groups: 1 left, 2 right, 3 bottom, 4 top,
// 10 domain, named. Format 2.2, or 4.1 with one entity per group.
std::string SquareMesh(int n, bool bQuads, bool bV41 = false) {
    auto id = [&](int i, int j) { return j * (n + 1) + i + 1; };
    std::ostringstream nodes, els;
    int nNodes = (n + 1) * (n + 1);
    std::vector<std::vector<std::vector<int>>> groups(5); // line groups, then the domain
    for (int j = 0; j <= n; j++)
        for (int i = 0; i <= n; i++) {
            double x = (double)i / n, y = (double)j / n;
            double dx = 0.3 / n * sin(M_PI * x) * sin(2 * M_PI * y);
            double dy = 0.3 / n * sin(2 * M_PI * x) * sin(M_PI * y);
            char line[128];
            snprintf(line, sizeof line, "%.17g %.17g 0\n", x + dx, y + dy);
            nodes << (bV41 ? "" : std::to_string(id(i, j)) + " ") << line;
        }
    for (int k = 0; k < n; k++) {
        groups[0].push_back({id(0, k), id(0, k + 1)});
        groups[1].push_back({id(n, k), id(n, k + 1)});
        groups[2].push_back({id(k, 0), id(k + 1, 0)});
        groups[3].push_back({id(k, n), id(k + 1, n)});
    }
    for (int j = 0; j < n; j++)
        for (int i = 0; i < n; i++) {
            int a = id(i, j), b = id(i + 1, j), c = id(i + 1, j + 1), d = id(i, j + 1);
            if (bQuads) {
                groups[4].push_back({a, b, c, d});
            } else {
                groups[4].push_back({a, b, c});
                groups[4].push_back({a, c, d});
            }
        }
    std::ostringstream s;
    s << "$MeshFormat\n" << (bV41 ? "4.1" : "2.2") << " 0 8\n$EndMeshFormat\n";
    s << "$PhysicalNames\n5\n1 1 \"left\"\n1 2 \"right\"\n1 3 \"bottom\"\n1 4 \"top\"\n"
         "2 10 \"domain\"\n$EndPhysicalNames\n";
    int nEl = 0;
    for (auto &g : groups)
        nEl += (int)g.size();
    int nType = bQuads ? 3 : 2;
    if (bV41) {
        s << "$Entities\n0 4 1 0\n";
        for (int g = 0; g < 4; g++)
            s << g + 1 << " 0 0 0 1 1 0 1 " << g + 1 << " 0\n";
        s << "1 0 0 0 1 1 0 1 10 0\n$EndEntities\n";
        s << "$Nodes\n1 " << nNodes << " 1 " << nNodes << "\n2 1 0 " << nNodes << "\n";
        for (int k = 1; k <= nNodes; k++)
            s << k << "\n";
        s << nodes.str() << "$EndNodes\n$Elements\n5 " << nEl << " 1 " << nEl << "\n";
        int t = 1;
        for (int g = 0; g < 5; g++) {
            s << (g < 4 ? 1 : 2) << " " << (g < 4 ? g + 1 : 1) << " " << (g < 4 ? 1 : nType) << " "
              << groups[g].size() << "\n";
            for (auto &e : groups[g]) {
                s << t++;
                for (int v : e)
                    s << " " << v;
                s << "\n";
            }
        }
    } else {
        s << "$Nodes\n" << nNodes << "\n" << nodes.str() << "$EndNodes\n";
        s << "$Elements\n" << nEl << "\n";
        int t = 1;
        const int tags[5] = {1, 2, 3, 4, 10};
        for (int g = 0; g < 5; g++)
            for (auto &e : groups[g]) {
                s << t++ << " " << (g < 4 ? 1 : nType) << " 2 " << tags[g] << " " << tags[g];
                for (int v : e)
                    s << " " << v;
                s << "\n";
            }
    }
    s << "$EndElements\n";
    return s.str();
}

// Unit cube of n^3 cubes, six tetrahedra each; faces x = 0 and x = 1 as triangle groups.
std::string CubeMesh(int n) {
    auto id = [&](int i, int j, int k) { return (k * (n + 1) + j) * (n + 1) + i + 1; };
    std::ostringstream s, els;
    int nEl = 0;
    for (int k = 0; k < n; k++)
        for (int j = 0; j < n; j++) {
            for (int x = 0; x <= n; x += n) {
                int a = id(x, j, k), b = id(x, j + 1, k), c = id(x, j + 1, k + 1),
                    d = id(x, j, k + 1);
                int g = x == 0 ? 1 : 2;
                els << ++nEl << " 2 2 " << g << " " << g << " " << a << " " << b << " " << c
                    << "\n";
                els << ++nEl << " 2 2 " << g << " " << g << " " << a << " " << c << " " << d
                    << "\n";
            }
            for (int i = 0; i < n; i++) {
                int v[8] = {id(i, j, k),
                            id(i + 1, j, k),
                            id(i + 1, j + 1, k),
                            id(i, j + 1, k),
                            id(i, j, k + 1),
                            id(i + 1, j, k + 1),
                            id(i + 1, j + 1, k + 1),
                            id(i, j + 1, k + 1)};
                // Kuhn's six tetrahedra around the diagonal 0-6.
                static const int t[6][4] = {{0, 1, 2, 6}, {0, 2, 3, 6}, {0, 3, 7, 6},
                                            {0, 7, 4, 6}, {0, 4, 5, 6}, {0, 5, 1, 6}};
                for (auto &tt : t)
                    els << ++nEl << " 4 2 10 10 " << v[tt[0]] << " " << v[tt[1]] << " " << v[tt[2]]
                        << " " << v[tt[3]] << "\n";
            }
        }
    s << "$MeshFormat\n2.2 0 8\n$EndMeshFormat\n$PhysicalNames\n3\n2 1 \"left\"\n"
         "2 2 \"right\"\n3 10 \"domain\"\n$EndPhysicalNames\n$Nodes\n"
      << (n + 1) * (n + 1) * (n + 1) << "\n";
    for (int k = 0; k <= n; k++)
        for (int j = 0; j <= n; j++)
            for (int i = 0; i <= n; i++)
                s << id(i, j, k) << " " << (double)i / n << " " << (double)j / n << " "
                  << (double)k / n << "\n";
    s << "$EndNodes\n$Elements\n" << nEl << "\n" << els.str() << "$EndElements\n";
    return s.str();
}

// Runs femsolve with the given arguments; the exit status, with stderr in *pErr.
int Femsolve(std::vector<std::string> args, std::string *pErr = nullptr) {
    args.insert(args.begin(), "femsolve");
    args.push_back("-q");
    std::vector<char *> argv;
    for (auto &a : args)
        argv.push_back(&a[0]);
    FemOptions opt;
    std::string error;
    if (!ParseOptions((int)argv.size(), argv.data(), opt, error)) {
        if (pErr)
            *pErr = error;
        return kExitUsage;
    }
    std::ostringstream out, err;
    int status = RunFemsolve(opt, out, err);
    if (pErr)
        *pErr = err.str();
    return status;
}

// One point-data array of a .vtu, and the points.
std::vector<double> VtuArray(const std::string &vtu, const std::string &name) {
    size_t p = vtu.find("Name=\"" + name + "\"");
    std::vector<double> v;
    if (p == std::string::npos)
        return v;
    p = vtu.find('>', p) + 1;
    std::istringstream s(vtu.substr(p, vtu.find("</DataArray>", p) - p));
    double d;
    while (s >> d)
        v.push_back(d);
    return v;
}

std::vector<double> VtuPoints(const std::string &vtu) {
    size_t p = vtu.find('>', vtu.find("<Points>") + 8) + 1;
    std::istringstream s(vtu.substr(p, vtu.find("</DataArray>", p) - p));
    std::vector<double> v;
    double d;
    while (s >> d)
        v.push_back(d);
    return v;
}

// The mesh in gmsh's binary 2.2 format: section markers and counts in ASCII, nodes and
// elements in binary, one element block per element, its group also its elementary tag.
std::string BinaryMsh(const Mesh &mesh) {
    std::string s = "$MeshFormat\n2.2 1 8\n";
    auto put = [&](const void *p, size_t n) { s.append((const char *)p, n); };
    auto putInt = [&](int v) { put(&v, sizeof v); };
    putInt(1); // tells the reader the byte order
    s += "\n$EndMeshFormat\n$PhysicalNames\n" + std::to_string(mesh.names.size()) + "\n";
    for (auto &n : mesh.names)
        s += std::to_string(n.first.first) + " " + std::to_string(n.first.second) + " \"" +
             n.second + "\"\n";
    s += "$EndPhysicalNames\n$Nodes\n" + std::to_string(mesh.NumNodes()) + "\n";
    for (int p = 0; p < mesh.NumNodes(); p++) {
        putInt(p + 1);
        put(&mesh.coords[3 * (size_t)p], 3 * sizeof(double));
    }
    s += "\n$EndNodes\n$Elements\n" + std::to_string(mesh.NumElements()) + "\n";
    for (int el = 0; el < mesh.NumElements(); el++) {
        int tag =
            mesh.groupStart[el + 1] > mesh.groupStart[el] ? mesh.groups[mesh.groupStart[el]] : 0;
        for (int v : {mesh.types[el], 1, 2, el + 1, tag, tag})
            putInt(v);
        for (int k = mesh.nodeStart[el]; k < mesh.nodeStart[el + 1]; k++)
            putInt(mesh.nodes[k] + 1);
    }
    s += "\n$EndElements\n";
    return s;
}

// Max nodal error of -u'' = 2, u = x (1 - x), on an n by n mesh.
double QuadraticError(int n, bool bQuads) {
    std::string msh = TempPath("quad_" + std::to_string(n) + ".msh");
    std::string vtu = TempPath("quad.vtu");
    WriteFile(msh, SquareMesh(n, bQuads));
    EXPECT_EQ(
        Femsolve({msh, "--fix", "left=0", "--fix", "right=0", "--load", "domain=2", "-o", vtu}),
        kExitOk);
    std::string text = ReadFile(vtu);
    std::vector<double> u = VtuArray(text, "u"), xyz = VtuPoints(text);
    double e = 0;
    for (size_t p = 0; p < u.size(); p++)
        e = std::fmax(e, std::fabs(u[p] - xyz[3 * p] * (1 - xyz[3 * p])));
    return e;
}

} // namespace

TEST(Femsolve, LinearFieldIsExactOnEveryElementAndMethod) {
    struct Case {
        std::string mesh;
        std::vector<std::string> method;
    };
    std::string tri = TempPath("tri.msh"), quad = TempPath("quad41.msh"), tet = TempPath("tet.msh");
    WriteFile(tri, SquareMesh(6, false));
    WriteFile(quad, SquareMesh(6, true, true));
    WriteFile(tet, CubeMesh(3));
    const std::vector<Case> cases = {
        {tri, {}},
        {quad, {}},
        {tet, {}},
        {tri, {"--storage", "skyline", "--numbering", "none"}},
        {quad, {"--prescribed", "unify", "--numbering", "mindeg2"}},
        {quad, {"--prescribed", "drop", "--storage", "skyline", "--numbering", "mindeg"}},
        {tet, {"--prescribed", "unify", "--storage", "skyline", "--numbering", "mindeg3"}},
        {tri, {"--solver", "gauss-seidel", "--tol", "1e-14"}},
        {tet, {"--solver", "gauss-seidel", "--tol", "1e-14", "--storage", "skyline"}},
    };
    std::string vtu = TempPath("linear.vtu");
    for (const Case &c : cases) {
        std::vector<std::string> args = {c.mesh, "--fix", "left=1", "--fix", "right=3", "-o", vtu};
        args.insert(args.end(), c.method.begin(), c.method.end());
        ASSERT_EQ(Femsolve(args), kExitOk) << c.mesh;
        std::string text = ReadFile(vtu);
        std::vector<double> u = VtuArray(text, "u"), xyz = VtuPoints(text);
        ASSERT_EQ(u.size() * 3, xyz.size());
        for (size_t p = 0; p < u.size(); p++)
            ASSERT_NEAR(u[p], 1 + 2 * xyz[3 * p], 1e-10) << c.mesh << " node " << p;
    }
}

TEST(Femsolve, ManufacturedQuadraticConvergesAtSecondOrder) {
    for (bool bQuads : {false, true}) {
        double e8 = QuadraticError(8, bQuads), e16 = QuadraticError(16, bQuads),
               e32 = QuadraticError(32, bQuads);
        EXPECT_GT(e8, 1e-6); // the distorted mesh is not exact
        EXPECT_GT(std::log2(e8 / e16), 1.8) << bQuads;
        EXPECT_GT(std::log2(e16 / e32), 1.8) << bQuads;
    }
}

TEST(Femsolve, ElasticityPatchTestGivesUniformStress) {
    // sxx = 1 from a unit traction: ux = x / E, uy = -nu y / E, von Mises 1.
    const double E = 2.0, nu = 0.25;
    for (bool bQuads : {false, true}) {
        std::string msh = TempPath("patch.msh"), vtu = TempPath("patch.vtu");
        WriteFile(msh, SquareMesh(5, bQuads, bQuads));
        ASSERT_EQ(Femsolve({msh, "--problem", "elasticity", "--E", "2", "--nu", "0.25", "--fix",
                            "left:x=0", "--fix", "bottom:y=0", "--load", "right=1,0", "-o", vtu}),
                  kExitOk);
        std::string text = ReadFile(vtu);
        std::vector<double> d = VtuArray(text, "displacement"), vm = VtuArray(text, "von_mises"),
                            xyz = VtuPoints(text);
        ASSERT_EQ(d.size(), xyz.size());
        for (size_t p = 0; p < vm.size(); p++) {
            EXPECT_NEAR(d[3 * p], xyz[3 * p] / E, 1e-10);
            EXPECT_NEAR(d[3 * p + 1], -nu * xyz[3 * p + 1] / E, 1e-10);
            EXPECT_EQ(d[3 * p + 2], 0.0);
            EXPECT_NEAR(vm[p], 1.0, 1e-10);
        }
    }
}

TEST(Femsolve, ExportedSystemSolvesBackToTheMeshSolution) {
    std::string msh = TempPath("rt.msh"), vtu = TempPath("rt.vtu"), sys = TempPath("rt.mtx"),
                rhs = TempPath("rt_rhs.mtx"), x = TempPath("rt_x.mtx");
    WriteFile(msh, SquareMesh(5, false));
    for (std::string storage : {"system", "skyline"}) {
        ASSERT_EQ(Femsolve({msh, "--fix", "left=0", "--fix", "top=1", "--load", "domain=3",
                            "--storage", storage, "--export", sys, "-o", vtu}),
                  kExitOk);
        ASSERT_EQ(
            Femsolve({"--matrix", sys, "--rhs", rhs, "--solution", x, "--numbering", "mindeg2"}),
            kExitOk);
        // The exported system's solution is the mesh solution, node for node.
        MtxData A, b, sol;
        std::string error;
        ASSERT_TRUE(ReadMtx(ReadFile(sys), A, error)) << error;
        ASSERT_TRUE(ReadMtx(ReadFile(rhs), b, error)) << error;
        ASSERT_TRUE(ReadMtx(ReadFile(x), sol, error)) << error;
        EXPECT_TRUE(A.bSymmetric);
        std::vector<double> u = VtuArray(ReadFile(vtu), "u"), xs = sol.values;
        ASSERT_EQ(u.size(), xs.size());
        std::sort(u.begin(), u.end());
        std::sort(xs.begin(), xs.end());
        for (size_t k = 0; k < u.size(); k++)
            EXPECT_NEAR(u[k], xs[k], 1e-12);
        // Written values come back bit for bit.
        std::string again = TempPath("again.mtx");
        ASSERT_TRUE(WriteMtxArray(again, sol.nRows, sol.nCols, sol.values));
        MtxData back;
        ASSERT_TRUE(ReadMtx(ReadFile(again), back, error));
        EXPECT_EQ(back.values, sol.values);
    }
    // Without a right-hand side the solution is ones, in several columns as well.
    WriteFile(sys, "%%MatrixMarket matrix coordinate real general\n% comment\n3 3 7\n"
                   "1 1 4\n1 2 -1\n2 1 -1\n2 2 4\n2 3 -1\n3 2 -1\n3 3 4\n");
    WriteFile(rhs, "%%MatrixMarket matrix array real general\n3 2\n3\n2\n3\n4\n0\n-4\n");
    ASSERT_EQ(Femsolve({"--matrix", sys, "--rhs", rhs, "--solution", x, "--storage", "skyline"}),
              kExitOk);
    MtxData sol;
    std::string error;
    ASSERT_TRUE(ReadMtx(ReadFile(x), sol, error));
    const std::vector<double> expect = {1, 1, 1, 1, 0, -1};
    for (int k = 0; k < 6; k++)
        EXPECT_NEAR(sol.values[k], expect[k], 1e-14);
}

TEST(Femsolve, ErrorsHaveTheirExitStatus) {
    std::string msh = TempPath("err.msh"), vtu = TempPath("err.vtu"), bad = TempPath("bad.msh");
    WriteFile(msh, SquareMesh(3, false));
    std::string err;
    EXPECT_EQ(Femsolve({TempPath("missing.msh")}, &err), kExitNoFile);
    EXPECT_NE(err.find("missing.msh"), std::string::npos);
    EXPECT_EQ(Femsolve({msh, "--fix", "nowhere=1", "-o", vtu}, &err), kExitUnknownGroup);
    EXPECT_NE(err.find("left"), std::string::npos) << "the message lists the groups";
    EXPECT_EQ(Femsolve({msh, "--fix", "left=0", "--load", "nowhere=1", "-o", vtu}),
              kExitUnknownGroup);
    // Groups also by tag number.
    EXPECT_EQ(Femsolve({msh, "--fix", "1=0", "--load", "10=1", "-o", vtu}), kExitOk);
    // Nothing prescribed: singular, on both storages.
    EXPECT_EQ(Femsolve({msh, "--load", "domain=1", "-o", vtu}, &err), kExitSingular);
    EXPECT_EQ(Femsolve({msh, "--load", "domain=1", "--storage", "skyline", "-o", vtu}),
              kExitSingular);
    EXPECT_EQ(Femsolve({msh, "--problem", "elasticity", "--fix", "left:x=0", "-o", vtu}),
              kExitSingular);
    EXPECT_EQ(Femsolve({msh, "--fix", "left=0", "--solver", "gauss-seidel", "--max-iter", "2",
                        "--load", "domain=1", "-o", vtu}),
              kExitNotConverged);
    EXPECT_EQ(Femsolve({msh, "--fix", "left=0", "-o", "/nonexistent/dir/x.vtu"}), kExitWrite);
    // Malformed meshes.
    std::string good = SquareMesh(3, false);
    const std::vector<std::string> broken = {
        "",
        "hello\n",
        good.substr(0, good.size() / 2),
        "$MeshFormat\n2.2 1 8\n$EndMeshFormat\n",
        "$MeshFormat\n3.0 0 8\n$EndMeshFormat\n",
        "$MeshFormat\n2.2 0 8\n$EndMeshFormat\n$Nodes\n999999999\n1 0 0 0\n$EndNodes\n",
        "$MeshFormat\n2.2 0 8\n$EndMeshFormat\n$Nodes\n1\n1 0 0 0\n$EndNodes\n$Elements\n1\n"
        "1 2 0 1 2 3\n$EndElements\n",
    };
    for (const std::string &text : broken) {
        WriteFile(bad, text);
        EXPECT_EQ(Femsolve({bad, "-o", vtu}, &err), kExitBadInput) << text;
    }
    // Degenerate element.
    WriteFile(bad, "$MeshFormat\n2.2 0 8\n$EndMeshFormat\n$Nodes\n3\n1 0 0 0\n2 1 0 0\n3 2 0 0\n"
                   "$EndNodes\n$Elements\n1\n1 2 0 1 2 3\n$EndElements\n");
    EXPECT_EQ(Femsolve({bad, "-o", vtu}), kExitBadInput);
    // Malformed and unsuitable systems.
    std::string sys = TempPath("bad.mtx");
    WriteFile(sys, "%%MatrixMarket matrix coordinate real general\n2 2 2\n1 2 1\n2 1 3\n");
    EXPECT_EQ(Femsolve({"--matrix", sys}), kExitBadInput) << "not symmetric";
    WriteFile(sys, "%%MatrixMarket matrix coordinate complex general\n1 1 1\n1 1 1 0\n");
    EXPECT_EQ(Femsolve({"--matrix", sys}), kExitBadInput);
    WriteFile(sys, "%%MatrixMarket matrix coordinate real symmetric\n2 2 3\n1 1 1\n");
    EXPECT_EQ(Femsolve({"--matrix", sys}), kExitBadInput) << "fewer entries than announced";
    WriteFile(sys, "%%MatrixMarket matrix coordinate real symmetric\n2 2 2\n1 1 1\n2 1 1\n");
    EXPECT_EQ(Femsolve({"--matrix", sys}), kExitSingular) << "no diagonal in row 2";
    EXPECT_EQ(Femsolve({"--matrix", TempPath("none.mtx")}), kExitNoFile);
    // Command lines.
    EXPECT_EQ(Femsolve({}), kExitUsage);
    EXPECT_EQ(Femsolve({msh, "--numbering", "best"}), kExitUsage);
    EXPECT_EQ(Femsolve({msh, "--fix", "left"}), kExitUsage);
    EXPECT_EQ(Femsolve({msh, "--problem", "elasticity", "--fix", "left=1,2,3"}), kExitUsage);
    EXPECT_EQ(Femsolve({msh, "--E"}), kExitUsage);
}

TEST(Femsolve, MeshReaderReadsBothVersionsAlike) {
    Mesh a, b;
    std::string error;
    ASSERT_TRUE(ReadMsh(SquareMesh(4, true, false), a, error)) << error;
    ASSERT_TRUE(ReadMsh(SquareMesh(4, true, true), b, error)) << error;
    EXPECT_EQ(a.coords, b.coords);
    EXPECT_EQ(a.nodes, b.nodes);
    EXPECT_EQ(a.types, b.types);
    EXPECT_EQ(a.groups, b.groups);
    EXPECT_EQ(a.names, b.names);
    EXPECT_EQ(a.Dimension(), 2);
    // Second-order elements and unknown sections are passed over.
    ASSERT_TRUE(ReadMsh("$MeshFormat\n2.2 0 8\n$EndMeshFormat\n$Comments\nx\n$EndComments\n"
                        "$Nodes\n3\n1 0 0 0\n2 1 0 0\n3 0 1 0\n$EndNodes\n$Elements\n2\n"
                        "1 8 0 1 2 3\n2 2 0 1 2 3\n$EndElements\n",
                        a, error))
        << error;
    EXPECT_EQ(a.NumElements(), 1);
}

TEST(Femsolve, HelpNamesEveryChoice) {
    std::string h = HelpText();
    for (const char *name : {"none", "mindeg", "mindeg2", "mindeg3", "mindeg4", "system", "skyline",
                             "cholesky", "gauss-seidel", "eliminate", "unify", "drop"})
        EXPECT_NE(h.find(std::string(" ") + name + " "), std::string::npos) << name;
}

TEST(Femsolve, MeshHeaderTellsWhatNeedsGmsh) {
    for (const char *head : {"2.2 1 8", "4.1 1 8", "4 0 8", "3.0 0 8", "1.0 0 8"})
        EXPECT_TRUE(MshNeedsGmsh(std::string("$MeshFormat\n") + head + "\n$EndMeshFormat\n"))
            << head;
    for (const char *text :
         {"$MeshFormat\n2.2 0 8\n", "\r\n$MeshFormat\r\n4.1 0 8\r\n", "$MeshFormat\n2 0 8\n", "",
          "hello\n2.2 1 8\n", "$MeshFormat\n", "$MeshFormat\n2.2 x 8\n", "$NOD\n3\n"})
        EXPECT_FALSE(MshNeedsGmsh(text)) << text;
    // Read without gmsh, such files are refused with the reason.
    Mesh mesh;
    std::string error;
    EXPECT_FALSE(ReadMsh("$MeshFormat\n2.2 1 8\n\x01\x00\x00\x00\n$EndMeshFormat\n", mesh, error));
    EXPECT_NE(error.find("gmsh's API"), std::string::npos) << error;
    EXPECT_FALSE(ReadMsh("$MeshFormat\n4.0 0 8\n$EndMeshFormat\n", mesh, error));
    EXPECT_NE(error.find("gmsh's API"), std::string::npos) << error;
}

TEST(Femsolve, BinaryMeshSolvesLikeItsAsciiTwin) {
    std::string text = SquareMesh(5, false), ascii = TempPath("twin.msh"),
                binary = TempPath("twin_bin.msh"), vtuA = TempPath("twin.vtu"),
                vtuB = TempPath("twin_bin.vtu"), err;
    Mesh mesh;
    ASSERT_TRUE(ReadMsh(text, mesh, err)) << err;
    std::string bytes = BinaryMsh(mesh);
    WriteFile(ascii, text);
    WriteFile(binary, bytes);
    const std::vector<std::string> args = {"--fix",  "left=0",   "--fix", "top=1",
                                           "--load", "domain=3", "-o"};
    auto run = [&](const std::string &msh, const std::string &vtu, std::string *pErr) {
        std::vector<std::string> a = {msh};
        a.insert(a.end(), args.begin(), args.end());
        a.push_back(vtu);
        return Femsolve(a, pErr);
    };
    int status = run(binary, vtuB, &err);
    if (!FemsolveHasGmsh()) {
        EXPECT_EQ(status, kExitBadInput);
        EXPECT_NE(err.find("gmsh's API"), std::string::npos) << err;
        GTEST_SKIP() << "femsolve is built without gmsh's API: only its message is checked";
    }
    ASSERT_EQ(status, kExitOk) << err;
    ASSERT_EQ(run(ascii, vtuA, nullptr), kExitOk);
    // gmsh may write the nodes in another order and the last digit differently: match the
    // nodes by position.
    std::string a = ReadFile(vtuA), b = ReadFile(vtuB);
    std::vector<double> uA = VtuArray(a, "u"), uB = VtuArray(b, "u"), xA = VtuPoints(a),
                        xB = VtuPoints(b);
    ASSERT_EQ(uA.size(), uB.size());
    ASSERT_EQ(uA.size(), (size_t)mesh.NumNodes());
    for (size_t p = 0; p < uB.size(); p++) {
        size_t q = 0;
        while (q < uA.size() &&
               std::hypot(xA[3 * q] - xB[3 * p], xA[3 * q + 1] - xB[3 * p + 1]) > 1e-14)
            q++;
        ASSERT_LT(q, uA.size()) << "node " << p << " has no twin";
        EXPECT_NEAR(uB[p], uA[q], 1e-12) << "node " << p;
    }
    // A truncated binary file is malformed input, not a crash.
    WriteFile(binary, bytes.substr(0, bytes.size() / 2));
    EXPECT_EQ(run(binary, vtuB, &err), kExitBadInput);
    EXPECT_NE(err.find("twin_bin.msh"), std::string::npos) << err;
}

TEST(Femsolve, GeoFileIsMeshedByGmshAndSolvedExactly) {
    std::string geo = TempPath("square.geo"), vtu = TempPath("square.vtu"), err;
    WriteFile(geo, "h = 0.25;\nPoint(1) = {0, 0, 0, h};\nPoint(2) = {1, 0, 0, h};\n"
                   "Point(3) = {1, 1, 0, h};\nPoint(4) = {0, 1, 0, h};\nLine(1) = {1, 2};\n"
                   "Line(2) = {2, 3};\nLine(3) = {3, 4};\nLine(4) = {4, 1};\n"
                   "Curve Loop(1) = {1, 2, 3, 4};\nPlane Surface(1) = {1};\n"
                   "Physical Curve(\"left\") = {4};\nPhysical Curve(\"right\") = {2};\n"
                   "Physical Surface(\"domain\") = {1};\n");
    if (!FemsolveHasGmsh()) {
        EXPECT_EQ(Femsolve({geo, "--fix", "left=1"}, &err), kExitBadInput);
        EXPECT_NE(err.find("gmsh's API"), std::string::npos) << err;
        GTEST_SKIP() << "femsolve is built without gmsh's API: only its message is checked";
    }
    size_t nCoarse = 0;
    for (const char *size : {"0", "0.1"}) {
        ASSERT_EQ(
            Femsolve({geo, "--mesh-size", size, "--fix", "left=1", "--fix", "right=3", "-o", vtu},
                     &err),
            kExitOk)
            << err;
        std::string text = ReadFile(vtu);
        std::vector<double> u = VtuArray(text, "u"), xyz = VtuPoints(text);
        ASSERT_EQ(u.size() * 3, xyz.size());
        ASSERT_GT(u.size(), nCoarse) << "a smaller --mesh-size gives more nodes";
        nCoarse = u.size();
        for (size_t p = 0; p < u.size(); p++)
            ASSERT_NEAR(u[p], 1 + 2 * xyz[3 * p], 1e-10) << "size " << size << " node " << p;
    }
}
