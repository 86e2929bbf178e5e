#include "runtime/mg_file.h"

#include <gtest/gtest.h>

#include <fnmatch.h>
#include <random>

namespace {

// The C library's matcher knows the same two wildcards; it gets one byte for each of our characters.
TEST(Masks, AgreeWithTheCLibrary) {
    const std::vector<std::string> ours = {"a", "я", "€", "😀", "*", "*", "?"};
    const std::string plain = "abcd**?";
    std::mt19937 random(20240229);
    int matches = 0;
    for (int i = 0; i < 100000; ++i) {
        std::string text, mask, plain_text, plain_mask;
        for (size_t left = random() % 8; left > 0; --left) {
            const size_t at = random() % 4;
            text += ours[at];
            plain_text += plain[at];
        }
        for (size_t left = random() % 7; left > 0; --left) {
            const size_t at = random() % ours.size();
            mask += ours[at];
            plain_mask += plain[at];
        }
        const bool expected = fnmatch(plain_mask.c_str(), plain_text.c_str(), 0) == 0;
        ASSERT_EQ(MGFile::CompareMaskUtf8(text, mask, true), expected) << text << " against " << mask;
        matches += expected;
    }
    EXPECT_GT(matches, 5000);
}

TEST(Masks, CaseAndInvalidText) {
    const struct {
        std::string text, mask;
        bool blind, exact;
    } rows[] = {
        {"ПРИВЕТ", "п?ивет", true, false},   {"Ёлка.TXT", "ё*.txt", true, false}, {"ÄÖ", "äö", false, false},
        {"a\xFFz", "a*", true, true},        {"abc", "ab\xFF*", false, false}, // the mask is "ab"
        {"anything", "\xFF*", false, false},                                   // the mask is empty
        {"\xD0", "?", false, false},                                           // half a character is none
        {"\xFF", "*", true, true},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(MGFile::CompareMaskUtf8(row.text, row.mask, false), row.blind) << row.text << " " << row.mask;
        EXPECT_EQ(MGFile::CompareMaskUtf8(row.text, row.mask, true), row.exact) << row.text << " " << row.mask;
    }
}

} // namespace
