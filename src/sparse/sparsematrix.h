// CSparseMatrix: a real matrix of any shape held as a sorted singly linked list of rows,
// each a sorted singly linked list of the cells that exist in it. Rows and cells are made
// on demand, so a position without a cell reads as absent, not as a stored zero.
//
// On the road from mesh to solution this is the assembly target and the direct solver:
// element matrices go in through AddValues (or the cursor forms of Add, which walk each
// list once for a run of ascending insertions), prescribed values through UnifyAndZero,
// and Cholesky_Solve (upper triangle, root-free U^T D U) or LU_Solve (both triangles,
// no pivoting) factorise in place, with fill-in linked into the lists as new cells.
// Further right-hand sides go through ForwSub / DiagMult / BackwSub on the factors.
// CSystSpMat derives from it and keeps the same rows in one fixed table.
//
// Right-hand sides are declared CVirtMat * but must be CMatrix objects, one column per
// right-hand side; they are overwritten with the solution.
//
// Invariants: rows strictly ascending by m_nRow, cells strictly ascending by m_nCol
// (BackwSub reverses the row list for its own duration only). Gaps are allowed; a cell
// may hold 0.0. GetRows/GetColumns are what the lists say, never m_nRows/m_nColumns,
// which belong to Allocate alone.
//
// Behaviour at the edges, chosen here:
// - Cholesky yields -1 for a row without any cell, as for a misplaced first cell, and for
//   an off-diagonal cell whose column has no row of its own (a non-square list).
// - LU treats a diagonal with nothing behind it like any other: the cells below it are
//   still scaled and passed, so a lower triangular matrix factorises. This holds for
//   every LU of the library.
// - A row without the cell a substitution reads as its diagonal is passed over: ForwSub 2
//   and -2 leave out its division, BackwSub leaves its right-hand sides as they are.
// - Right-hand sides are read and written through their array, not through CMatrix's
//   virtual accessors.
// - UnifyAndZero(nRow) with nRow in front of the first row makes row nRow the new head.
// - Allocate with a negative row count empties the matrix, as a count of 0 does.
// - AddValues expects distinct indices; a repeat sums the entry found last once more.
// - Conjugate gradients: a column whose residual is exactly zero (a zero right-hand side,
//   or one solved exactly while others go on) takes a step and a beta of 0.0 where the
//   plain rule has 0/0: its solution is 0 (or stays as reached) and it poisons no other
//   column. A zero reference v_0 with a zero residual counts as meeting the test, so an
//   all-zero B stops in the first iteration with zeros; with a start vector and a zero B
//   only an exact zero residual meets it. A B without rows returns 0 at once, dNorm 0.0;
//   a negative nMaxIter runs no iteration and yields 0, the iterations completed.
// - ConjGradient: a row without a diagonal cell scales by 1.0, and a row without any cell
//   adds nothing to the product (ConjGradient2 takes it as a row of the identity).
// - ForwSub -1 and -2 on rows numbered 0 to n-1 let each finished row take its terms off
//   the later rows: the same subtractions in the same order per entry as the scan of the
//   earlier rows, in O(cells). With gaps in the numbering the scan itself runs.
// - LU finds the rows to eliminate through one waiting list per column, not a scan.
//
// Memory. A cell is its three described fields, 24 bytes with the alignment of its
// pointer and double, and it costs exactly that: cells come from slabs of 256 KiB that the
// matrix owns (fill-in included), not from one allocation each. 16 bytes would need a
// 32-bit link in place of the described pointer m_pNext, which the list walks, the
// cursors and the callers' own loops all read as a cell *; so 24 it stays. A cell that a
// caller unlinks is still freed with delete, and stays valid after its matrix is gone.
#pragma once

#include "frame/virtmat.h"

class CVector;
namespace sparse_detail {
class CellPool;
}

class CSparseMatrix : public CVirtRealMat {
    DECLARE_SERIAL(CSparseMatrix)
public:
    // One stored entry. Plain structure: no constructor, no virtual table.
    struct cell {
        cell *m_pNext; // next cell of the row; NULL at the end
        double m_dValue;
        LONG m_nCol;

        // Unlinks pCell from the chain behind this cell (this cell is never examined).
        // Nothing is freed.
        void Remove(cell *pCell);
        // Unlinks and returns the cell of column nCol from the chain behind this cell.
        cell *Remove(int nCol);
        // Divides this cell and every cell behind it by d.
        void DivideAll(double d);

        // Cells come from the slabs of their matrix's pool (see the note above); a plain
        // new and delete still make and free one anywhere.
        static void *operator new(size_t nSize);
        static void operator delete(void *p, size_t nSize);
    };

    // One row: owns its cells. The default constructor sets no field; copies are
    // memberwise and alias the source's cells.
    class row {
    public:
        cell *m_pFirstCell; // head of the cell list; NULL for a row without cells
        row *m_pNext;       // next row; NULL at the end
        LONG m_nRow;

        row() {}
        row(const row &other) = default;
        row &operator=(const row &other) = default;
        virtual ~row();

        // Sums dValue into column nCol, making the cell in its sorted place if absent.
        void Add(int nCol, double dValue);
        // The same, searching from the cursor pCell (a cell of this row, or NULL), which
        // falls back to the head when it stands past nCol; pCell ends on the cell written.
        void Add(int nCol, double dValue, cell *&pCell);
        // Makes exactly nCells cells in columns nFirstCol.. with dValue, reusing cells.
        void Allocate(int nCells, double dValue, int nFirstCol);
        // Frees all cells.
        void Clear();
        // Unlinks and returns the cell of column nCol (head included); NULL if absent.
        cell *Remove(int nCol);
        // Walks the rows from this one to row nRow and does Remove(nCol) there.
        cell *Remove(int nRow, int nCol);
        cell *GetCell(int nCol);
        double *GetValue(int nCol);
        // Multiplies every cell from column nFirstCol on; m_Flops grows by 1 per cell.
        void Multiply(double dFactor, int nFirstCol);
        // Merges the chain starting at pCell, scaled by dFactor, into this row;
        // with pCell NULL adds dFactor to every cell.
        void AddRow(cell *pCell, double dFactor);
        // Number of cells, whatever their values.
        int NonZeros();
        // Number of cells within dUlps machine epsilons of 0.0.
        int NumZeros(double dUlps);
        // Largest value with its sign, 0.0 as the floor.
        double Max();
    };

    CSparseMatrix();
    CSparseMatrix(const CSparseMatrix &) = delete;
    ~CSparseMatrix() override;

    // --- overrides of the frame, in its order ---
    // pSizes: rows (0 empties), cells per row, -, fill value; makes every position a cell.
    bool Allocate(int *pSizes, int nDims) override;
    void ReadASCII(CFile *pFile) override;
    void WriteASCII(CFile *pFile, CString strPrefix, CString strSuffix, int nWidth, int nPrecision,
                    int nFormat, bool bRowNumbers, bool bHeader) override;
    // Sums a square element matrix (row-major, n by n) at the positions pDOFs names.
    void AddValues(LONG *pDOFs, double *pValues, int n) override;
    // Cholesky, ForwSub(-1), DiagMult(-2), BackwSub(1); resets m_Flops. 1 or Cholesky's code.
    int Cholesky_Solve(CVirtMat *pB, double &dTime) override;
    // Every stored cell takes / is shifted by d; no cell is made.
    CVirtRealMat &operator=(double d) override;
    CVirtRealMat &operator+=(double d) override;

    // --- own virtual operations, in table order ---
    virtual double Max();
    virtual int NumZeros(double dUlps);
    virtual void DiagMult(CVirtMat *pB, double *pTime, int nMode);
    virtual void Clear();
    // Copies the lists into flat arrays (caller frees with delete[]); a lone 1.0 counts 0.
    virtual int MakeArrayMat(double *&pValues, int *&pCounts, int *&pColumns, int nRows);
    // Conjugate gradients on the upper triangle for all columns of B (a CMatrix) at once,
    // on a flat copy: a lone 1.0 row is the identity, the lists stay as they are. The
    // solution replaces B; dNorm gets the last residual's worst column sum of squares. The
    // test: that over v_0, the scaled B's, below dTol. Yields the iterations completed (the
    // one that meets the test not counted; nMaxIter if never met). pTimes (seconds of the
    // products and of the rest) also brings the report.
    virtual int ConjGradient2(CVirtMat &B, double &dNorm, int nMaxIter, double dTol,
                              CVector *pTimes, bool bScale);
    // No effect: the reorderings live in CReorderMat.
    virtual void MinDegReorder(CVector &v);
    // The same on the lists, from the start vector pX0 (a CMatrix, which then receives the
    // solution while B keeps the last directions); bScale divides the cells in place for
    // good. v_0 is B's as passed in. No report.
    virtual int ConjGradient(CVirtMat &B, CVirtMat *pX0, double &dNorm, int nMaxIter, double dTol,
                             CVector *pTimes, bool bScale);
    // Frees the cells left of the diagonal (same body as MakeLower).
    virtual void MakeUpper();
    virtual void COUT(const char *pszSeparator);
    // A = L U in place, no pivoting; 1, or -1 on a missing row, diagonal or zero pivot.
    virtual int LU();
    virtual int GetColumns();
    virtual int GetRows();
    // Sums dValue at (nRow, nCol); a value of exactly 0.0 is ignored.
    virtual void Add(int nRow, int nCol, double dValue);
    // Cursor forms: they store 0.0 too, and leave the cursors on the row / cell written.
    virtual void Add(int nRow, int nCol, double dValue, cell *&pCell);
    virtual void Add(int nRow, int nCol, double dValue, row *&pRow);
    virtual void Add(int nRow, int nCol, double dValue, row *&pRow, cell *&pCell);
    // Replaces A by A A^T; sums of exactly 0.0 get no cell.
    virtual void AAT();
    virtual void MakeLower();
    virtual void ReverseRows();
    // Modes 1: U x = y (unit diagonal), 2: with the diagonal. Restores the row order.
    virtual void BackwSub(CVirtMat *pB, double *pTime, int nMode);
    // Modes 1, 2: L y = b (2 divides by the diagonal); -1, -2: U^T y = b (-2 divides).
    virtual void ForwSub(CVirtMat *pB, double *pTime, int nMode);
    virtual bool IsLower(double *pTime);
    virtual bool IsUpper();
    // Root-free A = U^T D U on the upper triangle; 1, or -1 on failure.
    virtual int Cholesky();
    // Upper triangle to full: (j, i) = dFactor * (i, j). Yields its time in seconds.
    virtual double Mirror(double dFactor);
    // LU, ForwSub(1), BackwSub(2) and the timing report. 1 or LU's code.
    virtual int LU_Solve(CVirtMat *pB, double &dTime);
    virtual double *GetValue(int nRow, int nCol);

    // --- not virtual ---
    row *GetFirstRow() { return m_pFirstRow; }
    // Sums the non-zero cells of other into this matrix (a copy only when this is empty).
    CSparseMatrix &operator=(CSparseMatrix &other);
    // Row nRow becomes the lone cell 1.0 on the diagonal; column nRow leaves other rows.
    void UnifyAndZero(int nRow);
    // The same, moving the column's contribution of the prescribed dValue into pB.
    void UnifyAndZero(int nRow, double dValue, CVirtMat *pB);
    // Exact comparison of each position above the diagonal with its mirror.
    bool IsSym();

    LONG m_nRows;    // row count of the last Allocate
    LONG m_nColumns; // column count of the last Allocate
    row *m_pFirstRow;

protected:
    // The slabs this matrix's cells come from; made on first use, released with the matrix.
    sparse_detail::CellPool *m_pCellPool;

private:
    row *FindOrMakeRow(int nRow, row *pStart);
    void UnifyRow(int nRow, double dValue, CVirtMat *pB);
    bool RowsAreNumberedByPosition();
};
