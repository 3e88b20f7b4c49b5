// The tables of femsolve's choices. A new numbering or solver of the library joins femsolve
// as one line in its table, and --help lists it from there.
#pragma once

#include "femmat.h"

#include <string>

struct NumberingChoice {
    const char *name;
    const char *help;
    void (*run)(CReorderMat &graph); // NULL: keep the mesh's own order
};

// A solver for either storage; NULL where it does not apply. Both solve every column of
// B in place and yield 1, or -1 for a failed factorisation, -2 for no convergence.
struct SolverChoice {
    const char *name;
    const char *help;
    int (*system)(CSystSpMat &A, CMatrix &B, double dTol, int nMaxIter);
    int (*skyline)(CSkylineMatrix &A, CMatrix &B, double dTol, int nMaxIter);
};

struct NamedChoice {
    const char *name;
    const char *help;
};

extern const NumberingChoice kNumberings[];
extern const SolverChoice kSolvers[];
extern const NamedChoice kStorages[];
extern const NamedChoice kPrescribed[];
extern const NamedChoice kProblems[];

const NumberingChoice *FindNumbering(const std::string &name);
const SolverChoice *FindSolver(const std::string &name);
bool HasChoice(const NamedChoice *table, const std::string &name);
// "a, b, c" of a table's names, for messages.
std::string ChoiceNames(const NamedChoice *table);

// Solver bodies, for the tables.
int CholeskySystem(CSystSpMat &A, CMatrix &B, double dTol, int nMaxIter);
int CholeskySkyline(CSkylineMatrix &A, CMatrix &B, double dTol, int nMaxIter);
int GaussSeidelSystem(CSystSpMat &A, CMatrix &B, double dTol, int nMaxIter);
int GaussSeidelSkyline(CSkylineMatrix &A, CMatrix &B, double dTol, int nMaxIter);
// Conjugate gradients with diagonal scaling, every column at once.
int ConjGradientSystem(CSystSpMat &A, CMatrix &B, double dTol, int nMaxIter);
