// CFuncMat: a matrix whose entries are functions of one or two doubles, evaluated at a point
// into an ordinary CMatrix (0 where no function stands). A host keeps, say, a time-dependent
// element matrix in one and takes its value when it needs it. Nothing else in the library
// uses it; it reports CObject as its class and has no archive or text form.
//
// Entries are typed double * as the interface has always had them; the evaluators call an
// entry as double (*)(double) or double (*)(double, double), and which of the two a matrix
// holds is the host's affair. Entry() wraps a function into that type so a host never writes
// the cast. NULL means "no function here".
//
// Choices made here:
// - Allocate(int *, int) returns true exactly when the typed form returns a positive count:
//   a failed array (-1) is false, as is a matrix with no entries.
// - A negative count is refused like a failed array: -1, nothing allocated.
// - EvalFunc writes only as far as out's array reaches, should out's Allocate fail.
// - Copying is not offered: the array has one owner.
#pragma once

#include "dense/matrix.h"
#include "platform/object.h"

class CFuncMat : public CObject {
public:
    typedef double (*PFUNC1)(double);
    typedef double (*PFUNC2)(double, double);

    CFuncMat();
    CFuncMat(int nRows, int nColumns, bool bInit, double *pFill);
    ~CFuncMat() override;
    CFuncMat(const CFuncMat &) = delete;
    CFuncMat &operator=(const CFuncMat &) = delete;

    // pSizes: rows, columns, initialise flag; nDims below 2 makes it square. Fills with NULL.
    virtual bool Allocate(int *pSizes, int nDims);

    // nRows by nColumns entries; an array of the same count is kept with its entries, in
    // flat order. With bInit every entry becomes pFill. The count, or -1 without an array.
    int Allocate(int nRows, int nColumns, bool bInit, double *pFill);
    // Row r's first entry, so that M[r][c] reads or sets one function; r is not tested.
    double **operator[](int r) { return m_ppFuncs + r * m_nColumns; }
    // The entry at (r, c), a one-argument function, called with x; it must be there.
    double EvalFunc(int r, int c, double x);
    // out becomes this matrix's shape with each one-argument function's value at x.
    void EvalFunc(CMatrix &out, double x);
    // The same for two-argument functions, called f(x, y) with y the one double behind x.
    // Declared const: C++ cannot otherwise tell a call without the extra double from the
    // form above. On a const matrix the plain form is deleted, so such a call fails to
    // compile instead of reading a y that was never passed.
    void EvalFunc(CMatrix &out, double x, ...) const;
    void EvalFunc(CMatrix &out, double x) const = delete;

    static double *Entry(PFUNC1 pFunc) { return reinterpret_cast<double *>(pFunc); }
    static double *Entry(PFUNC2 pFunc) { return reinterpret_cast<double *>(pFunc); }

    int m_nRows;
    int m_nColumns;
    double **m_ppFuncs;

private:
    int ShapeOut(CMatrix &out) const;
};
