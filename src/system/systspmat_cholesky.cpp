// CSystSpMat::Cholesky: root-free A = U^T D U in place through the row table.
//
// The factor is defined by the row-merging form: row i, at its turn, merges each of its
// chains (from a cell a behind the pivot to the end of the row, unscaled, times -a / d)
// into row a.m_nCol, then scales a. Each entry (j, k) therefore receives its updates from
// the rows i < j in ascending order, and a position gets a cell when its first update
// arrives. This file computes the same factor row by row instead ("up-looking"): row j
// gathers, in ascending i, the chains that the finished rows owe it into a dense work row,
// and only then is it written back into its cells, new cells linked in where they fall.
// Every entry sees the same operations in the same order, so the values are bit for bit
// those of the merging form, and the cells are the same; but no row list is walked per
// update. The finished rows' unscaled values, which later rows read, live meanwhile in
// flat arrays.
#include "sparse/sparse_internal.h"
#include "system/systspmat.h"

#include <algorithm>
#include <memory>
#include <new>
#include <vector>

namespace {

typedef CSparseMatrix::cell cell;
typedef CSparseMatrix::row row;

// The merging form itself, for rows the up-looking form cannot take (see IsUpperTable).
int CholeskyByRowMerges(row *pTable, int n) {
    for (int i = 0; i < n; i++) {
        cell *c = pTable[i].m_pFirstCell;
        if (c == NULL)
            return -1;
        double d = c->m_dValue;
        if (d <= 0.0)
            return -1;
        for (cell *a = c->m_pNext; a != NULL; a = a->m_pNext) {
            double f = -a->m_dValue;
            if (f == 0.0)
                continue;
            // The chain from a is still unscaled here; a is scaled only afterwards.
            pTable[a->m_nCol].AddRow(a, f / d);
            a->m_dValue /= d;
        }
    }
    return 1;
}

// True when every cell of row r has a column from r to n-1. Then every chain goes to a
// later row, and so does all fill-in, which is what the up-looking form needs.
bool IsUpperTable(row *pTable, int n) {
    for (int r = 0; r < n; r++)
        for (cell *c = pTable[r].m_pFirstCell; c != NULL; c = c->m_pNext)
            if (c->m_nCol < r || c->m_nCol >= n)
                return false;
    return true;
}

class UpLooking {
public:
    UpLooking(row *pTable, int n, sparse_detail::CellPool *pPool)
        : m_pPool(pPool), m_pTable(pTable), m_n(n), m_pD(n), m_pColOf(n), m_pValOf(n), m_pPos(n),
          m_pEnd(n), m_pBucket(n, -1), m_pNextInBucket(n, -1), m_pWork(n, 0.0), m_pMark(n, -1),
          m_nBlock(std::max(n, 1 << 18)) {}

    int Factorise() {
        for (int j = 0; j < m_n; j++) {
            Gather(j);
            // The pivot is the first cell the row will have, old or new.
            cell *pFirst = m_pTable[j].m_pFirstCell;
            int nFirst = pFirst != NULL ? pFirst->m_nCol : m_n;
            if (!m_new.empty() && m_new[0] < nFirst)
                nFirst = m_new[0];
            if (nFirst == m_n || m_pWork[nFirst] <= 0.0) {
                // As the merging form leaves it: the later rows hold every update of the
                // rows finished so far, and nothing more.
                Store(j, false);
                // Rows from j on stay unfinished, so no later row's columns are known.
                m_bPassedOver = true;
                for (int t = j + 1; t < m_n; t++)
                    if (m_pBucket[t] >= 0) {
                        Gather(t);
                        Store(t, false);
                    }
                return -1;
            }
            Store(j, true);
        }
        return 1;
    }

private:
    // Row j receives, in ascending i, the chains of the finished rows waiting on column j;
    // m_new lists, sorted, the columns that had no cell.
    //
    // A position without a cell takes its first update as it stands. Where the columns
    // of row j are known before the sums, they start at -0.0 instead, which adds as
    // nothing to any value, sign of zero included; then the sums run without a test. They
    // are known while no chain has been passed over for a zero multiplier: then the
    // chains of the rows whose first column is j (the children of j in the elimination
    // tree) hold every column that any chain brings, since each later chain of a row
    // went into its first column's row before.
    void Gather(int j) {
        double *pWork = m_pWork.data();
        int *pMark = m_pMark.data();
        for (cell *c = m_pTable[j].m_pFirstCell; c != NULL; c = c->m_pNext) {
            pWork[c->m_nCol] = c->m_dValue;
            pMark[c->m_nCol] = j;
        }
        m_rows.clear();
        for (int i = m_pBucket[j]; i >= 0; i = m_pNextInBucket[i]) {
            m_rows.push_back(i);
            if (m_pValOf[i][m_pPos[i]] == 0.0)
                m_bPassedOver = true;
        }
        m_pBucket[j] = -1;
        std::sort(m_rows.begin(), m_rows.end());
        m_new.clear();

        // 1. The columns, from the children's chains, while the rule above holds.
        const bool bKnown = !m_bPassedOver;
        if (bKnown) {
            for (int i : m_rows) {
                if (m_pPos[i] != 0)
                    continue;
                const int *pCol = m_pColOf[i];
                for (int q = 0; q < m_pEnd[i]; q++) {
                    const int nCol = pCol[q];
                    if (pMark[nCol] != j) {
                        pMark[nCol] = j;
                        pWork[nCol] = -0.0;
                        m_new.push_back(nCol);
                    }
                }
            }
        }

        // 2. The sums, chain by chain.
        const size_t nRows = m_rows.size();
        for (size_t r = 0; r < nRows; r++) {
            const int i = m_rows[r];
            // The next chain is elsewhere in memory: ask for it while this one runs.
            if (r + 1 < nRows) {
                const int iNext = m_rows[r + 1];
                __builtin_prefetch(m_pValOf[iNext] + m_pPos[iNext]);
                __builtin_prefetch(m_pColOf[iNext] + m_pPos[iNext]);
            }
            const int *pCol = m_pColOf[i];
            const double *pVal = m_pValOf[i];
            int p = m_pPos[i];
            const int nEnd = m_pEnd[i];
            double a = pVal[p];
            if (a != 0.0) {
                double dFactor = -a / m_pD[i];
                if (bKnown) {
                    for (int q = p; q < nEnd; q++)
                        pWork[pCol[q]] += dFactor * pVal[q];
                } else {
                    for (int q = p; q < nEnd; q++) {
                        const int nCol = pCol[q];
                        double x = dFactor * pVal[q];
                        if (pMark[nCol] == j) {
                            pWork[nCol] += x;
                        } else {
                            pMark[nCol] = j;
                            pWork[nCol] = x;
                            m_new.push_back(nCol);
                        }
                    }
                }
            }
            // Row i now waits on its next column, if any.
            m_pPos[i] = ++p;
            if (p < nEnd)
                Wait(i, pCol[p]);
        }
        std::sort(m_new.begin(), m_new.end());
    }

    // One walk along row j: new cells linked into their sorted places, every value back
    // from the work row. With bFinish the row is complete: its unscaled values behind the
    // pivot go to the flat arrays for the later rows, its cells there are scaled, and it
    // waits on its first column.
    void Store(int j, bool bFinish) {
        const double *pWork = m_pWork.data();
        cell **ppLink = &m_pTable[j].m_pFirstCell;
        auto kNew = m_new.begin();
        double d = 0.0;
        int *pCol = NULL;
        double *pVal = NULL;
        int nCount = 0;
        if (bFinish) {
            // Room for the longest row the cells can make.
            if (m_nUsed + m_n > m_nBlock || m_colBlocks.empty()) {
                m_colBlocks.emplace_back(new int[m_nBlock]);
                m_valBlocks.emplace_back(new double[m_nBlock]);
                m_nUsed = 0;
            }
            pCol = m_colBlocks.back().get() + m_nUsed;
            pVal = m_valBlocks.back().get() + m_nUsed;
        }
        for (bool bPivot = true;; bPivot = false) {
            cell *c = *ppLink;
            if (kNew != m_new.end() && (c == NULL || *kNew < c->m_nCol))
                c = *ppLink = NewCell(c, *kNew++);
            else if (c == NULL)
                break;
            double v = pWork[c->m_nCol];
            c->m_dValue = v;
            ppLink = &c->m_pNext;
            if (!bFinish)
                continue;
            if (bPivot) {
                d = v;
                continue;
            }
            pCol[nCount] = c->m_nCol;
            pVal[nCount++] = v;
            if (v != 0.0)
                c->m_dValue = v / d;
        }
        if (!bFinish)
            return;
        m_pD[j] = d;
        m_pColOf[j] = pCol;
        m_pValOf[j] = pVal;
        m_pPos[j] = 0;
        m_pEnd[j] = nCount;
        m_nUsed += nCount;
        if (nCount > 0)
            Wait(j, pCol[0]);
    }

    // A cell from the matrix's pool directly: the same cell a new would give, without
    // asking which operation runs.
    cell *NewCell(cell *pNext, int nCol) {
        cell *c = ::new (m_pPool->Allocate()) cell;
        c->m_pNext = pNext;
        c->m_dValue = 0.0;
        c->m_nCol = nCol;
        return c;
    }

    void Wait(int i, int nCol) {
        m_pNextInBucket[i] = m_pBucket[nCol];
        m_pBucket[nCol] = i;
    }

    sparse_detail::CellPool *m_pPool;
    row *m_pTable;
    int m_n;
    std::vector<double> m_pD; // pivot of each finished row
    // Its cells behind the pivot: columns and values before scaling, m_pEnd of them.
    std::vector<const int *> m_pColOf;
    std::vector<const double *> m_pValOf;
    std::vector<int> m_pPos, m_pEnd; // its next chain still owed to a later row
    std::vector<int> m_pBucket;      // per column: the rows owing it a chain
    std::vector<int> m_pNextInBucket;
    std::vector<double> m_pWork; // the work row
    std::vector<int> m_pMark;    // the row each work entry belongs to
    bool m_bPassedOver = false;  // a chain was passed over, or a row left unfinished
    // The rows' columns and values in blocks, so that growing never copies.
    std::vector<std::unique_ptr<int[]>> m_colBlocks;
    std::vector<std::unique_ptr<double[]>> m_valBlocks;
    int m_nBlock;
    int m_nUsed = 0;
    std::vector<int> m_rows, m_new;
};

} // namespace

// Root-free A = U^T D U in place: the first cell of each row ends as the pivot, the others
// as the unit upper factor; fill-in is linked into the target rows.
int CSystSpMat::Cholesky() {
    sparse_detail::CellScope cells(m_pCellPool);
    if (!IsUpperTable(m_pRowTable, m_nTableRows))
        return CholeskyByRowMerges(m_pRowTable, m_nTableRows);
    UpLooking factor(m_pRowTable, m_nTableRows, m_pCellPool);
    return factor.Factorise();
}
