// The pointer, and what becomes of the display's events meanwhile.
#include "dialog/busy.h"

#include <gtk/gtk.h>

namespace {

constexpr gint64 patience = 300'000; // microseconds

int works = 0; // one within another
gint64 began = 0;
bool shown = false;
GQueue kept = G_QUEUE_INIT; // what is not pressing, for the main loop

void set_pointer(const char* name) {
    GList* windows = gtk_window_list_toplevels();
    for (GList* row = windows; row; row = row->next) {
        GdkWindow* window = gtk_widget_get_window(GTK_WIDGET(row->data));
        if (!window || !gtk_widget_get_mapped(GTK_WIDGET(row->data))) continue;
        GdkCursor* cursor = name ? gdk_cursor_new_from_name(gdk_window_get_display(window), name) : nullptr;
        gdk_window_set_cursor(window, cursor);
        if (cursor) g_object_unref(cursor);
    }
    g_list_free(windows);
}

bool is_pressing(const GdkEvent* event) {
    switch (event->type) {
    case GDK_KEY_PRESS:
    case GDK_BUTTON_PRESS:
    case GDK_2BUTTON_PRESS:
    case GDK_3BUTTON_PRESS:
    case GDK_TOUCH_BEGIN:
    case GDK_SCROLL:
    case GDK_DELETE:
        return true;
    default:
        return false;
    }
}

// Uncovered parts are noted when their event is taken in. A release stays behind: its press came before the work.
void take_events() {
    while (GdkEvent* event = gdk_event_get()) {
        if (is_pressing(event))
            gdk_event_free(event);
        else
            g_queue_push_tail(&kept, event);
    }
}

void redraw() {
    G_GNUC_BEGIN_IGNORE_DEPRECATIONS // the frame clock, which is to be used instead, needs the main loop
    gdk_window_process_all_updates();
    G_GNUC_END_IGNORE_DEPRECATIONS
    gdk_display_flush(gdk_display_get_default());
}

} // namespace

Busy::Busy() {
    if (works++ == 0) began = g_get_monotonic_time();
}

Busy::~Busy() {
    if (--works > 0 || !shown) return;
    take_events();
    while (auto* event = static_cast<GdkEvent*>(g_queue_pop_head(&kept))) {
        gdk_event_put(event);
        gdk_event_free(event);
    }
    set_pointer(nullptr);
    shown = false;
}

void Busy::step() noexcept {
    if (works == 0 || g_get_monotonic_time() - began < patience) return;
    if (!shown) set_pointer("wait");
    shown = true;
    take_events();
    redraw();
}
