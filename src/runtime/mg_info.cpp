// Rows of a report and their text.
#include "runtime/mg_info.h"

#include "runtime/mg_file.h"

#include <cstdio>
#include <ctime>

namespace {

// Bytes shown at each end of a dump that is too long to be shown whole.
constexpr size_t dump_end = 8;

std::string dump(const std::vector<uint8_t>& bytes) {
    std::string text = "(" + std::to_string(bytes.size()) + ") [";
    for (size_t i = 0; i < bytes.size(); ++i) {
        const bool left_out = i >= dump_end && bytes.size() - 1 - i >= dump_end;
        if (left_out) {
            if (i == dump_end) text += " ...";
            continue;
        }
        if (i > 0) text += " ";
        text += MGInfo::Uint8StringExt(bytes[i]);
    }
    return text + "]";
}

} // namespace

std::string MGInfo::GetString() const {
    std::string text;
    for (const MGLine& line : m_lines) {
        text += line.name;
        if (line.value != empty_value) text.append(": ").append(line.value);
        AddSlashN(text);
    }
    return text;
}

void MGInfo::AddRow(const char* name, const char* value) {
    m_lines.push_back({name, value});
}

void MGInfo::AddRow(const char* name, const std::string& value) {
    m_lines.push_back({name, value});
}

void MGInfo::AddRow(const char* name, bool value) {
    AddRow(name, value ? "true" : "false");
}

void MGInfo::AddRow(const char* name, int value) {
    AddRow(name, Int2String(value));
}

void MGInfo::AddRow(const char* name, long value) {
    AddRow(name, Int64String(value));
}

void MGInfo::AddRow(const char* name, unsigned value) {
    AddRow(name, Uint32String(value));
}

void MGInfo::AddRow(const char* name, unsigned long value) {
    AddRow(name, Uint64String(value));
}

void MGInfo::AddRow(const char* name, const std::vector<uint8_t>& value) {
    AddRow(name, dump(value));
}

void MGInfo::AddNumRow(const char* prefix, unsigned num, const char* name, const std::string& value) {
    m_lines.push_back({(prefix ? prefix : "") + Uint32String(num) + " " + name, value});
}

void MGInfo::AddNumRow(const char* prefix, unsigned num, const char* name, const char* value) {
    AddNumRow(prefix, num, name, std::string(value));
}

void MGInfo::AddNumRow(unsigned num, const char* name, const char* value) {
    AddNumRow(nullptr, num, name, std::string(value));
}

void MGInfo::AddNumRow(unsigned num, const char* name, const std::string& value) {
    AddNumRow(nullptr, num, name, value);
}

void MGInfo::AddSlashN(std::string& s) {
    if (!s.ends_with('\n')) s += '\n';
}

void MGInfo::DelSlashN(std::string& s) {
    if (s.ends_with('\n')) s.pop_back();
}

std::string MGInfo::Uint32String(unsigned number) {
    return std::to_string(number);
}

std::string MGInfo::Uint32StringExt(unsigned number) {
    char text[32];
    std::snprintf(text, sizeof text, "%u (0x%08X)", number, number);
    return text;
}

std::string MGInfo::Uint8StringExt(uint8_t number) {
    char text[4];
    std::snprintf(text, sizeof text, "%02X", number);
    return text;
}

std::string MGInfo::Uint64String(unsigned long number) {
    return std::to_string(number);
}

std::string MGInfo::Int64String(long number) {
    return std::to_string(number);
}

std::string MGInfo::Int2String(int number) {
    return std::to_string(number);
}

std::string MGInfo::GetDateAndTime(long t) {
    return t == 0 ? "[пусто]" : MGFile::GetDateAndTime(t);
}

std::string MGInfo::GetLocalDateAndTime() {
    return GetDateAndTime(std::time(nullptr));
}
