#include "runtime/mg_file.h"

#include <gtest/gtest.h>

#include <climits>
#include <clocale>
#include <cwchar>
#include <cwctype>
#include <fnmatch.h>
#include <random>

namespace {

TEST(Utf8, WalkEndsAtWhatIsNoCharacter) {
    const struct {
        std::string text;
        size_t number;
        bool valid;
    } rows[] = {
        {"aя€\xF0\x9F\x98\x80", 4, true},
        {"\x7F\xDF\xBF\xEF\xBF\xBF\xF7\xBF\xBF\xBF", 4, true},         // the last of each length
        {"\xC0\x80\xE0\x80\x80\xF0\x80\x80\x80\xED\xA0\x80", 4, true}, // overlong forms and a surrogate
        {"Прив\xD0", 4, false},                                        // ends inside a character
        {"a\x80z", 1, false},                                          // a tail without a head
        {"a\xF8\x80\x80\x80\x80z", 1, false},
        {"a\xE2\x82zz", 1, false}, // a head without its tail
        {std::string("a\0z", 3), 1, false},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(MGFile::NumberUtf8(row.text), row.number) << row.text;
        EXPECT_EQ(MGFile::IsUtf8String(row.text), row.valid) << row.text;
    }
}

std::string utf8(wint_t c) {
    char bytes[MB_LEN_MAX];
    std::mbstate_t state = {};
    return {bytes, std::wcrtomb(bytes, static_cast<wchar_t>(c), &state)};
}

// Every character of one to three bytes, against the C library's own case table.
TEST(Utf8, CaseIsOfLatinAndRussianLettersOnly) {
    ASSERT_TRUE(std::setlocale(LC_CTYPE, "C.UTF-8"));
    for (wint_t c = 1; c < 0x10000; ++c) {
        if (c >= 0xD800 && c < 0xE000) continue;
        const bool has_case = (c < 0x80 && std::iswalpha(c)) || (c >= L'А' && c <= L'я') || c == L'ё' || c == L'Ё';
        ASSERT_EQ(MGFile::UpperUtf8(utf8(c)), utf8(has_case ? std::towupper(c) : c)) << c;
        ASSERT_EQ(MGFile::LowerUtf8(utf8(c)), utf8(has_case ? std::towlower(c) : c)) << c;
    }
    std::setlocale(LC_CTYPE, "C");
    EXPECT_EQ(MGFile::UpperUtf8("ёлка \xFF abc"), "ЁЛКА \xFF abc");
}

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
        {"Ёлка.TXT", "ё*.txt", true, false},
        {"a\xFFz", "a*", true, true},
        {"abc", "ab\xFF*", false, false}, // the mask is "ab"
        {"\xD0", "?", false, false},      // half a character is none
    };
    for (const auto& row : rows) {
        EXPECT_EQ(MGFile::CompareMaskUtf8(row.text, row.mask, false), row.blind) << row.text << " " << row.mask;
        EXPECT_EQ(MGFile::CompareMaskUtf8(row.text, row.mask, true), row.exact) << row.text << " " << row.mask;
    }
}

} // namespace
