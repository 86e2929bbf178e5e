// What an XML document can hold.
#include "config/xml_tables.h"

#include "app/mg_err.h"

#include <libxml/parserInternals.h>
#include <libxml/xmlstring.h>

#include <algorithm>

using namespace vorma;

namespace {

// Printable ASCII and the like, which nearly all texts consist of.
bool is_always_storable(unsigned char c) {
    return c >= 0x20 && c < 0x80;
}

// The length of the character there, 0 if it is none that XML has. libxml2 decodes overlong forms and lone tails too,
// but writes each character in its one form.
size_t length_of_storable(const std::string& text, size_t at) {
    const auto* bytes = reinterpret_cast<const xmlChar*>(text.data()) + at;
    int length = static_cast<int>(std::min<size_t>(text.size() - at, 4));
    const int character = xmlGetUTF8Char(bytes, &length);
    if (character < 0 || !IS_CHAR(character)) return 0;
    xmlChar form[8];
    return xmlCopyChar(0, form, character) == length && std::equal(form, form + length, bytes) ? length : 0;
}

} // namespace

std::string storable_text(const std::string& text) {
    return at_edge("storable_text", [&] {
        if (std::all_of(text.begin(), text.end(), is_always_storable)) return text;
        std::string kept;
        for (size_t at = 0; at < text.size();) {
            const size_t length = length_of_storable(text, at);
            kept.append(text, at, length);
            at += std::max<size_t>(length, 1);
        }
        return kept;
    });
}
