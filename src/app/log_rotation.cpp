// What the log does for a long-running process: rotation at a size limit, suppression of repeated errors, and the
// entries that are built from report rows.
#include "app/log.h"
#include "app/mg_err.h"
#include "runtime/descriptor_io.h"
#include "runtime/mg_file.h"
#include "runtime/mg_info.h"

#include <algorithm>
#include <ctime>
#include <limits>
#include <syslog.h>

using namespace vorma;

namespace {

constexpr time_t repeat_window = 3600; // seconds in which repeats are counted together
constexpr uint64_t repeat_limit = 4;   // the first count that is no longer written

// A debug entry, where the level asks for it and the log has a name. The main debug log reports a failed rotation.
void add_debug_entry(MGFile& owner, const LogTarget& log, const MGInfo& info, bool extended) {
    if (!owner.m_debug_log || (extended && !owner.m_ext_debug_log) || log.file.empty()) return;
    add_log_entry(owner, log, {owner.m_debug_log_mutex, owner.m_debug_log_file}, log_marker_debug, info);
}

} // namespace

void MGFile::RenameLogFileIfMaxSize(std::mutex& m, const std::string& log_file) {
    try {
        if (log_file.empty()) {
            syslog(LOG_ERR, "mgfile:RenameLogFile:log_file.empty()");
            return;
        }
        const int64_t limit = int64_t{m_log_max_size} * 1024;
        const auto over_limit = [&] { return SizeFile(log_file.c_str()) > limit; };
        if (m_log_max_size < 1 || !over_limit()) return;
        {
            std::lock_guard lock(m);
            if (!over_limit()) return; // another thread has rotated it since; the file there now is a new one
            const std::string dir = GetDirFromFile(log_file);
            const std::string numbered = MaxSameFileName(dir, GetNameFromFile(log_file));
            RenameFile(log_file.c_str(), JoinDirAndFileName(dir, numbered.c_str()).c_str());
        }
        if (!m_prog_version.empty()) PrintLogFile(m, log_file, log_marker_info, true, m_prog_version);
    } catch (const std::exception& e) {
        syslog(LOG_ERR, "mgfile:RenameLogFile:std::exception:[%s]", e.what());
    }
}

bool MGFile::IsRepeatError(MGErr& err) {
    return at_edge("MGFile::IsRepeatError", [&] {
        err.crc_mess_1 = MakeCrc32(err.mess_1);
        err.crc_mess_2 = MakeCrc32(err.mess_2);
        err.crc_func_1 = MakeCrc32(err.func_1);
        err.crc_func_2 = MakeCrc32(err.func_2);

        const time_t now = time(nullptr);
        std::lock_guard lock(m_repeat_mutex);
        if (m_repeat_begin < 1 || now - m_repeat_begin > repeat_window) {
            m_repeat_begin = now;
            m_repeat_errors.clear();
        }
        const auto seen = std::find_if(m_repeat_errors.begin(), m_repeat_errors.end(),
                                       [&](const MGErr& earlier) { return same_error(earlier, err); });
        if (seen != m_repeat_errors.end()) return ++seen->repeat_count >= repeat_limit;
        err.repeat_count = 1;
        m_repeat_errors.push_back(err);
        return false;
    });
}

std::string MGFile::SameFileName(const std::string& name, unsigned num) {
    return at_edge("MGFile::SameFileName", [&] {
        std::string stem, ext;
        SplitFileNameToNameAndExt(name, stem, ext);
        return stem + "~" + std::to_string(num) + ext;
    });
}

// Doubles the number until one is free, then halves the gap: few probes where numbers are used without gaps. A peer may
// send files by the very names that it looks at.
std::string MGFile::MaxSameFileName(const std::string& dir, const std::string& name) {
    return at_edge("MGFile::MaxSameFileName", [&] {
        MGErr err = error_of("MaxSameFileName", "Ошибка поиска свободного имени файла");
        const auto taken = [&](unsigned num) {
            return is_surely_file(err, JoinDirAndFileName(dir, SameFileName(name, num).c_str()));
        };
        constexpr unsigned highest = std::numeric_limits<unsigned>::max();
        unsigned hi = 1;
        unsigned lo = 0;
        while (taken(hi)) {
            if (hi == highest) fail(err, "Нет свободного номера", "(hi == highest)");
            lo = hi;
            hi = hi > highest / 2 ? highest : hi * 2;
        }
        while (hi - 1 != lo) {
            const unsigned mid = lo + (hi - lo) / 2;
            (taken(mid) ? lo : hi) = mid;
        }
        return SameFileName(name, hi);
    });
}

void MGFile::PrintInfoInLogFile(const MGInfo& info) {
    const LogTarget log{m_log_mutex, m_log_file};
    add_log_entry(*this, log, log, log_marker_info, info);
}

void MGFile::PrintInfoInLogFileInput(const MGInfo& info) {
    if (m_log_input_off) return;
    add_log_entry(*this, {m_log_input_mutex, m_log_file_input}, {m_log_mutex, m_log_file}, log_marker_info, info);
}

void MGFile::PrintInfoInLogFileOutput(const MGInfo& info) {
    if (m_log_output_off) return;
    add_log_entry(*this, {m_log_output_mutex, m_log_file_output}, {m_log_mutex, m_log_file}, log_marker_info, info);
}

void MGFile::PrintDebugLogFile(const MGInfo& info, bool extended) {
    add_debug_entry(*this, {m_debug_log_mutex, m_debug_log_file}, info, extended);
}

void MGFile::PrintDebugLogFileInput(const MGInfo& info, bool extended) {
    add_debug_entry(*this, {m_debug_log_input_mutex, m_debug_log_file_input}, info, extended);
}

void MGFile::PrintDebugLogFileOutput(const MGInfo& info, bool extended) {
    add_debug_entry(*this, {m_debug_log_output_mutex, m_debug_log_file_output}, info, extended);
}
