// The editor of a profile: what its drop-down lists offer, what "Сохранить" checks and commits, and what it makes on
// disk.
#include "app/mg_context.h"
#include "config/profile_file.h"
#include "editor/action_dialogs.h"
#include "editor/histories.h"
#include "editor_fixture.h"
#include "support/patterns.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <ctime>
#include <map>

namespace {

using testing::HasSubstr;
using testing::IsEmpty;

using ProfileEditor = EditorTest;
using Histories = EditorTest;
constexpr const char *ok = "button_config_ok", *cancel = "button_config_cancel";

std::string front_page(UiWindow window) {
    GtkNotebook* notebook = GTK_NOTEBOOK(window.find("notebook_config"));
    GtkWidget* page = gtk_notebook_get_nth_page(notebook, gtk_notebook_get_current_page(notebook));
    return gtk_notebook_get_tab_label_text(notebook, page);
}

std::string bold_pages(UiWindow window) {
    GtkNotebook* notebook = GTK_NOTEBOOK(window.find("notebook_config"));
    std::string bold;
    for (int i = 0; i < gtk_notebook_get_n_pages(notebook); ++i) {
        GtkLabel* tab = GTK_LABEL(gtk_notebook_get_tab_label(notebook, gtk_notebook_get_nth_page(notebook, i)));
        g_autofree char* look = pango_attr_list_to_string(gtk_label_get_attributes(tab));
        if (g_str_has_suffix(look, "weight bold")) bold += gtk_label_get_text(tab);
    }
    return bold;
}

bool is_in_view(UiWindow window, const std::string& id) {
    GtkWidget* widget = window.find(id);
    GtkWidget* viewport = gtk_widget_get_ancestor(widget, GTK_TYPE_VIEWPORT);
    int top = -1;
    gtk_widget_translate_coordinates(widget, viewport, 0, 0, nullptr, &top);
    return top >= 0 && top + gtk_widget_get_allocated_height(widget) <= gtk_widget_get_allocated_height(viewport);
}

TEST_F(ProfileEditor, ProposesCatalogsOfItsOwnWhichExistFromThenOn) {
    show({"own"});
    config().log_catalog = "/kept";
    const std::string base = context.base_dir;
    configure([&](UiWindow window) {
        EXPECT_EQ(window.entry("entry_catalog_log"), "/kept");
        EXPECT_EQ(window.entry("entry_catalog_archive_in"), base + "/archive/in/own");
        EXPECT_EQ(window.entry("entry_catalog_archive_out"), base + "/archive/out/own");
        EXPECT_EQ(window.entry("entry_catalog_error_in"), base + "/error/in/own");
        window.click(cancel);
    });
    for (const char* made : {"/archive/in/own", "/archive/out/own", "/signal/own", "/result/own", "/tmp/own"})
        EXPECT_TRUE(std::filesystem::is_directory(base + made)) << made;
    EXPECT_FALSE(std::filesystem::exists(base + "/log/own"));
    EXPECT_EQ(LogFileGlobal.m_result_dir, base + "/result/own/");
    EXPECT_EQ(config().catalog_archive_in, "") << "a proposal that was not confirmed";
}

TEST_F(ProfileEditor, CancelDropsAllAndTheFirstSaveFillsEmptyChoices) {
    show({"own"});
    configure(enter("entry_error_file=другой;button_config_cancel"));
    EXPECT_THAT(config_files(), IsEmpty());
    configure(enter("button_config_ok"));
    EXPECT_EQ(config().mode_same_file, "ADD_NUM");
    EXPECT_EQ(config().ticket_type, "XML");
    EXPECT_EQ(config().sub_dir, "%%YYYY%%/%%MM%%/%%DD%%/%%LOGIN%%/%%QUEUE%%/%%TIME%%/");
    EXPECT_EQ(config().error_file, "");
}

TEST_F(ProfileEditor, RefusesThirteenAddressesOneAfterTheOther) {
    const std::vector<Check> rows = checks_of("addresses"); // all are entered, then mended one after the other
    const std::string field = "entry_(.*?)_((recv_|send_)?ip|(local|virtual)_adr)", place = "[^(]*\\(([^)]*)\\).*";
    show({"own"});
    configure([&](UiWindow window) {
        gtk_window_resize(GTK_WINDOW(window.widget()), 700, 300);
        for (const Check& row : rows) window.enter(row.input);
        for (const Check& row : rows) {
            const std::string mode = regex_replaced(row.focus, field, "radio_init_$1");
            const std::string tab = regex_replaced(row.text, place, "$1");
            UiScript script;
            script.remark(row.text);
            window.click(ok);
            EXPECT_EQ(front_page(window), tab);
            EXPECT_EQ(window.focus(), window.sensitive(row.focus) ? row.focus : mode); // which opens it
            EXPECT_TRUE(is_in_view(window, row.focus)) << row.focus;
            window.set_toggle(mode, true);
            EXPECT_EQ(bold_pages(window), tab);
            window.set_entry(row.focus, row.text.ends_with("/nn") ? "10.0.0.1/0" : "10.0.0.1");
        }
        window.enter("entry_recv_ip=   ;entry_server_recv_ip=;button_config_ok"); // none is needed
    });
    EXPECT_EQ(on_disk().at(0).config.recv_ip, "   ");
}

// Values that no input shows as they are.
TEST_F(ProfileEditor, StoresWhatNobodyTouchedByteForByteAndTheRestAsItIsShown) {
    const std::string beyond(70000, 'x'), beginning(65534, 'x');
    const std::pair<std::string, std::string> typed[] = {{beginning, beginning}, // exactly what is shown already
                                                         {"/path\n", "/path"},
                                                         {"a\x01\x7f\t\u0085\u2028\uFFFE\uFFFFб😀", "aб😀"},
                                                         {"\r\n", ""}};
    const std::pair<std::string MGConfig::*, const char*> inputs[] = {{&MGConfig::error_file, "entry_error_file"},
                                                                      {&MGConfig::fc_domen, "entry_fc_domen"},
                                                                      {&MGConfig::fc_hash, "entry_fc_password"}};
    show({"own"});
    configure(enter("button_config_ok")); // fills what is empty
    for (const auto& [text, stored] : typed) {
        for (const auto& [field, id] : inputs) config().*field = beyond;
        config().log_catalog = beyond;
        config().psp = "a\nb\t";
        config().ticket_type = "OTHER";
        config().timeout_inactivity = config().send_timeout = 90000; // above the limit
        MGConfig expected = config();
        for (const auto& [field, id] : inputs) expected.*field = stored;
        expected.send_timeout = 86400;
        configure([&, text = text](UiWindow window) {
            for (const auto& [field, id] : inputs) {
                GtkEditable* entry = GTK_EDITABLE(window.find(id));
                int at = 0;
                gtk_editable_delete_text(entry, 0, -1);
                gtk_editable_insert_text(entry, text.c_str(), -1, &at);
            }
            for (const double value : {0, 86400}) window.set_spin("spin_send_timeout", value);
            ConfigDialog->SetEntry("entry_catalog_log", ConfigDialog->GetEntry("entry_catalog_log"));
            window.click(ok);
        });
        EXPECT_TRUE(config() == expected) << text.substr(0, 9);
        EXPECT_TRUE(on_disk().at(0).config == expected) << text.substr(0, 9);
    }
}

// A catalog goes into its entry as a path, a file by its bare name, and no other entry changes.
TEST_F(ProfileEditor, ChoosesForTheEntryOfTheIconWhatCanBeStored) {
    const std::string catalog = "Окно выбора каталога", file = "Окно выбора имени файла";
    const std::string odd = home.path("\xD0"), control = home.path("a\x02");
    std::filesystem::create_directory(odd);
    for (const char* name : {"a\x02", "file.txt"}) home.write(name, "");
    MGAction action;
    OpenDialog queue{QueueDialog, "dialog_queue", ""};
    const struct {
        const char* dialog;
        std::function<void()> open;
        std::vector<std::string> icons;
    } windows[] = {
        {"dialog_config",
         [&] { configure(); },
         {"catalog_log", "error_catalog", "error_file", "catalog_archive_in", "catalog_archive_out", "catalog_error_in",
          "init_catalog", "mask_file", "recv_catalog", "modify_catalog", "modify_file"}},
        {"dialog_send", [&] { set_action_send(action.send); }, {"send_catalog", "send_file"}},
        {"dialog_copy", [&] { set_action_copy(action.copy); }, {"copy_catalog", "copy_file", "copy_catalog_to"}},
        {"dialog_exist", [&] { set_action_exist(action.exist); }, {"exist_catalog", "exist_file"}},
        {"dialog_queue", [&] { queue->Show(), queue->Run(); }, {"in_dir", "out_dir", "ticket_dir"}},
    };
    const auto expect_choice = [&](UiWindow window, const std::string& icon) {
        SCOPED_TRACE(icon);
        const bool is_file = icon.find("file") != icon.npos;
        const Rows before = window.screen();
        UiScript script;
        is_file ? script.choose(file, home.path("file.txt")) : script.choose(catalog, home.path());
        window.press_icon("entry_" + icon);
        EXPECT_EQ(window.entry("entry_" + icon), is_file ? "file.txt" : home.path());
        const Rows after = window.screen();
        const auto same = std::ranges::mismatch(before, after);
        EXPECT_TRUE(std::equal(same.in1 + 1, before.end(), same.in2 + 1)) << "another input has changed as well";
    };
    show({"own"});
    for (const auto& row : windows) {
        UiScript script;
        script.when(row.dialog, [&](UiWindow window) {
            for (const std::string& icon : row.icons) expect_choice(window, icon);
            window.close();
        });
        row.open();
    }
    configure([&](UiWindow window) {
        UiScript script;
        script.choose(catalog, odd).refusal(HasSubstr("Имя каталога не в кодировке UTF-8"));
        window.press_icon("entry_init_catalog");
        script.choose(file, control).refusal(HasSubstr("содержит недопустимый символ U+0002"));
        window.press_icon("entry_mask_file");
        script.cancel_chooser(catalog);
        window.press_icon("entry_recv_catalog");
        for (const char* entry : {"entry_init_catalog", "entry_mask_file", "entry_recv_catalog"})
            EXPECT_EQ(window.entry(entry), "");
        window.click(cancel);
    });
}

TEST_F(ProfileEditor, AChosenModeComesIntoView) {
    show({"own"});
    configure([](UiWindow window) {
        gtk_notebook_set_current_page(GTK_NOTEBOOK(window.find("notebook_config")), 4);
        auto* const page = gtk_widget_get_ancestor(window.find("radio_init_server"), GTK_TYPE_SCROLLED_WINDOW);
        GtkAdjustment* const place = gtk_scrolled_window_get_vadjustment(GTK_SCROLLED_WINDOW(page));
        while (gtk_adjustment_get_upper(place) <= gtk_adjustment_get_page_size(place)) gtk_main_iteration();
        for (const auto& [radio, edge] :
             {std::pair("radio_init_server", "spin_server_send_port"), {"radio_init_client", "radio_init_client"}}) {
            window.set_toggle(radio, true);
            EXPECT_TRUE(is_in_view(window, edge)) << edge;
        }
        window.click(cancel);
    });
}

GtkWidget* list_on_top() {
    GtkWidget* grabbing = gtk_grab_get_current();
    return GTK_IS_WINDOW(grabbing) && gtk_window_get_window_type(GTK_WINDOW(grabbing)) == GTK_WINDOW_POPUP ? grabbing
                                                                                                           : nullptr;
}

TEST_F(Histories, OfferAnyNumberOfRowsOnTheScreenAndInProportion) {
    show({"own"});
    config().recv_radio = true;
    std::map<int, double> cost, height;
    for (const int rows : {3, 3000, 9000}) {
        init_recv_ip = {std::string(300, '1')};
        for (int row = 1; row < rows; ++row) init_recv_ip.push_back("10.0." + std::to_string(row) + "\t");
        const std::clock_t begin = std::clock();
        configure([&](UiWindow window) {
            EXPECT_EQ(window.combo_rows("combo_recv_ip"), init_recv_ip);
            GtkComboBox* combo = GTK_COMBO_BOX(window.find("combo_recv_ip"));
            ConfigDialog->SetFocusToProblemWidget("entry_recv_ip");
            gtk_combo_box_popup(combo);
            settle();
            GtkWidget* list = list_on_top();
            height[rows] = gtk_widget_get_allocated_height(list);
            EXPECT_LE(gtk_widget_get_allocated_width(list), gtk_widget_get_allocated_width(GTK_WIDGET(combo)));
            gtk_combo_box_popdown(combo);
            cost[rows] = static_cast<double>(std::clock() - begin);
            window.click(cancel);
        });
    }
    EXPECT_LT(height[3], height[9000] / 3);
    EXPECT_LE(height[9000], gdk_window_get_height(gdk_get_default_root_window()));
    EXPECT_LE(cost[9000], 5 * cost[3000]);
}

TEST_F(Histories, GatherEachTextOnceInTheOrderOfTheProfiles) {
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
         "10.1.0.1|10.1.0.2|10.1.0.4|10.1.0.8|10.1.0.11|address.gw_client_adrs0.ip|"
         "address.gw_server_adrs0.ip| |"},
        {init_send_domen, "client.send_domen|server.send_domen|gw_client.send_domen|fc.domen|send0.domen|"
                          "user.admit0.domen|user.admit1.domen|FC.domen|"},
        {init_active_file, "send0.file|copy0.file|exist0.file|Exist0.file|"},
        {init_sub_net, "address.gw_client_adrs0.net|address.gw_server_adrs0.net|"},
        {init_virtual_adr, "10.1.1.1/24|10.1.2.1/24|"},
        {init_exist_content, "exist0.content| |"},
    };
    for (const auto& [history, rows] : table) {
        std::string joined;
        for (const std::string& text : history) joined += text + "|";
        EXPECT_EQ(joined, rows);
    }
}

// Until a mode is clicked the stored flags alone decide in the frames behind that of the stored mode.
TEST_F(ProfileEditor, OpensByTheStoredFlagsAndStoresTheOneActiveMode) {
    const std::pair<std::string, bool MGConfig::*> modes[] = {{"timer", &MGConfig::timer_radio},
                                                              {"file", &MGConfig::file_radio},
                                                              {"recv", &MGConfig::recv_radio},
                                                              {"modify", &MGConfig::modify_radio},
                                                              {"client", &MGConfig::client_radio},
                                                              {"server", &MGConfig::server_radio},
                                                              {"gw_client", &MGConfig::gw_client_radio},
                                                              {"gw_server", &MGConfig::gw_server_radio},
                                                              {"fc", &MGConfig::fc_radio},
                                                              {"fs", &MGConfig::fs_radio}};
    const struct {
        std::set<std::string> stored;
        bool recv_tls, need_cert, use_list;
        const char* open; // of the dependants
        std::string active;
    } table[] = {{{"timer"}, true, false, true, "1000", "timer"},
                 {{"file"}, true, true, false, "1100", "file"},
                 {{"recv"}, false, true, true, "0111", "recv"},
                 {{"server"}, true, true, true, "0111", "server"},
                 {{"fs"}, true, true, true, "0000", "fs"},
                 {{"file", "gw_server"}, false, false, false, "0000", "gw_server"},
                 {{}, true, true, true, "1111", "timer"}};
    const char* const dependants[] = {"check_need_cert", "check_use_admission_list", "button_admission_list",
                                      "check_admit_everyone"};
    show({"own"});
    for (const auto& row : table) {
        for (const auto& [name, flag] : modes) config().*flag = row.stored.contains(name);
        config().recv_tls = row.recv_tls;
        config().server_need_cert = row.need_cert;
        config().server_use_list = row.use_list;
        configure([&](UiWindow window) {
            std::string open;
            for (const char* id : dependants) open += window.sensitive(id) ? '1' : '0';
            EXPECT_EQ(open, row.open) << row.active;
            EXPECT_TRUE(window.toggle("radio_init_" + row.active));
            EXPECT_EQ(window.sensitive("spin_time_hour"), row.stored.contains("timer"));
            for (int turn = 0; turn < 6 && front_page(window) != bold_pages(window); ++turn) {
                gtk_notebook_next_page(GTK_NOTEBOOK(window.find("notebook_config")));
                settle();
            }
            EXPECT_TRUE(is_in_view(window, "radio_init_" + row.active)) << row.active;
            window.click(ok);
        });
        for (const auto& [name, flag] : modes)
            EXPECT_EQ(on_disk().at(0).config.*flag, name == row.active) << name << " of " << row.active;
    }
}

} // namespace
