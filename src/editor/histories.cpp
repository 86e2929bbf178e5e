// Gathering and offering what the user has given before.
#include "editor/histories.h"

#include "app/mg_context.h"
#include "app/mg_err.h"
#include "dialog/mg_dialog.h"
#include "net/mg_socket.h"

#include <algorithm>
#include <unordered_set>

using namespace vorma;

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

namespace {

// A history while it is gathered from all profiles: the set finds a text in constant time, so that a start stays in
// proportion to the number of profiles.
class Gathering {
public:
    explicit Gathering(History& history) : history_(history), seen_(history.begin(), history.end()) {}

    void add(const std::string& text) {
        if (!text.empty() && seen_.insert(text).second) history_.push_back(text);
    }

private:
    History& history_;
    std::unordered_set<std::string> seen_;
};

// Which plain fields of a profile go to which history.
constexpr std::string MGConfig::*recv_ip_fields[] = {&MGConfig::recv_ip, &MGConfig::client_recv_ip,
                                                     &MGConfig::server_recv_ip, &MGConfig::gw_server_recv_ip,
                                                     &MGConfig::fs_ip};
constexpr std::string MGConfig::*send_ip_fields[] = {&MGConfig::client_send_ip, &MGConfig::server_send_ip,
                                                     &MGConfig::gw_client_send_ip, &MGConfig::fc_ip};
constexpr std::string MGConfig::*send_domen_fields[] = {&MGConfig::client_send_domen, &MGConfig::server_send_domen,
                                                        &MGConfig::gw_client_send_domen, &MGConfig::fc_domen};

// All histories that profiles feed.
struct Gatherings {
    Gathering recv_ip{init_recv_ip}, send_ip{init_send_ip}, send_domen{init_send_domen}, recv_domen{init_recv_domen},
        sub_net{init_sub_net}, virtual_ip{init_virtual_ip}, tun_device{init_tun_device}, local_adr{init_local_adr},
        virtual_adr{init_virtual_adr}, action_name{init_action_name}, console_prog{init_console_prog},
        active_file{init_active_file}, run_prog{init_run_prog}, run_param{init_run_param},
        exist_content{init_exist_content};

    void add(const MGAction& action) {
        action_name.add(action.name);
        console_prog.add(action.console.prog);
        send_ip.add(action.send.ip);
        send_domen.add(action.send.domen);
        active_file.add(action.send.file);
        active_file.add(action.copy.file);
        run_prog.add(action.runprog.prog);
        run_param.add(action.runprog.param);
        active_file.add(action.exist.file);
        exist_content.add(action.exist.content);
    }

    void add(const std::vector<MGAdmit>& users) {
        for (const MGAdmit& user : users) {
            send_ip.add(user.ip);
            send_domen.add(user.domen);
        }
    }

    void add(const MGDev& side) {
        for (const MGListAdrs& address : side.adrs) {
            recv_ip.add(address.ip);
            recv_domen.add(address.domen);
            sub_net.add(address.net);
        }
        for (const MGListAdrs& address : side.virt) virtual_ip.add(address.ip);
        tun_device.add(side.device);
        local_adr.add(side.local_adr);
        virtual_adr.add(side.virtual_adr);
    }

    void add(const MGConfig& config) {
        for (auto field : recv_ip_fields) recv_ip.add(config.*field);
        for (auto field : send_ip_fields) send_ip.add(config.*field);
        for (auto field : send_domen_fields) send_domen.add(config.*field);
        for (const MGAction& action : config.actions) add(action);
        add(config.admit);
        add(config.gw_admit);
        add(config.gw_client);
        add(config.gw_server);
    }
};

} // namespace

void add_string_to_vector(const std::string& text, History& history) {
    if (text.empty() || std::find(history.begin(), history.end(), text) != history.end()) return;
    history.push_back(text);
}

void add_vector_to_vector(const History& source, History& history) {
    at_edge("add_vector_to_vector", [&] {
        Gathering gathering(history);
        for (const std::string& text : source) gathering.add(text);
    });
}

void init_combo_box(MGDialog* dialog, const char* combo, const History& history) {
    at_edge("init_combo_box", [&] { dialog->ComboBoxTextAppendAll(combo, history); });
}

void profile_set_vector(const MGContext* context, History& names, History& ids) {
    at_edge("profile_set_vector", [&] {
        Gathering all_names(names), all_ids(ids);
        for (const MGProfile& profile : context->profiles) {
            all_names.add(profile.name);
            all_ids.add(profile.id);
        }
    });
}

void init_globsl_combo_box(const MGContext* context) {
    at_edge("init_globsl_combo_box", [&] {
        MGSocket socket;
        History local_addresses;
        socket.GetLocalIps(local_addresses);
        add_string_to_vector("0.0.0.0", init_recv_ip);
        add_vector_to_vector(local_addresses, init_recv_ip);

        Gatherings gatherings;
        for (const MGProfile& profile : context->profiles) gatherings.add(profile.config);

        std::vector<MGDevs> devices;
        socket.FindDevs(devices);
        for (const MGDevs& device : devices)
            if (device.if_up && device.if_running) add_string_to_vector(device.name, init_net_device);
    });
}
