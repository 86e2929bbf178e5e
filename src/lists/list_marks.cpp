// Setting and counting the [v] marks of a list.
#include "lists/list_marks.h"

void status_toggle(MGDialog* dialog, const char* path, GtkListStore* store, int column) {
    if (!dialog->ListStoreGetRow(store, path)) return;
    int marked = 0;
    dialog->TreeModelGetBoolean(column, &marked);
    dialog->ListStoreSetBoolean(store, column, !marked);
}

void select_all(MGDialog* dialog, GtkListStore* store, int column, int value) {
    const int rows = dialog->ListStoreGetNumRows(store);
    for (int row = 0; row < rows; ++row)
        if (dialog->ListStoreGetRowIndex(store, row)) dialog->ListStoreSetBoolean(store, column, value);
}

int get_num_v_selected(MGDialog* dialog, GtkListStore* store, int rows, int column) {
    int count = 0;
    for (int row = 0; row < rows; ++row) count += row_is_marked(dialog, store, row, column);
    return count;
}

bool row_is_marked(MGDialog* dialog, GtkListStore* store, int row, int column) {
    if (!dialog->ListStoreGetRowIndex(store, row)) return false;
    int marked = 0;
    dialog->TreeModelGetBoolean(column, &marked);
    return marked;
}
