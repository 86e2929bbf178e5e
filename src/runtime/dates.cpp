// MGFile: date forms, all in local time.
#include "runtime/mg_file.h"

#include <algorithm>
#include <cstdio>
#include <limits>
#include <stdexcept>

using namespace vorma;

namespace {

constexpr const char* text_form = "%04d-%02d-%02d %02d:%02d:%02d";

// The parts of a local time, the year in full and the month from 1.
struct LocalTime {
    int year, month, day, hour, minute, second;

    explicit LocalTime(time_t t) {
        tm parts;
        if (!localtime_r(&t, &parts) || parts.tm_year > std::numeric_limits<int>::max() - 1900)
            throw std::overflow_error("localtime_r");
        year = parts.tm_year + 1900;
        month = parts.tm_mon + 1;
        day = parts.tm_mday;
        hour = parts.tm_hour;
        minute = parts.tm_min;
        second = parts.tm_sec;
    }

    // Through a printf format for the six parts in that order, and one unsigned behind them if the format has it.
    std::string format(const char* form, unsigned num = 0) const {
        const auto print = [&](char* to, size_t size) {
            return static_cast<size_t>(
                std::max(std::snprintf(to, size, form, year, month, day, hour, minute, second, num), 0));
        };
        char short_text[64]; // what most forms need
        const size_t size = print(short_text, sizeof short_text);
        if (size < sizeof short_text) return {short_text, size};
        std::string text(size, '\0');
        print(text.data(), text.size() + 1);
        return text;
    }

    // The text form, which each entry of a log bears: by hand, since a printf costs more than the rest of the entry.
    std::string text() const {
        if (year < 0 || year > 9999) return format(text_form);
        std::string form = "0000-00-00 00:00:00";
        const auto put = [&](size_t end, int number) {
            for (; number > 0; number /= 10) form[--end] = static_cast<char>('0' + number % 10);
        };
        put(4, year);
        put(7, month);
        put(10, day);
        put(13, hour);
        put(16, minute);
        put(19, second);
        return form;
    }
};

std::string padded(unsigned number, const char* form) {
    return MGFile::GetUint32Format(number, form);
}

} // namespace

std::string MGFile::GetDateAndTimeFormat(time_t t, const char* format) {
    return at_edge("MGFile::GetDateAndTimeFormat",
                   [&] { return t == 0 ? std::string() : LocalTime(t).format(format); });
}

std::string MGFile::GetDateAndTime(time_t t) {
    return at_edge("MGFile::GetDateAndTime", [&] { return t == 0 ? std::string() : LocalTime(t).text(); });
}

std::string MGFile::GetDateAndTimeForFile(time_t t) {
    return GetDateAndTimeFormat(t, "_%04d%02d%02d_%02d%02d%02d");
}

std::string MGFile::GetLocalDateAndTime() {
    return GetDateAndTime(time(nullptr));
}

time_t MGFile::StringToTime(std::string text) {
    return at_edge("MGFile::StringToTime", [&]() -> time_t {
        if (text.empty()) return 0;
        tm parts = {};
        parts.tm_year = GetNextInt32(text, "-") - 1900;
        parts.tm_mon = GetNextInt32(text, "-") - 1;
        parts.tm_mday = GetNextInt32(text, " ");
        parts.tm_hour = GetNextInt32(text, ":");
        parts.tm_min = GetNextInt32(text, ":");
        parts.tm_sec = StringToInt32(text.c_str());
        parts.tm_isdst = -1;
        return mktime(&parts);
    });
}

void MGFile::GetDateFromTime(time_t t, unsigned& year, unsigned& month, unsigned& day, unsigned& hour, unsigned& minute,
                             unsigned& second) {
    at_edge("MGFile::GetDateFromTime", [&] {
        const LocalTime local(t);
        year = static_cast<unsigned>(local.year);
        month = static_cast<unsigned>(local.month);
        day = static_cast<unsigned>(local.day);
        hour = static_cast<unsigned>(local.hour);
        minute = static_cast<unsigned>(local.minute);
        second = static_cast<unsigned>(local.second);
    });
}

unsigned MGFile::GetCurrentYear() {
    return at_edge("MGFile::GetCurrentYear", [&] { return static_cast<unsigned>(LocalTime(time(nullptr)).year); });
}

void MGFile::GetDateFromTimeStr(time_t t, std::string& year, std::string& month, std::string& day, std::string& hour,
                                std::string& minute, std::string& second) {
    at_edge("MGFile::GetDateFromTimeStr", [&] {
        unsigned parts[6];
        GetDateFromTime(t, parts[0], parts[1], parts[2], parts[3], parts[4], parts[5]);
        year = padded(parts[0], "%04u");
        month = padded(parts[1], "%02u");
        day = padded(parts[2], "%02u");
        hour = padded(parts[3], "%02u");
        minute = padded(parts[4], "%02u");
        second = padded(parts[5], "%02u");
    });
}

void MGFile::GetCurrentDateTimeStr(std::string& year, std::string& month, std::string& day, std::string& time) {
    at_edge("MGFile::GetCurrentDateTimeStr", [&] {
        std::string hour, minute, second;
        GetDateFromTimeStr(::time(nullptr), year, month, day, hour, minute, second);
        time = hour + minute + second;
    });
}

void MGFile::DirAddArchiveDateExtTime(time_t t, std::string& dir, unsigned num) {
    at_edge("MGFile::DirAddArchiveDateExtTime",
            [&] { dir += LocalTime(t).format("%04d/%02d/%02d/%02d%02d%02d_%08x", num); });
}

void MGFile::DirAddArchiveDateExt(std::string& dir, unsigned num) {
    DirAddArchiveDateExtTime(time(nullptr), dir, num);
}

void MGFile::DirAddArchiveDate(std::string& dir, unsigned num) {
    DirAddSlash(dir);
    DirAddArchiveDateExt(dir, num);
}

void MGFile::AddYearMonDayToDir(std::string& dir, bool year, bool month, bool day) {
    at_edge("MGFile::AddYearMonDayToDir", [&] {
        const LocalTime now(time(nullptr));
        const struct {
            bool wanted;
            int number;
            const char* form;
        } parts[] = {{year, now.year, "%04d"}, {month, now.month, "%02d"}, {day, now.day, "%02d"}};
        for (const auto& part : parts) {
            if (!part.wanted) continue;
            DirAddSlash(dir);
            dir += padded(static_cast<unsigned>(part.number), part.form);
        }
    });
}
