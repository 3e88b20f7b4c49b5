// Where the cells of the sparse matrices live. Each matrix owns a pool of slabs and takes
// its cells from there, fill-in included, instead of one allocation per cell: a cell costs
// its 24 bytes and nothing more, and the cells made together lie together.
//
// A cell still goes with a plain delete, wherever it came from: cell's own operator delete
// finds the slab by the cell's address (slabs are aligned to their size) and the slab
// names its pool. Which pool a new cell comes from is the matrix operation running on this
// thread (CellScope); a cell made outside any operation, by a host's own new, comes from a
// shared pool. A slab is returned when its owner is gone and none of its cells is alive,
// so a cell that a caller has unlinked outlives its matrix, as the interface promises.
// Not part of the public interface.
#pragma once

#include <cstddef>
#include <vector>

class CSparseMatrix;

namespace sparse_detail {

class CellPool {
public:
    CellPool() = default;
    CellPool(const CellPool &) = delete;
    CellPool &operator=(const CellPool &) = delete;

    // Room for one cell, from the pool of the operation running on this thread.
    static void *AllocateCurrent();
    // Room for one cell from this pool; for the hot paths that know their matrix.
    void *Allocate();
    static void Free(void *p);
    // The owner is gone: slabs without a live cell go now, the others with their last cell.
    void Release();
    // Counts the cells of this pool freed so far, and (for every pool at once, since a
    // cell may live anywhere) the unlinks of cell::Remove, row::Remove and row::Allocate:
    // an index of cells that sees both counts unchanged may trust its pointers.
    size_t Frees() const { return m_nFrees; }
    static size_t Unlinks();
    static void NoteUnlink();

private:
    friend class CellScope;
    struct Slab;
    void NextSlab();
    void FreeHere(Slab *pSlab, void *p);

    struct FreeCell {
        FreeCell *pNext;
    };
    FreeCell *m_pFree = nullptr;
    char *m_pBump = nullptr, *m_pEnd = nullptr;
    std::vector<Slab *> m_slabs; // in the order made; bump allocation walks them in turn
    size_t m_nBumpSlab = 0;      // the slab after the one being bumped through
    size_t m_nLive = 0;
    size_t m_nFrees = 0;
    size_t m_nSlabsLeft = 0; // after Release: slabs still holding live cells
    bool m_bOwned = true;
    bool m_bShared = false;
};

// While it lives, cells made on this thread come from the matrix's pool (made on first use).
class CellScope {
public:
    explicit CellScope(CellPool *&rpPool);
    ~CellScope();
    CellScope(const CellScope &) = delete;
    CellScope &operator=(const CellScope &) = delete;

private:
    CellPool *m_pOld;
};

} // namespace sparse_detail
