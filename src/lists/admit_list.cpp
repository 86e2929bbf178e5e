// The list dialog: opening it on a copy, searching, marking, adding, changing and deleting.
#include "lists/admit_list.h"

#include "app/globals.h"
#include "app/mg_err.h"
#include "dialog/make_dialog.h"
#include "editor/histories.h"
#include "lists/admit_modes.h"
#include "lists/handlers.h"
#include "lists/list_marks.h"
#include "lists/record_dialogs.h"
#include "runtime/mg_file.h"

namespace {

constexpr int COLUMN_MARK = 0;
constexpr int COLUMN_KEY = 1;

// The dialog that the user works in.
MGDialog* top() {
    return stackAdmitDialog.back();
}

// One name for what each type of element has under its own.
void fill_row(MGDialog* dialog, GtkListStore* store, bool reset_mark, const MGAdmit& user, unsigned mode) {
    fill_admit_user(dialog, store, reset_mark, user, mode);
}
void fill_row(MGDialog* dialog, GtkListStore* store, bool reset_mark, const MGQueue& queue, unsigned mode) {
    fill_admit_queue(dialog, store, reset_mark, queue, mode);
}
void fill_row(MGDialog* dialog, GtkListStore* store, bool reset_mark, const MGAllow& allow, unsigned mode) {
    fill_admit_allow(dialog, store, reset_mark, allow, mode);
}
void assign(MGDialog* record, MGAdmit& user, unsigned mode) {
    assign_admit_subject(record, user, mode);
}
void assign(MGDialog* record, MGQueue& queue, unsigned mode) {
    assign_admit_queue(record, queue, mode);
}
void assign(MGDialog* record, MGAllow& allow, unsigned mode) {
    assign_admit_allow(record, allow, mode);
}
bool find_num(const std::vector<MGAdmit>& list, const std::string& mask, int& position) {
    return find_num_in_admit(list, mask, position);
}
bool find_num(const std::vector<MGQueue>& list, const std::string& mask, int& position) {
    return find_num_in_queue(list, mask, position);
}
bool find_num(const std::vector<MGAllow>& list, const std::string& mask, int& position) {
    return find_num_in_allow(list, mask, position);
}

// The vector that a list dialog of this mode edits.
void* list_of_mode(unsigned mode, MGConfig& config, unsigned index, std::vector<MGAllow>* parent) {
    switch (mode) {
    case MODE_SERVER_USERS:
        return &config.admit;
    case MODE_GATEWAY_USERS:
        return &config.gw_admit;
    case MODE_FC_QUEUES:
        return &config.fc_queue;
    case MODE_FS_CLIENTS:
        return &config.fs_allow;
    case MODE_CLIENT_USERS:
        return &parent->at(index).admit;
    default:
        return &parent->at(index).queue;
    }
}

template <class Element>
void run_list(unsigned mode, MGConfig& config, std::vector<Element>& list) {
    std::vector<Element> copy = list;
    OpenDialog dialog(stackAdmitDialog, "dialog_admit", "Список допуска");
    if (mode != MODE_FS_CLIENTS) dialog->WidgetHide("button_box_admit");
    init_combo_box(top(), "combo_admit_filter", init_admit_filter);
    dialog->user_data = &config;
    dialog->list_kind = mode;
    dialog->user_data2 = &copy;

    GtkListStore* store = get_admit_list_store(top(), mode);
    for (const Element& element : copy) {
        dialog->ListStoreAppend(store);
        fill_row(top(), store, true, element, mode);
    }
    const AdmitMode& kind = admit_mode(mode);
    if (kind.label) dialog->SetLabel("label_admit_name", kind.label);
    dialog->StackSetVisibleChild("admit_stack", kind.page);
    if (dialog.RunOk()) list = std::move(copy);
}

// Opens a list of the client that is selected in the list of clients.
void edit_list_of_client(unsigned mode, const char* nothing_selected) {
    MGDialog* clients = top();
    GtkListStore* store = nullptr;
    if (!clients->TreeViewGetSelection(get_admit_tree_view(clients, clients->list_kind), &store)) {
        show_message(clients, nothing_selected);
        return;
    }
    edit_admit_list_ext(mode, static_cast<unsigned>(clients->TreeModelGetIndex()),
                        static_cast<std::vector<MGAllow>*>(clients->user_data2));
}

void reset_search(MGDialog* dialog) {
    dialog->find_index = 0;
    dialog->find_active = false;
    dialog->work_text.clear();
}

// Goes on to the next row that matches the running search and moves the cursor there.
bool find_further(MGDialog* dialog) {
    const unsigned mode = dialog->list_kind;
    dialog->find_active = with_list(admit_mode(mode), dialog->user_data2,
                                    [&](auto& list) { return find_num(list, dialog->work_text, dialog->find_index); });
    if (!dialog->find_active) return false;
    if (!dialog->ListStoreGetRowIndex(get_admit_list_store(dialog, mode), dialog->find_index)) return false;
    dialog->TreeViewSetCursor(get_admit_tree_view(dialog, mode));
    return true;
}

// Begins a search; what was found with enters the history.
void find(MGDialog* dialog) {
    const std::string mask = dialog->GetEntry("entry_admit_filter");
    dialog->find_index = -1;
    dialog->find_active = false;
    dialog->work_text = mask;
    if (mask.empty() || !find_further(dialog)) {
        reset_search(dialog);
        return;
    }
    add_string_to_vector(mask, init_admit_filter);
    dialog->ComboBoxTextRemoveAll("combo_admit_filter");
    init_combo_box(dialog, "combo_admit_filter", init_admit_filter);
}

void find_next(MGDialog* dialog) {
    const std::string mask = dialog->GetEntry("entry_admit_filter");
    if (mask.empty() || mask != dialog->work_text || !dialog->find_active || !find_further(dialog))
        reset_search(dialog);
}

void mark_found(MGDialog* dialog) {
    const std::string mask = dialog->GetEntry("entry_admit_filter");
    GtkListStore* store = get_admit_list_store(dialog, dialog->list_kind);
    const int rows = dialog->ListStoreGetNumRows(store);
    for (int row = 0; row < rows; ++row) {
        if (!dialog->ListStoreGetRowIndex(store, row)) continue;
        if (MGFile::CompareMaskUtf8(dialog->TreeModelGetStringExt(COLUMN_KEY), mask, false))
            dialog->ListStoreSetBoolean(store, COLUMN_MARK, true);
    }
}

void mark_all(int value) {
    MGDialog* dialog = top();
    select_all(dialog, get_admit_list_store(dialog, dialog->list_kind), COLUMN_MARK, value);
}

// Runs the record dialog on the list dialog's list; `row` is null for a new record.
bool run_record(OpenDialog& record, MGDialog* dialog, int* row) {
    record->list_kind = dialog->list_kind;
    record->user_data = row;
    record->user_data2 = dialog->user_data2;
    return record.RunOk();
}

template <class Element>
void add_record(MGDialog* dialog, std::vector<Element>& list) {
    const unsigned mode = dialog->list_kind;
    OpenDialog record = make_dialog_admit(mode, "Добавление пользователя");
    Element element;
    load_record(record.get(), element, mode);
    if (!run_record(record, dialog, nullptr)) return;

    assign(record.get(), element, mode);
    GtkListStore* store = get_admit_list_store(dialog, mode);
    dialog->ListStoreAppend(store);
    fill_row(dialog, store, true, element, mode);
    list.push_back(std::move(element));
}

template <class Element>
void change_record(MGDialog* dialog, std::vector<Element>& list) {
    const unsigned mode = dialog->list_kind;
    GtkListStore* store = nullptr;
    if (!dialog->TreeViewGetSelection(get_admit_tree_view(dialog, mode), &store)) return;
    int row = dialog->TreeModelGetIndex();
    Element& element = list.at(static_cast<size_t>(row));
    OpenDialog record = make_dialog_admit(mode, "Изменение данных пользователя");
    load_record(record.get(), element, mode);
    if (!run_record(record, dialog, &row)) return;

    assign(record.get(), element, mode);
    fill_row(dialog, store, false, element, mode);
}

void delete_marked(MGDialog* dialog) {
    with_list(admit_mode(dialog->list_kind), dialog->user_data2, [&](auto& list) {
        delete_marked_rows(dialog, get_admit_list_store(dialog, dialog->list_kind), COLUMN_MARK, list);
    });
}

// The next element behind `position` whose key matches the mask.
template <class Element>
bool find_key(const std::vector<Element>& list, std::string Element::*key, const std::string& mask, int& position) {
    for (size_t index = static_cast<size_t>(position + 1); index < list.size(); ++index) {
        if (!MGFile::CompareMaskUtf8(list[index].*key, mask, false)) continue;
        position = static_cast<int>(index);
        return true;
    }
    return false;
}

} // namespace

void edit_admit_list_ext(unsigned mode, unsigned index, std::vector<MGAllow>* parent) {
    at_handler(ConfigDialog, [&] {
        MGConfig& config = *static_cast<MGConfig*>(ConfigDialog->user_data);
        with_list(admit_mode(mode), list_of_mode(mode, config, index, parent),
                  [&](auto& list) { run_list(mode, config, list); });
    });
}

bool find_num_in_admit(const std::vector<MGAdmit>& list, const std::string& mask, int& position) {
    return at_edge("find_num_in_admit", [&] { return find_key(list, &MGAdmit::subject, mask, position); });
}

bool find_num_in_queue(const std::vector<MGQueue>& list, const std::string& mask, int& position) {
    return at_edge("find_num_in_queue", [&] { return find_key(list, &MGQueue::id, mask, position); });
}

bool find_num_in_allow(const std::vector<MGAllow>& list, const std::string& mask, int& position) {
    return at_edge("find_num_in_allow", [&] { return find_key(list, &MGAllow::name, mask, position); });
}

void fill_admit_user(MGDialog* dialog, GtkListStore* store, bool reset_mark, const MGAdmit& user, unsigned mode) {
    if (reset_mark) dialog->ListStoreSetBoolean(store, COLUMN_MARK, false);
    dialog->ListStoreSetString(store, COLUMN_KEY, user.subject.c_str());
    if (!admit_mode(mode).has_connection) return;
    dialog->ListStoreSetString(store, 2, user.use_server ? "-->" : "");
    dialog->ListStoreSetString(store, 3, user.ip.c_str());
    dialog->ListStoreSetString(store, 4, user.domen.c_str());
    dialog->ListStoreSetString(store, 5, user.port ? std::to_string(user.port).c_str() : "");
}

void fill_admit_queue(MGDialog* dialog, GtkListStore* store, bool reset_mark, const MGQueue& queue, unsigned) {
    if (reset_mark) dialog->ListStoreSetBoolean(store, COLUMN_MARK, false);
    dialog->ListStoreSetString(store, COLUMN_KEY, queue.id.c_str());
    dialog->ListStoreSetString(store, 2, queue.in_dir.c_str());
    dialog->ListStoreSetString(store, 3, queue.out_dir.c_str());
    dialog->ListStoreSetString(store, 4, yes_or_no(queue.out_sign));
    dialog->ListStoreSetString(store, 5, yes_or_no(queue.save_ticket));
    dialog->ListStoreSetString(store, 6, queue.ticket_dir.c_str());
    dialog->ListStoreSetString(store, 7, yes_or_no(queue.out_ticket_sign));
}

void fill_admit_allow(MGDialog* dialog, GtkListStore* store, bool reset_mark, const MGAllow& allow, unsigned) {
    if (reset_mark) dialog->ListStoreSetBoolean(store, COLUMN_MARK, false);
    dialog->ListStoreSetString(store, COLUMN_KEY, allow.name.c_str());
    dialog->ListStoreSetString(store, 2, allow.login.c_str());
    dialog->ListStoreSetString(store, 3, yes_or_no(!allow.hash.empty()));
    dialog->ListStoreSetString(store, 4, yes_or_no(allow.active));
}

extern "C" {

// dialog_config
void edit_admit_list(GtkButton*, gpointer) {
    edit_admit_list_ext(MODE_SERVER_USERS, 0, nullptr);
}

void edit_admit_list_gw(GtkButton*, gpointer) {
    edit_admit_list_ext(MODE_GATEWAY_USERS, 0, nullptr);
}

void edit_admit_fc_queue(GtkButton*, gpointer) {
    edit_admit_list_ext(MODE_FC_QUEUES, 0, nullptr);
}

void edit_admit_fs_allow(GtkButton*, gpointer) {
    edit_admit_list_ext(MODE_FS_CLIENTS, 0, nullptr);
}

// dialog_admit
void edit_admit_fs_cert(GtkButton*, gpointer) {
    at_handler(top(), [] {
        edit_list_of_client(MODE_CLIENT_USERS,
                            "Для редактирования списка сертификатов необходимо выбрать в списке запись клиента");
    });
}

void edit_admit_fs_que(GtkButton*, gpointer) {
    at_handler(top(), [] {
        edit_list_of_client(MODE_CLIENT_QUEUES,
                            "Для редактирования списка очередей необходимо выбрать в списке запись клиента");
    });
}

void admit_find(GtkButton*, gpointer) {
    at_handler(top(), [] { find(top()); });
}

void admit_next(GtkButton*, gpointer) {
    at_handler(top(), [] { find_next(top()); });
}

void admit_select_find(GtkButton*, gpointer) {
    at_handler(top(), [] { mark_found(top()); });
}

void admit_status_toggle(GtkCellRendererToggle*, gchar* path, gpointer) {
    status_toggle(top(), path, get_admit_list_store(top(), top()->list_kind), COLUMN_MARK);
}

void admit_select_all(GtkButton*, gpointer) {
    mark_all(1);
}

void admit_unselect_all(GtkButton*, gpointer) {
    mark_all(0);
}

void admit_add_user(GtkButton*, gpointer) {
    at_handler(top(), [dialog = top()] {
        with_list(admit_mode(dialog->list_kind), dialog->user_data2, [&](auto& list) { add_record(dialog, list); });
    });
}

void admit_rename_user(GtkButton*, gpointer) {
    at_handler(top(), [dialog = top()] {
        with_list(admit_mode(dialog->list_kind), dialog->user_data2, [&](auto& list) { change_record(dialog, list); });
    });
}

void admit_delete_user(GtkButton*, gpointer) {
    at_handler(top(), [] { delete_marked(top()); });
}
}
