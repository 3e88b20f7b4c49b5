// The text readers: the example files byte for byte with their matrices and positions,
// the grammar's edges, every failure, for CR LF and LF files alike.
#include "textio_test.h"

namespace {

const std::string strPlain = "    1.0000    -2.5000     0.0000\r\n"
                             "    3.2500     0.5000   100.0000\r\n"
                             "\r\n";

const std::string strTagged = "[TITLE] of the model\r\n"
                              "[stiff] block one   ; tag line, found in any case\r\n"
                              "; a line that is all comment counts as blank\r\n"
                              "\r\n"
                              "1 2 3               ; first row\r\n"
                              "[SUB] a nested block: its first character is that of the begin "
                              "tag\r\n"
                              "9 9 9\r\n"
                              "[END] of the nested block\r\n"
                              "4,5  pi  -g\r\n"
                              "[End]\r\n"
                              "7 7 7\r\n";

// The matrix's shape and elements in one comparable value.
std::pair<std::pair<int, int>, V> Shape(CMatrix &m) {
    return {{m.GetRows(), m.GetColumns()}, Flat(m)};
}
std::pair<std::pair<int, int>, V> Shape(int nRows, int nCols, const V &values) {
    return {{nRows, nCols}, values};
}

// The plain reader on text from its start; the file's line afterwards in *pnLine.
std::pair<std::pair<int, int>, V> ReadPlain(const std::string &text, ULONG *pnPos = NULL) {
    TextFile file(text);
    CMatrix m(2, 2, true, 9.0);
    CVirtMat *p = &m;
    p->ReadASCII(&file);
    if (pnPos != NULL)
        *pnPos = file.GetPosition();
    return Shape(m);
}

// The tagged reader with [A], [END] and the comment marker # from the file's start.
std::pair<std::pair<int, int>, V> ReadTagged(const std::string &text, ULONG *pnPos = NULL,
                                             const char *pszBegin = "[a]",
                                             const char *pszEnd = "[end]",
                                             const char *pszComment = "#") {
    TextFile file(text);
    CMatrix m(2, 2, true, 9.0);
    m.ReadASCII(&file, pszBegin, pszEnd, pszComment);
    if (pnPos != NULL)
        *pnPos = file.GetPosition();
    return Shape(m);
}

// The cells of a sparse matrix as (row, column, value), walking the lists.
std::vector<std::tuple<int, int, double>> Cells(CSparseMatrix &A) {
    std::vector<std::tuple<int, int, double>> cells;
    for (CSparseMatrix::row *r = A.m_pFirstRow; r != NULL; r = r->m_pNext)
        for (CSparseMatrix::cell *c = r->m_pFirstCell; c != NULL; c = c->m_pNext)
            cells.emplace_back(r->m_nRow, c->m_nCol, c->m_dValue);
    return cells;
}

// Counts the values that reach the three-argument Add.
struct CountingSparse : CSparseMatrix {
    using CSparseMatrix::Add;
    void Add(int nRow, int nCol, double dValue) override {
        m_nCalls++;
        CSparseMatrix::Add(nRow, nCol, dValue);
    }
    int m_nCalls = 0;
};

} // namespace

TEST(ReadASCII, ExampleFiles) {
    ForBothLineEnds(strPlain, [](const std::string &text) {
        ULONG nPos;
        EXPECT_EQ(ReadPlain(text, &nPos), Shape(2, 3, {1, -2.5, 0, 3.25, 0.5, 100}));
        EXPECT_EQ(nPos, LineStart(text, 2)); // on the empty line
    });
    ForBothLineEnds(strTagged, [](const std::string &text) {
        TextFile file(text);
        CMatrix m;
        m.ReadASCII(&file, "[STIFF]", "[END]", ";");
        EXPECT_EQ(Shape(m), Shape(2, 3, {1, 2, 3, 4.5, dPi, -9.81}));
        EXPECT_EQ(file.GetPosition(), LineStart(text, 10)); // on the last line
        // the tag stands only before the position now: nothing changes
        double *pBefore = m.m_pVector;
        m.ReadASCII(&file, "[STIFF]", "[END]", ";");
        EXPECT_TRUE(m.m_pVector == pBefore && m.GetRows() == 2);
        EXPECT_EQ(file.GetPosition(), LineStart(text, 10));
    });
}

TEST(ReadASCII, PlainBlocks) {
    const struct {
        std::string text;
        std::pair<std::pair<int, int>, V> expected;
        int nLineAfter;
    } table[] = {
        // ragged rows end in zeros
        {"1 2\r\n3 4 5\r\n", Shape(2, 3, {1, 2, 0, 3, 4, 5}), 2},
        // digits inside words count; a symbol fills three columns
        {"node 3: 1 2\r\ni1 -i2\r\n", Shape(2, 6, {3, 1, 2, 0, 0, 0, 1, 0, 0, 0, -1, 0}), 2},
        // a token counts as far as strtod reads it
        {"1-2 1,2,3 x7\r\n", Shape(1, 3, {1, 1.2, 7}), 1},
        // a title with a digit is a row; one without ends the block before it begins
        {"Model 1\r\n2 3\r\nend\r\n4\r\n", Shape(2, 2, {1, 0, 2, 3}), 2},
        {"Title\r\n1 2\r\n", Shape(0, 0, {}), 0},
        {"", Shape(0, 0, {}), 0},
    };
    for (const auto &row : table)
        ForBothLineEnds(row.text, [&](const std::string &text) {
            ULONG nPos;
            EXPECT_EQ(ReadPlain(text, &nPos), row.expected) << row.text;
            EXPECT_EQ(nPos, LineStart(text, row.nLineAfter)) << row.text;
        });

    // an allocation that fails leaves the matrix empty; the file is placed all the same
    struct NoRoom : CMatrix {
        bool Allocate(int nRows, int nCols, bool bInit, double dValue) override {
            return nRows * nCols == 0 && CMatrix::Allocate(nRows, nCols, bInit, dValue);
        }
    } full;
    full.CMatrix::Allocate(2, 2, true, 1.0);
    TextFile tight("1 2\n3\n\n");
    full.ReadASCII(&tight);
    EXPECT_TRUE(full.m_nSize == 0 && full.m_pVector == NULL && full.GetRows() == 0);
    EXPECT_EQ(tight.GetPosition(), 6u);

    // a second block right behind the first is empty unless the caller steps over the line
    TextFile file("1 2\n\n3\n");
    CMatrix m;
    m.ReadASCII(&file);
    m.ReadASCII(&file);
    EXPECT_EQ(Shape(m), Shape(0, 0, {}));
    file.Seek(1, CFile::current);
    m.ReadASCII(&file);
    EXPECT_EQ(Shape(m), Shape(1, 1, {3}));
}

TEST(ReadASCII, TaggedBlocks) {
    const struct {
        std::string text;
        std::pair<std::pair<int, int>, V> expected;
        int nLineAfter;
    } table[] = {
        // the end tag anywhere in a row ends the block; case and comments don't matter
        {"[A]\r\n1 2 # [END]\r\n3 [End] 4\r\n5\r\n", Shape(1, 2, {1, 2}), 3},
        // a row starting with the tag's first character opens a nested block
        {"[a]\r\n1\r\n[2] 3\r\n4\r\n[end]\r\n5\r\n[END]\r\n6\r\n", Shape(2, 1, {1, 5}), 7},
        // a row without a number ends the rows; the file still goes on to the end tag
        {"[A]\r\n1\r\nword\r\n3\r\n[END]\r\nafter\r\n", Shape(1, 1, {1}), 5},
        // a block without rows leaves the matrix empty
        {"[A]\r\n\r\n# note\r\n[END]\r\n", Shape(0, 0, {}), 4},
        // the end of the file ends the block
        {"[A]\r\n1 2\r\n3", Shape(2, 2, {1, 2, 3, 0}), 3},
    };
    for (const auto &row : table)
        ForBothLineEnds(row.text, [&](const std::string &text) {
            ULONG nPos;
            EXPECT_EQ(ReadTagged(text, &nPos), row.expected) << row.text;
            EXPECT_EQ(nPos, LineStart(text, row.nLineAfter)) << row.text;
        });

    // a begin tag that starts with a digit takes rows beginning with it for nested blocks
    ULONG nPos;
    EXPECT_EQ(ReadTagged("1st\n2 3\n1 5\n4\nEND\n6\n", &nPos, "1st", "end", ""),
              Shape(2, 2, {2, 3, 6, 0}));
    EXPECT_EQ(nPos, 20u);
    // the empty begin tag matches the first line; no nested blocks, no end tag
    EXPECT_EQ(ReadTagged("[A] 1\n[B] 2\n\n3\n", &nPos, "", "", ""), Shape(2, 1, {2, 3}));
    EXPECT_EQ(nPos, 15u);
    // an empty end tag closes a nested block at its next non-blank line
    EXPECT_EQ(ReadTagged("[A]\n[x] 1\n\n2\n3\n", &nPos, "[A]", "", ""), Shape(1, 1, {3}));
    EXPECT_EQ(nPos, 15u);

    // blocks are read in file order; a missing tag leaves the matrix and the file alone
    TextFile file("[A] one\r\n1 2\r\n[END]\r\n[A] two\r\n3\r\n[END]\r\n");
    CMatrix m;
    m.ReadASCII(&file, "[A]", "[END]", "");
    EXPECT_EQ(Shape(m), Shape(1, 2, {1, 2}));
    m.ReadASCII(&file, "[A]", "[END]", "");
    EXPECT_EQ(Shape(m), Shape(1, 1, {3}));
    ULONG nEnd = file.GetPosition();
    m.ReadASCII(&file, "[A]", "[END]", "");
    EXPECT_EQ(Shape(m), Shape(1, 1, {3}));
    EXPECT_EQ(file.GetPosition(), nEnd);
}

TEST(ReadASCII, TaggedReaderEndsAPassAtAnArchiveFailure) {
    // the archive fails inside the row "5 6": both passes end with the rows before it
    std::string text = "[A]\r\n1 2\r\n3 4\r\n5 6\r\n[END]\r\n";
    FailingFile<CArchiveException> file(text, LineStart(text, 3) + 1);
    CMatrix m;
    m.ReadASCII(&file, "[A]", "[END]", "");
    EXPECT_EQ(Shape(m), Shape(2, 2, {1, 2, 3, 4}));
    EXPECT_EQ(file.GetPosition(), LineStart(text, 3));

    // other failures, and archive failures in the other readers, pass to the caller
    FailingFile<CFileException> broken(text, LineStart(text, 2));
    EXPECT_THROW(m.ReadASCII(&broken, "[A]", "[END]", ""), CFileException);
    FailingFile<CArchiveException> plain("1 2\n3 4\n", 4);
    EXPECT_THROW(m.ReadASCII(&plain), CArchiveException);
    plain.SeekToBegin();
    CVector v;
    EXPECT_THROW(v.ReadASCII(&plain), CArchiveException);
    plain.SeekToBegin();
    CSparseMatrix A;
    EXPECT_THROW(A.ReadASCII(&plain), CArchiveException);
    EXPECT_EQ(Cells(A), (std::vector<std::tuple<int, int, double>>{{0, 0, 1}, {0, 1, 2}}));
}

TEST(ReadASCII, VectorTakesEveryNumberToTheEnd) {
    ForBothLineEnds("1 2 3\r\n\r\n\r\n4,5 pi\r\nno number\r\n\r\n", [](const std::string &text) {
        TextFile file(text);
        file.Seek(2, CFile::begin);
        CVector v(1, true, 7.0);
        CVirtMat *p = &v;
        p->ReadASCII(&file);
        EXPECT_EQ(Flat(v), (V{2, 3, 4.5, dPi}));
        EXPECT_EQ(file.GetPosition(), LineStart(text, 4)); // behind the last number's line
        // nothing left: an empty vector, the file where it was
        p->ReadASCII(&file);
        EXPECT_TRUE(v.m_nSize == 0 && v.m_pVector == NULL);
        EXPECT_EQ(file.GetPosition(), LineStart(text, 4));
    });
}

TEST(ReadASCII, SparseRowsAreLinesAndColumnsArePlaces) {
    ForBothLineEnds("1 0 2\r\n\r\n0 3\r\n-i2", [](const std::string &text) {
        // summed into what is there; zeros make no cell; a blank line takes a row number
        TextFile file(text);
        CSparseMatrix A;
        A.Add(0, 0, 1.0);
        CVirtMat *p = &A;
        p->ReadASCII(&file);
        EXPECT_EQ(Cells(A), (std::vector<std::tuple<int, int, double>>{
                                {0, 0, 2}, {0, 2, 2}, {2, 1, 3}, {3, 1, -1}}));
        EXPECT_EQ(file.GetPosition(), text.size());

        // a system matrix takes the values into its own table
        file.SeekToBegin();
        CSystSpMat S(4);
        S.ReadASCII(&file);
        EXPECT_EQ(Cells(S), (std::vector<std::tuple<int, int, double>>{
                                {0, 0, 1}, {0, 2, 2}, {2, 1, 3}, {3, 1, -1}}));
        EXPECT_EQ(S.m_pFirstRow, S.m_pRowTable);

        // every value goes through the virtual three-argument Add
        file.SeekToBegin();
        CountingSparse C;
        C.ReadASCII(&file);
        EXPECT_EQ(C.m_nCalls, 8);
    });
}

TEST(ReadASCII, SkylineReadsNothing) {
    CSkylineMatrix S;
    int sizes[] = {2, 3};
    ASSERT_TRUE(S.Allocate(sizes, 2));
    S = 4.0;
    TextFile file("1 2\n3 4\n");
    file.Seek(2, CFile::begin);
    CVirtMat *p = &S;
    p->ReadASCII(&file);
    EXPECT_EQ(file.GetPosition(), 2u);
    EXPECT_TRUE(S.m_nRows == 2 && S.m_nValues == 3 && S.m_pValues[0] == 4.0 &&
                S.m_pValues[2] == 4.0);
}
