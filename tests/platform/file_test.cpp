#include "platform_test_util.h"

#include "platform/file.h"

#include <gtest/gtest.h>

#include <cstring>

TEST(CFile, OpenFailureReturnsFalseAndConstructorThrows) {
    TempPath missing;
    CFile f;
    CFileException e;
    EXPECT_FALSE(f.Open(missing.c_str(), CFile::modeRead, &e));
    EXPECT_EQ(e.m_cause, CFileException::fileNotFound);
    EXPECT_FALSE(f.IsOpen());
    EXPECT_FALSE(f.Open(missing.c_str(), CFile::modeRead)); // no report wanted

    try {
        CFile g(missing.c_str(), CFile::modeRead);
        FAIL() << "no exception";
    } catch (CFileException &ex) {
        EXPECT_EQ(ex.m_cause, CFileException::fileNotFound);
    }

    // A directory is not a file.
    EXPECT_FALSE(f.Open(::testing::TempDir().c_str(), CFile::modeRead));
}

TEST(CFile, SecondExclusiveOpenFailsAndLeavesTheFileAlone) {
    TempPath path;
    UINT nExclusive = CFile::modeCreate | CFile::modeReadWrite | CFile::shareExclusive;
    CFile first(path.c_str(), nExclusive);
    first.Write("hello", 5);

    // Refused opens must not truncate what the holder has written.
    CFile second;
    CFileException e;
    EXPECT_FALSE(second.Open(path.c_str(), nExclusive, &e));
    EXPECT_EQ(e.m_cause, CFileException::sharingViolation);
    EXPECT_FALSE(second.Open(path.c_str(), CFile::modeCreate | CFile::modeWrite));
    EXPECT_FALSE(second.Open(path.c_str(), CFile::modeRead));
    EXPECT_EQ(first.GetLength(), 5u);

    first.Close();
    EXPECT_TRUE(second.Open(path.c_str(), CFile::modeRead));
    // Shared opens go together, but exclude an exclusive one.
    CFile third;
    EXPECT_TRUE(third.Open(path.c_str(), CFile::modeRead));
    EXPECT_FALSE(first.Open(path.c_str(), CFile::modeReadWrite | CFile::shareExclusive));
}

TEST(CFile, SeekPositionAndLengthAgree) {
    TempPath path;
    CFile f(path.c_str(), CFile::modeCreate | CFile::modeReadWrite);
    EXPECT_EQ(f.GetLength(), 0u);
    f.Write("0123456789", 10);
    EXPECT_EQ(f.GetPosition(), 10u);
    EXPECT_EQ(f.GetLength(), 10u);
    EXPECT_EQ(f.Seek(-3, CFile::end), 7u);
    EXPECT_EQ(f.GetPosition(), 7u);
    EXPECT_EQ(f.Seek(-2, CFile::current), 5u);
    char buf[8] = {};
    EXPECT_EQ(f.Read(buf, 8), 5u);
    EXPECT_STREQ(buf, "56789");
    EXPECT_EQ(f.Read(buf, 8), 0u);
    f.SeekToBegin();
    EXPECT_EQ(f.GetPosition(), 0u);
    EXPECT_EQ(f.SeekToEnd(), 10u);
    EXPECT_THROW(f.Seek(-1, CFile::begin), CFileException);
    EXPECT_EQ(f.GetFilePath(), path.c_str());
}

TEST(CFile, CreateTruncatesUnlessTold) {
    TempPath path;
    {
        CFile f(path.c_str(), CFile::modeCreate | CFile::modeWrite);
        f.Write("abcdef", 6);
    }
    {
        CFile f(path.c_str(), CFile::modeCreate | CFile::modeNoTruncate | CFile::modeReadWrite);
        EXPECT_EQ(f.GetLength(), 6u);
    }
    CFile f(path.c_str(), CFile::modeCreate | CFile::modeWrite);
    EXPECT_EQ(f.GetLength(), 0u);
}

TEST(CFile, WriteFailureThrows) {
    TempPath path;
    { CFile f(path.c_str(), CFile::modeCreate | CFile::modeWrite); }
    CFile f(path.c_str(), CFile::modeRead);
    EXPECT_THROW(f.Write("x", 1), CFileException);
}

TEST(CMemFile, BehavesLikeAFile) {
    CMemFile f;
    f.Write("0123456789", 10);
    EXPECT_EQ(f.GetPosition(), 10u);
    EXPECT_EQ(f.GetLength(), 10u);
    EXPECT_EQ(f.Seek(-3, CFile::end), 7u);
    EXPECT_EQ(f.Seek(-2, CFile::current), 5u);
    char buf[8] = {};
    EXPECT_EQ(f.Read(buf, 8), 5u);
    EXPECT_STREQ(buf, "56789");
    EXPECT_EQ(f.Read(buf, 8), 0u);
    EXPECT_THROW(f.Seek(-11, CFile::end), CFileException);

    // Writing beyond the end leaves zeros in the gap.
    f.Seek(12, CFile::begin);
    f.Write("x", 1);
    ASSERT_EQ(f.GetLength(), 13u);
    EXPECT_EQ(f.GetData()[10], 0);
    EXPECT_EQ(f.GetData()[11], 0);
    EXPECT_EQ(f.GetData()[12], 'x');

    CMemFile g("abc", 3);
    EXPECT_EQ(g.GetPosition(), 0u);
    EXPECT_EQ(g.Read(buf, 8), 3u);
    g.SetData("z", 1);
    EXPECT_EQ(g.GetPosition(), 0u);
    EXPECT_EQ(g.GetLength(), 1u);
}
