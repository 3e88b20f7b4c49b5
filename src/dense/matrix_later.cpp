// CMatrix: slots of the virtual table whose bodies come with later work (products,
// rotations, text input and output). Until then they do nothing; each body moves to its
// topic file when it comes.
#include "dense/matrix.h"

// Rotation matrix of a rotation vector: body comes later.
CMatrix &CMatrix::MakeRotMat(CVector &) {
    return *this;
}

// Text writers: bodies come later.
void CMatrix::WriteASCII(CFile *, CString, CString, int, int, int, bool, bool) {}
void CMatrix::COUT(const char *) {}

// Products with vectors, small matrices and sparse matrices: bodies come later.
void CMatrix::ApplyTo(CVector &, int) {}
void CMatrix::ApplyTo(CVector &, CVector &, int) {}
void CMatrix::SubMult(CMatrix &, int, unsigned int) {}
void CMatrix::PreMult(CSparseMatrix *, int) {}
void CMatrix::PreMult(CSparseMatrix *, CMatrix &, bool, int) {}
void CMatrix::ATthisA(CSparseMatrix *) {}
