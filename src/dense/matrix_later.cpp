// CMatrix: slots of the virtual table whose bodies come with later work (rotations,
// text input and output). Until then they do nothing; each body moves to its
// topic file when it comes.
#include "dense/matrix.h"

// Rotation matrix of a rotation vector: body comes later.
CMatrix &CMatrix::MakeRotMat(CVector &) {
    return *this;
}

// Text readers and writers: bodies come later.
void CMatrix::ReadASCII(CFile *) {}
void CMatrix::ReadASCII(CFile *, CString, CString, CString) {}
void CMatrix::WriteASCII(CFile *, CString, CString, int, int, int, bool, bool) {}
void CMatrix::COUT(const char *) {}
