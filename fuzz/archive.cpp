// Reads arbitrary bytes as an archive of objects: every outcome but a thrown platform
// exception or a clean load is a finding.
#include "femmat.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    CMemFile file(data, (UINT)size);
    try {
        CArchive ar(&file, CArchive::load);
        CObject *pObject = ar.ReadObject(NULL);
        delete pObject;
    } catch (CException &) {
    }
    return 0;
}
