// The editor as it stands before its main loop: a fresh home and the main window on it. Tests act through the widgets
// and judge the memory, the lists and the files.
#pragma once

#include "app/log.h"
#include "app/mg_context.h"
#include "config/master_file.h"
#include "config/profile_file.h"
#include "dialog/make_dialog.h"
#include "dialog/open_dialogs.h"
#include "editor/histories.h"
#include "editor/profile_list.h"
#include "support/temp_dir.h"
#include "support/ui_script.h"

#include <set>

class EditorTest : public testing::Test {
protected:
    EditorTest() {
        for (History* history :
             {&init_recv_ip, &init_recv_domen, &init_send_ip, &init_send_domen, &init_virtual_adr, &init_active_file})
            history->clear(); // of the test before
        setenv("HOME", home.path().c_str(), 1);
        Context = &context;
        init_vorma_catalogs(Context, "vormaqscfg.log");
        LogFileGlobal.SetLogFile(context.log_file.c_str());
        find_config_file(Context);
        ProfileDialog = make_dialog("window_profile");
        ProfileDialog->Show();
    }
    ~EditorTest() override {
        delete ProfileDialog;
        ProfileDialog = nullptr;
        Context = nullptr;
    }

    UiWindow main() const { return UiWindow(ProfileDialog->window); }
    MGConfig& config() { return context.profiles.at(0).config; }

    // Shows profiles of these ids, the first one default, as a start does that has read them.
    void show(const std::vector<std::string>& ids) {
        for (const std::string& id : ids) context.profiles.push_back({id == ids.front(), "Имя " + id, id, false, {}});
        context.quantity = static_cast<int>(ids.size());
        context.config_found = true;
        init_profile_dialog();
    }

    // Opens the editor on the first profile and answers it so, or as a script of the caller's does.
    void configure(const std::function<void(UiWindow)>& answer = nullptr) {
        UiScript script;
        if (answer) script.when("dialog_config", answer);
        main().select("profile_view", {0});
        main().click("button_profile_configure");
    }

    std::set<std::string> config_files() const {
        std::set<std::string> names;
        for (const auto& file : std::filesystem::directory_iterator(context.config_dir))
            names.insert(file.path().filename());
        return names;
    }

    // What the next start would read.
    std::vector<MGProfile> on_disk() const {
        MGContext start;
        start.config_dir = context.config_dir;
        if (find_config_file(&start)) read_config_file(&start);
        for (size_t i = 0; i < start.profiles.size(); ++i) read_profile_file(&start, static_cast<int>(i));
        return start.profiles;
    }

    TempDir home;
    MGContext context;
};
