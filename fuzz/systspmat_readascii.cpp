// Reads arbitrary bytes as sparse rows into a system matrix whose table has a row for
// every line: each row keeps its place in the table and its cells stay ascending.
#include "femmat.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

static void Check(bool bOk) {
    if (!bOk)
        abort();
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    int nLines = 1;
    for (size_t i = 0; i < size; i++)
        nLines += data[i] == '\n';
    CMemFile file(data, (UINT)size);
    CSystSpMat A(nLines);
    A.ReadASCII(&file);
    Check(file.GetPosition() == size && A.GetRows() == nLines);
    for (int i = 0; i < nLines; i++) {
        Check(A.m_pRowTable[i].m_nRow == i);
        int nLastCol = -1;
        for (CSparseMatrix::cell *c = A.m_pRowTable[i].m_pFirstCell; c != NULL; c = c->m_pNext) {
            Check(c->m_nCol > nLastCol && c->m_dValue != 0.0);
            nLastCol = c->m_nCol;
        }
    }
    return 0;
}
