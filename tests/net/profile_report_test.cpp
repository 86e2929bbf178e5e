#include "net/profile_report.h"

#include "app/log.h"
#include "app/mg_context.h"
#include "config/profile_file.h"
#include "net/golden.h"
#include "support/temp_dir.h"

namespace {

// golden/profile.xml, with no start mode on. Its texts say where in the file they stand.
MGProfile the_profile() {
    MGContext context;
    context.config_dir = GOLDEN;
    context.profiles.resize(1);
    MGProfile& profile = context.profiles[0];
    profile.id = "profile";
    profile.name = "profile.name";
    profile.active = true;
    read_profile_file(&context, 0);
    return profile;
}

std::string report_of(const MGProfile& profile) {
    const TempDir dir;
    LogFileGlobal.SetResultFile(dir.path("profile.result").c_str());
    print_selected_profile(profile);
    return dir.read("profile.result");
}

const std::pair<std::string, bool MGConfig::*> modes[] = {
    {"timer", &MGConfig::timer_radio},
    {"file", &MGConfig::file_radio},
    {"recv", &MGConfig::recv_radio},
    {"modify", &MGConfig::modify_radio},
    {"client", &MGConfig::client_radio},
    {"server", &MGConfig::server_radio},
    {"gw_client", &MGConfig::gw_client_radio},
    {"gw_server", &MGConfig::gw_server_radio},
    {"fc", &MGConfig::fc_radio},
    {"fs", &MGConfig::fs_radio},
};

std::string device_report(const MGDev& dev) {
    MGInfo info;
    print_info_dev(info, dev);
    return info.GetString();
}

} // namespace

TEST(ProfileReport, ListsTheModesThatAreOnInTheirOrder) {
    const std::string general = golden("general.txt");
    EXPECT_EQ(report_of(the_profile()), general);

    MGProfile all = the_profile();
    std::string all_modes = general;
    for (const auto& [name, radio] : modes) {
        SCOPED_TRACE(name);
        MGProfile profile = the_profile();
        profile.config.*radio = all.config.*radio = true;
        const std::string mode = golden(name + ".txt"), actions = golden("actions.txt");
        const bool has_actions = name == "timer" || name == "file" || name == "recv" || name == "modify";
        EXPECT_EQ(report_of(profile), general + mode + (has_actions ? actions : ""));
        all_modes += mode + (name == "modify" ? actions : "");
    }
    EXPECT_EQ(report_of(all), all_modes);
    for (const char* password : {"init_fc.пароль", "console.пароль", "allow.пароль"})
        EXPECT_EQ(all_modes.find(password), std::string::npos) << password;
    all.config.fc_hash.clear();
    EXPECT_NE(report_of(all).find("init_fc.login\n\t\tНаличие пароля: Нет\n"), std::string::npos);
}

TEST(DeviceReport, TellsOnlyWhatIsInForce) {
    const MGProfile profile = the_profile();
    EXPECT_EQ(device_report(profile.config.gw_client), golden("device_local.txt"));
    MGDev router = profile.config.gw_server;
    router.adrs.push_back({"", "", "", "пустой"});
    router.virt[1].ip.clear();
    EXPECT_EQ(device_report(router), golden("device_router.txt"));

    router.ip_icmp = router.ip_tcp = router.ip_udp = true; // the others are chosen
    std::string text = "old";
    create_ip_prot_str(router, text);
    EXPECT_EQ(text, " icmp igmp tcp udp esp ah pmi sctp");
    router = MGDev();
    router.ip_icmp = router.ip_tcp = router.ip_udp = false; // so are none
    create_ip_prot_str(router, text);
    EXPECT_EQ(text, "");
}
