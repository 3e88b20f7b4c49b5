// CSparseMatrix cursor insertion: where each Add lands and leaves its cursors, element
// assembly and summing assignment.
#include "sparse_test_util.h"

#include <map>

TEST(SparseCursor, OnlyThePlainAddDropsZeros) {
    CSparseMatrix A;
    A.Add(1, 2, 0.0);
    EXPECT_EQ(A.GetFirstRow(), nullptr);
    CSparseMatrix::row *pRow = NULL;
    A.Add(1, 2, 0.0, pRow);
    EXPECT_EQ(Dump(A), "1:2=0");
    EXPECT_EQ(pRow, A.GetFirstRow());
    CSparseMatrix::cell *pCell = NULL;
    A.Add(1, 2, 0.0, pCell);
    A.Add(1, 3, 0.0, pRow, pCell);
    EXPECT_EQ(Dump(A), "1:2=0,3=0");
    EXPECT_EQ(pCell->m_nCol, 3);
}

TEST(SparseCursor, CellCursorLandsOnTheCellWritten) {
    CSparseMatrix A;
    Put(A, {{0, 1, 1.0}, {0, 5, 5.0}});
    CSparseMatrix::row *r = A.GetFirstRow();
    CSparseMatrix::cell *pCell = r->GetCell(5);
    r->Add(3, 3.0, pCell); // cursor past the target: falls back to the head
    EXPECT_EQ(pCell, r->GetCell(3));
    r->Add(0, 0.5, pCell); // in front of the head
    EXPECT_EQ(pCell, r->m_pFirstCell);
    r->Add(5, 1.0, pCell); // existing cell further on
    EXPECT_EQ(pCell, r->GetCell(5));
    r->Add(8, 8.0, pCell); // end of the list
    EXPECT_EQ(pCell->m_nCol, 8);
    EXPECT_EQ(pCell->m_pNext, nullptr);
    EXPECT_EQ(Dump(A), "0:0=0.5,1=1,3=3,5=6,8=8");
}

TEST(SparseCursor, RowCursorLandsOnTheRowWritten) {
    CSparseMatrix A;
    Put(A, {{1, 0, 1.0}, {4, 0, 4.0}});
    CSparseMatrix::row *pRow = A.GetFirstRow()->m_pNext;
    A.Add(2, 0, 2.0, pRow); // from row 4 back to the head, linked in sorted place
    EXPECT_EQ(pRow->m_nRow, 2);
    EXPECT_EQ(A.GetFirstRow()->m_pNext, pRow);
    A.Add(0, 0, 0.5, pRow); // below all rows: the new head
    EXPECT_EQ(A.GetFirstRow(), pRow);
    A.Add(9, 1, 9.0, pRow); // past all rows: appended
    EXPECT_EQ(pRow->m_nRow, 9);
    EXPECT_EQ(pRow->m_pNext, nullptr);
    A.Add(4, 0, 1.0, pRow); // existing row behind the cursor
    EXPECT_EQ(pRow->m_nRow, 4);
    CSparseMatrix::cell *pCell = NULL;
    A.Add(3, 2, 3.0, pCell); // no row cursor: from the head, made in place
    EXPECT_EQ(Dump(A), "0:0=0.5;1:0=1;2:0=2;3:2=3;4:0=5;9:1=9");
}

// Random writes through every form with cursors kept between calls (reset to NULL on a
// change of row, as callers must): the lists always equal a plain map of sums.
TEST(SparseCursor, RandomWritesWithStaleCursorsMatchAModel) {
    std::mt19937 gen(7);
    CSparseMatrix A;
    std::map<std::pair<int, int>, double> model;
    CSparseMatrix::row *pRow = NULL;
    CSparseMatrix::cell *pCell = NULL;
    int nLastRow = -1;
    for (int k = 0; k < 4000; k++) {
        int r = gen() % 25, c = gen() % 25;
        double v = (double)(gen() % 7) - 3.0;
        if (r != nLastRow)
            pCell = NULL;
        nLastRow = r;
        int nForm = gen() % 4;
        switch (nForm) {
        case 0:
            A.Add(r, c, v);
            break;
        case 1:
            A.Add(r, c, v, pCell);
            break;
        case 2:
            A.Add(r, c, v, pRow);
            break;
        default:
            A.Add(r, c, v, pRow, pCell);
        }
        if (nForm >= 2) {
            ASSERT_EQ(pRow->m_nRow, r);
        }
        if (nForm == 1 || nForm == 3) {
            ASSERT_EQ(pCell->m_nCol, c);
        }
        if (nForm != 0 || v != 0.0)
            model[{r, c}] += v;
    }
    std::string expected;
    int nPrev = -1;
    for (auto &e : model) {
        char sz[64];
        snprintf(sz, sizeof(sz), "%s%d=%.17g", e.first.first == nPrev ? "," : "", e.first.second,
                 e.second);
        if (e.first.first != nPrev)
            expected += (expected.empty() ? "" : ";") + std::to_string(e.first.first) + ":";
        expected += sz;
        nPrev = e.first.first;
    }
    EXPECT_EQ(Dump(A), expected);
}

TEST(SparseCursor, AddValuesReadsOnlyTheSelectedEntries) {
    CSparseMatrix A;
    LONG dofs[] = {5, -1, 2};
    // entries of the skipped local row and column hold a marker that must never appear
    double m = 1e300;
    double values[] = {10.0, m, 12.0, m, m, m, 16.0, m, 18.0};
    A.AddValues(dofs, values, 3);
    EXPECT_EQ(Dump(A), "2:2=18,5=16;5:2=12,5=10");
    CSparseMatrix::cell *pFirst = A.GetFirstRow()->m_pFirstCell;
    A.AddValues(dofs, values, 3); // twice: values double, no cell is made
    EXPECT_EQ(Dump(A), "2:2=36,5=32;5:2=24,5=20");
    EXPECT_EQ(A.GetFirstRow()->m_pFirstCell, pFirst);

    LONG none[] = {-1, -3};
    A.AddValues(none, values, 2);
    A.AddValues(dofs, values, 0);
    EXPECT_EQ(CountCells(A), 4);
}

TEST(SparseCursor, AddValuesKeepsTheLowestColumnEvenForZero) {
    CSparseMatrix A;
    LONG dofs[] = {7, 3, 4, -2};
    double values[16] = {0.0};
    values[0 * 4 + 2] = 1.5; // (7, 4)
    values[2 * 4 + 0] = 2.5; // (4, 7)
    A.AddValues(dofs, values, 4);
    EXPECT_EQ(Dump(A), "3:3=0;4:3=0,7=2.5;7:3=0,4=1.5");
}

TEST(SparseCursor, AddValuesSortsConsecutiveAndScatteredNumbers) {
    CSparseMatrix A;
    LONG dofs[] = {2, 0, 1, 6};
    std::vector<double> values(16);
    for (int k = 0; k < 16; k++)
        values[k] = k + 1.0;
    A.AddValues(dofs, values.data(), 4);
    for (int i = 0; i < 4; i++)
        for (int j = 0; j < 4; j++)
            EXPECT_EQ(*A.GetValue(dofs[i], dofs[j]), values[i * 4 + j]);
    EXPECT_EQ(CountCells(A), 16);
}

TEST(SparseCursor, AssignmentSumsAndSkipsZeros) {
    CSparseMatrix A, B;
    Put(A, {{0, 0, 1.0}});
    Put(B, {{0, 0, 2.0}, {1, 1, 0.0}, {3, 0, -1.0}});
    CSparseMatrix &result = (A = B);
    EXPECT_EQ(&result, &A);
    EXPECT_EQ(Dump(A), "0:0=3;3:0=-1");
}
