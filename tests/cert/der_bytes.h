// DER written by hand for tests.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

using Bytes = std::vector<uint8_t>;

// "30 05 ab" or "3005ab".
inline Bytes hex(const std::string& digits) {
    std::string packed;
    for (char c : digits)
        if (c != ' ') packed += c;
    Bytes bytes;
    for (size_t i = 0; i + 1 < packed.size(); i += 2)
        bytes.push_back(static_cast<uint8_t>(std::stoul(packed.substr(i, 2), nullptr, 16)));
    return bytes;
}

inline Bytes join(std::initializer_list<Bytes> parts) {
    Bytes all;
    for (const Bytes& part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
}

inline Bytes text(const std::string& value) {
    return {value.begin(), value.end()};
}

// One item: identifier byte, length in its shortest form, content.
inline Bytes item(uint8_t identifier, const Bytes& content) {
    const size_t size = content.size();
    Bytes head = {identifier};
    if (size > 0xff)
        head.insert(head.end(), {0x82, static_cast<uint8_t>(size >> 8)});
    else if (size > 0x7f)
        head.push_back(0x81);
    head.push_back(static_cast<uint8_t>(size));
    return join({head, content});
}
