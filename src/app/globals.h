// The objects of the process that every handler reaches by name. All live as long as the process; a dialog's pointer
// is null while that dialog is closed. One thread uses them, the toolkit's.
// LogFileGlobal, the object that owns the log, stands with the log (app/log.h).
#pragma once

#include <deque>
#include <string>
#include <vector>

class MGDialog;
class MGContext;

// The application context; main sets it before anything else can run.
extern MGContext* Context;

// The main window, which lives until shutdown.
extern MGDialog* ProfileDialog;

// The modal dialogs: each is set by the operation that opens it, for as long as the dialog is open.
extern MGDialog* Enter2Dialog;
extern MGDialog* SettingsDialog;
extern MGDialog* AboutDialog;
extern MGDialog* ConfigDialog;
extern MGDialog* ActiveDialog;
extern MGDialog* ConsoleDialog;
extern MGDialog* SendDialog;
extern MGDialog* CopyDialog;
extern MGDialog* RunprogDialog;
extern MGDialog* ExistDialog;
extern MGDialog* CryptoDialog;
extern MGDialog* ResultDialog;
extern MGDialog* SubjectDialog;
extern MGDialog* QueueDialog;
extern MGDialog* AllowDialog;
extern MGDialog* AdrsDialog;
extern MGDialog* AddressDialog;

// The open admission list dialogs, which nest; the one that the user works in stands at the back.
extern std::deque<MGDialog*> stackAdmitDialog;

// Histories: what the drop-down lists offer. Each holds a text once, oldest first. Never stored.
using History = std::vector<std::string>;
extern History init_profile_name;
extern History init_profile_id;
extern History init_recv_ip;
extern History init_send_ip;
extern History init_send_domen;
extern History init_recv_domen;
extern History init_sub_net;
extern History init_net_device;
extern History init_tun_device;
extern History init_local_adr;
extern History init_virtual_adr;
extern History init_virtual_ip;
extern History init_action_name;
extern History init_console_prog;
extern History init_active_file;
extern History init_run_prog;
extern History init_run_param;
extern History init_exist_content;
extern History init_admit_filter;
extern History init_sub_dir; // holds the two templates of a sub-catalog from the start

// Page tables: the widgets of each start mode's frame in dialog_config, switched on and off together.
using PageTable = const std::vector<const char*>;
extern PageTable init_timer_id;
extern PageTable init_file_id;
extern PageTable init_recv_id;
extern PageTable init_modify_id;
extern PageTable init_client_id;
extern PageTable init_server_id;
extern PageTable init_gw_client_id;
extern PageTable init_gw_server_id;
extern PageTable init_fc_id;
extern PageTable init_fs_id;
