// Tests of typed addresses, networks, identifiers and numbers.
#include "net/address_syntax.h"

#include "app/mg_err.h"
#include "runtime/mg_file.h"

#include <algorithm>
#include <cstdio>
#include <stdexcept>
#include <string_view>
#include <vector>

using namespace vorma;

namespace {

constexpr int address_octets = 4;
constexpr int max_octet = 255;
constexpr int max_prefix = 32;

bool only(std::string_view s, std::string_view alphabet) {
    return s.find_first_not_of(alphabet) == std::string_view::npos;
}

bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

// A typed number from 0 to max. One that no int can hold is above any max, so it is refused and not thrown: what is
// typed here reaches the handlers of the dialogs, which no exception may leave.
bool number_up_to(int max, const std::string& s, int& number) {
    try {
        return string_to_int(s.c_str(), &number) && number <= max;
    } catch (const std::out_of_range&) {
        return false;
    }
}

uint32_t mask_of(int prefix) {
    return prefix == 0 ? 0 : ~uint32_t{0} << (max_prefix - prefix); // a shift by 32 has no meaning
}

} // namespace

bool string_is_empty(const char* s) {
    return MGFile::IsEmptyString(s);
}

bool string_is_ansi(const char* s) {
    return MGFile::IsAnsiString(s);
}

bool string_is_num(const char* s) {
    return s && *s && only(s, "0123456789");
}

bool string_is_id(const char* s) {
    return only(s, id_allow_only);
}

// number ("." number)+
bool string_is_oid(const char* s) {
    if (!s || !is_digit(*s)) return false;
    bool dotted = false;
    for (; *s; ++s) {
        if (is_digit(*s)) continue;
        if (*s != '.' || !is_digit(s[1])) return false;
        dotted = true;
    }
    return dotted;
}

bool string_is_ip(const char* s) {
    uint32_t ip;
    return string_is_ip_n(s, ip);
}

bool string_is_net(const char* s) {
    uint32_t ip;
    int prefix;
    return string_is_net_n(s, ip, prefix, false);
}

bool string_is_ip_net(const char* s) {
    uint32_t ip;
    int prefix;
    return string_is_net_n(s, ip, prefix, true);
}

// octet "." octet "." octet "." octet
bool string_is_ip_n(const char* s, uint32_t& ip) {
    return at_edge("string_is_ip_n", [&] {
        if (string_is_empty(s)) return false;
        std::vector<std::string> pieces;
        MGFile::SplitStringLeft(s, ".", pieces);
        if (pieces.size() != address_octets) return false;
        uint32_t address = 0;
        for (const std::string& piece : pieces) {
            int octet = 0;
            if (!number_up_to(max_octet, piece, octet)) return false;
            address = address << 8 | static_cast<uint32_t>(octet);
        }
        ip = address;
        return true;
    });
}

// address "/" prefix length
bool string_is_net_n(const char* s, uint32_t& ip, int& prefix, bool any_host_bits) {
    return at_edge("string_is_net_n", [&] {
        if (string_is_empty(s)) return false;
        const std::string net = s;
        const size_t slash = net.find('/');
        if (slash == std::string::npos) return false;
        int length = 0;
        uint32_t address = 0;
        if (!number_up_to(max_prefix, net.substr(slash + 1), length)) return false;
        if (!string_is_ip_n(net.substr(0, slash).c_str(), address)) return false;
        if (!any_host_bits && (address & mask_of(length)) != address) return false;
        ip = address;
        prefix = length;
        return true;
    });
}

bool convert_ip_to_net(const char* s, std::string& out) {
    return at_edge("convert_ip_to_net", [&] {
        uint32_t ip = 0;
        int prefix = 0;
        if (!string_is_net_n(s, ip, prefix, true)) return false;
        ip &= mask_of(prefix);
        char text[sizeof "255.255.255.255/32"];
        std::snprintf(text, sizeof text, "%d.%d.%d.%d/%d", static_cast<int>(ip >> 24), static_cast<int>(ip >> 16 & 255),
                      static_cast<int>(ip >> 8 & 255), static_cast<int>(ip & 255), prefix);
        out = text;
        return true;
    });
}

bool string_to_int(const char* s, int* value) {
    if (!string_is_num(s)) return false;
    *value = std::stoi(s, nullptr, 10);
    return true;
}

std::string int_to_string(int number) {
    return at_edge("int_to_string", [&] { return std::to_string(number); });
}

std::string uint32_to_string(uint32_t number) {
    return at_edge("uint32_to_string", [&] { return std::to_string(number); });
}

std::string uint64_to_string(uint64_t number) {
    return at_edge("uint64_to_string", [&] { return std::to_string(number); });
}

std::string sprintf_buf(const void* data, size_t size) {
    return at_edge("sprintf_buf", [&] {
        constexpr char hex[] = "0123456789ABCDEF";
        constexpr size_t per_line = 16;
        const auto* bytes = static_cast<const uint8_t*>(data);
        if (!bytes) size = 0;
        std::string text;
        text.reserve(size * 3 + size / per_line + 1);
        for (size_t i = 0; i < size; ++i) {
            text += {hex[bytes[i] >> 4], hex[bytes[i] & 15], ' '};
            if (i % per_line == per_line - 1) text += '\n';
        }
        if (size == 0 || size % per_line != 0) text += '\n';
        return text;
    });
}
