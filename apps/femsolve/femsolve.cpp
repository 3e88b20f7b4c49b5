// femsolve's run: from the command line to the summary.
#include "femsolve.h"
#include "choices.h"
#include "mesh.h"
#include "mtx.h"
#include "progress.h"
#include "road.h"
#include "run.h"

#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <sstream>
#include <unistd.h>

#ifdef FEMSOLVE_HAVE_GMSH
#include <gmsh.h>
#endif

int WriteVtu(const std::string &path, const Mesh &mesh, const std::vector<int> &domain,
             const std::vector<std::pair<std::string, std::vector<double>>> &fields);

std::string g_reports; // the library's timing reports of this run

static int CaptureReport(const char *pszText) {
    g_reports += pszText;
    g_reports += "\n";
    return 1;
}

std::string Format(const char *fmt, ...) {
    char buf[512];
    va_list ap;
    va_start(ap, fmt);
    vsnprintf(buf, sizeof buf, fmt, ap);
    va_end(ap);
    return buf;
}

bool EndsWith(const std::string &s, const char *suffix) {
    size_t n = strlen(suffix);
    return s.size() >= n && s.compare(s.size() - n, n, suffix) == 0;
}

std::string WithoutExtension(const std::string &path) {
    size_t dot = path.rfind('.'), slash = path.rfind('/');
    if (dot == std::string::npos || (slash != std::string::npos && dot < slash))
        return path;
    return path.substr(0, dot);
}

bool ReadText(const std::string &path, std::string &text) {
    std::ifstream f(path, std::ios::binary);
    if (!f)
        return false;
    std::ostringstream s;
    s << f.rdbuf();
    text = s.str();
    return !f.bad();
}

namespace {

// Physical groups named by a --fix or --load: by name, else by tag number.
bool FindGroups(const Mesh &mesh, const std::string &name, std::vector<std::pair<int, int>> &out) {
    for (auto &n : mesh.names)
        if (n.second == name)
            out.push_back(n.first);
    if (!out.empty())
        return true;
    char *e;
    long tag = strtol(name.c_str(), &e, 10);
    if (name.empty() || *e != '\0')
        return false;
    bool seen[4] = {false, false, false, false};
    for (int el = 0; el < mesh.NumElements(); el++)
        for (int k = mesh.groupStart[el]; k < mesh.groupStart[el + 1]; k++)
            if (mesh.groups[k] == tag)
                seen[ElementDimension(mesh.types[el])] = true;
    for (int d = 0; d < 4; d++)
        if (seen[d])
            out.push_back({d, (int)tag});
    return !out.empty();
}

bool InGroups(const Mesh &mesh, int el, const std::vector<std::pair<int, int>> &groups) {
    int d = ElementDimension(mesh.types[el]);
    for (int k = mesh.groupStart[el]; k < mesh.groupStart[el + 1]; k++)
        for (auto &g : groups)
            if (g.first == d && g.second == mesh.groups[k])
                return true;
    return false;
}

std::string KnownGroups(const Mesh &mesh) {
    std::string s;
    for (auto &n : mesh.names)
        s += (s.empty() ? "" : ", ") + n.second;
    return s.empty() ? "the mesh has no named groups" : "groups: " + s;
}

// "a" or "a,b" into one or two numbers.
bool Values(const std::string &s, int nWant, double *pV) {
    const char *p = s.c_str();
    char *e;
    for (int k = 0; k < nWant; k++) {
        pV[k] = strtod(p, &e);
        if (e == p)
            return false;
        p = e;
        if (k + 1 < nWant) {
            if (*p != ',')
                return false;
            p++;
        }
    }
    return *p == '\0';
}

void ElementCoords(const Mesh &mesh, int el, double *pXYZ) {
    int n = 0;
    for (int k = mesh.nodeStart[el]; k < mesh.nodeStart[el + 1]; k++, n++)
        for (int c = 0; c < 3; c++)
            pXYZ[3 * n + c] = mesh.coords[3 * (size_t)mesh.nodes[k] + c];
}

#ifdef FEMSOLVE_HAVE_GMSH
// A file gmsh reads, as 4.1 ASCII text for the built-in reader, which is fuzzed and whose
// errors femsolve can name: a .geo is meshed (bMesh), a .msh only converted, every element
// kept as the built-in reader keeps them.
bool GmshToText(const std::string &path, bool bMesh, double dSize, std::string &text,
                std::string &error) {
    char tmp[] = "/tmp/femsolve_XXXXXX.msh";
    int fd = mkstemps(tmp, 4);
    if (fd < 0) {
        error = "cannot make a temporary file";
        return false;
    }
    close(fd);
    std::string why;
    try {
        gmsh::initialize();
        gmsh::option::setNumber("General.Terminal", 0);
        gmsh::open(path);
        // Some read errors are only logged.
        gmsh::logger::getLastError(why);
        if (!why.empty())
            throw why;
        if (bMesh) {
            if (dSize > 0)
                gmsh::option::setNumber("Mesh.MeshSizeMax", dSize);
            gmsh::model::mesh::generate(gmsh::model::getDimension());
        } else {
            gmsh::option::setNumber("Mesh.SaveAll", 1);
        }
        gmsh::option::setNumber("Mesh.MshFileVersion", 4.1);
        gmsh::option::setNumber("Mesh.Binary", 0);
        gmsh::write(tmp);
    } catch (const std::string &e) { // how gmsh throws
        why = e.empty() ? "failed" : e;
    } catch (...) {
        why = "failed";
    }
    gmsh::finalize();
    bool ok = why.empty() && ReadText(tmp, text);
    if (!ok)
        error = "gmsh could not read " + path + ": " + (why.empty() ? "no output" : why);
    unlink(tmp);
    return ok;
}
#endif

int LoadMesh(Run &run, Mesh &mesh) {
    const std::string &path = run.opt.mesh;
    std::string text, error;
    if (access(path.c_str(), R_OK) != 0)
        return run.Error(kExitNoFile, "cannot open " + path);
#ifdef FEMSOLVE_HAVE_GMSH
    // A .geo is meshed; a binary .msh or another version, told by its header, converted.
    bool bGeo = EndsWith(path, ".geo");
    if (!bGeo && !ReadText(path, text))
        return run.Error(kExitNoFile, "cannot read " + path);
    if ((bGeo || MshNeedsGmsh(text)) && !GmshToText(path, bGeo, run.opt.meshSize, text, error))
        return run.Error(kExitBadInput, error);
#else
    if (EndsWith(path, ".geo"))
        return run.Error(kExitBadInput, path + ": meshing needs femsolve built with gmsh's API");
    if (!ReadText(path, text))
        return run.Error(kExitNoFile, "cannot read " + path);
#endif
    if (!ReadMsh(text, mesh, error))
        return run.Error(kExitBadInput, path + ": " + error);
    return kExitOk;
}

} // namespace

int RunMesh(Run &run) {
    const FemOptions &opt = run.opt;
    // 1. Mesh.
    run.steps.Begin("read mesh");
    Mesh mesh;
    int status = LoadMesh(run, mesh);
    if (status != kExitOk)
        return status;
    int nDim = mesh.Dimension();
    bool bElastic = opt.problem == "elasticity";
    if (nDim < 2)
        return run.Error(kExitBadInput, opt.mesh + ": no triangles, quadrangles or tetrahedra");
    if (bElastic && nDim != 2)
        return run.Error(kExitBadInput, "elasticity needs a 2D mesh of triangles or quadrangles");
    std::vector<int> domain;
    for (int el = 0; el < mesh.NumElements(); el++)
        if (ElementDimension(mesh.types[el]) == nDim)
            domain.push_back(el);
    int nPer = bElastic ? 2 : 1;
    std::vector<int> nodeDof(mesh.NumNodes(), -1);
    int nDOFs = 0;
    for (int el : domain)
        for (int k = mesh.nodeStart[el]; k < mesh.nodeStart[el + 1]; k++)
            if (nodeDof[mesh.nodes[k]] < 0) {
                nodeDof[mesh.nodes[k]] = nDOFs;
                nDOFs += nPer;
            }

    // 2. Prescribed values and loads from the command line.
    std::vector<double> fixed(nDOFs, NAN), load(nDOFs, 0.0);
    for (auto &f : opt.fixes) {
        std::string name = f.first;
        int nFirst = 0, nCount = nPer;
        if (bElastic && (EndsWith(name, ":x") || EndsWith(name, ":y"))) {
            nFirst = name.back() == 'x' ? 0 : 1;
            nCount = 1;
            name.resize(name.size() - 2);
        }
        double v[2];
        if (!Values(f.second, nCount, v) && !(nCount == 2 && Values(f.second, 1, v))) {
            return run.Error(kExitUsage, "--fix " + f.first + "=" + f.second + ": give " +
                                             (nCount == 2 ? "UX,UY" : "one value"));
        }
        if (nCount == 2 && Values(f.second, 1, v))
            v[1] = v[0];
        std::vector<std::pair<int, int>> groups;
        if (!FindGroups(mesh, name, groups))
            return run.Error(kExitUnknownGroup, "no physical group '" + name + "' in " + opt.mesh +
                                                    " (" + KnownGroups(mesh) + ")");
        for (int el = 0; el < mesh.NumElements(); el++)
            if (InGroups(mesh, el, groups))
                for (int k = mesh.nodeStart[el]; k < mesh.nodeStart[el + 1]; k++) {
                    int d = nodeDof[mesh.nodes[k]];
                    if (d >= 0)
                        for (int c = 0; c < nCount; c++)
                            fixed[d + nFirst + c] = v[c];
                }
    }
    for (auto &l : opt.loads) {
        double v[2];
        if (!Values(l.second, nPer, v))
            return run.Error(kExitUsage, "--load " + l.first + "=" + l.second + ": give " +
                                             (nPer == 2 ? "FX,FY" : "one value"));
        std::vector<std::pair<int, int>> groups;
        if (!FindGroups(mesh, l.first, groups))
            return run.Error(kExitUnknownGroup, "no physical group '" + l.first + "' in " +
                                                    opt.mesh + " (" + KnownGroups(mesh) + ")");
        for (int el = 0; el < mesh.NumElements(); el++)
            if (InGroups(mesh, el, groups)) {
                double xyz[12], w[4];
                ElementCoords(mesh, el, xyz);
                NodalWeights(mesh.types[el], xyz, w);
                int n = 0;
                for (int k = mesh.nodeStart[el]; k < mesh.nodeStart[el + 1]; k++, n++) {
                    int d = nodeDof[mesh.nodes[k]];
                    if (d >= 0)
                        for (int c = 0; c < nPer; c++)
                            load[d + c] += w[n] * v[c];
                }
            }
    }
    int nFixed = 0;
    for (double g : fixed)
        nFixed += !std::isnan(g);

    // Equations: with "drop" the prescribed unknowns have none.
    bool bDrop = opt.bc == "drop";
    std::vector<int> eqOf(nDOFs);
    int nEq = 0;
    for (int d = 0; d < nDOFs; d++)
        eqOf[d] = (bDrop && !std::isnan(fixed[d])) ? -1 : nEq++;
    // Unknowns of one element, in the order of its matrix.
    auto elementDofs = [&](int el, int *pDof) {
        int n = 0;
        for (int k = mesh.nodeStart[el]; k < mesh.nodeStart[el + 1]; k++)
            for (int c = 0; c < nPer; c++)
                pDof[n++] = nodeDof[mesh.nodes[k]] + c;
        return n;
    };
    auto stiffness = [&](int el, double *pK) {
        double xyz[12];
        ElementCoords(mesh, el, xyz);
        return bElastic ? ElasticStiffness(mesh.types[el], xyz, opt.material, pK)
                        : PoissonStiffness(mesh.types[el], xyz, opt.material.k, pK);
    };
    run.steps.End();

    // 3. Graph and numbering.
    run.steps.Begin("graph");
    Road road(opt, nEq, 1);
    road.Graph([&](const std::function<void(LONG *, int)> &visit) {
        int dofs[8];
        LONG eqs[8];
        for (int el : domain) {
            int n = elementDofs(el, dofs);
            for (int i = 0; i < n; i++)
                eqs[i] = eqOf[dofs[i]];
            visit(eqs, n);
        }
    });
    run.steps.Begin("numbering");
    road.Number();
    run.steps.Begin("pattern");
    if (!road.Pattern())
        return run.Error(kExitTooLarge, run.TooLarge(road));

    // 4. Assembly, with the prescribed values lifted into the load unless eliminated.
    run.steps.Begin("assembly");
    bool bLift = opt.bc != "eliminate";
    for (int el : domain) {
        int dofs[8], eqs[8];
        double K[64];
        int n = elementDofs(el, dofs);
        if (!stiffness(el, K))
            return run.Error(kExitBadInput, Format("%s: element %d is degenerate (no area)",
                                                   opt.mesh.c_str(), el + 1));
        for (int i = 0; i < n; i++)
            eqs[i] = eqOf[dofs[i]];
        road.AddElement(eqs, K, n);
        if (bLift)
            for (int j = 0; j < n; j++)
                if (!std::isnan(fixed[dofs[j]]))
                    for (int i = 0; i < n; i++)
                        if (eqs[i] >= 0)
                            road.Rhs(eqs[i], 0) -= K[i * n + j] * fixed[dofs[j]];
    }
    for (int d = 0; d < nDOFs; d++)
        if (eqOf[d] >= 0)
            road.Rhs(eqOf[d], 0) += load[d];

    // 5. Prescribed values.
    run.steps.Begin("prescribed values");
    if (!bDrop) {
        std::vector<int> eqs;
        std::vector<double> values;
        for (int d = 0; d < nDOFs; d++)
            if (!std::isnan(fixed[d])) {
                eqs.push_back(eqOf[d]);
                values.push_back(fixed[d]);
            }
        road.Prescribe(eqs, values, opt.bc == "eliminate", opt.bc == "unify");
    }
    if (!opt.exportPath.empty()) {
        run.steps.Begin("export");
        std::vector<int> rows, cols;
        std::vector<double> vals, rhs;
        road.Export(rows, cols, vals, rhs);
        std::string rhsPath = WithoutExtension(opt.exportPath) + "_rhs.mtx";
        if (!WriteMtxSymmetric(opt.exportPath, nEq, rows, cols, vals) ||
            !WriteMtxArray(rhsPath, nEq, 1, rhs))
            return run.Error(kExitWrite, "cannot write " + opt.exportPath);
    }
    if (opt.noSolve)
        return kExitOk;

    // 6. Solve.
    run.steps.Begin("solve");
    std::string why;
    status = road.Solve(why);
    if (status != kExitOk)
        return run.Error(status, (status == kExitSingular ? "singular system: " : "") + why +
                                     (nFixed == 0 ? " (nothing is prescribed: --fix)" : ""));
    std::vector<double> u(nDOFs);
    for (int d = 0; d < nDOFs; d++)
        u[d] = eqOf[d] >= 0 ? road.Solution(eqOf[d], 0) : fixed[d];

    // 7. Residual of the whole road, element by element: K u - f at the free unknowns.
    run.steps.Begin("residual");
    std::vector<double> Ku(nDOFs, 0.0), KuAbs(nDOFs, 0.0);
    for (int el : domain) {
        int dofs[8];
        double K[64];
        int n = elementDofs(el, dofs);
        stiffness(el, K);
        for (int i = 0; i < n; i++)
            for (int j = 0; j < n; j++) {
                Ku[dofs[i]] += K[i * n + j] * u[dofs[j]];
                KuAbs[dofs[i]] += std::fabs(K[i * n + j] * u[dofs[j]]);
            }
    }
    // Scaled by the load, or by the terms that cancel in K u where there is no load.
    double rMax = 0, fMax = 0, kuMax = 0;
    for (int d = 0; d < nDOFs; d++)
        if (std::isnan(fixed[d])) {
            rMax = std::fmax(rMax, std::fabs(Ku[d] - load[d]));
            fMax = std::fmax(fMax, std::fabs(load[d]));
            kuMax = std::fmax(kuMax, KuAbs[d]);
        }
    double scale = std::fmax(fMax, kuMax);
    double residual = scale > 0 ? rMax / scale : rMax;

    // 8. Output: point data on every node of the mesh.
    run.steps.Begin("write");
    std::vector<std::pair<std::string, std::vector<double>>> fields;
    std::vector<double> uMin(nPer, INFINITY), uMax(nPer, -INFINITY);
    for (int d = 0; d < nDOFs; d++) {
        uMin[d % nPer] = std::fmin(uMin[d % nPer], u[d]);
        uMax[d % nPer] = std::fmax(uMax[d % nPer], u[d]);
    }
    if (!bElastic) {
        std::vector<double> f(mesh.NumNodes(), 0.0);
        for (int p = 0; p < mesh.NumNodes(); p++)
            if (nodeDof[p] >= 0)
                f[p] = u[nodeDof[p]];
        fields.push_back({"u", f});
    } else {
        std::vector<double> disp(3 * (size_t)mesh.NumNodes(), 0.0), vm(mesh.NumNodes(), 0.0),
            count(mesh.NumNodes(), 0.0);
        for (int p = 0; p < mesh.NumNodes(); p++)
            if (nodeDof[p] >= 0) {
                disp[3 * p] = u[nodeDof[p]];
                disp[3 * p + 1] = u[nodeDof[p] + 1];
            }
        // Von Mises at each element's centre, averaged at the nodes.
        for (int el : domain) {
            double xyz[12], ue[8], s[3];
            int dofs[8];
            int n = elementDofs(el, dofs);
            for (int i = 0; i < n; i++)
                ue[i] = u[dofs[i]];
            ElementCoords(mesh, el, xyz);
            ElasticStress(mesh.types[el], xyz, opt.material, ue, s);
            double v = VonMises(s);
            for (int k = mesh.nodeStart[el]; k < mesh.nodeStart[el + 1]; k++) {
                vm[mesh.nodes[k]] += v;
                count[mesh.nodes[k]] += 1;
            }
        }
        for (int p = 0; p < mesh.NumNodes(); p++)
            if (count[p] > 0)
                vm[p] /= count[p];
        fields.push_back({"displacement", disp});
        fields.push_back({"von_mises", vm});
    }
    std::string vtu = opt.vtu.empty() ? WithoutExtension(opt.mesh) + ".vtu" : opt.vtu;
    if (WriteVtu(vtu, mesh, domain, fields) != 0)
        return run.Error(kExitWrite, "cannot write " + vtu);
    run.steps.End();

    // 9. Summary.
    int nTri = 0, nQuad = 0, nTet = 0;
    for (int el : domain)
        (mesh.types[el] == 2 ? nTri : mesh.types[el] == 3 ? nQuad : nTet)++;
    run.RoadFacts(road, nEq, nFixed, nDOFs);
    run.Fact("residual", Format("%.3e (max |K u - f| over the equations, relative)", residual));
    if (bElastic)
        run.Fact("solution",
                 Format("ux %.6g .. %.6g, uy %.6g .. %.6g", uMin[0], uMax[0], uMin[1], uMax[1]));
    else
        run.Fact("solution", Format("u %.6g .. %.6g", uMin[0], uMax[0]));
    run.Fact("output", vtu);
    run.Summary(Format("femsolve: %s on %s, %dD, %d nodes, %d triangles, %d quadrangles, "
                       "%d tetrahedra",
                       opt.problem.c_str(), opt.mesh.c_str(), nDim, mesh.NumNodes(), nTri, nQuad,
                       nTet));
    return kExitOk;
}

int RunFemsolve(const FemOptions &opt, std::ostream &out, std::ostream &err) {
    g_reports.clear();
    AfxReportHandler old = AfxSetReportHandler(CaptureReport);
    // The reorderers do nothing without their script file: give them one, and drop it after
    // unless it was asked for.
    std::string script = opt.script;
    if (script.empty()) {
        char tmp[] = "/tmp/femsolve_reord_XXXXXX";
        int fd = mkstemp(tmp);
        if (fd >= 0)
            close(fd);
        script = tmp;
    }
    CReorderMat::SetScriptName(script.c_str());
    bool bSym = CVirtMat::m_bSym;
    CVirtMat::m_bSym = true;
    int status;
    {
        Run run(opt, out, err);
        status = opt.matrix.empty() ? RunMesh(run) : RunMatrix(run);
    }
    CVirtMat::m_bSym = bSym;
    if (opt.script.empty())
        unlink(script.c_str());
    AfxSetReportHandler(old);
    return status;
}

bool FemsolveHasGmsh() {
#ifdef FEMSOLVE_HAVE_GMSH
    return true;
#else
    return false;
#endif
}

int FemsolveMain(int argc, char **argv) {
    FemOptions opt;
    std::string error;
    if (!ParseOptions(argc, argv, opt, error)) {
        std::cerr << "femsolve: " << error << "\n";
        return kExitUsage;
    }
    if (opt.help) {
        std::cout << HelpText();
        return kExitOk;
    }
    return RunFemsolve(opt, std::cout, std::cerr);
}
