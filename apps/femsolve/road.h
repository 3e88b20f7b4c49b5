// The library's road for one symmetric system, as femsolve walks it: graph, numbering,
// pattern, assembly, prescribed values, solve. Equations are numbered by the host from 0;
// the road keeps them apart from the labels (the rows of the matrix) that the numbering
// gives, so that the host never needs to know the numbering.
#pragma once

#include "femmat.h"
#include "femsolve.h"

#include <functional>
#include <string>
#include <vector>

class Road {
public:
    // Calls its argument once per element with the element's equation numbers (negative:
    // no equation).
    using ElementWalk = std::function<void(const std::function<void(LONG *, int)> &)>;

    Road(const FemOptions &opt, int nEq, int nRhs);

    // Graph and numbering; measures of the numbering before and after.
    void Graph(const ElementWalk &walk);
    void Number();
    // Pattern from the numbered graph. False if the skyline cannot be allocated (its size
    // is then in m_nProfile).
    bool Pattern();

    LONG Label(int eq) { return eq < 0 ? -1 : (LONG)m_graph.f_v(eq); }
    // Sums an element matrix at equation numbers (negative: skipped).
    void AddElement(const int *pEq, double *pK, int n);
    // Sums one symmetric entry (both triangles stand for it) at equations i, j.
    void AddEntry(int i, int j, double v);
    double &Rhs(int eq, int c) { return m_B.GetVector()[(size_t)Label(eq) * m_nRhs + c]; }

    // Prescribes values at equations. With bEliminate the columns' contributions move to the
    // right-hand sides here; otherwise the host has already lifted them.
    void Prescribe(const std::vector<int> &eqs, const std::vector<double> &values, bool bEliminate,
                   bool bUnify);
    // The constrained system in equation order: upper triangle triplets and right-hand sides.
    void Export(std::vector<int> &rows, std::vector<int> &cols, std::vector<double> &vals,
                std::vector<double> &rhs);
    // Solves; yields kExitOk, kExitSingular or kExitNotConverged, with a reason in why.
    int Solve(std::string &why);
    double Solution(int eq, int c) { return Rhs(eq, c); }

    // Facts for the summary.
    long long m_nBandBefore = 0, m_nEnvBefore = 0, m_nBandAfter = 0, m_nEnvAfter = 0;
    long m_nCellsAssembled = 0, m_nCellsFactor = 0;
    long long m_nProfile = 0;

private:
    long CountCells();
    void Measure(long long &nBand, long long &nEnv);
    std::vector<double> Diagonal();

    const FemOptions &m_opt;
    int m_nEq, m_nRhs;
    bool m_bSkyline;
    CReorderMat m_graph;
    CSystSpMat m_sys;
    CSkylineMatrix m_sky;
    CMatrix m_B;
};
