// The pages of the start modes: what each frame holds, and which of them is open.
#include "editor/start_modes.h"

#include "dialog/into_view.h"
#include "dialog/make_dialog.h"
#include "dialog/open_dialogs.h"
#include "editor/choosers.h"
#include "editor/handlers.h"
#include "editor/widget_fields.h"

#include <algorithm>
#include <string_view>

namespace {

using F = FieldsOf<MGConfig>;
using Side = FieldsOf<MGDev>;
constexpr int max_port = 65535;

const WidgetField<MGConfig> timer_fields[] = {
    F::spin("time_hour", &MGConfig::time_hour, 23),
    F::spin("time_minute", &MGConfig::time_minute, 59),
    F::spin("period_hour", &MGConfig::period_hour, 8760),
    F::spin("period_minute", &MGConfig::period_minute, 60),
};

const WidgetField<MGConfig> file_fields[] = {
    F::entry("init_catalog", &MGConfig::file_catalog),
    F::entry("mask_file", &MGConfig::mask_file),
};

const WidgetField<MGConfig> recv_fields[] = {
    F::combo("recv_ip", &MGConfig::recv_ip, init_recv_ip),
    F::spin("recv_port", &MGConfig::recv_port, max_port),
    F::entry("recv_catalog", &MGConfig::recv_catalog),
    // Without TLS there is no certificate to ask for.
    F::check("tls_recv", &MGConfig::recv_tls),
    F::check("need_cert", &MGConfig::recv_need_cert),
};

const WidgetField<MGConfig> modify_fields[] = {
    F::entry("modify_catalog", &MGConfig::modify_catalog),
    F::entry("modify_file", &MGConfig::modify_file),
};

const WidgetField<MGConfig> client_fields[] = {
    F::combo("client_recv_ip", &MGConfig::client_recv_ip, init_recv_ip),
    F::spin("client_recv_port", &MGConfig::client_recv_port, max_port),
    F::combo("client_send_ip", &MGConfig::client_send_ip, init_send_ip),
    F::combo("client_send_domen", &MGConfig::client_send_domen, init_send_domen),
    F::spin("client_send_port", &MGConfig::client_send_port, max_port),
    F::entry("client_tls_server", &MGConfig::client_tls_server),
};

const WidgetField<MGConfig> server_fields[] = {
    F::combo("server_recv_ip", &MGConfig::server_recv_ip, init_recv_ip),
    F::spin("server_recv_port", &MGConfig::server_recv_port, max_port),
    F::check("server_need_cert", &MGConfig::server_need_cert),
    F::check("use_admission_list", &MGConfig::server_use_list),
    F::button("admission_list"),
    F::check("admit_everyone", &MGConfig::server_everyone),
    F::combo("server_send_ip", &MGConfig::server_send_ip, init_send_ip),
    F::combo("server_send_domen", &MGConfig::server_send_domen, init_send_domen),
    F::spin("server_send_port", &MGConfig::server_send_port, max_port),
};

const WidgetField<MGConfig> gw_client_fields[] = {
    F::combo("gw_client_send_ip", &MGConfig::gw_client_send_ip, init_send_ip),
    F::combo("gw_client_send_domen", &MGConfig::gw_client_send_domen, init_send_domen),
    F::spin("gw_client_send_port", &MGConfig::gw_client_send_port, max_port),
    F::entry("gw_client_tls_server", &MGConfig::gw_client_tls_server),
};

const WidgetField<MGConfig> gw_server_fields[] = {
    F::combo("gw_server_recv_ip", &MGConfig::gw_server_recv_ip, init_recv_ip),
    F::spin("gw_server_recv_port", &MGConfig::gw_server_recv_port, max_port),
    F::button("gw_admission_list"),
};

// Both sides of a gateway; the side's name stands in front of the roles.
const WidgetField<MGDev> side_fields[] = {
    Side::offer("internal_dev", &MGDev::internal_device, init_net_device),
    Side::combo("send_dev", &MGDev::device, init_tun_device),
    Side::radio("router", &MGDev::is_router),
    Side::radio("local", &MGDev::is_local),
    Side::button("list_adrs"),
    Side::button("list_virtual"),
    Side::combo("local_adr", &MGDev::local_adr, init_local_adr),
    Side::combo("virtual_adr", &MGDev::virtual_adr, init_virtual_adr),
    Side::radio("ip_all", &MGDev::ip_all),
    Side::radio("ip_select", &MGDev::ip_select),
    Side::check("ip_icmp", &MGDev::ip_icmp),
    Side::check("ip_igmp", &MGDev::ip_igmp),
    Side::check("ip_tcp", &MGDev::ip_tcp),
    Side::check("ip_udp", &MGDev::ip_udp),
    Side::check("ip_esp", &MGDev::ip_esp),
    Side::check("ip_ah", &MGDev::ip_ah),
    Side::check("ip_pmi", &MGDev::ip_pmi),
    Side::check("ip_sctp", &MGDev::ip_sctp),
};

const WidgetField<MGConfig> fc_fields[] = {
    F::combo("fc_ip", &MGConfig::fc_ip, init_send_ip),
    F::combo("fc_domen", &MGConfig::fc_domen, init_send_domen),
    F::spin("fc_port", &MGConfig::fc_port, max_port),
    F::entry("fc_tls_server", &MGConfig::fc_tls_server),
    // What the client says of itself.
    F::entry("fc_login", &MGConfig::fc_login),
    F::entry("fc_password", &MGConfig::fc_hash),
    F::button("fc_queue"),
};

const WidgetField<MGConfig> fs_fields[] = {
    F::combo("fs_ip", &MGConfig::fs_ip, init_recv_ip),
    F::spin("fs_port", &MGConfig::fs_port, max_port),
    F::button("fs_allow"),
};

void set_sensitive_need_cert(bool tls) {
    ConfigDialog->SetSensitive("check_need_cert", tls);
}

void set_sensitive_server(bool need_cert, bool use_list) {
    ConfigDialog->SetSensitive("check_use_admission_list", need_cert);
    for (const char* id : {"button_admission_list", "check_admit_everyone"})
        ConfigDialog->SetSensitive(id, need_cert && use_list);
}

// Adds the ids of a table's widgets; a number's is that of the spin button, whose adjustment holds the value.
template <class Record>
void add_ids(std::vector<std::string>& ids, std::span<const WidgetField<Record>> table, const std::string& side = "") {
    using Kind = typename WidgetField<Record>::Kind;
    for (const WidgetField<Record>& row : table) {
        if (row.kind == Kind::combo) ids.push_back("combo_" + side + row.role);
        ids.push_back((row.kind == Kind::spin ? "spin_" : row.front) + side + row.role);
    }
}

// A start mode. Its frame shows `fields`, then a side of the gateway, then `rest`. `filled` sets what depends on the
// stored flags once the frame is filled, whichever mode is chosen; `chosen` sets it by the widgets when the user has
// picked the mode.
struct StartMode {
    const char* radio;
    bool MGConfig::*flag;
    std::span<const WidgetField<MGConfig>> fields = {};
    MGDev MGConfig::*side = nullptr;
    std::string side_name = {};
    std::span<const WidgetField<MGConfig>> rest = {};
    void (*filled)(const MGConfig&) = nullptr;
    void (*chosen)() = nullptr;
    PageTable page = ids_of_frame();

    std::vector<std::string> ids_of_frame() const {
        std::vector<std::string> ids;
        add_ids(ids, fields);
        if (side) add_ids<MGDev>(ids, side_fields, side_name);
        add_ids(ids, rest);
        return ids;
    }
};

const StartMode start_modes[] = {
    {"radio_init_timer", &MGConfig::timer_radio, timer_fields},
    {"radio_init_file", &MGConfig::file_radio, file_fields},
    {.radio = "radio_init_recv",
     .flag = &MGConfig::recv_radio,
     .fields = recv_fields,
     .filled = [](const MGConfig& config) { set_sensitive_need_cert(config.recv_tls); },
     .chosen = [] { set_sensitive_need_cert(ConfigDialog->ToggleButtonGet("check_tls_recv")); }},
    {"radio_init_modify", &MGConfig::modify_radio, modify_fields},
    {"radio_init_client", &MGConfig::client_radio, client_fields},
    {.radio = "radio_init_server",
     .flag = &MGConfig::server_radio,
     .fields = server_fields,
     .filled = [](const MGConfig& config) { set_sensitive_server(config.server_need_cert, config.server_use_list); },
     .chosen = check_init_server},
    {"radio_init_gw_client", &MGConfig::gw_client_radio, {}, &MGConfig::gw_client, "gw_client_", gw_client_fields},
    {"radio_init_gw_server", &MGConfig::gw_server_radio, gw_server_fields, &MGConfig::gw_server, "gw_server_"},
    {"radio_init_fc", &MGConfig::fc_radio, fc_fields},
    {"radio_init_fs", &MGConfig::fs_radio, fs_fields},
};

const StartMode& mode_of(std::string_view radio) {
    return *std::ranges::find(start_modes, radio, &StartMode::radio);
}

GtkNotebook* pages() {
    return GTK_NOTEBOOK(ConfigDialog->GetObject("notebook_config"));
}

const StartMode* chosen_mode() {
    const auto is_chosen = [](const StartMode& mode) { return ConfigDialog->ToggleButtonGet(mode.radio); };
    return std::ranges::find_if(start_modes, is_chosen);
}

bool holds(GtkWidget* page, const StartMode* mode) {
    return gtk_widget_is_ancestor(GTK_WIDGET(ConfigDialog->GetObject(mode->radio)), page);
}

// Only one of the four pages has the chosen mode: its tab is bold, so that nobody has to look for it.
void mark_tab_of_chosen() {
    for (int number = 0; number < gtk_notebook_get_n_pages(pages()); ++number) {
        GtkWidget* page = gtk_notebook_get_nth_page(pages(), number);
        PangoAttrList* look = pango_attr_list_new();
        pango_attr_list_insert(
            look, pango_attr_weight_new(holds(page, chosen_mode()) ? PANGO_WEIGHT_BOLD : PANGO_WEIGHT_NORMAL));
        gtk_label_set_attributes(GTK_LABEL(gtk_notebook_get_tab_label(pages(), page)), look);
        pango_attr_list_unref(look);
    }
}

// The frame of the chosen mode may be the last on its page.
void show_chosen() {
    scroll_into_view(gtk_widget_get_parent(GTK_WIDGET(ConfigDialog->GetObject(chosen_mode()->radio))));
}

void show_chosen_on(GtkNotebook*, GtkWidget* page, guint, gpointer) {
    if (holds(page, chosen_mode())) show_chosen();
}

// Opens the frame of the mode whose radio button became active; the button that lost the mark calls it too.
void choose(const char* radio) {
    if (!ConfigDialog->ToggleButtonGet(radio)) return;
    const StartMode& mode = mode_of(radio);
    set_sensitive_init(ConfigDialog, mode.page, true);
    if (mode.chosen) mode.chosen();
    for (const StartMode& other : start_modes)
        if (&other != &mode) set_sensitive_init(ConfigDialog, other.page, false);
    mark_tab_of_chosen();
    show_chosen();
}

} // namespace

PageTable& init_timer_id = mode_of("radio_init_timer").page;
PageTable& init_file_id = mode_of("radio_init_file").page;
PageTable& init_recv_id = mode_of("radio_init_recv").page;
PageTable& init_modify_id = mode_of("radio_init_modify").page;
PageTable& init_client_id = mode_of("radio_init_client").page;
PageTable& init_server_id = mode_of("radio_init_server").page;
PageTable& init_gw_client_id = mode_of("radio_init_gw_client").page;
PageTable& init_gw_server_id = mode_of("radio_init_gw_server").page;
PageTable& init_fc_id = mode_of("radio_init_fc").page;
PageTable& init_fs_id = mode_of("radio_init_fs").page;

void fill_start_modes(MGDialog& dialog, const MGConfig& config) {
    for (const StartMode& mode : start_modes) {
        dialog.ToggleButtonSet(mode.radio, config.*mode.flag);
        set_sensitive_init(&dialog, mode.page, config.*mode.flag);
        fill(dialog, config, mode.fields);
        if (mode.side) fill(dialog, config.*mode.side, side_fields, mode.side_name);
        fill(dialog, config, mode.rest);
        if (mode.filled) mode.filled(config);
    }
    mark_tab_of_chosen();
    g_signal_connect_after(pages(), "switch-page", G_CALLBACK(show_chosen_on), nullptr);
}

void read_start_modes(MGDialog& dialog, MGConfig& config) {
    for (const StartMode& mode : start_modes) {
        config.*mode.flag = dialog.ToggleButtonGet(mode.radio);
        read_back(dialog, config, mode.fields);
        if (mode.side) read_back(dialog, config.*mode.side, side_fields, mode.side_name);
        read_back(dialog, config, mode.rest);
    }
}

void set_sensitive_init(MGDialog* dialog, PageTable& page, bool sensitive) {
    for (const std::string& id : page) dialog->SetSensitive(id.c_str(), sensitive);
}

void check_init_server() {
    set_sensitive_server(ConfigDialog->ToggleButtonGet("check_server_need_cert"),
                         ConfigDialog->ToggleButtonGet("check_use_admission_list"));
}

extern "C" {

void toggle_init_timer(GtkToggleButton*, gpointer) {
    choose("radio_init_timer");
}
void toggle_init_file(GtkToggleButton*, gpointer) {
    choose("radio_init_file");
}
void toggle_init_recv(GtkToggleButton*, gpointer) {
    choose("radio_init_recv");
}
void toggle_init_modify(GtkToggleButton*, gpointer) {
    choose("radio_init_modify");
}
void toggle_init_client(GtkToggleButton*, gpointer) {
    choose("radio_init_client");
}
void toggle_init_server(GtkToggleButton*, gpointer) {
    choose("radio_init_server");
}
void toggle_init_gw_client(GtkToggleButton*, gpointer) {
    choose("radio_init_gw_client");
}
void toggle_init_gw_server(GtkToggleButton*, gpointer) {
    choose("radio_init_gw_server");
}
void toggle_init_fc(GtkToggleButton*, gpointer) {
    choose("radio_init_fc");
}
void toggle_init_fs(GtkToggleButton*, gpointer) {
    choose("radio_init_fs");
}

void toggle_tls_recv(GtkToggleButton*, gpointer) {
    set_sensitive_need_cert(ConfigDialog->ToggleButtonGet("check_tls_recv"));
}

void toggle_server_need_cert(GtkToggleButton*, gpointer) {
    check_init_server();
}

void toggle_use_admission_list(GtkToggleButton*, gpointer) {
    const bool use_list = ConfigDialog->ToggleButtonGet("check_use_admission_list");
    for (const char* id : {"button_admission_list", "check_admit_everyone"}) ConfigDialog->SetSensitive(id, use_list);
}

void press_init_catalog(GtkEntry*, GtkEntryIconPosition, GdkEvent*, gpointer) {
    choice_catalog(ConfigDialog, "entry_init_catalog");
}

void press_mask_file(GtkEntry*, GtkEntryIconPosition, GdkEvent*, gpointer) {
    choice_file(ConfigDialog, "entry_init_catalog", "entry_mask_file");
}

void press_recv_catalog(GtkEntry*, GtkEntryIconPosition, GdkEvent*, gpointer) {
    choice_catalog(ConfigDialog, "entry_recv_catalog");
}

void press_modify_catalog(GtkEntry*, GtkEntryIconPosition, GdkEvent*, gpointer) {
    choice_catalog(ConfigDialog, "entry_modify_catalog");
}

void press_modify_file(GtkEntry*, GtkEntryIconPosition, GdkEvent*, gpointer) {
    choice_file(ConfigDialog, "entry_modify_catalog", "entry_modify_file");
}
}
