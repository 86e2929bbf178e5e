#include "app/log.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <filesystem>
#include <regex>

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

class Log : public testing::Test {
protected:
    Log() {
        syslog_lines.clear();
        err.mess_1 = "operation 100%s";
        err.mess_2 = "step";
        err.str_param = "file";
    }

    const TempDir dir;
    MGFile log;
    MGErr err;
};

const std::string date = "20\\d\\d-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d\n";

TEST_F(Log, EntriesHaveTheirForm) {
    log.SetLogFile(dir.path("log").c_str());
    log.PrintErrInLogFile(err);
    log.SetProfileId("mail");
    log.PrintErrInLogFile(err);
    log.ClearProfileId();
    log.PrintLogFile(log.m_log_mutex, log.m_log_file, "____INFO____", false, "text");
    log.PrintLogFile(log.m_log_mutex, log.m_log_file, nullptr, true, "bare\n");
    const std::string text = "operation 100%s\nstep\nfile\n";
    const std::regex form("\n____ERROR____" + date + text + "\n____ERROR____" + date + "Профиль: mail\n" + text +
                          "\n____INFO____\ntext\nbare\n");
    EXPECT_TRUE(std::regex_match(dir.read("log"), form)) << dir.read("log");
    EXPECT_EQ(syslog_lines, Lines());
}

TEST_F(Log, DebugErrorsAndTheSystemLogAreSwitchedOn) {
    log.SetLogFile(dir.path("log").c_str());
    err.debug_only = true;
    log.SetDebugLog(false, true);
    log.PrintErrInLogFile(err);
    EXPECT_EQ(dir.read("log"), "");
    log.SetDebugLog(true, false);
    log.SyslogTurnOn("vormaqs");
    log.PrintErrInLogFile(err);
    EXPECT_NE(dir.read("log"), "");
    log.SyslogTurnOff();
    log.PrintErrInLogFile(err);
    EXPECT_EQ(syslog_lines, Lines({"3 operation 100%s step"}));
}

// One line for each entry that is lost, the caller goes on, and the mutex is free again.
TEST_F(Log, WhatCannotBeWrittenEndsInTheSystemLog) {
    const auto lost = [](const std::string& file, int code) {
        return "3 mgfile:PrintLogFile:AddStringToFile:(" + file + "):[" + std::to_string(code) + "]:[" +
               std::strerror(code) + "]";
    };
    std::filesystem::create_symlink("/no/where", dir.path("dangling"));
    const std::pair<std::string, std::string> rows[] = {
        {"", "3 mgfile:PrintLogFile:log_file.empty()"}, {dir.path("none/log"), lost(dir.path("none/log"), ENOENT)},
        {dir.path(), lost(dir.path(), EISDIR)},         {dir.path("dangling"), lost(dir.path("dangling"), ENOENT)},
        {"/dev/full", lost("/dev/full", ENOSPC)},
    };
    for (const auto& [file, line] : rows) {
        syslog_lines.clear();
        log.SetLogFile(file.c_str());
        log.PrintErrInLogFile(err);
        log.PrintErrInLogFile(err);
        EXPECT_EQ(syslog_lines, Lines({line, line})) << file;
    }
}

} // namespace
