// Windows, boxes, lists and trees of MGDialog, and the edge of handlers, on real widgets.
#include "app/log.h"
#include "dialog/busy.h"
#include "dialog/make_dialog.h"
#include "support/temp_dir.h"
#include "support/ui_script.h"

#include <chrono>
#include <memory>
#include <utility>

static gint64 stopped = 0; // where the clock stands, in microseconds; 0 while it runs

// The toolkit's clock.
extern "C" gint64 g_get_monotonic_time() {
    return stopped ? stopped : std::chrono::steady_clock::now().time_since_epoch() / std::chrono::microseconds(1);
}

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

const std::string definition = read_file(GOLDEN "/dialog.ui");

std::unique_ptr<MGDialog> make(const char* id = "dialog") {
    return std::make_unique<MGDialog>(definition.c_str(), definition.size(), id);
}

GtkWindow* parent_of(const MGDialog& dialog) {
    return gtk_window_get_transient_for(GTK_WINDOW(dialog.window));
}

guint count_of_windows() {
    GList* windows = gtk_window_list_toplevels();
    const guint count = g_list_length(windows);
    g_list_free(windows);
    return count;
}

TEST(MGDialog, EachWindowIsTransientForTheOneOpenedLastAndLeavesNone) {
    const guint before = count_of_windows();
    {
        const auto main = make("hidden_window");
        EXPECT_EQ(parent_of(*main), nullptr);
        {
            const auto second = make();
            const auto third = make();
            EXPECT_EQ(parent_of(*second), GTK_WINDOW(main->window));
            EXPECT_EQ(parent_of(*third), GTK_WINDOW(second->window));
            third->Destroy();
            third->Destroy();
        }
        EXPECT_EQ(parent_of(*make()), GTK_WINDOW(main->window));
    }
    EXPECT_TRUE(g_dialog_stack.empty());
    EXPECT_EQ(count_of_windows(), before); // neither those windows nor those of the definition that were not shown
}

TEST(MGDialog, WithoutAWindowItAnswersCancelAndShowsNothing) {
    testing::internal::CaptureStderr();
    MGDialog file("/nonexistent.glade", "dialog"), other_id(definition.c_str(), definition.size(), "no_such_window");
    EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("/nonexistent.glade"));
    for (MGDialog* dialog : {&file, &other_id}) {
        dialog->Show();
        EXPECT_EQ(dialog->Run(), GTK_RESPONSE_CANCEL);
        EXPECT_EQ(dialog->MessageBox("t", "m", GTK_MESSAGE_INFO, GTK_BUTTONS_OK), -1);
    }
}

TEST(MGDialog, ConvertsWhatWidgetsHold) {
    const auto dialog = make();
    EXPECT_STREQ(dialog->GetEntry(nullptr), "");
    int32_t year = 0, month = 0, day = 0;
    dialog->SetCalendar("calendar", 2024, 2, 29);
    dialog->GetCalendar("calendar", &year, &month, &day);
    EXPECT_THAT((std::vector<int32_t>{year, month, day}), ElementsAre(2024, 2, 29));
}

TEST(MGDialog, ABoxShowsBothEndsOfAnyTextOnASmallScreenAndCopiesTheWhole) {
    const auto dialog = make();
    const std::string half(240, 'x'), megabytes(9 << 20, 'x'), lines(5000, '\n');
    const std::string line = megabytes + "\n", cut = half + "…" + half.substr(1) + "\n";
    const struct {
        std::string text, shown;
    } rows[] = {{"%s и %d: 100% <b>", "%s и %d: 100% <b>"},
                {"первая\n" + megabytes + "/файл", "первая\n" + half + "…" + half.substr(5) + "/файл"},
                {"я" + lines + "/файл", "я" + std::string(12, '\n') + "…\n" + std::string(11, '\n') + "/файл"},
                {line + line + line + line, cut + "…\n" + cut},
                {"/home/\xFF", "/home/\uFFFD"}};
    for (const auto& row : rows) {
        UiScript script;
        script.refusal(testing::Truly([&](const std::string& shown) {
            GtkWidget* box = modal_window();
            int width = 0, height = 0;
            gtk_window_get_size(GTK_WINDOW(box), &width, &height);
            EXPECT_LT(width, 800);
            EXPECT_LT(height, 700);
            for (guint key : {GDK_KEY_a, GDK_KEY_c}) press_key(box, key, GDK_CONTROL_MASK);
            char* copied = gtk_clipboard_wait_for_text(gtk_clipboard_get(GDK_SELECTION_CLIPBOARD));
            EXPECT_TRUE(copied == (row.text.ends_with('\xFF') ? row.shown : row.text)) << shown;
            g_free(copied);
            return shown == row.shown;
        }));
        show_refusal(dialog.get(), row.text.c_str());
    }
    set_font(36);
    for (const std::string& text : {line + lines, std::string("Здесь места хватит всему тексту, но в две строки.")}) {
        UiScript script;
        script.refusal(testing::Truly([&](const std::string&) {
            GtkWidget* box = modal_window();
            int width = 0, height = 0;
            gtk_window_get_size(GTK_WINDOW(box), &width, &height);
            GList* inner =
                gtk_container_get_children(GTK_CONTAINER(gtk_message_dialog_get_message_area(GTK_MESSAGE_DIALOG(box))));
            GtkAdjustment* scrolled =
                gtk_scrolled_window_get_vadjustment(GTK_SCROLLED_WINDOW(g_list_last(inner)->data));
            g_list_free(inner);
            EXPECT_EQ(gtk_adjustment_get_upper(scrolled) > gtk_adjustment_get_page_size(scrolled), text.size() > 200);
            return width <= 1280 && height <= 1024;
        }));
        show_refusal(dialog.get(), text.c_str());
    }
    set_font(0);
}

TEST(MGDialog, FileChoosersGiveNames) {
    const auto dialog = make();
    const TempDir dir;
    dir.write("a.txt", "");
    std::string folder = dir.path(), path;
    std::vector<std::string> names = {"old"};
    UiScript script;
    set_font(36);
    script.choose("Куда", "/d.txt").choose("Файлы", dir.path("a.txt"));
    EXPECT_TRUE(dialog->GetFileNameSave("Куда", "", "", path));
    EXPECT_EQ(path, "/d.txt");
    EXPECT_TRUE(dialog->GetFilesFromDir("Файлы", folder, folder, names)); // the proposal takes the answer
    EXPECT_EQ(folder, dir.path());
    EXPECT_THAT(names, ElementsAre("a.txt"));
    set_font(0);
}

TEST(DropDown, NarrowsToWhatContainsTheTypedTextAndTakesARowAsItStands) {
    const auto dialog = make();
    const UiWindow window(dialog->window);
    GtkWidget* combo = window.find("combo");
    for (const char* row : {"/mnt/Архив", "10.0.0.1", "архив", "%41"})
        gtk_combo_box_text_append_text(GTK_COMBO_BOX_TEXT(combo), row);
    gtk_widget_show_all(dialog->window);
    GtkEntry* entry = GTK_ENTRY(gtk_bin_get_child(GTK_BIN(combo)));
    GdkEvent* focus = gdk_event_new(GDK_FOCUS_CHANGE);
    focus->focus_change.window = GDK_WINDOW(g_object_ref(gtk_widget_get_window(GTK_WIDGET(entry))));
    focus->focus_change.in = TRUE;
    gtk_widget_send_focus_change(GTK_WIDGET(entry), focus);
    gdk_event_free(focus);
    GtkEntryCompletion* completion = gtk_entry_get_completion(entry);
    ASSERT_TRUE(completion);
    const struct {
        const char* typed;
        std::vector<std::string> offered;
    } rows[] = {{"АРХ", {"/mnt/Архив", "архив"}}, {"%4", {"%41"}}, {"none", {}}, {"", {}}, {"mnt", {"/mnt/Архив"}}};
    for (const auto& row : rows) {
        gtk_entry_set_text(entry, row.typed);
        EXPECT_EQ(texts_of(gtk_entry_completion_get_model(completion)), row.offered) << row.typed;
    }
    GtkTreeModel* model = gtk_entry_completion_get_model(completion);
    GtkTreeIter first;
    gboolean taken = FALSE;
    ASSERT_TRUE(gtk_tree_model_get_iter_first(model, &first));
    g_signal_emit_by_name(completion, "match-selected", model, &first, &taken);
    EXPECT_TRUE(taken);
    EXPECT_STREQ(gtk_entry_get_text(entry), "/mnt/Архив");

    // Escape and Enter leave what is typed, unless a key has gone to a row.
    gtk_widget_grab_focus(GTK_WIDGET(entry));
    const struct {
        std::vector<guint> keys;
        const char* left;
        int enters; // that reach the dialog
    } answers[] = {{{GDK_KEY_Escape}, "m", 0},
                   {{GDK_KEY_n, GDK_KEY_Return}, "mn", 1},
                   {{GDK_KEY_Down, GDK_KEY_Return}, "/mnt/Архив", 0}};
    int enters = 0;
    g_signal_connect_swapped(entry, "activate", G_CALLBACK(+[](int* count) { ++*count; }), &enters);
    for (const auto& answer : answers) {
        gtk_entry_set_text(entry, "");
        press_key(dialog->window, GDK_KEY_m);
        while (!gtk_grab_get_current()) gtk_main_iteration();
        for (const guint key : answer.keys) press_key(dialog->window, key);
        EXPECT_STREQ(gtk_entry_get_text(entry), answer.left);
        EXPECT_EQ(std::exchange(enters, 0), answer.enters);
        EXPECT_FALSE(gtk_grab_get_current());
    }
}

TEST(Busy, ShowsItselfInTimeAndDropsWhatIsPressedMeanwhile) {
    const auto dialog = make("hidden_window");
    dialog->Show();
    settle();
    GdkWindow* window = gtk_widget_get_window(dialog->window);
    std::string handled;
    const auto note = [](GtkWidget*, GdkEvent* event, gpointer text) -> gboolean {
        *static_cast<std::string*>(text) += event->type == GDK_KEY_PRESS ? "press " : "release ";
        return TRUE;
    };
    for (const char* signal : {"key-press-event", "key-release-event"})
        g_signal_connect(dialog->window, signal, G_CALLBACK(+note), &handled);
    const auto put = [&](GdkEventType type) {
        GdkEvent* event = gdk_event_new(type);
        event->key.window = GDK_WINDOW(g_object_ref(window));
        gdk_event_set_device(event, gdk_seat_get_keyboard(gdk_display_get_default_seat(gdk_display_get_default())));
        gdk_event_put(event);
        gdk_event_free(event);
    };
    stopped = g_get_monotonic_time();
    for (int time = 0; time < 2; ++time) {
        settle();
        handled = "";
        const Busy busy;
        Busy::step();
        EXPECT_EQ(gdk_window_get_cursor(window), nullptr);
        stopped += 300'000;
        put(GDK_KEY_PRESS);
        put(GDK_KEY_RELEASE);
        Busy::step();
        EXPECT_NE(gdk_window_get_cursor(window), nullptr);
        put(GDK_KEY_PRESS);
        EXPECT_EQ(handled, "");
    }
    stopped = 0;
    settle();
    EXPECT_EQ(handled, "release ");
    EXPECT_EQ(gdk_window_get_cursor(window), nullptr);
}

void failing_handler(MGDialog* over, const std::function<void()>& body) {
    at_handler(over, body);
}

TEST(AtHandler, WhatIsThrownIsLoggedAndShown) {
    const TempDir dir;
    LogFileGlobal.SetLogFile(dir.path("editor.log").c_str());
    const auto dialog = make();
    const std::string text = "Непонятная ошибка\nИсключение библиотеки STD\nfailing_handler\nout\n";
    UiScript script;
    script.refusal(text);
    failing_handler(dialog.get(), [] { throw std::runtime_error("out"); });
    EXPECT_THAT(dir.read("editor.log"), HasSubstr(text));
}

GtkListStore* store_of_three(MGDialog& dialog) {
    GtkListStore* store = GTK_LIST_STORE(dialog.GetObject("store"));
    for (const char* text : {"a", "b", "c"}) {
        dialog.ListStoreAppend(store);
        dialog.ListStoreSetString(store, 0, text);
    }
    return store;
}

TEST(MGDialog, PassesValuesToItsWidgetsAndBack) {
    const auto dialog = make();
    dialog->SetLabel("label", "текст"), dialog->SetBufferString("buffer", "текст");
    GtkTextIter begin, end;
    auto* const buffer = GTK_TEXT_BUFFER(dialog->GetObject("buffer"));
    gtk_text_buffer_get_bounds(buffer, &begin, &end);
    const GtkText text(gtk_text_buffer_get_text(buffer, &begin, &end, FALSE));
    EXPECT_STREQ(dialog->GetLabel("label"), text.get());
    for (const bool on : {true, false}) {
        on ? dialog->SetEntryVisible("entry") : dialog->SetEntryInvisible("entry");
        EXPECT_EQ(gtk_entry_get_visibility(GTK_ENTRY(dialog->GetObject("entry"))), on);
        dialog->SetSwitch("switch", on), dialog->ToggleButtonSet("stop", on), dialog->SetSensitive("switch", on);
        EXPECT_TRUE(dialog->GetSwitch("switch") == on && dialog->GetSensitive("switch") == on);
        EXPECT_EQ(dialog->SetProgressExt("progress", "stop", 4, on), on);
        EXPECT_EQ(gtk_progress_bar_get_fraction(GTK_PROGRESS_BAR(dialog->GetObject("progress"))), on ? 0.5 : 0.25);
    }
    dialog->ToggleButtonSet("stop", true), dialog->SetNullProgressExt("progress", "stop");
    EXPECT_EQ(gtk_progress_bar_get_fraction(GTK_PROGRESS_BAR(dialog->GetObject("progress"))),
              dialog->ToggleButtonGet("stop") ? 1 : 0);
    dialog->SpinSetMin("adjustment", 3), dialog->SpinSet("adjustment", 1);
    EXPECT_EQ(dialog->SpinGet("adjustment"), 3);
    for (const char* row : {"a", "b"}) dialog->ComboBoxTextAppend("combo", row);
    dialog->ComboBoxSetNum("combo", 1);
    EXPECT_EQ(GtkText(dialog->ComboBoxTextGet("combo")).get() + std::to_string(dialog->ComboBoxGetNum("combo")), "b1");

    // One list for many, until one has a row more.
    const UiWindow window(dialog->window);
    const std::vector<std::string> texts = {"c", "d"};
    for (const char* id : {"combo", "combo_2", "combo_3"}) dialog->ComboBoxTextAppendAll(id, texts);
    dialog->ComboBoxTextAppend("combo_2", "e");
    EXPECT_THAT(window.combo_rows("combo"), ElementsAre("a", "b", "c", "d"));
    EXPECT_THAT(window.combo_rows("combo_2"), ElementsAre("c", "d", "e"));
    EXPECT_THAT(window.combo_rows("combo_3"), ElementsAre("c", "d"));
}

TEST(Lists, KeepTheCurrentRowWhereNoneIsFound) {
    const auto dialog = make();
    GtkListStore* store = store_of_three(*dialog);
    ASSERT_TRUE(dialog->ListStoreGetRow(store, "1"));
    EXPECT_FALSE(dialog->ListStoreGetRow(store, "7"));
    EXPECT_FALSE(dialog->ListStoreGetRowIndex(store, 3));
    EXPECT_EQ(dialog->TreeModelGetIndex(), 1);
    dialog->ListStoreDeleteIter(store);
    EXPECT_EQ(UiWindow(dialog->window).table("view"), (Rows{{"a"}, {"c"}}));
}

TEST(Lists, TellACellWholeThatHasNoRoom) {
    const auto dialog = make();
    dialog->ListStoreSetString(store_of_three(*dialog), 0, std::string(1000, 'x').c_str()); // in the last row
    auto* const view = GTK_TREE_VIEW(dialog->GetObject("view"));
    GtkTreeViewColumn* column = gtk_tree_view_get_column(view, 0);
    gtk_tree_view_column_set_max_width(column, 40);
    gtk_widget_show_all(dialog->window);
    auto* const tooltip = GTK_TOOLTIP(g_object_new(GTK_TYPE_TOOLTIP, nullptr));
    for (const int row : {0, 2}) {
        const GtkPath path(gtk_tree_path_new_from_indices(row, -1));
        gtk_tree_view_set_cursor(view, path.get(), column, FALSE);
        GdkRectangle area;
        gtk_tree_view_get_cell_area(view, path.get(), column, &area);
        gtk_tree_view_convert_bin_window_to_widget_coords(view, area.x, area.y, &area.x, &area.y);
        for (const bool by_key : {true, false}) {
            gboolean shown = -1;
            g_signal_emit_by_name(view, "query-tooltip", area.x, area.y, by_key, tooltip, &shown);
            EXPECT_EQ(shown, row == 2) << row << by_key;
        }
    }
    g_object_unref(tooltip);
}

TEST(Lists, MoveTheOneRowThatCanBeSelected) {
    const auto dialog = make();
    GtkListStore* store = store_of_three(*dialog);
    const struct {
        bool (MGDialog::*move)(GtkListStore*);
        int row;
        bool moves;
        Rows after;
    } steps[] = {{&MGDialog::ListStoreMoveUp, 0, false, {{"a"}, {"b"}, {"c"}}},
                 {&MGDialog::ListStoreMoveUp, 2, true, {{"a"}, {"c"}, {"b"}}},
                 {&MGDialog::ListStoreMoveDown, 2, false, {{"a"}, {"c"}, {"b"}}},
                 {&MGDialog::ListStoreMoveDown, 0, true, {{"c"}, {"a"}, {"b"}}},
                 {&MGDialog::ListStoreMoveTop, 0, false, {{"c"}, {"a"}, {"b"}}},
                 {&MGDialog::ListStoreMoveTop, 2, true, {{"b"}, {"c"}, {"a"}}},
                 {&MGDialog::ListStoreMoveBottom, 2, false, {{"b"}, {"c"}, {"a"}}},
                 {&MGDialog::ListStoreMoveBottom, 0, true, {{"c"}, {"a"}, {"b"}}}};
    for (const auto& step : steps) {
        SCOPED_TRACE(testing::Message() << &step - steps);
        UiWindow(dialog->window).select("view", {step.row});
        ASSERT_TRUE(dialog->TreeViewGetSelection(GTK_TREE_VIEW(dialog->GetObject("view")), &store));
        EXPECT_EQ((*dialog.*step.move)(store), step.moves);
        EXPECT_EQ(UiWindow(dialog->window).table("view"), step.after);
    }
}

TEST(Lists, WalkATree) {
    const auto dialog = make();
    GtkTreeStore* tree = GTK_TREE_STORE(dialog->GetObject("tree_store"));
    GtkTreeView* tree_view = GTK_TREE_VIEW(dialog->GetObject("tree"));
    for (int root = 0; root < 2; ++root) dialog->TreeStoreAppendRoot(tree);
    EXPECT_FALSE(dialog->TreeStoreGetSelection(tree_view, &tree) || dialog->TreeStoreAppendChild(tree_view, &tree));
    UiWindow(dialog->window).select("tree", {1});
    for (int child = 0; child < 2; ++child) ASSERT_TRUE(dialog->TreeStoreAppendChild(tree_view, &tree));
    ASSERT_TRUE(dialog->TreeStoreGetParentRow(tree) && !dialog->TreeStoreGetParentRow(tree));
    GtkTreeIter parent;
    EXPECT_EQ(dialog->TreeStoreGetRootIndex(), 1);
    EXPECT_EQ(dialog->TreeStoreGetNumChildRows(tree, &parent), 2);
    ASSERT_TRUE(dialog->TreeStoreGetChildRowIndex(tree, &parent, 0));
    char* text = nullptr;
    void* pointer = nullptr;
    int32_t flag = 0, number = 0;
    dialog->TreeStorePushIter();
    dialog->TreeStoreSetString(tree, 0, "a"), dialog->TreeStoreSetBoolean(tree, 1, true);
    dialog->TreeStoreSetNum(tree, 2, 7), dialog->TreeStoreSetPointer(tree, 3, dialog.get());
    EXPECT_TRUE(dialog->TreeStoreGetRootRowIndex(tree, 1) && dialog->TreeStoreIsChild(tree));
    dialog->TreeStoreExpandRow(tree_view);
    EXPECT_TRUE(gtk_tree_view_row_expanded(tree_view, GtkPath(gtk_tree_path_new_from_string("1")).get()));
    dialog->TreeStorePopIter();
    dialog->TreeStoreGetString(0, &text), dialog->TreeStoreGetBoolean(1, &flag);
    dialog->TreeStoreGetNum(2, &number), dialog->TreeStoreGetPointer(3, &pointer);
    EXPECT_TRUE(*GtkText(text) == 'a' && flag == 1 && number == 7 && pointer == dialog.get());
    EXPECT_EQ(dialog->TreeStoreGetNumRootRows(tree), 2);
    dialog->TreeStoreDeleteSelection(tree);
    EXPECT_TRUE(dialog->TreeStoreGetRow(tree, "1:0") && !dialog->TreeStoreGetRow(tree, "1:1"));
}

} // namespace
