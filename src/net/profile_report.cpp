// The rows of a profile's report, in its order: tables of label and field where rows follow one another without a
// condition, functions where they don't. Tabs in front of a label are its indentation.
#include "net/profile_report.h"

#include "app/log.h"
#include "app/mg_err.h"
#include "config/tokens.h"
#include "net/report_rows.h"

using namespace vorma;

namespace {

// --- General settings ---

constexpr auto profile_rows = std::to_array<ReportRow<MGProfile>>({
    {"\nКонфигурационные параметры профиля", &MGProfile::name},
    {"Идентификатор", &MGProfile::id},
    {"По умолчанию", &MGProfile::is_default},
    {"Активный", &MGProfile::active},
});

constexpr auto general_rows = std::to_array<ReportRow<MGConfig>>({
    {"\tТаймаут неактивности (сек.)", &MGConfig::timeout_inactivity},
    {"\tЗадержка для определения изменений файла (сек.)", &MGConfig::sleep_sec},
    {"\tЗадержка для определения изменений файла (миллисек.)", &MGConfig::sleep_millisec},
    {"\tСетевой таймаут отправки данных (сек.)", &MGConfig::send_timeout},
    {"\tСетевой таймаут получения данных (сек.)", &MGConfig::recv_timeout},
    {"\tИспользовать TLS 1.2", &MGConfig::use_tls_1_2},
    {"\tОграничение TLS аутентификации (сек.)", &MGConfig::limit_auth},
    {"\tОграничение неактивности TLS (мин.)", &MGConfig::limit_inactive},
    {"\tОтключить криптографию (TLS) во всех подсистемах", &MGConfig::tls_turn_off},
    {"\tВремя перезагрузки соединений TLS шлюза (час.)", &MGConfig::reset_timeout},
    {"\tКаталог протокола", &MGConfig::log_catalog},
    {"\tМаксимальный размер файла протокола (Кбайт)", &MGConfig::log_size},
    {"\tПротокол отладки", &MGConfig::debug_log},
    {"\tПротокол расширенной отладки", &MGConfig::ext_debug_log},
    {"\tЗапись ошибок в syslog", &MGConfig::syslog},
    {"\tВыключить запись в протокол событий", &MGConfig::turn_off_report_log},
    {"\tНе записывать повторяющиеся ошибки", &MGConfig::protect_repeat},
    {"\tВключить сохранение последней ошибки", &MGConfig::need_save},
    {"\tКаталог сохранения последней ошибки", &MGConfig::error_catalog},
    {"\tФайл сохранения последней ошибки", &MGConfig::error_file},
    {"\tВыполнить инициализацию криптографического профиля", &MGConfig::crypto_init},
    {"\tПрофиль", &MGConfig::crypto_name},
    {"\tПСП", &MGConfig::psp},
    {"\tЛСП", &MGConfig::lsp},
    {"\tLDAP", &MGConfig::ldap},
    {"\tБез загрузки ключа", &MGConfig::without_key},
    {"\tПредварительная загрузка ключа для кластера", &MGConfig::preloading_key},
    {"\tВести входящий архив", &MGConfig::use_archive_in},
    {"\tКаталог входящего архива", &MGConfig::catalog_archive_in},
    {"\tВести исходящий архив", &MGConfig::use_archive_out},
    {"\tКаталог исходящего архива", &MGConfig::catalog_archive_out},
    {"\tПеремещать ошибочные файлы в каталог", &MGConfig::use_error_in},
    {"\tКаталог перемещения ошибочных файлов", &MGConfig::catalog_error_in},
    {"\tСоздавать подкаталог", &MGConfig::use_sub_dir},
    {"\tПодкаталог", &MGConfig::sub_dir},
    {"\tРежим сохранения файлов с одинаковыми именами", &MGConfig::mode_same_file, get_same_file_txt_mode},
    {"\tОтправлять квитанции", &MGConfig::use_ticket},
    {"\tВид квитанции", &MGConfig::ticket_type, get_type_ticket_name},
});

// --- Start modes with actions ---

constexpr auto timer_rows = std::to_array<ReportRow<MGConfig>>({
    {"\t\tВремя старта в часах", &MGConfig::time_hour},
    {"\t\tВремя старта в минутах", &MGConfig::time_minute},
    {"\t\tПериод старта в часах", &MGConfig::period_hour},
    {"\t\tПериод старта в минутах", &MGConfig::period_minute},
});
constexpr auto file_rows = std::to_array<ReportRow<MGConfig>>({
    {"\t\tКаталог", &MGConfig::file_catalog},
    {"\t\tИмя файла", &MGConfig::mask_file},
});
constexpr auto recv_rows = std::to_array<ReportRow<MGConfig>>({
    {"\t\tIP адрес", &MGConfig::recv_ip},
    {"\t\tПорт", &MGConfig::recv_port},
    {"\t\tКаталог сохранения полученного файла", &MGConfig::recv_catalog},
    {"\t\tTLS", &MGConfig::recv_tls},
    {"\t\tТребовать сертификат", &MGConfig::recv_need_cert},
});
constexpr auto modify_rows = std::to_array<ReportRow<MGConfig>>({
    {"\t\tКаталог", &MGConfig::modify_catalog},
    {"\t\tИмя файла", &MGConfig::modify_file},
});

constexpr auto action_rows = std::to_array<ReportRow<MGAction>>({
    {"\t\t\tНаименование", &MGAction::name},
    {"\t\t\tДействие", &MGAction::type, get_action_txt_type},
});
constexpr auto console_rows = std::to_array<ReportRow<MGConsole>>({
    {"\t\t\t\tВыполняемая команда", &MGConsole::prog},
    {"\t\t\t\tИспользовать подстановку пароля", &MGConsole::use_hash},
    {"\t\t\t\tНе проверять нулевой код возврата", &MGConsole::no_code},
});
constexpr auto send_rows = std::to_array<ReportRow<MGSend>>({
    {"\t\t\t\tIP адрес", &MGSend::ip},
    {"\t\t\t\tДоменное имя", &MGSend::domen},
    {"\t\t\t\tКаталог", &MGSend::catalog},
    {"\t\t\t\tПорт", &MGSend::port},
    {"\t\t\t\tИмя файла", &MGSend::file},
    {"\t\t\t\tРазмер разбиения файла на блоки (Кбайт)", &MGSend::buf_len},
    {"\t\t\t\tВремя задержки между пересылкой блоков файла (сек.)", &MGSend::inactivity},
    {"\t\t\t\tTLS", &MGSend::tls},
    {"\t\t\t\tИмя TLS сервера", &MGSend::tls_server},
});
constexpr auto copy_rows = std::to_array<ReportRow<MGCopy>>({
    {"\t\t\t\tИз каталога", &MGCopy::catalog},
    {"\t\t\t\tИмя файла", &MGCopy::file},
    {"\t\t\t\tВ каталог", &MGCopy::catalog_to},
    {"\t\t\t\tПри совпадении имен файлов", &MGCopy::mode, get_same_file_txt_mode},
    {"\t\t\t\tСоздавать подкаталог (ГГГГ/ММ/ДД)", &MGCopy::sub_dir},
    {"\t\t\t\tСохранять последние N файлов с одинаковыми именами", &MGCopy::save_last_n_files},
    {"\t\t\t\tМаксимальное количество сохраняемых файлов с одинаковыми именами", &MGCopy::n_saved_files},
});
constexpr auto runprog_rows = std::to_array<ReportRow<MGRunprog>>({
    {"\t\t\t\tПрограмма", &MGRunprog::prog},
    {"\t\t\t\tПараметры", &MGRunprog::param},
});
constexpr auto exist_rows = std::to_array<ReportRow<MGExist>>({
    {"\t\t\t\tКаталог", &MGExist::catalog},
    {"\t\t\t\tФайл", &MGExist::file},
    {"\t\t\t\tСодержимое", &MGExist::content},
    {"\t\t\t\tВремя ожидания", &MGExist::timeout},
});

void add_action(MGInfo& info, const MGAction& action) {
    add_rows(info, action, action_rows);
    if (action.type == "CONSOLE") add_rows(info, action.console, console_rows);
    if (action.type == "SENDFILE") add_rows(info, action.send, send_rows);
    if (action.type == "COPYFILE") add_rows(info, action.copy, copy_rows);
    if (action.type == "RUNPROG") add_rows(info, action.runprog, runprog_rows);
    if (action.type == "EXIST") add_rows(info, action.exist, exist_rows);
}

// --- TLS client and server ---

constexpr auto client_rows = std::to_array<ReportRow<MGConfig>>({
    {"\t\tIP адрес получения", &MGConfig::client_recv_ip},
    {"\t\tПорт получения", &MGConfig::client_recv_port},
    {"\t\tIP адрес отправки", &MGConfig::client_send_ip},
    {"\t\tДоменное имя отправки", &MGConfig::client_send_domen},
    {"\t\tПорт отправки", &MGConfig::client_send_port},
    {"\t\tИмя сервера для TLS", &MGConfig::client_tls_server},
});
constexpr auto server_rows = std::to_array<ReportRow<MGConfig>>({
    {"\t\tIP адрес получения", &MGConfig::server_recv_ip},
    {"\t\tПорт получения", &MGConfig::server_recv_port},
    {"\t\tТребовать сертификат", &MGConfig::server_need_cert},
    {"\t\tИспользовать список допуска", &MGConfig::server_use_list},
    {"\t\tДопускать всех", &MGConfig::server_everyone},
    {"\t\tIP адрес отправки", &MGConfig::server_send_ip},
    {"\t\tДоменное имя отправки", &MGConfig::server_send_domen},
    {"\t\tПорт отправки", &MGConfig::server_send_port},
});

void add_users_of_server(MGInfo& info, const MGConfig& config) {
    add_list(info, "\t\t\t", subject_label, config.admit, &MGAdmit::subject, [&](const MGAdmit& user) {
        if (user.use_server) add_rows(info, user, connection_rows, "\t\t\t\t");
    });
}

// --- Gateway ---

struct Protocol {
    const char* word;
    bool MGDev::*chosen;
};

constexpr auto protocols = std::to_array<Protocol>({
    {"icmp", &MGDev::ip_icmp},
    {"igmp", &MGDev::ip_igmp},
    {"tcp", &MGDev::ip_tcp},
    {"udp", &MGDev::ip_udp},
    {"esp", &MGDev::ip_esp},
    {"ah", &MGDev::ip_ah},
    {"pmi", &MGDev::ip_pmi},
    {"sctp", &MGDev::ip_sctp},
});

constexpr auto device_rows = std::to_array<ReportRow<MGDev>>({
    {"\t\tИмя внутреннего сетевого интерфейса", &MGDev::internal_device},
    {"\t\tИмя виртуального сетевого интерфейса", &MGDev::device},
    {"\t\tРежим маршрутизатора", &MGDev::is_router},
    {"\t\tЛокальный режим", &MGDev::is_local},
});
constexpr auto local_rows = std::to_array<ReportRow<MGDev>>({
    {"\t\t\tЛокальный адрес", &MGDev::local_adr},
    {"\t\t\tВиртуальный адрес", &MGDev::virtual_adr},
});
constexpr auto packet_rows = std::to_array<ReportRow<MGDev>>({
    {"\t\tИспользовать все IP пакеты", &MGDev::ip_all},
    {"\t\tИспользовать выборочные IP пакеты", &MGDev::ip_select},
});
constexpr auto gw_client_rows = std::to_array<ReportRow<MGConfig>>({
    {"\t\tIP адрес отправки", &MGConfig::gw_client_send_ip},
    {"\t\tДоменное имя отправки", &MGConfig::gw_client_send_domen},
    {"\t\tПорт отправки", &MGConfig::gw_client_send_port},
    {"\t\tИмя сервера для TLS", &MGConfig::gw_client_tls_server},
});
constexpr auto gw_server_rows = std::to_array<ReportRow<MGConfig>>({
    {"\t\tIP адрес получения", &MGConfig::gw_server_recv_ip},
    {"\t\tПорт получения", &MGConfig::gw_server_recv_port},
});

void add_addresses(MGInfo& info, const std::vector<MGListAdrs>& adrs, const std::vector<MGListAdrs>& virt,
                   const std::string& indent, EmptyTexts empty) {
    add_list(info, indent, "Наименование внутреннего адреса", adrs, &MGListAdrs::name,
             [&](const MGListAdrs& address) { add_rows(info, address, internal_rows, indent + "\t", empty); });
    add_list(info, indent, "Наименование виртуального адреса", virt, &MGListAdrs::name,
             [&](const MGListAdrs& address) { add_rows(info, address, virtual_rows, indent + "\t", empty); });
}

void add_device(MGInfo& info, const MGDev& dev) {
    add_rows(info, dev, device_rows);
    if (dev.is_local) add_rows(info, dev, local_rows);
    if (dev.is_router) add_addresses(info, dev.adrs, dev.virt, "\t\t\t", EmptyTexts::shown);
    add_rows(info, dev, packet_rows);
    if (!dev.ip_select) return;
    for (const Protocol& protocol : protocols)
        info.AddRow((std::string("\t\t\tПоддерживать ") + protocol.word).c_str(), dev.*protocol.chosen);
}

void add_gw_client(MGInfo& info, const MGConfig& config) {
    add_device(info, config.gw_client);
    add_rows(info, config, gw_client_rows);
}

void add_rest_of_gw_server(MGInfo& info, const MGConfig& config) {
    add_list(info, "\t\t\t", subject_label, config.gw_admit, &MGAdmit::subject, [](const MGAdmit&) {});
    add_device(info, config.gw_server);
}

// --- File client and file server ---

constexpr auto fc_rows = std::to_array<ReportRow<MGConfig>>({
    {"\t\tIP адрес", &MGConfig::fc_ip},
    {"\t\tДоменное имя", &MGConfig::fc_domen},
    {"\t\tПорт", &MGConfig::fc_port},
    {"\t\tИмя сервера для TLS", &MGConfig::fc_tls_server},
    {"\t\tЛогин", &MGConfig::fc_login},
    {"\t\tНаличие пароля", WhetherGiven{&MGConfig::fc_hash}},
});
constexpr auto fs_rows = std::to_array<ReportRow<MGConfig>>({
    {"\t\tIP адрес", &MGConfig::fs_ip},
    {"\t\tПорт", &MGConfig::fs_port},
});

constexpr auto client_of_server_rows = std::to_array<ReportRow<MGAllow>>({
    {"Доступ", InWords{&MGAllow::active}},
    {"Логин", &MGAllow::login},
    {"Наличие пароля", WhetherGiven{&MGAllow::hash}},
});

// The queues, numbered behind `indent`, their rows one tab deeper.
void add_queues(MGInfo& info, const std::string& indent, const std::vector<MGQueue>& list) {
    add_list(info, indent, queue_label, list, &MGQueue::id,
             [&](const MGQueue& queue) { add_rows(info, queue, queue_rows, indent + "\t"); });
}

void add_queues_of_client(MGInfo& info, const MGConfig& config) {
    add_queues(info, "\t\t\t", config.fc_queue);
}

void add_clients_of_server(MGInfo& info, const MGConfig& config) {
    add_list(info, "\t\t\t", client_label, config.fs_allow, &MGAllow::name, [&](const MGAllow& client) {
        add_rows(info, client, client_of_server_rows, "\t\t\t\t");
        add_list(info, "\t\t\t\t\t", subject_label, client.admit, &MGAdmit::subject, [](const MGAdmit&) {});
        add_queues(info, "\t\t\t\t\t", client.queue);
    });
}

// --- The start modes ---

// A start mode: what the report says of it where its flag is set.
struct ReportMode {
    bool MGConfig::*flag;
    const char* head;
    std::span<const ReportRow<MGConfig>> rows = {};
    void (*add_rest)(MGInfo& info, const MGConfig& config) = nullptr;
};

constexpr auto modes_with_actions = std::to_array<ReportMode>({
    {&MGConfig::timer_radio, "\t\tИнициализация по времени", timer_rows},
    {&MGConfig::file_radio, "\t\tИнициализация по наличию файла в каталоге", file_rows},
    {&MGConfig::recv_radio, "\t\tИнициализация при получении файла по сети", recv_rows},
    {&MGConfig::modify_radio, "\t\tИнициализация по наличию изменений файла в каталоге", modify_rows},
});
constexpr auto other_modes = std::to_array<ReportMode>({
    {&MGConfig::client_radio, "\t\tИнициализация TLS клиента", client_rows},
    {&MGConfig::server_radio, "\t\tИнициализация TLS сервера", server_rows, add_users_of_server},
    {&MGConfig::gw_client_radio, "\t\tИнициализация TLS шлюза клиента", {}, add_gw_client},
    {&MGConfig::gw_server_radio, "\t\tИнициализация TLS шлюза сервера", gw_server_rows, add_rest_of_gw_server},
    {&MGConfig::fc_radio, "\t\tИнициализация TLS Файл-клиента", fc_rows, add_queues_of_client},
    {&MGConfig::fs_radio, "\t\tИнициализация TLS Файл-сервера", fs_rows, add_clients_of_server},
});

// Adds the modes that are on; whether there is one.
bool add_modes(MGInfo& info, const MGConfig& config, std::span<const ReportMode> modes) {
    bool any = false;
    for (const ReportMode& mode : modes) {
        if (!(config.*mode.flag)) continue;
        any = true;
        info.AddRow(mode.head, true);
        add_rows(info, config, mode.rows);
        if (mode.add_rest) mode.add_rest(info, config);
    }
    return any;
}

} // namespace

void print_selected_profile(const MGProfile& profile) {
    at_edge("print_selected_profile", [&] {
        const MGConfig& config = profile.config;
        MGInfo info;
        add_rows(info, profile, profile_rows);
        add_rows(info, config, general_rows);
        if (add_modes(info, config, modes_with_actions))
            for (const MGAction& action : config.actions)
                if (action.active) add_action(info, action);
        add_modes(info, config, other_modes);
        LogFileGlobal.PrintInfoInResultFile(info, false);
    });
}

// --- The shorter report of a device ---

void print_info_dev(MGInfo& info, const MGDev& dev) {
    at_edge("print_info_dev", [&] {
        info.AddRow("Имя сетевого интерфейса", dev.internal_device);
        info.AddRow("Имя виртуального интерфейса", dev.device);
        if (dev.is_router) {
            info.AddRow("Режим маршрутизатора", yes_or_no(true));
            print_info_adrs_virt(info, dev.adrs, dev.virt);
        }
        if (dev.is_local) {
            info.AddRow("Локальный режим", yes_or_no(true));
            info.AddRow("Локальный адрес", dev.local_adr);
            info.AddRow("Виртуальный адрес", dev.virtual_adr);
        }
        if (dev.ip_all) info.AddRow("Использовать все IP пакеты", yes_or_no(true));
        if (dev.ip_select) {
            std::string chosen;
            create_ip_prot_str(dev, chosen);
            info.AddRow("Использовать выборочные IP пакеты", yes_or_no(true));
            info.AddRow("Поддерживать", chosen);
        }
    });
}

void print_info_adrs_virt(MGInfo& info, const std::vector<MGListAdrs>& adrs, const std::vector<MGListAdrs>& virt) {
    at_edge("print_info_adrs_virt", [&] { add_addresses(info, adrs, virt, "\t", EmptyTexts::left_out); });
}

void create_ip_prot_str(const MGDev& dev, std::string& text) {
    at_edge("create_ip_prot_str", [&] {
        text.clear();
        for (const Protocol& protocol : protocols)
            if (dev.*protocol.chosen) text += std::string(" ") + protocol.word;
    });
}
