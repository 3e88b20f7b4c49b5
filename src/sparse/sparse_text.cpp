// CSparseMatrix text input.
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
