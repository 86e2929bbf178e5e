// MGFile: CRC-32, base64 and hexadecimal.
#include "runtime/little_endian.h"
#include "runtime/mg_file.h"

#include <array>
#include <cstring>
#include <string_view>
#include <utility>

using namespace vorma;

namespace {

// A CRC is a polynomial modulo 0xEDB88320, its lowest power in the highest bit.
constexpr uint32_t crc_times_x(uint32_t crc) {
    return crc >> 1 ^ (-(crc & 1) & 0xEDB88320u);
}

constexpr std::array<uint32_t, 256> make_crc_table() {
    std::array<uint32_t, 256> table{};
    for (uint32_t i = 0; i < table.size(); ++i) {
        uint32_t value = i;
        for (int bit = 0; bit < 8; ++bit) value = crc_times_x(value);
        table[i] = value;
    }
    return table;
}

constexpr std::array<uint32_t, 256> crc_table = make_crc_table();

// The byte is already in the lowest of crc.
constexpr uint32_t crc_of_byte(uint32_t crc) {
    return crc_table[crc & 0xFF] ^ crc >> 8;
}

constexpr uint32_t crc_product(uint32_t a, uint32_t b) {
    uint32_t product = 0;
    for (; a != 0; a <<= 1, b = crc_times_x(b)) product ^= -(a >> 31) & b;
    return product;
}

// Each byte waits for the lookup of the one before it. So a block is cut into lanes whose lookups don't wait for each
// other; what a lane gives is then carried over the bytes of the next, which is one product. Long lanes make products
// few. No lane is a power of two long: all would want the same places of the cache.
constexpr size_t crc_lanes = 12;
constexpr size_t long_lane = 16448;
constexpr size_t short_lane = 1088;

template <size_t lane_size>
constexpr uint32_t crc_over_lane = [] {
    uint32_t crc = 0x80000000u;
    for (size_t bit = 0; bit < 8 * lane_size; ++bit) crc = crc_times_x(crc);
    return crc;
}();

// The lanes are numbered at compile time, and go byte by byte side by side: so they stay in registers.
template <size_t lane_size, size_t... lane>
uint32_t crc_of_block(uint32_t crc, const uint8_t* data, std::index_sequence<lane...>) {
    uint32_t lanes[] = {(lane == 0 ? crc : 0)...};
    for (size_t i = 0; i < lane_size; i += 4) {
        ((lanes[lane] ^= get_le32(data + lane * lane_size + i)), ...);
        ((lanes[lane] = crc_of_byte(lanes[lane])), ...);
        ((lanes[lane] = crc_of_byte(lanes[lane])), ...);
        ((lanes[lane] = crc_of_byte(lanes[lane])), ...);
        ((lanes[lane] = crc_of_byte(lanes[lane])), ...);
    }
    crc = 0;
    ((crc = crc_product(crc, crc_over_lane<lane_size>) ^ lanes[lane]), ...);
    return crc;
}

// Takes all blocks with lanes of that size; data and size are what is left then.
template <size_t lane_size>
uint32_t crc_of_blocks(uint32_t crc, const uint8_t*& data, size_t& size) {
    constexpr size_t block = crc_lanes * lane_size;
    for (; size >= block; data += block, size -= block)
        crc = crc_of_block<lane_size>(crc, data, std::make_index_sequence<crc_lanes>());
    return crc;
}

constexpr std::string_view base64_alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr uint8_t not_base64 = 0xFF;

// The six bits that a character stands for, or not_base64.
constexpr std::array<uint8_t, 256> make_base64_values() {
    std::array<uint8_t, 256> values{};
    values.fill(not_base64);
    for (size_t i = 0; i < base64_alphabet.size(); ++i)
        values[static_cast<uint8_t>(base64_alphabet[i])] = static_cast<uint8_t>(i);
    return values;
}

constexpr std::array<uint8_t, 256> base64_values = make_base64_values();

// The two characters of twelve bits.
constexpr std::array<std::array<char, 2>, 4096> make_base64_pairs() {
    std::array<std::array<char, 2>, 4096> pairs{};
    for (size_t i = 0; i < pairs.size(); ++i) pairs[i] = {base64_alphabet[i >> 6], base64_alphabet[i & 63]};
    return pairs;
}

constexpr std::array<std::array<char, 2>, 4096> base64_pairs = make_base64_pairs();

void put_base64_group(uint32_t group, char* to) {
    std::memcpy(to, base64_pairs[group >> 12].data(), 2);
    std::memcpy(to + 2, base64_pairs[group & 0xFFF].data(), 2);
}

// Takes groups of four characters while all four are of the alphabet; both pointers move on.
void take_base64_groups(const uint8_t*& from, const uint8_t* end, uint8_t*& to) {
    for (; end - from >= 4; from += 4) {
        const uint32_t a = base64_values[from[0]], b = base64_values[from[1]], c = base64_values[from[2]],
                       d = base64_values[from[3]];
        if ((a | b | c | d) == not_base64) return;
        const uint32_t group = a << 18 | b << 12 | c << 6 | d;
        *to++ = static_cast<uint8_t>(group >> 16);
        *to++ = static_cast<uint8_t>(group >> 8);
        *to++ = static_cast<uint8_t>(group);
    }
}

constexpr std::string_view hex_digits = "0123456789abcdef";

// The value of a hexadecimal digit, -1 of any other character.
int hex_value(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

const uint8_t* bytes_of(const std::string& text) {
    return reinterpret_cast<const uint8_t*>(text.data());
}

} // namespace

uint32_t MGFile::MakeCrc32(const uint8_t* data, size_t size) {
    if (!data) size = 0;
    uint32_t crc = 0xFFFFFFFFu;
    crc = crc_of_blocks<long_lane>(crc, data, size);
    crc = crc_of_blocks<short_lane>(crc, data, size);
    for (size_t i = 0; i < size; ++i) crc = crc_of_byte(crc ^ data[i]);
    return ~crc;
}

uint32_t MGFile::MakeCrc32(const std::string& text) {
    return MakeCrc32(bytes_of(text), text.size());
}

uint32_t MGFile::MakeCrc32Ext(const std::string& text) {
    return MakeCrc32(text);
}

uint32_t MGFile::MakeCrc32Ext(const std::vector<uint8_t>& data) {
    return MakeCrc32(data.data(), data.size());
}

uint32_t MGFile::MakeCrc32Lower(const std::string& text) {
    return MakeCrc32(LowerUtf8(text));
}

void MGFile::DataToBase64(const std::vector<uint8_t>& data, std::string& text) {
    at_edge("MGFile::DataToBase64", [&] {
        text.resize((data.size() + 2) / 3 * 4);
        const uint8_t* from = data.data();
        char* to = text.data();
        size_t left = data.size();
        for (; left >= 3; from += 3, to += 4, left -= 3) put_base64_group(from[0] << 16 | from[1] << 8 | from[2], to);
        if (left == 0) return;
        put_base64_group(from[0] << 16 | (left > 1 ? from[1] << 8 : 0), to);
        if (left == 1) to[2] = '=';
        to[3] = '=';
    });
}

void MGFile::Base64ToData(const std::string& text, std::vector<uint8_t>& data) {
    at_edge("MGFile::Base64ToData", [&] {
        data.resize(text.size() / 4 * 3 + 3);
        const uint8_t *from = bytes_of(text), *const end = from + text.size();
        uint8_t* to = data.data();
        uint32_t bits = 0;
        int number = 0; // of bits not yet given out
        while (true) {
            if (number == 0) take_base64_groups(from, end, to);
            if (from == end || *from == '\0' || *from == '=') break;
            const uint8_t value = base64_values[*from++];
            if (value == not_base64) continue;
            bits = bits << 6 | value;
            number += 6;
            if (number < 8) continue;
            number -= 8;
            *to++ = static_cast<uint8_t>(bits >> number);
        }
        data.resize(static_cast<size_t>(to - data.data()));
    });
}

void MGFile::BinToHex(const std::vector<uint8_t>& data, std::string& text) {
    at_edge("MGFile::BinToHex", [&] {
        text.clear();
        text.reserve(data.size() * 2);
        for (uint8_t byte : data) {
            text += hex_digits[byte >> 4];
            text += hex_digits[byte & 15];
        }
    });
}

void MGFile::String2Binary(const std::string& text, std::vector<uint8_t>& data) {
    at_edge("MGFile::String2Binary", [&] {
        MGErr err =
            error_of("String2Binary",
                     "Ошибка преобразования строки в бинарном формате типа (0d73d6f4...) в вектор бинарных данных");
        data.clear();
        if (text.size() % 2 != 0) fail(err, "В строке нет четного количества символов", "(n%2 != 0)");
        std::vector<uint8_t> bytes;
        bytes.reserve(text.size() / 2);
        for (size_t i = 0; i < text.size(); i += 2) {
            const int high = hex_value(text[i]), low = hex_value(text[i + 1]);
            if (high < 0 || low < 0) fail(err, "В строка содержит недопустимый символ", "str[i]");
            bytes.push_back(static_cast<uint8_t>(high << 4 | low));
        }
        data = std::move(bytes);
    });
}

bool MGFile::CompareBinary(const std::vector<uint8_t>& a, const std::vector<uint8_t>& b) {
    return a == b;
}

bool MGFile::GetUtf8StringFromBinary(const std::vector<uint8_t>& data, std::string& text) {
    return at_edge("MGFile::GetUtf8StringFromBinary", [&] {
        text.clear();
        if (data.empty() || data.back() != 0) return false;
        std::string candidate(data.begin(), data.end() - 1);
        if (!IsUtf8String(candidate)) return false; // nor with a zero byte inside
        text = std::move(candidate);
        return true;
    });
}

void MGFile::GetUtf8StringFromBinaryExt(const std::vector<uint8_t>& data, std::string& text) {
    at_edge("MGFile::GetUtf8StringFromBinaryExt", [&] {
        MGErr err = error_of("GetUtf8StringFromBinaryExt", "Ошибка преобразования данных в строку");
        if (!GetUtf8StringFromBinary(data, text))
            fail(err, "Полученные данные не являются строкой в формате UTF-8", "GetUtf8StringFromBinary");
    });
}

void MGFile::ConvertStringWithNullToBinary(const std::string& text, std::vector<uint8_t>& data) {
    at_edge("MGFile::ConvertStringWithNullToBinary", [&] {
        data.assign(text.begin(), text.end());
        data.push_back(0);
    });
}
