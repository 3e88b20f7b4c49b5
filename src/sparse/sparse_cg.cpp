// CSparseMatrix conjugate gradients for many right-hand sides at once.
#include "dense/vector.h"
#include "sparse/sparsematrix.h"

// Body comes with the conjugate-gradient work; until then no iteration runs.
int CSparseMatrix::ConjGradient2(CVirtMat &, double &, int, double, CVector *, bool) {
    return 0;
}

// Body comes with the conjugate-gradient work; until then no iteration runs.
int CSparseMatrix::ConjGradient(CVirtMat &, CVirtMat *, double &, int, double, CVector *, bool) {
    return 0;
}
