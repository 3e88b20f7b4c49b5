// The tag search: matching, comments, side effects on the arguments and the file's
// position after every outcome, for CR LF and LF files alike.
#include "textio_test.h"

namespace {

const std::string strText = "alpha\r\n"
                            "  Beta ; the [tag] behind a comment\r\n"
                            "[Tag] here ; rest\r\n"
                            "x [tag] again";

} // namespace

TEST(SeekTo, FindsTheFirstLineWithTheTagAndStandsBehindIt) {
    ForBothLineEnds(strText, [](const std::string &text) {
        TextFile file(text);
        // case-blind; a comment marker hides the tag behind it
        CString strComment(";");
        EXPECT_TRUE(SeekTo("[TAG]", file, &strComment, false));
        EXPECT_EQ(file.GetPosition(), LineStart(text, 3));
        // from the current position the next one is found, on an unterminated last line
        EXPECT_TRUE(SeekTo("[tAg]", file, &strComment, true));
        EXPECT_EQ(file.GetPosition(), text.size());
        // without a marker the comment is part of the line
        EXPECT_TRUE(SeekTo("[tag]", file, NULL, false));
        EXPECT_EQ(file.GetPosition(), LineStart(text, 2));
        // the empty tag matches the first line read
        file.Seek((LONG)LineStart(text, 1), CFile::begin);
        EXPECT_TRUE(SeekTo("", file, NULL, true));
        EXPECT_EQ(file.GetPosition(), LineStart(text, 2));
        // an empty marker cuts every line to nothing: only the empty tag is left to match
        CString strEmpty;
        EXPECT_FALSE(SeekTo("ALPHA", file, &strEmpty, false));
        EXPECT_TRUE(SeekTo("", file, &strEmpty, false));
        EXPECT_EQ(file.GetPosition(), LineStart(text, 1));
    });
}

TEST(SeekTo, ReplLineHandsBackThePreparedLine) {
    ForBothLineEnds(strText, [](const std::string &text) {
        TextFile file(text);
        CString strTag("[tag]"), strComment(";");
        EXPECT_TRUE(SeekTo_ReplLine(strTag, file, &strComment, false));
        // trimmed before the comment is cut, so the blank in front of it stays
        EXPECT_EQ(strTag, "[TAG] HERE ");
        EXPECT_EQ(file.GetPosition(), LineStart(text, 3));

        // not found: the tag still comes back in upper case, the file at the start
        file.Seek((LONG)LineStart(text, 1), CFile::begin);
        strTag = "alpha";
        EXPECT_FALSE(SeekTo_ReplLine(strTag, file, NULL, true));
        EXPECT_EQ(strTag, "ALPHA");
        EXPECT_EQ(file.GetPosition(), LineStart(text, 1));

        // SeekTo takes the tag by value
        CString strKept("here");
        EXPECT_TRUE(SeekTo(strKept, file, NULL, false));
        EXPECT_EQ(strKept, "here");
    });
}

TEST(SeekTo, FailureTable) {
    ForBothLineEnds(strText, [](const std::string &text) {
        // start at the end: false at once, no argument changed, the file not moved
        TextFile file(text);
        file.SeekToEnd();
        CString strTag("alpha"), strComment("x;");
        EXPECT_FALSE(SeekTo_ReplLine(strTag, file, &strComment, true));
        EXPECT_TRUE(strTag == "alpha" && strComment == "x;");
        EXPECT_EQ(file.GetPosition(), text.size());
        TextFile empty("");
        EXPECT_FALSE(SeekTo("", empty, NULL, false));
        EXPECT_EQ(empty.GetPosition(), 0u);

        // no line holds the tag: back at the start; a tag before the start isn't found
        file.Seek((LONG)LineStart(text, 2), CFile::begin);
        EXPECT_FALSE(SeekTo("alpha", file, &strComment, true));
        EXPECT_EQ(strComment, "X;");
        EXPECT_EQ(file.GetPosition(), LineStart(text, 2));
        file.Seek((LONG)LineStart(text, 2), CFile::begin);
        EXPECT_FALSE(SeekTo("nowhere", file, NULL, false));
        EXPECT_EQ(file.GetPosition(), 0u);

        // an archive failure while reading ends the search as the end of the file would
        FailingFile<CArchiveException> failing(text, LineStart(text, 2) + 2);
        failing.Seek((LONG)LineStart(text, 1), CFile::begin);
        EXPECT_FALSE(SeekTo("[TAG] HERE", failing, NULL, true));
        EXPECT_EQ(failing.GetPosition(), LineStart(text, 1));

        // a failure of the file itself passes to the caller
        FailingFile<CFileException> broken(text, 3);
        EXPECT_THROW(SeekTo("x", broken, NULL, false), CFileException);
    });
}
