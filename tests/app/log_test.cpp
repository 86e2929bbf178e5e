#include "app/log.h"
#include "app/mg_err.h"
#include "runtime/mg_info.h"
#include "support/patterns.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <clocale>
#include <cstdarg>
#include <cstring>
#include <map>
#include <sstream>
#include <thread>

namespace {

std::vector<std::string> syslog_lines; // what went to the system log, the priority in front

} // namespace

// In the place of the C library's own, also under the name that a checked build calls; hence without its header.
#define KEEP_SYSLOG_LINE                                                                                               \
    char line[512];                                                                                                    \
    va_list arguments;                                                                                                 \
    va_start(arguments, format);                                                                                       \
    std::vsnprintf(line, sizeof line, format, arguments);                                                              \
    va_end(arguments);                                                                                                 \
    syslog_lines.push_back(std::to_string(priority) + " " + line)
extern "C" void syslog(int priority, const char* format, ...) {
    KEEP_SYSLOG_LINE;
}
extern "C" void __syslog_chk(int priority, int, const char* format, ...) {
    KEEP_SYSLOG_LINE;
}

namespace {

using Lines = std::vector<std::string>;

MGInfo report(const std::string& text) {
    MGInfo info;
    info.AddRow(text.c_str(), "____EMPTY____");
    return info;
}

class Log : public testing::Test {
protected:
    Log() {
        syslog_lines.clear();
        err.mess_1 = "operation 100%s";
        err.mess_2 = "step";
        err.str_param = "file";
        log.SetLogFile(dir.path("log").c_str());
    }

    // The lines of a log without empty ones, each marker without the date that follows it.
    Lines lines_of(const std::string& name) const {
        Lines lines;
        std::istringstream stream(dir.read(name));
        for (std::string line; std::getline(stream, line);) {
            if (line.starts_with("____")) line.resize(line.find("____", 4) + 4);
            if (!line.empty()) lines.push_back(line);
        }
        return lines;
    }
    auto count(const std::string& name, const std::string& line) const {
        const Lines lines = lines_of(name);
        return std::count(lines.begin(), lines.end(), line);
    }

    const TempDir dir;
    MGFile log;
    MGErr err;
};

TEST_F(Log, EntriesHaveTheirForm) {
    log.PrintErrInLogFile(err);
    log.SetProfileId("mail");
    log.PrintErrInLogFile(err);
    const std::string text = "operation 100%s\nstep\nfile\n";
    EXPECT_EQ(regex_replaced(dir.read("log"), "20\\d\\d-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d", "DATE"),
              "\n____ERROR____DATE\n" + text + "\n____ERROR____DATE\nПрофиль: mail\n" + text);
    EXPECT_FALSE(log.GetDebugLog());
    MGInfo bytes;
    for (const uint8_t size : {16, 17}) bytes.AddRow("a", std::vector<uint8_t>(size, size));
    EXPECT_EQ(bytes.GetString(), "a: (16) [10 10 10 10 10 10 10 10 10 10 10 10 10 10 10 10]\n"
                                 "a: (17) [11 11 11 11 11 11 11 11 ... 11 11 11 11 11 11 11 11]\n");
}

// One line for each entry that is lost, the caller goes on, and the mutex is free again.
TEST_F(Log, WhatCannotBeWrittenEndsInTheSystemLog) {
    const std::string line =
        "3 mgfile:PrintLogFile:AddStringToFile:(/dev/full):[28]:[" + std::string(std::strerror(ENOSPC)) + "]";
    log.SetLogFile("/dev/full");
    for (int again = 0; again < 2; ++again) log.PrintErrInLogFile(err);
    EXPECT_EQ(syslog_lines, Lines({line, line}));
}

TEST_F(Log, RotatesOnlyAboveTheLimit) {
    const struct {
        int max_size;
        size_t size;
        bool rotated;
    } rows[] = {{1, 1024, false}, {1, 1025, true}, {0, 5000, false}};
    log.SetLogFile(dir.path("a.b.log").c_str());
    log.SetProgVersion("version 1\n");
    for (const auto& row : rows) {
        const std::string old(row.size, 'x');
        dir.write("a.b.log", old);
        log.SetLogMaxSize(row.max_size);
        log.PrintInfoInLogFile(report("new"));
        EXPECT_EQ(lines_of("a.b.log"), row.rotated ? Lines({"____INFO____", "version 1", "____INFO____", "new"})
                                                   : Lines({old, "____INFO____", "new"}));
    }
    EXPECT_EQ(dir.read("a.b~1.log"), std::string(1025, 'x'));
}

TEST_F(Log, RotatingLosesAndTearsNoEntryOfEightThreads) {
    constexpr int threads = 8, entries = 150;
    log.SetLogMaxSize(1);
    log.SetProgVersion("version\n");
    const auto text = [](int number) { return "entry " + std::to_string(number) + std::string(40, '.'); };
    std::vector<std::thread> writers;
    for (int t = 0; t < threads; ++t)
        writers.emplace_back([&, t] {
            for (int i = 0; i < entries; ++i) log.PrintInfoInLogFile(report(text(t * entries + i)));
        });
    for (std::thread& writer : writers) writer.join();

    std::map<std::string, int> found;
    int rotated = -1; // all files but the present log
    for (const auto& file : std::filesystem::directory_iterator(dir.path())) {
        const std::string name = file.path().filename();
        for (const std::string& line : lines_of(name)) ++found[line];
        EXPECT_TRUE(name == "log" || file.file_size() > 1024) << name;
        ++rotated;
    }
    EXPECT_GT(rotated, 50);
    EXPECT_EQ(found["version"], rotated);
    EXPECT_EQ(found["____INFO____"], threads * entries + rotated);
    for (int i = 0; i < threads * entries; ++i) EXPECT_EQ(found[text(i)], 1) << i;
    EXPECT_EQ(found.size(), 2U + threads * entries);
}

// Each log with its operation and its switch; a directory in the place of the rotated log makes the rotation fail.
TEST_F(Log, ReportsGoToTheirLogAndReportAFailedRotation) {
    const struct {
        std::string name, report;
        std::string MGFile::*file;
        void (MGFile::*info)(const MGInfo&);
        void (MGFile::*debug)(const MGInfo&, bool);
    } rows[] = {{"in", "log", &MGFile::m_log_file_input, &MGFile::PrintInfoInLogFileInput, nullptr},
                {"out", "log", &MGFile::m_log_file_output, &MGFile::PrintInfoInLogFileOutput, nullptr},
                {"debug", "debug", &MGFile::m_debug_log_file, nullptr, &MGFile::PrintDebugLogFile},
                {"d_in", "debug", &MGFile::m_debug_log_file_input, nullptr, &MGFile::PrintDebugLogFileInput},
                {"d_out", "debug", &MGFile::m_debug_log_file_output, nullptr, &MGFile::PrintDebugLogFileOutput}};
    for (const auto& row : rows) log.*row.file = dir.path(row.name);
    for (const auto& row : rows) {
        for (const char* name : {"log", "debug"}) dir.write(name, "");
        dir.write(row.name, std::string(1025, 'x'));
        std::filesystem::create_directory(dir.path(row.name + "~1"));
        for (const bool on : {false, true}) {
            log.SetLogMaxSize(on);
            log.TurnOffLogFileInput(!on);
            log.TurnOffLogFileOutput(!on);
            log.SetDebugLog(true, on);
            row.info ? (log.*row.info)(report("text")) : (log.*row.debug)(report("text"), true);
            EXPECT_EQ(count(row.name, "text"), on) << row.name;
        }
        EXPECT_EQ(count(row.name, row.info ? "____INFO____" : "____DEBUG____"), 1) << row.name;
        EXPECT_EQ(count(row.report, "____ERROR____"), 1) << row.name;
    }
}

TEST_F(Log, RepeatsAreWrittenThreeTimesWithinTheHour) {
    log.SetProtectRepeat(true);
    const auto written = [&](const char* argument, int32_t code) { // after that error: entries in the log
        err.str_param = argument;
        err.err_code = code; // makes no other error
        log.PrintErrInLogFile(err);
        return count("log", "____ERROR____");
    };
    for (int code = 1; code <= 5; ++code) EXPECT_EQ(written("a", code), std::min(code, 3));
    EXPECT_EQ(written("b", 0), 4);
    log.m_repeat_begin = time(nullptr) - 3601;
    EXPECT_EQ(written("a", 0), 5);
    EXPECT_EQ(log.m_repeat_errors.size(), 1U);
}

// The locales are made for the test: a machine seldom has them.
TEST(MGErr, TellsEveryFieldThatIsSet) {
    MGErr err;
    char letter = 'a';
    for (auto field :
         {&MGErr::mess_1, &MGErr::mess_2, &MGErr::func_1, &MGErr::func_2, &MGErr::str_param, &MGErr::opt_param,
          &MGErr::ext_param, &MGErr::ext_2_param, &MGErr::ext_3_param, &MGErr::err_description})
        err.*field = letter++;
    err.num_param = 1, err.num_2_param = -2, err.num_3_param = 3;
    err.uint32_param = 4, err.uint32_2_param = 5, err.err_code = -6;
    testing::internal::CaptureStdout();
    err.Printf(), MGErr().Printf();
    EXPECT_EQ(testing::internal::GetCapturedStdout() + err.GetString(), read_file(GOLDEN "/error.txt"));
    EXPECT_EQ(err.GetSyslogString(), "a b");
    err.Clear();
    EXPECT_EQ(err.GetString() + err.GetSyslogString(), "");
}

TEST(MGErr, TextsOfTheSystemAreUtf8InEveryCharset) {
    const TempDir dir;
    for (const std::string charset : {"KOI8-R", "ISO-8859-1"}) {
        const std::string locale = "ru_RU." + charset;
        const std::string make = "localedef -c -i ru_RU -f " + charset + " " + dir.path(locale) + " 2>/dev/null";
        [[maybe_unused]] const int warned = std::system(make.c_str());
        setenv("LOCPATH", dir.path().c_str(), 1); // as long as it is set, newlocale loses memory
        ASSERT_TRUE(std::setlocale(LC_ALL, locale.c_str())) << locale;
        unsetenv("LOCPATH");
        EXPECT_EQ(vorma::system_error_text(ENOENT), "Нет такого файла или каталога") << charset;
    }
    std::setlocale(LC_ALL, "C");
    EXPECT_EQ(vorma::system_error_text(ENOENT), "No such file or directory");
}

} // namespace
