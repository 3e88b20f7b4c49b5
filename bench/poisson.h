// The 2D Poisson problem the benchmarks share: an n by n grid of nodes numbered row by row,
// one degree of freedom per node, bilinear unit-square quads. The node graph as a host
// builds it, the assembly, a private script file for the numberings, processor time and a
// count of cells.
#pragma once

#include "reorder/reordermat.h"
#include "sparse/sparsematrix.h"

#include <cstdio>
#include <ctime>
#include <string>
#include <unistd.h>

namespace poisson {

// Processor time of this thread in ms: the machine is shared, so wall time says less.
inline double CpuMs() {
    timespec ts;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &ts);
    return ts.tv_sec * 1e3 + ts.tv_nsec * 1e-6;
}

inline double MsSince(double dStart) {
    return CpuMs() - dStart;
}

// Stiffness of the unit square bilinear quad for -Laplace, nodes counter-clockwise.
inline const double s_Quad[16] = {4.0 / 6,  -1.0 / 6, -2.0 / 6, -1.0 / 6, -1.0 / 6, 4.0 / 6,
                                  -1.0 / 6, -2.0 / 6, -2.0 / 6, -1.0 / 6, 4.0 / 6,  -1.0 / 6,
                                  -1.0 / 6, -2.0 / 6, -1.0 / 6, 4.0 / 6};

inline int Elements(int n) {
    return (n - 1) * (n - 1);
}

// The nodes of element e, counter-clockwise; elements run row by row like the nodes.
inline void QuadDofs(int n, int e, LONG dofs[4]) {
    dofs[0] = e / (n - 1) * n + e % (n - 1);
    dofs[1] = dofs[0] + 1;
    dofs[2] = dofs[0] + n + 1;
    dofs[3] = dofs[0] + n;
}

// The host's graph: Alloc, a counting pass, Init, an inserting pass.
inline void BuildGraph(CReorderMat &g, int n) {
    LONG dofs[4];
    g.Alloc(n * n);
    for (int e = 0; e < Elements(n); e++) {
        QuadDofs(n, e, dofs);
        g.InsertDOFs(dofs, 0, 4);
    }
    g.Init();
    for (int e = 0; e < Elements(n); e++) {
        QuadDofs(n, e, dofs);
        g.InsertDOFs(dofs, 1, 4);
    }
}

// Every element into m, its nodes mapped to labels through pGraph when one is given.
inline void Assemble(CVirtRealMat &m, int n, CReorderMat *pGraph = NULL) {
    double values[16];
    for (int k = 0; k < 16; k++)
        values[k] = s_Quad[k]; // AddValues may only read it; a copy keeps it honest
    LONG dofs[4];
    for (int e = 0; e < Elements(n); e++) {
        QuadDofs(n, e, dofs);
        if (pGraph != NULL)
            for (int k = 0; k < 4; k++)
                dofs[k] = pGraph->f_v(dofs[k]);
        m.AddValues(dofs, values, 4);
    }
}

inline int CountCells(CSparseMatrix &m) {
    int nCells = 0;
    for (CSparseMatrix::row *r = m.GetFirstRow(); r != NULL; r = r->m_pNext)
        nCells += r->NonZeros();
    return nCells;
}

// Reports are kept from the screen.
inline int Silent(const char *) {
    return 1;
}

// The numberings write their script to a file of this process while it lives.
class ScriptFile {
public:
    explicit ScriptFile(const char *pszTag)
        : m_strOld(CReorderMat::GetScriptName()),
          m_strPath(std::string("/tmp/") + pszTag + "_" + std::to_string(getpid()) + ".m") {
        CReorderMat::SetScriptName(m_strPath.c_str());
    }
    ~ScriptFile() {
        CReorderMat::SetScriptName(m_strOld.c_str());
        std::remove(m_strPath.c_str());
    }

private:
    std::string m_strOld, m_strPath;
};

} // namespace poisson
