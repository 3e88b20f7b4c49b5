// CMatrix: the dense matrix of doubles. A CVector with a row count: the vector's array is
// the matrix in row-major order, and the column count is never stored but derived as
// m_nSize / m_nRows (0 for 0 rows), so m_nSize must stay a multiple of m_nRows.
//
// On the road from mesh to solution a CMatrix carries the right-hand sides (one column
// each) into every solver and receives the solutions in their place. Beside that road it
// is a small dense algebra of its own: LU with and without pivoting, Cholesky,
// determinants, norms and scans, all in place.
//
// The factorisations and solves reach every element through the virtual accessors
// (GetValue, SetValue, AddValue, GetValueByRef, Multiply), so a derived class sees those
// calls. An object whose dynamic type is CMatrix itself can only land in CMatrix's own
// accessors, so it runs the same steps on its array directly, with the same results.
// Other operations walk the array, except where their contract names an accessor.
//
// Operations of CVector that are not replaced here work on the whole buffer as one flat
// vector and know nothing of rows: a matrix must be combined with one of its own size,
// and Trunc must be followed by Resize. LinComb and CrossProd size their target through
// the vector slot of Allocate, so their result is a column.
//
// Choices made here:
// - Resize(0, ...) returns false and changes nothing. GetValue and its kin on a matrix of
//   0 rows divide by zero: the caller must not ask.
// - Cholesky on a matrix of 0 rows returns 0 and touches nothing (no pivot to read).
// - fabsMaxInCol of a column without a comparable magnitude (all NaN) refers to its top.
// - Eig and AAT are entry points without a body.
// - No product tests a shape. ApplyTo's flat walks take their lengths from the vectors (in
//   for mode 1, out for mode 2), so a wrong shape gives wrong values, as the walk implies.
// - PostPreMult's int argument has no role.
// - The text readers place the file by the line reader's real position, so LF files end
//   up where CR LF files do, and leave the matrix empty when its storage can't be had;
//   textio/tagseek.h lists every choice of the text input.
#pragma once

#include "dense/vector.h"

class CSparseMatrix;

class CMatrix : public CVector {
    DECLARE_SERIAL(CMatrix)
public:
    CMatrix();
    // nRows times nCols elements; a column count of 0 makes an empty matrix of 0 rows.
    CMatrix(int nRows, int nCols, bool bInit = false, double dValue = 0.0);
    // A copy, or with bTranspose the transposed copy.
    CMatrix(const CMatrix &other, bool bTranspose = false);
    ~CMatrix() override;

    // --- overrides of the frame and of CVector ---
    void Serialize(CArchive &ar) override;
    // pSizes: rows, columns, initialise flag, fill value; nDims below 2 makes it square.
    // On a false result the row count stays as it was.
    bool Allocate(int *pSizes, int nDims) override;
    void ReadASCII(CFile *pFile) override;
    void WriteASCII(CFile *pFile, CString strPrefix, CString strSuffix, int nWidth, int nPrecision,
                    int nFormat, bool bRowNumbers, bool bHeader) override;
    // Assembles a square element matrix (row-major, nCount by nCount) at the rows and
    // columns the index list names; a negative index leaves out its row and column.
    void AddValues(LONG *pIndices, double *pValues, int nCount) override;
    CVirtRealMat &operator=(double dValue) override;
    // The vector slot: the matrix becomes a column of nCount rows.
    bool Allocate(int nCount, bool bInit, double dValue) override;
    // The greatest row sum of magnitudes.
    double InfNorm() override;
    // The matrix becomes a column of nSize rows; the old array is returned unfreed.
    double *ReplaceVector(double *pValues, int nSize) override;
    // Exchanges buffers; a matrix partner exchanges shapes too, a vector's array makes
    // this matrix a column.
    void SwitchVectors(CVector *pOther) override;

    // --- the matrix's own virtual operations, in table order ---
    // Copies column j into the first m_nRows elements of out, growing it if too short.
    virtual void GetColVect(CVector &out, int j);
    virtual CMatrix &MakeRotMat(CVector &v);
    // The block between a begin and an end tag, with comments and nested blocks.
    virtual void ReadASCII(CFile *pFile, CString strBegin, CString strEnd, CString strComment);
    // v becomes X v (mode 1) or X^T v (mode 2); any other mode leaves v empty.
    virtual void ApplyTo(CVector &v, int nMode);
    // out gains X in (mode 1) or X^T in (mode 2); X walked flat, bounds from the vectors.
    virtual void ApplyTo(CVector &in, CVector &out, int nMode);
    // The contents survive exactly when the element count stays; a 0 by n request
    // returns false and leaves an empty matrix of 0 rows.
    virtual bool Allocate(int nRows, int nCols, bool bInit, double dValue);
    // Reference to the topmost smallest element of column j.
    virtual double &MinInCol(int j);
    // Greatest and smallest length over the rows (bCols) or columns of two elements.
    virtual void GetMaxMinLength(double &dMax, double &dMin, int n1, int n2, bool bCols);
    virtual void GetMaxMinLength(double &dMax, double &dMin, int n1, int n2, int n3, bool bCols);
    // Multiplies the k rows (flag bits 1, 4) or k columns (2, 8) from nFirst by the k by k
    // R: bit 1 R^T B, 2 B R, 4 R B, 8 B R^T, applied in that order. R must not be X.
    virtual void SubMult(CMatrix &R, int nFirst, unsigned int nFlags);
    // 2-norms (nMode above 0) or sums of squares of the columns (|nMode| 1) or rows.
    virtual void Vect2Norm(CVector &out, int nMode);
    // In place A = R^T R, R upper; reads only the upper triangle. 0 on a zero pivot.
    virtual int Cholesky();
    virtual void MultiplyCol(int j, double dFactor);
    virtual void MultiplyRow(int i, double dFactor);
    virtual void COUT(const char *pszSeparator);
    virtual double Trace();
    // The greatest column sum of magnitudes.
    virtual double OneNorm();
    virtual double Frobenius();
    // An n by n matrix of zeros with dDiagonal on the diagonal.
    virtual void Identity(int n, double dDiagonal);
    // X = A X (mode 0) or (A + A^T) X (mode 1, a diagonal cell counts twice); any other
    // mode leaves zeros. X is A's row count by its column count afterwards.
    virtual void PreMult(CSparseMatrix *A, int nMode);
    // out = (or += with bAdd) A X, mode 0; mode 1 reads A as an upper triangle with the
    // diagonal first in each row. Counts 2 flops per column for a first cell, 4 for the
    // others (mode 0: 2 for every cell). X stays.
    virtual void PreMult(CSparseMatrix *A, CMatrix &out, bool bAdd, int nMode);
    // X = A X A^T for a square X of A's order.
    virtual void ATthisA(CSparseMatrix *A);
    // Reshapes without touching the elements: n rows, or n columns with bIsColumns.
    // False and no change when m_nSize is no multiple of n.
    virtual bool Resize(int n, bool bIsColumns);
    // Factorises (with or without row pivoting) and solves for every column of pB;
    // dSeconds gets the factorisation's time. False on a zero pivot.
    virtual bool SolveAxEqb(CMatrix *pB, bool bPivot, double &dSeconds);
    // Multiplies element (i, j) by dFactor and returns the new value.
    virtual double Multiply(int i, int j, double dFactor);
    // LU with partial pivoting in place; pPerm (new[], the caller's) maps factor rows to
    // original rows. 1, or -1 with pPerm NULL on a zero pivot. The last pivot is never
    // examined.
    virtual int LUP_Decomp(int *&pPerm);
    // LU without pivoting in place; this, or NULL on a zero pivot.
    virtual CMatrix *LU();
    // a(i, j) a(i+1, j+1) - a(i+1, j) a(i, j+1) when nOrder is 2, else 0.0.
    virtual double SubDetSqMat(int i, int j, int nOrder);
    // The product of the diagonal of an unpivoted LU of a copy; 0.0 when LU fails.
    virtual double Det();
    virtual void Transpose();
    virtual int GetColumns();
    virtual double &GetValueByRef(int i, int j);
    virtual double GetValue(int i, int j);
    virtual void SetValue(int i, int j, double dValue);
    virtual void AddValue(int i, int j, double dValue);

    // Keep the vector's forms reachable beside the matrix's.
    using CVector::GetValue;
    using CVector::SetValue;
    using CVector::SetVector;
    using CVector::operator+=;
    using CVector::operator-=;

    // --- access; no index is tested ---
    int GetRows() const { return m_nRows; }
    // Pointer to the first element of row i, so that M[i][j] addresses an element.
    double *operator[](int i) { return m_pVector + i * (m_nSize / m_nRows); }
    bool IsAllocated() const { return m_pVector != NULL; }

    // --- storage ---
    // Sizes itself through the table, then copies the elements.
    CMatrix &operator=(const CMatrix &other);
    // Adopts the array (new[]), which is the object's from now on.
    void SetVector(double *pValues, int nRows, int nCols);

    // --- element operations ---
    // Row i from column nFirst up to but not including nEnd.
    void MultiplySubRow(int i, int nFirst, int nEnd, double dFactor);
    // New symmetric and skew parts (the caller's); only their upper triangles and
    // diagonals are written.
    void Split(CMatrix *&pSym, CMatrix *&pSkew);
    // Exact symmetry; false when not square, true for 0 rows.
    bool CheckSymm();
    CMatrix &operator*=(double dValue);
    CMatrix &operator/=(double dValue);
    CMatrix &operator+=(CMatrix &other);
    CMatrix &operator-=(CMatrix &other);
    void AAT() {}

    // --- chains of products ---
    // Multiplies the nCount matrices behind nCount (CMatrix pointers) into the first and
    // returns the seconds taken, the search for the bracketing included. Left to right
    // changes only the first; bOptimal uses the cheapest bracketing, and the first matrix of
    // every sub-chain it names takes that sub-chain's product.
    static double ChainMult(bool bOptimal, int nCount, CMatrix *pFirst, ...);
    // Fills the split table (sized n by n beforehand, zeros) for the dimensions pDims (n + 1
    // entries) and returns the least number of scalar multiplications. Candidate costs are
    // 32-bit integers; above that range they saturate (the caller must keep them below).
    // No matrix (n of 0) costs 0.0.
    static double MatrixChainOrder(CMatrix *pSplit, CVector *pDims);
    // Carries out the bracketing of pSplit for matrices i to j, counted from 1.
    static void ChainMultRec(CMatrix **ppChain, CMatrix *pSplit, int i, int j);

    // --- rotations ---
    // The 3 by 3 matrix built from two angles as the classic formula states it; a rotation
    // about the third axis when dAngle2 is 0, about the second when dAngle1 is 0, and not
    // orthogonal for two non-zero angles.
    void RotMat(double dAngle1, double dAngle2);
    // R becomes the 2 by 2 rotation by dAngle, or its transpose.
    static void RotMat2D(CMatrix &R, double dAngle, bool bTransposed);

    // --- test matrices; each sizes itself through the table and reports nothing ---
    // Random values from dMin to dMax (upper limit first), seeded from AfxTime() on every
    // call (a host or test fixes it with AfxSetTimeSource): nForm 0 full, 1 lower with diagonal, 2 upper with diagonal, -1 strict lower,
    // -2 strict upper (zeros elsewhere); other forms change nothing.
    void RandMat(int nRows, int nCols, double dMax, double dMin, int nForm);
    // Lower (upper) pattern: dFill below (above) the diagonal, dDiag on it, zeros on the
    // other side; with bAdd and an unchanged element count the constants are added instead
    // and the other side is left alone. Needs nRows not above nCols.
    void LMat(int nRows, int nCols, double dFill, double dDiag, bool bAdd);
    void UMat(int nRows, int nCols, double dFill, double dDiag, bool bAdd);
    // Row n takes dValue (bRow), or element n of every row takes or gains it.
    void SetVals(int n, double dValue, bool bAdd, bool bRow);
    // One value in [1 - dSpread/2, 1 + dSpread/2] per row, columns spread by a random
    // permutation (shared when there are more rows than columns). Not seeded here.
    void WellCond(int nRows, int nCols, double dSpread);
    // Subtracts the mean of the diagonal from the diagonal.
    void Dev();

    // --- products ---
    // X = X B: in place when B has X's column count (B must not be X), else through a
    // temporary.
    CMatrix &operator*=(CMatrix &B);
    // The same product through the virtual accessors of both.
    void PostMult(CMatrix &B);
    // X = Q X^T Q^T for a square X; the int has no role.
    void PostPreMult(CMatrix &Q, int nUnused);
    // M += dFactor a b^T, M's array walked as one flat sequence; with bReverse a and b are
    // taken last to first. A zero factor of an element of a skips its row.
    static void vectAvectBT(CMatrix &M, CVector &a, CVector &b, double &dFactor, bool bReverse);
    // Adds the non-zero elements into pS, made when NULL (then the caller's); the walk runs
    // from the last element so that every node goes in at the head of its list.
    void Sparse(CSparseMatrix *&pS);
    // X becomes the dense form of pS; columns up to the last cell of any row.
    void UnSparse(CSparseMatrix *pS);

    // --- factorisation and solving ---
    // Solves in place for all columns of pB with the factors of LUP_Decomp (pPerm) or of
    // LU (pPerm NULL).
    static void LUP_Solve(CMatrix *pLU, int *pPerm, CMatrix *pB);
    void Eig(bool, CMatrix &, CVector &) {}

    // --- console ---
    // Each GetValue(i, j) and a tab, a line per row, on std::cout.
    void Stream();

    // --- norms and extremes ---
    // Topmost greatest element of column j.
    double &MaxInCol(int j);
    // Element of greatest magnitude in column j, the lowest of equal magnitudes.
    double &fabsMaxInCol(int j);
    double MaxInRow(int i);
    // First column of row i (row of column j) exactly equal to dValue, or -1.
    int FindInRow(int i, double dValue);
    int FindInCol(int j, double dValue);
    void GetMaxMin1(double (*pFunc)(double), double &dMax, double &dMin, int n1, bool bCols);
    void GetMaxMin2(double (*pFunc)(double *), double &dMax, double &dMin, int n1, int n2,
                    bool bCols);
    void GetMaxMin3(double (*pFunc)(double *), double &dMax, double &dMin, int n1, int n2, int n3,
                    bool bCols);

    int m_nRows;

private:
    // Frees the array and takes over T's array, size and row count; T is left empty.
    void TakeOver(CMatrix &T);
};
