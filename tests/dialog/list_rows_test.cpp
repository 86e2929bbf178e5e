// The cursors of MGDialog on lists, trees and their selections, on real views.
#include "dialog/mg_dialog.h"
#include "support/ui_script.h"

#include <cstring>

namespace {

const char* definition = R"(<interface>
  <object class="GtkListStore" id="store"><columns><column type="gchararray"/></columns></object>
  <object class="GtkTreeStore" id="tree_store"><columns><column type="gchararray"/></columns></object>
  <object class="GtkDialog" id="dialog"><child internal-child="vbox"><object class="GtkBox">
    <child><object class="GtkTreeView" id="view"><property name="model">store</property></object></child>
    <child><object class="GtkTreeView" id="tree"><property name="model">tree_store</property></object></child>
  </object></child></object>
</interface>)";

class Lists : public testing::Test {
protected:
    // Fills the list with rows "a", "b", … and selects some of them; whether there is a selection then.
    bool fill(int rows, GtkSelectionMode mode, const std::vector<int>& selected) {
        gtk_tree_selection_set_mode(gtk_tree_view_get_selection(view), mode);
        dialog.ListStoreDeleteAll(store);
        for (int row = 0; row < rows; ++row) {
            dialog.ListStoreAppend(store);
            dialog.ListStoreSetString(store, 0, std::string(1, static_cast<char>('a' + row)).c_str());
        }
        if (mode != GTK_SELECTION_NONE) UiWindow(dialog.window).select("view", selected);
        return dialog.TreeViewGetSelection(view, &found);
    }

    std::string rows() {
        std::string text;
        for (const auto& row : UiWindow(dialog.window).table("view")) text += row[0];
        return text;
    }

    MGDialog dialog{definition, std::strlen(definition), "dialog"};
    GtkListStore* store = GTK_LIST_STORE(dialog.GetObject("store"));
    GtkTreeView* view = GTK_TREE_VIEW(dialog.GetObject("view"));
    GtkListStore* found = nullptr;
};

TEST_F(Lists, ReadsAndDeletesTheSelectionByItsMode) {
    const struct {
        GtkSelectionMode mode;
        std::vector<int> selected;
        const char* left; // after the deletion
    } table[] = {
        {GTK_SELECTION_MULTIPLE, {1, 2, 5}, "ade"},
        {GTK_SELECTION_MULTIPLE, {}, "abcdef"},
        {GTK_SELECTION_BROWSE, {1}, "acdef"},
        {GTK_SELECTION_NONE, {}, "abcdef"},
    };
    for (const auto& row : table) {
        SCOPED_TRACE("row " + std::to_string(&row - table));
        EXPECT_EQ(fill(6, row.mode, row.selected), !row.selected.empty());
        EXPECT_EQ(found, store);
        EXPECT_EQ(dialog.TreeModelGetSelectedIndex(), row.selected);
        EXPECT_EQ(static_cast<size_t>(dialog.TreeViewGetCountSelection()), row.selected.size());
        if (row.selected.size() == 1) {
            EXPECT_EQ(dialog.TreeModelGetIndex(), row.selected[0]); // a single row is current too
        }
        dialog.ListStoreDeleteSelection(store);
        EXPECT_EQ(rows(), row.left);
    }
}

TEST_F(Lists, KeepsTheCurrentRowWhereNoneIsFound) {
    fill(3, GTK_SELECTION_SINGLE, {});
    ASSERT_TRUE(dialog.ListStoreGetRow(store, "1"));
    EXPECT_FALSE(dialog.ListStoreGetRow(store, "7"));
    EXPECT_FALSE(dialog.ListStoreGetRowIndex(store, 3));
    EXPECT_EQ(dialog.TreeModelGetIndex(), 1);
    dialog.ListStoreInsert(store, 1);
    EXPECT_EQ(dialog.TreeModelGetStringExt(0), ""); // holds none
    dialog.ListStoreDeleteIter(store);
    EXPECT_EQ(rows(), "abc");
}

TEST_F(Lists, WalksATree) {
    GtkTreeStore* tree = GTK_TREE_STORE(dialog.GetObject("tree_store"));
    GtkTreeView* tree_view = GTK_TREE_VIEW(dialog.GetObject("tree"));
    EXPECT_FALSE(dialog.TreeStoreAppendChild(tree_view, &tree)); // nothing is selected
    dialog.TreeStoreAppendRoot(tree);
    dialog.TreeStoreAppendRoot(tree);
    UiWindow(dialog.window).select("tree", {1});
    for (const char* name : {"first", "second"}) {
        ASSERT_TRUE(dialog.TreeStoreAppendChild(tree_view, &tree));
        dialog.TreeStoreSetString(tree, 0, name);
    }
    EXPECT_EQ(dialog.TreeStoreGetRootIndex(), 1);
    ASSERT_TRUE(dialog.TreeStoreGetParentRow(tree));
    EXPECT_FALSE(dialog.TreeStoreGetParentRow(tree)); // still that root
    GtkTreeIter parent;
    EXPECT_EQ(dialog.TreeStoreGetNumChildRows(tree, &parent), 2);
    ASSERT_TRUE(dialog.TreeStoreGetChildRowIndex(tree, &parent, 0));
    dialog.TreeStoreDeleteSelection(tree);
    ASSERT_TRUE(dialog.TreeStoreGetRow(tree, "1:0"));
    EXPECT_FALSE(dialog.TreeStoreGetRow(tree, "1:1"));
    EXPECT_EQ(dialog.TreeStoreGetString(0), "second");
}

} // namespace
