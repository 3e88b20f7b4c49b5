// The checks of the checked build; see checked.h. Compiled in every build, called only
// from the checked one.
#include "frame/checked.h"

#include "dense/matrix.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <vector>

namespace {

[[noreturn]] void Fail(const char *pszCall, const std::string &text) {
    throw CInvalidArgException(std::string(pszCall) + ": " + text);
}

std::string Format(const char *pszFormat, long long a, long long b = 0, long long c = 0) {
    char sz[256];
    snprintf(sz, sizeof sz, pszFormat, a, b, c);
    return sz;
}

// A number given as a double, as the call takes it: truncated toward zero into [0, nLimit).
void DofNumber(const char *pszCall, double dValue, int nLimit) {
    double dTaken = std::trunc(dValue);
    if (std::isfinite(dValue) && dTaken >= 0.0 && dTaken < nLimit)
        return;
    char sz[256];
    snprintf(sz, sizeof sz, "prescribed DOF %.17g is outside 0 to %d", dValue, nLimit - 1);
    Fail(pszCall, sz);
}

} // namespace

namespace femmat_check {

void Dofs(const char *pszCall, const LONG *pDOFs, int n, long long nLimit, bool bDistinct) {
    for (int i = 0; i < n; i++) {
        if (nLimit >= 0 && pDOFs[i] >= nLimit)
            Fail(pszCall,
                 Format("DOF %lld (entry %lld) is not below the size %lld", pDOFs[i], i, nLimit));
    }
    if (!bDistinct || n < 2)
        return;
    // Sorted copies of (number, entry) find a repeat in n log n.
    std::vector<std::pair<LONG, int>> sorted;
    for (int i = 0; i < n; i++)
        if (pDOFs[i] >= 0)
            sorted.push_back({pDOFs[i], i});
    std::sort(sorted.begin(), sorted.end());
    for (size_t k = 1; k < sorted.size(); k++)
        if (sorted[k].first == sorted[k - 1].first)
            Fail(pszCall, Format("DOF %lld stands twice in one element (entries %lld and %lld)",
                                 sorted[k].first, sorted[k - 1].second, sorted[k].second));
}

void Index(const char *pszCall, const char *pszWhat, long long nValue, long long nLimit) {
    if (nValue < 0 || (nLimit >= 0 && nValue >= nLimit))
        Fail(pszCall, std::string(pszWhat) +
                          (nLimit >= 0 ? Format(" %lld is outside 0 to %lld", nValue, nLimit - 1)
                                       : Format(" %lld is negative", nValue)));
}

void Size(const char *pszCall, const char *pszWhat, long long nHave, long long nNeed) {
    if (nHave < nNeed)
        Fail(pszCall,
             std::string(pszWhat) + Format(" is %lld, below the %lld needed", nHave, nNeed));
}

void Rhs(const char *pszCall, CVirtMat *pB, long long nRows, bool bOptional) {
    if (pB == NULL) {
        if (!bOptional)
            Fail(pszCall, "no right-hand side");
        return;
    }
    if (!pB->IsKindOf(RUNTIME_CLASS(CMatrix)))
        Fail(pszCall, std::string("the right-hand side is a ") +
                          pB->GetRuntimeClass()->m_lpszClassName + ", not a CMatrix");
    // Without columns nothing is read or written, whatever the rows.
    CMatrix *B = static_cast<CMatrix *>(pB);
    long long nHave = B->GetRows();
    if (nHave < nRows && B->GetColumns() > 0)
        Fail(pszCall,
             Format("the right-hand side has %lld rows, the matrix needs %lld", nHave, nRows));
}

void Prescribed(const char *pszCall, CVector &vDOFs, CVector &vValues, CVirtMat *pB, int nRows) {
    Size(pszCall, "the number of values", vValues.GetSize(), vDOFs.GetSize());
    for (int i = 0; i < vDOFs.GetSize(); i++)
        DofNumber(pszCall, vDOFs[i], nRows);
    Rhs(pszCall, pB, nRows, false);
}

void BcTable(const char *pszCall, CMatrix &mBC, CMatrix &mRHS, int nRows) {
    const int nBC = mBC.GetRows();
    for (int b = 0; b < nBC; b++)
        DofNumber(pszCall, mBC[b][0], nRows);
    Rhs(pszCall, &mRHS, nRows, false);
    if (nBC > 0)
        Size(pszCall, "the number of right-hand sides", mRHS.GetColumns(), mBC.GetColumns() - 1);
}

} // namespace femmat_check
