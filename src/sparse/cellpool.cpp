// The slabs of the cell pools, and cell's own operator new and delete.
#include "sparse/cellpool.h"

#include "sparse/sparsematrix.h"

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <mutex>
#include <new>

namespace sparse_detail {

namespace {

// A slab is aligned to its size, so the slab of a cell is its address with the low bits
// cleared. 256 KiB hold 10,922 cells behind the header.
constexpr size_t kSlabBytes = 256 * 1024;
constexpr size_t kCell = sizeof(CSparseMatrix::cell);

thread_local CellPool *t_pCurrent = nullptr;

// The shared pool serves cells made outside a matrix operation, from any thread.
std::mutex s_sharedMutex;
CellPool *SharedPool();

} // namespace

struct CellPool::Slab {
    CellPool *pPool;
    size_t nLive;
    char *Begin() { return reinterpret_cast<char *>(this) + kCell; }
    char *End() { return Begin() + (kSlabBytes / kCell - 1) * kCell; }
    static Slab *Of(void *p) {
        return reinterpret_cast<Slab *>(reinterpret_cast<uintptr_t>(p) & ~(kSlabBytes - 1));
    }
};
static_assert(sizeof(CSparseMatrix::cell) >= 16, "the slab header fits in one cell's room");

namespace {
CellPool *SharedPool() {
    static CellPool *s_pShared = [] {
        CellPool *p = new CellPool;
        return p;
    }();
    return s_pShared;
}
} // namespace

void CellPool::NextSlab() {
    Slab *pSlab;
    if (m_nBumpSlab < m_slabs.size()) {
        pSlab = m_slabs[m_nBumpSlab];
    } else {
        pSlab = static_cast<Slab *>(std::aligned_alloc(kSlabBytes, kSlabBytes));
        if (pSlab == nullptr)
            throw std::bad_alloc();
        pSlab->pPool = this;
        pSlab->nLive = 0;
        m_slabs.push_back(pSlab);
    }
    m_nBumpSlab++;
    m_pBump = pSlab->Begin();
    m_pEnd = pSlab->End();
}

void *CellPool::Allocate() {
    void *p;
    if (m_pFree != nullptr) {
        p = m_pFree;
        m_pFree = m_pFree->pNext;
    } else {
        if (m_pBump == m_pEnd)
            NextSlab();
        p = m_pBump;
        m_pBump += kCell;
    }
    Slab::Of(p)->nLive++;
    m_nLive++;
    return p;
}

void CellPool::FreeHere(Slab *pSlab, void *p) {
    m_nFrees++;
    pSlab->nLive--;
    if (!m_bOwned) {
        if (pSlab->nLive == 0) {
            std::free(pSlab);
            if (--m_nSlabsLeft == 0)
                delete this;
        }
        return;
    }
    if (--m_nLive == 0) {
        // All cells gone: the slabs are bumped through again from the first, so that the
        // next pattern lies in order instead of along the free list.
        m_pFree = nullptr;
        m_nBumpSlab = 0;
        m_pBump = m_pEnd = nullptr;
        return;
    }
    FreeCell *pCell = static_cast<FreeCell *>(p);
    pCell->pNext = m_pFree;
    m_pFree = pCell;
}

void *CellPool::AllocateCurrent() {
    if (t_pCurrent != nullptr)
        return t_pCurrent->Allocate();
    std::lock_guard<std::mutex> lock(s_sharedMutex);
    CellPool *pShared = SharedPool();
    pShared->m_bShared = true;
    return pShared->Allocate();
}

void CellPool::Free(void *p) {
    Slab *pSlab = Slab::Of(p);
    CellPool *pPool = pSlab->pPool;
    if (pPool->m_bShared) {
        std::lock_guard<std::mutex> lock(s_sharedMutex);
        pPool->FreeHere(pSlab, p);
    } else {
        pPool->FreeHere(pSlab, p);
    }
}

namespace {
std::atomic<size_t> s_nUnlinks{0};
}

size_t CellPool::Unlinks() {
    return s_nUnlinks.load(std::memory_order_relaxed);
}

void CellPool::NoteUnlink() {
    s_nUnlinks.fetch_add(1, std::memory_order_relaxed);
}

void CellPool::Release() {
    m_bOwned = false;
    m_nSlabsLeft = 0;
    for (Slab *pSlab : m_slabs) {
        if (pSlab->nLive == 0)
            std::free(pSlab);
        else
            m_nSlabsLeft++;
    }
    m_slabs.clear();
    if (m_nSlabsLeft == 0)
        delete this;
}

CellScope::CellScope(CellPool *&rpPool) : m_pOld(t_pCurrent) {
    if (rpPool == nullptr)
        rpPool = new CellPool;
    t_pCurrent = rpPool;
}

CellScope::~CellScope() {
    t_pCurrent = m_pOld;
}

} // namespace sparse_detail

void *CSparseMatrix::cell::operator new(size_t nSize) {
    if (nSize != sizeof(cell))
        return ::operator new(nSize);
    return sparse_detail::CellPool::AllocateCurrent();
}

void CSparseMatrix::cell::operator delete(void *p, size_t nSize) {
    if (p == nullptr)
        return;
    if (nSize != sizeof(cell)) {
        ::operator delete(p);
        return;
    }
    sparse_detail::CellPool::Free(p);
}
