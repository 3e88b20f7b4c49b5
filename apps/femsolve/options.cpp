// femsolve's command line and its help.
#include "choices.h"
#include "femsolve.h"

#include <cstdlib>
#include <cstring>

namespace {

bool Number(const char *s, double &v) {
    char *e;
    v = strtod(s, &e);
    return e != s && *e == '\0';
}

// "group=value" into its two halves.
bool Assignment(const std::string &s, std::pair<std::string, std::string> &out) {
    size_t eq = s.rfind('=');
    if (eq == std::string::npos || eq == 0 || eq + 1 == s.size())
        return false;
    out = {s.substr(0, eq), s.substr(eq + 1)};
    return true;
}

// Spaces that fill a name out to a column, one at least.
std::string Pad(const char *pszName, size_t nWidth) {
    size_t n = strlen(pszName);
    return std::string(n < nWidth ? nWidth - n : 1, ' ');
}

} // namespace

bool ParseOptions(int argc, char **argv, FemOptions &opt, std::string &error) {
    for (int i = 1; i < argc; i++) {
        std::string a = argv[i];
        auto value = [&](std::string &out) {
            if (i + 1 >= argc) {
                error = a + " needs a value";
                return false;
            }
            out = argv[++i];
            return true;
        };
        auto real = [&](double &out) {
            std::string s;
            if (!value(s))
                return false;
            if (!Number(s.c_str(), out)) {
                error = a + " needs a number, not '" + s + "'";
                return false;
            }
            return true;
        };
        auto choice = [&](std::string &out, const NamedChoice *table) {
            if (!value(out))
                return false;
            if (!HasChoice(table, out)) {
                error = a + " is one of " + ChoiceNames(table) + ", not '" + out + "'";
                return false;
            }
            return true;
        };
        std::pair<std::string, std::string> kv;
        std::string s;
        double d;
        if (a == "-h" || a == "--help") {
            opt.help = true;
        } else if (a == "--problem") {
            if (!choice(opt.problem, kProblems))
                return false;
        } else if (a == "--fix" || a == "--load") {
            if (!value(s))
                return false;
            if (!Assignment(s, kv)) {
                error = a + " takes GROUP=VALUE, not '" + s + "'";
                return false;
            }
            (a == "--fix" ? opt.fixes : opt.loads).push_back(kv);
        } else if (a == "--numbering") {
            if (!value(opt.numbering))
                return false;
            if (!FindNumbering(opt.numbering)) {
                error = "unknown numbering '" + opt.numbering + "' (see --help)";
                return false;
            }
        } else if (a == "--storage") {
            if (!choice(opt.storage, kStorages))
                return false;
        } else if (a == "--solver") {
            if (!value(opt.solver))
                return false;
            if (!FindSolver(opt.solver)) {
                error = "unknown solver '" + opt.solver + "' (see --help)";
                return false;
            }
        } else if (a == "--prescribed") {
            if (!choice(opt.bc, kPrescribed))
                return false;
        } else if (a == "--matrix") {
            if (!value(opt.matrix))
                return false;
        } else if (a == "--rhs") {
            if (!value(opt.rhs))
                return false;
        } else if (a == "-o" || a == "--vtu") {
            if (!value(opt.vtu))
                return false;
        } else if (a == "--solution") {
            if (!value(opt.solution))
                return false;
        } else if (a == "--export") {
            if (!value(opt.exportPath))
                return false;
        } else if (a == "--script") {
            if (!value(opt.script))
                return false;
        } else if (a == "--k") {
            if (!real(opt.material.k))
                return false;
        } else if (a == "--E") {
            if (!real(opt.material.E))
                return false;
        } else if (a == "--nu") {
            if (!real(opt.material.nu))
                return false;
        } else if (a == "--thickness") {
            if (!real(opt.material.t))
                return false;
        } else if (a == "--tol") {
            if (!real(opt.tol))
                return false;
        } else if (a == "--max-iter") {
            if (!real(d))
                return false;
            opt.maxIter = (int)d;
        } else if (a == "--mesh-size") {
            if (!real(opt.meshSize))
                return false;
        } else if (a == "--no-solve") {
            opt.noSolve = true;
        } else if (a == "-v" || a == "--verbose") {
            opt.verbose = true;
        } else if (a == "-q" || a == "--quiet") {
            opt.quiet = true;
        } else if (!a.empty() && a[0] == '-') {
            error = "unknown option " + a + " (see --help)";
            return false;
        } else if (opt.mesh.empty()) {
            opt.mesh = a;
        } else {
            error = "one mesh only: '" + opt.mesh + "' and '" + a + "'";
            return false;
        }
    }
    if (opt.help)
        return true;
    if (opt.mesh.empty() == opt.matrix.empty()) {
        error = "give a mesh file or --matrix FILE (see --help)";
        return false;
    }
    const SolverChoice *s = FindSolver(opt.solver);
    if (opt.storage == "skyline" ? s->skyline == NULL : s->system == NULL) {
        error = "solver " + opt.solver + " does not work on " + opt.storage + " storage";
        return false;
    }
    return true;
}

std::string HelpText() {
    std::string h =
        "femsolve: solve a finite-element problem on a gmsh mesh, or a Matrix Market system.\n"
        "\n"
        "usage: femsolve MESH [options]\n"
        "       femsolve --matrix A.mtx [--rhs B.mtx] [options]\n"
        "\n"
#ifdef FEMSOLVE_HAVE_GMSH
        "MESH: a gmsh .msh of any version, ASCII or binary, or a .geo that gmsh meshes\n"
#else
        "MESH: a gmsh .msh, 2.2 or 4.1 ASCII (binary and other versions, and .geo files,\n"
        "need femsolve built with gmsh's API: Debian's libgmsh-dev)\n"
#endif
        "\n"
        "problem\n"
        "  --problem NAME         poisson (default) or elasticity (plane stress)\n"
        "  --fix GROUP=VALUE      prescribed value on a physical group (name or tag);\n"
        "                         elasticity: GROUP=UX,UY, or GROUP:x=UX, GROUP:y=UY\n"
        "  --load GROUP=VALUE     Poisson: source on a domain group, flux on a boundary\n"
        "                         group, point source on a point group; elasticity:\n"
        "                         GROUP=FX,FY body force, traction or point force\n"
        "  --k K                  conductivity (1)\n"
        "  --E E --nu NU          Young's modulus (1) and Poisson's ratio (0.3)\n"
        "  --thickness T          plate thickness (1)\n"
#ifdef FEMSOLVE_HAVE_GMSH
        "  --mesh-size H          element size when meshing a .geo file\n"
#endif
        "\n"
        "method\n";
    h += "  --numbering NAME       (" + FemOptions().numbering + ")\n";
    for (const NumberingChoice *p = kNumberings; p->name; p++)
        h += "      " + std::string(p->name) + Pad(p->name, 12) + p->help + "\n";
    h += "  --storage NAME         (system)\n";
    for (const NamedChoice *p = kStorages; p->name; p++)
        h += "      " + std::string(p->name) + Pad(p->name, 12) + p->help + "\n";
    h += "  --solver NAME          (cholesky)\n";
    for (const SolverChoice *p = kSolvers; p->name; p++)
        h += "      " + std::string(p->name) + Pad(p->name, 14) + p->help +
             (p->skyline ? "" : "; system storage only") + "\n";
    h += "  --prescribed NAME      (eliminate)\n";
    for (const NamedChoice *p = kPrescribed; p->name; p++)
        h += "      " + std::string(p->name) + Pad(p->name, 12) + p->help + "\n";
    h += "  --tol TOL --max-iter N iterative solvers' tolerance (1e-10) and limit (100000)\n"
         "\n"
         "output\n"
         "  -o, --vtu FILE         solution for ParaView (default: MESH with .vtu)\n"
         "  --solution FILE        solution as Matrix Market (system input)\n"
         "  --export FILE.mtx      the constrained system, its loads beside it in FILE_rhs.mtx\n"
         "  --no-solve             stop after --export\n"
         "  --script FILE          keep the reorderers' Matlab script there\n"
         "  -v, --verbose          also print the library's timing reports\n"
         "  -q, --quiet            no summary\n"
         "\n"
         "exit status: 0 solved, 1 bad command line, 2 missing file, 3 malformed input,\n"
         "4 unknown physical group, 5 singular system, 6 no convergence, 7 write error,\n"
         "8 the skyline does not fit in memory\n";
    return h;
}
