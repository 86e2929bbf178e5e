#include "runtime/copy_pieces.h"
#include "runtime/descriptor_io.h"
#include "runtime/mg_file.h"
#include "support/error_of.h"
#include "support/temp_dir.h"

#include <csignal>
#include <sstream>
#include <sys/wait.h>
#include <thread>

namespace {

// The files of a directory in the order of their names, "a.txt=content b.txt=content ".
std::string files_of(const TempDir& dir) {
    std::set<std::string> files;
    for (const auto& entry : std::filesystem::directory_iterator(dir.path())) files.insert(entry.path().filename());
    std::string text;
    for (const std::string& name : files) text += name + "=" + dir.read(name) + " ";
    return text;
}

void put_files(const TempDir& dir, const std::string& text) {
    std::istringstream words(text);
    for (std::string word; words >> word;) dir.write(word.substr(0, word.find('=')), word.substr(word.find('=') + 1));
}

TEST(LongCopy, CarriesEveryPieceOver) {
    const TempDir dir;
    const std::string text = "0123456789";
    for (size_t size = 0; size <= text.size(); ++size) {
        dir.write("from", text.substr(0, size));
        dir.write("to", "what was there before");
        vorma::copy_in_pieces(dir.path("from").c_str(), dir.path("to").c_str(), true, size, 4, vorma::Partial::stays);
        EXPECT_EQ(dir.read("to"), text.substr(0, size));
    }
    MGFile::MoveLongFile(dir.path("from"), dir.path("moved"));
    EXPECT_EQ(files_of(dir), "moved=0123456789 to=0123456789 ");
}

TEST(LongCopy, TellsWhereItWasCutShort) {
    const TempDir dir;
    dir.write("from", "0123456789");
    const std::string source = dir.path("from"), target = dir.path("to");
    const auto stopped_at = [&](const std::string& from, const std::string& to) {
        const MGErr err =
            error_of([&] { vorma::copy_in_pieces(from.c_str(), to.c_str(), false, 0, 4, vorma::Partial::stays); });
        return err.func_2 + " " + std::to_string(err.num_param);
    };
    EXPECT_EQ(stopped_at(source, "/dev/full"), "write 4");
    EXPECT_EQ(stopped_at("/sys/class/net/lo/address", target), "read 4"); // which ends before the size that it states
    EXPECT_EQ(dir.read("to"), "00:00:00:00:00:0");                        // the pieces that were there

    EXPECT_EQ(error_of([&] { MGFile::CopyLongFile(source.c_str(), target.c_str(), true, 6); }).num_param, 10);
    EXPECT_FALSE(std::filesystem::exists(target));
}

const uint8_t* bytes(const std::string& text) {
    return reinterpret_cast<const uint8_t*>(text.data());
}

// In a rotation a stem is no mask, and what has another stem belongs to another family.
TEST(SameName, IsDecidedByTheModeOrByRotation) {
    const struct {
        const char* mode;
        int copies; // above 0: rotation; below: with the signature
        std::string name;
        const char *before, *result, *after; // without a result it is refused
    } rows[] = {
        {"ADD_NUM", 0, "a.txt", "a.txt=0", "a~1.txt", "a.txt=0 a~1.txt=new "},
        {"ADD_NUM", -1, "a.txt", "a.txt=0", "a~1.txt", "a.txt=0 a~1.txt=new a~1.txt.p7d=sign "},
        {"REPLACE", 0, "a.txt", "a.txt=0", "a.txt", "a.txt=new "},
        {"ERROR", 0, "a.txt", "a.txt=0", "", "a.txt=0 "},
        {"ERROR", 2, "a.txt", "a.txt=0 a~1.txt=1 a~2.txt=2", "a.txt", "a.txt=new a~2.txt=2 a~3.txt=0 "},
        {"ERROR", 1, "a.txt", "a~9.txt=9 a~10.txt=10 a~x.txt=x", "a.txt", "a.txt=new a~10.txt=10 a~x.txt=x "},
        {"", 1, "a*.txt", "a*.txt=0 ab~1.txt=1 a~2.txt=2", "a*.txt", "a*.txt=new a*~1.txt=0 ab~1.txt=1 a~2.txt=2 "},
        {"", 1, "a.txt", "a.txt=0 a~1~7.txt=1 a~2b.txt=2 a~03.txt=3", "a.txt",
         "a.txt=new a~1~7.txt=1 a~2b.txt=2 a~4.txt=0 "},
        {"", 1, "a.txt", "a.txt=0 a~4294967295.txt=1", "a.txt", "a.txt=new a~4294967295.txt=1 "},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.mode) + " " + row.before);
        const TempDir from, to;
        put_files(from, row.name + "=new a.txt.p7d=sign");
        put_files(to, row.before);
        const bool with_signature = row.copies<0, rotate = row.copies> 0;
        std::string result;
        try {
            MGFile().CopySameFile(from.path(), to.path(), row.name, result, row.mode, with_signature, true, 3, false,
                                  rotate, row.copies);
        } catch (const MGErr& err) {
            EXPECT_EQ(err.func_2, "(mode_same == ERROR)");
        }
        EXPECT_EQ(result, row.result);
        EXPECT_EQ(files_of(to), row.after);
    }
}

TEST(SameName, GoesIntoTheDirectoryOfToday) {
    const auto today = [] {
        const time_t now = time(nullptr);
        char day[16];
        return std::string(day, strftime(day, sizeof day, "%Y/%m/%d/", localtime(&now)));
    };
    const TempDir dir;
    put_files(dir, "b.txt=new");
    const std::string file = dir.path("a.txt"), first_day = today();
    std::string copied;
    const std::string written = MGFile().WriteSameFile(file, bytes("x"), 1, "ERROR", true);
    MGFile().CopySameFile(dir.path(), dir.path(), "b.txt", copied, "ERROR", false, false, 0, true, false, 0);
    EXPECT_TRUE(written == dir.path(first_day + "a.txt") || written == dir.path(today() + "a.txt")) << written;
    EXPECT_TRUE(dir.read(first_day + "b.txt") == "new" || dir.read(today() + "b.txt") == "new");
}

// And what is no regular file is refused without waiting for who would write to it.
TEST(SameName, RenamesNothingForWhatCannotBeDelivered) {
    const TempDir from, to;
    put_files(from, "a.txt=new signless=new");
    put_files(to, "a.txt=0 fifo=0 none=0 signless=0 w~4294967295=0");
    for (unsigned number = 1; number != 0; number *= 2) // what a search for a free number looks at
        put_files(to, MGFile::GetNameNExt("w", number, "=0"));
    const std::string before = files_of(to);
    const std::string fifo = from.path("fifo"), copy = to.path("copy");
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    std::filesystem::create_symlink(to.path("a.txt"), from.path("link"));
    const std::string own = to.path("a.txt"), link = from.path("link");
    MGFile file;
    std::string result;
    std::vector<uint8_t> data;
    const auto deliver = [&](const TempDir& dir, const char* name, bool with_sign, size_t size) {
        file.CopySameFile(dir.path(), to.path(), name, result, "", with_sign, true, size, false, true, 9);
    };
    const std::function<void()> rows[] = {[&] { deliver(from, "none", false, 3); },
                                          [&] { deliver(from, "fifo", false, 0); },
                                          [&] { deliver(from, "signless", true, 3); },
                                          [&] { deliver(from, "a.txt", false, 4); }, // of another size
                                          [&] { deliver(to, "a.txt", false, 1); },
                                          [&] { MGFile::MaxSameFileName(to.path(), "w"); },
                                          [&] { file.CopyFile(fifo, copy); },
                                          [&] { file.MoveFile(fifo, copy); },
                                          [&] { file.MoveLongFile(fifo, copy); },
                                          [&] { file.ReadFileVectorEx(fifo, 4, data); },
                                          [&] { file.CopyLongFile(own, link); },
                                          [&] { file.MoveLongFile(own, own); },
                                          [&] { file.MoveFile(own, own); }};
    for (const auto& row : rows) EXPECT_NE(error_text(row), "") << &row - rows;
    EXPECT_EQ(files_of(to), before);
    std::filesystem::create_symlink("loop", from.path("loop"));
    MGErr err;
    EXPECT_FALSE(vorma::is_surely_file(err, from.path("loop")));
}

TEST(Files, GiveBackWhatWasWritten) {
    const TempDir dir;
    const std::string file = dir.path("file"), copy = dir.path("copy");
    const mode_t mask = umask(0);
    for (const std::string& content : {std::string(), std::string("a\0b\xff\n", 5), std::string(1 << 20, 'x')}) {
        MGFile::WriteFile(file.c_str(), bytes(content), content.size());
        dir.write("copy", "something that was there before");
        MGFile::CopyFile(file.c_str(), copy.c_str());
        MGFile::AddFile(file.c_str(), bytes("tail"), 4);
        EXPECT_EQ(dir.read("file"), content + "tail");

        std::string text = "old";
        MGFile::ReadFileString(copy, text);
        EXPECT_EQ(text, content);
        size_t size = 99;
        const std::unique_ptr<uint8_t, void (*)(void*)> buffer(MGFile::ReadFile(copy.c_str(), &size), MGFile::Free);
        EXPECT_EQ(size, content.size());
        EXPECT_EQ(buffer.get()[size], 0);
    }
    constexpr size_t too_much = size_t{1} << 31;
    dir.write("copy", "1");
    std::filesystem::resize_file(copy, too_much);
    EXPECT_EQ(MGFile::GetNumProc(copy), 1) << "without reading all of it";
    EXPECT_EQ(error_of([&] { MGFile::CopyFile(copy, file); }).err_code, EFBIG);
    EXPECT_EQ(error_of([&] { MGFile::WriteFile(file.c_str(), nullptr, too_much); }).err_code, EFBIG);
    EXPECT_EQ(error_of([&] { MGFile::AddFile(file.c_str(), nullptr, too_much); }).err_code, EFBIG);
    EXPECT_EQ(MGFile::SizeFile(file.c_str()), (1 << 20) + 4);
    MGFile::IfNotExistMakeDirRecursive(dir.path("dir//in/it/"));
    umask(mask);
    EXPECT_EQ(std::filesystem::status(file).permissions(), std::filesystem::perms(0664));
    EXPECT_EQ(std::filesystem::status(dir.path("dir/in/it")).permissions(), std::filesystem::perms(0775));
}

using Names = std::vector<std::string>;

// The waits of the code under test: counted, not waited for. What happens meanwhile is up to a test.
unsigned slept_microseconds;
std::function<void()> meanwhile;
std::vector<double> slept_seconds;
timespec interrupted_after{}; // what a signal leaves of the next wait

} // namespace

extern "C" int usleep(useconds_t microseconds) {
    slept_microseconds = microseconds;
    if (meanwhile) meanwhile();
    return 0;
}

extern "C" int nanosleep(const timespec* wanted, timespec* left) {
    slept_seconds.push_back(static_cast<double>(wanted->tv_sec) + static_cast<double>(wanted->tv_nsec) / 1e9);
    *left = std::exchange(interrupted_after, {});
    errno = EINTR;
    return left->tv_sec == 0 ? 0 : -1;
}

namespace {

TEST(Listing, TakesPlainFilesThatMatchAndAreReady) {
    const TempDir dir;
    MGFile file;
    Names list;
    std::string newest;
    std::filesystem::create_directory(dir.path("sub.txt"));
    put_files(dir, "a.txt=x B.TXT=x я.txt=x я.txt.p7d=x a~3.txt=x a~x.txt=x a~10.txt=x a~12.doc=x b~14.txt=x empty=");
    file.GetListFilesFromDir(dir.path(), "?.txt", false, list);
    EXPECT_EQ(list.size(), 3U);
    file.GetListFullFilesFromDir(dir.path(), "B*", true, list);
    EXPECT_EQ(list, Names({dir.path("B.TXT")}));
    EXPECT_EQ(file.GetMaxNameNExtFromDir(dir.path(), "a", ".txt", newest), 10U);
    EXPECT_EQ(file.GetMaxNameNExtFromDir(dir.path(), "none", ".txt", newest), 0U);
    list = {"я.txt", "empty", "gone"};
    MGFile::DelNotRenamedFiles(dir.path(), list);
    EXPECT_EQ(list, Names({"я.txt", "empty"}));
    MGFile::DelNullSizeFilesFromList(dir.path(), list);
    list.push_back("empty");
    MGFile::DelWithoutDetachedSign(list, ".p7d", dir.path());
    EXPECT_EQ(list, Names({"я.txt"}));
    file.DelAllFilesFromDir(dir.path());
    EXPECT_TRUE(std::filesystem::is_directory(dir.path("sub.txt")) && !std::filesystem::exists(dir.path("a.txt")));
}

TEST(Waiting, PicksFilesAtRest) {
    const TempDir dir;
    for (const char* name : {"rests", "grows", "goes"}) dir.write(name, "x");
    meanwhile = [&] {
        dir.write("grows", "xx");
        dir.write("came", "x");
        std::filesystem::remove(dir.path("goes"));
    };
    Names list;
    MGFile().GetListFilesFromDirTimeout(dir.path(), "*", true, list, 0, 5000);
    EXPECT_EQ(list, Names({"rests"}));
    EXPECT_EQ(slept_microseconds, 1000000U);
}

TEST(Waiting, SleepsItsTimeThroughSignals) {
    meanwhile = nullptr;
    interrupted_after = {1, 600000000};
    MGFile::SleepTimeout(3, 2);
    EXPECT_EQ(slept_seconds, (std::vector<double>{3, 1.6}));
    EXPECT_EQ(slept_microseconds, 2000U);
}

TEST(Guard, IsHeldByOneAndFreeOnceItIsKilledThoughItsProgramLivesOn) {
    const TempDir dir;
    const std::string name = "vorma-test-" + std::to_string(getpid()); // guards are a matter of the whole machine
    for (const char* fifo : {"program", "started"}) ASSERT_EQ(mkfifo(dir.path(fifo).c_str(), 0600), 0);
    const pid_t holder = fork();
    if (holder == 0) {
        MGFile::Reloading(name);
        MGFile::RunExtenProgNoWait("sh", "-c<|>echo $$ > " + dir.path("program") + "; exec sleep 600");
        dir.write("started", "and the process that started it is gone");
        for (;;) pause();
    }
    const pid_t program = std::stoi(dir.read("program"));
    dir.read("started");
    EXPECT_TRUE(MGFile::IsRunProgram(name));
    EXPECT_EQ(error_of([&] { MGFile::Reloading(name); }).err_code, EADDRINUSE);
    kill(holder, SIGKILL);
    waitpid(holder, nullptr, 0);
    EXPECT_FALSE(MGFile::IsRunProgram(name));
    MGFile::Reloading(name);
    kill(program, SIGKILL);
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
    for (const char* fifo : {"told", "began", "go"}) ASSERT_EQ(mkfifo(dir.path(fifo).c_str(), 0600), 0);
    MGFile::RunExtenProgNoWait(" sh ", " -c <|>printf '%s,' \"$@\" > " + dir.path("told") + "<|>sh<|> a <|> <|><|>b b");
    EXPECT_EQ(dir.read("told"), "a,b b,");
    // While another thread waits for a program.
    int code = -1;
    std::thread waiting([&] {
        code = MGFile::RunExtenProgAndWaitExitCode(
            "echo > " + dir.path("began") + "; read x < " + dir.path("go") + "; exit 7", false);
    });
    dir.read("began");
    MGFile::RunExtenProgNoWait("sh", "-c<|>echo > " + dir.path("told"));
    dir.read("told");
    dir.write("go", "\n");
    waiting.join();
    EXPECT_EQ(code, 7);
    EXPECT_EQ(signal(SIGCHLD, SIG_DFL), SIG_IGN);
    MGFile::RunExtenProgNoWait("/no/such/program", "");
    signal(SIGCHLD, SIG_DFL);
    EXPECT_EQ(waitpid(-1, nullptr, 0), -1); // a zombie would be given out
}

} // namespace
