// The profile editor as the list dialogs find it: its window with the real buttons, on a configuration of the test.
#pragma once

#include "app/log.h"
#include "config/records.h"
#include "dialog/make_dialog.h"
#include "dialog/open_dialogs.h"
#include "editor/histories.h"
#include "support/temp_dir.h"
#include "support/ui_script.h"

class ListsTest : public testing::Test {
protected:
    ListsTest() {
        LogFileGlobal.SetLogFile(dir.path("editor.log").c_str());
        ConfigDialog = make_dialog("dialog_config");
        ConfigDialog->user_data = &config;
        ConfigDialog->Show();
    }
    ~ListsTest() override {
        delete ConfigDialog;
        ConfigDialog = nullptr;
    }

    // Presses a button of the profile editor; the script, told before, answers the dialog that it opens.
    static void open(const char* button) { UiWindow(ConfigDialog->window).click(button); }

    TempDir dir;
    MGConfig config;
    UiScript script;
};

// Each row of the view's store in one text, "mark|cell|cell".
inline std::vector<std::string> rows_of(UiWindow window, const std::string& view) {
    std::vector<std::string> rows;
    for (const auto& cells : window.table(view)) {
        rows.push_back(cells[0]);
        for (size_t column = 1; column < cells.size(); ++column) rows.back() += "|" + cells[column];
    }
    return rows;
}

inline std::string marks(UiWindow window, const std::string& view) {
    std::string result;
    for (const std::string& row : rows_of(window, view)) result += row[0];
    return result;
}

// The selected row, -1 for none.
inline int selected_row(UiWindow window, const std::string& view) {
    GList* rows =
        gtk_tree_selection_get_selected_rows(gtk_tree_view_get_selection(GTK_TREE_VIEW(window.find(view))), nullptr);
    const int row = rows ? gtk_tree_path_get_indices(static_cast<GtkTreePath*>(rows->data))[0] : -1;
    g_list_free_full(rows, [](gpointer path) { gtk_tree_path_free(static_cast<GtkTreePath*>(path)); });
    return row;
}
