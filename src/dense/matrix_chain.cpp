// Chains of dense products, left to right or in the bracketing of fewest multiplications.
#include "dense/matrix.h"
#include "platform/afx.h"

#include <cfloat>
#include <cstdarg>
#include <vector>

double CMatrix::ChainMult(bool bOptimal, int nCount, CMatrix *pFirst, ...) {
    LONG nStart = AfxClock();
    va_list args;
    va_start(args, pFirst);
    if (!bOptimal) {
        // Phase 1 (plain): each following matrix multiplies the first from the right.
        for (int i = 1; i < nCount; i++)
            *pFirst *= *va_arg(args, CMatrix *);
    } else {
        // Phase 1 (optimal): the dimension vector and the chain.
        CVector dims(nCount + 1, true, 0.0);
        CMatrix split(nCount, nCount, true, 0.0);
        std::vector<CMatrix *> chain(nCount);
        dims[0] = pFirst->m_nRows;
        for (int i = 0; i < nCount; i++) {
            chain[i] = i == 0 ? pFirst : va_arg(args, CMatrix *);
            dims[i + 1] = chain[i]->GetColumns();
        }
        // Phase 2: the bracketing, then the products it names.
        MatrixChainOrder(&split, &dims);
        ChainMultRec(chain.data(), &split, 1, nCount);
    }
    va_end(args);
    return (AfxClock() - nStart) * 0.001;
}

// The classic dynamic programme by rising chain length; of equal costs the smallest split
// wins. Each candidate cost is truncated to a 32-bit integer, saturating at its greatest
// value rather than overflowing.
double CMatrix::MatrixChainOrder(CMatrix *pSplit, CVector *pDims) {
    const int n = pDims->m_nSize - 1;
    if (n < 1)
        return 0.0;
    const double *p = pDims->m_pVector;
    CMatrix cost(n, n, true, 0.0);
    for (int l = 2; l <= n; l++) {
        for (int i = 0; i <= n - l; i++) {
            const int j = i + l;
            double &dBest = cost.GetValueByRef(i, j - 1);
            dBest = DBL_MAX;
            for (int k = i + 1; k <= j - 1; k++) {
                double dQ = cost.GetValue(i, k - 1) + cost.GetValue(k, j - 1) + p[i] * p[k] * p[j];
                int q = dQ < 2147483647.0 ? (int)dQ : 2147483647;
                if ((double)q < dBest) {
                    dBest = q;
                    pSplit->SetValue(i, j - 1, k);
                }
            }
        }
    }
    return cost.m_pVector[n - 1];
}

// Carries out the bracketing of matrices i to j (from 1): the first matrix of each part
// takes the part's product.
void CMatrix::ChainMultRec(CMatrix **ppChain, CMatrix *pSplit, int i, int j) {
    if (j <= i)
        return;
    int k = (int)pSplit->GetValue(i - 1, j - 1);
    ChainMultRec(ppChain, pSplit, i, k);
    ChainMultRec(ppChain, pSplit, k + 1, j);
    *ppChain[i - 1] *= *ppChain[k];
}
