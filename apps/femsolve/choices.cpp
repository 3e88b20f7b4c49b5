// femsolve's choice tables and the solver bodies they name.
#include "choices.h"

namespace {

// Gauss-Seidel takes one right-hand side at a time, as vectors.
template <class M> int GaussSeidelColumns(M &A, CMatrix &B, double dTol, int nMaxIter) {
    int n = B.GetRows(), nCols = n ? B.GetColumns() : 0;
    double *b = B.GetVector();
    for (int c = 0; c < nCols; c++) {
        CVector f(n, false, 0.0), x(n, true, 0.0);
        for (int i = 0; i < n; i++)
            f[i] = b[i * nCols + c];
        if (A.GaussSeidel_Iter(f, x, dTol, nMaxIter) != 1)
            return -2;
        for (int i = 0; i < n; i++)
            b[i * nCols + c] = x[i];
    }
    return 1;
}

} // namespace

// One line per numbering of the library.
const NumberingChoice kNumberings[] = {
    {"none", "the mesh's own node order", NULL},
    {"mindeg", "minimum degree on the starting degrees (MinDegReorder)",
     [](CReorderMat &g) { g.MinDegReorder(NULL); }},
    {"mindeg2", "minimum degree, degrees lowered as neighbours are numbered",
     [](CReorderMat &g) { g.MinDegReorder2(); }},
    {"mindeg3", "nearest neighbour numbers to the next label (MinDegReorder3)",
     [](CReorderMat &g) { g.MinDegReorder3(); }},
    {"mindeg4", "minimum degree with true elimination and fill (MinDegReorder4)",
     [](CReorderMat &g) { g.MinDegReorder4(); }},
    {"hager1", "Hager's numbering from the last label down, most numbered neighbours first",
     [](CReorderMat &g) { g.Hager1(); }},
    {"hager2", "Hager's numbering by the largest score S_k", [](CReorderMat &g) { g.Hager2(); }},
    {"hager3", "Hager's numbering by scores kept up to date", [](CReorderMat &g) { g.Hager3(); }},
    {"rcm", "reverse Cuthill-McKee: small bandwidth and profile, for the skyline",
     [](CReorderMat &g) { g.ReverseCuthillMcKee(); }},
    {"sloan", "Sloan's profile reduction", [](CReorderMat &g) { g.SloanReorder(); }},
#ifdef FEMMAT_HAS_AMD
    {"amd", "approximate minimum degree (SuiteSparse): least fill, for the system matrix",
     [](CReorderMat &g) { g.AMDReorder(); }},
#endif
    {NULL, NULL, NULL},
};

// One line per solver; NULL where a storage has no such solver.
const SolverChoice kSolvers[] = {
    {"cholesky", "root-free Cholesky, every load case at once", CholeskySystem, CholeskySkyline},
    {"gauss-seidel", "Gauss-Seidel iteration to --tol", GaussSeidelSystem, GaussSeidelSkyline},
    {"cg", "conjugate gradients with diagonal scaling to --tol", ConjGradientSystem, NULL},
    {NULL, NULL, NULL, NULL},
};

const NamedChoice kStorages[] = {
    {"system", "sparse system matrix, fill-in as new cells (CSystSpMat)"},
    {"skyline", "profile of the lower triangle, no fill outside it (CSkylineMatrix)"},
    {NULL, NULL},
};

const NamedChoice kPrescribed[] = {
    {"eliminate", "symmetric elimination of the prescribed columns (SymHandleBCs)"},
    {"unify", "identity rows after lifting the values into the load (SymUnifyAndZero)"},
    {"drop", "prescribed unknowns get no equation at all"},
    {NULL, NULL},
};

const NamedChoice kProblems[] = {
    {"poisson", "-div(k grad u) = f: triangles, quadrangles, tetrahedra"},
    {"elasticity", "plane stress: triangles, quadrangles"},
    {NULL, NULL},
};

const NumberingChoice *FindNumbering(const std::string &name) {
    for (const NumberingChoice *p = kNumberings; p->name; p++)
        if (name == p->name)
            return p;
    return NULL;
}

const SolverChoice *FindSolver(const std::string &name) {
    for (const SolverChoice *p = kSolvers; p->name; p++)
        if (name == p->name)
            return p;
    return NULL;
}

bool HasChoice(const NamedChoice *table, const std::string &name) {
    for (; table->name; table++)
        if (name == table->name)
            return true;
    return false;
}

std::string ChoiceNames(const NamedChoice *table) {
    std::string s;
    for (; table->name; table++)
        s += std::string(s.empty() ? "" : ", ") + table->name;
    return s;
}

int CholeskySystem(CSystSpMat &A, CMatrix &B, double, int) {
    double dTime = 0.0;
    return A.Cholesky_Solve(&B, dTime) == 1 ? 1 : -1;
}

int CholeskySkyline(CSkylineMatrix &A, CMatrix &B, double, int) {
    double dTime = 0.0;
    return A.Cholesky_Solve(&B, dTime) == 1 ? 1 : -1;
}

int GaussSeidelSystem(CSystSpMat &A, CMatrix &B, double dTol, int nMaxIter) {
    return GaussSeidelColumns(A, B, dTol, nMaxIter);
}

int GaussSeidelSkyline(CSkylineMatrix &A, CMatrix &B, double dTol, int nMaxIter) {
    return GaussSeidelColumns(A, B, dTol, nMaxIter);
}

int ConjGradientSystem(CSystSpMat &A, CMatrix &B, double dTol, int nMaxIter) {
    // The count equals nMaxIter only when the test never passed.
    double dNorm = 0.0;
    return A.ConjGradient2(B, dNorm, nMaxIter, dTol, NULL, true) < nMaxIter ? 1 : -2;
}
