// The steps of a script as sources of the main loop, and what a user can do to a window.
#include "support/ui_script.h"

#include <memory>
#include <utility>

namespace {

constexpr guint limit_seconds = 20; // of a wait; reached in tests that fail alone

std::string text_or_empty(const char* text) {
    return text ? text : "";
}

std::string taken(char* text) {
    const std::string result = text_or_empty(text);
    g_free(text);
    return result;
}

std::string id_of(GtkWidget* widget) {
    return GTK_IS_BUILDABLE(widget) ? text_or_empty(gtk_buildable_get_name(GTK_BUILDABLE(widget))) : "";
}

struct Search {
    const std::string& id;
    GtkWidget* found;
};

void search(GtkWidget* widget, gpointer data) {
    Search& state = *static_cast<Search*>(data);
    if (state.found) return;
    if (id_of(widget) == state.id) {
        state.found = widget;
        return;
    }
    if (GTK_IS_MENU_ITEM(widget))
        if (GtkWidget* submenu = gtk_menu_item_get_submenu(GTK_MENU_ITEM(widget))) search(submenu, data);
    if (GTK_IS_CONTAINER(widget)) gtk_container_forall(GTK_CONTAINER(widget), search, data);
}

std::string describe(GtkWidget* window) {
    if (!window) return "nothing";
    if (GTK_IS_MESSAGE_DIALOG(window)) {
        char* text = nullptr;
        g_object_get(window, "text", &text, nullptr);
        return "a box \"" + taken(text) + "\"";
    }
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

constexpr const char* answered = "answered";

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

GtkCellRenderer* toggle_renderer(GtkTreeView* view, int view_column) {
    GtkTreeViewColumn* column = gtk_tree_view_get_column(view, view_column);
    if (!column) return nullptr;
    GtkCellRenderer* found = nullptr;
    GList* cells = gtk_cell_layout_get_cells(GTK_CELL_LAYOUT(column));
    for (GList* item = cells; item; item = item->next)
        if (GTK_IS_CELL_RENDERER_TOGGLE(item->data)) found = GTK_CELL_RENDERER(item->data);
    g_list_free(cells);
    return found;
}

std::string cell_text(GtkTreeModel* model, GtkTreeIter* row, int column) {
    GValue value = G_VALUE_INIT;
    gtk_tree_model_get_value(model, row, column, &value);
    std::string text;
    if (G_VALUE_HOLDS_STRING(&value))
        text = text_or_empty(g_value_get_string(&value));
    else if (G_VALUE_HOLDS_BOOLEAN(&value))
        text = g_value_get_boolean(&value) ? "1" : "0";
    else
        text = taken(g_strdup_value_contents(&value));
    g_value_unset(&value);
    return text;
}

ToolkitMessages* collector = nullptr;

GLogWriterOutput write_message(GLogLevelFlags level, const GLogField* fields, gsize count, gpointer) {
    if (!(level & (G_LOG_LEVEL_WARNING | G_LOG_LEVEL_CRITICAL | G_LOG_LEVEL_ERROR)))
        return g_log_writer_default(level, fields, count, nullptr);
    const std::string text = taken(g_log_writer_format_fields(level, fields, count, FALSE));
    if (collector)
        collector->texts.push_back(text);
    else
        ADD_FAILURE() << "The toolkit says: " << text;
    return G_LOG_WRITER_HANDLED;
}

} // namespace

// --- UiWindow ---

GtkWidget* UiWindow::find(const std::string& id) const {
    Search state{id, nullptr};
    search(window_, &state);
    if (!state.found) ADD_FAILURE() << "no widget " << id << " in " << describe(window_);
    return state.found;
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
    if (!widget) return;
    EXPECT_TRUE(gtk_widget_is_sensitive(widget)) << id << " can't be clicked now";
    if (GTK_IS_MENU_ITEM(widget))
        gtk_menu_item_activate(GTK_MENU_ITEM(widget));
    else
        g_signal_emit_by_name(widget, "clicked");
}

void UiWindow::respond(int response) const {
    gtk_dialog_response(GTK_DIALOG(window_), response);
}

void UiWindow::close() const {
    gtk_window_close(GTK_WINDOW(window_));
}

void UiWindow::set_entry(const std::string& id, const std::string& text) const {
    if (GtkWidget* widget = find(id)) gtk_entry_set_text(GTK_ENTRY(widget), text.c_str());
}

std::string UiWindow::entry(const std::string& id) const {
    GtkWidget* widget = find(id);
    return widget ? gtk_entry_get_text(GTK_ENTRY(widget)) : "";
}

void UiWindow::press_icon(const std::string& entry_id) const {
    if (GtkWidget* widget = find(entry_id))
        g_signal_emit_by_name(widget, "icon-press", GTK_ENTRY_ICON_SECONDARY, nullptr);
}

void UiWindow::set_spin(const std::string& id, double value) const {
    if (GtkWidget* widget = find(id)) gtk_spin_button_set_value(GTK_SPIN_BUTTON(widget), value);
}

double UiWindow::spin(const std::string& id) const {
    GtkWidget* widget = find(id);
    return widget ? gtk_spin_button_get_value(GTK_SPIN_BUTTON(widget)) : 0;
}

void UiWindow::set_toggle(const std::string& id, bool on) const {
    if (GtkWidget* widget = find(id)) gtk_toggle_button_set_active(GTK_TOGGLE_BUTTON(widget), on);
}

bool UiWindow::toggle(const std::string& id) const {
    GtkWidget* widget = find(id);
    return widget && gtk_toggle_button_get_active(GTK_TOGGLE_BUTTON(widget));
}

void UiWindow::set_combo(const std::string& id, const std::string& row_id) const {
    GtkWidget* widget = find(id);
    if (!widget) return;
    EXPECT_TRUE(gtk_combo_box_set_active_id(GTK_COMBO_BOX(widget), row_id.c_str())) << id << " has no " << row_id;
}

std::string UiWindow::combo(const std::string& id) const {
    GtkWidget* widget = find(id);
    return widget ? text_or_empty(gtk_combo_box_get_active_id(GTK_COMBO_BOX(widget))) : "";
}

std::vector<std::string> UiWindow::combo_rows(const std::string& id) const {
    std::vector<std::string> rows;
    GtkWidget* widget = find(id);
    if (!widget) return rows;
    GtkTreeModel* model = gtk_combo_box_get_model(GTK_COMBO_BOX(widget));
    GtkTreeIter row;
    for (gboolean more = gtk_tree_model_get_iter_first(model, &row); more; more = gtk_tree_model_iter_next(model, &row))
        rows.push_back(cell_text(model, &row, 0));
    return rows;
}

std::string UiWindow::label(const std::string& id) const {
    GtkWidget* widget = find(id);
    return widget ? gtk_label_get_text(GTK_LABEL(widget)) : "";
}

bool UiWindow::sensitive(const std::string& id) const {
    GtkWidget* widget = find(id);
    return widget && gtk_widget_is_sensitive(widget);
}

void UiWindow::select(const std::string& view_id, const std::vector<int>& rows) const {
    GtkWidget* widget = find(view_id);
    if (!widget) return;
    GtkTreeView* view = GTK_TREE_VIEW(widget);
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
    GtkWidget* widget = find(view_id);
    if (!widget) return;
    select(view_id, {row});
    GtkTreePath* path = gtk_tree_path_new_from_indices(row, -1);
    gtk_tree_view_row_activated(GTK_TREE_VIEW(widget), path, gtk_tree_view_get_column(GTK_TREE_VIEW(widget), 0));
    gtk_tree_path_free(path);
}

void UiWindow::toggle_cell(const std::string& view_id, int row, int view_column) const {
    GtkWidget* widget = find(view_id);
    if (!widget) return;
    GtkCellRenderer* cell = toggle_renderer(GTK_TREE_VIEW(widget), view_column);
    if (cell)
        g_signal_emit_by_name(cell, "toggled", std::to_string(row).c_str());
    else
        ADD_FAILURE() << view_id << " has no toggle in column " << view_column;
}

std::vector<std::vector<std::string>> UiWindow::table(const std::string& view_id) const {
    std::vector<std::vector<std::string>> rows;
    GtkWidget* widget = find(view_id);
    if (!widget) return rows;
    GtkTreeModel* model = gtk_tree_view_get_model(GTK_TREE_VIEW(widget));
    GtkTreeIter row;
    for (gboolean more = gtk_tree_model_get_iter_first(model, &row); more;
         more = gtk_tree_model_iter_next(model, &row)) {
        rows.emplace_back();
        for (int column = 0; column < gtk_tree_model_get_n_columns(model); ++column)
            rows.back().push_back(cell_text(model, &row, column));
    }
    return rows;
}

// --- UiScript: what to wait for ---

UiScript& UiScript::when(const std::string& id, std::function<void(UiWindow)> act) {
    return add({id, [id] { return visible_window(id); }, std::move(act)});
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
        window.respond(response);
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
                    g_object_set_data(G_OBJECT(window.widget()), answered, window.widget());
                    window.respond(GTK_RESPONSE_ACCEPT);
                }});
}

UiScript& UiScript::cancel_chooser(const std::string& title) {
    return add({"a file chooser", chooser_up, [=](UiWindow window) {
                    EXPECT_EQ(window.title(), title);
                    window.respond(GTK_RESPONSE_CANCEL);
                }});
}

// --- UiScript: how it waits ---

UiScript::~UiScript() {
    disarm();
    if (given_up_) return;
    for (const Step& step : steps_) ADD_FAILURE() << "never came: " << step.what;
}

UiScript& UiScript::add(Step step) {
    steps_.push_back(std::move(step));
    if (look_source_ == 0) arm();
    return *this;
}

// The watchdog stays after the last step: it answers what nobody expects.
void UiScript::arm() {
    disarm();
    if (!steps_.empty())
        look_source_ = g_idle_add_full(
            G_PRIORITY_LOW, [](gpointer script) { return static_cast<UiScript*>(script)->look(); }, this, nullptr);
    watchdog_ = g_timeout_add_seconds(
        limit_seconds,
        [](gpointer data) {
            static_cast<UiScript*>(data)->give_up();
            return static_cast<gboolean>(G_SOURCE_REMOVE);
        },
        this);
}

void UiScript::disarm() {
    for (guint* source : {&look_source_, &watchdog_})
        if (*source) g_source_remove(std::exchange(*source, 0));
}

// A step may block in a loop of its own, in which this source does not fire again: the next one is queued before it.
gboolean UiScript::look() {
    GtkWidget* window = steps_.front().ready();
    if (!window) return G_SOURCE_CONTINUE;
    const Step step = std::move(steps_.front());
    steps_.pop_front();
    arm();
    SCOPED_TRACE("step: " + step.what);
    step.act(UiWindow(window));
    return G_SOURCE_REMOVE;
}

void UiScript::give_up() {
    given_up_ = true;
    watchdog_ = 0;
    disarm();
    ADD_FAILURE() << "waited for " << (steps_.empty() ? "the end" : steps_.front().what) << ", up is "
                  << describe(modal_window());
    steps_.clear();
    cancel_next();
}

// From now on every dialog is cancelled as soon as it takes the input, each by a source of its own.
gboolean UiScript::cancel_next() {
    look_source_ = g_idle_add_full(
        G_PRIORITY_LOW, [](gpointer script) { return static_cast<UiScript*>(script)->cancel_next(); }, this, nullptr);
    GtkWidget* modal = modal_window();
    if (GTK_IS_DIALOG(modal))
        gtk_dialog_response(GTK_DIALOG(modal), GTK_RESPONSE_CANCEL);
    else if (gtk_main_level() > 0)
        gtk_main_quit();
    return G_SOURCE_REMOVE;
}

// --- The toolkit ---

ToolkitMessages::ToolkitMessages() {
    collector = this;
}

ToolkitMessages::~ToolkitMessages() {
    collector = nullptr;
}

void watch_toolkit_messages() {
    g_log_set_writer_func(write_message, nullptr, nullptr);
}

GtkWidget* modal_window() {
    GtkWidget* grab = gtk_grab_get_current();
    return GTK_IS_WINDOW(grab) && gtk_window_get_modal(GTK_WINDOW(grab)) ? grab : nullptr;
}

void handle_events() {
    while (gtk_events_pending()) gtk_main_iteration();
}

bool handle_events_until(const std::function<bool()>& condition) {
    bool late = false;
    const auto is_late = [](gpointer flag) {
        *static_cast<bool*>(flag) = true;
        return static_cast<gboolean>(G_SOURCE_REMOVE);
    };
    const guint watchdog = g_timeout_add_seconds(limit_seconds, is_late, &late);
    while (!condition() && !late) gtk_main_iteration();
    if (!late) g_source_remove(watchdog);
    return !late;
}
