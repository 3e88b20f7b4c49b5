// femsolve's walk along the library's road.
#include "road.h"
#include "choices.h"

#include <algorithm>
#include <cmath>
#include <unistd.h>

Road::Road(const FemOptions &opt, int nEq, int nRhs)
    : m_opt(opt), m_nEq(nEq), m_nRhs(nRhs), m_bSkyline(opt.storage == "skyline"), m_graph(1),
      m_B(nEq, nRhs, true, 0.0) {}

void Road::Graph(const ElementWalk &walk) {
    // Two passes over the elements: count, then insert.
    m_graph.Alloc(m_nEq);
    walk([&](LONG *p, int n) { m_graph.InsertDOFs(p, 0, n); });
    m_graph.Init();
    walk([&](LONG *p, int n) { m_graph.InsertDOFs(p, 1, n); });
}

// Bandwidth and envelope as the library measures them, summed in 64 bits: on a large mesh
// with a poor numbering the envelope passes the int that Env yields.
void Road::Measure(long long &nBand, long long &nEnv) {
    nBand = nEnv = 0;
    for (int v = 0; v < m_nEq; v++) {
        long long b = 0;
        for (int k = 0; k < m_graph.m_pRowSizes[v]; k++)
            b = std::max(b,
                         (long long)std::abs(m_graph.f_v(m_graph.m_ppRows[v][k]) - m_graph.f_v(v)));
        nBand = std::max(nBand, b);
        nEnv += b;
    }
}

void Road::Number() {
    Measure(m_nBandBefore, m_nEnvBefore);
    const NumberingChoice *p = FindNumbering(m_opt.numbering);
    if (p && p->run)
        p->run(m_graph);
    m_graph.PostReorder();
    Measure(m_nBandAfter, m_nEnvAfter);
}

bool Road::Pattern() {
    // The system matrix spends the graph's rows; the labels stay readable.
    if (m_bSkyline) {
        // The skyline counts its values in an int, and a profile larger than half the
        // memory would only swap: refuse both before allocating.
        long long nProfile = 0;
        for (int v = 0; v < m_nEq; v++) {
            int l = m_graph.f_v(v), nLow = l;
            for (int k = 0; k < m_graph.m_pRowSizes[v]; k++)
                nLow = std::min(nLow, m_graph.f_v(m_graph.m_ppRows[v][k]));
            nProfile += l - nLow + 1;
        }
        m_nProfile = nProfile;
        long long nMemory = (long long)sysconf(_SC_PHYS_PAGES) * sysconf(_SC_PAGE_SIZE);
        if (nProfile > 0x7fffffffLL || (nMemory > 0 && nProfile * 8 > nMemory / 2))
            return false;
        return m_sky.Allocate(m_graph);
    }
    m_sys.Allocate(m_graph);
    return true;
}

void Road::AddElement(const int *pEq, double *pK, int n) {
    LONG labels[8];
    for (int i = 0; i < n; i++)
        labels[i] = Label(pEq[i]);
    if (m_bSkyline)
        m_sky.AddValues(labels, pK, n);
    else
        m_sys.AddValues(labels, pK, n);
}

void Road::AddEntry(int i, int j, double v) {
    int a = Label(i), b = Label(j);
    if (a > b)
        std::swap(a, b);
    if (m_bSkyline)
        m_sky(a, b) += v; // column a of row b, the lower triangle
    else
        m_sys.Add(a, b, v);
}

void Road::Prescribe(const std::vector<int> &eqs, const std::vector<double> &values,
                     bool bEliminate, bool bUnify) {
    size_t m = eqs.size();
    if (m == 0)
        return;
    double *b = m_B.GetVector();
    if (m_bSkyline) {
        // One pass over the profile: a stored entry that links a prescribed and a free
        // unknown moves to the free one's right-hand side and leaves the matrix.
        std::vector<double> g(m_nEq, 0.0);
        std::vector<char> fixed(m_nEq, 0);
        for (size_t k = 0; k < m; k++) {
            fixed[Label(eqs[k])] = 1;
            g[Label(eqs[k])] = bEliminate ? values[k] : 0.0;
        }
        for (int r = 0; r < m_nEq; r++) {
            double *row = m_sky.m_ppDiag[r];
            for (int c = m_sky.PeakRow(r); c < r; c++) {
                double &v = row[c - r];
                if (v == 0.0 || (!fixed[r] && !fixed[c]))
                    continue;
                for (int k = 0; k < m_nRhs; k++) {
                    if (fixed[c] && !fixed[r])
                        b[(size_t)r * m_nRhs + k] -= v * g[c];
                    if (fixed[r] && !fixed[c])
                        b[(size_t)c * m_nRhs + k] -= v * g[r];
                }
                v = 0.0;
            }
        }
        for (int r = 0; r < m_nEq; r++)
            if (fixed[r])
                *m_sky.m_ppDiag[r] = 1.0;
    } else if (bEliminate) {
        CMatrix mBC((int)m, 1 + m_nRhs, true, 0.0);
        for (size_t k = 0; k < m; k++) {
            mBC.SetValue((int)k, 0, Label(eqs[k]));
            for (int c = 0; c < m_nRhs; c++)
                mBC.SetValue((int)k, 1 + c, values[k]);
        }
        m_sys.SymHandleBCs(mBC, m_B);
    } else if (bUnify) {
        // The values are lifted already; zeros are where this operation is exact.
        CVector vDOFs((int)m, false, 0.0), vValues((int)m, true, 0.0);
        for (size_t k = 0; k < m; k++)
            vDOFs[(int)k] = Label(eqs[k]);
        m_sys.SymUnifyAndZero(vDOFs, vValues, &m_B);
    }
    // Identity rows solve to their right-hand side: the prescribed value.
    for (size_t k = 0; k < m; k++)
        for (int c = 0; c < m_nRhs; c++)
            Rhs(eqs[k], c) = values[k];
}

void Road::Export(std::vector<int> &rows, std::vector<int> &cols, std::vector<double> &vals,
                  std::vector<double> &rhs) {
    auto put = [&](int a, int b, double v) {
        int i = m_graph.f_v_inv(a), j = m_graph.f_v_inv(b);
        rows.push_back(i < j ? i : j);
        cols.push_back(i < j ? j : i);
        vals.push_back(v);
    };
    if (m_bSkyline) {
        for (int r = 0; r < m_nEq; r++)
            for (int c = m_sky.PeakRow(r); c <= r; c++)
                if (m_sky.m_ppDiag[r][c - r] != 0.0)
                    put(c, r, m_sky.m_ppDiag[r][c - r]);
    } else {
        for (CSparseMatrix::row *r = m_sys.GetFirstRow(); r; r = r->m_pNext)
            for (CSparseMatrix::cell *c = r->m_pFirstCell; c; c = c->m_pNext)
                if (c->m_dValue != 0.0)
                    put(r->m_nRow, c->m_nCol, c->m_dValue);
    }
    // Column-major, as an array file lists it.
    rhs.resize((size_t)m_nEq * m_nRhs);
    for (int c = 0; c < m_nRhs; c++)
        for (int i = 0; i < m_nEq; i++)
            rhs[(size_t)c * m_nEq + i] = Rhs(i, c);
}

long Road::CountCells() {
    if (m_bSkyline)
        return m_sky.m_nValues;
    long n = 0;
    for (CSparseMatrix::row *r = m_sys.GetFirstRow(); r; r = r->m_pNext)
        n += r->NonZeros();
    return n;
}

std::vector<double> Road::Diagonal() {
    std::vector<double> d(m_nEq, 0.0);
    for (int i = 0; i < m_nEq; i++) {
        if (m_bSkyline) {
            d[i] = *m_sky.m_ppDiag[i];
        } else {
            CSparseMatrix::cell *c = m_sys.m_pRowTable[i].m_pFirstCell;
            d[i] = c ? c->m_dValue : 0.0;
        }
    }
    return d;
}

int Road::Solve(std::string &why) {
    const SolverChoice *s = FindSolver(m_opt.solver);
    m_nCellsAssembled = CountCells();
    std::vector<double> diag = Diagonal();
    int r = m_bSkyline ? s->skyline(m_sky, m_B, m_opt.tol, m_opt.maxIter)
                       : s->system(m_sys, m_B, m_opt.tol, m_opt.maxIter);
    m_nCellsFactor = CountCells();
    if (r == -2) {
        why = "no convergence in " + std::to_string(m_opt.maxIter) + " iterations";
        return kExitNotConverged;
    }
    if (r != 1) {
        why = "the factorisation met a pivot that is not positive";
        return kExitSingular;
    }
    if (m_opt.solver == "cholesky") {
        // The pivots are where the factors keep them; a tiny one is a singular system.
        std::vector<double> piv = Diagonal();
        for (int i = 0; i < m_nEq; i++)
            if (!(piv[i] > 1e-12 * std::fabs(diag[i]))) {
                why = "pivot " + std::to_string(piv[i]) + " at equation " +
                      std::to_string(m_graph.f_v_inv(i)) + " is not positive";
                return kExitSingular;
            }
    }
    const double *b = m_B.GetVector();
    for (size_t k = 0; k < (size_t)m_nEq * m_nRhs; k++)
        if (!std::isfinite(b[k])) {
            why = "the solution is not finite";
            return kExitSingular;
        }
    return kExitOk;
}
