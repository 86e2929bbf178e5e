// Every window of the profile editor against the file: what stands behind each label and in each column, which list an
// input offers, which inputs are open, and what opens and closes them.
#include "editor/action_list.h"
#include "editor_fixture.h"
#include "support/patterns.h"

#include <algorithm>
#include <sstream>

namespace {

constexpr unsigned times = 6; // bits of a flag's number

// Gives each flag of the profile's own inputs this bit of its number, from 1, and tells their names in that order.
// Choices between modes stay, and so do the lists.
std::vector<std::string> number_flags(std::string& file, unsigned bit) {
    std::vector<std::string> names;
    std::string element;
    file = regex_replaced(
        file, R"re(\n    +<|\n  <(\w+)|\b(?!version|release|quantity|radio|is_|ip_all|ip_select)([\w.]+)="[01]")re",
        [&](const std::vector<std::string>& match) {
            std::string whole = match[0];
            if (match[2].empty()) {
                element = match[1];
            } else if (!element.empty()) {
                names.push_back(element + "." + match[2]);
                whole[whole.size() - 2] = names.size() >> bit & 1 ? '1' : '0';
            }
            return whole;
        });
    return names;
}

// Each list of what was given before holds its name alone.
void name_histories() {
    const std::pair<History&, const char*> histories[] = {
        {init_recv_ip, "recv_ip"},           {init_send_ip, "send_ip"},
        {init_recv_domen, "recv_domen"},     {init_send_domen, "send_domen"},
        {init_sub_net, "sub_net"},           {init_net_device, "net_device"},
        {init_tun_device, "tun_device"},     {init_local_adr, "local_adr"},
        {init_virtual_adr, "virtual_adr"},   {init_virtual_ip, "virtual_ip"},
        {init_action_name, "action_name"},   {init_console_prog, "console_prog"},
        {init_active_file, "active_file"},   {init_run_prog, "run_prog"},
        {init_run_param, "run_param"},       {init_exist_content, "exist_content"},
        {init_admit_filter, "admit_filter"},
    };
    for (const auto& [history, name] : histories) history = {name};
}

std::string text_of(const Rows& screen) {
    std::string text = "\n";
    for (const auto& row : screen)
        for (const std::string& cell : row) text += cell + (&cell == &row.back() ? "\n" : " | ");
    return text;
}

// The screen with the name of the flag in place of each cell that changes.
Rows named(const std::vector<Rows>& screens, const std::vector<std::string>& flags) {
    Rows result = screens[0];
    for (size_t row = 0; row < result.size(); ++row)
        for (size_t cell = 0; cell < result[row].size(); ++cell) {
            size_t number = 0;
            for (size_t time = 0; time < times; ++time) {
                const std::string& shown = screens[time].at(row).at(cell);
                number |= size_t{shown == "1" || shown == "open"} << time;
            }
            if (std::ranges::any_of(screens, [&](const Rows& one) { return one[row][cell] != result[row][cell]; }))
                result[row][cell] = flags.at(number - 1);
        }
    return result;
}

class Windows : public EditorTest {
protected:
    Windows() { show({"profile"}); }

    // The golden profile with the flags of this bit; the names of the flags.
    std::vector<std::string> load(unsigned bit) {
        std::string file = read_file(GOLDEN "/profile.xml");
        const std::vector<std::string> flags = number_flags(file, bit);
        home.write(".selunara/vormaqs/config/profile.xml", file);
        config() = {};
        read_profile_file(Context, 0);
        return flags;
    }

    // Adds what the window shows that this opens, and does more there.
    void look(const std::string& id, const std::function<void()>& open,
              const std::function<void(UiWindow)>& more = nullptr) {
        UiScript script;
        script.when(id, [&](UiWindow window) {
            seen += "\n== " + window.title() + text_of(window.screen());
            if (more) more(window);
            window.close();
        });
        open();
    }
    void look_at_lists(UiWindow editor) {
        const struct {
            std::string opener, list, view, record;
        } lists[] = {{"admission_list", "admit", "admit_view", "subject"},
                     {"gw_admission_list", "admit", "admit_view_2", "subject_2"},
                     {"fc_queue", "admit", "queue_view", "queue"},
                     {"fs_allow", "admit", "allow_view", "allow"},
                     {"gw_client_list_adrs", "adrs", "adrs_view", "address"},
                     {"gw_client_list_virtual", "adrs", "adrs_view", "address"},
                     {"gw_server_list_adrs", "adrs", "adrs_view", "address"},
                     {"gw_server_list_virtual", "adrs", "adrs_view", "address"}};
        for (const auto& row : lists) {
            const auto look_at_records = [&](UiWindow list) {
                const int records = static_cast<int>(list.table(row.view).size());
                for (int record = 0; record < records; ++record) {
                    list.select(row.view, {record});
                    look("dialog_" + row.record, [&] { list.click("button_" + row.list + "_rename"); });
                }
                if (row.opener != "fs_allow") return;
                for (const char* nested : {"button_admit_cert", "button_admit_queue"})
                    look("dialog_admit", [&] { list.click(nested); });
            };
            look(
                "dialog_" + row.list, [&] { editor.click("button_" + row.opener); }, look_at_records);
        }
    }
    void look_at_actions(UiWindow editor) {
        const auto look_at_parameters = [&](UiWindow action) {
            for (const auto& [type, id] : {std::pair("CONSOLE", "dialog_console"),
                                           {"SENDFILE", "dialog_send"},
                                           {"COPYFILE", "dialog_copy"},
                                           {"RUNPROG", "dialog_runprog"},
                                           {"EXIST", "dialog_exist"}}) {
                action.set_combo("combo_active_type", type);
                look(id, [&] { action.click("button_active_customize"); });
            }
        };
        look(
            "dialog_active", [&] { editor.activate_row("active_view", 0); }, look_at_parameters);
    }

    std::string seen;
};

// The values of golden/profile.xml tell where they stand in the file, but for flags: so the editor is shown several
// times, each time with another bit of each flag's number, and what changes between them is a flag.
TEST_F(Windows, ShowEveryFieldBehindItsLabelAndReadItBack) {
    std::vector<std::string> flags;
    std::vector<Rows> screens;
    for (unsigned bit = 0; bit < times; ++bit) {
        name_histories();
        flags = load(bit);
        const MGConfig stored = config();
        configure([&](UiWindow window) {
            seen = window.title() + " " + window.label("config_profile_name") + " " + window.label("config_profile_id");
            screens.push_back(window.screen());
            // From here on the widgets alone know the plain values; lists stay in the working copy.
            MGConfig& working = *static_cast<MGConfig*>(ConfigDialog->user_data);
            MGConfig lists;
            lists.actions = working.actions;
            lists.admit = working.admit;
            lists.gw_admit = working.gw_admit;
            lists.fc_queue = working.fc_queue;
            lists.fs_allow = working.fs_allow;
            for (MGDev MGConfig::*side : {&MGConfig::gw_client, &MGConfig::gw_server}) {
                (lists.*side).adrs = (working.*side).adrs;
                (lists.*side).virt = (working.*side).virt;
            }
            working = lists;
            window.click("button_config_ok");
        });
        EXPECT_EQ(config(), stored);
        EXPECT_EQ(on_disk(), context.profiles);
    }
    seen += text_of(named(screens, flags));

    OpenDialog dialog(ConfigDialog, "dialog_config", "");
    dialog->user_data = &config();
    show_actions(*dialog, config().actions);
    dialog->Show();
    look_at_lists(UiWindow(dialog->window));
    look_at_actions(UiWindow(dialog->window));
    EXPECT_EQ(seen, read_file(GOLDEN "/windows.txt"));
}

// Each of them is turned, and a mode chosen; then follows what that changes.
TEST_F(Windows, OpenAndCloseInputsAsTheUserClicks) {
    std::istringstream clicks(
        "check_debug_log check_ext_debug_log check_debug_log check_error_save check_error_save check_crypto_init "
        "check_crypto_init radio_init_recv check_tls_recv check_tls_recv radio_init_timer radio_init_recv "
        "check_tls_recv radio_init_file radio_init_modify radio_init_client radio_init_recv radio_init_server "
        "check_server_need_cert check_use_admission_list check_use_admission_list check_use_admission_list "
        "radio_init_gw_client radio_init_server check_server_need_cert radio_init_gw_server radio_init_server "
        "radio_init_fc radio_init_fs");
    load(times); // all flags are off
    configure([&](UiWindow window) {
        Rows before = window.screen();
        for (std::string id; clicks >> id;) {
            window.set_toggle(id, !window.toggle(id));
            const Rows after = window.screen();
            seen += id + "\n";
            for (size_t row = 0; row < after.size(); ++row)
                if (after[row] != before[row]) seen += "\t" + text_of({after[row]}).substr(1);
            before = after;
        }
        window.click("button_config_cancel");
    });
    EXPECT_EQ(seen, read_file(GOLDEN "/clicks.txt"));
}

} // namespace
