// Helpers for the CSparseMatrix tests: building lists cell by cell, reading them back as
// text (which also checks the sort invariants), a dense reference solver, random systems
// and a report recorder.
#pragma once

#include "dense/matrix.h"
#include "sparse/sparsematrix.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <random>
#include <string>
#include <tuple>
#include <vector>

typedef std::vector<std::tuple<int, int, double>> Entries;

// Stores every entry as a cell, 0.0 included (the cursor form keeps zeros).
inline void Put(CSparseMatrix &A, const Entries &entries) {
    for (auto &e : entries) {
        CSparseMatrix::cell *pCell = NULL;
        A.Add(std::get<0>(e), std::get<1>(e), std::get<2>(e), pCell);
    }
}

// "row:col=value,col=value;row:..." in list order; fails the test if an order is broken.
inline std::string Dump(CSparseMatrix &A) {
    std::string s;
    int nPrevRow = -1;
    for (CSparseMatrix::row *r = A.GetFirstRow(); r != NULL; r = r->m_pNext) {
        EXPECT_GT(r->m_nRow, nPrevRow) << "rows out of order";
        nPrevRow = r->m_nRow;
        s += (s.empty() ? "" : ";") + std::to_string(r->m_nRow) + ":";
        int nPrevCol = -1;
        for (CSparseMatrix::cell *c = r->m_pFirstCell; c != NULL; c = c->m_pNext) {
            EXPECT_GT(c->m_nCol, nPrevCol) << "cells out of order in row " << r->m_nRow;
            nPrevCol = c->m_nCol;
            char sz[64];
            snprintf(sz, sizeof(sz), "%s%d=%.17g", c == r->m_pFirstCell ? "" : ",", c->m_nCol,
                     c->m_dValue);
            s += sz;
        }
    }
    return s;
}

// A value as Dump writes it.
inline std::string Num(double d) {
    char sz[32];
    snprintf(sz, sizeof(sz), "%.17g", d);
    return sz;
}

inline int CountCells(CSparseMatrix &A) {
    int n = 0;
    for (CSparseMatrix::row *r = A.GetFirstRow(); r != NULL; r = r->m_pNext)
        n += r->NonZeros();
    return n;
}

inline CMatrix Column(const std::vector<double> &v, int nCols = 1) {
    CMatrix B((int)v.size() / nCols, nCols, false, 0.0);
    for (size_t k = 0; k < v.size(); k++)
        B.m_pVector[k] = v[k];
    return B;
}

inline std::vector<double> Flat(const CMatrix &m) {
    return std::vector<double>(m.m_pVector, m.m_pVector + m.m_nSize);
}

// Dense Gaussian elimination with partial pivoting: solves A X = B, A n by n row-major,
// B n by c row-major; returns X.
inline std::vector<double> DenseSolve(std::vector<double> A, std::vector<double> B, int n, int c) {
    for (int k = 0; k < n; k++) {
        int p = k;
        for (int i = k + 1; i < n; i++)
            if (std::fabs(A[i * n + k]) > std::fabs(A[p * n + k]))
                p = i;
        for (int j = 0; j < n; j++)
            std::swap(A[k * n + j], A[p * n + j]);
        for (int j = 0; j < c; j++)
            std::swap(B[k * c + j], B[p * c + j]);
        for (int i = k + 1; i < n; i++) {
            double l = A[i * n + k] / A[k * n + k];
            for (int j = k; j < n; j++)
                A[i * n + j] -= l * A[k * n + j];
            for (int j = 0; j < c; j++)
                B[i * c + j] -= l * B[k * c + j];
        }
    }
    for (int k = n - 1; k >= 0; k--)
        for (int j = 0; j < c; j++) {
            double s = B[k * c + j];
            for (int i = k + 1; i < n; i++)
                s -= A[k * n + i] * B[i * c + j];
            B[k * c + j] = s / A[k * n + k];
        }
    return B;
}

// A random sparse, strictly diagonally dominant n by n matrix (row-major, dense form);
// symmetric (hence SPD) when bSym.
inline std::vector<double> RandomSystem(int n, bool bSym, unsigned nSeed) {
    std::mt19937 gen(nSeed);
    std::uniform_real_distribution<double> val(-1.0, 1.0);
    std::vector<double> A(n * n, 0.0);
    for (int i = 0; i < n; i++)
        for (int j = 0; j < n; j++)
            if (i != j && gen() % 100 < 6) {
                A[i * n + j] = val(gen);
                if (bSym)
                    A[j * n + i] = A[i * n + j];
            }
    for (int i = 0; i < n; i++) {
        double s = 1.0;
        for (int j = 0; j < n; j++)
            s += std::fabs(A[i * n + j]) + std::fabs(A[j * n + i]);
        A[i * n + i] = s;
    }
    return A;
}

// The lists of a dense matrix: the upper triangle only when bUpper; zeros get no cell.
inline void FromDense(CSparseMatrix &S, const std::vector<double> &A, int n, bool bUpper) {
    for (int i = 0; i < n; i++)
        for (int j = bUpper ? i : 0; j < n; j++)
            S.Add(i, j, A[i * n + j]);
}

inline void ExpectClose(const std::vector<double> &x, const std::vector<double> &ref) {
    ASSERT_EQ(x.size(), ref.size());
    for (size_t k = 0; k < x.size(); k++)
        EXPECT_LE(std::fabs(x[k] - ref[k]), 1e-10 * std::fabs(ref[k]) + 1e-14) << "at " << k;
}

// Records the texts of AfxMessageBox while alive and restores the previous handler.
class ReportRecorder {
public:
    ReportRecorder() {
        Texts().clear();
        m_pPrevious = AfxSetReportHandler(&Record);
    }
    ~ReportRecorder() { AfxSetReportHandler(m_pPrevious); }
    static std::vector<std::string> &Texts() {
        static std::vector<std::string> s_texts;
        return s_texts;
    }

private:
    static int Record(const char *psz) {
        Texts().push_back(psz);
        return 1;
    }
    AfxReportHandler m_pPrevious;
};
