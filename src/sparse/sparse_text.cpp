// CSparseMatrix text input.
#include "sparse/sparsematrix.h"

// Body comes with the text readers; until then nothing is read.
void CSparseMatrix::ReadASCII(CFile *) {}
