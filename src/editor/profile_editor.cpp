// Opening the profile editor, its two pages of general settings, and what its OK commits.
#include "editor/profile_editor.h"

#include "app/log.h"
#include "app/mg_context.h"
#include "config/saving.h"
#include "config/xml_tables.h"
#include "dialog/make_dialog.h"
#include "dialog/open_dialogs.h"
#include "editor/action_list.h"
#include "editor/choosers.h"
#include "editor/handlers.h"
#include "editor/histories.h"
#include "editor/start_modes.h"
#include "editor/validation.h"
#include "editor/widget_fields.h"

namespace {

using F = FieldsOf<MGConfig>;
constexpr int max_time = 86400;   // seconds of a day
constexpr int max_size = 1048576; // KiB

const WidgetField<MGConfig> general_page[] = {
    F::spin("timeout_inactivity", &MGConfig::timeout_inactivity, max_time),
    F::spin("sleep_second", &MGConfig::sleep_sec, 3600),
    F::spin("sleep_millisecond", &MGConfig::sleep_millisec, 1000),
    F::spin("send_timeout", &MGConfig::send_timeout, max_time),
    F::spin("recv_timeout", &MGConfig::recv_timeout, max_time),
    F::entry("catalog_log", &MGConfig::log_catalog),
    F::spin("size_log", &MGConfig::log_size, max_size),
    F::check("debug_log", &MGConfig::debug_log),
    F::check("ext_debug_log", &MGConfig::ext_debug_log),
    F::check("syslog", &MGConfig::syslog),
    F::check("turn_off_report_log", &MGConfig::turn_off_report_log),
    F::check("protect_repeat", &MGConfig::protect_repeat),
    F::check("error_save", &MGConfig::need_save),
    F::entry("error_catalog", &MGConfig::error_catalog),
    F::entry("error_file", &MGConfig::error_file),
};

const WidgetField<MGConfig> additional_page[] = {
    F::check("crypto_init", &MGConfig::crypto_init),
    F::entry("crypto_profile", &MGConfig::crypto_name),
    F::check("without_key", &MGConfig::without_key),
    F::entry("psp", &MGConfig::psp),
    F::entry("lsp", &MGConfig::lsp),
    F::entry("ldap", &MGConfig::ldap),
    F::check("preloading_key", &MGConfig::preloading_key),
    F::check("use_tls_1_2", &MGConfig::use_tls_1_2),
    F::check("tls_turn_off", &MGConfig::tls_turn_off),
    F::spin("tls_limit_auth", &MGConfig::limit_auth, max_time),
    F::spin("tls_limit_inactive", &MGConfig::limit_inactive, 43200),
    F::spin("tls_reset_timeout", &MGConfig::reset_timeout, 8760),
    F::check("use_archive_in", &MGConfig::use_archive_in),
    F::entry("catalog_archive_in", &MGConfig::catalog_archive_in),
    F::check("use_archive_out", &MGConfig::use_archive_out),
    F::entry("catalog_archive_out", &MGConfig::catalog_archive_out),
    F::check("use_error_in", &MGConfig::use_error_in),
    F::entry("catalog_error_in", &MGConfig::catalog_error_in),
    F::choice("mode_same_file", &MGConfig::mode_same_file, "ADD_NUM"),
    F::check("use_sub_dir", &MGConfig::use_sub_dir),
    F::offer("sub_dir", &MGConfig::sub_dir, init_sub_dir, "%%YYYY%%/%%MM%%/%%DD%%/%%LOGIN%%/%%QUEUE%%/%%TIME%%/"),
    F::check("ticket_send", &MGConfig::use_ticket),
    F::choice("ticket_type", &MGConfig::ticket_type, "XML"),
};

// Where a profile without a value of its own is offered a catalog.
const struct {
    const char* entry;
    std::string MGConfig::*value;
    std::string MGContext::*root;
} proposed_catalogs[] = {
    {"entry_catalog_log", &MGConfig::log_catalog, &MGContext::log_dir},
    {"entry_catalog_archive_in", &MGConfig::catalog_archive_in, &MGContext::archive_in_dir},
    {"entry_catalog_archive_out", &MGConfig::catalog_archive_out, &MGContext::archive_out_dir},
    {"entry_catalog_error_in", &MGConfig::catalog_error_in, &MGContext::error_in_dir},
};

// What "Сохранить" checks, in order, whichever mode is chosen.
const struct {
    int (*refused)(MGDialog*, const char* tab, const char* section, const char* entry);
    const char* tab;
    const char* section;
    const char* entry;
} address_checks[] = {
    {is_error_config_ip, "Инициализация", "Получение файла по сети", "entry_recv_ip"},
    {is_error_config_ip, "TLS посредник", "TLS клиент", "entry_client_recv_ip"},
    {is_error_config_ip, "TLS посредник", "TLS клиент", "entry_client_send_ip"},
    {is_error_config_ip, "TLS посредник", "TLS сервер", "entry_server_recv_ip"},
    {is_error_config_ip, "TLS посредник", "TLS сервер", "entry_server_send_ip"},
    {is_error_config_ip, "TLS шлюз", "Шлюз клиента", "entry_gw_client_send_ip"},
    {is_error_config_ip, "TLS шлюз", "Шлюз сервера", "entry_gw_server_recv_ip"},
    {is_error_config_ip, "TLS шлюз", "Шлюз клиента", "entry_gw_client_local_adr"},
    {is_error_config_ip_net, "TLS шлюз", "Шлюз клиента", "entry_gw_client_virtual_adr"},
    {is_error_config_ip, "TLS шлюз", "Шлюз сервера", "entry_gw_server_local_adr"},
    {is_error_config_ip_net, "TLS шлюз", "Шлюз сервера", "entry_gw_server_virtual_adr"},
    {is_error_config_ip, "TLS файл", "Файл-клиента", "entry_fc_ip"},
    {is_error_config_ip, "TLS файл", "Файл-сервера", "entry_fs_ip"},
};

void sensitive_error_save(bool save) {
    for (const char* id : {"entry_error_catalog", "entry_error_file"}) ConfigDialog->SetSensitive(id, save);
}

void sensitive_crypto(bool init) {
    for (const char* id : {"button_store_fill", "entry_crypto_profile", "entry_psp", "entry_lsp", "entry_ldap",
                           "check_without_key", "check_preloading_key"})
        ConfigDialog->SetSensitive(id, init);
}

std::string own_catalog(const std::string& root, const MGProfile& profile) {
    return root + "/" + profile.id;
}

// Offers a catalog of the profile's own where none is set; it exists from then on, whatever the user does later.
void propose_catalogs(MGDialog& dialog, const MGProfile& profile) {
    for (const auto& catalog : proposed_catalogs) {
        if (!(profile.config.*catalog.value).empty()) continue;
        const std::string path = own_catalog(Context->*catalog.root, profile);
        make_vorma_catalog(ProfileDialog, path);
        if (is_storable(path)) dialog.SetEntry(catalog.entry, path.c_str()); // a home may bear any name
    }
}

// The catalogs that the service works in; printed lists of this profile go to the second.
void make_working_catalogs(const MGProfile& profile) {
    const std::string result_dir = own_catalog(Context->result_dir, profile);
    make_vorma_catalog(ProfileDialog, own_catalog(Context->signal_dir, profile));
    make_vorma_catalog(ProfileDialog, result_dir);
    LogFileGlobal.SetResultDir(result_dir.c_str());
    make_vorma_catalog(ProfileDialog, own_catalog(Context->tmp_dir, profile));
}

void fill_editor(MGDialog& dialog, const MGProfile& profile) {
    const MGConfig& config = profile.config;
    dialog.SetLabel("config_profile_name", profile.name.c_str());
    dialog.SetLabel("config_profile_id", profile.id.c_str());
    fill(dialog, config, general_page);
    fill(dialog, config, additional_page);
    dialog.SetSensitive("check_ext_debug_log", config.debug_log);
    sensitive_error_save(config.need_save);
    sensitive_crypto(config.crypto_init);
    fill_start_modes(dialog, config);
    propose_catalogs(dialog, profile);
    show_actions(dialog, config.actions);
}

void show_pages(GtkNotebook* pages, bool front_alone) {
    for (int page = gtk_notebook_get_n_pages(pages); page-- > 0;)
        gtk_widget_set_visible(gtk_bin_get_child(GTK_BIN(gtk_notebook_get_nth_page(pages, page))),
                               !front_alone || page == gtk_notebook_get_current_page(pages));
}

gboolean after_first_frame(GtkWidget* pages, cairo_t*, gpointer) {
    g_signal_handlers_disconnect_by_func(pages, reinterpret_cast<gpointer>(after_first_frame), nullptr);
    show_pages(GTK_NOTEBOOK(pages), false);
    return FALSE;
}

// A notebook lays out all its pages before it is first seen, and the user waits for it. So the pages behind are empty
// until the one in front is drawn.
void draw_front_page_first(MGDialog& dialog) {
    GtkNotebook* pages = GTK_NOTEBOOK(dialog.GetObject("notebook_config"));
    show_pages(pages, true);
    g_signal_connect_after(pages, "draw", G_CALLBACK(after_first_frame), nullptr);
}

void read_editor(MGDialog& dialog, MGConfig& config) {
    read_back(dialog, config, general_page);
    read_back(dialog, config, additional_page);
    read_start_modes(dialog, config);
}

void configure_selected(GtkTreeView* view) {
    GtkListStore* store = nullptr;
    if (!ProfileDialog->TreeViewGetSelection(view, &store)) return;
    OpenDialog dialog(ConfigDialog, "dialog_config", "Настройка конфигурационных параметров профиля");
    MGProfile& profile = Context->profiles.at(static_cast<size_t>(ProfileDialog->TreeModelGetIndex()));
    MGConfig working = profile.config;
    fill_editor(*ConfigDialog, profile);
    make_working_catalogs(profile);
    draw_front_page_first(*ConfigDialog);
    dialog->user_data = &working;
    if (!dialog.RunOk()) return;
    read_editor(*ConfigDialog, working);
    profile.config = std::move(working);
    save_all_config_data(ConfigDialog);
}

} // namespace

void profile_configure(GtkTreeView* view) {
    at_handler(ProfileDialog, [&] { configure_selected(view); });
}

extern "C" {

void profile_configure_click(GtkTreeView* view, GtkTreePath*, GtkTreeViewColumn*, gpointer) {
    profile_configure(view);
}

void profile_configure_press(GtkButton*, gpointer view) {
    profile_configure(GTK_TREE_VIEW(view));
}

void config_ok(GtkButton*, gpointer dialog) {
    at_handler(ConfigDialog, [&] {
        for (const auto& check : address_checks)
            if (check.refused(ConfigDialog, check.tab, check.section, check.entry)) return;
        respond_ok(dialog);
    });
}

void toggle_debug_log(GtkToggleButton*, gpointer) {
    const bool debug = ConfigDialog->ToggleButtonGet("check_debug_log");
    ConfigDialog->SetSensitive("check_ext_debug_log", debug);
    if (!debug) ConfigDialog->ToggleButtonSet("check_ext_debug_log", false);
}

void toggle_error_save(GtkToggleButton*, gpointer) {
    sensitive_error_save(ConfigDialog->ToggleButtonGet("check_error_save"));
}

void toggle_crypto_init(GtkToggleButton*, gpointer) {
    sensitive_crypto(ConfigDialog->ToggleButtonGet("check_crypto_init"));
}

void press_catalog_log(GtkEntry*, GtkEntryIconPosition, GdkEvent*, gpointer) {
    choice_catalog(ConfigDialog, "entry_catalog_log");
}

void press_error_catalog(GtkEntry*, GtkEntryIconPosition, GdkEvent*, gpointer) {
    choice_catalog(ConfigDialog, "entry_error_catalog");
}

void press_error_file(GtkEntry*, GtkEntryIconPosition, GdkEvent*, gpointer) {
    choice_file(ConfigDialog, "entry_error_catalog", "entry_error_file");
}

void press_catalog_archive_in(GtkEntry*, GtkEntryIconPosition, GdkEvent*, gpointer) {
    choice_catalog(ConfigDialog, "entry_catalog_archive_in");
}

void press_catalog_archive_out(GtkEntry*, GtkEntryIconPosition, GdkEvent*, gpointer) {
    choice_catalog(ConfigDialog, "entry_catalog_archive_out");
}

void press_catalog_error_in(GtkEntry*, GtkEntryIconPosition, GdkEvent*, gpointer) {
    choice_catalog(ConfigDialog, "entry_catalog_error_in");
}
}
