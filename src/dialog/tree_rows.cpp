// Members of MGDialog that work on the rows of a tree store through its cursor.
#include "dialog/mg_dialog.h"
#include "dialog/rows.h"
#include "dialog/valid_text.h"

void MGDialog::TreeStoreAppendRoot(GtkTreeStore* store) {
    gtk_tree_store_append(store, &tree_iter, nullptr);
    tree_model = GTK_TREE_MODEL(store);
}

bool MGDialog::TreeStoreAppendChild(GtkTreeView* view, GtkTreeStore** store) {
    if (!TreeStoreGetSelection(view, store)) return false;
    GtkTreeIter parent = tree_iter;
    gtk_tree_store_append(*store, &tree_iter, &parent);
    return true;
}

bool MGDialog::TreeStoreGetSelection(GtkTreeView* view, GtkTreeStore** store) {
    tree_selection = gtk_tree_view_get_selection(view);
    tree_model = gtk_tree_view_get_model(view);
    if (tree_model) *store = GTK_TREE_STORE(tree_model);
    GtkTreeIter selected;
    if (tree_selection && tree_model && gtk_tree_selection_get_selected(tree_selection, nullptr, &selected)) {
        tree_iter = selected;
        return true;
    }
    tree_selection = nullptr;
    tree_model = nullptr;
    return false;
}

void MGDialog::TreeStoreDeleteSelection(GtkTreeStore* store) {
    gtk_tree_store_remove(store, &tree_iter);
}

bool MGDialog::TreeStoreGetRow(GtkTreeStore* store, const char* path) {
    if (!find_row(GTK_TREE_MODEL(store), path, tree_iter)) return false;
    tree_model = GTK_TREE_MODEL(store);
    return true;
}

bool MGDialog::TreeStoreGetRootRowIndex(GtkTreeStore* store, int32_t index) {
    return TreeStoreGetChildRowIndex(store, nullptr, index);
}

int32_t MGDialog::TreeStoreGetNumRootRows(GtkTreeStore* store) const {
    return gtk_tree_model_iter_n_children(GTK_TREE_MODEL(store), nullptr);
}

int32_t MGDialog::TreeStoreGetRootIndex() const {
    return row_index(tree_model, tree_iter);
}

int32_t MGDialog::TreeStoreGetNumChildRows(GtkTreeStore* store, GtkTreeIter* current) const {
    GtkTreeIter row = tree_iter;
    if (current) *current = row;
    return gtk_tree_model_iter_n_children(GTK_TREE_MODEL(store), &row);
}

bool MGDialog::TreeStoreGetChildRowIndex(GtkTreeStore* store, GtkTreeIter* parent, int32_t index) {
    if (!find_child(GTK_TREE_MODEL(store), parent, index, tree_iter)) return false;
    tree_model = GTK_TREE_MODEL(store);
    return true;
}

bool MGDialog::TreeStoreGetParentRow(GtkTreeStore* store) {
    GtkTreeIter parent;
    if (!gtk_tree_model_iter_parent(GTK_TREE_MODEL(store), &parent, &tree_iter)) return false;
    tree_iter = parent;
    tree_model = GTK_TREE_MODEL(store);
    return true;
}

bool MGDialog::TreeStoreIsChild(GtkTreeStore* store) const {
    GtkTreeIter row = tree_iter;
    return gtk_tree_model_iter_has_child(GTK_TREE_MODEL(store), &row);
}

void MGDialog::TreeStorePushIter() {
    saved_tree_iter = tree_iter;
}

void MGDialog::TreeStorePopIter() {
    tree_iter = saved_tree_iter;
}

void MGDialog::TreeStoreSetString(GtkTreeStore* store, int32_t column, const char* text) {
    gtk_tree_store_set(store, &tree_iter, column, ValidText(text).get(), -1);
}

void MGDialog::TreeStoreSetBoolean(GtkTreeStore* store, int32_t column, bool value) {
    gtk_tree_store_set(store, &tree_iter, column, static_cast<gboolean>(value), -1);
}

void MGDialog::TreeStoreSetNum(GtkTreeStore* store, int32_t column, int32_t value) {
    gtk_tree_store_set(store, &tree_iter, column, value, -1);
}

void MGDialog::TreeStoreSetPointer(GtkTreeStore* store, int32_t column, void* value) {
    gtk_tree_store_set(store, &tree_iter, column, value, -1);
}

void MGDialog::TreeStoreSetIcon(GtkTreeStore* store, int32_t column, const char* image_id) {
    GObject* image = GetObject(image_id);
    // An image of another kind, such as a named icon, has no pixbuf to ask for.
    if (!GTK_IS_IMAGE(image) || gtk_image_get_storage_type(GTK_IMAGE(image)) != GTK_IMAGE_PIXBUF) return;
    gtk_tree_store_set(store, &tree_iter, column, gtk_image_get_pixbuf(GTK_IMAGE(image)), -1);
}

void MGDialog::TreeStoreGetString(int32_t column, char** text) const {
    *text = nullptr;
    read_cell(tree_model, tree_iter, column, text);
}

std::string MGDialog::TreeStoreGetString(int32_t column) const {
    return text_cell(tree_model, tree_iter, column);
}

void MGDialog::TreeStoreGetBoolean(int32_t column, int32_t* value) const {
    read_cell(tree_model, tree_iter, column, value);
}

void MGDialog::TreeStoreGetNum(int32_t column, int32_t* value) const {
    read_cell(tree_model, tree_iter, column, value);
}

void MGDialog::TreeStoreGetPointer(int32_t column, void** value) const {
    read_cell(tree_model, tree_iter, column, value);
}

void MGDialog::TreeStoreExpandAll(GtkTreeView* view) {
    gtk_tree_view_expand_all(view);
}

void MGDialog::TreeStoreExpandRow(GtkTreeView* view) {
    const GtkPath path(gtk_tree_model_get_path(gtk_tree_view_get_model(view), &tree_iter));
    if (path) gtk_tree_view_expand_row(view, path.get(), FALSE);
}
