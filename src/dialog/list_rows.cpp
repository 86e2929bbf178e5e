// Members of MGDialog that work on the rows of a list store through the cursor.
#include "dialog/detached_rows.h"
#include "dialog/mg_dialog.h"
#include "dialog/rows.h"
#include "dialog/valid_text.h"

#include <algorithm>

namespace {

std::vector<int32_t> indexes_of(const GList* paths) {
    std::vector<int32_t> indexes;
    for (const GList* item = paths; item; item = item->next)
        indexes.push_back(gtk_tree_path_get_indices(static_cast<GtkTreePath*>(item->data))[0]);
    return indexes;
}

// The rows where the views of the store have their cursors.
std::vector<int32_t> cursors_on(const MGDialog& dialog, GtkListStore* store) {
    std::vector<int32_t> rows;
    for (GtkTreeView* view : views_of(dialog, store)) {
        GtkTreePath* found = nullptr;
        gtk_tree_view_get_cursor(view, &found, nullptr);
        const GtkPath path(found);
        if (path) rows.push_back(gtk_tree_path_get_indices(path.get())[0]);
    }
    return rows;
}

// What is selected, ascending: in multiple mode the selected rows, else the current one.
std::vector<int32_t> rows_to_move(const MGDialog& dialog, GtkListStore* store) {
    if (dialog.selection_mode == GTK_SELECTION_NONE) return {};
    if (dialog.selection_mode == GTK_SELECTION_MULTIPLE) return indexes_of(dialog.selected_rows);
    const int32_t row = row_index(GTK_TREE_MODEL(store), dialog.list_iter);
    return row < 0 ? std::vector<int32_t>{} : std::vector<int32_t>{row};
}

// Moves the rows by `distance`, all at once: a list that is told of each costs a walk over all its rows. The current
// row is then the one next to which the last was put, by the order from the side to which they go.
void move_by(MGDialog& dialog, GtkListStore* store, const std::vector<int32_t>& rows, int32_t distance) {
    std::vector<int> order = order_after_move(dialog.ListStoreGetNumRows(store), rows, distance);
    gtk_list_store_reorder(store, order.data());
    dialog.ListStoreGetRowIndex(store, distance < 0 ? rows.back() + distance + 1 : rows.front() + distance - 1);
}

// Whether rows moved.
bool move_towards_head(MGDialog& dialog, GtkListStore* store, const std::vector<int32_t>& rows, int32_t distance) {
    if (rows.empty() || rows.front() == 0 || rows.back() >= dialog.ListStoreGetNumRows(store)) return false;
    move_by(dialog, store, rows, -distance);
    return true;
}

bool move_towards_tail(MGDialog& dialog, GtkListStore* store, const std::vector<int32_t>& rows, int32_t distance) {
    if (rows.empty() || rows.back() >= dialog.ListStoreGetNumRows(store) - 1) return false;
    move_by(dialog, store, rows, distance);
    return true;
}

} // namespace

// --- Rows and cells ---

void MGDialog::ListStoreAppend(GtkListStore* store) {
    gtk_list_store_append(store, &list_iter);
    list_model = GTK_TREE_MODEL(store);
}

void MGDialog::ListStoreInsert(GtkListStore* store, int32_t index) {
    gtk_list_store_insert(store, &list_iter, index);
    list_model = GTK_TREE_MODEL(store);
}

void MGDialog::ListStoreSetString(GtkListStore* store, int32_t column, const char* text) {
    gtk_list_store_set(store, &list_iter, column, ValidText(text).get(), -1);
}

void MGDialog::ListStoreSetBoolean(GtkListStore* store, int32_t column, bool value) {
    gtk_list_store_set(store, &list_iter, column, static_cast<gboolean>(value), -1);
}

void MGDialog::ListStoreSetNum(GtkListStore* store, int32_t column, int32_t value) {
    gtk_list_store_set(store, &list_iter, column, value, -1);
}

bool MGDialog::ListStoreGetRow(GtkListStore* store, const char* path) {
    if (!find_row(GTK_TREE_MODEL(store), path, list_iter)) return false;
    list_model = GTK_TREE_MODEL(store);
    return true;
}

bool MGDialog::ListStoreGetRowIndex(GtkListStore* store, int32_t index) {
    if (!find_child(GTK_TREE_MODEL(store), nullptr, index, list_iter)) return false;
    list_model = GTK_TREE_MODEL(store);
    return true;
}

int32_t MGDialog::ListStoreGetNumRows(GtkListStore* store) const {
    return gtk_tree_model_iter_n_children(GTK_TREE_MODEL(store), nullptr);
}

void MGDialog::ListStoreDeleteIter(GtkListStore* store) {
    gtk_list_store_remove(store, &list_iter);
}

void MGDialog::ListStoreDeleteAll(GtkListStore* store) {
    gtk_list_store_clear(store);
}

void MGDialog::ListStoreDeleteSelection(GtkListStore* store) {
    if (selection_mode == GTK_SELECTION_NONE) return;
    if (selection_mode != GTK_SELECTION_MULTIPLE) return ListStoreDeleteIter(store);
    ListStoreDeleteRows(store, indexes_of(selected_rows));
}

void MGDialog::ListStoreDeleteRows(GtkListStore* store, const std::vector<int32_t>& rows) {
    const std::vector<int32_t> cursors = cursors_on(*this, store);
    std::vector<GtkTreeIter> at_cursor, others;
    GtkTreeIter iter;
    for (const int32_t row : rows)
        if (find_child(GTK_TREE_MODEL(store), nullptr, row, iter))
            (std::ranges::find(cursors, row) == cursors.end() ? others : at_cursor).push_back(iter);
    // A view whose cursor loses its row chooses another: last, so that what it chooses stays.
    for (std::vector<GtkTreeIter>* removed : {&others, &at_cursor})
        for (auto row = removed->rbegin(); row != removed->rend(); ++row) gtk_list_store_remove(store, &*row);
}

void MGDialog::TreeModelGetString(int32_t column, char** text) const {
    *text = nullptr;
    read_cell(list_model, list_iter, column, text);
}

std::string MGDialog::TreeModelGetStringExt(int32_t column) const {
    return text_cell(list_model, list_iter, column);
}

void MGDialog::TreeModelGetBoolean(int32_t column, int32_t* value) const {
    read_cell(list_model, list_iter, column, value);
}

void MGDialog::TreeModelGetNum(int32_t column, int32_t* value) const {
    read_cell(list_model, list_iter, column, value);
}

int32_t MGDialog::TreeModelGetIndex() const {
    return row_index(list_model, list_iter);
}

std::vector<int32_t> MGDialog::TreeModelGetSelectedIndex() const {
    if (selection_mode == GTK_SELECTION_NONE) return {};
    if (selection_mode == GTK_SELECTION_MULTIPLE) return indexes_of(selected_rows);
    const int32_t index = TreeModelGetIndex();
    return index < 0 ? std::vector<int32_t>{} : std::vector<int32_t>{index};
}

// --- Moves ---

bool MGDialog::ListStoreMoveTop(GtkListStore* store) {
    const std::vector<int32_t> rows = rows_to_move(*this, store);
    if (selection_mode == GTK_SELECTION_MULTIPLE)
        return !rows.empty() && move_towards_head(*this, store, rows, rows.front());
    if (rows.empty() || rows.front() == 0) return false;
    gtk_list_store_move_after(store, &list_iter, nullptr);
    return true;
}

bool MGDialog::ListStoreMoveBottom(GtkListStore* store) {
    const std::vector<int32_t> rows = rows_to_move(*this, store);
    const int32_t bottom = ListStoreGetNumRows(store) - 1;
    if (selection_mode == GTK_SELECTION_MULTIPLE)
        return !rows.empty() && move_towards_tail(*this, store, rows, bottom - rows.back());
    if (rows.empty() || rows.back() >= bottom) return false;
    gtk_list_store_move_before(store, &list_iter, nullptr);
    return true;
}

bool MGDialog::ListStoreMoveUp(GtkListStore* store) {
    return move_towards_head(*this, store, rows_to_move(*this, store), 1);
}

bool MGDialog::ListStoreMoveDown(GtkListStore* store) {
    return move_towards_tail(*this, store, rows_to_move(*this, store), 1);
}
