// The road as a host walks it: graph, numbering, PostReorder, pattern, assembly, prescribed
// values, solve, and a second load over the same pattern; checked against a dense solve.
#include "common/mesh.h"
#include "system_test_util.h"

#include "dense/matrix.h"
#include "reorder/reordermat.h"

#include <cstdio>
#include <unistd.h>

enum Numbering { kNone, kMinDeg1, kMinDeg2, kMinDeg3, kMinDeg4 };

struct RoadCase {
    bool bQuads;
    int nPerNode;
    Numbering numbering;
};

static void PrintTo(const RoadCase &c, std::ostream *os) {
    *os << (c.bQuads ? "quads" : "triangles") << ", " << c.nPerNode << " dof/node, numbering "
        << (int)c.numbering;
}

class Road : public ::testing::TestWithParam<RoadCase> {
protected:
    void SetUp() override {
        const RoadCase &c = GetParam();
        m_mesh = MakeRoadMesh(7, 6, c.bQuads, c.nPerNode);
        m_strOldScript = CReorderMat::GetScriptName();
        m_strScript =
            ::testing::TempDir() + "femmat_system_road_" + std::to_string(getpid()) + ".m";
        CReorderMat::SetScriptName(m_strScript.c_str());
    }
    void TearDown() override {
        CReorderMat::SetScriptName(m_strOldScript.c_str());
        std::remove(m_strScript.c_str());
    }

    // Steps 1 and 2: the graph of the mesh, the case's numbering, PostReorder.
    void MakeGraph(CReorderMat &g) {
        g.Alloc(m_mesh.nDOFs);
        for (auto &e : m_mesh.dofs)
            g.InsertDOFs(e.data(), 0, (int)e.size());
        g.Init();
        for (auto &e : m_mesh.dofs)
            g.InsertDOFs(e.data(), 1, (int)e.size());
        ReportRecorder reports;
        switch (GetParam().numbering) {
        case kNone:
            break;
        case kMinDeg1:
            g.MinDegReorder(NULL);
            break;
        case kMinDeg2:
            g.MinDegReorder2();
            break;
        case kMinDeg3:
            g.MinDegReorder3();
            break;
        case kMinDeg4:
            g.MinDegReorder4();
            break;
        }
        EXPECT_EQ(reports.Texts().size(), GetParam().numbering == kNone ? 0u : 1u);
        g.PostReorder();
    }

    // Step 4: every element with its dofs mapped through f_v; true if no cell was made.
    bool Assemble(CSystSpMat &m, CReorderMat &g, int nLoad, bool bSkew) {
        int nBefore = CellCount(m);
        for (int e = 0; e < (int)m_mesh.dofs.size(); e++) {
            std::vector<LONG> mapped = m_mesh.dofs[e];
            for (LONG &d : mapped)
                if (d >= 0)
                    d = g.f_v(d);
            std::vector<double> values = ElementMatrix(m_mesh, e, nLoad, bSkew);
            m.AddValues(mapped.data(), values.data(), (int)mapped.size());
        }
        return CellCount(m) == nBefore;
    }

    // Two right-hand sides in label order.
    CMatrix Loads(CReorderMat &g) {
        CMatrix B(m_mesh.nDOFs, 2);
        for (int d = 0; d < m_mesh.nDOFs; d++)
            for (int k = 0; k < 2; k++)
                B[g.f_v(d)][k] = Load(d, k);
        return B;
    }

    // Column k of B back in dof numbering.
    std::vector<double> Solution(CMatrix &B, CReorderMat &g, int k) {
        std::vector<double> x(m_mesh.nDOFs);
        for (int d = 0; d < m_mesh.nDOFs; d++)
            x[d] = B[g.f_v(d)][k];
        return x;
    }

    // Prescribed values of right-hand side k, by dof.
    std::vector<double> Prescribed(int k) {
        std::vector<double> g(m_mesh.nDOFs, 0.0);
        for (int d : m_mesh.prescribed)
            g[d] = k == 0 ? 0.5 + 0.01 * d : -1.0 + 0.02 * d;
        return g;
    }

    RoadMesh m_mesh;
    std::string m_strScript, m_strOldScript;
};

TEST_P(Road, SymmetricWithHandleBCsThenCholeskyAndASecondLoad) {
    SymFlag sym(true);
    CReorderMat g(1);
    MakeGraph(g);
    CSystSpMat m;
    m.Allocate(g);
    ExpectLinked(m);

    int nFactorCells = 0;
    for (int nLoad = 0; nLoad < 2; nLoad++) {
        if (nLoad == 1) {
            // The graph is spent; the same size reuses the pattern without reading it.
            m.Allocate(g);
            EXPECT_EQ(CellCount(m), nFactorCells);
        }
        // The pattern holds every position of the first load; the second load finds again
        // the cells the prescribed columns lost, and makes them anew.
        bool bNoNewCell = Assemble(m, g, nLoad, false);
        if (nLoad == 0) {
            EXPECT_TRUE(bNoNewCell);
        }
        CMatrix B = Loads(g);
        const std::vector<double> g0 = Prescribed(0), g1 = Prescribed(1);
        CMatrix bc((int)m_mesh.prescribed.size(), 3);
        for (int b = 0; b < bc.GetRows(); b++) {
            int d = m_mesh.prescribed[b];
            bc[b][0] = g.f_v(d);
            bc[b][1] = g0[d];
            bc[b][2] = g1[d];
        }
        m.SymHandleBCs(bc, B);
        // The prescribed rows of B are the caller's to set.
        for (int b = 0; b < bc.GetRows(); b++) {
            B[(int)bc[b][0]][0] = bc[b][1];
            B[(int)bc[b][0]][1] = bc[b][2];
        }
        double dTime = 0.0;
        ASSERT_EQ(m.Cholesky_Solve(&B, dTime), 1);
        EXPECT_LE(RelativeError(Solution(B, g, 0), ReferenceSolve(m_mesh, nLoad, false, 0, g0)),
                  1e-9);
        EXPECT_LE(RelativeError(Solution(B, g, 1), ReferenceSolve(m_mesh, nLoad, false, 1, g1)),
                  1e-9);
        if (nLoad == 0) {
            nFactorCells = CellCount(m);
        } else {
            EXPECT_EQ(CellCount(m), nFactorCells);
        }
    }
}

TEST_P(Road, SymmetricWithUnifyAndZeroThenCholeskyOrGaussSeidel) {
    SymFlag sym(true);
    CReorderMat g(0);
    MakeGraph(g);
    CSystSpMat m;
    m.Allocate(g);
    const std::vector<double> zero(m_mesh.nDOFs, 0.0);
    CVector dofs((int)m_mesh.prescribed.size()), values((int)m_mesh.prescribed.size(), true);
    for (int b = 0; b < dofs.GetSize(); b++)
        dofs[b] = g.f_v(m_mesh.prescribed[b]);

    for (int nLoad = 0; nLoad < 2; nLoad++) {
        // Direct.
        m.Allocate(g);
        Assemble(m, g, nLoad, false);
        CMatrix B = Loads(g);
        m.SymUnifyAndZero(dofs, values, &B);
        double dTime = 0.0;
        ASSERT_EQ(m.Cholesky_Solve(&B, dTime), 1);
        const std::vector<double> ref0 = ReferenceSolve(m_mesh, nLoad, false, 0, zero);
        EXPECT_LE(RelativeError(Solution(B, g, 0), ref0), 1e-9);
        EXPECT_LE(RelativeError(Solution(B, g, 1), ReferenceSolve(m_mesh, nLoad, false, 1, zero)),
                  1e-9);

        // Iterative, on a fresh load over the factorised pattern.
        m.Allocate(g);
        Assemble(m, g, nLoad, false);
        CMatrix C = Loads(g);
        m.SymUnifyAndZero(dofs, values, &C);
        CVector F(m_mesh.nDOFs), X(m_mesh.nDOFs, true, 0.0);
        for (int i = 0; i < m_mesh.nDOFs; i++)
            F[i] = C[i][0];
        ReportRecorder reports;
        EXPECT_EQ(m.GaussSeidel_Iter(F, X, 1e-13, 100000), 1);
        std::vector<double> x(m_mesh.nDOFs);
        for (int d = 0; d < m_mesh.nDOFs; d++)
            x[d] = X[g.f_v(d)];
        EXPECT_LE(RelativeError(x, ref0), 1e-9);
        ASSERT_EQ(reports.Texts().size(), 1u);
        EXPECT_NE(reports.Texts()[0].find(" Symmetric       :   1\r\n24\r\n16"), std::string::npos);
    }
}

TEST_P(Road, UnsymmetricWithUnifyAndZero2ThenLUOrGaussSeidel) {
    CReorderMat g(0);
    MakeGraph(g);
    CSystSpMat m;
    m.Allocate(g);
    const std::vector<double> g0 = Prescribed(0);
    CVector dofs((int)m_mesh.prescribed.size()), values((int)m_mesh.prescribed.size());
    for (int b = 0; b < dofs.GetSize(); b++) {
        dofs[b] = g.f_v(m_mesh.prescribed[b]);
        values[b] = g0[m_mesh.prescribed[b]];
    }
    for (int nLoad = 0; nLoad < 2; nLoad++) {
        m.Allocate(g);
        Assemble(m, g, nLoad, true);
        CMatrix B = Loads(g);
        m.UnifyAndZero2(dofs, values, &B);
        ReportRecorder reports;
        double dTime = 0.0;
        ASSERT_EQ(m.LU_Solve(&B, dTime), 1);
        EXPECT_EQ(reports.Texts().size(), 1u);
        const std::vector<double> ref0 = ReferenceSolve(m_mesh, nLoad, true, 0, g0);
        EXPECT_LE(RelativeError(Solution(B, g, 0), ref0), 1e-9);
        EXPECT_LE(RelativeError(Solution(B, g, 1), ReferenceSolve(m_mesh, nLoad, true, 1, g0)),
                  1e-9);

        m.Allocate(g);
        Assemble(m, g, nLoad, true);
        CMatrix C = Loads(g);
        m.UnifyAndZero2(dofs, values, &C);
        CVector F(m_mesh.nDOFs), X(m_mesh.nDOFs, true, 0.0);
        for (int i = 0; i < m_mesh.nDOFs; i++)
            F[i] = C[i][0];
        EXPECT_EQ(m.GaussSeidel_Iter(F, X, 1e-13, 100000), 1);
        std::vector<double> x(m_mesh.nDOFs);
        for (int d = 0; d < m_mesh.nDOFs; d++)
            x[d] = X[g.f_v(d)];
        EXPECT_LE(RelativeError(x, ref0), 1e-9);
        EXPECT_NE(reports.Texts().back().find(" Symmetric       :   0\r\n24\r\n16"),
                  std::string::npos);
    }
}

static std::vector<RoadCase> AllCases() {
    std::vector<RoadCase> cases;
    for (bool bQuads : {true, false})
        for (int nPerNode : {1, 2})
            for (Numbering n : {kNone, kMinDeg1, kMinDeg2, kMinDeg3, kMinDeg4})
                cases.push_back({bQuads, nPerNode, n});
    return cases;
}

INSTANTIATE_TEST_SUITE_P(Meshes, Road, ::testing::ValuesIn(AllCases()));
