// The fast paths of the road (up-looking Cholesky, the push form of the transposed
// substitution, prescribed values in one walk over the cells) against the plain forms they
// replace, kept here: cells, values and solutions must agree bit for bit. Hashes of a
// factor and a solution, taken from the plain forms, pin them on top.
#include "common/mesh.h"
#include "system_test_util.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <functional>

namespace {

typedef CSparseMatrix::cell cell;
typedef CSparseMatrix::row row;

// --- the plain forms -------------------------------------------------------------------

int PlainCholesky(CSystSpMat &m) {
    for (int i = 0; i < m.m_nTableRows; i++) {
        cell *c = m.m_pRowTable[i].m_pFirstCell;
        if (c == NULL || c->m_dValue <= 0.0)
            return -1;
        for (cell *a = c->m_pNext; a != NULL; a = a->m_pNext) {
            double f = -a->m_dValue;
            if (f == 0.0)
                continue;
            m.m_pRowTable[a->m_nCol].AddRow(a, f / c->m_dValue);
            a->m_dValue /= c->m_dValue;
        }
    }
    return 1;
}

// U^T y = b by scanning every earlier row for an entry waiting on this one.
void PlainForwSub(CSparseMatrix &m, CMatrix &B, int nMode) {
    const int n = m.GetRows(), nc = B.GetColumns();
    std::vector<cell *> entry(n);
    int p = 0;
    for (row *r = m.m_pFirstRow; r != NULL; r = r->m_pNext, p++) {
        for (int i = 0; i < p; i++) {
            if (entry[i] == NULL || entry[i]->m_nCol != r->m_nRow)
                continue;
            for (int k = 0; k < nc; k++)
                B[r->m_nRow][k] -= B[i][k] * entry[i]->m_dValue;
            entry[i] = entry[i]->m_pNext;
        }
        if (nMode == -2 && r->m_pFirstCell != NULL)
            for (int k = 0; k < nc; k++)
                B[r->m_nRow][k] /= r->m_pFirstCell->m_dValue;
        entry[p] = r->m_pFirstCell != NULL ? r->m_pFirstCell->m_pNext : NULL;
    }
}

void PlainSymHandleBCs(CSystSpMat &m, CMatrix &mBC, CMatrix &mRHS) {
    const int n = m.m_nTableRows, nBC = mBC.GetRows(), c = mBC.GetColumns();
    for (int r = 0; r < n; r++)
        for (int b = 0; b < nBC; b++) {
            int d = (int)mBC[b][0];
            cell *p = d >= r ? m.m_pRowTable[r].GetCell(d) : m.m_pRowTable[d].GetCell(r);
            if (p != NULL)
                for (int k = 0; k < c - 1; k++)
                    mRHS[r][k] -= mBC[b][k + 1] * p->m_dValue;
        }
    for (int r = 0; r < n; r++)
        for (int b = 0; b < nBC; b++) {
            int d = (int)mBC[b][0];
            if (d != r)
                delete (d > r ? m.m_pRowTable[r].Remove(d) : m.m_pRowTable[d].Remove(r));
        }
    for (int b = 0; b < nBC; b++) {
        int d = (int)mBC[b][0];
        cell *pDiag = m.m_pRowTable[d].Remove(d);
        m.m_pRowTable[d].Clear();
        if (pDiag != NULL) {
            pDiag->m_pNext = NULL;
            pDiag->m_dValue = 1.0;
            m.m_pRowTable[d].m_pFirstCell = pDiag;
        }
    }
}

// Row d: the single cell 1.0; the first cell object is kept, as the library does.
void PlainIdentityRow(row &R, int d) {
    cell *c = R.Remove(R.m_pFirstCell != NULL ? R.m_pFirstCell->m_nCol : -1);
    R.Clear();
    if (c == NULL) {
        R.Add(d, 1.0);
        return;
    }
    c->m_pNext = NULL;
    c->m_dValue = 1.0;
    c->m_nCol = d;
    R.m_pFirstCell = c;
}

// Both CVector forms; bSym: identity rows first and diagonals spared (SymUnifyAndZero).
void PlainUnify(CSystSpMat &m, CVector &vDOFs, CVector &vValues, CMatrix &B, bool bSym) {
    const int nb = vDOFs.GetSize(), nc = B.GetColumns();
    auto identity = [&]() {
        for (int i = 0; i < nb; i++) {
            PlainIdentityRow(m.m_pRowTable[(int)vDOFs[i]], (int)vDOFs[i]);
            for (int k = 0; k < nc; k++)
                B[(int)vDOFs[i]][k] = vValues[i];
        }
    };
    if (bSym)
        identity();
    for (row *R = m.m_pFirstRow; R != NULL; R = R->m_pNext)
        for (int i = 0; i < nb; i++) {
            if (bSym && R->m_nRow == (int)vDOFs[i])
                continue;
            cell *p = R->Remove((int)vDOFs[i]);
            if (p == NULL)
                continue;
            for (int k = 0; k < nc; k++)
                B[R->m_nRow][k] -= vValues[i] * p->m_dValue;
            delete p;
        }
    if (!bSym)
        identity();
}

// --- comparison ------------------------------------------------------------------------

// Every cell as (row, column, bits of the value), in list order.
std::vector<std::array<uint64_t, 3>> Cells(CSparseMatrix &m) {
    std::vector<std::array<uint64_t, 3>> v;
    for (row *r = m.m_pFirstRow; r != NULL; r = r->m_pNext)
        for (cell *c = r->m_pFirstCell; c != NULL; c = c->m_pNext) {
            uint64_t bits;
            memcpy(&bits, &c->m_dValue, 8);
            v.push_back({(uint64_t)r->m_nRow, (uint64_t)c->m_nCol, bits});
        }
    return v;
}

std::vector<uint64_t> Bits(const CMatrix &B) {
    std::vector<uint64_t> v(B.m_nSize);
    memcpy(v.data(), B.m_pVector, 8 * v.size());
    return v;
}

// FNV-1a over cells and right-hand sides.
uint64_t Hash(CSparseMatrix &m, const CMatrix &B) {
    uint64_t h = 1469598103934665603ull;
    auto mix = [&h](uint64_t x) {
        for (int k = 0; k < 8; k++, x >>= 8)
            h = (h ^ (x & 0xff)) * 1099511628211ull;
    };
    for (auto &c : Cells(m))
        for (uint64_t x : c)
            mix(x);
    for (uint64_t x : Bits(B))
        mix(x);
    return h;
}

// Two identical assemblies of a mesh: the library works on one, the plain forms on the
// other. Triangles give stored zeros (no coupling across the right angle), which the
// factorisation skips; quads and two dofs per node give wide rows.
struct Pair {
    RoadMesh mesh;
    CReorderMat g{1};
    CSystSpMat a, b;
    CMatrix Ba, Bb;
    Pair(bool bQuads, int nPerNode, bool bMinDeg, bool bSym) {
        mesh = MakeRoadMesh(12, 11, bQuads, nPerNode);
        BuildGraph(g, mesh.nDOFs, mesh.dofs);
        if (bMinDeg)
            g.MinDegReorder4();
        g.PostReorder();
        SymFlag sym(bSym);
        for (CSystSpMat *m : {&a, &b}) {
            if (m == &a) {
                m->Allocate(g);
            } else {
                // The graph is spent; the same pattern comes from the first matrix.
                int n = a.m_nTableRows;
                m->Allocate(&n, 1);
                for (int r = 0; r < n; r++) {
                    cell *pCursor = NULL;
                    for (cell *c = a.m_pRowTable[r].m_pFirstCell; c; c = c->m_pNext)
                        m->m_pRowTable[r].Add(c->m_nCol, 0.0, pCursor);
                }
            }
            AssembleInLabels(*m, g, mesh, 1, !bSym);
        }
        Ba = LoadsInLabels(g, mesh);
        Bb = LoadsInLabels(g, mesh);
    }
    void ExpectSame(const char *pszStep) {
        EXPECT_TRUE(Cells(a) == Cells(b)) << pszStep;
        EXPECT_TRUE(Bits(Ba) == Bits(Bb)) << pszStep;
    }
};

} // namespace

TEST(Pinning, SymmetricRoadMatchesThePlainFormsBitForBit) {
    ScriptDir script;
    ReportRecorder reports;
    for (bool bQuads : {false, true})
        for (int nPerNode : {1, 2})
            for (bool bMinDeg : {false, true})
                for (int nBC = 0; nBC < 2; nBC++) {
                    SCOPED_TRACE(testing::Message() << bQuads << nPerNode << bMinDeg << nBC);
                    Pair p(bQuads, nPerNode, bMinDeg, true);
                    // Non-zero prescribed values, a repeated number among them.
                    const int nb = (int)p.mesh.prescribed.size();
                    CMatrix bcs(nb + 1, 3);
                    for (int k = 0; k <= nb; k++) {
                        bcs[k][0] = p.g.f_v(p.mesh.prescribed[k % nb]);
                        bcs[k][1] = 0.5 + 0.01 * k;
                        bcs[k][2] = -1.0 / (k + 3);
                    }
                    CVector vDOFs, vValues;
                    bcs.GetColVect(vDOFs, 0);
                    bcs.GetColVect(vValues, 1);
                    if (nBC == 0) {
                        p.a.SymHandleBCs(bcs, p.Ba);
                        PlainSymHandleBCs(p.b, bcs, p.Bb);
                    } else {
                        p.a.SymUnifyAndZero(vDOFs, vValues, &p.Ba);
                        PlainUnify(p.b, vDOFs, vValues, p.Bb, true);
                    }
                    p.ExpectSame("prescribed values");

                    ASSERT_EQ(p.a.Cholesky(), 1);
                    ASSERT_EQ(PlainCholesky(p.b), 1);
                    p.ExpectSame("factor");
                    for (int nMode : {-1, -2}) {
                        p.a.ForwSub(&p.Ba, NULL, nMode);
                        PlainForwSub(p.b, p.Bb, nMode);
                        p.ExpectSame("transposed substitution");
                    }
                    // The next load: a finds its cells through the pattern it laid out,
                    // b, sized by count, walks the filled rows.
                    int n = p.a.m_nTableRows;
                    p.a.Allocate(p.g);
                    p.b.Allocate(&n, 1);
                    AssembleInLabels(p.a, p.g, p.mesh, 0, false);
                    AssembleInLabels(p.b, p.g, p.mesh, 0, false);
                    p.ExpectSame("next load");
                    // Without prescribed values it may fail, as long as both fail alike.
                    EXPECT_EQ(p.a.Cholesky(), PlainCholesky(p.b));
                    p.ExpectSame("next factor");
                }
}

// Whatever happens to the lists between two assemblies, AddValues sums into the cells
// the lists hold then: cells unlinked (kept, or freed and their room reused in the same
// column of another row), columns rewritten by row::Allocate, rows emptied.
TEST(Pinning, AssemblyFollowsTheListsWhateverChangedThem) {
    SymFlag sym(true);
    // Each edit yields the cell it unlinked and kept, if any.
    const std::vector<std::function<cell *(CSystSpMat &)>> edits = {
        [](CSystSpMat &m) {
            row &R = m.m_pRowTable[3];
            return R.Remove(R.m_pFirstCell->m_pNext->m_nCol);
        },
        [](CSystSpMat &m) -> cell * {
            // The freed room goes to a new cell of the same column in another row.
            row &R = m.m_pRowTable[5];
            const int nCol = R.m_pFirstCell->m_pNext->m_nCol;
            delete R.Remove(nCol);
            int r = 0;
            while (r == 5 || m.GetValue(r, nCol) != NULL)
                r++;
            m.Add(r, nCol, 1.0); // through the matrix, so from its pool
            return NULL;
        },
        [](CSystSpMat &m) -> cell * {
            m.m_pRowTable[7].Allocate(3, 0.0, 7);
            return NULL;
        },
        [](CSystSpMat &m) -> cell * {
            for (int r = 9; r < 40; r++)
                m.m_pRowTable[r].Clear();
            return NULL;
        },
    };
    for (size_t e = 0; e < edits.size(); e++) {
        SCOPED_TRACE(e);
        Pair p(true, 2, true, true);
        int n = p.a.m_nTableRows;
        p.a.Allocate(p.g);
        p.b.Allocate(&n, 1);
        cell *pKeptA = edits[e](p.a), *pKeptB = edits[e](p.b);
        AssembleInLabels(p.a, p.g, p.mesh, 0, false);
        AssembleInLabels(p.b, p.g, p.mesh, 0, false);
        p.ExpectSame("after an edit");
        if (pKeptA != NULL) {
            EXPECT_EQ(pKeptA->m_dValue, 0.0); // out of the list, out of the sums
        }
        delete pKeptA;
        delete pKeptB;
    }
}

TEST(Pinning, FullStoragePrescribedValuesMatchThePlainForm) {
    for (bool bQuads : {false, true}) {
        Pair p(bQuads, 2, false, false);
        const int nb = (int)p.mesh.prescribed.size();
        CVector vDOFs(nb + 1), vValues(nb + 1);
        for (int k = 0; k <= nb; k++) {
            vDOFs[k] = p.g.f_v(p.mesh.prescribed[(nb - k) % nb]); // descending, one repeat
            vValues[k] = 0.25 + k;
        }
        p.a.UnifyAndZero2(vDOFs, vValues, &p.Ba);
        PlainUnify(p.b, vDOFs, vValues, p.Bb, false);
        p.ExpectSame("full storage");
    }
}

// A stored zero multiplier passes its chain over, so a later row's columns are no longer
// those its children bring: row 0 skips row 1 and alone makes the cell (2, 3).
TEST(Pinning, ZeroMultiplierPassesItsChainOver) {
    CSystSpMat a(4), b(4);
    for (CSystSpMat *m : {&a, &b}) {
        cell *pCursor = NULL;
        for (int c = 0; c < 4; c++)
            m->m_pRowTable[0].Add(c, c == 0 ? 4.0 : c == 1 ? 0.0 : 1.0, pCursor);
        for (int r = 1; r < 4; r++)
            m->m_pRowTable[r].Add(r, 4.0);
    }
    ASSERT_EQ(a.Cholesky(), 1);
    ASSERT_EQ(PlainCholesky(b), 1);
    EXPECT_TRUE(Cells(a) == Cells(b));
    EXPECT_NE(a.GetValue(2, 3), nullptr);
}

// A failing pivot leaves the later rows with the updates of the rows before it, as the
// row-merging form leaves them.
TEST(Pinning, FailedFactorisationLeavesTheSameHalfFactor) {
    Pair p(true, 1, true, true);
    const int nFail = p.a.m_nTableRows / 2;
    for (CSystSpMat *m : {&p.a, &p.b})
        m->m_pRowTable[nFail].m_pFirstCell->m_dValue = 1e-3; // negative once reduced
    EXPECT_EQ(p.a.Cholesky(), -1);
    EXPECT_EQ(PlainCholesky(p.b), -1);
    p.ExpectSame("failed factor");
}

// Factor and solution of the road on one mesh, hashed when the plain forms ran.
TEST(Pinning, FactorAndSolutionHashes) {
    ScriptDir script;
    ReportRecorder reports;
    const uint64_t expected[2] = {0x3b109323ffa4c69full, 0x40478dd7285c5d57ull};
    for (int bMinDeg = 0; bMinDeg < 2; bMinDeg++) {
        Pair p(false, 2, bMinDeg != 0, true);
        CMatrix bcs((int)p.mesh.prescribed.size(), 3);
        for (int k = 0; k < bcs.GetRows(); k++) {
            bcs[k][0] = p.g.f_v(p.mesh.prescribed[k]);
            bcs[k][1] = bcs[k][2] = 0.5 + 0.01 * k;
        }
        p.a.SymHandleBCs(bcs, p.Ba);
        double dTime;
        ASSERT_EQ(p.a.Cholesky_Solve(&p.Ba, dTime), 1);
        EXPECT_EQ(Hash(p.a, p.Ba), expected[bMinDeg]) << std::hex << Hash(p.a, p.Ba);
    }
}

// LU without pivoting, each pivot scanning every later row for a cell in its column.
static int PlainLU(CSparseMatrix &m) {
    std::vector<row *> rows;
    for (row *r = m.m_pFirstRow; r != NULL; r = r->m_pNext)
        rows.push_back(r);
    const int n = (int)rows.size();
    std::vector<cell *> entry(n);
    for (int t = 0; t < n; t++)
        entry[t] = rows[t]->m_pFirstCell;
    for (int k = 0; k < n; k++) {
        cell *p = entry[k];
        if (rows[k]->m_nRow != k || p == NULL || p->m_nCol != k || p->m_dValue == 0.0)
            return -1;
        for (int t = k + 1; t < n; t++) {
            cell *e = entry[t];
            if (e == NULL || e->m_nCol != k)
                continue;
            if (e->m_dValue != 0.0) {
                e->m_dValue = e->m_dValue / p->m_dValue;
                cell *pCursor = e;
                for (cell *b = p->m_pNext; b != NULL; b = b->m_pNext)
                    rows[t]->Add(b->m_nCol, -(b->m_dValue * e->m_dValue), pCursor);
            }
            entry[t] = e->m_pNext;
        }
    }
    return 1;
}

// Both LU forms, table and list, on a full non-symmetric mesh matrix.
TEST(Pinning, LUMatchesThePlainFormBitForBit) {
    for (bool bQuads : {false, true}) {
        Pair p(bQuads, 2, false, false);
        ASSERT_EQ(p.a.LU(), 1);
        ASSERT_EQ(PlainLU(p.b), 1);
        p.ExpectSame("LU");

        Pair q(bQuads, 1, false, false);
        CSparseMatrix list, plain;
        for (CSparseMatrix *m : {&list, &plain}) {
            row *pRow = NULL;
            for (row *r = q.a.m_pFirstRow; r != NULL; r = r->m_pNext) {
                cell *pCell = NULL;
                for (cell *c = r->m_pFirstCell; c != NULL; c = c->m_pNext)
                    m->Add(r->m_nRow, c->m_nCol, c->m_dValue, pRow, pCell);
            }
        }
        ASSERT_EQ(list.LU(), 1);
        ASSERT_EQ(PlainLU(plain), 1);
        EXPECT_TRUE(Cells(list) == Cells(plain));
    }
}

// Cells live in their matrix's slabs, yet a cell a caller unlinked stays the caller's:
// it outlives the matrix and goes with delete; a cell the host made itself and linked in
// goes with the row.
TEST(CellPool, UnlinkedCellsOutliveTheirMatrixAndHostCellsGoWithTheRow) {
    cell *pKept;
    {
        CSystSpMat m(3);
        for (int k = 0; k < 5000; k++) // more than one slab
            m.Add(k % 3, k, 1.0 + k);
        pKept = m.m_pRowTable[1].Remove(4);
        ASSERT_NE(pKept, nullptr);
        cell *pHost = new cell;
        pHost->m_pNext = m.m_pRowTable[2].m_pFirstCell;
        pHost->m_dValue = -1.0;
        pHost->m_nCol = -1;
        m.m_pRowTable[2].m_pFirstCell = pHost;
        int nSize = 2; // another size: every cell goes back, and the next ones reuse slabs
        m.Allocate(&nSize, 1);
        m.Add(1, 1, 7.0);
        EXPECT_EQ(Dump(m), "(1,1)7");
    }
    EXPECT_EQ(pKept->m_nCol, 4);
    EXPECT_EQ(pKept->m_dValue, 5.0);
    delete pKept;
}
