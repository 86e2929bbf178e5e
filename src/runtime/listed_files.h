// What listings of directories give. Plain values.
#pragma once

#include <cstdint>
#include <string>

// One entry of a detailed directory listing.
struct MGFileAndSize {
    std::string name;  // bare name, or full path if asked for
    uint64_t size = 0; // bytes; 0 if the file could not be examined
    uint32_t crc = 0;  // CRC-32 of name, for a quick comparison of two listings
};

// One file of a family of numbered names.
struct MGFileNumExt {
    std::string name; // bare name
    uint32_t num = 0; // the number in it
};

// Orders numbered files by their number, ascending.
struct MGFileNumExtCompare {
    bool operator()(const MGFileNumExt& a, const MGFileNumExt& b) const { return a.num < b.num; }
};
