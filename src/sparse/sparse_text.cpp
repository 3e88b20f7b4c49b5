// CSparseMatrix text input and output, and the console dump.
#include "sparse/sparsematrix.h"

// Body comes with the text readers; until then nothing is read.
void CSparseMatrix::ReadASCII(CFile *) {}

// Body comes with the text writers; until then nothing is written.
void CSparseMatrix::WriteASCII(CFile *, CString, CString, int, int, int, bool, bool) {}

// Body comes with the console dumps; until then nothing is printed.
void CSparseMatrix::COUT(const char *) {}
