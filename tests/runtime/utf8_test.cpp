#include "runtime/mg_file.h"

#include <gtest/gtest.h>

#include <climits>
#include <clocale>
#include <cwchar>
#include <cwctype>

namespace {

TEST(Utf8, WalkEndsAtWhatIsNoCharacter) {
    const struct {
        std::string text;
        size_t number;
        bool valid;
    } rows[] = {
        {"", 0, true},
        {"aя€\xF0\x9F\x98\x80", 4, true},
        {"\x7F\xDF\xBF\xEF\xBF\xBF\xF7\xBF\xBF\xBF", 4, true},         // the last of each length
        {"\xC0\x80\xE0\x80\x80\xF0\x80\x80\x80\xED\xA0\x80", 4, true}, // overlong forms and a surrogate
        {"Прив\xD0", 4, false},                                        // ends inside a character
        {"a\xF0\x9F\x98", 1, false},
        {"a\x80z", 1, false}, // a tail without a head
        {"a\xF8\x80\x80\x80\x80z", 1, false},
        {"a\xE2\x82zz", 1, false}, // a head without its tail
        {std::string("a\0z", 3), 1, false},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(MGFile::NumberUtf8(row.text), row.number) << row.text;
        EXPECT_EQ(MGFile::IsUtf8String(row.text), row.valid) << row.text;
    }
}

TEST(Utf8, CutsAtCharacters) {
    const struct {
        std::string text;
        size_t n;
        std::string parts; // without the first n, without the last n, at most n
    } rows[] = {{"Привет", 2, "ивет|Прив|Пр"},
                {"Привет", 0, "Привет|Привет|"},
                {"я", 9, "||я"},
                {"abя\xFFz", 2, "я\xFFz|a|ab"}};
    for (const auto& row : rows) {
        std::string shifted = row.text, cut = row.text, kept = row.text;
        MGFile::ShiftBeginUtf8(shifted, row.n);
        MGFile::CuttingEndUtf8(cut, row.n);
        MGFile::CuttingEndIfMoreUtf8(kept, row.n);
        EXPECT_EQ(shifted + "|" + cut + "|" + kept, row.parts) << row.text;
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

} // namespace
