// The attributes of a profile's file, each element's in the file's order, and the fields that they stand for.
#pragma once

#include "config/records.h"
#include "config/xml_tables.h"

// --- General sections ---

inline constexpr XmlAttr<MGConfig> settings_attrs[] = {
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
};

inline constexpr XmlAttr<MGConfig> log_attrs[] = {
    {"catalog", &MGConfig::log_catalog},
    {"size", &MGConfig::log_size},
    {"debug_log", &MGConfig::debug_log},
    {"ext_debug_log", &MGConfig::ext_debug_log},
    {"syslog", &MGConfig::syslog},
    {"turn_off_report_log", &MGConfig::turn_off_report_log},
    {"protect_repeat", &MGConfig::protect_repeat},
};

inline constexpr XmlAttr<MGConfig> error_attrs[] = {
    {"need_save", &MGConfig::need_save},
    {"catalog", &MGConfig::error_catalog},
    {"file", &MGConfig::error_file},
};

inline constexpr XmlAttr<MGConfig> crypto_attrs[] = {
    {"init", &MGConfig::crypto_init},
    {"name", &MGConfig::crypto_name},
    {"psp", &MGConfig::psp},
    {"lsp", &MGConfig::lsp},
    {"ldap", &MGConfig::ldap},
    {"without_key", &MGConfig::without_key},
    {"preloading_key", &MGConfig::preloading_key},
};

inline constexpr XmlAttr<MGConfig> file_param_attrs[] = {
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
};

// --- Start modes ---

inline constexpr XmlAttr<MGConfig> timer_attrs[] = {
    {"radio", &MGConfig::timer_radio},           {"time_hour", &MGConfig::time_hour},
    {"time_minute", &MGConfig::time_minute},     {"period_hour", &MGConfig::period_hour},
    {"period_minute", &MGConfig::period_minute},
};

inline constexpr XmlAttr<MGConfig> file_attrs[] = {
    {"radio", &MGConfig::file_radio},
    {"catalog", &MGConfig::file_catalog},
    {"mask_file", &MGConfig::mask_file},
};

inline constexpr XmlAttr<MGConfig> recv_attrs[] = {
    {"radio", &MGConfig::recv_radio},     {"ip", &MGConfig::recv_ip},   {"port", &MGConfig::recv_port},
    {"catalog", &MGConfig::recv_catalog}, {"tls", &MGConfig::recv_tls}, {"need_cert", &MGConfig::recv_need_cert},
};

inline constexpr XmlAttr<MGConfig> modify_attrs[] = {
    {"radio", &MGConfig::modify_radio},
    {"catalog", &MGConfig::modify_catalog},
    {"file", &MGConfig::modify_file},
};

inline constexpr XmlAttr<MGConfig> client_attrs[] = {
    {"radio", &MGConfig::client_radio},           {"recv_ip", &MGConfig::client_recv_ip},
    {"recv_port", &MGConfig::client_recv_port},   {"send_ip", &MGConfig::client_send_ip},
    {"send_domen", &MGConfig::client_send_domen}, {"send_port", &MGConfig::client_send_port},
    {"tls_server", &MGConfig::client_tls_server},
};

inline constexpr XmlAttr<MGConfig> server_attrs[] = {
    {"radio", &MGConfig::server_radio},         {"recv_ip", &MGConfig::server_recv_ip},
    {"recv_port", &MGConfig::server_recv_port}, {"need_cert", &MGConfig::server_need_cert},
    {"use_list", &MGConfig::server_use_list},   {"everyone", &MGConfig::server_everyone},
    {"send_ip", &MGConfig::server_send_ip},     {"send_domen", &MGConfig::server_send_domen},
    {"send_port", &MGConfig::server_send_port},
};

// A gateway's element comes in pieces, since its lists are read in between.
inline constexpr XmlAttr<MGConfig> gw_client_mode_attrs[] = {
    {"radio", &MGConfig::gw_client_radio},
};
inline constexpr XmlAttr<MGConfig> gw_client_send_attrs[] = {
    {"send_ip", &MGConfig::gw_client_send_ip},
    {"send_domen", &MGConfig::gw_client_send_domen},
    {"send_port", &MGConfig::gw_client_send_port},
    {"tls_server", &MGConfig::gw_client_tls_server},
};
inline constexpr XmlAttr<MGConfig> gw_server_recv_attrs[] = {
    {"radio", &MGConfig::gw_server_radio},
    {"recv_ip", &MGConfig::gw_server_recv_ip},
    {"recv_port", &MGConfig::gw_server_recv_port},
};

// Both sides of a gateway.
inline constexpr XmlAttr<MGDev> device_attrs[] = {
    {"internal_device", &MGDev::internal_device},
    {"device", &MGDev::device},
    {"is_router", &MGDev::is_router},
    {"is_local", &MGDev::is_local},
};
inline constexpr XmlAttr<MGDev> packet_attrs[] = {
    {"local_adr", &MGDev::local_adr}, {"virtual_adr", &MGDev::virtual_adr}, {"ip_all", &MGDev::ip_all},
    {"ip_select", &MGDev::ip_select}, {"ip_icmp", &MGDev::ip_icmp},         {"ip_igmp", &MGDev::ip_igmp},
    {"ip_tcp", &MGDev::ip_tcp},       {"ip_udp", &MGDev::ip_udp},           {"ip_esp", &MGDev::ip_esp},
    {"ip_ah", &MGDev::ip_ah},         {"ip_pmi", &MGDev::ip_pmi},           {"ip_sctp", &MGDev::ip_sctp},
};

inline constexpr XmlAttr<MGConfig> fc_attrs[] = {
    {"radio", &MGConfig::fc_radio},
    {"ip", &MGConfig::fc_ip},
    {"domen", &MGConfig::fc_domen},
    {"port", &MGConfig::fc_port},
    {"tls_server", &MGConfig::fc_tls_server},
    {"login", &MGConfig::fc_login},
    {"hash", &MGConfig::fc_hash, Form::scrambled},
};

inline constexpr XmlAttr<MGConfig> fs_attrs[] = {
    {"radio", &MGConfig::fs_radio},
    {"ip", &MGConfig::fs_ip},
    {"port", &MGConfig::fs_port},
};

// --- Actions ---

inline constexpr XmlAttr<MGAction> action_attrs[] = {
    {"active", &MGAction::active},
    {"type", &MGAction::type},
    {"name", &MGAction::name},
};

inline constexpr XmlAttr<MGConsole> console_attrs[] = {
    {"prog", &MGConsole::prog},
    {"no_code", &MGConsole::no_code},
    {"use_hash", &MGConsole::use_hash},
    {"hash", &MGConsole::hash, Form::scrambled},
};

inline constexpr XmlAttr<MGSend> send_attrs[] = {
    {"ip", &MGSend::ip},
    {"domen", &MGSend::domen},
    {"port", &MGSend::port},
    {"catalog", &MGSend::catalog},
    {"file", &MGSend::file},
    {"buf_len", &MGSend::buf_len},
    {"inactivity", &MGSend::inactivity},
    {"tls", &MGSend::tls},
    {"tls_server", &MGSend::tls_server},
};

inline constexpr XmlAttr<MGCopy> copy_attrs[] = {
    {"catalog", &MGCopy::catalog},
    {"file", &MGCopy::file},
    {"catalog_to", &MGCopy::catalog_to},
    {"mode", &MGCopy::mode},
    {"sub_dir", &MGCopy::sub_dir},
    {"save_last_n_files", &MGCopy::save_last_n_files},
    {"n_saved_files", &MGCopy::n_saved_files},
};

inline constexpr XmlAttr<MGRunprog> runprog_attrs[] = {
    {"prog", &MGRunprog::prog},
    {"param", &MGRunprog::param},
};

inline constexpr XmlAttr<MGExist> exist_attrs[] = {
    {"catalog", &MGExist::catalog},
    {"file", &MGExist::file},
    {"content", &MGExist::content},
    {"timeout", &MGExist::timeout},
};

// --- Rows of lists ---

inline constexpr XmlAttr<MGAdmit> user_attrs[] = {
    {"subject", &MGAdmit::subject, &MGAdmit::crc_subject},
    {"use_server", &MGAdmit::use_server},
    {"ip", &MGAdmit::ip},
    {"domen", &MGAdmit::domen},
    {"port", &MGAdmit::port},
};
inline constexpr XmlAttr<MGAdmit> short_user_attrs[] = {
    {"subject", &MGAdmit::subject, &MGAdmit::crc_subject},
};

inline constexpr XmlAttr<MGListAdrs> address_attrs[] = {
    {"ip", &MGListAdrs::ip},
    {"domen", &MGListAdrs::domen},
    {"net", &MGListAdrs::net},
    {"name", &MGListAdrs::name},
};
inline constexpr XmlAttr<MGListAdrs> short_address_attrs[] = {
    {"ip", &MGListAdrs::ip},
    {"name", &MGListAdrs::name},
};

inline constexpr XmlAttr<MGQueue> queue_attrs[] = {
    {"id", &MGQueue::id, &MGQueue::crc_id},
    {"in_dir", &MGQueue::in_dir},
    {"out_dir", &MGQueue::out_dir},
    {"out_sign", &MGQueue::out_sign},
    {"save_ticket", &MGQueue::save_ticket},
    {"ticket_dir", &MGQueue::ticket_dir},
    {"out_ticket_sign", &MGQueue::out_ticket_sign},
};

inline constexpr XmlAttr<MGAllow> allow_attrs[] = {
    {"active", &MGAllow::active},
    {"name", &MGAllow::name},
    {"login", &MGAllow::login, &MGAllow::crc_login},
    {"hash", &MGAllow::hash, Form::scrambled},
};
