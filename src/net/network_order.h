// Numbers in packets: the highest byte first, at any address.
#pragma once

#include <cstdint>

namespace vorma {

inline uint16_t get16(const uint8_t* bytes) {
    return static_cast<uint16_t>(bytes[0] << 8 | bytes[1]);
}

inline uint32_t get32(const uint8_t* bytes) {
    return static_cast<uint32_t>(get16(bytes)) << 16 | get16(bytes + 2);
}

inline void put16(uint8_t* bytes, uint16_t number) {
    bytes[0] = static_cast<uint8_t>(number >> 8);
    bytes[1] = static_cast<uint8_t>(number);
}

inline void put32(uint8_t* bytes, uint32_t number) {
    put16(bytes, static_cast<uint16_t>(number >> 16));
    put16(bytes + 2, static_cast<uint16_t>(number));
}

} // namespace vorma
