// What an XML document can hold.
#include "config/xml_tables.h"

#include <libxml/parserInternals.h>
#include <libxml/xmlstring.h>

#include <algorithm>

namespace {

// Printable ASCII and the like, which nearly all texts consist of.
bool is_always_storable(unsigned char c) {
    return c >= 0x20 && c < 0x80;
}

} // namespace

std::string storable_text(const std::string& text) {
    if (std::all_of(text.begin(), text.end(), is_always_storable)) return text;
    std::string kept;
    for (size_t at = 0; at < text.size();) {
        int length = static_cast<int>(std::min<size_t>(text.size() - at, 4));
        const int character = xmlGetUTF8Char(reinterpret_cast<const unsigned char*>(text.data()) + at, &length);
        if (character < 0) {
            ++at; // no UTF-8
            continue;
        }
        if (IS_CHAR(character)) kept.append(text, at, static_cast<size_t>(length));
        at += static_cast<size_t>(length);
    }
    return kept;
}
