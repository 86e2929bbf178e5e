// What building, parsing and fragmenting packets share of the layout of an IPv4 header (RFC 791).
#pragma once

#include <cstddef>
#include <cstdint>

namespace vorma {

inline constexpr size_t min_ip_header = 20;
inline constexpr uint8_t more_fragments = 1; // in MGIp::m_flags
inline constexpr int flags_shift = 13;       // of the flags, above the offset of a fragment

} // namespace vorma
