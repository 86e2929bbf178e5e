// The log of the process, and what its writing operations share. Logging itself is done by members of MGFile.
// Several threads may write to the log at once; its settings are made before they start.
#pragma once

#include "../runtime/mg_file.h"

#include <mutex>
#include <string>

// The object that owns the log settings; alive before main and after it.
extern MGFile LogFileGlobal;

namespace vorma {

// How an entry begins.
inline constexpr const char* log_marker_error = "____ERROR____";
inline constexpr const char* log_marker_info = "____INFO____";
inline constexpr const char* log_marker_debug = "____DEBUG____";

// One log file of an MGFile and the mutex that guards it.
struct LogTarget {
    std::mutex& mutex;
    const std::string& file;
};

// Rotates `log` if due, then adds an entry with the date to it. A failed rotation becomes an error entry in `report`,
// and the entry goes into the old file. Throws nothing: what can't be written ends in the system log.
void add_log_entry(MGFile& owner, const LogTarget& log, const LogTarget& report, const char* marker,
                   const std::string& text);
void add_log_entry(MGFile& owner, const LogTarget& log, const LogTarget& report, const char* marker,
                   const MGInfo& info);

} // namespace vorma
