// CFile and CMemFile: open failures, the exclusive share mode, positions and lengths.
#include "platform_test_util.h"

TEST(CFile, OpenFailureReturnsFalseAndTheConstructorThrows) {
    const char *pszMissing = "/nonexistent/femmat";
    CFile f;
    CFileException e;
    EXPECT_FALSE(f.Open(pszMissing, CFile::modeRead, &e));
    EXPECT_EQ(e.m_cause, CFileException::fileNotFound);
    EXPECT_THROW(CFile(pszMissing, CFile::modeRead), CFileException);
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
    EXPECT_FALSE(second.Open(path.c_str(), CFile::modeRead));
    EXPECT_EQ(first.GetLength(), 5u);

    // Shared opens go together, but keep an exclusive one out.
    first.Close();
    CFile third;
    EXPECT_TRUE(second.Open(path.c_str(), CFile::modeRead));
    EXPECT_TRUE(third.Open(path.c_str(), CFile::modeRead));
    EXPECT_FALSE(first.Open(path.c_str(), nExclusive));
}

namespace {
void CheckSeekPositionAndLength(CFile &f) {
    f.Write("0123456789", 10);
    EXPECT_EQ(f.GetPosition(), 10u);
    EXPECT_EQ(f.GetLength(), 10u);
    EXPECT_EQ(f.Seek(-3, CFile::end), 7u);
    EXPECT_EQ(f.Seek(-2, CFile::current), 5u);
    EXPECT_EQ(f.GetPosition(), 5u);
    char buf[8] = {};
    EXPECT_EQ(f.Read(buf, 8), 5u); // fewer only at the end
    EXPECT_STREQ(buf, "56789");
    f.SeekToBegin();
    EXPECT_EQ(f.GetPosition(), 0u);
    EXPECT_THROW(f.Seek(-1, CFile::begin), CFileException);
}
} // namespace

TEST(CFile, SeekPositionAndLengthAgreeOnDiskAndInMemory) {
    TempPath path;
    CFile f(path.c_str(), CFile::modeCreate | CFile::modeReadWrite);
    CheckSeekPositionAndLength(f);
    CMemFile m;
    CheckSeekPositionAndLength(m);
}
