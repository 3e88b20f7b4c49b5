// CSparseMatrix cursor insertion: where each Add lands and leaves its cursors, element
// assembly.
#include "sparse_test_util.h"

#include <algorithm>
#include <map>
#include <random>

// Random writes through every form, cursors kept between calls and the cell cursor reset
// on a change of row as callers must. The seed makes new head rows and cells, appended
// rows, and hundreds of cursors standing past their target, which must fall back to the
// head; each call leaves its cursor on what it wrote, and the lists always hold the sums
// of a plain map, with zeros stored by all forms but the plain one.
TEST(SparseCursor, RandomWritesWithStaleCursorsMatchAModel) {
    std::mt19937 gen(7);
    CSparseMatrix A;
    std::map<std::pair<int, int>, double> model;
    CSparseMatrix::row *pRow = NULL;
    CSparseMatrix::cell *pCell = NULL;
    for (int k = 0, nLastRow = -1; k < 4000; k++) {
        int r = gen() % 25, c = gen() % 25, nForm = gen() % 4;
        double v = (double)(gen() % 7) - 3.0;
        if (r != nLastRow)
            pCell = NULL;
        nLastRow = r;
        if (nForm == 0)
            A.Add(r, c, v);
        else if (nForm == 1)
            A.Add(r, c, v, pCell);
        else if (nForm == 2)
            A.Add(r, c, v, pRow);
        else
            A.Add(r, c, v, pRow, pCell);
        ASSERT_TRUE(nForm < 2 || pRow->m_nRow == r);
        ASSERT_TRUE(nForm % 2 == 0 || pCell->m_nCol == c);
        if (nForm != 0 || v != 0.0)
            model[{r, c}] += v;
    }
    std::string strCells = Dump(A);
    EXPECT_EQ(std::count(strCells.begin(), strCells.end(), '='), (long)model.size());
    for (auto &e : model)
        EXPECT_EQ(*A.GetValue(e.first.first, e.first.second), e.second);
}

// Negative numbers skip their row and column of the element array; the lowest column of
// each element row gets a cell even for 0.0; a second call only sums.
TEST(SparseCursor, AddValuesReadsOnlyTheSelectedEntries) {
    CSparseMatrix A, Z;
    LONG dofs[] = {5, -1, 2}, none[] = {-1, -3}, scattered[] = {7, 3, 4, 6, -2};
    const double m = 1e300; // a marker that must never be read
    double values[] = {10.0, m, 12.0, m, m, m, 16.0, m, 18.0};
    A.AddValues(dofs, values, 3);
    EXPECT_EQ(Dump(A), "2:2=18,5=16;5:2=12,5=10");
    A.AddValues(dofs, values, 3);
    A.AddValues(none, values, 2);
    A.AddValues(dofs, values, 0);
    EXPECT_EQ(Dump(A), "2:2=36,5=32;5:2=24,5=20");

    double zeros[25] = {0.0};
    zeros[0 * 5 + 2] = 1.5; // (7, 4)
    zeros[2 * 5 + 0] = 2.5; // (4, 7)
    Z.AddValues(scattered, zeros, 5);
    EXPECT_EQ(Dump(Z), "3:3=0;4:3=0,7=2.5;6:3=0;7:3=0,4=1.5");
}
