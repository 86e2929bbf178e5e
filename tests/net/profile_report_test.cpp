#include "net/profile_report.h"

#include "app/log.h"
#include "app/mg_context.h"
#include "config/profile_file.h"
#include "net/golden.h"
#include "support/temp_dir.h"

#include <sstream>

namespace {

// golden/profile.xml with no start mode on, the server's side of the gateway a router, and an action of each type.
MGProfile the_profile() {
    MGContext context;
    context.config_dir = GOLDEN;
    context.profiles.resize(1);
    MGProfile& profile = context.profiles[0];
    profile.id = "profile";
    profile.name = "profile.name";
    read_profile_file(&context, 0);
    MGConfig& config = profile.config;
    config.fs_radio = config.gw_server.is_local = config.gw_server.ip_select = false;
    config.recv_need_cert = config.server_use_list = false;
    config.gw_server.is_router = config.gw_server.ip_all = true;
    for (const char* type : {"CONSOLE", "COPYFILE", "RUNPROG", "EXIST"}) {
        config.actions.push_back(config.actions[0]);
        config.actions.back().type = type;
    }
    return profile;
}

std::string report_of(const MGProfile& profile) {
    const TempDir dir;
    LogFileGlobal.SetResultFile(dir.path("profile.result").c_str());
    print_selected_profile(profile);
    return dir.read("profile.result");
}

// What stands behind the labels of a report.
std::string values(const std::string& report) {
    std::istringstream lines(report);
    std::string all;
    for (std::string line; std::getline(lines, line);)
        if (const size_t at = line.find(": "); at != std::string::npos) all += line.substr(at + 2) + "|";
    return all;
}

std::string device_values(const MGDev& dev) {
    MGInfo info;
    print_info_dev(info, dev);
    return values(info.GetString());
}

// What stands there of the file, whose values say where in it they stand.
const std::string general =
    "profile.name|profile|false|false|86400|102|1000|104|105|false|106|107|true|108|log.catalog|1048576|"
    "true|true|true|true|true|true|error.catalog|error.file|true|crypto.name|crypto.psp|crypto.lsp|crypto.ldap|"
    "true|true|false|catalog_archive_in|false|catalog_archive_out|false|catalog_error_in|false|sub_dir|"
    "Выдать сообщение об ошибке|true|Текстовый файл|";
const std::string actions =
    "action0.name|Отправка файла|10.2.0.1|send0.domen|send0.catalog|20115|send0.file|116|117|true|send0.tls_server|"
    "action0.name|Консольная утилита|console0.prog|true|false|"
    "action0.name|Копирование файла|copy0.catalog|copy0.file|copy0.catalog_to|Выдать сообщение об ошибке|"
    "false|true|118|action0.name|Запуск программы|runprog0.prog|runprog0.param|"
    "action0.name|Наличие файла|exist0.catalog|exist0.file|exist0.content|119|";
const struct {
    bool MGConfig::*radio;
    std::string values;
} modes[] = {
    {&MGConfig::timer_radio, "21|59|8760|60|"},
    {&MGConfig::file_radio, "file.catalog|file.mask_file|"},
    {&MGConfig::recv_radio, "10.1.0.1|20114|recv.catalog|true|false|"},
    {&MGConfig::modify_radio, "modify.catalog|modify.file|"},
    {&MGConfig::client_radio, "10.1.0.2|20125|10.1.0.3|client.send_domen|20126|client.tls_server|"},
    {&MGConfig::server_radio, "10.1.0.4|20127|true|false|true|10.1.0.5|server.send_domen|20128|user.admit0.subject|"
                              "user.admit0.ip|user.admit0.domen|20129|user.admit1.subject|"},
    {&MGConfig::gw_client_radio,
     "gw_client.internal_device|gw_client.device|false|true|10.1.0.6|10.1.1.1/24|false|true|"
     "false|true|false|false|true|true|true|true|10.1.0.7|gw_client.send_domen|20131|gw_client.tls_server|"},
    {&MGConfig::gw_server_radio,
     "10.1.0.8|20132|user.gw_admit0.subject|user.gw_admit1.subject|gw_server.internal_device|gw_server.device|"
     "true|false|address.gw_server_adrs0.name|address.gw_server_adrs0.ip|address.gw_server_adrs0.domen|"
     "address.gw_server_adrs0.net|address.gw_server_virtual0.name|address.gw_server_virtual0.ip|"
     "address.gw_server_virtual1.name|address.gw_server_virtual1.ip|true|false|"},
    {&MGConfig::fc_radio, "10.1.0.10|fc.domen|20133|fc.tls_server|fc.login|Да|"
                          "queue.fc_queue0.id|queue.fc_queue0.in_dir|queue.fc_queue0.out_dir|Да|Нет|"
                          "queue.fc_queue0.ticket_dir|Да|queue.fc_queue1.id|queue.fc_queue1.in_dir|"
                          "queue.fc_queue1.out_dir|Нет|Да|queue.fc_queue1.ticket_dir|Нет|"},
    {&MGConfig::fs_radio, "10.1.0.11|20134|allow0.name|Да|allow0.login|Да|queue.allow0.fs_queue0.id|"
                          "queue.allow0.fs_queue0.in_dir|queue.allow0.fs_queue0.out_dir|Да|Да|"
                          "queue.allow0.fs_queue0.ticket_dir|Да|allow1.name|Нет|allow1.login|Нет|"
                          "user.allow1.fs_admit0.subject|user.allow1.fs_admit1.subject|"
                          "queue.allow1.fs_queue0.id|queue.allow1.fs_queue0.in_dir|queue.allow1.fs_queue0.out_dir|"
                          "Да|Да|queue.allow1.fs_queue0.ticket_dir|Да|"},
};

} // namespace

TEST(ProfileReport, ListsTheModesThatAreOnInTheirOrder) {
    const MGProfile none = the_profile();
    MGProfile all = none;
    std::string all_values = general;
    EXPECT_EQ(values(report_of(none)), general);
    for (const auto& mode : modes) {
        MGProfile profile = none;
        profile.config.*mode.radio = all.config.*mode.radio = true;
        const size_t number = static_cast<size_t>(&mode - modes);
        EXPECT_EQ(values(report_of(profile)), general + "true|" + mode.values + (number < 4 ? actions : ""));
        all_values += "true|" + mode.values + (number == 3 ? actions : "");
    }
    EXPECT_EQ(values(report_of(all)), all_values);

    MGProfile server = none;
    server.config.server_radio = true;
    EXPECT_EQ(report_of(server), report_of(none) + golden("server.txt"));
}

TEST(DeviceReport, TellsOnlyWhatIsInForce) {
    const MGConfig config = the_profile().config;
    EXPECT_EQ(device_values(config.gw_client),
              "gw_client.internal_device|gw_client.device|Да|10.1.0.6|10.1.1.1/24|Да| igmp esp ah pmi sctp|");
    MGDev router = config.gw_server;
    router.adrs.push_back({"", "", "", "пустой"});
    router.virt[1].ip.clear();
    EXPECT_EQ(device_values(router),
              "gw_server.internal_device|gw_server.device|Да|address.gw_server_adrs0.name|address.gw_server_adrs0.ip|"
              "address.gw_server_adrs0.domen|address.gw_server_adrs0.net|пустой|address.gw_server_virtual0.name|"
              "address.gw_server_virtual0.ip|address.gw_server_virtual1.name|Да|");
}
