// CSparseMatrix text input and output, and the console dump.
#include "sparse/sparsematrix.h"
#include "textio/textlines.h"

using textio_detail::CLineNumbers;
using textio_detail::CTextLines;

// Every line to the end of the file is a row, a blank one too; the k-th number is column
// k. Values go through the virtual Add, so they are summed into what is there, zeros make
// no cell, and a CSystSpMat takes them into its own table.
void CSparseMatrix::ReadASCII(CFile *pFile) {
    CTextLines lines(pFile);
    CString strLine;
    for (int r = 0; lines.Read(strLine); r++) {
        CLineNumbers numbers(strLine);
        for (int k = 0; numbers.Next(); k++)
            Add(r, k, numbers.Value());
    }
    lines.Close();
}

// Body comes with the text writers; until then nothing is written.
void CSparseMatrix::WriteASCII(CFile *, CString, CString, int, int, int, bool, bool) {}

// Body comes with the console dumps; until then nothing is printed.
void CSparseMatrix::COUT(const char *) {}
