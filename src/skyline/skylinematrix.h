// CSkylineMatrix: a symmetric matrix kept by the rows of its lower triangle, each row from its
// first stored column to the diagonal, all rows packed back to back in one array. On the road
// it stands after the numbering: Allocate(CReorderMat &) takes the profile from the labels of a
// reordered graph (which it only reads), AddValues assembles element matrices in labels, the
// host imposes prescribed values itself, and Cholesky_Solve factorises in place (A = L D L^T,
// no fill outside the profile) or GaussSeidel_Iter iterates on the unchanged matrix.
//
// Storage: row i holds the columns PeakRow(i) = i - m_pHeights[i] + 1 to i, diagonal last.
// Value (j, i), j <= i, stands at m_ppDiag[i] - (i - j): the lower triangle by rows and the
// upper triangle by columns are the same numbers.
//
// Choices made here:
// - A failed allocation leaves the counts as far as the work had come, NULL for the values
//   array or for all three row tables, whichever failed, and no address into freed storage;
//   the next Allocate makes missing arrays again, so the object stays usable (it can be
//   shaped anew or destroyed). New row tables start with every height 1, so that
//   Allocate(CReorderMat &) after a sizing by the order alone still finds valid lower bounds.
// - BackwSub computes exactly what the row-by-row search of every later row computes (each
//   right-hand side entry receives the same subtractions in the same order), but walks each
//   stored row once instead of asking every later row whether it reaches up.
// - Cholesky works rows in pairs: both rows' multipliers over the same finished row run
//   side by side, each value with the operations and order of the row-by-row form. The
//   substitutions read rows through m_ppDiag, not through the virtual operator(); a class
//   derived from this one that overrides operator() does not change what they read.
// - The second Gauss-Seidel pass subtracts the terms one by one from x[i], as ForwSub does.
// - GaussSeidel_Iter with a diagonal value among the first n that is 0.0, infinite or NaN
//   runs no sweep, leaves x unchanged and yields -1; the report (for n of 2 or more) shows 0
//   sweeps. A converged iterate that is not finite everywhere (NaN hides from the norm)
//   also yields -1, with that iterate in x.
// - Right-hand sides are CMatrix objects; their rows are addressed with the column count read
//   once per call.
#pragma once

#include "frame/virtmat.h"

class CReorderMat;
class CVector;

class CSkylineMatrix : public CVirtRealMat {
    DECLARE_SERIAL(CSkylineMatrix)
public:
    CSkylineMatrix();
    ~CSkylineMatrix() override;
    CSkylineMatrix(const CSkylineMatrix &) = delete;
    CSkylineMatrix &operator=(const CSkylineMatrix &) = delete;

    // --- overrides of the frame, in its order ---
    // pSizes: order; then the total of values, or a band width if below the order (rewritten
    // to the total); then, with nDims >= order + 2, the height of every row. nDims 0 or an
    // order of 0 clears the matrix. All values become 0. False if an allocation fails.
    bool Allocate(int *pSizes, int nDims) override;
    // Does nothing: a skyline matrix is not read from text.
    void ReadASCII(CFile *pFile) override;
    void WriteASCII(CFile *pFile, CString strPrefix, CString strSuffix, int nWidth, int nPrecision,
                    int nFormat, bool bRowNumbers, bool bHeader) override;
    // Adds an nDOFs by nDOFs row-major element matrix at the labels pDOFs (negative: skipped).
    // Only entries whose column label is not below their row label are read; zeros are skipped.
    void AddValues(LONG *pDOFs, double *pValues, int nDOFs) override;
    // Factorises and solves for every column of the CMatrix *pB, which takes the solutions,
    // and shows the timing report. Yields 1; dTime gets the seconds, -1.0 on failure.
    int Cholesky_Solve(CVirtMat *pB, double &dTime) override;
    // Every stored value becomes dValue / is shifted by dValue.
    CVirtRealMat &operator=(double dValue) override;
    CVirtRealMat &operator+=(double dValue) override;

    // --- the skyline's own virtual operations, in table order ---
    // Gauss-Seidel from the start value in x to the solution in x, with its report.
    // 1 when the change of a sweep fell below dTol, -1 when nMaxIter sweeps ran out.
    virtual int GaussSeidel_Iter(CVector &b, CVector &x, double dTol, int nMaxIter);
    // The profile of a reordered graph (PostReorder called), all values 0. With the same number
    // of rows the old heights are lower bounds. The graph is only read.
    virtual bool Allocate(CReorderMat &graph);
    // Diagonal scaling; nMode 1 / -1 multiplies / divides the matrix's diagonal by pB[i][0],
    // 2 / -2 multiplies / divides row i of pB by diagonal value i.
    virtual void DiagMult(CVirtMat *pB, double *pTime, int nMode);
    // Solves with the unit (nMode 1) or stored-diagonal (nMode 2) lower factor, in place.
    virtual void ForwSub(CVirtMat *pB, double *pTime, int nMode);
    // Solves with the unit (nMode 1) or stored-diagonal (nMode 2) upper factor, in place.
    virtual void BackwSub(CVirtMat *pB, double *pTime, int nMode);
    // Root-free factorisation A = L D L^T in place, no pivoting, no pivot test. Yields 1.
    virtual int Cholesky();
    virtual void COUT(const char *pszSeparator);
    // First column stored in row i.
    virtual int PeakRow(int i);
    // The value in column i of row j, for PeakRow(j) <= i <= j; nothing is tested.
    virtual double &operator()(int i, int j);

    // A new array (delete[] by the caller) of the m_nRows diagonal values.
    double *DiagVect();

    double *m_pValues; // m_nValues values, row after row, each row ending in its diagonal
    double **m_ppDiag; // per row, the address of its diagonal value
    int *m_pHeights;   // per row, number of stored values, diagonal included (>= 1)
    int *m_pDiagIndex; // per row, index of its diagonal value in m_pValues
    int m_nValues;     // sum of the heights
    int m_nRows;       // order of the matrix

private:
    void FreeRowTables();
    bool MakeRowTables();
    bool MakeValues();
    void SetDiagonalsFromHeights();
    // Finishes row i of the factor in its dense copy w; its pivot goes to D[i].
    void FactorRow(int i, double *w, double *D);
};
