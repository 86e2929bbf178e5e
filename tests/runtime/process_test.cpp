#include "runtime/mg_file.h"
#include "support/error_of.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

TEST(Guard, IsHeldByOneAndFreeOnceItIsKilledThoughItsProgramLivesOn) {
    const TempDir dir;
    const std::string name = "vorma-test-" + std::to_string(getpid()); // guards are a matter of the whole machine
    const std::string fifo = dir.path("fifo");
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
    EXPECT_EQ(error_of([&] { MGFile::Reloading(name); }).err_code, EADDRINUSE);
    kill(holder, SIGKILL);
    waitpid(holder, nullptr, 0);
    EXPECT_FALSE(MGFile::IsRunProgram(name));
    MGFile::Reloading(name);
    if (program > 0) kill(program, SIGKILL);
}

TEST(Files, CarrySignalsAndTheProcessId) {
    const TempDir dir;
    MGFile file;
    std::string text = "old";
    file.SetSignalFile(dir.path("in").c_str(), dir.path("out").c_str());
    EXPECT_FALSE(file.ReadSignal(text) || file.WriteSignal(""));
    dir.write("in", " stop стоп\r\n");
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
}

TEST(Programs, GiveTheirExitCode) {
    signal(SIGCHLD, SIG_IGN); // as a program that wasn't waited for leaves it
    EXPECT_EQ(MGFile::RunExtenProgAndWaitExitCode("exit 254", false), 254);
    for (const char* command : {"exit 255", "kill -9 $$", " \t\n"})
        EXPECT_EQ(error_of([&] { MGFile::RunExtenProgAndWaitExitCode(command, true); }).opt_param, "") << "hidden";
}

TEST(Programs, StartWithoutWaitingAndLeaveNoZombie) {
    const TempDir dir;
    const std::string fifo = dir.path("fifo");
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    MGFile::RunExtenProgNoWait(" sh ", " -c <|>printf '%s,' \"$@\" > " + fifo + "<|>sh<|> a <|> <|><|>b b");
    EXPECT_EQ(dir.read("fifo"), "a,b b,");
    EXPECT_EQ(waitpid(-1, nullptr, 0), -1); // waits for its end; a zombie would be given out
    signal(SIGCHLD, SIG_DFL);
    MGFile::RunExtenProgNoWait("/no/such/program", "");
    EXPECT_EQ(waitpid(-1, nullptr, 0), -1);
}

} // namespace
