// What an input was given stands until the user touches it: an entry shows no more than the beginning of a text that is
// too long for it, a spin button the nearest number within its limits. On the toolkit's thread only.
#pragma once

#include <gtk/gtk.h>

inline constexpr const char* kept_value_key = "vorma-kept-value";

inline void forget_value(GtkEntry* input, gpointer) {
    g_signal_handlers_disconnect_by_func(input, reinterpret_cast<gpointer>(forget_value), nullptr);
    g_object_set_data(G_OBJECT(input), kept_value_key, nullptr);
}

// Called once the input shows the value as far as it can. Any change of the shown text ends it, also a change back.
inline void keep_value(GtkEntry* input, const char* value) {
    forget_value(input, nullptr);
    g_object_set_data_full(G_OBJECT(input), kept_value_key, g_strdup(value), g_free);
    g_signal_connect(input, "changed", G_CALLBACK(forget_value), nullptr);
}

// Owned by the input; null once that was touched.
inline const char* kept_value(GtkEntry* input) {
    return input ? static_cast<const char*>(g_object_get_data(G_OBJECT(input), kept_value_key)) : nullptr;
}
