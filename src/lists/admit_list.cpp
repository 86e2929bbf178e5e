// The list dialog: opening it on a copy, searching, marking, adding, changing and deleting.
#include "lists/admit_list.h"

#include "app/mg_err.h"
#include "config/records.h"
#include "config/tokens.h"
#include "dialog/detached_rows.h"
#include "dialog/make_dialog.h"
#include "dialog/open_dialogs.h"
#include "editor/histories.h"
#include "lists/admit_modes.h"
#include "lists/handlers.h"
#include "lists/list_columns.h"
#include "lists/list_marks.h"
#include "lists/record_dialogs.h"
#include "runtime/mg_file.h"

#include <array>

using namespace vorma;

namespace {

constexpr auto user_columns = std::to_array<ListColumn<MGAdmit>>({
    {key_column, &MGAdmit::subject},
    {2, [](const MGAdmit& user) -> std::string { return user.use_server ? "-->" : ""; }},
    {3, &MGAdmit::ip},
    {4, &MGAdmit::domen},
    {5, [](const MGAdmit& user) { return user.port ? std::to_string(user.port) : ""; }},
});
constexpr auto short_user_columns = std::to_array<ListColumn<MGAdmit>>({
    {key_column, &MGAdmit::subject},
});

constexpr auto queue_columns = std::to_array<ListColumn<MGQueue>>({
    {key_column, &MGQueue::id},
    {2, &MGQueue::in_dir},
    {3, &MGQueue::out_dir},
    {4, &MGQueue::out_sign},
    {5, &MGQueue::save_ticket},
    {6, &MGQueue::ticket_dir},
    {7, &MGQueue::out_ticket_sign},
});

// The password stays hidden.
constexpr auto client_columns = std::to_array<ListColumn<MGAllow>>({
    {key_column, &MGAllow::name},
    {2, &MGAllow::login},
    {3, [](const MGAllow& client) -> std::string { return yes_or_no(!client.hash.empty()); }},
    {4, &MGAllow::active},
});

// The dialog that the user works in.
MGDialog* top() {
    return stackAdmitDialog.back();
}

// What each type of element has under a name of its own.
template <class Element>
struct Operations {
    void (*fill_row)(MGDialog* dialog, GtkListStore* store, bool reset_mark, const Element& element, unsigned mode);
    void (*assign)(MGDialog* record, Element& element, unsigned mode);
    bool (*find_num)(const std::vector<Element>& list, const std::string& mask, int& position);
};
template <class Element>
constexpr Operations<Element> of_type;
template <>
constexpr Operations<MGAdmit> of_type<MGAdmit> = {fill_admit_user, assign_admit_subject, find_num_in_admit};
template <>
constexpr Operations<MGQueue> of_type<MGQueue> = {fill_admit_queue, assign_admit_queue, find_num_in_queue};
template <>
constexpr Operations<MGAllow> of_type<MGAllow> = {fill_admit_allow, assign_admit_allow, find_num_in_allow};

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
    {
        const DetachedRows detached(*dialog, store);
        for (const Element& element : copy) {
            dialog->ListStoreAppend(store);
            of_type<Element>.fill_row(dialog.get(), store, true, element, mode);
        }
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
    dialog->find_active =
        with_list(admit_mode(mode), dialog->user_data2, [&]<class Element>(std::vector<Element>& list) {
            return of_type<Element>.find_num(list, dialog->work_text, dialog->find_index);
        });
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
        if (MGFile::CompareMaskUtf8(dialog->TreeModelGetStringExt(key_column), mask, false))
            dialog->ListStoreSetBoolean(store, mark_column, true);
    }
}

void mark_all(int value) {
    MGDialog* dialog = top();
    select_all(dialog, get_admit_list_store(dialog, dialog->list_kind), mark_column, value);
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

    of_type<Element>.assign(record.get(), element, mode);
    GtkListStore* store = get_admit_list_store(dialog, mode);
    dialog->ListStoreAppend(store);
    of_type<Element>.fill_row(dialog, store, true, element, mode);
    dialog->TreeViewSetCursor(get_admit_tree_view(dialog, mode));
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

    of_type<Element>.assign(record.get(), element, mode);
    of_type<Element>.fill_row(dialog, store, false, element, mode);
}

void delete_marked(MGDialog* dialog) {
    with_list(admit_mode(dialog->list_kind), dialog->user_data2, [&](auto& list) {
        delete_marked_rows(dialog, get_admit_list_store(dialog, dialog->list_kind), mark_column, list);
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
    if (admit_mode(mode).has_connection)
        fill_row(dialog, store, reset_mark, user, user_columns);
    else
        fill_row(dialog, store, reset_mark, user, short_user_columns);
}

void fill_admit_queue(MGDialog* dialog, GtkListStore* store, bool reset_mark, const MGQueue& queue, unsigned) {
    fill_row(dialog, store, reset_mark, queue, queue_columns);
}

void fill_admit_allow(MGDialog* dialog, GtkListStore* store, bool reset_mark, const MGAllow& allow, unsigned) {
    fill_row(dialog, store, reset_mark, allow, client_columns);
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
    status_toggle(top(), path, get_admit_list_store(top(), top()->list_kind), mark_column);
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
