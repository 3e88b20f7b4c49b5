// CSystSpMat: the sparse matrix that finite-element assembly fills and the solvers work on.
// It keeps the rows and cells of CSparseMatrix, but its rows are the elements of one fixed
// array, the row table, linked into the list as well: a row is reached by index at once,
// the matrix is square with the size Allocate gave it, and no row is ever added or removed.
// The inherited walks along the list (substitutions, conjugate gradients, output) work
// unchanged.
//
// Its place on the road from mesh to solution:
//   graph      CReorderMat: Alloc, InsertDOFs(.., 0, ..), Init, InsertDOFs(.., 1, ..)
//   numbering  a reordering of CReorderMat, then PostReorder()
//   pattern    Allocate(graph): the upper triangle in label order, diagonal first, all 0.0;
//              it rewrites the graph's rows into labels, so the graph is spent
//   assembly   with CVirtMat::m_bSym true, AddValues(f_v-mapped dofs, element, n)
//   prescribed SymUnifyAndZero or SymHandleBCs (UnifyAndZero2 for full storage)
//   solve      the inherited Cholesky_Solve / LU_Solve, reaching Cholesky / LU below,
//              or GaussSeidel_Iter, or the inherited ConjGradient / ConjGradient2
//   next load  Allocate of the same size: every cell, fill-in included, back to 0.0
//
// Invariants: m_pRowTable[i].m_nRow == i; m_pFirstRow == m_pRowTable and each row links to
// the next element (BackwSub reverses the list for its own duration only); the base's
// m_nRows and m_nColumns stay 0. The table is freed as an array, never row by row.
//
// Every Add form drops a value of exactly 0.0. Row numbers are trusted to be in range.
//
// Assembly. Allocate(graph) also keeps an index of the pattern it lays out (16 bytes a
// row), so that AddValues reaches an element's cells without walking the
// fill-in that Cholesky links into the rows: the next load costs what the first did. The
// index lets go as soon as a cell of the matrix is freed or any cell is unlinked by Remove
// or row::Allocate (the prescribed-value operations keep it for the rows they leave
// alone); AddValues then walks the lists as before, with the same sums. A list relinked
// by hand, without Remove or delete, must be followed by Allocate(graph) of a new size or
// Clear before the next AddValues.
//
// Cost. Cholesky computes the row-merging factor row by row: each row gathers, in
// ascending order of the rows it owes, their chains into a work row, so every entry sees
// the same operations in the same order and the factor is bit for bit the merging one,
// without a walk along a target row per update. While no multiplier has been exactly 0.0,
// a row's new columns are known from its children in the elimination tree before its sums,
// which then run without a test per update. It needs every cell at or right of its
// row's diagonal and inside the table; other tables take the merging form itself. LU finds
// the rows to eliminate through one waiting list per column. The prescribed-value
// operations walk the cells once and apply the corrections of each row in the order of
// the prescribed list, so their results are those of the value-by-value description.
//
// Behaviour at the edges, chosen here:
// - Clear is overridden to empty the matrix as Allocate with 0 rows does, since the base's
//   Clear deletes rows singly. AAT, and Mirror on a row it would leave without cells, still
//   delete single rows and are not operations of a system matrix.
// - SymUnifyAndZero with non-zero values is not a full elimination, and is kept so: a
//   prescribed row first becomes the identity, dropping its cells right of the diagonal
//   without correcting the later rows; then only the rows that lose a cell of a prescribed
//   column are corrected, so the prescribed rows of pB keep their prescribed values.
// - SymHandleBCs leaves the rows of mRHS at the prescribed numbers as pass 1 left them
//   (old value less the diagonal term); a caller that wants the prescribed values there
//   writes them itself.
// - LU, like the list form, treats a diagonal with nothing behind it like any other: the
//   cells below it are still scaled and passed, so a lower triangular matrix factorises.
// - GaussSeidel_Iter with nMaxIter <= 0 runs no sweep, yields -1 and reports nMaxIter as
//   its (unsigned) iteration count. With vF of size 0 it sweeps over no rows (the symmetric
//   path never reaches for a last row): a change of 0.0, below any positive dTol.
// - GaussSeidel_Iter on a row without the diagonal it divides by (no cell at all, or in
//   full storage none from column i on), or whose diagonal is 0.0, infinite or NaN: no
//   sweep runs, vX is unchanged, the result is -1, and the report shows 0 sweeps and a
//   norm of 0. A converged iterate that is not finite everywhere (NaN hides from the
//   norm) also yields -1, with that iterate in vX.
#pragma once

#include "sparse/sparsematrix.h"

class CVector;
class CMatrix;
class CReorderMat;
namespace sparse_detail {
class PatternIndex;
}

class CSystSpMat : public CSparseMatrix {
    DECLARE_SERIAL(CSystSpMat)
public:
    CSystSpMat();
    // A table of nRows rows without cells; below 1 the same as the default constructor.
    explicit CSystSpMat(int nRows);
    CSystSpMat(const CSystSpMat &) = delete;
    ~CSystSpMat() override;

    // --- overrides of CSparseMatrix, in their slots ---
    // pSizes[0] rows. The same size keeps every cell; another size discards them. Then all
    // cells become 0.0. Always true.
    bool Allocate(int *pSizes, int nDims) override;
    // Sums the n by n element (row-major) at the rows and columns pDOFs names; zeros are
    // dropped, and with CVirtMat::m_bSym true so is everything left of the diagonal.
    void AddValues(LONG *pDOFs, double *pValues, int n) override;
    // Empties the matrix as Allocate with 0 rows does.
    void Clear() override;
    // A = L U in place through the table, no pivoting; 1, or -1 on a missing diagonal or
    // a zero pivot.
    int LU() override;
    // Both are the table size.
    int GetColumns() override;
    int GetRows() override;
    // All four forms ignore a value of exactly 0.0; pRow is only written, and only when a
    // value is added.
    void Add(int nRow, int nCol, double dValue) override;
    void Add(int nRow, int nCol, double dValue, cell *&pCell) override;
    void Add(int nRow, int nCol, double dValue, row *&pRow) override;
    void Add(int nRow, int nCol, double dValue, row *&pRow, cell *&pCell) override;
    // Root-free A = U^T D U through the table with row::AddRow; the first cell of each row
    // is taken as its diagonal. 1, or -1 for a row without cells or a pivot <= 0.
    // Leaves CVirtMat::m_Flops alone.
    int Cholesky() override;

    // --- own virtual operations, in table order ---
    // Gauss-Seidel on the first vF.GetSize() rows from the start vector vX, which receives
    // the result; storage by CVirtMat::m_bSym. 1 on a change below dTol within nMaxIter
    // sweeps, else -1. Always shows its report.
    virtual int GaussSeidel_Iter(CVector &vF, CVector &vX, double dTol, int nMaxIter);
    // The pattern of the graph's upper triangle in label order, all 0.0; needs PostReorder
    // and rewrites the graph's rows into sorted labels. The same size keeps the pattern and
    // leaves the graph unread.
    virtual bool Allocate(CReorderMat &graph);
    // Upper storage: prescribed rows become the cell 1.0, their columns leave the other
    // rows and move value times cell into pB (a CMatrix). Exact for zero values only.
    virtual void SymUnifyAndZero(CVector &vDOFs, CVector &vValues, CVirtMat *pB);
    // Full storage: the columns leave every row into pB, then the prescribed rows become
    // the cell 1.0 and their rows of pB the prescribed values.
    virtual void UnifyAndZero2(CVector &vDOFs, CVector &vValues, CVirtMat *pB);

    // --- not virtual ---
    // Upper storage; mBC rows: number, then one value per right-hand side (columns of
    // mRHS). Both triangles' links of a prescribed number move into mRHS, then leave.
    void SymHandleBCs(CMatrix &mBC, CMatrix &mRHS);
    // Relinks m_pFirstRow and every m_pNext from the table.
    void FixPointers();
    // Sums the non-zero cells of other into this matrix's own rows (which must cover
    // other's rows); each matrix keeps its table.
    CSystSpMat &operator=(CSystSpMat &other);
    using CSparseMatrix::operator=;

    row *m_pRowTable; // owned, new[]; NULL for an empty matrix
    LONG m_nTableRows;

private:
    // Frees the table as an array; the list is emptied first.
    void FreeTable();
    // The index of the pattern Allocate(graph) laid out, if it can still be trusted.
    sparse_detail::PatternIndex *CurrentIndex();
    // The index survives an operation that marks the rows it changes; else it goes.
    void DropIndex();
    // A table of nRows rows without cells, linked as the list.
    void MakeTable(int nRows);

    sparse_detail::PatternIndex *m_pIndex;
};
