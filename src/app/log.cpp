// MGFile: the log's settings, its entries and the error entries. What can't be written ends in the system log.
//
//     entry = LF [ marker [ date ] LF ] [ "Профиль: " id LF ] text
#include "app/log.h"
#include "runtime/mg_info.h"

#include <syslog.h>

using namespace vorma;

MGFile LogFileGlobal;

namespace {

// The entry is lost.
void report_exception(const char* what) {
    syslog(LOG_ERR, "mgfile:PrintLogFile:std::exception:[%s]", what);
}

// An empty name is not reported here: the entry that follows does so.
void rotate_if_due(MGFile& owner, const LogTarget& log, const LogTarget& report) {
    try {
        if (!log.file.empty()) owner.RenameLogFileIfMaxSize(log.mutex, log.file);
    } catch (const MGErr& err) {
        owner.PrintLogFile(report.mutex, report.file, log_marker_error, true, err.GetString());
    }
}

// What can't be counted is written.
bool is_known_repeat(MGFile& owner, MGErr& err) {
    try {
        return owner.IsRepeatError(err);
    } catch (const MGErr&) {
        return false;
    }
}

} // namespace

void MGFile::SetLogFile(const char* name) {
    at_edge("MGFile::SetLogFile", [&] { m_log_file = name; });
}

void MGFile::SetLogFileInput(const char* name) {
    at_edge("MGFile::SetLogFileInput", [&] { m_log_file_input = name; });
}

void MGFile::SetLogFileOutput(const char* name) {
    at_edge("MGFile::SetLogFileOutput", [&] { m_log_file_output = name; });
}

void MGFile::SetDebugLogFile(const char* name) {
    at_edge("MGFile::SetDebugLogFile", [&] { m_debug_log_file = name; });
}

void MGFile::SetDebugLogFileInput(const char* name) {
    at_edge("MGFile::SetDebugLogFileInput", [&] { m_debug_log_file_input = name; });
}

void MGFile::SetDebugLogFileOutput(const char* name) {
    at_edge("MGFile::SetDebugLogFileOutput", [&] { m_debug_log_file_output = name; });
}

void MGFile::SetLogMaxSize(int size) {
    m_log_max_size = size;
}

void MGFile::SetProgVersion(const std::string& version) {
    at_edge("MGFile::SetProgVersion", [&] { m_prog_version = version; });
}

void MGFile::SetProtectRepeat(bool protect) {
    m_protect_repeat = protect;
}

void MGFile::TurnOffLogFileInput(bool off) {
    m_log_input_off = off;
}

void MGFile::TurnOffLogFileOutput(bool off) {
    m_log_output_off = off;
}

void MGFile::SetProfileId(const std::string& id) {
    at_edge("MGFile::SetProfileId", [&] { m_profile_id = id; });
}

void MGFile::ClearProfileId() {
    m_profile_id.clear();
}

void MGFile::SyslogTurnOn(const char* ident) {
    openlog(ident, 0, 0);
    m_syslog = true;
}

void MGFile::SyslogTurnOff() {
    closelog();
    m_syslog = false;
}

void MGFile::SetDebugLog(bool debug, bool extended) {
    m_debug_log = debug;
    m_ext_debug_log = extended;
}

bool MGFile::GetDebugLog() const {
    return m_debug_log;
}

bool MGFile::GetExtDebugLog() const {
    return m_debug_log && m_ext_debug_log;
}

void MGFile::PrintErrInLogFile(MGErr& err) {
    if (err.debug_only && !m_debug_log) return;
    try {
        if (m_protect_repeat && is_known_repeat(*this, err)) return;
        const LogTarget log{m_log_mutex, m_log_file};
        add_log_entry(*this, log, log, log_marker_error, err.GetString());
        if (m_syslog) syslog(LOG_ERR, "%s", err.GetSyslogString().c_str());
    } catch (const MGErr& failed) {
        report_exception(failed.err_description.c_str());
    } catch (const std::exception& e) {
        report_exception(e.what());
    }
}

void MGFile::PrintLogFile(std::mutex& m, const std::string& log_file, const char* marker, bool with_date,
                          const std::string& text) {
    try {
        if (log_file.empty()) {
            syslog(LOG_ERR, "mgfile:PrintLogFile:log_file.empty()");
            return;
        }
        std::string entry;
        entry.reserve(text.size() + m_profile_id.size() + 80);
        entry += '\n';
        if (marker) {
            entry += marker;
            if (with_date) entry += GetLocalDateAndTime();
            entry += '\n';
        }
        if (!m_profile_id.empty()) entry.append("Профиль: ").append(m_profile_id) += '\n';
        entry += text;

        const std::lock_guard lock(m);
        AddFile(log_file.c_str(), reinterpret_cast<const uint8_t*>(entry.data()), entry.size());
    } catch (const MGErr& err) {
        syslog(LOG_ERR, "mgfile:PrintLogFile:AddStringToFile:(%s):[%d]:[%s]", log_file.c_str(), err.err_code,
               err.err_description.c_str());
    } catch (const std::exception& e) {
        report_exception(e.what());
    }
}

void vorma::add_log_entry(MGFile& owner, const LogTarget& log, const LogTarget& report, const char* marker,
                          const std::string& text) {
    try {
        rotate_if_due(owner, log, report);
        owner.PrintLogFile(log.mutex, log.file, marker, true, text);
    } catch (const std::exception& e) {
        report_exception(e.what());
    }
}

void vorma::add_log_entry(MGFile& owner, const LogTarget& log, const LogTarget& report, const char* marker,
                          const MGInfo& info) {
    try {
        add_log_entry(owner, log, report, marker, info.GetString());
    } catch (const std::exception& e) {
        report_exception(e.what());
    }
}
