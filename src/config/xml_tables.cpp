// What an XML document can hold.
#include "config/xml_tables.h"

#include "app/mg_err.h"

#include <libxml/parserInternals.h>
#include <libxml/xmlstring.h>

#include <algorithm>

using namespace vorma;

namespace {

// The length of the character there, 0 if it is none that XML has. libxml2 decodes overlong forms and lone tails too,
// but writes each character in its one form.
size_t length_of_rare(const std::string& text, size_t at) {
    const auto* bytes = reinterpret_cast<const xmlChar*>(text.data()) + at;
    int length = static_cast<int>(std::min<size_t>(text.size() - at, 4));
    const int character = xmlGetUTF8Char(bytes, &length);
    if (character < 0 || !IS_CHAR(character)) return 0;
    xmlChar form[8];
    return xmlCopyChar(0, form, character) == length && std::equal(form, form + length, bytes) ? length : 0;
}

// The same. XML has all that nearly all texts consist of: ASCII from the blank on and characters of two bytes.
inline size_t length_of_storable(const std::string& text, size_t at) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(text.c_str()) + at; // a zero byte follows the last
    if (*bytes >= 0x20 && *bytes < 0x80) return 1;
    if (*bytes >= 0xC2 && *bytes < 0xE0 && (bytes[1] & 0xC0) == 0x80) return 2;
    return length_of_rare(text, at);
}

} // namespace

bool is_storable(const std::string& text) {
    for (size_t at = 0; at < text.size();) {
        const size_t length = length_of_storable(text, at);
        if (length == 0) return false;
        at += length;
    }
    return true;
}

std::string storable_text(const std::string& text) {
    return at_edge("storable_text", [&] {
        std::string kept;
        for (size_t at = 0; at < text.size();) {
            const size_t length = length_of_storable(text, at);
            kept.append(text, at, length);
            at += std::max<size_t>(length, 1);
        }
        return kept;
    });
}
