// CMatrix: slots of the virtual table whose bodies come with later work (text input).
// Until then they do nothing; each body moves to its topic file when it comes.
#include "dense/matrix.h"

// Text readers: bodies come later.
void CMatrix::ReadASCII(CFile *) {}
void CMatrix::ReadASCII(CFile *, CString, CString, CString) {}
