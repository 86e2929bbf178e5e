// Mends the toolkit's spin buttons.
#include "dialog/number_habits.h"

#include "dialog/gtk_owner.h"
#include "dialog/into_view.h"

#include <charconv>
#include <limits>
#include <optional>
#include <string_view>

namespace {

constexpr const char* corrected_key = "vorma-corrected-number"; // set while what is shown isn't what was typed

// The number that stands in the button's text; none if there is more or less than one.
std::optional<double> typed_number(GtkSpinButton* button) {
    const GtkText copy(g_strdup(gtk_entry_get_text(GTK_ENTRY(button))));
    const std::string_view text = g_strstrip(copy.get());
    long long number = 0;
    const auto [end, error] = std::from_chars(text.begin(), text.end(), number);
    if (end != text.end() || error == std::errc::invalid_argument) return std::nullopt;
    if (error == std::errc::result_out_of_range)
        return text.starts_with('-') ? std::numeric_limits<double>::lowest() : std::numeric_limits<double>::max();
    return static_cast<double>(number);
}

// Whenever the button takes its text; it then brings the number within its limits.
int take_number(GtkSpinButton* button, double* value, gpointer) {
    double low = 0, high = 0;
    gtk_spin_button_get_range(button, &low, &high);
    const std::optional<double> number = typed_number(button);
    *value = number.value_or(gtk_adjustment_get_value(gtk_spin_button_get_adjustment(button)));
    if (!number || *number < low || *number > high) g_object_set_data(G_OBJECT(button), corrected_key, button);
    return TRUE;
}

// The user types on.
void forget_correction(GtkSpinButton* button, gpointer) {
    if (typed_number(button) != gtk_adjustment_get_value(gtk_spin_button_get_adjustment(button)))
        g_object_set_data(G_OBJECT(button), corrected_key, nullptr);
}

gboolean tell_limits(GtkWidget* button, int, int, gboolean, GtkTooltip* tooltip, gpointer) {
    double low = 0, high = 0;
    gtk_spin_button_get_range(GTK_SPIN_BUTTON(button), &low, &high);
    const GtkText text(g_strdup_printf("Число от %.0f до %.0f", low, high));
    gtk_tooltip_set_text(tooltip, text.get());
    return TRUE;
}

void find_corrected(GtkWidget* widget, gpointer found) {
    GtkWidget*& first = *static_cast<GtkWidget**>(found);
    if (GTK_IS_SPIN_BUTTON(widget)) {
        gtk_spin_button_update(GTK_SPIN_BUTTON(widget)); // a key that presses OK leaves the focus, and the text, there
        if (!first && g_object_steal_data(G_OBJECT(widget), corrected_key)) first = widget;
    } else if (GTK_IS_CONTAINER(widget)) {
        gtk_container_foreach(GTK_CONTAINER(widget), find_corrected, found);
    }
}

} // namespace

void mend_number(GtkSpinButton* button) {
    g_signal_connect(button, "input", G_CALLBACK(take_number), nullptr);
    g_signal_connect(button, "changed", G_CALLBACK(forget_correction), nullptr);
    gtk_widget_set_has_tooltip(GTK_WIDGET(button), TRUE);
    g_signal_connect(button, "query-tooltip", G_CALLBACK(tell_limits), nullptr);
}

bool shows_corrected_number(GtkWindow* window) {
    GtkWidget* corrected = nullptr;
    find_corrected(GTK_WIDGET(window), &corrected);
    if (!corrected) return false;
    focus_problem(corrected);
    gtk_editable_select_region(GTK_EDITABLE(corrected), 0, -1);
    return true;
}
