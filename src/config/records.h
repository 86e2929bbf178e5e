// What the editor edits and the service reads: plain records with value semantics. A field bears the name of its
// attribute in the file, with its start mode or section in front where that name occurs more than once.
// Strings are UTF-8 of any length and start empty. The records check nothing; readers and dialogs do.
#pragma once

#include "config/action_records.h"
#include "config/list_records.h"

#include <cstdint>
#include <string>
#include <vector>

// The content of a profile's own file.
struct MGConfig {
    int32_t timeout_inactivity = 60; // seconds
    int32_t sleep_sec = 1;           // delay for detecting changes of a file: whole seconds and
    int32_t sleep_millisec = 0;      // milliseconds
    uint32_t send_timeout = 8;       // network time-outs, seconds; a stored 0 is read as 8
    uint32_t recv_timeout = 8;

    std::string log_catalog;
    int32_t log_size = 5120; // KiB
    bool debug_log = false;
    bool ext_debug_log = false;
    bool syslog = false;              // errors go to the system log too
    bool turn_off_report_log = false; // switches the event log off
    bool protect_repeat = false;      // repeated errors are not written again

    bool need_save = false; // the last error is saved
    std::string error_catalog;
    std::string error_file;

    bool crypto_init = false; // the crypto profile is initialised at start
    std::string crypto_name;  // the chosen MGCrypto
    std::string psp;
    std::string lsp;
    std::string ldap;
    bool without_key = false;    // no loading of the key
    bool preloading_key = false; // the key is loaded beforehand, for a cluster

    uint32_t limit_auth = 16; // limit on TLS authentication, seconds
    bool use_tls_1_2 = true;
    uint32_t limit_inactive = 0; // limit on TLS inactivity, minutes
    bool tls_turn_off = false;   // switches TLS off in all subsystems
    uint32_t reset_timeout = 0;  // the TLS connections of a gateway are restarted after it, hours

    bool use_archive_in = true; // keep an incoming archive
    std::string catalog_archive_in;
    bool use_archive_out = true; // keep an outgoing archive
    std::string catalog_archive_out;
    bool use_error_in = true; // move erroneous files to a catalog
    std::string catalog_error_in;
    std::string mode_same_file; // token of same_file_modes, empty until the profile was edited
    bool use_sub_dir = true;    // create a sub-catalog
    std::string sub_dir;        // its template, with the tokens of init_sub_dir
    bool use_ticket = false;    // send tickets
    std::string ticket_type;    // token of ticket_types, empty until the profile was edited

    bool timer_radio = true; // start mode: by timer
    int32_t time_hour = 0;
    int32_t time_minute = 0;
    int32_t period_hour = 0;
    int32_t period_minute = 0;

    bool file_radio = false; // start mode: a file is present in a catalog
    std::string file_catalog;
    std::string mask_file; // mask of the file name

    bool recv_radio = false; // start mode: a file is received from the network
    std::string recv_ip;     // local address to listen on
    uint16_t recv_port = 9696;
    std::string recv_catalog; // keeps the received file
    bool recv_tls = false;
    bool recv_need_cert = false; // demand a certificate

    bool modify_radio = false; // start mode: a file in a catalog has changed
    std::string modify_catalog;
    std::string modify_file;

    std::vector<MGAction> actions; // in the order of their execution

    bool client_radio = false; // start mode: TLS client
    std::string client_recv_ip;
    uint16_t client_recv_port = 9697;
    std::string client_send_ip;
    std::string client_send_domen;
    uint16_t client_send_port = 9698;
    std::string client_tls_server;

    bool server_radio = false; // start mode: TLS server
    std::string server_recv_ip;
    uint16_t server_recv_port = 9698;
    bool server_need_cert = false;
    bool server_use_list = false; // use the admission list
    std::vector<MGAdmit> admit;
    bool server_everyone = false; // admit everyone
    std::string server_send_ip;
    std::string server_send_domen;
    uint16_t server_send_port = 9697;

    bool gw_client_radio = false; // start mode: TLS gateway, client side
    MGDev gw_client;
    std::string gw_client_send_ip;
    std::string gw_client_send_domen;
    uint16_t gw_client_send_port = 9699;
    std::string gw_client_tls_server;

    bool gw_server_radio = false; // start mode: TLS gateway, server side
    std::string gw_server_recv_ip;
    uint16_t gw_server_recv_port = 9699;
    std::vector<MGAdmit> gw_admit; // only subject is stored
    MGDev gw_server;

    bool fc_radio = false; // start mode: TLS file client
    std::string fc_ip;     // the file server
    std::string fc_domen;
    uint16_t fc_port = 9700;
    std::string fc_tls_server;
    std::string fc_login;
    std::string fc_hash; // password: clear text here, scrambled in the file
    std::vector<MGQueue> fc_queue;

    bool fs_radio = false; // start mode: TLS file server
    std::string fs_ip;
    uint16_t fs_port = 9700;
    std::vector<MGAllow> fs_allow;

    bool operator==(const MGConfig&) const = default;
};

// One line of the master file, and the profile's own file.
struct MGProfile {
    bool is_default = false; // the service takes it by default; at most one profile has it
    std::string name;        // the user's display name
    std::string id;          // unique stem of the file name, characters of id_allow_only; fixed once the profile exists
    bool active = false;
    MGConfig config;

    bool operator==(const MGProfile&) const = default;
};
