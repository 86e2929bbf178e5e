#include "app/log.h"

#include "runtime/mg_info.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fcntl.h>
#include <functional>
#include <map>
#include <sstream>
#include <sys/stat.h>
#include <thread>

namespace {

std::function<void(const std::string&)> on_stat; // sees the name of each file that is examined, if set

} // namespace

extern "C" int stat(const char* name, struct stat* info) noexcept {
    if (on_stat) on_stat(name);
    return fstatat(AT_FDCWD, name, info, 0);
}

namespace {

using Lines = std::vector<std::string>;

MGInfo report(const std::string& text) {
    MGInfo info;
    info.AddRow(text.c_str(), "____EMPTY____");
    return info;
}

// The lines of a log without empty ones, each marker without the date that follows it.
Lines lines_of(const std::string& log) {
    Lines lines;
    std::istringstream stream(log);
    for (std::string line; std::getline(stream, line);) {
        if (line.starts_with("____")) line.resize(line.find("____", 4) + 4);
        if (!line.empty()) lines.push_back(line);
    }
    return lines;
}

TEST(Rotation, BeginsOnlyAboveTheLimit) {
    const struct {
        int max_size;
        size_t size;
        bool rotated;
    } rows[] = {{1, 1024, false}, {1, 1025, true}, {2, 2048, false}, {0, 5000, false}};
    for (const auto& row : rows) {
        const TempDir dir;
        const std::string old(row.size, 'x');
        dir.write("a.b.log", old);
        MGFile file;
        file.SetLogFile(dir.path("a.b.log").c_str());
        file.SetLogMaxSize(row.max_size);
        file.SetProgVersion("version 1\n");
        file.PrintInfoInLogFile(report("new"));
        EXPECT_EQ(dir.read("a.b~1.log"), row.rotated ? old : "") << row.max_size << " " << row.size;
        EXPECT_EQ(lines_of(dir.read("a.b.log")), row.rotated
                                                     ? Lines({"____INFO____", "version 1", "____INFO____", "new"})
                                                     : Lines({old, "____INFO____", "new"}));
    }
}

TEST(Rotation, FindsTheNextNumberInFewProbes) {
    EXPECT_EQ(MGFile::SameFileName("archive.tar.gz", 3) + MGFile::SameFileName(".conf", 1), "archive.tar~3.gz~1.conf");
    const TempDir dir;
    for (int i = 1; i <= 5; ++i) dir.write("a~" + std::to_string(i) + ".log", "");
    std::string probes;
    on_stat = [&](const std::string& name) { probes += name[name.rfind('~') + 1]; };
    EXPECT_EQ(MGFile::MaxSameFileName(dir.path(), "a.log"), "a~6.log");
    on_stat = nullptr;
    EXPECT_EQ(probes, "124865");
}

TEST(Rotation, KeepsAwayFromALogThatIsNewAgain) {
    const TempDir dir;
    dir.write("log.txt", std::string(1025, 'x'));
    MGFile file;
    file.SetLogMaxSize(1);
    on_stat = [&, looks = 0](const std::string&) mutable {
        if (++looks == 2) dir.write("log.txt", "fresh"); // as if another thread had rotated between the two looks
    };
    file.RenameLogFileIfMaxSize(file.m_log_mutex, dir.path("log.txt"));
    on_stat = nullptr;
    EXPECT_EQ(dir.read("log.txt"), "fresh");
    EXPECT_FALSE(std::filesystem::exists(dir.path("log~1.txt")));
}

TEST(Rotation, LosesAndTearsNoEntryOfEightThreads) {
    constexpr int threads = 8, entries = 150;
    const TempDir dir;
    MGFile file;
    file.SetLogFile(dir.path("log.txt").c_str());
    file.SetLogMaxSize(1);
    file.SetProgVersion("version\n");
    const auto text = [](int number) { return "entry " + std::to_string(number) + std::string(40, '.'); };
    std::vector<std::thread> writers;
    for (int t = 0; t < threads; ++t)
        writers.emplace_back([&, t] {
            for (int i = 0; i < entries; ++i) file.PrintInfoInLogFile(report(text(t * entries + i)));
        });
    for (std::thread& writer : writers) writer.join();

    std::map<std::string, int> count;
    int rotated = -1; // all files but the present log
    for (const auto& log : std::filesystem::directory_iterator(dir.path())) {
        const std::string name = log.path().filename();
        for (const std::string& line : lines_of(dir.read(name))) ++count[line];
        EXPECT_TRUE(name == "log.txt" || log.file_size() > 1024) << name;
        ++rotated;
    }
    EXPECT_GT(rotated, 50);
    EXPECT_EQ(count["version"], rotated);
    EXPECT_EQ(count["____INFO____"], threads * entries + rotated);
    for (int i = 0; i < threads * entries; ++i) EXPECT_EQ(count[text(i)], 1) << i;
    EXPECT_EQ(count.size(), 2U + threads * entries);
}

// Each log with its operation and its switch; a directory in the place of the rotated log makes the rotation fail.
TEST(Entries, GoToTheirLogAndReportAFailedRotation) {
    const struct {
        std::string log, report;
        std::string MGFile::*name;
        void (MGFile::*info)(const MGInfo&);
        void (MGFile::*debug)(const MGInfo&, bool);
    } rows[] = {
        {"main", "main", &MGFile::m_log_file, &MGFile::PrintInfoInLogFile, nullptr},
        {"in", "main", &MGFile::m_log_file_input, &MGFile::PrintInfoInLogFileInput, nullptr},
        {"out", "main", &MGFile::m_log_file_output, &MGFile::PrintInfoInLogFileOutput, nullptr},
        {"debug", "debug", &MGFile::m_debug_log_file, nullptr, &MGFile::PrintDebugLogFile},
        {"debug_in", "debug", &MGFile::m_debug_log_file_input, nullptr, &MGFile::PrintDebugLogFileInput},
        {"debug_out", "debug", &MGFile::m_debug_log_file_output, nullptr, &MGFile::PrintDebugLogFileOutput},
    };
    for (const auto& row : rows) {
        const TempDir dir;
        MGFile file;
        for (const auto& log : rows) file.*log.name = dir.path(log.log);
        file.SetLogMaxSize(1);
        dir.write(row.log, std::string(1025, 'x'));
        std::filesystem::create_directory(dir.path(row.log + "~1"));
        for (const bool on : {false, true}) {
            file.TurnOffLogFileInput(!on);
            file.TurnOffLogFileOutput(!on);
            file.SetDebugLog(true, on);
            if (row.debug) (file.*row.debug)(report("text"), true);
            if (row.info && (on || row.log != "main")) (file.*row.info)(report("text"));
        }
        const Lines own = lines_of(dir.read(row.log)), reported = lines_of(dir.read(row.report));
        EXPECT_EQ(Lines(own.end() - 2, own.end()), Lines({row.info ? "____INFO____" : "____DEBUG____", "text"}));
        EXPECT_EQ(std::count(own.begin(), own.end(), "text"), 1) << row.log;
        EXPECT_EQ(std::count(reported.begin(), reported.end(), "____ERROR____"), 1) << row.log;
    }
}

TEST(Repeats, AreWrittenThreeTimesWithinTheHour) {
    const TempDir dir;
    MGFile file;
    file.SetLogFile(dir.path("log").c_str());
    file.SetProtectRepeat(true);
    const auto written = [&](const char* argument, int32_t code) { // after that error: entries in the log
        MGErr err;
        err.mess_1 = "failed";
        err.str_param = argument;
        err.err_code = code; // makes no other error
        file.PrintErrInLogFile(err);
        EXPECT_EQ(err.crc_mess_1, 0x9E8BA377U);
        const Lines lines = lines_of(dir.read("log"));
        return std::count(lines.begin(), lines.end(), "____ERROR____");
    };
    for (int code = 1; code <= 5; ++code) EXPECT_EQ(written("a", code), std::min(code, 3));
    EXPECT_EQ(written("b", 0), 4);
    file.m_repeat_begin = time(nullptr) - 3601;
    EXPECT_EQ(written("a", 0), 5);
    EXPECT_EQ(file.m_repeat_errors.size(), 1U);
}

} // namespace
