// The [v] marks of a list: one boolean column of a store, which lives on the screen alone, and the deletion that they
// drive. On the toolkit's thread only.
#pragma once

#include "dialog/make_dialog.h"

#include <string>
#include <vector>

// Inverts the column of the row that the path names.
void status_toggle(MGDialog* dialog, const char* path, GtkListStore* store, int column);
// Writes value into the column of all rows.
void select_all(MGDialog* dialog, GtkListStore* store, int column, int value);
// How many of the first `rows` rows are marked; 0 for less than one row.
int get_num_v_selected(MGDialog* dialog, GtkListStore* store, int rows, int column);
// Whether the row is marked; it becomes the current one.
bool row_is_marked(MGDialog* dialog, GtkListStore* store, int row, int column);

// Asks, and removes the marked rows from the store and their elements from the list. Tells the user where none is
// marked; says nothing where there are no rows.
template <class Element>
void delete_marked_rows(MGDialog* dialog, GtkListStore* store, int column, std::vector<Element>& list) {
    const int rows = dialog->ListStoreGetNumRows(store);
    if (rows < 1) return;
    const int count = get_num_v_selected(dialog, store, rows, column);
    if (count < 1) {
        show_message(dialog, "Удаляемые записи нужно отметить в колонке [v]");
        return;
    }
    const std::string question = "Вы действительно хотите удалить (" + std::to_string(count) + ") записей из списка?";
    if (!ask_yes_no(dialog, question.c_str())) return;

    std::vector<bool> marked(static_cast<size_t>(rows));
    std::vector<int32_t> removed;
    for (int row = 0; row < rows; ++row) {
        if (!row_is_marked(dialog, store, row, column)) continue;
        marked[static_cast<size_t>(row)] = true;
        removed.push_back(row);
    }
    dialog->ListStoreDeleteRows(store, removed);
    // In one pass, since moving all that follows for each row would be quadratic.
    size_t index = 0;
    std::erase_if(list, [&](const Element&) { return marked[index++]; });
}
