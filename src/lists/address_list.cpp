// The list of a gateway's addresses and the dialog of one address.
#include "lists/address_list.h"

#include "config/records.h"
#include "dialog/detached_rows.h"
#include "dialog/make_dialog.h"
#include "dialog/open_dialogs.h"
#include "editor/histories.h"
#include "editor/validation.h"
#include "editor/widget_fields.h"
#include "lists/handlers.h"
#include "lists/list_columns.h"
#include "lists/list_marks.h"
#include "net/address_syntax.h"

#include <array>

namespace {

using Addresses = std::vector<MGListAdrs>;
using Address = FieldsOf<MGListAdrs>;

const WidgetField<MGListAdrs> internal_fields[] = {
    Address::combo("address_ip", &MGListAdrs::ip, init_recv_ip),
    Address::combo("address_domen", &MGListAdrs::domen, init_recv_domen),
    Address::combo("address_net", &MGListAdrs::net, init_sub_net),
    Address::entry("address_name", &MGListAdrs::name),
};

const WidgetField<MGListAdrs> virtual_fields[] = {
    Address::combo("address_ip", &MGListAdrs::ip, init_virtual_ip),
    Address::entry("address_name", &MGListAdrs::name),
};

std::span<const WidgetField<MGListAdrs>> address_fields(bool is_virtual) {
    if (is_virtual) return virtual_fields;
    return internal_fields;
}

// The internal and the virtual addresses share a store.
constexpr auto internal_columns = std::to_array<ListColumn<MGListAdrs>>({
    {1, &MGListAdrs::ip},
    {2, &MGListAdrs::domen},
    {3, &MGListAdrs::net},
    {4, &MGListAdrs::name},
});
constexpr auto virtual_columns = std::to_array<ListColumn<MGListAdrs>>({
    {1, &MGListAdrs::ip},
    {4, &MGListAdrs::name},
});

Addresses& edited_list() {
    return *static_cast<Addresses*>(AdrsDialog->user_data2);
}

// Shows the address in AddressDialog and runs it; whether the user confirmed it.
bool edit_address(OpenDialog& dialog, const MGListAdrs& address) {
    const bool is_virtual = list_is_virtual();
    fill(*AddressDialog, address, address_fields(is_virtual));
    if (is_virtual) {
        dialog->SetLabel("label_address_ip", "xxx.xxx.xxx.xxx/nn");
        for (const char* id : {"combo_address_domen", "entry_address_domen", "combo_address_net", "entry_address_net"})
            dialog->SetSensitive(id, false);
    }
    return dialog.RunOk();
}

void add_address(GtkListStore* store) {
    OpenDialog dialog(AddressDialog, "dialog_address", "Добавление адреса");
    MGListAdrs address;
    if (!edit_address(dialog, address)) return;
    assign_adrs_address(address, list_is_virtual());
    AdrsDialog->ListStoreAppend(store);
    fill_adrs_address(store, true, address, list_is_virtual());
    AdrsDialog->TreeViewSetCursor(GTK_TREE_VIEW(AdrsDialog->GetObject("adrs_view")));
    edited_list().push_back(std::move(address));
}

void change_address(GtkTreeView* view) {
    GtkListStore* store = nullptr;
    if (!AdrsDialog->TreeViewGetSelection(view, &store)) return;
    MGListAdrs& address = edited_list().at(static_cast<size_t>(AdrsDialog->TreeModelGetIndex()));
    OpenDialog dialog(AddressDialog, "dialog_address", "Изменение данных пользователя");
    if (!edit_address(dialog, address)) return;
    assign_adrs_address(address, list_is_virtual());
    fill_adrs_address(store, false, address, list_is_virtual());
}

// Exactly one of address, domain and network must be given; address and network must be well formed.
bool address_is_wrong(MGDialog* dialog) {
    const char* ip = dialog->GetEntry("entry_address_ip");
    const char* net = dialog->GetEntry("entry_address_net");
    const bool has_ip = !string_is_empty(ip);
    const bool has_net = !string_is_empty(net);
    const bool has_domen = !string_is_empty(dialog->GetEntry("entry_address_domen"));
    if (has_ip + has_domen + has_net != 1) {
        show_message(dialog, "Нужно указать IP адрес или доменное имя или подсеть");
        dialog->SetFocusToProblemWidget("entry_address_ip");
        return true;
    }
    const auto ip_is_wrong = list_is_virtual() ? is_error_ip_net : is_error_ip;
    return (has_ip && ip_is_wrong(dialog, "entry_address_ip", ip)) ||
           (has_net && is_error_net(dialog, "entry_address_net", net));
}

} // namespace

void edit_list_adrs_ext(bool server, bool is_virtual) {
    at_handler(ConfigDialog, [&] {
        MGConfig& config = *static_cast<MGConfig*>(ConfigDialog->user_data);
        MGDev& side = server ? config.gw_server : config.gw_client;
        Addresses& list = is_virtual ? side.virt : side.adrs;
        Addresses copy = list;
        OpenDialog dialog(AdrsDialog, "dialog_adrs",
                          is_virtual ? "Список виртуальных адресов" : "Список внутренних адресов");
        dialog->user_data = &config;
        dialog->user_data2 = &copy;
        dialog->find_active = is_virtual;
        GtkListStore* store = GTK_LIST_STORE(dialog->GetObject("adrs_list_store"));
        {
            const DetachedRows detached(*dialog, store);
            for (const MGListAdrs& address : copy) {
                dialog->ListStoreAppend(store);
                fill_adrs_address(store, true, address, is_virtual);
            }
        }
        if (dialog.RunOk()) list = std::move(copy);
    });
}

bool list_is_virtual() {
    return AdrsDialog->find_active;
}

void fill_adrs_address(GtkListStore* store, bool reset_mark, const MGListAdrs& address, bool is_virtual) {
    if (is_virtual)
        fill_row(AdrsDialog, store, reset_mark, address, virtual_columns);
    else
        fill_row(AdrsDialog, store, reset_mark, address, internal_columns);
}

void assign_adrs_address(MGListAdrs& address, bool is_virtual) {
    read_back(*AddressDialog, address, address_fields(is_virtual));
}

extern "C" {

// dialog_config
void edit_adrs_list_client(GtkButton*, gpointer) {
    edit_list_adrs_ext(false, false);
}

void edit_adrs_list_server(GtkButton*, gpointer) {
    edit_list_adrs_ext(true, false);
}

void edit_virtual_list_client(GtkButton*, gpointer) {
    edit_list_adrs_ext(false, true);
}

void edit_virtual_list_server(GtkButton*, gpointer) {
    edit_list_adrs_ext(true, true);
}

// dialog_adrs
void adrs_status_toggle(GtkCellRendererToggle*, gchar* path, gpointer store) {
    status_toggle(AdrsDialog, path, GTK_LIST_STORE(store), mark_column);
}

void adrs_add_address(GtkButton*, gpointer store) {
    at_handler(AdrsDialog, [&] { add_address(GTK_LIST_STORE(store)); });
}

void adrs_rename_address(GtkButton*, gpointer view) {
    at_handler(AdrsDialog, [&] { change_address(GTK_TREE_VIEW(view)); });
}

void adrs_delete_address(GtkButton*, gpointer store) {
    if (!GTK_IS_LIST_STORE(store)) return;
    at_handler(AdrsDialog, [&] { delete_marked_rows(AdrsDialog, GTK_LIST_STORE(store), mark_column, edited_list()); });
}

void adrs_select_all(GtkButton*, gpointer store) {
    select_all(AdrsDialog, GTK_LIST_STORE(store), mark_column, 1);
}

void adrs_unselect_all(GtkButton*, gpointer store) {
    select_all(AdrsDialog, GTK_LIST_STORE(store), mark_column, 0);
}

// dialog_address
void address_ok(GtkButton*, gpointer dialog) {
    at_handler(AddressDialog, [&] {
        if (!address_is_wrong(AddressDialog)) respond_ok(dialog);
    });
}
}
