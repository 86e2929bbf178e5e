// Finding what a user types within the texts that a list shows. On the toolkit's thread only.
#pragma once

#include "dialog/gtk_owner.h"

#include <cstring>

// The text as it is compared: what looks alike is alike, whatever its case. Null if it is no UTF-8.
inline GtkText folded(const char* text) {
    const GtkText normalized(g_utf8_normalize(text, -1, G_NORMALIZE_ALL));
    return GtkText(normalized ? g_utf8_casefold(normalized.get(), -1) : nullptr);
}

// Whether the text holds the key, which is folded already.
inline bool contains(const char* text, const char* key) {
    if (g_str_is_ascii(text)) return strcasestr(text, key); // most rows, and much faster
    const GtkText folded_text = folded(text);
    return folded_text && std::strstr(folded_text.get(), key);
}
