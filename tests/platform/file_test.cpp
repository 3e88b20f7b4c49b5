// CFile and CMemFile: open failures, the exclusive share mode, positions and lengths.
#include "platform_test_util.h"

// A missing file, and a second open of a file held exclusively.
TEST(CFile, FailedOpensReturnFalseWithTheirCause) {
    CFile second;
    CFileException e;
    EXPECT_FALSE(second.Open("/nonexistent/femmat", CFile::modeRead, &e));
    EXPECT_EQ(e.m_cause, CFileException::fileNotFound);
    EXPECT_THROW(CFile("/nonexistent/femmat", CFile::modeRead), CFileException);

    TempPath path;
    UINT nExclusive = CFile::modeCreate | CFile::modeReadWrite | CFile::shareExclusive;
    CFile first(path.c_str(), nExclusive);
    first.Write("hello", 5);
    // Refused opens must not truncate what the holder has written.
    EXPECT_FALSE(second.Open(path.c_str(), nExclusive, &e));
    EXPECT_EQ(e.m_cause, CFileException::sharingViolation);
    EXPECT_FALSE(second.Open(path.c_str(), CFile::modeRead));
    EXPECT_EQ(first.GetLength(), 5u);

    // A shared open keeps an exclusive one out.
    first.Close();
    EXPECT_TRUE(second.Open(path.c_str(), CFile::modeRead));
    EXPECT_FALSE(first.Open(path.c_str(), nExclusive));
}

TEST(CFile, SeekPositionAndLengthAgreeOnDiskAndInMemory) {
    TempPath path;
    CFile disk(path.c_str(), CFile::modeCreate | CFile::modeReadWrite);
    CMemFile mem;
    CFile *files[] = {&disk, &mem};
    for (CFile *f : files) {
        f->Write("0123456789", 10);
        EXPECT_EQ(f->GetLength(), 10u);
        EXPECT_EQ(f->Seek(-3, CFile::end), 7u);
        EXPECT_EQ(f->Seek(-2, CFile::current), 5u);
        EXPECT_EQ(f->GetPosition(), 5u);
        char buf[8] = {};
        EXPECT_EQ(f->Read(buf, 8), 5u); // fewer only at the end
        EXPECT_STREQ(buf, "56789");
        EXPECT_THROW(f->Seek(-1, CFile::begin), CFileException);
    }
}
