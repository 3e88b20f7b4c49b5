// Text writers and console dumps, byte for byte.
#include "femmat.h"
#include "sparse/sparse_test_util.h"

#include <gtest/gtest.h>

#include <cmath>
#include <iostream>
#include <sstream>
#include <string>

static std::string Text(const CMemFile &file) {
    return std::string(file.GetData().begin(), file.GetData().end());
}

static CMatrix Rows2x3() {
    CMatrix M(2, 3);
    double values[] = {1, -2.5, 0, 3.25, 0.5, 100};
    std::copy(values, values + 6, M.m_pVector);
    return M;
}

// What a dump prints on std::cout.
template <typename F> static std::string Printed(F print) {
    std::ostringstream out;
    std::streambuf *pOld = std::cout.rdbuf(out.rdbuf());
    print();
    std::cout.rdbuf(pOld);
    return out.str();
}

TEST(DenseWriter, FormsRowNumbersHeaderAndTheClosingLine) {
    CMatrix M = Rows2x3();
    struct {
        int nFormat;
        bool bRowNumbers, bHeader;
        const char *pszExpected;
    } cases[] = {
        {0, false, false,
         "    1.0000    -2.5000     0.0000 \r\n    3.2500     0.5000   100.0000 \r\n\r\n"},
        {0, true, true,
         "\r\n"
         "                1          2          3 \r\n"
         "     1     1.0000    -2.5000     0.0000 \r\n"
         "     2     3.2500     0.5000   100.0000 \r\n\r\n"},
        {1, false, false,
         "1.0000e+00 -2.5000e+00 0.0000e+00 \r\n3.2500e+00 5.0000e-01 1.0000e+02 \r\n\r\n"},
        {2, true, false,
         "     1          1       -2.5          0 \r\n     2       3.25        0.5        100 \r\n"
         "\r\n"},
        // no rows written: the closing write repeats the header
        {3, false, true,
         "\r\n         1          2          3 \r\n\r\n         1          2          3 \r\n"},
        {3, false, false, "\r\n"},
    };
    for (auto &c : cases) {
        CMemFile file;
        M.WriteASCII(&file, "", " ", 10, 4, c.nFormat, c.bRowNumbers, c.bHeader);
        EXPECT_EQ(Text(file), c.pszExpected) << c.nFormat << c.bRowNumbers << c.bHeader;
    }
    CMemFile file;
    CMatrix().WriteASCII(&file, "", " ", 10, 4, 0, false, false);
    EXPECT_EQ(Text(file), "\r\n");

    // prefix and left-justified (negative) width
    CVector v(2, true, 0.5);
    CMemFile vf;
    v.WriteASCII(&vf, "<", ">", -6, 1, 0, true, true);
    v.WriteASCII(&vf, "", ";", 9, 2, 7, false, false);
    CVector().WriteASCII(&vf, "", "", 4, 1, 0, false, false);
    EXPECT_EQ(Text(vf), "<0.5   ><0.5   >\r\n 5.00e-01; 5.00e-01;\r\n\r\n");
}

TEST(DenseWriter, IntegerContainers) {
    CLongMatrix L;
    L.Allocate(2, 2, true, 7);
    L[1][0] = -3;
    CMemFile file;
    L.WriteASCII(&file, "", "", 5, 0, false, true, true);
    EXPECT_EQ(Text(file), "\r\n"
                          "          1    2\r\n"
                          "    1     7    7\r\n"
                          "    2    -3    7\r\n\r\n");

    CLongVector v;
    v.Allocate(3, true, 4);
    v[2] = 12;
    CMemFile h, vert, groups;
    v.WriteASCII(&h, "", ",", 3, true, true);
    EXPECT_EQ(Text(h), "  1,  2,  3,\r\n  4,  4, 12,\r\n");
    v.WriteASCII(&vert, "[", "]", 2, true, false);
    v.WriteASCII(&vert, "", "", 2, false, false);
    EXPECT_EQ(Text(vert), " 1[ 4]\r\n 2[ 4]\r\n 3[12]\r\n 4\r\n 4\r\n12\r\n");
    CMemFile none;
    CLongVector().WriteASCII(&none, "", "", 2, true, false);
    EXPECT_EQ(Text(none), ""); // an empty vertical vector writes nothing

    // groups {4}, {}, {4, 12} back to back
    CLongVector starts;
    starts.Allocate(4, false, 0);
    starts[0] = 0, starts[1] = 1, starts[2] = 1, starts[3] = 3;
    v.WriteASCII(&groups, "", " ", 3, starts, true, true);
    EXPECT_EQ(Text(groups), "     1   2 \r\n"
                            "  1  4 \r\n"
                            "\r\n"
                            "  3  4  12 \r\n");
}

TEST(SparseWriter, RowListingDenseListingAndDump) {
    Lists A("0:0=1.5,2=2;2:1=3");
    CMemFile rows, dense, numbered;
    A.WriteASCII(&rows, "", " ", 6, 2, 0, true, true);
    EXPECT_EQ(Text(rows), "0           1.50      0   2.00 \r\n"
                          "1              0 \r\n"
                          "     0   3.00 \r\n"
                          "\r\n");
    A.WriteASCII(&dense, "", " ", 10, 3, 1, false, false);
    EXPECT_EQ(Text(dense), " 1.500e+00          0  2.000e+00 \r\n"
                           "         0          0          0 \r\n"
                           "         0  3.000e+00          0 \r\n"
                           "\r\n");
    A.WriteASCII(&numbered, "", " ", 4, 1, 1, true, false);
    EXPECT_EQ(Text(numbered), "   11.5e+00    0 2.0e+00 \r\n"
                              "   2   0    0    0 \r\n"
                              "   3   0 3.0e+00    0 \r\n"
                              "\r\n");
    CMemFile empty;
    CSparseMatrix().WriteASCII(&empty, "", "", 4, 1, 1, false, false);
    EXPECT_EQ(Text(empty), "\r\n");

    EXPECT_EQ(Printed([&] { A.COUT(","); }), "1.5,0,2,\n0,\n0,3,\n");
}

TEST(SkylineWriter, UpperTriangleFromTheProfile) {
    CSkylineMatrix S;
    int sizes[] = {3, 4, 1, 2, 1}; // heights 1, 2, 1: row 1 holds column 0
    ASSERT_TRUE(S.Allocate(sizes, 5));
    S(0, 0) = 4, S(0, 1) = -1, S(1, 1) = 5, S(2, 2) = 6;
    CMemFile file;
    S.WriteASCII(&file, "", " ", 9, 1, 0, true, true);
    EXPECT_EQ(Text(file), "  4.0e+00  -1.0e+00         0 \r\n"
                          "        0   5.0e+00         0 \r\n"
                          "        0         0   6.0e+00 \r\n");
    EXPECT_EQ(Printed([&] { S.COUT(" "); }), "4 -1 0 \n0 5 0 \n0 0 6 \n");
    CMemFile empty;
    CSkylineMatrix().WriteASCII(&empty, "", "", 4, 1, 0, false, false);
    EXPECT_EQ(Text(empty), "");
}

TEST(DenseWriter, ConsoleDumps) {
    CMatrix M = Rows2x3();
    EXPECT_EQ(Printed([&] { M.COUT(";"); }), "1;-2.5;0;\n3.25;0.5;100;\n");
    EXPECT_EQ(Printed([&] { M.Stream(); }), "1\t-2.5\t0\t\n3.25\t0.5\t100\t\n");
}

// What the writers write, the plain readers read back, to the written digits.
TEST(TextRoundTrip, WritersAndReadersAgree) {
    CMatrix M = Rows2x3();
    M.SetValue(1, 2, -1.0 / 3.0);
    CMemFile mf;
    M.WriteASCII(&mf, "", " ", 22, 15, 1, false, false);
    mf.SeekToBegin();
    CMatrix back;
    back.ReadASCII(&mf);
    ASSERT_EQ(back.m_nRows, 2);
    ASSERT_EQ(back.GetColumns(), 3);
    for (int k = 0; k < 6; k++)
        EXPECT_NEAR(back.m_pVector[k], M.m_pVector[k], 1e-15);
    // the reader stops on the closing empty line
    EXPECT_EQ(mf.GetPosition(), mf.GetLength() - 2);

    CVector v(3, true, 0.0);
    v[0] = 2.5, v[1] = -1e-7, v[2] = 12345.678;
    CMemFile vf;
    v.WriteASCII(&vf, "", "\t", 0, 10, 1, false, false);
    vf.SeekToBegin();
    CVector vBack;
    vBack.ReadASCII(&vf);
    ASSERT_EQ(vBack.m_nSize, 3);
    for (int i = 0; i < 3; i++)
        EXPECT_NEAR(vBack[i], v[i], 1e-10 * std::fabs(v[i]));

    // the dense listing: zeros make no cell, the closing line is an empty row
    Lists A("0:0=1.5,2=2;2:1=3;3:3=-0.25");
    CMemFile sf;
    A.WriteASCII(&sf, "", " ", 12, 4, 1, false, false);
    sf.SeekToBegin();
    CSparseMatrix sBack;
    sBack.ReadASCII(&sf);
    EXPECT_EQ(Dump(sBack), "0:0=1.5,2=2;2:1=3;3:3=-0.25");
}
