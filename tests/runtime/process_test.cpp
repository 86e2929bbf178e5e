#include "runtime/mg_file.h"
#include "support/error_of.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <dlfcn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

// Guards are a matter of the whole machine: names of this run only.
std::string guard(const std::string& name) {
    return "vorma-test-" + std::to_string(getpid()) + "-" + name;
}

TEST(Guard, HoldsANameForOneProcess) {
    const std::string name = guard("a");
    MGFile::ProtectionReloading(name, true);
    EXPECT_FALSE(MGFile::IsRunProgram(name));
    MGFile::Reloading(name);
    EXPECT_TRUE(MGFile::IsRunProgram(name));
    EXPECT_EQ(error_of([&] { MGFile::Reloading(name); }).err_code, EADDRINUSE);
    EXPECT_FALSE(is_run_program(name));
    protection_reloading("VQP" + name, false);
    EXPECT_TRUE(is_run_program(name));

    const std::string first = guard("long") + std::string(106, 'x');
    MGFile::Reloading(first);
    EXPECT_TRUE(MGFile::IsRunProgram(first.substr(0, 106)));
    EXPECT_FALSE(MGFile::IsRunProgram(first.substr(0, 105)));
}

TEST(Guard, IsFreeOnceItsHolderIsKilledThoughItsProgramLivesOn) {
    const TempDir dir;
    const std::string name = guard("killed"), fifo = dir.path("fifo");
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    const pid_t holder = fork();
    if (holder == 0) {
        MGFile::Reloading(name);
        MGFile::RunExtenProgNoWait("sh", "-c<|>echo $$ > " + fifo + "; exec sleep 600");
        for (;;) pause();
    }
    pid_t program = 0;
    std::ifstream(fifo) >> program;
    EXPECT_TRUE(MGFile::IsRunProgram(name));
    kill(holder, SIGKILL);
    waitpid(holder, nullptr, 0);
    EXPECT_FALSE(MGFile::IsRunProgram(name));
    if (program > 0) kill(program, SIGKILL);
}

TEST(Files, CarrySignalsAndTheProcessId) {
    const TempDir dir;
    MGFile file;
    std::string text = "old";
    EXPECT_FALSE(file.ReadSignal(text) || file.WriteSignal("x"));
    file.SetSignalFile(dir.path("in").c_str(), dir.path("out").c_str());
    EXPECT_FALSE(file.ReadSignal(text) || file.WriteSignal(""));
    dir.write("in", " stop стоп\r\n");
    EXPECT_TRUE(file.ReadSignal(text, true));
    EXPECT_EQ(dir.read("in"), " stop стоп\r\n");
    EXPECT_TRUE(file.ReadSignal(text));
    EXPECT_EQ(text, "STOP СТОП");
    EXPECT_TRUE(std::filesystem::is_empty(dir.path()));
    EXPECT_TRUE(file.WriteSignal("long text") && file.WriteSignal("short"));
    EXPECT_EQ(dir.read("out"), "short");

    file.SetPidFile(dir.path("pid").c_str());
    file.WritePid();
    EXPECT_EQ(dir.read("pid"), std::to_string(getpid()) + "\n");
    file.DeletePid();
    EXPECT_FALSE(std::filesystem::exists(dir.path("pid")));
    EXPECT_GE(MGFile::GetNumProc("/proc/sys/net/ipv4/ip_forward"), 0); // the kernel tells its size as 0
}

TEST(Programs, GiveTheirExitCode) {
    signal(SIGCHLD, SIG_IGN); // as a program that wasn't waited for leaves it
    for (int code : {0, 3, 254})
        EXPECT_EQ(MGFile::RunExtenProgAndWaitExitCode("exit " + std::to_string(code), false), code);
    const std::pair<const char*, const char*> refused[] = {
        {"exit 255", "(ret < 0) || (ret >= 255)"}, {"kill -9 $$", "!WIFEXITED(ret)"}, {" \t\n", "StringIsEmpty"}};
    for (const auto& [command, func_2] : refused)
        for (bool hide : {false, true}) {
            const MGErr err = error_of([&] { MGFile::RunExtenProgAndWaitExitCode(command, hide); });
            EXPECT_EQ(err.func_2, func_2) << command;
            EXPECT_EQ(err.opt_param, hide ? "" : command);
        }
}

TEST(Programs, StartWithoutWaitingAndLeaveNoZombie) {
    const TempDir dir;
    const std::string fifo = dir.path("fifo");
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    MGFile::RunExtenProgNoWait(" sh ", " -c <|>printf '%s,' \"$@\" > " + fifo + "<|>sh<|> a <|> <|><|>b b");
    EXPECT_EQ(dir.read("fifo"), "a,b b,");
    EXPECT_EQ(waitpid(-1, nullptr, 0), -1); // waits for its end; a zombie would be given out
    for (int i = 0; i < 20; ++i) {
        signal(SIGCHLD, SIG_DFL);
        MGFile::RunExtenProgNoWait("/no/such/program", "");
        EXPECT_EQ(waitpid(-1, nullptr, 0), -1) << i;
    }
}

TEST(Library, IsLoadedOneAtATime) {
    const char* first = "libBrokenLocale.so.1";
    MGFile file;
    EXPECT_EQ(error_of([&] { file.GetLibFunc("cos"); }).err_description, "(null)");
    file.LoadLib(first);
    file.LoadLib("libm.so.6");
    EXPECT_EQ(dlopen(first, RTLD_LAZY | RTLD_NOLOAD), nullptr);
    EXPECT_EQ(reinterpret_cast<double (*)(double)>(file.GetLibFunc("cos"))(0), 1);
    EXPECT_EQ(error_of([&] { file.LoadLib("/no/such/library.so"); }).func_1, "LoadLibrary");
    EXPECT_EQ(file.m_lib, nullptr);
}

} // namespace
