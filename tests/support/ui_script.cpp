// The steps of a script as sources of the main loop, what a user can do to a window, and the program around the tests:
// it starts the toolkit, whose warnings fail tests, then GoogleTest.
#include "support/ui_script.h"

#include "support/temp_dir.h"

#include <algorithm>
#include <iterator>
#include <regex>
#include <sstream>
#include <utility>

namespace {

constexpr guint limit_seconds = 240; // of a wait, on the busiest machine; reached in tests that fail alone
constexpr const char* answered = "answered";

std::string text_or_empty(const char* text) {
    return text ? text : "";
}

std::string taken(char* text) {
    const std::string result = text_or_empty(text);
    g_free(text);
    return result;
}

// Adds the widget and all within it; of a stack only the page in front.
void collect(GtkWidget* widget, gpointer widgets) {
    static_cast<std::vector<GtkWidget*>*>(widgets)->push_back(widget);
    if (GTK_IS_MENU_ITEM(widget))
        if (GtkWidget* submenu = gtk_menu_item_get_submenu(GTK_MENU_ITEM(widget))) collect(submenu, widgets);
    if (GTK_IS_STACK(widget))
        collect(gtk_stack_get_visible_child(GTK_STACK(widget)), widgets);
    else if (GTK_IS_CONTAINER(widget))
        gtk_container_foreach(GTK_CONTAINER(widget), collect, widgets);
}
std::vector<GtkWidget*> widgets_of(GtkWidget* window) {
    std::vector<GtkWidget*> widgets;
    collect(window, &widgets);
    return widgets;
}

std::string describe(GtkWidget* window) {
    if (!window) return "nothing";
    return id_of(window) + " \"" + UiWindow(window).title() + "\"";
}

GtkWidget* visible_window(const std::string& id) {
    if (GtkWidget* modal = modal_window()) return id_of(modal) == id ? modal : nullptr;
    GtkWidget* found = nullptr;
    GList* windows = gtk_window_list_toplevels();
    for (GList* item = windows; item && !found; item = item->next)
        if (GTK_IS_WINDOW(item->data) && gtk_widget_get_visible(GTK_WIDGET(item->data)) &&
            id_of(GTK_WIDGET(item->data)) == id)
            found = GTK_WIDGET(item->data);
    g_list_free(windows);
    return found;
}

// A chooser that was accepted may stay a while to look at the file: it is not the next one.
GtkWidget* chooser_up() {
    GtkWidget* modal = modal_window();
    return GTK_IS_FILE_CHOOSER_DIALOG(modal) && !g_object_get_data(G_OBJECT(modal), answered) ? modal : nullptr;
}

void offer_file(GtkFileChooser* chooser, const std::string& path) {
    if (gtk_file_chooser_get_action(chooser) == GTK_FILE_CHOOSER_ACTION_SAVE) {
        gtk_file_chooser_set_current_folder(chooser, taken(g_path_get_dirname(path.c_str())).c_str());
        gtk_file_chooser_set_current_name(chooser, taken(g_path_get_basename(path.c_str())).c_str());
    } else {
        gtk_file_chooser_set_filename(chooser, path.c_str());
    }
}

// The column's cell of the row that its renderers were last given.
std::string cell_text(GtkTreeViewColumn* column) {
    GList* cells = gtk_cell_layout_get_cells(GTK_CELL_LAYOUT(column));
    gboolean on = FALSE;
    char* text = nullptr;
    const bool is_flag = GTK_IS_CELL_RENDERER_TOGGLE(cells->data);
    is_flag ? g_object_get(cells->data, "active", &on, nullptr) : g_object_get(cells->data, "text", &text, nullptr);
    g_list_free(cells);
    return is_flag ? std::to_string(on) : taken(text);
}

// The value of an input, a number with its limits, the rows that an editable drop-down list offers, the id of a button.
std::string value_of(UiWindow window, GtkWidget* control) {
    const std::string id = id_of(control);
    if (GTK_IS_TOGGLE_BUTTON(control)) return std::to_string(window.toggle(id));
    if (GTK_IS_BUTTON(control)) return id;
    if (GTK_IS_SPIN_BUTTON(control)) {
        double least, most;
        gtk_spin_button_get_range(GTK_SPIN_BUTTON(control), &least, &most);
        return window.entry(id) + " (" + std::to_string(int(least)) + " to " + std::to_string(int(most)) + ")";
    }
    if (GTK_IS_ENTRY(control)) return window.entry(id);
    if (!gtk_combo_box_get_has_entry(GTK_COMBO_BOX(control))) return window.combo(id);
    std::string rows;
    for (const std::string& row : window.combo_rows(id)) rows += "[" + row + "]";
    return rows;
}

} // namespace

GtkWidget* UiWindow::find(const std::string& id) const {
    for (GtkWidget* widget : widgets_of(window_))
        if (id_of(widget) == id) return widget;
    GTEST_LOG_(FATAL) << "no widget " << id << " in " << describe(window_);
    return nullptr;
}

std::string UiWindow::title() const {
    return text_or_empty(gtk_window_get_title(GTK_WINDOW(window_)));
}

std::string UiWindow::focus() const {
    GtkWidget* focus = gtk_window_get_focus(GTK_WINDOW(window_));
    return focus ? id_of(focus) : "";
}

void UiWindow::click(const std::string& id) const {
    GtkWidget* widget = find(id);
    EXPECT_TRUE(gtk_widget_is_sensitive(widget)) << id << " can't be clicked now";
    if (GTK_IS_MENU_ITEM(widget))
        gtk_menu_item_activate(GTK_MENU_ITEM(widget));
    else
        g_signal_emit_by_name(widget, "clicked");
}

void UiWindow::set_combo(const std::string& id, const std::string& row_id) const {
    EXPECT_TRUE(gtk_combo_box_set_active_id(GTK_COMBO_BOX(find(id)), row_id.c_str())) << id << " has no " << row_id;
}

void UiWindow::enter(const std::string& input) const {
    std::istringstream fields(input);
    for (std::string field; std::getline(fields, field, ';');) {
        const std::string id = field.substr(0, field.find('=')),
                          value = field.substr(std::min(id.size() + 1, field.size()));
        if (id.starts_with("entry_")) set_entry(id, value);
        if (id.starts_with("check_") || id.starts_with("radio_")) set_toggle(id, value == "1");
        if (id.starts_with("spin_")) set_spin(id, std::stod(value));
        if (id.starts_with("combo_")) set_combo(id, value);
        if (id.starts_with("button_")) click(id);
    }
}

std::string UiWindow::combo(const std::string& id) const {
    return text_or_empty(gtk_combo_box_get_active_id(GTK_COMBO_BOX(find(id))));
}

std::vector<std::string> UiWindow::combo_rows(const std::string& id) const {
    return texts_of(gtk_combo_box_get_model(GTK_COMBO_BOX(find(id))));
}

void UiWindow::select(const std::string& view_id, const std::vector<int>& rows) const {
    GtkTreeView* view = GTK_TREE_VIEW(find(view_id));
    GtkTreeSelection* selection = gtk_tree_view_get_selection(view);
    if (gtk_tree_selection_get_mode(selection) != GTK_SELECTION_BROWSE) gtk_tree_selection_unselect_all(selection);
    for (const int row : rows) {
        GtkTreeIter iter;
        if (gtk_tree_model_iter_nth_child(gtk_tree_view_get_model(view), &iter, nullptr, row))
            gtk_tree_selection_select_iter(selection, &iter);
        else
            ADD_FAILURE() << view_id << " has no row " << row;
    }
}

void UiWindow::activate_row(const std::string& view_id, int row) const {
    select(view_id, {row});
    GtkTreeView* view = GTK_TREE_VIEW(find(view_id));
    GtkTreePath* path = gtk_tree_path_new_from_indices(row, -1);
    gtk_tree_view_row_activated(view, path, gtk_tree_view_get_column(view, 0));
    gtk_tree_path_free(path);
}

void UiWindow::toggle_cell(const std::string& view_id, int row, int view_column) const {
    GtkTreeViewColumn* column = gtk_tree_view_get_column(GTK_TREE_VIEW(find(view_id)), view_column);
    GList* cells = gtk_cell_layout_get_cells(GTK_CELL_LAYOUT(column));
    g_signal_emit_by_name(cells->data, "toggled", std::to_string(row).c_str());
    g_list_free(cells);
}

Rows UiWindow::table(const std::string& view_id) const {
    Rows rows;
    GtkTreeView* view = GTK_TREE_VIEW(find(view_id));
    GtkTreeModel* model = gtk_tree_view_get_model(view);
    GtkTreeIter row;
    for (gboolean more = gtk_tree_model_get_iter_first(model, &row); more;
         more = gtk_tree_model_iter_next(model, &row)) {
        rows.emplace_back();
        for (int at = 0; GtkTreeViewColumn* column = gtk_tree_view_get_column(view, at); ++at) {
            gtk_tree_view_column_cell_set_cell_data(column, model, &row, FALSE, FALSE);
            rows.back().push_back(cell_text(column));
        }
    }
    return rows;
}

Rows UiWindow::screen() const {
    Rows rows;
    for (GtkWidget* control : widgets_of(window_)) {
        const std::string id = id_of(control);
        if (id == G_OBJECT_TYPE_NAME(control)) continue; // a part of another one
        if (GTK_IS_TREE_VIEW(control)) {
            rows.emplace_back();
            for (int at = 0; GtkTreeViewColumn* column = gtk_tree_view_get_column(GTK_TREE_VIEW(control), at); ++at)
                rows.back().push_back(gtk_tree_view_column_get_title(column));
            std::ranges::copy(table(id), std::back_inserter(rows));
        } else if (GTK_IS_ENTRY(control) || GTK_IS_COMBO_BOX(control) || GTK_IS_BUTTON(control)) {
            rows.push_back({GTK_IS_BUTTON(control) ? text_or_empty(gtk_button_get_label(GTK_BUTTON(control)))
                                                   : spoken_label(control),
                            value_of(*this, control), sensitive(id) ? "open" : "closed"});
        }
    }
    return rows;
}

UiScript& UiScript::when(const std::string& id, std::function<void(UiWindow)> act) {
    return add({id, [id] { return visible_window(id); }, std::move(act)});
}

std::vector<Check> checks_of(const std::string& name) {
    const std::string file = read_file(GOLDEN "/refusals.txt"), head = "\n= " + name + "\n";
    const size_t start = file.find(head) + head.size();
    std::istringstream lines(file.substr(start, file.find("\n\n", start) - start));
    const std::regex row("(.*?)(?: \\| (.*?) \\| (.*?)( \\| Ошибка)?)?");
    std::vector<Check> checks;
    std::smatch cells;
    for (std::string line; std::getline(lines, line) && std::regex_match(line, cells, row);) {
        const auto cell = [&](size_t number) {
            std::string text = cells[number];
            for (const auto& [sign, meant] : {std::pair("\\\\s", " "), {"\\\\t", "\t"}, {"\\\\n", "\n"}})
                text = std::regex_replace(text, std::regex(sign), meant);
            return text;
        };
        checks.push_back({cell(1), cell(2), cell(3), cells[4].matched});
    }
    if (checks.empty()) ADD_FAILURE() << "no refusals of " << name;
    return checks;
}

UiScript& UiScript::checks(const std::string& id, const std::string& ok, const std::vector<Check>& checks) {
    for (const Check& check : checks) {
        when(id, [=](UiWindow window) {
            window.enter(check.input);
            window.click(ok);
            if (!check.text.empty()) {
                EXPECT_EQ(window.focus(), check.focus) << check.text;
            }
        });
        if (!check.text.empty()) check.refusal ? refusal(check.text) : remark(check.text);
    }
    return *this;
}

UiScript& UiScript::box(const std::string& title, testing::Matcher<std::string> text, GtkMessageType type,
                        int response) {
    const auto ready = [] {
        GtkWidget* modal = modal_window();
        return GTK_IS_MESSAGE_DIALOG(modal) ? modal : nullptr;
    };
    const auto answer = [=](UiWindow window) {
        char* shown = nullptr;
        GtkMessageType kind{};
        g_object_get(window.widget(), "text", &shown, "message-type", &kind, nullptr);
        EXPECT_EQ(window.title(), title);
        EXPECT_THAT(taken(shown), text);
        EXPECT_EQ(kind, type);
        EXPECT_TRUE(gtk_dialog_get_widget_for_response(GTK_DIALOG(window.widget()), response)) << "no such button";
        gtk_dialog_response(GTK_DIALOG(window.widget()), response);
    };
    return add({"a box titled " + title, ready, answer});
}

UiScript& UiScript::remark(testing::Matcher<std::string> text) {
    return box("Сообщение", std::move(text), GTK_MESSAGE_INFO, GTK_RESPONSE_OK);
}

UiScript& UiScript::refusal(testing::Matcher<std::string> text) {
    return box("Ошибка", std::move(text), GTK_MESSAGE_ERROR, GTK_RESPONSE_OK);
}

UiScript& UiScript::question(testing::Matcher<std::string> text, int response) {
    return box("Вопрос", std::move(text), GTK_MESSAGE_QUESTION, response);
}

UiScript& UiScript::choose(const std::string& title, const std::string& path) {
    add({"a file chooser", chooser_up, [=](UiWindow window) {
             EXPECT_EQ(window.title(), title);
             offer_file(GTK_FILE_CHOOSER(window.widget()), path);
         }});
    // It reads the folder in the background: the choice stands when it gives the name back. It can also lose one that
    // comes while it reads another folder; so the choice is offered again.
    const auto offered = std::make_shared<gint64>(g_get_monotonic_time());
    const auto chosen = [=]() -> GtkWidget* {
        GtkWidget* chooser = chooser_up();
        if (!chooser || taken(gtk_file_chooser_get_filename(GTK_FILE_CHOOSER(chooser))) == path) return chooser;
        if (g_get_monotonic_time() - *offered > 2 * G_USEC_PER_SEC) {
            offer_file(GTK_FILE_CHOOSER(chooser), path);
            *offered = g_get_monotonic_time();
        }
        return nullptr;
    };
    return add({"the choice of " + path, chosen, [](UiWindow window) {
                    int width = 0, height = 0;
                    gtk_window_get_size(GTK_WINDOW(window.widget()), &width, &height);
                    EXPECT_TRUE(width <= 1280 && height <= 1024) << width; // the display
                    g_object_set_data(G_OBJECT(window.widget()), answered, window.widget());
                    gtk_dialog_response(GTK_DIALOG(window.widget()), GTK_RESPONSE_ACCEPT);
                }});
}

UiScript& UiScript::cancel_chooser(const std::string& title) {
    return add({"a file chooser", chooser_up, [=](UiWindow window) {
                    EXPECT_EQ(window.title(), title);
                    gtk_dialog_response(GTK_DIALOG(window.widget()), GTK_RESPONSE_CANCEL);
                }});
}

UiScript::~UiScript() {
    disarm();
    for (const Step& step : steps_) ADD_FAILURE() << "never came: " << step.what;
}

UiScript& UiScript::add(Step step) {
    steps_.push_back(std::move(step));
    if (look_source_ == 0) arm();
    return *this;
}

// The watchdog stays after the last step, for a window that nobody expects.
void UiScript::arm() {
    disarm();
    const auto look_for_it = [](gpointer script) { return static_cast<UiScript*>(script)->look(); };
    if (!steps_.empty()) look_source_ = g_idle_add_full(G_PRIORITY_LOW, look_for_it, this, nullptr);
    const auto give_up = [](gpointer script) -> gboolean {
        const auto& steps = static_cast<UiScript*>(script)->steps_;
        GTEST_LOG_(FATAL) << "waited for " << (steps.empty() ? "the end" : steps.front().what) << ", up is "
                          << describe(modal_window());
        return G_SOURCE_REMOVE;
    };
    watchdog_ = g_timeout_add_seconds(limit_seconds, give_up, this);
}

void UiScript::disarm() {
    for (guint* source : {&look_source_, &watchdog_})
        if (*source) g_source_remove(std::exchange(*source, 0));
}

// A step may block in a loop of its own, in which this source does not fire again: the next one is queued before it.
gboolean UiScript::look() noexcept {
    GtkWidget* window = steps_.front().ready();
    if (!window) return G_SOURCE_CONTINUE;
    const Step step = std::move(steps_.front());
    steps_.pop_front();
    arm();
    SCOPED_TRACE("step: " + step.what);
    step.act(UiWindow(window));
    return G_SOURCE_REMOVE;
}

GtkWidget* modal_window() {
    GtkWidget* grab = gtk_grab_get_current();
    return GTK_IS_WINDOW(grab) && gtk_window_get_modal(GTK_WINDOW(grab)) ? grab : nullptr;
}

std::vector<std::string> texts_of(GtkTreeModel* model) {
    std::vector<std::string> rows;
    GtkTreeIter row;
    for (gboolean more = gtk_tree_model_get_iter_first(model, &row); more;
         more = gtk_tree_model_iter_next(model, &row)) {
        char* text = nullptr;
        gtk_tree_model_get(model, &row, 0, &text, -1);
        rows.push_back(taken(text));
    }
    return rows;
}

std::string id_of(gpointer object) {
    const char* id = GTK_IS_BUILDABLE(object) ? gtk_buildable_get_name(GTK_BUILDABLE(object)) : nullptr;
    return id ? id : G_OBJECT_TYPE_NAME(object);
}

std::string spoken_label(GtkWidget* input) {
    AtkRelationSet* relations = atk_object_ref_relation_set(gtk_widget_get_accessible(input));
    AtkRelation* relation = atk_relation_set_get_relation_by_type(relations, ATK_RELATION_LABELLED_BY);
    GPtrArray* targets = relation ? atk_relation_get_target(relation) : nullptr;
    std::string text;
    for (guint i = 0; targets && i < targets->len; i++)
        text += text_or_empty(atk_object_get_name(ATK_OBJECT(targets->pdata[i])));
    g_object_unref(relations);
    return text;
}

void settle() {
    while (gtk_events_pending()) gtk_main_iteration();
}

// The toolkit knows its bindings by the code that the keyboard sends.
void press_key(GtkWidget* window, guint key, guint state) {
    GdkDisplay* display = gdk_display_get_default();
    GdkKeymapKey* codes = nullptr;
    gint count = 0;
    ASSERT_TRUE(gdk_keymap_get_entries_for_keyval(gdk_keymap_get_for_display(display), key, &codes, &count));
    GdkEvent* event = gdk_event_new(GDK_KEY_PRESS);
    event->key.window = GDK_WINDOW(g_object_ref(gtk_widget_get_window(window)));
    event->key.keyval = key;
    event->key.state = state;
    event->key.hardware_keycode = static_cast<guint16>(codes[0].keycode);
    gdk_event_set_device(event, gdk_seat_get_keyboard(gdk_display_get_default_seat(display)));
    g_free(codes);
    gtk_main_do_event(event);
    gdk_event_free(event);
    settle();
}

// What the leak sanitizer is told: these keep caches until the end of the process. It knows who called malloc and, of
// the toolkit's own code, no more: whole stacks (ASAN_OPTIONS=fast_unwind_on_malloc=0) would take most of the suite's
// time. What calls it in GIO itself, and not by GLib, are the tables of MIME types alone.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libfontconfig\nleak:libgio\n";
}

void set_font(int points) {
    if (points == 0) return gtk_settings_reset_property(gtk_settings_get_default(), "gtk-font-name");
    g_object_set(gtk_settings_get_default(), "gtk-font-name", ("Sans " + std::to_string(points)).c_str(), nullptr);
}

namespace {

GLogWriterOutput write_message(GLogLevelFlags level, const GLogField* fields, gsize count, gpointer) {
    if (!(level & (G_LOG_LEVEL_WARNING | G_LOG_LEVEL_CRITICAL | G_LOG_LEVEL_ERROR)))
        return g_log_writer_default(level, fields, count, nullptr);
    char* text = g_log_writer_format_fields(level, fields, count, FALSE);
    ADD_FAILURE() << "The toolkit says: " << text;
    g_free(text);
    return G_LOG_WRITER_HANDLED;
}

} // namespace

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    setenv("NO_AT_BRIDGE", "1", 1);
    gtk_init(&argc, &argv);
    g_object_set(gtk_settings_get_default(), "gtk-recent-files-enabled", FALSE, nullptr); // their list outlives a home
    g_log_set_writer_func(write_message, nullptr, nullptr);
    return RUN_ALL_TESTS();
}
