// One open window and the only road to the toolkit's widgets: everything above names a widget by its id in the
// interface definition and holds no widget of its own, except what a signal hands in.
// MGDialog throws nothing. A null id does nothing and gives the neutral value that the member names; an id that the
// definition lacks gives the toolkit's critical warning, no effect and the toolkit's neutral value.
// Rows are worked on through a cursor: a member that finds or makes a row leaves it current, and the next ones act on
// it. Results by pointer are never null pointers unless said. Text is UTF-8; what isn't reaches a widget as U+FFFD.
// Used on the toolkit's thread only.
#pragma once

#include "dialog/gtk_owner.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <stack>
#include <string>
#include <vector>

// The windows of all loaded objects in the order of their creation. A new one becomes transient for the one on top.
extern std::stack<GtkWidget*> g_dialog_stack;

class MGDialog {
public:
    // What the dialog edits; set by the opener before Show.
    void* user_data = nullptr;  // the working copy
    void* user_data2 = nullptr; // the list or the parent record that the dialog works on

    bool find_active = false; // a search has a current hit; in the address dialog: the list is the virtual one
    int32_t find_index = 0;   // row of the last search hit
    uint32_t list_kind = 0;   // which list an admission dialog shows
    std::string work_text;    // the filter of the running search, or the name of a result file

    GtkWidget* window = nullptr;   // null until a load has succeeded and after Destroy
    GtkBuilder* builder = nullptr; // owns the widgets; one reference

    // The cursor on a list. list_iter is valid until its row is removed.
    GtkTreeIter list_iter{};
    GtkTreeSelection* list_selection = nullptr;
    GtkTreeModel* list_model = nullptr;

    // The cursor on a tree.
    GtkTreeModel* tree_model = nullptr;
    GtkTreeIter tree_iter{};
    GtkTreeIter saved_tree_iter{};
    GtkTreeSelection* tree_selection = nullptr;

    GtkSelectionMode selection_mode = GTK_SELECTION_NONE; // as last read by TreeViewGetSelection
    GList* selected_rows = nullptr; // owned GtkTreePath, ascending; of GTK_SELECTION_MULTIPLE alone

    // --- Life cycle and window ---

    // Each loads a definition and takes its object `object_id` as the window: makes it transient for the top of
    // g_dialog_stack and pushes it there. A failure goes to standard error and leaves the object without a window.
    MGDialog(const char* resource_prefix, const char* resource_name, const char* object_id); // "prefix/name"
    MGDialog(const char* file_name, const char* object_id);
    MGDialog(const char* text, size_t length, const char* object_id);
    ~MGDialog();
    MGDialog(const MGDialog&) = delete;
    MGDialog& operator=(const MGDialog&) = delete;

    // Takes the top off g_dialog_stack, destroys the window and all else that was loaded. Objects must go in the
    // reverse order of their creation. A second call does nothing.
    void Destroy();
    void Show();
    // Runs the window, which must be a GtkDialog, in a nested main loop; gives back the response. The window stays.
    // GTK_RESPONSE_CANCEL without a window.
    int32_t Run();
    // Leaves the innermost main loop.
    void Quit();
    // Borrowed; null where there is no builder, no id or no such object.
    GObject* GetObject(const char* id) const;
    void WindowSetName(const char* title);
    void WindowSetFileIcon(const char* path); // a failure is ignored
    // Gives back what a member returned as allocated; null is ignored.
    static void Free(void* memory);

    // --- Widgets by id ---

    void SetLabel(const char* id, const char* text);
    const char* GetLabel(const char* id) const; // owned by the widget; null for a null id

    // The entry shows the text as far as it can: its max_length and the toolkit's 64 KiB may cut it.
    void SetEntry(const char* id, const char* text);
    // What SetEntry gave, byte for byte, while nobody has touched the entry since; then what the entry shows. Never
    // null; lives until the entry changes.
    const char* GetEntry(const char* id) const;
    void SetEntryVisible(const char* id);
    void SetEntryInvisible(const char* id);

    void ComboBoxTextAppend(const char* id, const char* text);
    // The same for all texts, at once. Combo boxes of this window that get the same vector into an empty list share its
    // rows, until one of them changes; the vector must live as long as this object and may only grow.
    void ComboBoxTextAppendAll(const char* id, const std::vector<std::string>& texts);
    void ComboBoxTextRemoveAll(const char* id);
    char* ComboBoxTextGet(const char* id) const; // allocated: Free; or null
    void ComboBoxSetNum(const char* id, int32_t index);
    int32_t ComboBoxGetNum(const char* id) const;       // -1 where no row is active; 0 for a null id
    const char* ComboBoxGetId(const char* id) const;    // owned by the widget; null where no row is active
    std::string ComboBoxGetIdStr(const char* id) const; // empty where no row is active
    void ComboBoxSetId(const char* id, const char* row_id);

    // Emits "toggled" on a change, so a connected handler runs during the call.
    void ToggleButtonSet(const char* id, bool value);
    bool ToggleButtonGet(const char* id) const;
    // Every refused input ends with this call on the widget at fault: its notebook page comes to the front, and it is
    // scrolled into view. In a frame that is closed the focus goes to the choice in the frame's title, which opens it.
    void SetFocusToProblemWidget(const char* id);

    // These take the id of the adjustment, not of the spin button.
    void SpinSetMax(const char* id, double value);
    void SpinSetMin(const char* id, double value);
    void SpinSet(const char* id, double value);
    int32_t SpinGet(const char* id) const; // cut towards zero; counts what was typed into the button that has the focus

    void SetSensitive(const char* id, bool value);
    bool GetSensitive(const char* id) const;
    void WidgetHide(const char* id);
    void WidgetShow(const char* id);
    // Nothing, and no warning, if either object is missing.
    void StackSetVisibleChild(const char* stack_id, const char* child_id);
    void SetSwitch(const char* id, bool value);
    bool GetSwitch(const char* id) const;
    // Months count from 1.
    void GetCalendar(const char* id, int32_t* year, int32_t* month, int32_t* day) const;
    void SetCalendar(const char* id, int32_t year, int32_t month, int32_t day);

    // Sets the bar, 0.0 to 1.0, and lets the toolkit handle all pending events: other handlers may run meanwhile.
    void SetProgress(const char* id, double fraction);
    // Row `index` of `total` is done. Gives back whether the stop toggle is set.
    bool SetProgressExt(const char* bar_id, const char* stop_id, int32_t total, int32_t index);
    void SetNullProgressExt(const char* bar_id, const char* stop_id);

    void SetBuffer(const char* id, const char* text);
    void SetBufferString(const char* id, const std::string& text);

    // Of a GtkFileChooserButton.
    void FileChooserTitleSet(const char* id, const char* title);
    char* FileChooserGetFilename(const char* id) const; // allocated: Free; or null
    void FileChooserSetFilename(const char* id, const char* path);

    // --- Boxes ---

    // Shows `text` as it stands in a modal box over this window; gives back its response, -1 without a window. Of a
    // text that no screen could hold it leaves out the middle, of long lines and of many; who selects all and copies
    // gets the whole.
    int32_t MessageBox(const char* title, const char* text, GtkMessageType type, GtkButtonsType buttons);

    // A file chooser over this window. The response, -1 without a window; on GTK_RESPONSE_ACCEPT `file_name` is the
    // choice, allocated (Free), else null. `initial` may be null.
    int32_t GetFileNameExt(const char* title, GtkFileChooserAction action, const char* initial, char** file_name);
    int32_t GetFileName(const char* title, const char* initial, char** file_name); // to save
    // Where to save. Folder and name are proposals and may be empty. Whether the user accepted.
    bool GetFileNameSave(const char* title, std::string folder, std::string name, std::string& out_folder,
                         std::string& out_name);
    bool GetFileNameSave(const char* title, std::string folder, std::string name, std::string& out_path);
    // Several files to open: their bare names in the chooser's order, and the folder where they lie. Whether at least
    // one was taken.
    bool GetFilesFromDir(const char* title, std::string folder, std::string& out_folder,
                         std::vector<std::string>& out_names);

    // --- List rows ---
    // A member that finds a row gives false and leaves the current row if there is none.

    void ListStoreAppend(GtkListStore* store);
    void ListStoreInsert(GtkListStore* store, int32_t index); // before the row `index`
    void ListStoreSetString(GtkListStore* store, int32_t column, const char* text);
    void ListStoreSetBoolean(GtkListStore* store, int32_t column, bool value);
    void ListStoreSetNum(GtkListStore* store, int32_t column, int32_t value);
    bool ListStoreGetRow(GtkListStore* store, const char* path); // as "toggled" of a cell renderer names it
    bool ListStoreGetRowIndex(GtkListStore* store, int32_t index);
    int32_t ListStoreGetNumRows(GtkListStore* store) const;
    void ListStoreDeleteIter(GtkListStore* store);
    void ListStoreDeleteAll(GtkListStore* store);
    // Removes the rows that the last TreeViewGetSelection found.
    void ListStoreDeleteSelection(GtkListStore* store);
    // Removes the rows of these numbers, ascending; a cursor on one of them goes to the next row that stays.
    void ListStoreDeleteRows(GtkListStore* store, const std::vector<int32_t>& rows);

    // Move the rows that the last TreeViewGetSelection found. Several rows keep the gaps between them; nothing moves
    // if the first stands at the top already, or the last at the bottom. Whether rows moved. The row next to which
    // the last one was put becomes current.
    bool ListStoreMoveTop(GtkListStore* store);
    bool ListStoreMoveBottom(GtkListStore* store);
    bool ListStoreMoveUp(GtkListStore* store);
    bool ListStoreMoveDown(GtkListStore* store);

    // Cells of the current row.
    void TreeModelGetString(int32_t column, char** text) const; // allocated: Free; or null
    std::string TreeModelGetStringExt(int32_t column) const;
    void TreeModelGetBoolean(int32_t column, int32_t* value) const;
    void TreeModelGetNum(int32_t column, int32_t* value) const;
    int32_t TreeModelGetIndex() const; // row number of the current row, -1 if it has no path
    // Row numbers of the selection that the last TreeViewGetSelection found.
    std::vector<int32_t> TreeModelGetSelectedIndex() const;

    // --- Views ---

    // Reads what is selected: in multiple mode into selected_rows, and a single one also as the current row, else as
    // the current row. False if nothing is selected. `store` is set even then, unless the view has no model.
    bool TreeViewGetSelection(GtkTreeView* view, GtkListStore** store);
    int32_t TreeViewGetCountSelection() const; // after a successful TreeViewGetSelection
    bool GetListStoreFromTreeView(GtkTreeView* view, GtkListStore** store) const;
    void TreeViewSetSelection(GtkTreeView* view); // selects the current row
    void TreeViewSetCursor(GtkTreeView* view);    // moves the cursor to the current row
    bool IsPressMouseButtonOnSelected(GtkTreeView* view, const GdkEventButton* event) const;
    bool IsPressMouseRightButtonOnSelected(GtkTreeView* view, const GdkEventButton* event) const;
    void ShowPopupMenu(const GdkEventButton* event, const char* menu_id);
    int32_t ListBoxGetIndexRow(GtkListBoxRow* row) const;
    void ListBoxSetSingleClick(const char* id, bool value);

    // --- Tree rows ---
    // The same on tree_iter and tree_model; a tree view is read as having one selected row.

    void TreeStoreAppendRoot(GtkTreeStore* store);
    bool TreeStoreAppendChild(GtkTreeView* view,
                              GtkTreeStore** store); // under the selected row; false if there is none
    bool TreeStoreGetSelection(GtkTreeView* view, GtkTreeStore** store);
    void TreeStoreDeleteSelection(GtkTreeStore* store); // removes the current row
    bool TreeStoreGetRow(GtkTreeStore* store, const char* path);
    bool TreeStoreGetRootRowIndex(GtkTreeStore* store, int32_t index);
    int32_t TreeStoreGetNumRootRows(GtkTreeStore* store) const;
    int32_t TreeStoreGetRootIndex() const; // index of the current row's root, -1 if the row has no path
    // Number of children of the current row, which is copied to `current` unless that is null.
    int32_t TreeStoreGetNumChildRows(GtkTreeStore* store, GtkTreeIter* current) const;
    bool TreeStoreGetChildRowIndex(GtkTreeStore* store, GtkTreeIter* parent, int32_t index);
    bool TreeStoreGetParentRow(GtkTreeStore* store);
    bool TreeStoreIsChild(GtkTreeStore* store) const; // whether the current row has children
    void TreeStorePushIter();                         // one level, no stack
    void TreeStorePopIter();
    void TreeStoreSetString(GtkTreeStore* store, int32_t column, const char* text);
    void TreeStoreSetBoolean(GtkTreeStore* store, int32_t column, bool value);
    void TreeStoreSetNum(GtkTreeStore* store, int32_t column, int32_t value);
    void TreeStoreSetPointer(GtkTreeStore* store, int32_t column, void* value);
    // The pixbuf of the GtkImage with that id; nothing if there is none.
    void TreeStoreSetIcon(GtkTreeStore* store, int32_t column, const char* image_id);
    void TreeStoreGetString(int32_t column, char** text) const; // allocated: Free; or null
    std::string TreeStoreGetString(int32_t column) const;
    void TreeStoreGetBoolean(int32_t column, int32_t* value) const;
    void TreeStoreGetNum(int32_t column, int32_t* value) const;
    void TreeStoreGetPointer(int32_t column, void** value) const;
    void TreeStoreExpandAll(GtkTreeView* view);
    void TreeStoreExpandRow(GtkTreeView* view); // the current row, one level

private:
    GtkListStore* OwnRows(GtkComboBox* combo) const;
    bool MakeBuilder();
    void Finish(bool added, GError* error, const char* object_id);
    void DestroyHiddenWindows();

    std::map<const std::vector<std::string>*, GtkListStorePtr> shared_rows_;
};
