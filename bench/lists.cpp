// Measures the lists of a profile at 0 to 100,000 rows, in processor time: opening, marking, searching, reporting and
// deleting in the list dialog, moving and deleting in the list of actions. bench_lists, on a display; fails where an
// operation grows faster than its rows do.
#include "app/log.h"
#include "app/mg_context.h"
#include "dialog/make_dialog.h"
#include "dialog/open_dialogs.h"
#include "editor/action_list.h"
#include "editor/handlers.h"
#include "lists/handlers.h"
#include "measure.h"

#include <functional>
#include <string>

namespace {

struct Operation {
    const char* name;
    std::function<void()> run;
    std::vector<double> times = {}; // one for each size
};

MGDialog* top() {
    return stackAdmitDialog.back();
}

double begin = 0;

void settle() {
    while (gtk_events_pending()) gtk_main_iteration();
}

void measure(Operation& operation) {
    begin = bench::processor_time();
    operation.run();
    settle();
    operation.times.push_back(bench::processor_time() - begin);
}

// Answers the box or dialog that an operation ends with.
template <int response>
gboolean answer(gpointer) {
    gtk_dialog_response(GTK_DIALOG(g_dialog_stack.top()), response);
    return G_SOURCE_REMOVE;
}

gboolean answer_yes(gpointer) {
    GList* windows = gtk_window_list_toplevels();
    for (GList* item = windows; item; item = item->next)
        if (GTK_IS_MESSAGE_DIALOG(item->data)) gtk_dialog_response(GTK_DIALOG(item->data), GTK_RESPONSE_YES);
    g_list_free(windows);
    return G_SOURCE_REMOVE;
}

Operation opening = {"list opened to its first frame", [] { edit_admit_list(nullptr, nullptr); }};
Operation closing = {"list closed", nullptr};
Operation list_operations[] = {
    {"all rows marked", [] { admit_select_all(nullptr, nullptr); }},
    {"all marks taken off", [] { admit_unselect_all(nullptr, nullptr); }},
    {"every row found marked", [] { admit_select_find(nullptr, nullptr); }},
    {"the last row found", [] { admit_find(nullptr, nullptr); }},
    {"report",
     [] {
         g_idle_add_full(G_PRIORITY_LOW, answer<GTK_RESPONSE_OK>, nullptr, nullptr);
         admit_print(nullptr, nullptr);
     }},
    {"every second row deleted",
     [] {
         admit_select_all(nullptr, nullptr);
         MGDialog* list = top();
         GtkListStore* store = GTK_LIST_STORE(list->GetObject("admit_list_store"));
         for (int row = 0; row < list->ListStoreGetNumRows(store); row += 2) {
             list->ListStoreGetRowIndex(store, row);
             list->ListStoreSetBoolean(store, 0, false);
         }
         settle();
         begin = bench::processor_time();
         g_idle_add_full(G_PRIORITY_LOW, answer_yes, nullptr, nullptr);
         admit_delete_user(nullptr, nullptr);
     }},
    {"all other rows deleted",
     [] {
         admit_select_all(nullptr, nullptr);
         g_idle_add_full(G_PRIORITY_LOW, answer_yes, nullptr, nullptr);
         admit_delete_user(nullptr, nullptr);
     }},
};

// Runs in the list's own loop once it is drawn.
gboolean use_list(gpointer) {
    opening.times.push_back(bench::processor_time() - begin);
    const std::string last =
        "CN=user " + std::to_string(static_cast<MGConfig*>(ConfigDialog->user_data)->admit.size() - 1);
    for (Operation& operation : list_operations) {
        top()->SetEntry("entry_admit_filter", operation.name == std::string("the last row found") ? last.c_str() : "*");
        measure(operation);
    }
    begin = bench::processor_time();
    gtk_dialog_response(GTK_DIALOG(top()->window), GTK_RESPONSE_CANCEL);
    return G_SOURCE_REMOVE;
}

GtkTreeView* action_view() {
    return GTK_TREE_VIEW(ConfigDialog->GetObject("active_view"));
}

// Every second action, from the second on.
void select_actions() {
    GtkTreeSelection* selection = gtk_tree_view_get_selection(action_view());
    const int rows = gtk_tree_model_iter_n_children(gtk_tree_view_get_model(action_view()), nullptr);
    for (int row = 1; row < rows; row += 2) {
        GtkTreePath* path = gtk_tree_path_new_from_indices(row, -1);
        gtk_tree_selection_select_path(selection, path);
        gtk_tree_path_free(path);
    }
    settle();
    begin = bench::processor_time();
}

Operation action_operations[] = {
    {"every second action moved up", [] { active_up(nullptr, action_view()); }},
    {"and down to the bottom", [] { active_bottom(nullptr, action_view()); }},
    {"and deleted",
     [] {
         g_idle_add_full(G_PRIORITY_LOW, answer_yes, nullptr, nullptr);
         active_delete(nullptr, action_view());
     }},
};

MGConfig with_rows(int count) {
    MGConfig config;
    for (int row = 0; row < count; ++row) {
        const std::string number = std::to_string(row);
        MGAdmit user;
        user.subject = "CN=user " + number;
        user.use_server = true;
        user.ip = "10.1.2.3";
        user.port = 443;
        config.admit.push_back(user);
        MGAction action;
        action.type = "CONSOLE";
        action.name = "action " + number;
        config.actions.push_back(action);
    }
    return config;
}

void measure_rows(int count) {
    MGConfig config = with_rows(count);
    OpenDialog dialog(ConfigDialog, "dialog_config", "");
    dialog->user_data = &config;
    show_actions(*dialog.get(), config.actions);
    dialog->Show();
    dialog->SetFocusToProblemWidget("active_view");
    settle();
    begin = bench::processor_time();
    g_idle_add_full(G_PRIORITY_LOW, use_list, nullptr, nullptr);
    opening.run();
    settle();
    closing.times.push_back(bench::processor_time() - begin);
    select_actions();
    for (Operation& operation : action_operations) measure(operation);
}

} // namespace

int main(int argc, char** argv) {
    gtk_init(&argc, &argv);
    Context = new MGContext;
    init_vorma_catalogs(Context, "bench.log");
    LogFileGlobal.SetResultDir(Context->result_dir.c_str()); // not into the tree
    for (int turn = 0; turn < 3; ++turn)
        for (const int size : bench::sizes) measure_rows(size);
    bench::print_head("rows of a list");
    bool fits = bench::print_growth(opening.name, opening.times);
    for (const Operation& operation : list_operations) fits &= bench::print_growth(operation.name, operation.times);
    fits &= bench::print_growth(closing.name, closing.times);
    for (const Operation& operation : action_operations) fits &= bench::print_growth(operation.name, operation.times);
    delete Context;
    return fits ? 0 : 1;
}
