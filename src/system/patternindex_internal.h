// The assembly index of a system matrix: for each row, where the cells of the pattern that
// Allocate(graph) laid out begin and how many there are. A fresh pattern comes from the
// pool row after row, so each row's cells lie side by side in memory, sorted; AddValues
// finds an element's cells there instead of walking the fill-in that factorisation links
// between them, which keeps the next assembly into the kept pattern as cheap as the first.
//
// The rows' lists stay the truth; the index only points into them. It trusts its pointers
// while no cell of the matrix's pool has been freed and nothing has been unlinked anywhere
// (the two counts of CellPool). The prescribed-value operations, which free cells
// themselves, mark the rows they change and then take the new counts. A cell whose column
// was rewritten is caught when it is used; a list relinked by hand, without Remove or
// delete, is not seen. Not part of the public interface.
#pragma once

#include "sparse/cellpool.h"
#include "sparse/sparsematrix.h"

#include <cstdint>
#include <vector>

namespace sparse_detail {

class PatternIndex {
public:
    typedef CSparseMatrix::cell cell;

    // Each row whose cells lie side by side in memory, as a fresh pattern from the pool
    // does; other rows are walked.
    PatternIndex(CSparseMatrix::row *pTable, int n, const CellPool &pool) : m_runs(n) {
        for (int r = 0; r < n; r++) {
            cell *pFirst = pTable[r].m_pFirstCell;
            LONG nCount = 0;
            for (cell *c = pFirst; c != NULL; c = c->m_pNext, nCount++)
                if (c != At(pFirst, nCount))
                    break;
            bool bRun = pFirst != NULL && At(pFirst, nCount - 1)->m_pNext == NULL;
            m_runs[r] = bRun ? Run{pFirst, nCount} : Run{NULL, 0};
        }
        Resync(pool);
    }

    // True while nothing the index points to can have gone.
    bool IsCurrent(const CellPool *pPool) const {
        return pPool != NULL && pPool->Frees() == m_nFrees && CellPool::Unlinks() == m_nUnlinks;
    }
    // After an operation that dropped every row it changed: the counts as they are now.
    void Resync(const CellPool &pool) {
        m_nFrees = pool.Frees();
        m_nUnlinks = CellPool::Unlinks();
    }
    void DropRow(int r) { m_runs[r] = Run{NULL, 0}; }

    // The cell of column nCol in row r, searched from the k-th cell of its run (k moves up
    // to it); NULL when the index cannot say, and the list must be walked. Columns asked
    // for in ascending order make one pass over the run.
    cell *Find(int r, int nCol, LONG &k) const {
        const Run &run = m_runs[r];
        while (k < run.nCount && At(run.pFirst, k)->m_nCol < nCol)
            k++;
        if (k < run.nCount && At(run.pFirst, k)->m_nCol == nCol)
            return At(run.pFirst, k);
        return NULL;
    }

    // Asks for row r's cells ahead of their use, so that an element's rows load together.
    void Prefetch(int r) const {
        const Run &run = m_runs[r];
        if (run.nCount > 0) {
            __builtin_prefetch(run.pFirst);
            __builtin_prefetch(At(run.pFirst, run.nCount - 1));
        }
    }

    size_t Bytes() const { return m_runs.size() * sizeof(Run); }

private:
    // The k-th cell of a run: cells lie in their slab's bytes one after the other.
    static cell *At(cell *pFirst, LONG k) {
        return reinterpret_cast<cell *>(reinterpret_cast<uintptr_t>(pFirst) + k * sizeof(cell));
    }

    struct Run {
        cell *pFirst; // NULL: the row is walked
        LONG nCount;
    };
    std::vector<Run> m_runs;
    size_t m_nFrees = 0, m_nUnlinks = 0;
};

} // namespace sparse_detail
