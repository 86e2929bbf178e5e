// A profile's file: the attributes of each element with the fields that they stand for, and the order of the elements,
// walked once for reading and once for writing.
#pragma once

#include "config/records.h"
#include "config/xml_tables.h"

#include <array>

// --- General sections ---

inline constexpr auto settings_attrs = std::to_array<XmlAttr<MGConfig>>({
    {"timeout_inactivity", &MGConfig::timeout_inactivity},
    {"sleep_sec", &MGConfig::sleep_sec},
    {"sleep_millisec", &MGConfig::sleep_millisec},
    {"send_timeout", &MGConfig::send_timeout, ZeroReadsAs{8}},
    {"recv_timeout", &MGConfig::recv_timeout, ZeroReadsAs{8}},
    {"limit_auth", &MGConfig::limit_auth},
    {"use_tls_1.2", &MGConfig::use_tls_1_2},
    {"limit_inactive", &MGConfig::limit_inactive},
    {"tls_turn_off", &MGConfig::tls_turn_off},
    {"reset_timeout", &MGConfig::reset_timeout},
});

inline constexpr auto log_attrs = std::to_array<XmlAttr<MGConfig>>({
    {"catalog", &MGConfig::log_catalog},
    {"size", &MGConfig::log_size},
    {"debug_log", &MGConfig::debug_log},
    {"ext_debug_log", &MGConfig::ext_debug_log},
    {"syslog", &MGConfig::syslog},
    {"turn_off_report_log", &MGConfig::turn_off_report_log},
    {"protect_repeat", &MGConfig::protect_repeat},
});

inline constexpr auto error_attrs = std::to_array<XmlAttr<MGConfig>>({
    {"need_save", &MGConfig::need_save},
    {"catalog", &MGConfig::error_catalog},
    {"file", &MGConfig::error_file},
});

inline constexpr auto crypto_attrs = std::to_array<XmlAttr<MGConfig>>({
    {"init", &MGConfig::crypto_init},
    {"name", &MGConfig::crypto_name},
    {"psp", &MGConfig::psp},
    {"lsp", &MGConfig::lsp},
    {"ldap", &MGConfig::ldap},
    {"without_key", &MGConfig::without_key},
    {"preloading_key", &MGConfig::preloading_key},
});

inline constexpr auto file_param_attrs = std::to_array<XmlAttr<MGConfig>>({
    {"use_archive_in", &MGConfig::use_archive_in},
    {"catalog_archive_in", &MGConfig::catalog_archive_in},
    {"use_archive_out", &MGConfig::use_archive_out},
    {"catalog_archive_out", &MGConfig::catalog_archive_out},
    {"use_error_in", &MGConfig::use_error_in},
    {"catalog_error_in", &MGConfig::catalog_error_in},
    {"mode_same_file", &MGConfig::mode_same_file},
    {"use_sub_dir", &MGConfig::use_sub_dir},
    {"sub_dir", &MGConfig::sub_dir},
    {"use_ticket", &MGConfig::use_ticket},
    {"ticket_type", &MGConfig::ticket_type},
});

// --- Start modes ---

inline constexpr auto timer_attrs = std::to_array<XmlAttr<MGConfig>>({
    {"radio", &MGConfig::timer_radio},
    {"time_hour", &MGConfig::time_hour},
    {"time_minute", &MGConfig::time_minute},
    {"period_hour", &MGConfig::period_hour},
    {"period_minute", &MGConfig::period_minute},
});

inline constexpr auto file_attrs = std::to_array<XmlAttr<MGConfig>>({
    {"radio", &MGConfig::file_radio},
    {"catalog", &MGConfig::file_catalog},
    {"mask_file", &MGConfig::mask_file},
});

inline constexpr auto recv_attrs = std::to_array<XmlAttr<MGConfig>>({
    {"radio", &MGConfig::recv_radio},
    {"ip", &MGConfig::recv_ip},
    {"port", &MGConfig::recv_port},
    {"catalog", &MGConfig::recv_catalog},
    {"tls", &MGConfig::recv_tls},
    {"need_cert", &MGConfig::recv_need_cert},
});

inline constexpr auto modify_attrs = std::to_array<XmlAttr<MGConfig>>({
    {"radio", &MGConfig::modify_radio},
    {"catalog", &MGConfig::modify_catalog},
    {"file", &MGConfig::modify_file},
});

inline constexpr auto client_attrs = std::to_array<XmlAttr<MGConfig>>({
    {"radio", &MGConfig::client_radio},
    {"recv_ip", &MGConfig::client_recv_ip},
    {"recv_port", &MGConfig::client_recv_port},
    {"send_ip", &MGConfig::client_send_ip},
    {"send_domen", &MGConfig::client_send_domen},
    {"send_port", &MGConfig::client_send_port},
    {"tls_server", &MGConfig::client_tls_server},
});

inline constexpr auto server_attrs = std::to_array<XmlAttr<MGConfig>>({
    {"radio", &MGConfig::server_radio},
    {"recv_ip", &MGConfig::server_recv_ip},
    {"recv_port", &MGConfig::server_recv_port},
    {"need_cert", &MGConfig::server_need_cert},
    {"use_list", &MGConfig::server_use_list},
    {"everyone", &MGConfig::server_everyone},
    {"send_ip", &MGConfig::server_send_ip},
    {"send_domen", &MGConfig::server_send_domen},
    {"send_port", &MGConfig::server_send_port},
});

// A gateway's element comes in pieces, since its lists are read in between.
inline constexpr auto gw_client_mode_attrs = std::to_array<XmlAttr<MGConfig>>({
    {"radio", &MGConfig::gw_client_radio},
});
inline constexpr auto gw_client_send_attrs = std::to_array<XmlAttr<MGConfig>>({
    {"send_ip", &MGConfig::gw_client_send_ip},
    {"send_domen", &MGConfig::gw_client_send_domen},
    {"send_port", &MGConfig::gw_client_send_port},
    {"tls_server", &MGConfig::gw_client_tls_server},
});
inline constexpr auto gw_server_recv_attrs = std::to_array<XmlAttr<MGConfig>>({
    {"radio", &MGConfig::gw_server_radio},
    {"recv_ip", &MGConfig::gw_server_recv_ip},
    {"recv_port", &MGConfig::gw_server_recv_port},
});

// Both sides of a gateway.
inline constexpr auto device_attrs = std::to_array<XmlAttr<MGDev>>({
    {"internal_device", &MGDev::internal_device},
    {"device", &MGDev::device},
    {"is_router", &MGDev::is_router},
    {"is_local", &MGDev::is_local},
});
inline constexpr auto packet_attrs = std::to_array<XmlAttr<MGDev>>({
    {"local_adr", &MGDev::local_adr},
    {"virtual_adr", &MGDev::virtual_adr},
    {"ip_all", &MGDev::ip_all},
    {"ip_select", &MGDev::ip_select},
    {"ip_icmp", &MGDev::ip_icmp},
    {"ip_igmp", &MGDev::ip_igmp},
    {"ip_tcp", &MGDev::ip_tcp},
    {"ip_udp", &MGDev::ip_udp},
    {"ip_esp", &MGDev::ip_esp},
    {"ip_ah", &MGDev::ip_ah},
    {"ip_pmi", &MGDev::ip_pmi},
    {"ip_sctp", &MGDev::ip_sctp},
});

inline constexpr auto fc_attrs = std::to_array<XmlAttr<MGConfig>>({
    {"radio", &MGConfig::fc_radio},
    {"ip", &MGConfig::fc_ip},
    {"domen", &MGConfig::fc_domen},
    {"port", &MGConfig::fc_port},
    {"tls_server", &MGConfig::fc_tls_server},
    {"login", &MGConfig::fc_login},
    {"hash", &MGConfig::fc_hash, Form::scrambled},
});

inline constexpr auto fs_attrs = std::to_array<XmlAttr<MGConfig>>({
    {"radio", &MGConfig::fs_radio},
    {"ip", &MGConfig::fs_ip},
    {"port", &MGConfig::fs_port},
});

// --- Actions ---

inline constexpr auto action_attrs = std::to_array<XmlAttr<MGAction>>({
    {"active", &MGAction::active},
    {"type", &MGAction::type},
    {"name", &MGAction::name},
});

inline constexpr auto console_attrs = std::to_array<XmlAttr<MGConsole>>({
    {"prog", &MGConsole::prog},
    {"no_code", &MGConsole::no_code},
    {"use_hash", &MGConsole::use_hash},
    {"hash", &MGConsole::hash, Form::scrambled},
});

inline constexpr auto send_attrs = std::to_array<XmlAttr<MGSend>>({
    {"ip", &MGSend::ip},
    {"domen", &MGSend::domen},
    {"port", &MGSend::port},
    {"catalog", &MGSend::catalog},
    {"file", &MGSend::file},
    {"buf_len", &MGSend::buf_len},
    {"inactivity", &MGSend::inactivity},
    {"tls", &MGSend::tls},
    {"tls_server", &MGSend::tls_server},
});

inline constexpr auto copy_attrs = std::to_array<XmlAttr<MGCopy>>({
    {"catalog", &MGCopy::catalog},
    {"file", &MGCopy::file},
    {"catalog_to", &MGCopy::catalog_to},
    {"mode", &MGCopy::mode},
    {"sub_dir", &MGCopy::sub_dir},
    {"save_last_n_files", &MGCopy::save_last_n_files},
    {"n_saved_files", &MGCopy::n_saved_files},
});

inline constexpr auto runprog_attrs = std::to_array<XmlAttr<MGRunprog>>({
    {"prog", &MGRunprog::prog},
    {"param", &MGRunprog::param},
});

inline constexpr auto exist_attrs = std::to_array<XmlAttr<MGExist>>({
    {"catalog", &MGExist::catalog},
    {"file", &MGExist::file},
    {"content", &MGExist::content},
    {"timeout", &MGExist::timeout},
});

// --- Rows of lists ---

inline constexpr auto user_attrs = std::to_array<XmlAttr<MGAdmit>>({
    {"subject", &MGAdmit::subject, &MGAdmit::crc_subject},
    {"use_server", &MGAdmit::use_server},
    {"ip", &MGAdmit::ip},
    {"domen", &MGAdmit::domen},
    {"port", &MGAdmit::port},
});
inline constexpr auto short_user_attrs = std::to_array<XmlAttr<MGAdmit>>({
    {"subject", &MGAdmit::subject, &MGAdmit::crc_subject},
});

inline constexpr auto address_attrs = std::to_array<XmlAttr<MGListAdrs>>({
    {"ip", &MGListAdrs::ip},
    {"domen", &MGListAdrs::domen},
    {"net", &MGListAdrs::net},
    {"name", &MGListAdrs::name},
});
inline constexpr auto short_address_attrs = std::to_array<XmlAttr<MGListAdrs>>({
    {"ip", &MGListAdrs::ip},
    {"name", &MGListAdrs::name},
});

inline constexpr auto queue_attrs = std::to_array<XmlAttr<MGQueue>>({
    {"id", &MGQueue::id, &MGQueue::crc_id},
    {"in_dir", &MGQueue::in_dir},
    {"out_dir", &MGQueue::out_dir},
    {"out_sign", &MGQueue::out_sign},
    {"save_ticket", &MGQueue::save_ticket},
    {"ticket_dir", &MGQueue::ticket_dir},
    {"out_ticket_sign", &MGQueue::out_ticket_sign},
});

inline constexpr auto allow_attrs = std::to_array<XmlAttr<MGAllow>>({
    {"active", &MGAllow::active},
    {"name", &MGAllow::name},
    {"login", &MGAllow::login, &MGAllow::crc_login},
    {"hash", &MGAllow::hash, Form::scrambled},
});

// --- The order of the elements ---

// A walk over the file: an element with attributes only, a list of such rows, and the parts that nest deeper. The
// direction `way` finds or makes an element, meets its attributes with a record, and meets the rows of a list with a
// vector: walk_row(node, row) goes on inside a row. Node is const for reading, records are for writing.
template <class Way>
struct ProfileWalk {
    const Way& way;

    template <class Node, class Record, class Table>
    void section(Node* parent, const char* name, Record& record, const Table& table) const {
        way.attrs(way.element(parent, name), record, table);
    }

    template <class Node, class Rows, class Table>
    void list(Node* parent, const char* list_name, const char* row_name, Rows& rows, const Table& table) const {
        way.rows(parent, list_name, row_name, rows, [&](Node* node, auto& row) { way.attrs(node, row, table); });
    }

    template <class Node, class Action>
    void action(Node* node, Action& action) const {
        way.attrs(node, action, action_attrs);
        section(node, "console", action.console, console_attrs);
        section(node, "send", action.send, send_attrs);
        section(node, "copy", action.copy, copy_attrs);
        section(node, "runprog", action.runprog, runprog_attrs);
        section(node, "exist", action.exist, exist_attrs);
    }

    template <class Node, class Allow>
    void allow(Node* node, Allow& allow) const {
        way.attrs(node, allow, allow_attrs);
        list(node, "fs_admit", "user", allow.admit, short_user_attrs);
        list(node, "fs_queue", "queue", allow.queue, queue_attrs);
    }

    // One side of a gateway: the device's attributes stand in the side's own element, its lists beside that.
    template <class Node, class Dev>
    void device(Node* root, Node* side, const char* adrs, const char* virt, Dev& dev) const {
        way.attrs(side, dev, device_attrs);
        list(root, adrs, "address", dev.adrs, address_attrs);
        list(root, virt, "address", dev.virt, short_address_attrs);
        way.attrs(side, dev, packet_attrs);
    }

    template <class Node, class Config>
    void gateways(Node* root, Config& config) const {
        Node* client = way.element(root, "init_gw_client");
        way.attrs(client, config, gw_client_mode_attrs);
        device(root, client, "gw_client_adrs", "gw_client_virtual", config.gw_client);
        way.attrs(client, config, gw_client_send_attrs);

        Node* server = way.element(root, "init_gw_server");
        way.attrs(server, config, gw_server_recv_attrs);
        list(root, "gw_admit", "user", config.gw_admit, short_user_attrs);
        device(root, server, "gw_server_adrs", "gw_server_virtual", config.gw_server);
    }

    // The whole file below its root.
    template <class Node, class Config>
    void profile(Node* root, Config& config) const {
        section(root, "settings", config, settings_attrs);
        section(root, "log", config, log_attrs);
        section(root, "error", config, error_attrs);
        section(root, "crypto", config, crypto_attrs);
        section(root, "file_param", config, file_param_attrs);
        section(root, "init_timer", config, timer_attrs);
        section(root, "init_file", config, file_attrs);
        section(root, "init_recv", config, recv_attrs);
        section(root, "init_modify", config, modify_attrs);
        way.rows(root, "actions", "record", config.actions, [&](Node* node, auto& row) { action(node, row); });
        section(root, "init_client", config, client_attrs);
        section(root, "init_server", config, server_attrs);
        list(root, "admit", "user", config.admit, user_attrs);
        gateways(root, config);
        section(root, "init_fc", config, fc_attrs);
        list(root, "fc_queue", "queue", config.fc_queue, queue_attrs);
        section(root, "init_fs", config, fs_attrs);
        way.rows(root, "fs_allow", "allow", config.fs_allow, [&](Node* node, auto& row) { allow(node, row); });
    }
};
