// The pages of the start modes: which frames and dependants are open, at opening and as the user chooses.
#include "editor_fixture.h"

#include <array>

namespace {

enum Mode : size_t { timer, file, recv, modify, client, server, gw_client, gw_server, fc, fs };

const struct {
    const char* radio;
    bool MGConfig::*flag;
    PageTable& page;
} modes[] = {
    {"radio_init_timer", &MGConfig::timer_radio, init_timer_id},
    {"radio_init_file", &MGConfig::file_radio, init_file_id},
    {"radio_init_recv", &MGConfig::recv_radio, init_recv_id},
    {"radio_init_modify", &MGConfig::modify_radio, init_modify_id},
    {"radio_init_client", &MGConfig::client_radio, init_client_id},
    {"radio_init_server", &MGConfig::server_radio, init_server_id},
    {"radio_init_gw_client", &MGConfig::gw_client_radio, init_gw_client_id},
    {"radio_init_gw_server", &MGConfig::gw_server_radio, init_gw_server_id},
    {"radio_init_fc", &MGConfig::fc_radio, init_fc_id},
    {"radio_init_fs", &MGConfig::fs_radio, init_fs_id},
};
using Stored = std::array<bool, 3>; // recv_tls, server_need_cert, server_use_list

class StartModes : public EditorTest {
protected:
    // Opens the editor on a profile with these modes and dependants, and confirms it.
    void edit(const std::set<size_t>& flags, const Stored& stored, const std::function<void(UiWindow)>& act) {
        if (context.profiles.empty()) show({"own"});
        for (size_t mode = 0; mode < std::size(modes); ++mode) config().*modes[mode].flag = flags.count(mode);
        config().recv_tls = stored[0];
        config().server_need_cert = stored[1];
        config().server_use_list = stored[2];
        configure([&](UiWindow window) {
            act(window);
            window.click("button_config_ok");
        });
    }
};

// need_cert of the network frame; use_admission_list, its button and everyone of the server's frame.
std::string dependants(UiWindow window) {
    std::string open;
    for (const char* id :
         {"check_need_cert", "check_use_admission_list", "button_admission_list", "check_admit_everyone"})
        open += window.sensitive(id) ? '1' : '0';
    return open;
}

TEST_F(StartModes, ChoosingAModeOpensItsFrameAlone) {
    edit({fc}, {true, true, true}, [&](UiWindow window) {
        for (const auto& chosen : modes) {
            window.set_toggle(chosen.radio, true);
            for (const auto& mode : modes)
                for (const char* id : mode.page)
                    EXPECT_EQ(window.sensitive(id), &mode == &chosen) << id << " in " << chosen.radio;
        }
    });
}

TEST_F(StartModes, OpensByTheStoredFlagsAndStoresTheOneActiveMode) {
    const struct {
        std::set<size_t> flags;
        Stored stored;
        const char* open;
        size_t active;
    } table[] = {
        // Until a mode is clicked the stored flags alone decide in the frames behind that of the stored mode.
        {{timer}, {true, false, true}, "1000", timer},
        {{file}, {true, true, false}, "1100", file},
        {{recv}, {false, true, true}, "0111", recv},
        {{modify}, {true, true, false}, "0100", modify},
        {{client}, {true, true, true}, "0111", client},
        {{server}, {true, true, true}, "0111", server},
        {{gw_client}, {true, true, true}, "0000", gw_client},
        {{gw_server}, {true, true, true}, "0000", gw_server},
        {{fc}, {true, true, true}, "0000", fc},
        {{fs}, {true, true, true}, "0000", fs},
        {{file, gw_client}, {}, "0000", gw_client},
        {{}, {true, true, true}, "1111", timer},
    };
    for (const auto& row : table) {
        edit(row.flags, row.stored, [&](UiWindow window) {
            EXPECT_TRUE(window.toggle(modes[row.active].radio)) << row.active;
            EXPECT_EQ(window.sensitive(modes[row.active].page.front()), !row.flags.empty()) << row.active;
            EXPECT_EQ(dependants(window), row.open) << row.active;
        });
        for (size_t mode = 0; mode < std::size(modes); ++mode)
            EXPECT_EQ(on_disk().at(0).config.*modes[mode].flag, mode == row.active) << modes[mode].radio << row.active;
    }
}

TEST_F(StartModes, DependantsFollowTheirChecksAsTheUserClicks) {
    const struct {
        const char* id;
        bool on;
        const char* open;
    } clicks[] = {
        {"radio_init_recv", true, "0000"},
        {"check_tls_recv", true, "1000"},
        {"radio_init_timer", true, "0000"},
        {"radio_init_recv", true, "1000"},
        {"check_tls_recv", false, "0000"},
        {"radio_init_server", true, "0000"},
        {"check_server_need_cert", true, "0100"},
        {"check_use_admission_list", true, "0111"},
        {"radio_init_fs", true, "0000"},
        {"radio_init_server", true, "0111"},
        {"check_server_need_cert", false, "0000"},
        {"check_server_need_cert", true, "0111"},
        {"check_use_admission_list", false, "0100"},
    };
    edit({timer}, {}, [&](UiWindow window) {
        for (const auto& click : clicks) {
            window.set_toggle(click.id, click.on);
            EXPECT_EQ(dependants(window), click.open) << click.id << click.on;
        }
    });
}

} // namespace
