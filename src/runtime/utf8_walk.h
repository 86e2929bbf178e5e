// The walk over UTF-8 text and the two alphabets whose case is known, for the sources that go through text in bulk.
//
//     character    = %x01-7F / lead2 tail / lead3 tail tail / lead4 tail tail tail
//     lead2 = %xC0-DF   lead3 = %xE0-EF   lead4 = %xF0-F7   tail = %x80-BF
//
// Whatever else comes ends the walk as the end of the text does. Overlong forms and surrogates count as characters:
// nothing here turns bytes into code points that could then pass for others.
#pragma once

#include <cstddef>
#include <string_view>

namespace vorma {

// The length of a character by its first byte, 0 if none begins with it.
inline size_t character_length(unsigned char first) {
    if (first == 0) return 0;
    if (first < 0x80) return 1;
    if (first < 0xC0) return 0;
    if (first < 0xE0) return 2;
    if (first < 0xF0) return 3;
    return first < 0xF8 ? 4 : 0;
}

// The length of the character that stands at `at`, 0 if there is none that is valid.
inline size_t character_at(std::string_view text, size_t at) {
    if (at >= text.size()) return 0;
    const size_t length = character_length(static_cast<unsigned char>(text[at]));
    if (length > text.size() - at) return 0;
    for (size_t i = 1; i < length; ++i)
        if ((text[at + i] & 0xC0) != 0x80) return 0;
    return length;
}

// A run of letters of one alphabet and its pair in the other case, in code points.
struct CaseRange {
    char32_t lower_first;
    char32_t lower_last;
    char32_t upper_first;
};

inline constexpr CaseRange latin = {'a', 'z', 'A'};
// All of two bytes, and so are their pairs.
inline constexpr CaseRange russian[] = {{U'а', U'я', U'А'}, {U'ё', U'ё', U'Ё'}};

inline char32_t change_case(char32_t c, const CaseRange& range, bool to_upper) {
    const char32_t from = to_upper ? range.lower_first : range.upper_first;
    const char32_t to = to_upper ? range.upper_first : range.lower_first;
    return c >= from && c - from <= range.lower_last - range.lower_first ? c - from + to : c;
}

// The code point of a character of `length` bytes, 1 or 2, in one case.
inline char32_t in_case(const char* bytes, size_t length, bool to_upper) {
    if (length == 1) return change_case(static_cast<unsigned char>(*bytes), latin, to_upper);
    const char32_t c = static_cast<char32_t>((bytes[0] & 0x1F) << 6 | (bytes[1] & 0x3F));
    const char32_t changed = change_case(c, russian[0], to_upper);
    return changed != c ? changed : change_case(c, russian[1], to_upper);
}

} // namespace vorma
