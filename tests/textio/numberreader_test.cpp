// The number reader: tokens of whole lines, the index rules, the expansions by themselves.
#include "textio_test.h"

namespace {

// Every token of the line from a loop of calls starting at 0; the line as it ends up.
std::vector<std::string> Tokens(CString &strLine) {
    std::vector<std::string> tokens;
    CString strToken;
    int nPos = 0;
    for (;;) {
        CVirtMat::ReadNumber(nPos, strLine, strToken);
        if (strToken.IsEmpty())
            break;
        tokens.push_back(strToken.str());
    }
    EXPECT_EQ(nPos, strLine.GetLength()) << "the empty token leaves the index at the end";
    return tokens;
}

} // namespace

TEST(NumberReader, TokenTable) {
    const std::string P = "3.141592653589793";
    const struct {
        const char *pszLine;
        std::vector<std::string> tokens;
    } table[] = {
        {"1 2 3", {"1", "2", "3"}},
        {"1,5;2.5", {"1.5", "2.5"}},
        {"1e-3 2E+4", {"1e-3", "2E+4"}},
        {"1.0D+03", {"1.0", "+03"}},
        {"-.5 +,25", {"-0.5", "+0.25"}},
        {".5", {"5"}},
        {"- 5", {"5"}},
        {"--5", {"-5"}},
        {"+-5", {"-5"}},
        {"a1b2", {"1", "2"}},
        {"e5", {"5"}},
        {"1-2", {"1-2"}},
        {"1,2,3", {"1.2.3"}},
        {"+", {}},
        {"-", {}},
        {"   ", {}},
        {"", {}},
        {"pi", {P}},
        {"-Pi", {"-" + P}},
        {"2pi", {"2"}},
        {"pi/2", {"2"}},
        {"+pi ,g", {}}, // "+" and "," are no word boundaries
        {"pi-1", {P + "-1"}},
        {"pi\tpi", {P, P}},
        {"i1", {"1", "0", "0"}},
        {"-I1", {"-1", "0", "0"}},
        {"-i2", {"0", "-1", "0"}},
        {"i3 -i3", {"0", "0", "1", "0", "0", "-1"}},
        {"I1 I2 I3", {"1", "0", "0", "0", "1", "0", "0", "0", "1"}},
        {"i2 i1", {"2", "1", "0", "0"}},
        {"1 i2 i1", {"1", "0", "1", "0", "1", "0", "0"}},
        {"pi PI", {P}},
        {"g", {"9.81"}},
        {"-G 2", {"-9.81", "2"}},
        {"2g", {"2"}},
        {"g-1", {"9.81-1"}},
    };
    for (const auto &row : table) {
        CString strLine(row.pszLine);
        EXPECT_EQ(Tokens(strLine), row.tokens) << "line \"" << row.pszLine << "\"";
    }

    // the expansions stay in the line; words the search index passed stay as they are
    for (const auto &[pszLine, pszAfter] :
         {std::pair{"pi PI", "pi 3.141592653589793"}, {"-i2 -i3 -g", "0 -1 0 0 0 -1 -9.81"}}) {
        CString strLine(pszLine);
        Tokens(strLine);
        EXPECT_EQ(strLine.str(), pszAfter);
    }
}

TEST(NumberReader, IndexRules) {
    CString strLine("12 ab"), strToken;
    int nPos = 0;
    CVirtMat::ReadNumber(nPos, strLine, strToken);
    EXPECT_EQ(strToken, "12");
    EXPECT_EQ(nPos, 2); // on the first character behind the number
    CVirtMat::ReadNumber(nPos, strLine, strToken);
    EXPECT_TRUE(strToken.IsEmpty());
    EXPECT_EQ(nPos, 5);

    // at or behind the end, and on an empty line, the index stays
    nPos = 9;
    CVirtMat::ReadNumber(nPos, strLine, strToken);
    EXPECT_TRUE(strToken.IsEmpty() && nPos == 9);
    CString strEmpty;
    nPos = 0;
    CVirtMat::ReadNumber(nPos, strEmpty, strToken);
    EXPECT_TRUE(strToken.IsEmpty() && nPos == 0 && strEmpty.IsEmpty());

    // gravity alone on a line is a word like any other: behind the search index it stays
    CString strG("g");
    nPos = 1;
    CVirtMat::ReadNumber(nPos, strG, strToken);
    EXPECT_TRUE(strToken.IsEmpty() && nPos == 1 && strG == "g");
}

TEST(NumberReader, ExpansionsFromAStartIndex) {
    const struct {
        void (*pfn)(CString &, int);
        const char *pszLine;
        int nStart;
        const char *pszAfter;
    } table[] = {
        // text before the start is not searched, but it is a word's left neighbour
        {CVirtMat::ReplacePI, "pi pi", 1, "pi 3.141592653589793"},
        {CVirtMat::ReplacePI, "xpi pi", 1, "xpi 3.141592653589793"},
        // the sign in front of the start still goes into the replacement
        {CVirtMat::ReplaceIs, "a -i2", 3, "a 0 -1 0"},
        // the index carries from the first vector's loop into the later ones
        {CVirtMat::ReplaceIs, "i3 i1", 0, "i3 1 0 0"},
        // the "-" goes into the third vector even where it stood against a number
        {CVirtMat::ReplaceIs, "i1\ti2-i3", 0, "1 0 0\t0 1 00 0 -1"},
        {CVirtMat::ReplaceGravity, "G", 0, "9.81"},
        {CVirtMat::ReplaceGravity, "G", 1, "G"},
        // "G" wins the first pass and leaves the search index behind the "g"
        {CVirtMat::ReplaceGravity, "g\tG-", 0, "g\t9.81-"},
        {CVirtMat::ReplaceGravity, "gg g", 0, "gg 9.81"},
    };
    for (const auto &row : table) {
        CString strLine(row.pszLine);
        row.pfn(strLine, row.nStart);
        EXPECT_EQ(strLine.str(), row.pszAfter) << "line \"" << row.pszLine << "\"";
    }

    // a NUL byte in the text around a word survives
    CString strNul(std::string("\0 pi", 4));
    CVirtMat::ReplacePI(strNul, 0);
    EXPECT_EQ(strNul.str(), std::string("\0 3.141592653589793", 19));
}
