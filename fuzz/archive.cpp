// Loads objects of every serial class from arbitrary bytes. The first byte picks the way in:
//   0  object records, read with no expected class until the bytes end or one throws
//   1  a class name (length byte, then the name), then one record read expecting that class
//   2  a class name, a size byte, then a stream that the class's Serialize loads into an
//      existing object of that size
// Findings: anything but a clean load or a thrown platform exception; a loaded object that
// does not store and load back to the same bytes; more memory asked for while loading than
// 32 times the input plus 64 KiB.
//
// FEMMAT_WRITE_SEEDS=<dir> makes the program write its seed corpus (small valid inputs of
// each way for every registered class) into that directory and exit.
#include "femmat.h"

#include <sanitizer/allocator_interface.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <unordered_set>
#include <vector>

namespace {

// Bytes asked for from the allocator while s_bCounting is set.
bool s_bCounting = false;
size_t s_nAllocated = 0;
void OnMalloc(const volatile void *, size_t nBytes) {
    if (s_bCounting)
        s_nAllocated += nBytes;
}
void OnFree(const volatile void *) {}

[[noreturn]] void Finding(const char *pszWhat) {
    fprintf(stderr, "finding: %s\n", pszWhat);
    abort();
}

// Deletes the objects and everything their containers hold, each object once: the entries
// of an object container are the loader's to delete, may be shared, and may be the
// container itself.
void DeleteGraph(std::vector<CObject *> pending) {
    std::unordered_set<CObject *> seen;
    while (!pending.empty()) {
        CObject *pOb = pending.back();
        pending.pop_back();
        if (pOb == NULL || !seen.insert(pOb).second)
            continue;
        if (CObjVect *pVect = dynamic_cast<CObjVect *>(pOb))
            for (int i = 0; i < pVect->m_nSize; i++)
                pending.push_back(pVect->m_ppObjects[i]);
        if (CObjMat *pMat = dynamic_cast<CObjMat *>(pOb))
            for (int k = 0; pMat->m_ppObjects && k < pMat->m_nRows * pMat->m_nColumns; k++)
                pending.push_back(pMat->m_ppObjects[k]);
    }
    for (CObject *pOb : seen)
        delete pOb;
}

std::vector<BYTE> Stored(CObject *pOb) {
    CMemFile file;
    {
        CArchive ar(&file, CArchive::store);
        pOb->Serialize(ar);
    }
    return file.GetData();
}

// A valid object stores a stream that a fresh object of its class loads and stores again
// unchanged.
void CheckRoundTrip(CObject *pOb) {
    std::vector<BYTE> bytes = Stored(pOb);
    CObject *pFresh = pOb->GetRuntimeClass()->CreateObject();
    try {
        CMemFile file(bytes.data(), (UINT)bytes.size());
        CArchive ar(&file, CArchive::load);
        pFresh->Serialize(ar);
    } catch (CException &) {
        Finding("a stored stream does not load");
    }
    if (Stored(pFresh) != bytes)
        Finding("a loaded object stores other bytes");
    DeleteGraph({pFresh});
}

// An object of the class shaped by nSize through the frame's sizing, as a host leaves it.
CObject *MakeShaped(const CRuntimeClass *pClass, int nSize) {
    CObject *pOb = pClass->CreateObject();
    if (CVirtMat *pMat = dynamic_cast<CVirtMat *>(pOb)) {
        int sizes[] = {nSize, nSize};
        pMat->Allocate(sizes, 1);
        if (CVirtRealMat *pReal = dynamic_cast<CVirtRealMat *>(pMat))
            *pReal = 1.5;
    }
    return pOb;
}

// The class named at data[pos]: a length byte, then the name.
const CRuntimeClass *ReadName(const uint8_t *data, size_t size, size_t &pos) {
    if (pos >= size)
        return NULL;
    size_t nLen = data[pos++];
    if (nLen > size - pos)
        return NULL;
    std::string name((const char *)data + pos, nLen);
    pos += nLen;
    const CRuntimeClass *pClass = CRuntimeClass::FromName(name.c_str());
    return pClass != NULL && pClass->m_pfnCreateObject != NULL ? pClass : NULL;
}

void LoadRecords(CArchive &ar, const CRuntimeClass *pExpected, int nMax) {
    CObject *loaded[64];
    int n = 0;
    try {
        while (n < nMax && ar.GetBytesLeft() > 0) {
            CObject *pOb = ar.ReadObject(pExpected);
            bool bSeen = pOb == NULL;
            for (int i = 0; i < n && !bSeen; i++)
                bSeen = loaded[i] == pOb;
            if (!bSeen)
                loaded[n++] = pOb;
        }
    } catch (CException &) {
    }
    s_bCounting = false;
    for (int i = 0; i < n; i++)
        CheckRoundTrip(loaded[i]);
    DeleteGraph(std::vector<CObject *>(loaded, loaded + n));
}

void WriteSeed(const std::string &dir, const std::string &name, const std::vector<BYTE> &bytes) {
    FILE *f = fopen((dir + "/" + name).c_str(), "wb");
    if (f == NULL || fwrite(bytes.data(), 1, bytes.size(), f) != bytes.size())
        Finding("cannot write a seed");
    fclose(f);
}

// Per class: its records (twice, so the second is a back reference, then null), one record
// with the name in front, and its bare stream into an object of another size.
void WriteSeeds(const char *pszDir) {
    for (CRuntimeClass *p = CRuntimeClass::GetFirstClass(); p != NULL; p = p->m_pNextClass) {
        if (p->m_pfnCreateObject == NULL)
            continue;
        CObject *pOb = MakeShaped(p, 2);
        std::string name = p->m_lpszClassName;
        std::vector<BYTE> prefix(1, (BYTE)name.size());
        prefix.insert(prefix.end(), name.begin(), name.end());

        CMemFile records;
        {
            CArchive ar(&records, CArchive::store);
            ar << pOb << pOb << (CObject *)NULL;
        }
        std::vector<BYTE> seed(1, 0);
        seed.insert(seed.end(), records.GetData().begin(), records.GetData().end());
        WriteSeed(pszDir, name + "-records", seed);

        seed.assign(1, 1);
        seed.insert(seed.end(), prefix.begin(), prefix.end());
        seed.insert(seed.end(), records.GetData().begin(), records.GetData().end() - 4);
        WriteSeed(pszDir, name + "-expected", seed);

        std::vector<BYTE> stream = Stored(pOb);
        seed.assign(1, 2);
        seed.insert(seed.end(), prefix.begin(), prefix.end());
        seed.push_back(3);
        seed.insert(seed.end(), stream.begin(), stream.end());
        WriteSeed(pszDir, name + "-serialize", seed);
        delete pOb;
    }
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    if (const char *pszDir = getenv("FEMMAT_WRITE_SEEDS")) {
        WriteSeeds(pszDir);
        exit(0);
    }
    __sanitizer_install_malloc_and_free_hooks(OnMalloc, OnFree);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size == 0)
        return 0;
    size_t pos = 1;
    const int nWay = data[0] % 3;
    const CRuntimeClass *pClass = nWay == 0 ? NULL : ReadName(data, size, pos);
    if (nWay != 0 && pClass == NULL)
        return 0;
    CObject *pTarget = NULL;
    if (nWay == 2) {
        if (pos >= size)
            return 0;
        pTarget = MakeShaped(pClass, data[pos++] % 8);
    }

    CMemFile file(data + pos, (UINT)(size - pos));
    CArchive ar(&file, CArchive::load);
    s_nAllocated = 0;
    s_bCounting = true;
    if (nWay == 2) {
        try {
            pTarget->Serialize(ar);
        } catch (CException &) {
        }
        s_bCounting = false;
        CheckRoundTrip(pTarget);
        // Sizing anew and deleting reach whatever the load left.
        if (CVirtMat *pMat = dynamic_cast<CVirtMat *>(pTarget)) {
            int sizes[] = {2, 2};
            pMat->Allocate(sizes, 1);
        }
        DeleteGraph({pTarget});
    } else {
        LoadRecords(ar, pClass, nWay == 0 ? 64 : 1);
    }
    s_bCounting = false;
    if (s_nAllocated > 32 * size + 65536)
        Finding("a load asked for more memory than its input justifies");
    return 0;
}
