// The syntax of what a user types as an IPv4 address, a network, an identifier or a number, and the number formats of
// the system. Free functions without state; they judge by their result only and open nothing. Empty input is never an
// address: a field that may stay empty is tested with string_is_empty first. The dialogs call them before anything is
// stored.
//
// An address is a 32-bit number in host order, the first octet in the top byte: 1.2.3.4 is 0x01020304. Any thread
// may call these.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

// The alphabet of identifiers. It also stands in the message that refuses one.
inline constexpr char id_allow_only[] = "abcdefghijklmnopqrstuvwxyz0123456789_";

// Whether s is null, empty, or only blanks, tabs, line feeds and carriage returns.
bool string_is_empty(const char* s);
// Whether no byte has its top bit set; so an empty string passes, and null.
bool string_is_ansi(const char* s);
// Whether s is a run of the digits 0 to 9, at least one. Null is none.
bool string_is_num(const char* s);
// Whether every byte stands in id_allow_only; so an empty string passes. s must not be null.
bool string_is_id(const char* s);
// Whether s is an object identifier in dotted form: numbers of digits, two or more, one dot between each. Null is none.
bool string_is_oid(const char* s);

// Four numbers up to 255 with dots between; leading zeros are allowed and mean nothing. A number of any length above
// the range is refused like any other. Null is no address.
bool string_is_ip(const char* s);
// Address "/" prefix length, 0 to 32, no bit of the address set beyond the prefix.
bool string_is_net(const char* s);
// Address "/" prefix length, whatever the bits beyond the prefix.
bool string_is_ip_net(const char* s);

// string_is_ip that also stores the address; ip is written only on success. Throws MGErr only where memory runs out.
bool string_is_ip_n(const char* s, uint32_t& ip);
// string_is_net, or with any_host_bits string_is_ip_net, that also stores address and prefix length. Both are written
// only on success. Throws as string_is_ip_n.
bool string_is_net_n(const char* s, uint32_t& ip, int& prefix, bool any_host_bits);
// Gives in out the network of an address with a prefix length: 192.168.1.77/24 gives 192.168.1.0/24. False, with out
// unchanged, if s is none. Throws as string_is_ip_n.
bool convert_ip_to_net(const char* s, std::string& out);

// The decimal number in s. False, with *value unchanged, if s is null, empty or not all digits. A number that doesn't
// fit an int throws std::out_of_range, and not an MGErr.
bool string_to_int(const char* s, int* value);

std::string int_to_string(int number);         // "%d"
std::string uint32_to_string(uint32_t number); // "%u"
std::string uint64_to_string(uint64_t number); // "%lu"

// Hexadecimal dump: each byte as "%02X ", a line feed after each 16 bytes and at the end, but never two for one line.
// No bytes give one line feed, and a null has none.
std::string sprintf_buf(const void* data, size_t size);
