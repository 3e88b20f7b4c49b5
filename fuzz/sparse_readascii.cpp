// Reads arbitrary bytes as sparse rows into a list matrix that already holds a cell: the
// rows and cells must stay strictly ascending and no stored cell may come from a zero.
#include "femmat.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

static void Check(bool bOk) {
    if (!bOk)
        abort();
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    CMemFile file(data, (UINT)size);
    CSparseMatrix A;
    A.Add(1, 1, 2.5);
    A.ReadASCII(&file);
    Check(file.GetPosition() == size);
    int nLastRow = -1;
    for (CSparseMatrix::row *r = A.m_pFirstRow; r != NULL; r = r->m_pNext) {
        Check(r->m_nRow > nLastRow);
        nLastRow = r->m_nRow;
        int nLastCol = -1;
        for (CSparseMatrix::cell *c = r->m_pFirstCell; c != NULL; c = c->m_pNext) {
            Check(c->m_nCol > nLastCol);
            nLastCol = c->m_nCol;
        }
    }
    return 0;
}
