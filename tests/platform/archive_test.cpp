// CArchive: primitives, raw bytes, text lines and what Close leaves in the file.
#include "platform_test_util.h"

#include "platform/archive.h"

#include <string>

// With a 16-byte buffer the doubles at offsets 11 and 31 straddle its end both ways.
TEST(CArchive, PrimitivesAreLittleEndianPackedAndMayStraddleTheBuffer) {
    CMemFile file;
    {
        CArchive ar(&file, CArchive::store, 16);
        ar << (BYTE)0x7F << (WORD)0xABCD << (LONG)0x01020304 << (LONG)-2 << 1.0;
        ar << (DWORD)0xCAFEBABE << 1.0f << (int)-1 << -0.5 << (UINT)7;
    }
    std::vector<BYTE> expected =
              Bytes({0x7F, 0xCD, 0xAB, 4,    3,    2,    1,    0xFE, 0xFF, 0xFF, 0xFF,
                     0,    0,    0,    0,    0,    0,    0xF0, 0x3F, 0xBE, 0xBA, 0xFE,
                     0xCA, 0,    0,    0x80, 0x3F, 0xFF, 0xFF, 0xFF, 0xFF, 0,    0,
                     0,    0,    0,    0,    0xE0, 0xBF, 7,    0,    0,    0});
    EXPECT_EQ(file.GetData(), expected);

    // Read back through a buffer of the caller's, all but the last 3 bytes, and store again.
    CMemFile cut(file.GetData().data(), (UINT)file.GetLength() - 3);
    BYTE buf[16];
    CArchive ar(&cut, CArchive::load, sizeof buf, buf);
    BYTE b;
    WORD w;
    LONG l1, l2;
    int i;
    DWORD dw;
    float f;
    double d1, d2;
    ar >> b >> w >> l1 >> l2 >> d1 >> dw >> f >> i >> d2;
    CMemFile again;
    {
        CArchive st(&again, CArchive::store);
        st << b << w << l1 << l2 << d1 << dw << f << i << d2;
    }
    EXPECT_EQ(again.GetData(), std::vector<BYTE>(expected.begin(), expected.end() - 4));
    try {
        ar >> dw; // a value cut short is the end of the file
        FAIL() << "no exception";
    } catch (CArchiveException &e) {
        EXPECT_EQ(e.m_cause, CArchiveException::endOfFile);
    }
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
        EXPECT_EQ(lines, (std::vector<std::string>{"first", "second", "", longLine, "", "last"}));
    }
    // A final line end gives no extra empty line.
    CMemFile one("x\r\n", 3);
    CArchive ar(&one, CArchive::load);
    CString s;
    EXPECT_TRUE(ar.ReadString(s));
    EXPECT_FALSE(ar.ReadString(s));
}

// What a loading archive read ahead goes back to the file, on Close and on destruction.
TEST(CArchive, CloseLeavesTheFileBehindTheLastByteHandedOut) {
    TempPath path;
    CFile f(path.c_str(), CFile::modeCreate | CFile::modeReadWrite);
    {
        CArchive ar(&f, CArchive::store, 16);
        ar.WriteString("line1\nline2\n");
        ar << (LONG)77;
        ar.Close();
        EXPECT_EQ(f.GetLength(), 16u);
    }
    f.SeekToBegin();
    CString s;
    {
        CArchive ar(&f, CArchive::load);
        ASSERT_TRUE(ar.ReadString(s));
        ar.Close();
        EXPECT_EQ(f.GetPosition(), 6u);
    }
    {
        CArchive ar(&f, CArchive::load, 16);
        ASSERT_TRUE(ar.ReadString(s));
        EXPECT_EQ(s, "line2");
    }
    EXPECT_EQ(f.GetPosition(), 12u);
    CArchive ar(&f, CArchive::load);
    LONG l;
    ar >> l;
    EXPECT_EQ(l, 77);
}
