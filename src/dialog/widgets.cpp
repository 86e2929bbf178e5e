// Members of MGDialog that reach one widget by its id.
#include "dialog/input_habits.h"
#include "dialog/into_view.h"
#include "dialog/kept_value.h"
#include "dialog/mg_dialog.h"
#include "dialog/valid_text.h"

// --- Labels, entries ---

void MGDialog::SetLabel(const char* id, const char* text) {
    if (id && text) gtk_label_set_text(GTK_LABEL(GetObject(id)), ValidText(text).get());
}

const char* MGDialog::GetLabel(const char* id) const {
    return id ? gtk_label_get_text(GTK_LABEL(GetObject(id))) : nullptr;
}

void MGDialog::SetEntry(const char* id, const char* text) {
    if (!id || !text) return;
    GtkEntry* entry = GTK_ENTRY(GetObject(id));
    const GtkText value(g_strdup(text)); // the given one may be the entry's own
    set_entry_text(entry, ValidText(value.get()).get());
    if (entry) keep_value(entry, value.get());
}

const char* MGDialog::GetEntry(const char* id) const {
    if (!id) return "";
    GtkEntry* entry = GTK_ENTRY(GetObject(id));
    if (const char* untouched = kept_value(entry)) return untouched;
    const char* text = gtk_entry_get_text(entry);
    return text ? text : "";
}

void MGDialog::SetEntryVisible(const char* id) {
    if (id) gtk_entry_set_visibility(GTK_ENTRY(GetObject(id)), TRUE);
}

void MGDialog::SetEntryInvisible(const char* id) {
    if (id) gtk_entry_set_visibility(GTK_ENTRY(GetObject(id)), FALSE);
}

// --- Buttons, focus, adjustments ---

void MGDialog::ToggleButtonSet(const char* id, bool value) {
    if (id) gtk_toggle_button_set_active(GTK_TOGGLE_BUTTON(GetObject(id)), value);
}

bool MGDialog::ToggleButtonGet(const char* id) const {
    return id && gtk_toggle_button_get_active(GTK_TOGGLE_BUTTON(GetObject(id)));
}

void MGDialog::SetFocusToProblemWidget(const char* id) {
    if (id) focus_problem(GTK_WIDGET(GetObject(id)));
}

void MGDialog::SpinSetMax(const char* id, double value) {
    if (id) gtk_adjustment_set_upper(GTK_ADJUSTMENT(GetObject(id)), value);
}

void MGDialog::SpinSetMin(const char* id, double value) {
    if (id) gtk_adjustment_set_lower(GTK_ADJUSTMENT(GetObject(id)), value);
}

void MGDialog::SpinSet(const char* id, double value) {
    if (id) gtk_adjustment_set_value(GTK_ADJUSTMENT(GetObject(id)), value);
}

int32_t MGDialog::SpinGet(const char* id) const {
    // A typed number reaches the adjustment once the focus leaves, and a key that presses OK leaves it where it is.
    GtkWidget* focus = window ? gtk_window_get_focus(GTK_WINDOW(window)) : nullptr;
    if (GTK_IS_SPIN_BUTTON(focus)) gtk_spin_button_update(GTK_SPIN_BUTTON(focus));
    return id ? static_cast<int32_t>(gtk_adjustment_get_value(GTK_ADJUSTMENT(GetObject(id)))) : 0;
}

// --- Any widget, stack, switch ---

void MGDialog::SetSensitive(const char* id, bool value) {
    if (id) gtk_widget_set_sensitive(GTK_WIDGET(GetObject(id)), value);
}

bool MGDialog::GetSensitive(const char* id) const {
    return id && gtk_widget_get_sensitive(GTK_WIDGET(GetObject(id)));
}

void MGDialog::WidgetHide(const char* id) {
    if (id) gtk_widget_hide(GTK_WIDGET(GetObject(id)));
}

void MGDialog::WidgetShow(const char* id) {
    if (id) gtk_widget_show(GTK_WIDGET(GetObject(id)));
}

void MGDialog::StackSetVisibleChild(const char* stack_id, const char* child_id) {
    GObject* stack = GetObject(stack_id);
    GObject* child = GetObject(child_id);
    if (stack && child) gtk_stack_set_visible_child(GTK_STACK(stack), GTK_WIDGET(child));
}

void MGDialog::SetSwitch(const char* id, bool value) {
    if (id) gtk_switch_set_active(GTK_SWITCH(GetObject(id)), value);
}

bool MGDialog::GetSwitch(const char* id) const {
    return id && gtk_switch_get_active(GTK_SWITCH(GetObject(id)));
}

// --- Calendar, progress ---

void MGDialog::GetCalendar(const char* id, int32_t* year, int32_t* month, int32_t* day) const {
    if (!id) return;
    guint calendar_year = 0, month_from_0 = 0, calendar_day = 0;
    GObject* calendar = GetObject(id);
    gtk_calendar_get_date(GTK_CALENDAR(calendar), &calendar_year, &month_from_0, &calendar_day);
    if (!calendar) return;
    *year = static_cast<int32_t>(calendar_year);
    *month = static_cast<int32_t>(month_from_0) + 1;
    *day = static_cast<int32_t>(calendar_day);
}

void MGDialog::SetCalendar(const char* id, int32_t year, int32_t month, int32_t day) {
    if (!id) return;
    GtkCalendar* calendar = GTK_CALENDAR(GetObject(id));
    gtk_calendar_select_month(calendar, static_cast<guint>(month - 1), static_cast<guint>(year));
    gtk_calendar_select_day(calendar, static_cast<guint>(day));
}

void MGDialog::SetProgress(const char* id, double fraction) {
    if (!id) return;
    gtk_progress_bar_set_fraction(GTK_PROGRESS_BAR(GetObject(id)), fraction);
    while (gtk_events_pending()) gtk_main_iteration();
}

bool MGDialog::SetProgressExt(const char* bar_id, const char* stop_id, int32_t total, int32_t index) {
    SetProgress(bar_id, (index + 1.0) / total);
    return ToggleButtonGet(stop_id);
}

void MGDialog::SetNullProgressExt(const char* bar_id, const char* stop_id) {
    SetProgress(bar_id, 0.0);
    ToggleButtonSet(stop_id, false);
}

// --- Text buffer, file chooser button ---

void MGDialog::SetBuffer(const char* id, const char* text) {
    if (id && text) gtk_text_buffer_set_text(GTK_TEXT_BUFFER(GetObject(id)), ValidText(text).get(), -1);
}

void MGDialog::SetBufferString(const char* id, const std::string& text) {
    SetBuffer(id, text.c_str());
}

void MGDialog::FileChooserTitleSet(const char* id, const char* title) {
    if (id) gtk_file_chooser_button_set_title(GTK_FILE_CHOOSER_BUTTON(GetObject(id)), title);
}

char* MGDialog::FileChooserGetFilename(const char* id) const {
    return id ? gtk_file_chooser_get_filename(GTK_FILE_CHOOSER(GetObject(id))) : nullptr;
}

void MGDialog::FileChooserSetFilename(const char* id, const char* path) {
    if (id) gtk_file_chooser_set_filename(GTK_FILE_CHOOSER(GetObject(id)), path);
}
