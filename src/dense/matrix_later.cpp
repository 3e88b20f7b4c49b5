// CMatrix: slots of the virtual table whose bodies come with later work (products,
// text input and output). Until then they do nothing; each body moves to its
// topic file when it comes.
#include "dense/matrix.h"

// Text readers and writers: bodies come later.
void CMatrix::ReadASCII(CFile *) {}
void CMatrix::ReadASCII(CFile *, CString, CString, CString) {}

// Products with vectors, small matrices and sparse matrices: bodies come later.
void CMatrix::ApplyTo(CVector &, int) {}
void CMatrix::ApplyTo(CVector &, CVector &, int) {}
void CMatrix::SubMult(CMatrix &, int, unsigned int) {}
void CMatrix::PreMult(CSparseMatrix *, int) {}
void CMatrix::PreMult(CSparseMatrix *, CMatrix &, bool, int) {}
void CMatrix::ATthisA(CSparseMatrix *) {}
