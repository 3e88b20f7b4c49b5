#include "frame/virtmat.h"

#include <cstdio>

IMPLEMENT_DYNAMIC(CVirtMat, CObject)
IMPLEMENT_DYNAMIC(CVirtRealMat, CVirtMat)

ULONG CVirtMat::m_Flops = 0;
bool CVirtMat::m_bSym = false;

CString CVirtMat::FormatTime(double dSeconds) {
    // The 0.01 is the single-precision constant, carried as a double.
    const double dHundredth = (double)0.01f;
    unsigned nMinutes = (unsigned)((int)dSeconds / 60);
    double dRest = (double)((int)(dSeconds * 100.0) % 6000) * dHundredth;
    CString str;
    str.Format("%u m %2.2f s", nMinutes, dRest);
    return str;
}

int CVirtRealMat::Cholesky_Solve(CVirtMat *, double &) {
    return 0;
}

bool ApproxEqual(double dValue, double dRef, double dUlps) {
    const double d = dUlps * 2.220446049250313e-16;
    bool bA, bB;
    if (dRef < 1.0 && dRef > -1.0) {
        bA = dValue < dRef + d;
        bB = dValue <= dRef - d;
    } else {
        bA = dValue <= (1.0 + d) * dRef;
        bB = dValue < (1.0 - d) * dRef;
    }
    return bA != bB;
}

// Scratch of the sort, shared as the original's file-level statics.
static LONG s_nPivot;
static int s_i;
static LONG s_nSwap;

// Hoare partition of n elements around element 0; returns the split index j.
static int PartitionLongs(LONG *pData, int n) {
    s_nPivot = pData[0];
    s_i = -1;
    int j = n;
    for (;;) {
        do
            j--;
        while (pData[j] > s_nPivot);
        do
            s_i++;
        while (pData[s_i] < s_nPivot);
        if (s_i >= j)
            return j;
        s_nSwap = pData[s_i];
        pData[s_i] = pData[j];
        pData[j] = s_nSwap;
    }
}

void QuickSortLongs(LONG *pData, int nCount) {
    // Left part by recursion, right part by the loop.
    while (nCount > 1) {
        int k = PartitionLongs(pData, nCount) + 1;
        QuickSortLongs(pData, k);
        pData += k;
        nCount -= k;
    }
}
