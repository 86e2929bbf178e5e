// The result file of list reports.
#include "app/mg_err.h"
#include "runtime/mg_file.h"
#include "runtime/mg_info.h"

#include <ctime>

using namespace vorma;

void MGFile::SetResultDir(const char* dir) {
    at_edge("MGFile::SetResultDir", [&] {
        m_result_dir = dir;
        DirAddSlash(m_result_dir);
    });
}

void MGFile::SetResultFile(const char* name) {
    at_edge("MGFile::SetResultFile", [&] {
        std::string path = m_result_dir + name;
        m_result_file_name = name;
        m_result_file = std::move(path);
    });
}

std::string MGFile::SetResultFileDate(const char* name, bool with_date, const char* ext) {
    return at_edge("MGFile::SetResultFileDate", [&] {
        const time_t now = time(nullptr);
        const std::string stamp = with_date ? GetDateAndTimeForFile(now) : "";
        SetResultFile((name + stamp + ext).c_str());
        return GetDateAndTime(now);
    });
}

std::string MGFile::GetResultFile() const {
    return at_edge("MGFile::GetResultFile", [&] { return m_result_file; });
}

std::string MGFile::GetResultFileName() const {
    return at_edge("MGFile::GetResultFileName", [&] { return m_result_file_name; });
}

std::string MGFile::GetResultFileDir() const {
    return at_edge("MGFile::GetResultFileDir", [&] { return m_result_dir; });
}

void MGFile::PrintInfoInResultFile(const MGInfo& info, bool new_file) {
    at_edge("MGFile::PrintInfoInResultFile", [&] {
        const std::string text = info.GetString();
        std::lock_guard lock(m_result_mutex);
        if (new_file) IfIsFileDelIt(m_result_file);
        AddFile(m_result_file.c_str(), reinterpret_cast<const uint8_t*>(text.data()), text.size());
    });
}
