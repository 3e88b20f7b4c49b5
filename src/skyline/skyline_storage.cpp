// CSkylineMatrix: construction, shaping from sizes or from a reordered graph, assembly.
#include "skyline/skylinematrix.h"

#include <algorithm>
#include <cmath>
#include <new>

#include "reorder/reordermat.h"

IMPLEMENT_SERIAL(CSkylineMatrix, CVirtRealMat, 1)

CSkylineMatrix::CSkylineMatrix()
    : m_pValues(NULL), m_ppDiag(NULL), m_pHeights(NULL), m_pDiagIndex(NULL), m_nValues(0),
      m_nRows(0) {}

CSkylineMatrix::~CSkylineMatrix() {
    delete[] m_pValues;
    FreeRowTables();
}

void CSkylineMatrix::FreeRowTables() {
    delete[] m_pHeights;
    delete[] m_pDiagIndex;
    delete[] m_ppDiag;
    m_pHeights = NULL;
    m_pDiagIndex = NULL;
    m_ppDiag = NULL;
}

// Frees and makes the three row tables for m_nRows rows: every height 1, diagonals unset
// (zero); false (all three NULL) if an allocation fails.
bool CSkylineMatrix::MakeRowTables() {
    FreeRowTables();
    m_pHeights = new (std::nothrow) int[m_nRows];
    if (m_pHeights)
        m_pDiagIndex = new (std::nothrow) int[m_nRows]();
    if (m_pDiagIndex)
        m_ppDiag = new (std::nothrow) double *[m_nRows]();
    if (!m_ppDiag) {
        FreeRowTables();
        return false;
    }
    std::fill(m_pHeights, m_pHeights + m_nRows, 1);
    return true;
}

// Frees m_pValues and makes it anew with m_nValues entries, contents not set. On failure the
// diagonal addresses are cleared rather than left pointing into the freed array.
bool CSkylineMatrix::MakeValues() {
    delete[] m_pValues;
    m_pValues = NULL;
    if (m_nValues == 0)
        return true;
    m_pValues = new (std::nothrow) double[m_nValues];
    if (!m_pValues && m_ppDiag)
        std::fill(m_ppDiag, m_ppDiag + m_nRows, (double *)NULL);
    return m_pValues != NULL;
}

// The running sum of the heights, starting at -1, gives each row's diagonal.
void CSkylineMatrix::SetDiagonalsFromHeights() {
    int nIndex = -1;
    for (int i = 0; i < m_nRows; i++) {
        nIndex += m_pHeights[i];
        m_pDiagIndex[i] = nIndex;
        m_ppDiag[i] = m_pValues + nIndex;
    }
}

bool CSkylineMatrix::Allocate(int *pSizes, int nDims) {
    // An order of 0 (or no sizes at all) clears the matrix.
    if (nDims == 0 || pSizes[0] == 0) {
        delete[] m_pValues;
        m_pValues = NULL;
        FreeRowTables();
        m_nValues = 0;
        m_nRows = 0;
        return true;
    }
    // Row tables; NULL ones are left from a failed call and are made again.
    if (pSizes[0] != m_nRows || !m_pHeights) {
        m_nRows = pSizes[0];
        if (!MakeRowTables())
            return false;
    }
    if (nDims > 1) {
        const int n = m_nRows;
        // A value below the order is a band width: rewrite it to the band's total.
        if (pSizes[1] < n) {
            const int b = pSizes[1];
            pSizes[1] = b * n - b * (b - 1) / 2;
        }
        // A new total (or a values array lost to a failed call) takes a new array.
        if (pSizes[1] != m_nValues || !m_pValues) {
            m_nValues = pSizes[1];
            if (!MakeValues())
                return false;
        }

        if (nDims >= n + 2) {
            for (int i = 0; i < n; i++)
                m_pHeights[i] = pSizes[i + 2];
        } else {
            // The band whose total is m_nValues, rounded: b^2 - (2n + 1) b + 2T = 0.
            const int nProduct = (int)((ULONG)(n + 1) * (ULONG)n); // wraps as 32-bit ints do
            const double dRoot = std::sqrt((nProduct + 0.25) * 4 - (double)m_nValues * 8);
            const int b = (int)std::floor(((2 * n + 1) - dRoot + 1) * 0.5);
            for (int i = 0; i < n; i++)
                m_pHeights[i] = i < b ? i + 1 : b;
        }
        SetDiagonalsFromHeights();
    }
    operator=(0.0);
    return true;
}

bool CSkylineMatrix::Allocate(CReorderMat &graph) {
    const int n = graph.GetRows();
    if (n == 0) {
        int nSizes[1] = {0};
        return Allocate(nSizes, 1);
    }
    // A new order starts from the diagonal; the same order keeps its heights as lower bounds.
    if (n != m_nRows || !m_pHeights) {
        m_nRows = n;
        if (!MakeRowTables())
            return false;
    }
    // Each edge lifts the row of its higher label up to the lower label.
    for (int k = 0; k < n; k++) {
        const int v = graph.f_v_inv(k);
        const LONG *pNeighbours = graph.m_ppRows[v];
        const int nDegree = graph.m_pRowSizes[v];
        for (int e = 0; e < nDegree; e++) {
            const int l = graph.f_v(pNeighbours[e]);
            if (l - k + 1 > m_pHeights[l])
                m_pHeights[l] = l - k + 1;
        }
    }
    int nTotal = 0;
    for (int i = 0; i < n; i++)
        nTotal += m_pHeights[i];
    if (nTotal != m_nValues || !m_pValues) {
        m_nValues = nTotal;
        if (!MakeValues())
            return false;
    }
    SetDiagonalsFromHeights();
    std::fill(m_pValues, m_pValues + m_nValues, 0.0);
    return true;
}

void CSkylineMatrix::ReadASCII(CFile *) {}

void CSkylineMatrix::AddValues(LONG *pDOFs, double *pValues, int nDOFs) {
    FEMMAT_CHECK_DOFS("CSkylineMatrix::AddValues", pDOFs, nDOFs, m_nRows);
    for (int i = 0; i < nDOFs; i++) {
        const int a = pDOFs[i];
        if (a < 0)
            continue;
        const double *pRow = pValues + (size_t)i * nDOFs;
        for (int j = 0; j < nDOFs; j++) {
            const int b = pDOFs[j];
            if (b < a)
                continue;
            const double v = pRow[j];
            if (!(v < 0.0) && !(v > 0.0)) // zeros (and NaN) touch nothing
                continue;
            (*this)(a, b) += v;
        }
    }
}

CVirtRealMat &CSkylineMatrix::operator=(double dValue) {
    if (m_pValues)
        std::fill(m_pValues, m_pValues + m_nValues, dValue);
    return *this;
}

CVirtRealMat &CSkylineMatrix::operator+=(double dValue) {
    if (m_pValues)
        for (int k = 0; k < m_nValues; k++)
            m_pValues[k] += dValue;
    return *this;
}

int CSkylineMatrix::PeakRow(int i) {
    return i - m_pHeights[i] + 1;
}

double &CSkylineMatrix::operator()(int i, int j) {
    return m_ppDiag[j][i - j];
}

double *CSkylineMatrix::DiagVect() {
    double *pDiag = new double[m_nRows];
    for (int i = 0; i < m_nRows; i++)
        pDiag[i] = *m_ppDiag[i];
    return pDiag;
}
