// CString: the operations the text readers, writers and reports use.
#include "platform/cstring.h"

#include <gtest/gtest.h>

#include <string>

TEST(CString, FormatOfAnyLengthMayReadItsOldContents) {
    CString s;
    std::string longText(1000, 'x');
    s.Format("<%s|%d>", longText.c_str(), 42);
    EXPECT_EQ(s.str(), "<" + longText + "|42>");
    s = "ab";
    s.Format("%s%s", (const char *)s, (const char *)s);
    EXPECT_EQ(s, "abab");
}

TEST(CString, FindPiecesTrimsAndComparison) {
    CString s("a=b; c=d"), t(" \t x y \r\n"), n("2.000");
    EXPECT_EQ(s.Find("=", 2), 6);
    // Past the end, or before the start, there is nothing to find.
    EXPECT_EQ(s.Find("=", 100), -1);
    EXPECT_EQ(s.Find("=", -1), -1);
    EXPECT_EQ(s.Find('d', s.GetLength()), -1);

    EXPECT_EQ(s.Left(20) + s.Right(2) + s.Mid(1, 3) + s.Mid(20), "a=b; c=d=d=b;");
    t.TrimLeft();
    t.TrimRight();
    EXPECT_EQ(t, "x y");
    n.TrimRight("0.");
    // A literal on the left compares text, not pointers.
    EXPECT_TRUE("2" == n && "2.0" != n);
}
