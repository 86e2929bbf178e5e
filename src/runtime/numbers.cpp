// MGFile: numbers from text and to text.
#include "runtime/mg_file.h"

#include <cstdio>
#include <cstring>
#include <stdexcept>

using namespace vorma;

namespace {

// The number that `convert` (std::stoi, std::stoll) finds at the start of text. func_1 and func_2 go to its error.
template <class Number>
Number number_at_start(const char* text, Number (*convert)(const std::string&, size_t*, int), const char* func_1,
                       const char* func_2) {
    if (MGFile::IsEmptyString(text)) return 0;
    try {
        return convert(text, nullptr, 10);
    } catch (const std::logic_error&) { // no number, or out of range
        MGErr err = error_of(func_1, "Ошибка получения числа из строки");
        err.str_param = text;
        fail(err, "Строка не содержит числовое значение", func_2);
    }
}

} // namespace

int32_t MGFile::StringToInt32(const char* text) {
    constexpr const char* name = "MGFile::StringToInt32";
    return at_edge(name, [&] { return number_at_start<int>(text, std::stoi, name, "stoi"); });
}

int64_t MGFile::StringToInt64(const char* text) {
    constexpr const char* name = "MGFile::StringToInt64";
    return at_edge(name, [&] { return number_at_start<long long>(text, std::stoll, name, "stoll"); });
}

int32_t MGFile::GetNextInt32(std::string& text, const char* sep) {
    return at_edge("MGFile::GetNextInt32", [&] {
        const size_t pos = text.find(sep);
        if (pos == std::string::npos) {
            MGErr err = error_of("MGFile::GetNextInt32", "Ошибка получения числа из строки с датой");
            err.opt_param = text;
            err.str_param = sep;
            fail(err, "Строка не содержит ограничительный символ", "str.find(simbol)");
        }
        const int32_t number = StringToInt32(text.substr(0, pos).c_str());
        text.erase(0, pos + std::strlen(sep));
        return number;
    });
}

std::string MGFile::Uint32toString(uint32_t number) {
    return at_edge("MGFile::Uint32toString", [&] { return std::to_string(number); });
}

std::string MGFile::Int64toString(int64_t number) {
    return at_edge("MGFile::Int64toString", [&] { return std::to_string(number); });
}

std::string MGFile::Int32toString(int32_t number) {
    return at_edge("MGFile::Int32toString", [&] { return std::to_string(number); });
}

std::string MGFile::Int16toString(int16_t number) {
    return at_edge("MGFile::Int16toString", [&] { return std::to_string(number); });
}

std::string MGFile::GetUint32Format(uint32_t number, const char* format) {
    return at_edge("MGFile::GetUint32Format", [&] {
        char text[128] = ""; // stays so for a format that printf refuses
        std::snprintf(text, sizeof text, format, number);
        return std::string(text);
    });
}
