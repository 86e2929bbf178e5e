#include "runtime/mg_file.h"

#include <gtest/gtest.h>

namespace {

using Texts = std::vector<std::string>;

TEST(TextHelpers, TrimBlanksOnly) {
    for (const auto& [text, trimmed] :
         {std::pair<std::string, std::string>{" \t a b\r\n", "a b"}, {"\v x\t\f", "\v x\t\f"}, {" \r\n", ""}}) {
        std::string all = text;
        MGFile::TrancatedAll(all);
        EXPECT_EQ(all, trimmed);
    }
}

TEST(TextHelpers, SplitFromEitherEnd) {
    const struct {
        const char *text, *sep;
        Texts left, right;
    } rows[] = {{"1.2.", ".", {"1", "2", ""}, {"", "2", "1"}},
                {".1..2", ".", {"", "1", "", "2"}, {"2", "", "1"}},
                {"a<|>b", "<|>", {"a", "b"}, {"b", "a"}},
                {"", ".", {}, {}},
                {"ab", nullptr, {}, {}}};
    for (const auto& row : rows) {
        Texts left = {"old"}, right = {"old"};
        MGFile::SplitStringLeft(row.text, row.sep, left);
        MGFile::SplitStringRight(row.text, row.sep, right);
        EXPECT_EQ(left, row.left) << row.text;
        EXPECT_EQ(right, row.right) << row.text;
    }
    std::string left, right = "old";
    EXPECT_TRUE(MGFile::SplitSubStringLeft(" name = value = 2\n", "=", left, right));
    EXPECT_EQ(left + "|" + right, "name|value = 2");
    EXPECT_EQ(MGFile::InsertSepToString("abcdef", ":", 2) + " " + MGFile::InsertSepToString("abcde", ":", 3),
              "ab:cd:ef abc:de");
}

TEST(TextHelpers, WalkLinesAndBlocks) {
    const std::string text = " a\r\n\n b \nc\r";
    Texts lines;
    std::string line;
    for (size_t pos = 0; MGFile::FindNextLine(text, pos, line);) lines.push_back(line);
    EXPECT_EQ(lines, (Texts{" a", "", " b ", "c\r"}));
    MGFile::SplitBlockOnSubStrings(text, lines, false);
    EXPECT_EQ(lines, (Texts{"a", "", "b"}));
    MGFile::SplitBlockOnSubStrings(text, lines, true);
    EXPECT_EQ(lines, (Texts{"a"}));

    std::string blocks = "start\n#one\n1\n2\n# \n3\n#no line", header, block;
    const Texts expected[] = {{"", ""}, {"", "3\n"}, {"one", "1\n2\n"}};
    for (const Texts& row : expected) {
        EXPECT_TRUE(MGFile::GetInfoBlockFromEnd(blocks, "#", header, block));
        EXPECT_EQ((Texts{header, block}), row);
    }
    EXPECT_FALSE(MGFile::GetInfoBlockFromEnd(blocks, "#", header, block));
    EXPECT_EQ(blocks, "start\n");
}

TEST(TextHelpers, FindQuotedTextOnOneLine) {
    const struct {
        std::string text;
        bool escape;
        Texts found;
    } rows[] = {
        {"a 'b' 'c' ''", false, {"b", "c", ""}},
        {"'a\nb'c' 'open", false, {"c"}}, // what would span lines is none, but its end may be a begin
        {R"(\'x 'a\'b' \'y)", true, {R"(a\'b)"}},
        {R"('a\'b')", false, {R"(a\)"}},
    };
    for (const auto& row : rows) {
        Texts found;
        std::string out;
        for (size_t pos = 0; MGFile::FindSubString(row.text, pos, "'", "'", out, row.escape);) found.push_back(out);
        EXPECT_EQ(found, row.found) << row.text;
    }
    std::string out;
    size_t pos = 0;
    EXPECT_TRUE(MGFile::FindSubString("a\nb", pos, "", "b", out, false)); // nor an endless search
}

} // namespace
