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

// What is left counts the bytes read ahead and those behind the file's position, in memory
// and on disk; a count beyond it is refused before anything is read. A class name longer
// than the archive is refused the same way.
TEST(CArchive, BytesLeftBoundAnyCount) {
    TempPath path;
    {
        CFile out(path.c_str(), CFile::modeCreate | CFile::modeWrite);
        out.Write("0123456789abcdef", 16);
    }
    CFile disk(path.c_str(), CFile::modeRead);
    CMemFile mem("0123456789abcdef", 16);
    for (CFile *pFile : {(CFile *)&disk, (CFile *)&mem}) {
        pFile->Seek(2, CFile::begin);
        CArchive ar(pFile, CArchive::load, 8);
        EXPECT_EQ(ar.GetBytesLeft(), 14u);
        BYTE b;
        ar >> b; // reads 8 ahead
        EXPECT_EQ(ar.GetBytesLeft(), 13u);
        ar.CheckAvailable(13, 1);
        ar.CheckAvailable(6, 2);
        EXPECT_EQ(ArchiveCause([&] { ar.CheckAvailable(7, 2); }), CArchiveException::endOfFile);
        EXPECT_EQ(ArchiveCause([&] { ar.CheckAvailable(0xFFFFFFFFFFFFFFFFull, 8); }),
                  CArchiveException::endOfFile);
        ar.CheckAvailable(0, 8);
        ar >> b;
        EXPECT_EQ(b, '3');
    }
    CMemFile store;
    CArchive writing(&store, CArchive::store);
    EXPECT_EQ(ArchiveCause([&] { writing.GetBytesLeft(); }), CArchiveException::writeOnly);

    const char record[] = "\xFF\xFF\x01\x00\xFF\xFF"
                          "CVector";
    CMemFile named(record, sizeof record - 1);
    CArchive ar(&named, CArchive::load);
    EXPECT_EQ(ArchiveCause([&] { ar.ReadObject(NULL); }), CArchiveException::endOfFile);
}
