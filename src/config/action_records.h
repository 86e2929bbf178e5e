// The actions of a profile, with the parameters of each kind. As in config/records.h, the records check nothing.
#pragma once

#include <cstdint>
#include <string>

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
