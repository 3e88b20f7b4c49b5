// Reads arbitrary bytes as plain blocks of matrix rows, one block after the other, each
// into a matrix that held something before: shape and buffer must agree and the file
// must move on or stand on a line without numbers.
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
    CMatrix m(2, 2, true, 5.0);
    for (int nBlock = 0; nBlock < 4; nBlock++) {
        ULONG nBefore = file.GetPosition();
        m.ReadASCII(&file);
        ULONG nAfter = file.GetPosition();
        Check(nAfter >= nBefore && nAfter <= file.GetLength());
        Check(m.m_nSize == m.m_nRows * m.GetColumns());
        Check((m.m_nSize == 0) == (m.m_pVector == NULL));
        Check((m.m_nRows > 0) == (nAfter > nBefore));
        for (int i = 0; i < m.m_nSize; i++)
            (void)(m.m_pVector[i] == 0.0); // every element is written
        // step over the line that ended the block
        CArchive ar(&file, CArchive::load);
        CString strLine;
        if (!ar.ReadString(strLine))
            break;
    }
    return 0;
}
