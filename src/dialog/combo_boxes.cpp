// Members of MGDialog that work on combo boxes and their rows.
#include "dialog/mg_dialog.h"
#include "dialog/rows.h"
#include "dialog/valid_text.h"

#include <algorithm>
#include <span>

namespace {

// The columns of a combo box with texts: the text and the row's id.
GtkListStorePtr make_rows() {
    return GtkListStorePtr(gtk_list_store_new(2, G_TYPE_STRING, G_TYPE_STRING));
}

// In one call for each row and without a copy more than the store's own, since there can be 100,000.
void append_rows(GtkListStore* rows, std::span<const std::string> texts) {
    int column = 0;
    GValue value = G_VALUE_INIT;
    g_value_init(&value, G_TYPE_STRING);
    for (const std::string& text : texts) {
        const ValidText valid(text.c_str());
        g_value_set_static_string(&value, valid.get());
        gtk_list_store_insert_with_valuesv(rows, nullptr, -1, &column, &value, 1);
    }
    g_value_unset(&value);
}

int count_of_rows(GtkTreeModel* rows) {
    return gtk_tree_model_iter_n_children(rows, nullptr);
}

} // namespace

// The rows of one combo box alone, which it has from now on if it shared them.
GtkListStore* MGDialog::OwnRows(GtkComboBox* combo) const {
    GtkTreeModel* model = gtk_combo_box_get_model(combo);
    const auto is_model = [&](const auto& shared) { return GTK_TREE_MODEL(shared.second.get()) == model; };
    if (std::ranges::none_of(shared_rows_, is_model)) return GTK_LIST_STORE(model);
    std::vector<std::string> texts;
    GtkTreeIter row;
    for (gboolean found = gtk_tree_model_get_iter_first(model, &row); found;
         found = gtk_tree_model_iter_next(model, &row))
        texts.push_back(text_cell(model, row, 0));
    const GtkListStorePtr own = make_rows();
    append_rows(own.get(), texts);
    gtk_combo_box_set_model(combo, GTK_TREE_MODEL(own.get()));
    return own.get();
}

void MGDialog::ComboBoxTextAppend(const char* id, const char* text) {
    if (id && text) append_rows(OwnRows(GTK_COMBO_BOX(GetObject(id))), std::vector<std::string>{text});
}

void MGDialog::ComboBoxTextAppendAll(const char* id, const std::vector<std::string>& texts) {
    if (!id) return;
    GtkComboBox* combo = GTK_COMBO_BOX(GetObject(id));
    if (count_of_rows(gtk_combo_box_get_model(combo)) > 0) return append_rows(OwnRows(combo), texts);
    GtkListStorePtr& rows = shared_rows_[&texts];
    if (!rows || count_of_rows(GTK_TREE_MODEL(rows.get())) != static_cast<int>(texts.size())) {
        rows = make_rows();
        append_rows(rows.get(), texts);
    }
    gtk_combo_box_set_model(combo, GTK_TREE_MODEL(rows.get())); // a live list would follow every row
}

void MGDialog::ComboBoxTextRemoveAll(const char* id) {
    if (id) gtk_combo_box_set_model(GTK_COMBO_BOX(GetObject(id)), GTK_TREE_MODEL(make_rows().get()));
}

char* MGDialog::ComboBoxTextGet(const char* id) const {
    return id ? gtk_combo_box_text_get_active_text(GTK_COMBO_BOX_TEXT(GetObject(id))) : nullptr;
}

void MGDialog::ComboBoxSetNum(const char* id, int32_t index) {
    if (id) gtk_combo_box_set_active(GTK_COMBO_BOX(GetObject(id)), index);
}

int32_t MGDialog::ComboBoxGetNum(const char* id) const {
    return id ? gtk_combo_box_get_active(GTK_COMBO_BOX(GetObject(id))) : 0;
}

const char* MGDialog::ComboBoxGetId(const char* id) const {
    return id ? gtk_combo_box_get_active_id(GTK_COMBO_BOX(GetObject(id))) : nullptr;
}

std::string MGDialog::ComboBoxGetIdStr(const char* id) const {
    const char* row_id = ComboBoxGetId(id);
    return row_id ? row_id : "";
}

void MGDialog::ComboBoxSetId(const char* id, const char* row_id) {
    if (id) gtk_combo_box_set_active_id(GTK_COMBO_BOX(GetObject(id)), row_id);
}
