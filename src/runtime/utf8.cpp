// MGFile: the walk over UTF-8 text and the two alphabets whose case is known.
#include "runtime/mg_file.h"
#include "runtime/utf8_walk.h"

using namespace vorma;

namespace {

// The end of the first n characters, in bytes.
size_t end_of_characters(const std::string& text, size_t n) {
    size_t pos = 0, len = 0;
    while (n > 0 && MGFile::NextUtf8(text, pos, len)) --n;
    return pos + len;
}

// The two alphabets go by bytes of their own: they are what nearly all texts consist of.
template <bool to_upper>
std::string text_in_case(std::string text) {
    for (char *at = text.data(), *end = at + text.size(); at != end;) {
        const auto first = static_cast<unsigned char>(*at);
        if (first > 0 && first < 0x80) {
            *at++ = static_cast<char>(change_case(first, latin, to_upper));
        } else if ((first & 0xE0) == 0xC0 && end - at > 1 && (at[1] & 0xC0) == 0x80) {
            const char32_t c = in_case(at, 2, to_upper);
            *at++ = static_cast<char>(0xC0 | c >> 6);
            *at++ = static_cast<char>(0x80 | (c & 0x3F));
        } else {
            const size_t length = character_at({at, end}, 0);
            if (length == 0) break;
            at += length;
        }
    }
    return text;
}

} // namespace

bool MGFile::NextUtf8(const std::string& text, size_t& pos, size_t& len) {
    const size_t length = character_at(text, pos + len);
    if (length == 0) return false;
    pos += len;
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
    return at_edge("MGFile::UpperUtf8", [&] { return text_in_case<true>(text); });
}

std::string MGFile::LowerUtf8(const std::string& text) {
    return at_edge("MGFile::LowerUtf8", [&] { return text_in_case<false>(text); });
}

bool MGFile::CompareUtf8(const std::string& a, const std::string& b, bool case_sensitive) {
    return case_sensitive ? a == b : UpperUtf8(a) == UpperUtf8(b);
}
