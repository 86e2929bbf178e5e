// How tests drive windows. A call that opens a dialog blocks in a loop of its own until the dialog is answered, so what
// the user does is told before it:
//
//     script.when("dialog_queue", enter("entry_id=1;button_ok")).remark("Введите идентификатор.");
//     edit_queue();
//
// Steps come in their order, each once its window takes the input and the toolkit has nothing else to do. A step that
// never came fails the test at the end of the scope; one that does not come in time, a window that nobody expects and a
// lookup of a missing id end the program, with a word about it. Every warning of the toolkit fails the test.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <gtk/gtk.h>

#include <deque>
#include <functional>
#include <string>
#include <vector>

using Rows = std::vector<std::vector<std::string>>;

// A window and what a user can do to it; widgets are named by their ids in the interface definition.
class UiWindow {
public:
    explicit UiWindow(GtkWidget* window) : window_(window) {}

    GtkWidget* widget() const { return window_; }
    GtkWidget* find(const std::string& id) const;
    std::string title() const;
    std::string focus() const; // id of the widget that has the focus

    void click(const std::string& id) const; // a button, tool button or menu item; it must be sensitive
    // As the window's close button; takes effect in the main loop.
    void close() const { gtk_window_close(GTK_WINDOW(window_)); }

    void set_entry(const std::string& id, const std::string& text) const {
        gtk_entry_set_text(GTK_ENTRY(find(id)), text.c_str());
    }
    std::string entry(const std::string& id) const { return gtk_entry_get_text(GTK_ENTRY(find(id))); }
    // The secondary one.
    void press_icon(const std::string& entry_id) const {
        g_signal_emit_by_name(find(entry_id), "icon-press", GTK_ENTRY_ICON_SECONDARY, nullptr);
    }
    void set_spin(const std::string& id, double value) const {
        gtk_spin_button_set_value(GTK_SPIN_BUTTON(find(id)), value);
    }
    double spin(const std::string& id) const { return gtk_spin_button_get_value(GTK_SPIN_BUTTON(find(id))); }
    // Of check and radio buttons.
    void set_toggle(const std::string& id, bool on) const {
        gtk_toggle_button_set_active(GTK_TOGGLE_BUTTON(find(id)), on);
    }
    bool toggle(const std::string& id) const { return gtk_toggle_button_get_active(GTK_TOGGLE_BUTTON(find(id))); }
    void set_combo(const std::string& id, const std::string& row_id) const;
    std::string combo(const std::string& id) const; // id of the active row
    std::vector<std::string> combo_rows(const std::string& id) const;
    // What a user gives, in order: "entry_ip=10.0.0.1;check_active=1;spin_port=7;button_ok".
    void enter(const std::string& input) const;
    std::string label(const std::string& id) const { return gtk_label_get_text(GTK_LABEL(find(id))); }
    bool sensitive(const std::string& id) const { return gtk_widget_is_sensitive(find(id)); }

    void select(const std::string& view_id, const std::vector<int>& rows) const; // these and no others
    void activate_row(const std::string& view_id, int row) const;                // a double click
    void toggle_cell(const std::string& view_id, int row, int view_column = 0) const;
    // The cells as they are shown, flags as "0" and "1".
    Rows table(const std::string& view_id) const;
    // All that the window shows on all its pages: of an input its label, its value or the rows of its list, and whether
    // it is open; of a view its titles and its cells.
    Rows screen() const;

private:
    GtkWidget* window_;
};

inline std::function<void(UiWindow)> enter(std::string input) {
    return [input = std::move(input)](UiWindow window) { window.enter(input); };
}

// A press of OK on what is given so far: the box and the focus that it leads to. Without a text it is accepted.
struct Check {
    std::string input;
    std::string text = "", focus = "";
    bool refusal = false; // the box is titled "Ошибка"
};
std::vector<Check> checks_of(const std::string& name); // in golden/refusals.txt

class UiScript {
public:
    UiScript() = default;
    ~UiScript();

    // When the window `id` takes the input: alone, or as the modal one on top.
    UiScript& when(const std::string& id, std::function<void(UiWindow)> act);

    // The same window several times, each with a press of this button.
    UiScript& checks(const std::string& id, const std::string& ok, const std::vector<Check>& checks);

    // When a message box is up: it must be as told, and is answered. The text may be a matcher.
    UiScript& box(const std::string& title, testing::Matcher<std::string> text, GtkMessageType type, int response);
    UiScript& remark(testing::Matcher<std::string> text);  // "Сообщение", OK
    UiScript& refusal(testing::Matcher<std::string> text); // "Ошибка", OK
    UiScript& question(testing::Matcher<std::string> text, int response);

    // When a file chooser is up: takes this file, folder, or name to save under, and accepts.
    UiScript& choose(const std::string& title, const std::string& path);
    UiScript& cancel_chooser(const std::string& title);

    bool finished() const { return steps_.empty(); } // all steps came

private:
    struct Step {
        std::string what;
        std::function<GtkWidget*()> ready; // the window that was waited for, or null
        std::function<void(UiWindow)> act;
    };

    UiScript& add(Step step);
    void arm();
    void disarm();
    gboolean look() noexcept; // what a step throws must not pass through the toolkit

    std::deque<Step> steps_;
    guint look_source_ = 0;
    guint watchdog_ = 0;
};

// The texts that a screen reader says before the input, joined.
std::string spoken_label(GtkWidget* input);
// The modal window that takes the input; null if there is none.
GtkWidget* modal_window();
std::vector<std::string> texts_of(GtkTreeModel* model); // of its rows, first column
std::string id_of(gpointer object); // in the interface definition; the name of its type where it has none
void settle();                      // until the toolkit has nothing else to do
void press_key(GtkWidget* window, guint key, guint state = 0); // where the window has the focus
// From here on: a size in points; 36 are to the display of tests what 22 are to a screen of 800 x 640. 0 is the usual
// one.
void set_font(int points);
