// Bytes as tests write them and judge them.
#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <vector>

using Bytes = std::vector<uint8_t>;

inline Bytes bytes(std::string_view text) {
    return {text.begin(), text.end()};
}

inline std::string text(const Bytes& data) {
    return {data.begin(), data.end()};
}

inline Bytes random_bytes(std::mt19937& random, size_t size) {
    Bytes all(size);
    for (uint8_t& byte : all) byte = static_cast<uint8_t>(random());
    return all;
}

// "30 05 ab" or "3005ab".
inline Bytes hex(std::string digits) {
    std::erase(digits, ' ');
    Bytes all;
    for (size_t at = 0; at < digits.size(); at += 2)
        all.push_back(static_cast<uint8_t>(std::stoul(digits.substr(at, 2), nullptr, 16)));
    return all;
}
