// CVirtMat and CVirtRealMat: the abstract roots of every matrix class. Through a base
// pointer a host can size, read and write any matrix and, for real values, assemble into
// it, set or shift it by a scalar, and (sparse and skyline) factorise and solve.
// Also here: the two class-wide statics, the report-time format, ApproxEqual, QuickSortLongs.
#pragma once

#include "frame/checked.h"
#include "platform/afx.h"

class CVirtMat : public CObject {
    DECLARE_DYNAMIC(CVirtMat)
public:
    CVirtMat() = default;
    ~CVirtMat() override = default;

    // Sizes the object from an int array; entries beyond nDims take the class's defaults.
    virtual bool Allocate(int *pSizes, int nDims) = 0;
    virtual void ReadASCII(CFile *pFile) = 0;
    virtual void WriteASCII(CFile *pFile, CString strTag, CString strFormat, int nFirst, int nEnd,
                            int nMode, bool bTag, bool bIndices) = 0;

    // Running count of the sparse solvers' floating-point operations; wraps modulo 2^32.
    static ULONG m_Flops;
    // The host's statement that system matrices are symmetric and hold their upper triangle.
    static bool m_bSym;

    // The "%u m %2.2f s" piece of every report: minutes, and seconds that never reach 60.
    static CString FormatTime(double dSeconds);

    // The number reader of every text reader, and its symbol expansions (textio/): the
    // symbols at or behind the index become numbers in the line, in place.
    static void ReadNumber(int &nPos, CString &strLine, CString &strToken);
    static void ReplacePI(CString &strLine, int nStart);
    static void ReplaceIs(CString &strLine, int nStart);
    static void ReplaceGravity(CString &strLine, int nStart);
};

class CVirtRealMat : public CVirtMat {
    DECLARE_DYNAMIC(CVirtRealMat)
public:
    CVirtRealMat() = default;

    // Adds values at the positions an index list names; negative indices take no part.
    virtual void AddValues(LONG *pIndices, double *pValues, int nCount) = 0;
    // Default for classes that cannot solve: returns 0 and touches neither argument.
    virtual int Cholesky_Solve(CVirtMat *pB, double &dTime);
    virtual CVirtRealMat &operator=(double dValue) = 0;
    virtual CVirtRealMat &operator+=(double dValue) = 0;
};

// True when dValue lies within dUlps machine epsilons of dRef: absolute below a magnitude
// of 1.0, relative from there on; dUlps 0 is plain equality.
bool ApproxEqual(double dValue, double dRef, double dUlps);

// Sorts ascending in place by Hoare partitioning with the first element as pivot.
// Its scratch variables are shared statics: not to be entered twice at once.
void QuickSortLongs(LONG *pData, int nCount);
