#include "platform/cstring.h"

#include <gtest/gtest.h>

#include <string>

TEST(CString, FormatOfAnyLength) {
    CString s;
    s.Format("%d m %2.2f s", 2, 5.678);
    EXPECT_EQ(s, "2 m 5.68 s");

    std::string longText(1000, 'x');
    s.Format("<%s|%d>", longText.c_str(), 42);
    EXPECT_EQ(s.GetLength(), 1005);
    EXPECT_EQ(s.str(), "<" + longText + "|42>");

    // The old contents may be an argument of the new ones.
    s = "ab";
    s.Format("%s%s", (const char *)s, (const char *)s);
    EXPECT_EQ(s, "abab");

    s.Format("%s", "");
    EXPECT_TRUE(s.IsEmpty());
}

TEST(CString, FindFromStartAndIndex) {
    CString s("a=b; c=d");
    EXPECT_EQ(s.Find("="), 1);
    EXPECT_EQ(s.Find("=", 2), 6);
    EXPECT_EQ(s.Find("c=d", 6), -1);
    EXPECT_EQ(s.Find("c=d", 5), 5);
    EXPECT_EQ(s.Find("zz"), -1);
    EXPECT_EQ(s.Find('='), 1);
    EXPECT_EQ(s.Find('=', 2), 6);
    EXPECT_EQ(s.Find('x'), -1);

    // Past the end, or before the start, there is nothing to find.
    EXPECT_EQ(s.Find("=", 100), -1);
    EXPECT_EQ(s.Find('=', 100), -1);
    EXPECT_EQ(s.Find('d', s.GetLength()), -1);
    EXPECT_EQ(s.Find("=", -1), -1);
    EXPECT_EQ(CString().Find("a"), -1);
    EXPECT_EQ(CString().Find('a'), -1);
}

TEST(CString, LeftRightMidClampToTheString) {
    CString s("abcdef");
    EXPECT_EQ(s.Left(2), "ab");
    EXPECT_EQ(s.Left(0), "");
    EXPECT_EQ(s.Left(10), "abcdef");
    EXPECT_EQ(s.Left(-1), "");
    EXPECT_EQ(s.Right(2), "ef");
    EXPECT_EQ(s.Right(10), "abcdef");
    EXPECT_EQ(s.Right(-3), "");
    EXPECT_EQ(s.Mid(4), "ef");
    EXPECT_EQ(s.Mid(1, 3), "bcd");
    EXPECT_EQ(s.Mid(4, 10), "ef");
    EXPECT_EQ(s.Mid(6), "");
    EXPECT_EQ(s.Mid(9, 1), "");
}

TEST(CString, TrimAndCase) {
    CString s(" \t x y \r\n");
    s.TrimLeft();
    EXPECT_EQ(s, "x y \r\n");
    s.TrimRight();
    EXPECT_EQ(s, "x y");

    CString n("1.500000000");
    n.TrimRight("0");
    EXPECT_EQ(n, "1.5");
    n = "2.000";
    n.TrimRight("0.");
    EXPECT_EQ(n, "2");
    n = "000";
    n.TrimRight("0");
    EXPECT_TRUE(n.IsEmpty());
    n = "--x--";
    n.TrimLeft("-");
    EXPECT_EQ(n, "x--");

    CString c("MaTrIx 1.5e3");
    c.MakeUpper();
    EXPECT_EQ(c, "MATRIX 1.5E3");
    c.MakeLower();
    EXPECT_EQ(c, "matrix 1.5e3");
}

TEST(CString, AssignConcatenateCompare) {
    CString a = "ab";
    CString b(a);
    b += "cd";
    b += CString("e");
    b += 'f';
    EXPECT_EQ(b, "abcdef");
    EXPECT_EQ(a + "x", "abx");
    EXPECT_EQ("x" + a, "xab");
    EXPECT_EQ(a + '!', "ab!");
    EXPECT_EQ('!' + a, "!ab");
    EXPECT_TRUE("ab" == a);
    EXPECT_TRUE("abc" != a);
    EXPECT_TRUE(a != b);
    a = 'z';
    EXPECT_EQ(a, "z");
    a = (const char *)NULL;
    EXPECT_TRUE(a.IsEmpty());
    EXPECT_EQ(b[2], 'c');
    EXPECT_EQ(b.GetAt(5), 'f');
    EXPECT_STREQ((const char *)b, "abcdef");
    EXPECT_EQ(CString('-', 3), "---");
}
