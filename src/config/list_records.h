// Rows of a configuration's lists, and what holds them. As in config/records.h, the records check nothing.
#pragma once

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
