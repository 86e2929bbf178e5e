// What the list members and the tree members of MGDialog share. Nothing here changes a cursor unless it succeeds. On
// the toolkit's thread only.
#pragma once

#include "dialog/gtk_owner.h"

#include <string>
#include <vector>

// The first index of a row's path, which in a list is its row number; -1 if the row has no path.
inline int row_index(GtkTreeModel* model, const GtkTreeIter& row) {
    GtkTreeIter copy = row; // the toolkit takes it as mutable
    const GtkPath path(model ? gtk_tree_model_get_path(model, &copy) : nullptr);
    return path ? gtk_tree_path_get_indices(path.get())[0] : -1;
}

// The row that a path names in text; false if the text is no path or there is no such row.
inline bool find_row(GtkTreeModel* model, const char* text, GtkTreeIter& row) {
    const GtkPath path(text ? gtk_tree_path_new_from_string(text) : nullptr);
    GtkTreeIter found;
    if (!path || !gtk_tree_model_get_iter(model, &found, path.get())) return false;
    row = found;
    return true;
}

// The child of `parent` with that index; a null parent means the root rows.
inline bool find_child(GtkTreeModel* model, GtkTreeIter* parent, int index, GtkTreeIter& row) {
    GtkTreeIter found;
    if (!gtk_tree_model_iter_nth_child(model, &found, parent, index)) return false;
    row = found;
    return true;
}

// `value` points to what the column's type asks for.
inline void read_cell(GtkTreeModel* model, const GtkTreeIter& row, int column, void* value) {
    GtkTreeIter copy = row;
    gtk_tree_model_get(model, &copy, column, value, -1);
}

// A text cell; empty if it holds none.
inline std::string text_cell(GtkTreeModel* model, const GtkTreeIter& row, int column) {
    char* text = nullptr;
    read_cell(model, row, column, &text);
    const GtkText owner(text);
    return text ? text : "";
}

// The order of `count` rows once `rows` (ascending) have moved by `distance` and the others have closed up around
// them: the old number of each. The same as moving them one by one from the side to which they go, without the walk.
inline std::vector<int> order_after_move(int count, const std::vector<int>& rows, int distance) {
    constexpr int open = -1;
    std::vector<int> order(static_cast<size_t>(count), open);
    std::vector<bool> moved(order.size());
    for (const int row : rows) {
        order[static_cast<size_t>(row + distance)] = row;
        moved[static_cast<size_t>(row)] = true;
    }
    size_t next = 0;
    for (int& row : order) {
        if (row != open) continue;
        while (moved[next]) ++next;
        row = static_cast<int>(next++);
    }
    return order;
}
