// One definition for each object that globals.h declares.
#include "app/globals.h"

MGContext* Context = nullptr;

MGDialog* ProfileDialog = nullptr;
MGDialog* Enter2Dialog = nullptr;
MGDialog* SettingsDialog = nullptr;
MGDialog* AboutDialog = nullptr;
MGDialog* ConfigDialog = nullptr;
MGDialog* ActiveDialog = nullptr;
MGDialog* ConsoleDialog = nullptr;
MGDialog* SendDialog = nullptr;
MGDialog* CopyDialog = nullptr;
MGDialog* RunprogDialog = nullptr;
MGDialog* ExistDialog = nullptr;
MGDialog* CryptoDialog = nullptr;
MGDialog* ResultDialog = nullptr;
MGDialog* SubjectDialog = nullptr;
MGDialog* QueueDialog = nullptr;
MGDialog* AllowDialog = nullptr;
MGDialog* AdrsDialog = nullptr;
MGDialog* AddressDialog = nullptr;

std::deque<MGDialog*> stackAdmitDialog;

History init_profile_name;
History init_profile_id;
History init_recv_ip;
History init_send_ip;
History init_send_domen;
History init_recv_domen;
History init_sub_net;
History init_net_device;
History init_tun_device;
History init_local_adr;
History init_virtual_adr;
History init_virtual_ip;
History init_action_name;
History init_console_prog;
History init_active_file;
History init_run_prog;
History init_run_param;
History init_exist_content;
History init_admit_filter;
History init_sub_dir = {
    "%%YYYY%%/%%MM%%/%%DD%%/%%LOGIN%%/%%QUEUE%%/%%TIME%%/",
    "%%LOGIN%%/%%QUEUE%%/%%YYYY%%/%%MM%%/%%DD%%/%%TIME%%/",
};

PageTable init_timer_id = {
    "spin_time_hour",
    "spin_time_minute",
    "spin_period_hour",
    "spin_period_minute",
};
PageTable init_file_id = {
    "entry_init_catalog",
    "entry_mask_file",
};
PageTable init_recv_id = {
    "combo_recv_ip", "entry_recv_ip", "spin_recv_port", "entry_recv_catalog", "check_tls_recv", "check_need_cert",
};
PageTable init_modify_id = {
    "entry_modify_catalog",
    "entry_modify_file",
};
PageTable init_client_id = {
    "combo_client_recv_ip",    "entry_client_recv_ip",  "spin_client_recv_port",
    "combo_client_send_ip",    "entry_client_send_ip",  "combo_client_send_domen",
    "entry_client_send_domen", "spin_client_send_port", "entry_client_tls_server",
};
PageTable init_server_id = {
    "combo_server_recv_ip",     "entry_server_recv_ip",    "spin_server_recv_port",   "check_server_need_cert",
    "check_use_admission_list", "button_admission_list",   "check_admit_everyone",    "combo_server_send_ip",
    "entry_server_send_ip",     "combo_server_send_domen", "entry_server_send_domen", "spin_server_send_port",
};
PageTable init_gw_client_id = {
    "combo_gw_client_internal_dev", "entry_gw_client_internal_dev",  "combo_gw_client_send_dev",
    "entry_gw_client_send_dev",     "radio_gw_client_router",        "radio_gw_client_local",
    "button_gw_client_list_adrs",   "button_gw_client_list_virtual", "combo_gw_client_local_adr",
    "entry_gw_client_local_adr",    "combo_gw_client_virtual_adr",   "entry_gw_client_virtual_adr",
    "radio_gw_client_ip_all",       "radio_gw_client_ip_select",     "check_gw_client_ip_icmp",
    "check_gw_client_ip_igmp",      "check_gw_client_ip_tcp",        "check_gw_client_ip_udp",
    "check_gw_client_ip_esp",       "check_gw_client_ip_ah",         "check_gw_client_ip_pmi",
    "check_gw_client_ip_sctp",      "combo_gw_client_send_ip",       "entry_gw_client_send_ip",
    "combo_gw_client_send_domen",   "entry_gw_client_send_domen",    "spin_gw_client_send_port",
    "entry_gw_client_tls_server",
};
PageTable init_gw_server_id = {
    "combo_gw_server_recv_ip",     "entry_gw_server_recv_ip",      "spin_gw_server_recv_port",
    "button_gw_admission_list",    "combo_gw_server_internal_dev", "entry_gw_server_internal_dev",
    "combo_gw_server_send_dev",    "entry_gw_server_send_dev",     "radio_gw_server_router",
    "radio_gw_server_local",       "button_gw_server_list_adrs",   "button_gw_server_list_virtual",
    "combo_gw_server_local_adr",   "entry_gw_server_local_adr",    "combo_gw_server_virtual_adr",
    "entry_gw_server_virtual_adr", "radio_gw_server_ip_all",       "radio_gw_server_ip_select",
    "check_gw_server_ip_icmp",     "check_gw_server_ip_igmp",      "check_gw_server_ip_tcp",
    "check_gw_server_ip_udp",      "check_gw_server_ip_esp",       "check_gw_server_ip_ah",
    "check_gw_server_ip_pmi",      "check_gw_server_ip_sctp",
};
PageTable init_fc_id = {
    "combo_fc_ip",         "entry_fc_ip",    "combo_fc_domen",    "entry_fc_domen",  "spin_fc_port",
    "entry_fc_tls_server", "entry_fc_login", "entry_fc_password", "button_fc_queue",
};
PageTable init_fs_id = {
    "combo_fs_ip",
    "entry_fs_ip",
    "spin_fs_port",
    "button_fs_allow",
};
