// Pages and scrolled areas around a widget.
#include "dialog/into_view.h"

namespace {

// The choice in the title of a closed frame, which opens the widgets in it; null if there is none.
GtkWidget* opener_of(GtkWidget* widget) {
    for (GtkWidget* parent = widget; parent; parent = gtk_widget_get_parent(parent)) {
        GtkWidget* title = GTK_IS_FRAME(parent) ? gtk_frame_get_label_widget(GTK_FRAME(parent)) : nullptr;
        if (GTK_IS_TOGGLE_BUTTON(title) && gtk_widget_is_sensitive(title)) return title;
    }
    return nullptr;
}

void show_page_of(GtkWidget* widget) {
    GtkWidget* page = widget;
    for (GtkWidget* parent = gtk_widget_get_parent(page); parent; parent = gtk_widget_get_parent(page)) {
        if (GTK_IS_NOTEBOOK(parent))
            gtk_notebook_set_current_page(GTK_NOTEBOOK(parent), gtk_notebook_page_num(GTK_NOTEBOOK(parent), page));
        page = parent;
    }
}

} // namespace

// The toolkit itself scrolls only to what can have the focus.
void scroll_into_view(GtkWidget* widget) {
    GtkWidget* viewport = gtk_widget_get_ancestor(widget, GTK_TYPE_VIEWPORT);
    int top = 0; // below the upper edge of what is shown
    if (!viewport || !gtk_widget_translate_coordinates(widget, viewport, 0, 0, nullptr, &top)) return;
    GtkAdjustment* scrolled = gtk_scrollable_get_vadjustment(GTK_SCROLLABLE(viewport));
    const double from = top + gtk_adjustment_get_value(scrolled);
    gtk_adjustment_clamp_page(scrolled, from, from + gtk_widget_get_allocated_height(widget));
}

void focus_problem(GtkWidget* widget) {
    GtkWidget* opener = widget && !gtk_widget_is_sensitive(widget) ? opener_of(widget) : nullptr;
    if (widget) show_page_of(widget); // a widget on a hidden page can have the focus, but the user would not see it
    gtk_widget_grab_focus(opener ? opener : widget);
    if (widget) scroll_into_view(widget);
}
