// Reports of the lists byte for byte, the dialog that tells where they lie, and the viewer that opens them.
#include "app/mg_context.h"
#include "config/profile_file.h"
#include "lists/lists_fixture.h"
#include "lists/reports.h"
#include "support/patterns.h"

#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

// The button of a list and the middle of its window's ids.
struct Report {
    const char *opener, *window;
};
const Report reports[] = {{"button_admission_list", "admit"},     {"button_gw_admission_list", "admit"},
                          {"button_fc_queue", "admit"},           {"button_fs_allow", "admit"},
                          {"button_gw_client_list_adrs", "adrs"}, {"button_gw_client_list_virtual", "adrs"},
                          {"button_gw_server_list_adrs", "adrs"}, {"button_gw_server_list_virtual", "adrs"}};

class ReportsTest : public ListsTest {
protected:
    ReportsTest() {
        std::filesystem::create_directory(dir.path("result"));
        LogFileGlobal.SetResultDir(dir.path("result").c_str());
        Context = &context;
        context.config_dir = GOLDEN;
        context.profiles.resize(1);
        context.profiles[0].id = "profile";
        read_profile_file(&context, 0);
        config = context.profiles[0].config;
    }
    ~ReportsTest() override { Context = nullptr; }

    // Opens the list and presses "Распечатать"; `answer` tells the script what that leads to.
    void print(const Report& report, const std::function<void()>& answer) {
        const std::string window_name = report.window;
        script.when("dialog_" + window_name, [=](UiWindow window) {
            window.click("button_" + window_name + "_print");
            window.click("button_" + window_name + "_cancel");
        });
        answer();
        open(report.opener);
        EXPECT_EQ(ResultDialog, nullptr);
    }

    MGContext context;
};

TEST_F(ReportsTest, WritesEachListAnewAndTellsWhereItLies) {
    std::string seen;
    for (const Report& report : reports)
        print(report, [&] {
            script.when("dialog_result", [&](UiWindow window) {
                const std::string file = window.entry("entry_result_file");
                EXPECT_EQ(window.entry("entry_result_dir"), dir.path("result/"));
                for (const std::string& text : {window.title(), window.label("label_result_name"),
                                                window.label("label_result_message"), file, dir.read("result/" + file)})
                    seen += text + "\n";
                window.click("button_result_ok");
            });
        });
    const char* const date = "(Дата и время создания): \\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d";
    EXPECT_EQ(regex_replaced(seen, date, "$1"), read_file(GOLDEN "/lists.txt"));
}

TEST_F(ReportsTest, TellsWhenTheFileCannotBeWritten) {
    std::filesystem::remove(dir.path("result"));
    print(reports[4], [&] { script.refusal(testing::HasSubstr("adrs_list.result")); });
    EXPECT_THAT(dir.read("editor.log"), testing::HasSubstr("adrs_list.result"));
}

// The viewer of this test survives a hangup and tells its arguments through a pipe.
TEST_F(ReportsTest, OpensAReportInTheViewerAndLeavesNoZombie) {
    std::signal(SIGHUP, SIG_DFL); // a test may be started with it ignored
    dir.write("viewer", "#!/bin/sh\nkill -HUP $$\necho $# $1 >" + dir.path("pipe"));
    std::filesystem::permissions(dir.path("viewer"), std::filesystem::perms::owner_all);
    ASSERT_EQ(mkfifo(dir.path("pipe").c_str(), 0600), 0);
    const int pipe = ::open(dir.path("pipe").c_str(),
                            O_RDWR | O_NONBLOCK | O_CLOEXEC); // also written to here, so that it never ends
    print(reports[0], [&] {
        script.when("dialog_result", [&](UiWindow window) {
            for (const char* name : {" \t", "/no/such/program"}) {
                context.editor_path = name;
                script.remark(*name == '/' ? "В файловой системе нет такой программы: " + context.editor_path
                                           : "Отсутствует имя запускаемой программы или оно не задано в конфигурации");
                window.click("button_result_view");
            }
            context.editor_path = dir.path("viewer");
            window.click("button_result_view");
            pollfd ready = {pipe, POLLIN, 0};
            char told[4096] = "";
            EXPECT_EQ(poll(&ready, 1, 20000), 1);
            EXPECT_GT(read(pipe, told, sizeof told - 1), 0);
            EXPECT_EQ(told, "1 " + dir.path("result/admit_list.result\n"));
            window.click("button_result_cancel"); // the dialog stayed
        });
    });
    close(pipe);
    std::signal(SIGCHLD, SIG_DFL);
    start_program(dir.path("result"), ""); // what can't be executed ends at once, and is not told
    EXPECT_EQ(waitpid(-1, nullptr, 0), -1);
    EXPECT_EQ(errno, ECHILD);
}

} // namespace
