// Lets what is too large for the screen scroll.
#include "dialog/small_screens.h"

#include <algorithm>
#include <initializer_list>

namespace {

// For borders and a title, whoever draws them.
constexpr int frame_width = 16;
constexpr int frame_height = 64;

// On the monitor with the window's parent, since the window itself has none yet.
GtkRequisition screen_room(GtkWidget* window) {
    GtkWindow* parent = gtk_window_get_transient_for(GTK_WINDOW(window));
    GdkWindow* place = parent ? gtk_widget_get_window(GTK_WIDGET(parent)) : nullptr;
    GdkScreen* screen = gtk_widget_get_screen(window);
    GdkRectangle room;
    // What replaces these came only with version 3.22 of the toolkit.
    G_GNUC_BEGIN_IGNORE_DEPRECATIONS
    const int monitor =
        place ? gdk_screen_get_monitor_at_window(screen, place) : gdk_screen_get_primary_monitor(screen);
    gdk_screen_get_monitor_workarea(screen, monitor, &room);
    G_GNUC_END_IGNORE_DEPRECATIONS
    return {room.width - frame_width, room.height - frame_height};
}

bool fits(GtkWidget* window, const GtkRequisition& room) {
    GtkRequisition needed;
    gtk_widget_get_preferred_size(window, &needed, nullptr);
    return needed.width <= room.width && needed.height <= room.height;
}

void open_within(GtkWindow* window, const GtkRequisition& room) {
    int width = 0, height = 0;
    gtk_window_get_default_size(window, &width, &height);
    gtk_window_set_default_size(window, std::min(width, room.width), std::min(height, room.height));
}

// Without these, which the toolkit has since its version 3.22, the window would open at its smallest.
void ask_for_all_content(GtkScrolledWindow* content) {
    for (const char* property : {"propagate-natural-width", "propagate-natural-height"})
        if (g_object_class_find_property(G_OBJECT_GET_CLASS(content), property))
            g_object_set(content, property, TRUE, nullptr);
}

// A bar that stands beside the content takes its room even where there is nothing to scroll, and one that comes only
// with the pointer stays unseen: so the first where there is something to scroll, else the second.
void show_bar(GtkAdjustment* upright, gpointer column) {
    const bool scrolls = gtk_adjustment_get_upper(upright) > gtk_adjustment_get_page_size(upright);
    gtk_scrolled_window_set_overlay_scrolling(GTK_SCROLLED_WINDOW(column), !scrolls);
}

void arrange(GtkScrolledWindow* scrolled, bool whole) {
    GtkPolicyType sideways, upright;
    gtk_scrolled_window_get_policy(scrolled, &sideways, &upright);
    if (sideways != GTK_POLICY_NEVER) return;
    if (upright != GTK_POLICY_NEVER) {
        g_signal_connect(gtk_scrolled_window_get_vadjustment(scrolled), "changed", G_CALLBACK(show_bar), scrolled);
        return;
    }
    ask_for_all_content(scrolled);
    if (!whole) gtk_scrolled_window_set_policy(scrolled, GTK_POLICY_AUTOMATIC, GTK_POLICY_AUTOMATIC);
}

void shorten(GtkWidget* check) {
    GtkWidget* label = gtk_bin_get_child(GTK_BIN(check));
    gtk_label_set_ellipsize(GTK_LABEL(label), PANGO_ELLIPSIZE_END);
    gtk_widget_set_tooltip_text(check, gtk_label_get_text(GTK_LABEL(label)));
}

// Puts a widget of a box into a scrolled window of its own at its place; the box has nothing else to show.
GtkWidget* let_scroll(GtkWidget* widget, GtkPolicyType sideways) {
    GtkWidget* box = gtk_widget_get_parent(widget);
    GtkWidget* scrolled = gtk_scrolled_window_new(nullptr, nullptr);
    gtk_scrolled_window_set_policy(GTK_SCROLLED_WINDOW(scrolled), sideways, GTK_POLICY_AUTOMATIC);
    gtk_scrolled_window_set_overlay_scrolling(GTK_SCROLLED_WINDOW(scrolled), FALSE);
    g_object_ref(widget);
    gtk_container_remove(GTK_CONTAINER(box), widget);
    gtk_container_add(GTK_CONTAINER(scrolled), widget);
    g_object_unref(widget);
    gtk_viewport_set_shadow_type(GTK_VIEWPORT(gtk_bin_get_child(GTK_BIN(scrolled))), GTK_SHADOW_NONE); // takes no room
    gtk_box_pack_start(GTK_BOX(box), scrolled, TRUE, TRUE, 0);
    gtk_widget_show(scrolled);
    return scrolled;
}

GtkWidget* first_in(GtkWidget* box) {
    GList* children = gtk_container_get_children(GTK_CONTAINER(box));
    GtkWidget* first = GTK_WIDGET(children->data);
    g_list_free(children);
    return first;
}

} // namespace

void fit_to_screen(GtkBuilder* builder, GtkWidget* window) {
    const GtkRequisition room = screen_room(window);
    const bool whole = fits(window, room);
    open_within(GTK_WINDOW(window), room);
    GSList* objects = gtk_builder_get_objects(builder);
    for (GSList* item = objects; item; item = item->next) {
        if (!GTK_IS_WIDGET(item->data) || !gtk_widget_is_ancestor(GTK_WIDGET(item->data), window)) continue;
        if (GTK_IS_SCROLLED_WINDOW(item->data)) arrange(GTK_SCROLLED_WINDOW(item->data), whole);
        if (!whole && GTK_IS_CHECK_BUTTON(item->data)) shorten(GTK_WIDGET(item->data));
    }
    g_slist_free(objects);
}

void fit_to_screen(GtkMessageDialog* box) {
    const GtkRequisition room = screen_room(GTK_WIDGET(box));
    GtkWidget* text = first_in(gtk_message_dialog_get_message_area(box)); // the second one stays empty and unseen
    GtkRequisition whole, part;
    gtk_widget_get_preferred_size(GTK_WIDGET(box), nullptr, &whole);
    gtk_widget_get_preferred_size(text, nullptr, &part);
    if (whole.width <= room.width && whole.height <= room.height) return;
    const int width = std::min(whole.width, room.width) - (whole.width - part.width);
    int height = 0; // the text has more lines in less width
    gtk_widget_get_preferred_height_for_width(text, width, nullptr, &height);
    gtk_widget_set_size_request(let_scroll(text, GTK_POLICY_NEVER), width,
                                std::min(height, room.height - (whole.height - part.height)));
}

void fit_to_screen(GtkFileChooserDialog* chooser) {
    const GtkRequisition room = screen_room(GTK_WIDGET(chooser));
    if (!fits(GTK_WIDGET(chooser), room))
        let_scroll(first_in(gtk_dialog_get_content_area(GTK_DIALOG(chooser))), GTK_POLICY_AUTOMATIC);
    GdkGeometry limits{}; // the chooser sets its size itself, by the font
    limits.max_width = room.width;
    limits.max_height = room.height;
    gtk_window_set_geometry_hints(GTK_WINDOW(chooser), nullptr, &limits, GDK_HINT_MAX_SIZE);
}
