#include "platform_test_util.h"

#include "platform/archive.h"

#include <gtest/gtest.h>

#include <string>

// Every primitive, little-endian and packed; with a 16-byte buffer the doubles at
// offsets 11 and 31 straddle the buffer's end on both sides.
TEST(CArchive, PrimitivesAreLittleEndianPackedAndMayStraddleTheBuffer) {
    CMemFile file;
    {
        CArchive ar(&file, CArchive::store, 16);
        ar << (BYTE)0x7F << (WORD)0xABCD << (LONG)0x01020304 << (LONG)-2 << 1.0;
        ar << (DWORD)0xCAFEBABE << (float)1.0f << (int)-1 << -0.5 << (UINT)7;
    }
    std::vector<BYTE> expected = Bytes(
        {0x7F, 0xCD, 0xAB, 0x04, 0x03, 0x02, 0x01, 0xFE, 0xFF, 0xFF, 0xFF, 0,    0,    0,    0,
         0,    0,    0xF0, 0x3F, 0xBE, 0xBA, 0xFE, 0xCA, 0,    0,    0x80, 0x3F, 0xFF, 0xFF, 0xFF,
         0xFF, 0,    0,    0,    0,    0,    0,    0xE0, 0xBF, 7,    0,    0,    0});
    EXPECT_EQ(file.GetData(), expected);

    // Read back through a buffer the caller provides.
    file.SeekToBegin();
    BYTE buf[16];
    CArchive ar(&file, CArchive::load, sizeof buf, buf);
    BYTE b;
    WORD w;
    LONG l1, l2;
    int i;
    DWORD dw;
    UINT u;
    float f;
    double d1, d2;
    ar >> b >> w >> l1 >> l2 >> d1 >> dw >> f >> i >> d2 >> u;
    EXPECT_EQ(b, 0x7F);
    EXPECT_EQ(w, 0xABCD);
    EXPECT_EQ(l1, 0x01020304);
    EXPECT_EQ(l2, -2);
    EXPECT_EQ(d1, 1.0);
    EXPECT_EQ(dw, 0xCAFEBABEu);
    EXPECT_EQ(f, 1.0f);
    EXPECT_EQ(i, -1);
    EXPECT_EQ(d2, -0.5);
    EXPECT_EQ(u, 7u);

    // Nothing more: a value that cannot be completed is the end of the file.
    try {
        ar >> b;
        FAIL() << "no exception";
    } catch (CArchiveException &e) {
        EXPECT_EQ(e.m_cause, CArchiveException::endOfFile);
    }
}

TEST(CArchive, TruncatedValueThrowsEndOfFile) {
    CMemFile file(Bytes({1, 2, 3, 4, 5, 6, 7}).data(), 7);
    CArchive ar(&file, CArchive::load, 16);
    double d;
    try {
        ar >> d;
        FAIL() << "no exception";
    } catch (CArchiveException &e) {
        EXPECT_EQ(e.m_cause, CArchiveException::endOfFile);
    }
}

TEST(CArchive, RawBytesLargerThanTheBuffer) {
    std::string text;
    for (int k = 0; k < 100; k++)
        text += (char)('a' + k % 26);
    CMemFile file;
    {
        CArchive ar(&file, CArchive::store, 16);
        ar << (BYTE)1;
        ar.Write(text.data(), (UINT)text.size());
        ar.WriteString("end");
    }
    EXPECT_EQ(file.GetLength(), 104u);

    file.SeekToBegin();
    CArchive ar(&file, CArchive::load, 16);
    BYTE b;
    ar >> b;
    std::string back(100, '\0');
    EXPECT_EQ(ar.Read(&back[0], 100), 100u);
    EXPECT_EQ(back, text);
    char rest[10];
    EXPECT_EQ(ar.Read(rest, 10), 3u); // fewer only at the end
    EXPECT_EQ(std::string(rest, 3), "end");
    EXPECT_EQ(ar.Read(rest, 10), 0u);
}

TEST(CArchive, ReadStringGivesLinesWithoutTheirEnds) {
    std::string longLine(40, 'L');
    std::string text = "first\r\nsecond\n\n" + longLine + "\r\n\r\nlast";
    for (int nBufSize : {16, 4096}) {
        CMemFile file(text.data(), (UINT)text.size());
        CArchive ar(&file, CArchive::load, nBufSize);
        CString s;
        std::vector<std::string> lines;
        while (ar.ReadString(s))
            lines.push_back(s.str());
        EXPECT_EQ(lines, (std::vector<std::string>{"first", "second", "", longLine, "", "last"}))
            << nBufSize;
        EXPECT_TRUE(s.IsEmpty());
        EXPECT_FALSE(ar.ReadString(s));
    }

    // A final line end gives no extra empty line; an empty file gives none at all.
    CMemFile one("x\r\n", 3);
    CArchive ar(&one, CArchive::load);
    CString s;
    EXPECT_TRUE(ar.ReadString(s));
    EXPECT_EQ(s, "x");
    EXPECT_FALSE(ar.ReadString(s));
    CMemFile empty;
    CArchive ar2(&empty, CArchive::load);
    EXPECT_FALSE(ar2.ReadString(s));
}

// What the loading archive read ahead goes back to the file, on Close and on destruction.
TEST(CArchive, CloseLeavesTheFileBehindTheLastByteHandedOut) {
    TempPath path;
    {
        CFile f(path.c_str(), CFile::modeCreate | CFile::modeWrite);
        CArchive ar(&f, CArchive::store, 16);
        ar.WriteString("line1\nline2\n");
        ar << (LONG)77;
        ar.Close();
        EXPECT_EQ(f.GetLength(), 16u); // storing Close flushed the buffer
        EXPECT_EQ(ar.GetFile(), nullptr);
    }
    CFile f(path.c_str(), CFile::modeRead);
    {
        CArchive ar(&f, CArchive::load);
        CString s;
        ASSERT_TRUE(ar.ReadString(s));
        EXPECT_EQ(s, "line1");
        ar.Close();
        EXPECT_EQ(f.GetPosition(), 6u);
    }
    {
        CArchive ar(&f, CArchive::load, 16);
        CString s;
        ASSERT_TRUE(ar.ReadString(s));
        EXPECT_EQ(s, "line2");
        // destroyed without Close
    }
    EXPECT_EQ(f.GetPosition(), 12u);
    {
        CArchive ar(&f, CArchive::load);
        LONG l;
        ar >> l;
        EXPECT_EQ(l, 77);
    }
    EXPECT_EQ(f.GetPosition(), 16u);
}

TEST(CArchive, WrongDirectionIsRefused) {
    CMemFile file;
    CArchive st(&file, CArchive::store);
    LONG l;
    CString s;
    EXPECT_THROW(st >> l, CArchiveException);
    EXPECT_THROW(st.ReadString(s), CArchiveException);
    EXPECT_THROW(st.ReadObject(NULL), CArchiveException);
    CArchive ld(&file, CArchive::load);
    EXPECT_THROW(ld << l, CArchiveException);
    EXPECT_THROW(ld.WriteObject(NULL), CArchiveException);
}
