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
    UpLooking(row *pTable, int n)
        : m_pTable(pTable), m_n(n), m_pD(n), m_pStart(n + 1, 0), m_pEnd(n, 0), m_pPos(n),
          m_pBucket(n, -1), m_pNextInBucket(n, -1), m_pWork(n), m_pMark(n, -1) {
        // The factor holds at least the pattern; fill-in mostly doubles it or more.
        size_t nCells = 0;
        for (int r = 0; r < n; r++)
            for (cell *c = pTable[r].m_pFirstCell; c != NULL; c = c->m_pNext)
                nCells++;
        m_col.reserve(4 * nCells);
        m_val.reserve(4 * nCells);
    }

    int Factorise() {
        for (int j = 0; j < m_n; j++) {
            Gather(j);
            cell *pPivot = m_pTable[j].m_pFirstCell;
            if (pPivot == NULL || pPivot->m_dValue <= 0.0) {
                // As the merging form leaves it: the later rows hold every update of the
                // rows finished so far, and nothing more.
                for (int t = j + 1; t < m_n; t++)
                    if (m_pBucket[t] >= 0)
                        Gather(t);
                return -1;
            }
            Finish(j, pPivot);
        }
        return 1;
    }

private:
    // Row j receives, in ascending i, the chains of the finished rows waiting on column j.
    void Gather(int j) {
        row &R = m_pTable[j];
        for (cell *c = R.m_pFirstCell; c != NULL; c = c->m_pNext) {
            m_pWork[c->m_nCol] = c->m_dValue;
            m_pMark[c->m_nCol] = j;
        }
        m_rows.clear();
        for (int i = m_pBucket[j]; i >= 0; i = m_pNextInBucket[i])
            m_rows.push_back(i);
        m_pBucket[j] = -1;
        std::sort(m_rows.begin(), m_rows.end());

        m_new.clear();
        // Plain pointers for the hot loop: the stores into the work row cannot alias them.
        double *pWork = m_pWork.data();
        int *pMark = m_pMark.data();
        const int *pCol = m_col.data();
        const double *pVal = m_val.data();
        for (int i : m_rows) {
            int p = m_pPos[i];
            const int nEnd = m_pEnd[i];
            double a = pVal[p];
            if (a != 0.0) {
                double dFactor = -a / m_pD[i];
                for (int q = p; q < nEnd; q++) {
                    int k = pCol[q];
                    double x = dFactor * pVal[q];
                    if (pMark[k] == j) {
                        pWork[k] += x;
                    } else {
                        // A new cell takes its first update as it stands.
                        pMark[k] = j;
                        pWork[k] = x;
                        m_new.push_back(k);
                    }
                }
            }
            // Row i now waits on its next column, if any.
            m_pPos[i] = ++p;
            if (p < nEnd)
                Wait(i, pCol[p]);
        }

        // New cells into their sorted places, then every value back from the work row.
        std::sort(m_new.begin(), m_new.end());
        cell **ppLink = &R.m_pFirstCell;
        for (int k : m_new) {
            while (*ppLink != NULL && (*ppLink)->m_nCol < k)
                ppLink = &(*ppLink)->m_pNext;
            *ppLink = sparse_detail::NewCell(*ppLink, 0.0, k);
            ppLink = &(*ppLink)->m_pNext;
        }
        for (cell *c = R.m_pFirstCell; c != NULL; c = c->m_pNext)
            c->m_dValue = m_pWork[c->m_nCol];
    }

    // Row j is complete: its unscaled values go to the flat arrays for the later rows,
    // its cells behind the pivot are scaled, and it waits on its first column.
    void Finish(int j, cell *pPivot) {
        double d = pPivot->m_dValue;
        m_pD[j] = d;
        m_pStart[j] = (int)m_col.size();
        for (cell *a = pPivot->m_pNext; a != NULL; a = a->m_pNext) {
            m_col.push_back(a->m_nCol);
            m_val.push_back(a->m_dValue);
            if (a->m_dValue != 0.0)
                a->m_dValue /= d;
        }
        m_pEnd[j] = (int)m_col.size();
        m_pPos[j] = m_pStart[j];
        if (m_pStart[j] < m_pEnd[j])
            Wait(j, m_col[m_pStart[j]]);
    }

    void Wait(int i, int nCol) {
        m_pNextInBucket[i] = m_pBucket[nCol];
        m_pBucket[nCol] = i;
    }

    row *m_pTable;
    int m_n;
    std::vector<double> m_pD;          // pivot of each finished row
    std::vector<int> m_pStart, m_pEnd; // its cells behind the pivot in m_col / m_val
    std::vector<int> m_pPos;           // its next chain still owed to a later row
    std::vector<int> m_pBucket;        // per column: the rows owing it a chain
    std::vector<int> m_pNextInBucket;
    std::vector<int> m_col;    // columns of the finished rows behind their pivots
    std::vector<double> m_val; // their values before scaling
    std::vector<double> m_pWork;
    std::vector<int> m_pMark; // the row whose work entry this is
    std::vector<int> m_rows, m_new;
};

} // namespace

// Root-free A = U^T D U in place: the first cell of each row ends as the pivot, the others
// as the unit upper factor; fill-in is linked into the target rows.
int CSystSpMat::Cholesky() {
    sparse_detail::CellScope cells(m_pCellPool);
    if (!IsUpperTable(m_pRowTable, m_nTableRows))
        return CholeskyByRowMerges(m_pRowTable, m_nTableRows);
    UpLooking factor(m_pRowTable, m_nTableRows);
    return factor.Factorise();
}
