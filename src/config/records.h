// What the editor edits and the service reads: plain records with value semantics. A field bears the name of its
// attribute in the file, with its start mode or section in front where that name occurs more than once.
// Strings are UTF-8 of any length and start empty. The records check nothing; readers and dialogs do.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

// One row of an admission list.
struct MGAdmit {
    std::string subject;     // the certificate owner's distinguished name
    bool use_server = false; // this user is connected to the server of the next three fields; in MGConfig::admit only
    std::string ip;
    std::string domen;
    uint16_t port = 0;        // 0 means none
    uint32_t crc_subject = 0; // MakeCrc32Lower of subject; never stored, set whenever the row is read or edited

    bool operator==(const MGAdmit&) const = default;
};

// One queue of a file client, or of a client of the file server.
struct MGQueue {
    std::string id;
    std::string in_dir;
    std::string out_dir;
    bool out_sign = false;    // issue a signature
    bool save_ticket = false; // save tickets in ticket_dir
    std::string ticket_dir;
    bool out_ticket_sign = false; // issue a signature of tickets
    uint32_t crc_id = 0;          // MakeCrc32Lower of id; never stored, set whenever the row is read or edited

    bool operator==(const MGQueue&) const = default;
};

// One client of the file server.
struct MGAllow {
    bool active = true; // the client has access
    std::string name;
    std::string login;
    std::string hash;           // password: clear text here, scrambled in the file
    std::vector<MGAdmit> admit; // certificate subjects of this client; only subject is stored
    std::vector<MGQueue> queue;
    uint32_t crc_login = 0; // MakeCrc32Lower of login; never stored, set whenever the row is read or edited

    bool operator==(const MGAllow&) const = default;
};

// One address of a gateway.
struct MGListAdrs {
    std::string ip;
    std::string domen; // in MGDev::adrs only
    std::string net;   // in MGDev::adrs only
    std::string name;

    bool operator==(const MGListAdrs&) const = default;
};

// Devices and addresses of one side of a gateway.
struct MGDev {
    std::string internal_device;  // the internal network interface
    std::string device;           // the virtual network interface
    bool is_router = true;        // router mode; the editor keeps exactly one of the two modes on
    bool is_local = false;        // local mode
    std::vector<MGListAdrs> adrs; // internal addresses, router mode
    std::vector<MGListAdrs> virt; // virtual addresses, router mode
    std::string local_adr;        // local mode
    std::string virtual_adr;      // local mode
    bool ip_all = true;           // all IP packets are taken
    bool ip_select = false;       // only the protocols that the next flags choose are taken
    bool ip_icmp = true;
    bool ip_igmp = false;
    bool ip_tcp = true;
    bool ip_udp = true;
    bool ip_esp = false;
    bool ip_ah = false;
    bool ip_pmi = false;
    bool ip_sctp = false;

    bool operator==(const MGDev&) const = default;
};

// Parameters of a console utility.
struct MGConsole {
    std::string prog;      // the command line; the mark "%%PASSWORD%%" in it stands for the password
    bool no_code = false;  // don't check for a zero exit code
    bool use_hash = false; // use substitution of the password
    std::string hash;      // the password: clear text here, scrambled in the file

    bool operator==(const MGConsole&) const = default;
};

// Parameters of sending a file.
struct MGSend {
    std::string ip; // the receiver
    std::string domen;
    uint16_t port = 9696;
    std::string catalog;
    std::string file;
    int32_t buf_len = 5120; // size of the blocks into which the file is split, KiB
    int32_t inactivity = 0; // delay between blocks, seconds
    bool tls = false;
    std::string tls_server;

    bool operator==(const MGSend&) const = default;
};

// Parameters of copying a file.
struct MGCopy {
    std::string catalog;
    std::string file;
    std::string catalog_to;
    std::string mode;               // token of same_file_modes for a name that exists at the target, may be empty
    bool sub_dir = false;           // create a sub-catalog (YYYY/MM/DD)
    bool save_last_n_files = false; // keep the last n_saved_files files of one name
    int32_t n_saved_files = 0;      // at most 65535 in the editor

    bool operator==(const MGCopy&) const = default;
};

// Parameters of running a program.
struct MGRunprog {
    std::string prog;
    std::string param;

    bool operator==(const MGRunprog&) const = default;
};

// Parameters of waiting for a file.
struct MGExist {
    std::string catalog;
    std::string file;
    std::string content; // content that the file must have
    int32_t timeout = 0; // seconds

    bool operator==(const MGExist&) const = default;
};

// One action. It carries all five parameter records whatever its type; only the one of its type is in use, and all
// are stored.
struct MGAction {
    bool active = false; // the action is executed
    std::string type;    // token of action_types
    std::string name;    // the user's name of the action
    MGConsole console;
    MGSend send;
    MGCopy copy;
    MGRunprog runprog;
    MGExist exist;

    bool operator==(const MGAction&) const = default;
};

// One crypto profile as the provider lists it; never stored as such.
struct MGCrypto {
    std::string name;
    std::string psp;  // personal store of the user
    std::string lsp;  // local store of the user
    std::string ldap; // network store

    bool operator==(const MGCrypto&) const = default;
};

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

// What a string-coded field may hold, in the order of its drop-down list, and the text shown for it.
struct TokenText {
    const char* token;
    const char* text;
};

// MGConfig::mode_same_file and MGCopy::mode.
inline constexpr auto same_file_modes = std::to_array<TokenText>({
    {"ADD_NUM", "Сохранить с добавлением номера (*~N.*)"},
    {"REPLACE", "Перезаписать файл"},
    {"ERROR", "Выдать сообщение об ошибке"},
});

// MGConfig::ticket_type.
inline constexpr auto ticket_types = std::to_array<TokenText>({
    {"TXT", "Текстовый файл"},
    {"XML", "XML файл"},
});

// MGAction::type.
inline constexpr auto action_types = std::to_array<TokenText>({
    {"CONSOLE", "Консольная утилита"},
    {"SENDFILE", "Отправка файла"},
    {"COPYFILE", "Копирование файла"},
    {"RUNPROG", "Запуск программы"},
    {"EXIST", "Наличие файла"},
});

// The text shown for a token; empty for an unknown or empty token.
std::string get_same_file_txt_mode(const std::string& token);
std::string get_type_ticket_name(const std::string& token);
std::string get_action_txt_type(const std::string& token);

// "Да" or "Нет", as lists and reports show a flag.
const char* yes_or_no(bool value);
