// What the drop-down lists offer after a start.
#include "editor/histories.h"

#include "app/mg_context.h"
#include "config/profile_file.h"

#include <algorithm>
#include <gmock/gmock.h>

TEST(Histories, GatherEachTextOnceInTheOrderOfTheProfiles) {
    MGContext context;
    context.config_dir = GOLDEN;
    context.profiles.resize(2);
    context.profiles[0].id = "profile";
    read_profile_file(&context, 0);
    MGConfig& second = context.profiles[1].config;
    second.recv_ip = "10.1.0.2"; // stands in the first as well
    second.fs_ip = " ";
    second.fc_domen = "FC.domen";
    second.actions.resize(1);
    second.actions[0].exist.file = "Exist0.file";
    second.actions[0].exist.content = " ";
    init_globsl_combo_box(&context);

    ASSERT_EQ(init_recv_ip.front(), "0.0.0.0"); // and then the machine's own
    const std::pair<History, const char*> table[] = {
        {{std::ranges::find(init_recv_ip, "10.1.0.1"), init_recv_ip.end()},
         "10.1.0.1|10.1.0.2|10.1.0.4|10.1.0.8|10.1.0.11|address.gw_client_adrs0.ip|address.gw_client_adrs1.ip|"
         "address.gw_server_adrs0.ip| |"},
        {init_send_ip, "10.1.0.3|10.1.0.5|10.1.0.7|10.1.0.10|10.2.0.1|send1.ip|user.admit0.ip|user.admit1.ip|"},
        {init_send_domen, "client.send_domen|server.send_domen|gw_client.send_domen|fc.domen|send0.domen|send1.domen|"
                          "user.admit0.domen|user.admit1.domen|FC.domen|"},
        {init_active_file, "send0.file|copy0.file|exist0.file|send1.file|copy1.file|exist1.file|Exist0.file|"},
        {init_sub_net, "address.gw_client_adrs0.net|address.gw_client_adrs1.net|address.gw_server_adrs0.net|"},
        {init_virtual_ip, "address.gw_client_virtual0.ip|address.gw_server_virtual0.ip|"
                          "address.gw_server_virtual1.ip|"},
        {init_tun_device, "gw_client.device|gw_server.device|"},
        {init_virtual_adr, "10.1.1.1/24|10.1.2.1/24|"},
        {init_console_prog, "console0.prog|console1.prog|"},
        {init_exist_content, "exist0.content|exist1.content| |"},
    };
    for (const auto& [history, rows] : table) {
        std::string joined;
        for (const std::string& text : history) joined += text + "|";
        EXPECT_EQ(joined, rows);
    }
}
