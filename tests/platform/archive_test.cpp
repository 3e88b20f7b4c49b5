// CArchive: numbers, text lines and what Close leaves in the file.
#include "platform_test_util.h"

// With a 16-byte buffer the double at offset 12 straddles its end, storing and loading.
TEST(CArchive, NumbersAreLittleEndianPackedAndMayStraddleTheBuffer) {
    CMemFile file;
    {
        CArchive ar(&file, CArchive::store, 16);
        ar << (LONG)0x01020304 << 1.0 << -0.5 << (LONG)-2;
    }
    std::vector<BYTE> expected{4, 3, 2, 1, 0, 0, 0,    0,    0,    0,    0xF0, 0x3F, //
                               0, 0, 0, 0, 0, 0, 0xE0, 0xBF, 0xFE, 0xFF, 0xFF, 0xFF};
    EXPECT_EQ(file.GetData(), expected);

    // Read back through a buffer of the caller's, with the last value cut short.
    CMemFile cut(expected.data(), 22);
    BYTE buf[16];
    CArchive ar(&cut, CArchive::load, sizeof buf, buf);
    LONG l;
    double d1, d2;
    ar >> l >> d1 >> d2;
    EXPECT_TRUE(l == 0x01020304 && d1 == 1.0 && d2 == -0.5);
    EXPECT_EQ(ArchiveCause([&] { ar >> l; }), CArchiveException::endOfFile);
}

TEST(CArchive, ReadStringGivesLinesWithoutTheirEnds) {
    std::string longLine(40, 'L');
    // A last line with or without its end, through a buffer smaller and larger than a line.
    for (std::string end : {"last", "last\r\n"})
        for (int nBufSize : {16, 4096}) {
            std::string text = "first\r\nsecond\n\n" + longLine + "\r\n\r\n" + end;
            CMemFile file(text.data(), (UINT)text.size());
            CArchive ar(&file, CArchive::load, nBufSize);
            CString s;
            std::vector<std::string> lines;
            while (ar.ReadString(s))
                lines.push_back(s.str());
            EXPECT_EQ(lines,
                      (std::vector<std::string>{"first", "second", "", longLine, "", "last"}));
        }
}

// What a loading archive read ahead goes back to the file, on Close and on destruction.
TEST(CArchive, CloseLeavesTheFileBehindTheLastByteHandedOut) {
    CMemFile f("line1\nline2\nrest", 16);
    CString s;
    CArchive first(&f, CArchive::load);
    ASSERT_TRUE(first.ReadString(s));
    first.Close();
    EXPECT_EQ(f.GetPosition(), 6u);
    {
        CArchive ar(&f, CArchive::load, 16);
        ASSERT_TRUE(ar.ReadString(s));
    }
    EXPECT_EQ(f.GetPosition(), 12u);
}
