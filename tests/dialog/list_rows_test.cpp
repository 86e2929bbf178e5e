// The cursors of MGDialog on lists, trees and their selections, on real views.
#include "dialog/mg_dialog.h"
#include "support/ui_script.h"

#include <cstring>
#include <random>

namespace {

using testing::ElementsAre;

const char* definition = R"(<interface>
  <object class="GtkListStore" id="store"><columns>
    <column type="gchararray"/><column type="gboolean"/><column type="gint"/></columns></object>
  <object class="GtkTreeStore" id="tree_store"><columns>
    <column type="gchararray"/><column type="gpointer"/><column type="GdkPixbuf"/></columns></object>
  <object class="GtkImage" id="icon"><property name="icon-name">gtk-file</property></object>
  <object class="GtkDialog" id="dialog"><child internal-child="vbox"><object class="GtkBox">
    <child><object class="GtkTreeView" id="view"><property name="model">store</property></object></child>
    <child><object class="GtkTreeView" id="tree"><property name="model">tree_store</property></object></child>
    <child><object class="GtkTreeView" id="bare"/></child>
  </object></child></object>
</interface>)";

class Lists : public testing::Test {
protected:
    // Fills the list with rows "a", "b", … and selects some of them.
    void fill(int rows, GtkSelectionMode mode, const std::vector<int>& selected) {
        gtk_tree_selection_set_mode(gtk_tree_view_get_selection(view), mode);
        dialog.ListStoreDeleteAll(store);
        for (int row = 0; row < rows; ++row) {
            dialog.ListStoreAppend(store);
            dialog.ListStoreSetString(store, 0, std::string(1, static_cast<char>('a' + row)).c_str());
        }
        if (mode != GTK_SELECTION_NONE) UiWindow(dialog.window).select("view", selected);
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

using Move = bool (MGDialog::*)(GtkListStore*);

TEST_F(Lists, MovesSelectedRows) {
    const auto up = &MGDialog::ListStoreMoveUp, down = &MGDialog::ListStoreMoveDown;
    const auto top = &MGDialog::ListStoreMoveTop, bottom = &MGDialog::ListStoreMoveBottom;
    const struct {
        GtkSelectionMode mode;
        int count;
        std::vector<int> selected;
        Move move;
        const char* after; // null: nothing moves
        int current;       // the row that is current then, in the modes of one row
    } table[] = {
        {GTK_SELECTION_MULTIPLE, 5, {2, 4}, top, "caebd", -1}, {GTK_SELECTION_MULTIPLE, 5, {0, 2}, bottom, "bdaec", -1},
        {GTK_SELECTION_SINGLE, 4, {2}, top, "cabd", 0},        {GTK_SELECTION_BROWSE, 4, {0}, top, nullptr, 0},
        {GTK_SELECTION_SINGLE, 4, {1}, bottom, "acdb", 3},     {GTK_SELECTION_BROWSE, 4, {3}, bottom, nullptr, 3},
        {GTK_SELECTION_BROWSE, 4, {2}, up, "acbd", 2},         {GTK_SELECTION_SINGLE, 4, {0}, up, nullptr, 0},
        {GTK_SELECTION_BROWSE, 4, {2}, down, "abdc", 2},       {GTK_SELECTION_SINGLE, 4, {3}, down, nullptr, 3},
        {GTK_SELECTION_NONE, 4, {}, up, nullptr, -1},
    };
    for (const auto& row : table) {
        SCOPED_TRACE("row " + std::to_string(&row - table));
        fill(row.count, row.mode, row.selected);
        const std::string before = rows();
        EXPECT_EQ(dialog.TreeViewGetSelection(view, &found), !row.selected.empty());
        EXPECT_EQ((dialog.*row.move)(store), row.after != nullptr);
        EXPECT_EQ(rows(), row.after ? row.after : before);
        if (row.current < 0) continue;
        EXPECT_EQ(dialog.TreeModelGetIndex(), row.current);
    }
}

// What the moves promise, in other words: the selected letters go to their rows plus a distance, the others fill what
// is left in their order.
std::string moved(const std::string& letters, const std::vector<int>& selected, int distance) {
    std::string result(letters.size(), ' '), others = letters;
    for (const int row : selected) {
        result[static_cast<size_t>(row + distance)] = letters[static_cast<size_t>(row)];
        std::erase(others, letters[static_cast<size_t>(row)]);
    }
    for (char& place : result)
        if (place == ' ') {
            place = others.front();
            others.erase(0, 1);
        }
    return result;
}

TEST_F(Lists, MovesAnySelectionAsAVectorDoes) {
    std::mt19937 random(20);
    for (int round = 0; round < 200; ++round) {
        const int count = 1 + static_cast<int>(random() % 9);
        std::vector<int> selected;
        for (int row = 0; row < count; ++row)
            if (random() % 2) selected.push_back(row);
        if (selected.empty()) continue;
        const int head = selected.front(), tail = count - 1 - selected.back();
        const std::pair<Move, int> moves[] = {{&MGDialog::ListStoreMoveTop, -head},
                                              {&MGDialog::ListStoreMoveUp, head ? -1 : 0},
                                              {&MGDialog::ListStoreMoveBottom, tail},
                                              {&MGDialog::ListStoreMoveDown, tail ? 1 : 0}};
        for (const auto& [move, distance] : moves) {
            fill(count, GTK_SELECTION_MULTIPLE, selected);
            SCOPED_TRACE(rows() + " " + testing::PrintToString(selected) + " by " + std::to_string(distance));
            const std::string expected = moved(rows(), selected, distance);
            ASSERT_TRUE(dialog.TreeViewGetSelection(view, &found));
            ASSERT_EQ((dialog.*move)(store), distance != 0);
            ASSERT_EQ(rows(), expected);
        }
    }
}

TEST_F(Lists, ReadsTheSelectionByItsMode) {
    fill(6, GTK_SELECTION_MULTIPLE, {1, 2, 5});
    ASSERT_TRUE(dialog.TreeViewGetSelection(view, &found));
    EXPECT_EQ(dialog.TreeViewGetCountSelection(), 3);
    EXPECT_THAT(dialog.TreeModelGetSelectedIndex(), ElementsAre(1, 2, 5));
    dialog.ListStoreDeleteSelection(store);
    EXPECT_EQ(rows(), "ade");

    UiWindow(dialog.window).select("view", {1});
    ASSERT_TRUE(dialog.TreeViewGetSelection(view, &found));
    EXPECT_EQ(dialog.TreeModelGetStringExt(0), "d"); // a single row is current too

    found = nullptr;
    UiWindow(dialog.window).select("view", {});
    EXPECT_FALSE(dialog.TreeViewGetSelection(view, &found));
    EXPECT_EQ(found, store);
    EXPECT_EQ(dialog.list_model, nullptr);
    EXPECT_EQ(dialog.TreeModelGetIndex(), -1);

    fill(3, GTK_SELECTION_BROWSE, {1});
    ASSERT_TRUE(dialog.TreeViewGetSelection(view, &found));
    EXPECT_EQ(dialog.TreeViewGetCountSelection(), 1);
    EXPECT_THAT(dialog.TreeModelGetSelectedIndex(), ElementsAre(1));
    dialog.ListStoreDeleteSelection(store);
    EXPECT_EQ(rows(), "ac");

    fill(3, GTK_SELECTION_NONE, {});
    EXPECT_FALSE(dialog.TreeViewGetSelection(view, &found));
    EXPECT_EQ(dialog.TreeViewGetCountSelection(), 0);
    dialog.ListStoreDeleteSelection(store);
    EXPECT_EQ(rows(), "abc");

    GtkTreeView* bare = GTK_TREE_VIEW(dialog.GetObject("bare"));
    EXPECT_FALSE(dialog.TreeViewGetSelection(bare, &found));
    EXPECT_FALSE(dialog.GetListStoreFromTreeView(bare, &found));
}

TEST_F(Lists, WorksOnTheCurrentRow) {
    fill(3, GTK_SELECTION_SINGLE, {});
    ASSERT_TRUE(dialog.ListStoreGetRow(store, "1"));
    EXPECT_FALSE(dialog.ListStoreGetRow(store, "7"));
    {
        ToolkitMessages said;
        EXPECT_FALSE(dialog.ListStoreGetRow(store, "no path"));
    }
    EXPECT_FALSE(dialog.ListStoreGetRowIndex(store, 3));
    EXPECT_EQ(dialog.TreeModelGetIndex(), 1); // as before the failures

    dialog.ListStoreInsert(store, 1);
    EXPECT_EQ(dialog.TreeModelGetStringExt(0), ""); // holds none
    dialog.ListStoreSetString(store, 0, "ж");
    dialog.ListStoreSetBoolean(store, 1, true);
    dialog.ListStoreSetNum(store, 2, -7);
    char* text = nullptr;
    int32_t flag = 0, number = 0;
    dialog.TreeModelGetString(0, &text);
    dialog.TreeModelGetBoolean(1, &flag);
    dialog.TreeModelGetNum(2, &number);
    EXPECT_STREQ(text, "ж");
    EXPECT_EQ(flag, 1);
    EXPECT_EQ(number, -7);
    MGDialog::Free(text);

    dialog.TreeViewSetSelection(view);
    EXPECT_TRUE(dialog.TreeViewGetSelection(view, &found));
    EXPECT_THAT(dialog.TreeModelGetSelectedIndex(), ElementsAre(1));
    dialog.ListStoreDeleteIter(store);
    EXPECT_EQ(rows(), "abc");
    EXPECT_EQ(dialog.ListStoreGetNumRows(store), 3);
}

TEST_F(Lists, WalksATree) {
    GtkTreeStore* tree = GTK_TREE_STORE(dialog.GetObject("tree_store"));
    GtkTreeStore* from_view = nullptr;
    GtkTreeView* tree_view = GTK_TREE_VIEW(dialog.GetObject("tree"));
    EXPECT_FALSE(dialog.TreeStoreAppendChild(tree_view, &from_view)); // nothing is selected
    EXPECT_EQ(dialog.tree_model, nullptr);
    for (const char* name : {"x", "y"}) {
        dialog.TreeStoreAppendRoot(tree);
        dialog.TreeStoreSetString(tree, 0, name);
    }
    UiWindow(dialog.window).select("tree", {1});
    for (const char* name : {"y0", "y1"}) {
        ASSERT_TRUE(dialog.TreeStoreAppendChild(tree_view, &from_view));
        dialog.TreeStoreSetString(tree, 0, name);
        dialog.TreeStoreSetIcon(tree, 2, "icon"); // a named icon has no pixbuf
    }
    EXPECT_EQ(dialog.TreeStoreGetRootIndex(), 1);
    EXPECT_FALSE(dialog.TreeStoreIsChild(tree));

    ASSERT_TRUE(dialog.TreeStoreGetParentRow(tree));
    EXPECT_FALSE(dialog.TreeStoreGetParentRow(tree));
    EXPECT_EQ(dialog.TreeStoreGetString(0), "y"); // still that root
    dialog.TreeStorePushIter();
    GtkTreeIter parent;
    EXPECT_EQ(dialog.TreeStoreGetNumChildRows(tree, &parent), 2);
    ASSERT_TRUE(dialog.TreeStoreGetChildRowIndex(tree, &parent, 0));
    EXPECT_EQ(dialog.TreeStoreGetString(0), "y0");
    EXPECT_FALSE(dialog.TreeStoreGetChildRowIndex(tree, &parent, 2));
    dialog.TreeStoreDeleteSelection(tree);
    ASSERT_TRUE(dialog.TreeStoreGetRow(tree, "1:0"));
    EXPECT_EQ(dialog.TreeStoreGetString(0), "y1");
    EXPECT_FALSE(dialog.TreeStoreGetRow(tree, "1:1"));
    dialog.TreeStorePopIter();
    EXPECT_EQ(dialog.TreeStoreGetString(0), "y");
    ASSERT_TRUE(dialog.TreeStoreGetRootRowIndex(tree, 0));
    EXPECT_EQ(dialog.TreeStoreGetNumChildRows(tree, nullptr), 0);
}

TEST_F(Lists, AMousePressCountsOnASelectedRow) {
    gtk_tree_view_append_column(
        view, gtk_tree_view_column_new_with_attributes("", gtk_cell_renderer_text_new(), "text", 0, nullptr));
    fill(3, GTK_SELECTION_SINGLE, {1});
    gtk_widget_show_all(dialog.window);
    ASSERT_TRUE(handle_events_until([&] { return gtk_widget_get_allocated_height(GTK_WIDGET(view)) > 10; }));
    const auto press_on = [&](const char* row, guint button) {
        GtkTreePath* path = gtk_tree_path_new_from_string(row);
        GdkRectangle cell;
        gtk_tree_view_get_cell_area(view, path, gtk_tree_view_get_column(view, 0), &cell);
        gtk_tree_path_free(path);
        GdkEventButton event{};
        event.type = GDK_BUTTON_PRESS;
        event.button = button;
        event.x = cell.x + 1;
        event.y = cell.y + 1;
        return event;
    };
    const GdkEventButton left = press_on("1", 1), right = press_on("1", 3), other = press_on("0", 3);
    EXPECT_TRUE(dialog.IsPressMouseButtonOnSelected(view, &left));
    EXPECT_FALSE(dialog.IsPressMouseRightButtonOnSelected(view, &left));
    EXPECT_TRUE(dialog.IsPressMouseRightButtonOnSelected(view, &right));
    EXPECT_FALSE(dialog.IsPressMouseButtonOnSelected(view, &other));
}

} // namespace
