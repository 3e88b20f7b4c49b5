// The checked build: with FEMMAT_CHECKED defined (CMake option FEMMAT_CHECKED, preset
// "checked", and on in the sanitize preset) the calls that write where their arguments
// point first test those arguments, as debug assertions do in numerical libraries, and throw
// CInvalidArgException naming the call and the offending value instead of writing past a
// buffer. Without it every check is an empty statement: the release build pays nothing.
//
// What is checked, at the top of each call:
// - degree-of-freedom lists (InsertDOFs, every AddValues): each non-negative number below
//   the size; in the graph and in the sparse and system matrices also no number twice among
//   the non-negative ones (dense and skyline AddValues sum a repeat correctly and allow it);
// - prescribed values (UnifyAndZero, SymUnifyAndZero, UnifyAndZero2, SymHandleBCs): numbers
//   finite and in range once truncated, as the calls take them, one value per number;
// - right-hand sides (substitutions, DiagMult, Cholesky_Solve, LU_Solve, prescribed values):
//   a CMatrix with at least as many rows as the matrix reaches, unless it has no columns;
// - Gauss-Seidel: vX at least as long as vF, and vF no longer than the matrix.
#pragma once

#include "platform/types.h"

#include <algorithm> // std::min and std::max in the checks' arguments

class CVirtMat;
class CVector;
class CMatrix;

#ifdef FEMMAT_CHECKED
#define FEMMAT_CHECK_DOFS(call, pDOFs, n, nLimit) femmat_check::Dofs(call, pDOFs, n, nLimit, false)
#define FEMMAT_CHECK_ELEMENT(call, pDOFs, n, nLimit)                                               \
    femmat_check::Dofs(call, pDOFs, n, nLimit, true)
#define FEMMAT_CHECK_INDEX(call, what, nValue, nLimit)                                             \
    femmat_check::Index(call, what, nValue, nLimit)
#define FEMMAT_CHECK_SIZE(call, what, nHave, nNeed) femmat_check::Size(call, what, nHave, nNeed)
#define FEMMAT_CHECK_RHS(call, pB, nRows) femmat_check::Rhs(call, pB, nRows, false)
#define FEMMAT_CHECK_OPTIONAL_RHS(call, pB, nRows) femmat_check::Rhs(call, pB, nRows, true)
#define FEMMAT_CHECK_PRESCRIBED(call, vDOFs, vValues, pB, nRows)                                   \
    femmat_check::Prescribed(call, vDOFs, vValues, pB, nRows)
#define FEMMAT_CHECK_BC_TABLE(call, mBC, mRHS, nRows) femmat_check::BcTable(call, mBC, mRHS, nRows)
#else
#define FEMMAT_CHECK_DOFS(call, pDOFs, n, nLimit) ((void)0)
#define FEMMAT_CHECK_ELEMENT(call, pDOFs, n, nLimit) ((void)0)
#define FEMMAT_CHECK_INDEX(call, what, nValue, nLimit) ((void)0)
#define FEMMAT_CHECK_SIZE(call, what, nHave, nNeed) ((void)0)
#define FEMMAT_CHECK_RHS(call, pB, nRows) ((void)0)
#define FEMMAT_CHECK_OPTIONAL_RHS(call, pB, nRows) ((void)0)
#define FEMMAT_CHECK_PRESCRIBED(call, vDOFs, vValues, pB, nRows) ((void)0)
#define FEMMAT_CHECK_BC_TABLE(call, mBC, mRHS, nRows) ((void)0)
#endif

// The checks behind the macros; a limit below 0 means no upper bound.
namespace femmat_check {
void Dofs(const char *pszCall, const LONG *pDOFs, int n, long long nLimit, bool bDistinct);
void Index(const char *pszCall, const char *pszWhat, long long nValue, long long nLimit);
void Size(const char *pszCall, const char *pszWhat, long long nHave, long long nNeed);
void Rhs(const char *pszCall, CVirtMat *pB, long long nRows, bool bOptional);
void Prescribed(const char *pszCall, CVector &vDOFs, CVector &vValues, CVirtMat *pB, int nRows);
void BcTable(const char *pszCall, CMatrix &mBC, CMatrix &mRHS, int nRows);
} // namespace femmat_check
