// femsolve: a finite-element program on femmat. It reads a gmsh mesh (or a Matrix Market
// system), builds the node graph, numbers it, sizes the system matrix or the skyline from
// the numbering, assembles, imposes prescribed values, solves, and writes a .vtu for
// ParaView, with a summary of every step. It is also the model of a host: everything it
// asks of the library goes through femmat's public interface.
//
// Choices, made here:
// - Prescribed values: "eliminate" is the library's symmetric elimination (SymHandleBCs)
//   with the prescribed values written into their right-hand-side rows afterwards;
//   "unify" lifts the prescribed values out of the load element by element first, so that
//   the library's SymUnifyAndZero only ever sees zeros, where it is exact; "drop" gives a
//   prescribed unknown no equation at all (negative number), the classic host's way. The
//   skyline has no prescribed-value operation, so femsolve clears its rows and columns
//   itself in one pass over the profile for both "eliminate" and "unify".
// - A singular system: a Cholesky that fails, a pivot that is not positive or that is below
//   1e-12 of its original diagonal, or a solution that is not finite.
// - The residual is max|K u - f| over the unknowns that are not prescribed, relative to the
//   larger of max|f| and max sum|K_ij u_j| there, computed from the element matrices again,
//   so that it checks the whole road and not only the last solve.
// - A Matrix Market system must be symmetric: a general file is checked entry by entry, and
//   one triangle is used. Without --rhs the right-hand side is A times ones, so that the
//   summary can show the error of the solution as well.
// - gmsh's API, when it was found, meshes .geo files and converts a .msh that its $MeshFormat
//   line shows to be binary or of a version other than 2.2 and 4.1 ASCII; both reach the
//   built-in reader as 4.1 ASCII. Every other .msh goes to the built-in reader directly,
//   which is fuzzed and names what is wrong with a file.
#pragma once

#include "elements.h"

#include <iosfwd>
#include <string>
#include <utility>
#include <vector>

enum ExitStatus {
    kExitOk = 0,
    kExitUsage = 1,        // bad command line
    kExitNoFile = 2,       // an input file is missing or unreadable
    kExitBadInput = 3,     // malformed mesh or Matrix Market file, bad element
    kExitUnknownGroup = 4, // a physical group named on the command line is not in the mesh
    kExitSingular = 5,     // the system is singular (or not positive definite)
    kExitNotConverged = 6, // the iterative solver ran out of iterations
    kExitWrite = 7,        // an output file cannot be written
    kExitTooLarge = 8,     // the skyline does not fit
};

struct FemOptions {
    std::string mesh;        // .msh or .geo
    std::string matrix, rhs; // Matrix Market system instead of a mesh
    std::string problem = "poisson";
    std::vector<std::pair<std::string, std::string>> fixes; // group[:x|:y] -> value(s)
    std::vector<std::pair<std::string, std::string>> loads; // group -> value(s)
    // The least fill the library offers: AMD when it is built with it.
#ifdef FEMMAT_HAS_AMD
    std::string numbering = "amd";
#else
    std::string numbering = "mindeg4";
#endif
    std::string storage = "system";
    std::string solver = "cholesky";
    std::string bc = "eliminate";
    std::string vtu;        // output; default: the mesh's name with .vtu
    std::string solution;   // Matrix Market solution (system input); default: none
    std::string exportPath; // Matrix Market export of the constrained system (+ "_rhs")
    std::string script;     // keep the reorderers' Matlab script here
    Material material;
    double tol = 1e-10;
    int maxIter = 100000;
    double meshSize = 0.0; // for .geo input
    bool noSolve = false;  // stop after --export
    bool verbose = false;  // also print the library's reports
    bool quiet = false;    // no summary
    bool help = false;
};

// Parses argv; false with a message in error.
bool ParseOptions(int argc, char **argv, FemOptions &opt, std::string &error);
// The --help text.
std::string HelpText();
// The whole run; summary and progress go to out, errors to err. Yields the exit status.
int RunFemsolve(const FemOptions &opt, std::ostream &out, std::ostream &err);
// Whether femsolve was built with gmsh's API (.geo files, binary and other .msh versions).
bool FemsolveHasGmsh();
// main: parse, run.
int FemsolveMain(int argc, char **argv);
