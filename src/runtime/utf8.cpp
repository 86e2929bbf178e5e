// MGFile: the walk over UTF-8 text and the two alphabets whose case is known.
//
//     character    = %x01-7F / lead2 tail / lead3 tail tail / lead4 tail tail tail
//     lead2 = %xC0-DF   lead3 = %xE0-EF   lead4 = %xF0-F7   tail = %x80-BF
//
// Whatever else comes ends the walk as the end of the text does. Overlong forms and surrogates count as characters:
// nothing here turns bytes into code points that could then pass for others.
#include "runtime/mg_file.h"

using namespace vorma;

namespace {

// Length by the first byte, 0 if none begins with it.
size_t character_length(unsigned char first) {
    if (first == 0) return 0;
    if (first < 0x80) return 1;
    if (first < 0xC0) return 0;
    if (first < 0xE0) return 2;
    if (first < 0xF0) return 3;
    return first < 0xF8 ? 4 : 0;
}

// The end of the first n characters, in bytes.
size_t end_of_characters(const std::string& text, size_t n) {
    size_t pos = 0, len = 0;
    while (n > 0 && MGFile::NextUtf8(text, pos, len)) --n;
    return pos + len;
}

// A run of letters of one alphabet and its pair in the other case, in code points.
struct CaseRange {
    char32_t lower_first;
    char32_t lower_last;
    char32_t upper_first;
};

constexpr CaseRange latin = {'a', 'z', 'A'};
constexpr CaseRange russian[] = {{U'а', U'я', U'А'}, {U'ё', U'ё', U'Ё'}};

char32_t change_case(char32_t c, const CaseRange& range, bool to_upper) {
    const char32_t from = to_upper ? range.lower_first : range.upper_first;
    const char32_t to = to_upper ? range.upper_first : range.lower_first;
    return c >= from && c - from <= range.lower_last - range.lower_first ? c - from + to : c;
}

// The Russian letters are all of two bytes, and so are their pairs.
void change_russian(char* bytes, bool to_upper) {
    const char32_t c = static_cast<char32_t>((bytes[0] & 0x1F) << 6 | (bytes[1] & 0x3F));
    for (const CaseRange& range : russian) {
        const char32_t changed = change_case(c, range, to_upper);
        if (changed == c) continue;
        bytes[0] = static_cast<char>(0xC0 | changed >> 6);
        bytes[1] = static_cast<char>(0x80 | (changed & 0x3F));
        return;
    }
}

std::string in_case(std::string text, bool to_upper) {
    for (size_t pos = 0, len = 0; MGFile::NextUtf8(text, pos, len);) {
        if (len == 1)
            text[pos] = static_cast<char>(change_case(static_cast<unsigned char>(text[pos]), latin, to_upper));
        else if (len == 2)
            change_russian(&text[pos], to_upper);
    }
    return text;
}

} // namespace

bool MGFile::NextUtf8(const std::string& text, size_t& pos, size_t& len) {
    const size_t start = pos + len;
    if (start >= text.size()) return false;
    const size_t length = character_length(static_cast<unsigned char>(text[start]));
    if (length == 0 || length > text.size() - start) return false;
    for (size_t i = 1; i < length; ++i)
        if ((text[start + i] & 0xC0) != 0x80) return false;
    pos = start;
    len = length;
    return true;
}

size_t MGFile::NumberUtf8(const std::string& text) {
    size_t number = 0;
    for (size_t pos = 0, len = 0; NextUtf8(text, pos, len);) ++number;
    return number;
}

bool MGFile::IsUtf8String(const std::string& text) {
    return end_of_characters(text, text.size()) == text.size();
}

void MGFile::ShiftBeginUtf8(std::string& text, size_t n) {
    at_edge("MGFile::ShiftBeginUtf8", [&] { text.erase(0, end_of_characters(text, n)); });
}

void MGFile::CuttingEndUtf8(std::string& text, size_t n) {
    at_edge("MGFile::CuttingEndUtf8", [&] {
        const size_t number = NumberUtf8(text);
        text.resize(n >= number ? 0 : end_of_characters(text, number - n));
    });
}

void MGFile::CuttingEndIfMoreUtf8(std::string& text, size_t n) {
    at_edge("MGFile::CuttingEndIfMoreUtf8", [&] {
        if (NumberUtf8(text) > n) text.resize(end_of_characters(text, n));
    });
}

std::string MGFile::UpperUtf8(const std::string& text) {
    return at_edge("MGFile::UpperUtf8", [&] { return in_case(text, true); });
}

std::string MGFile::LowerUtf8(const std::string& text) {
    return at_edge("MGFile::LowerUtf8", [&] { return in_case(text, false); });
}

bool MGFile::CompareUtf8(const std::string& a, const std::string& b, bool case_sensitive) {
    return case_sensitive ? a == b : UpperUtf8(a) == UpperUtf8(b);
}
