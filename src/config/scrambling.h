// How passwords stand in files: enciphered with a constant key, then in base64, so that they aren't there in clear.
// The key is the system's own, and whoever has the program can decode them: this keeps nobody out who means to get in.
// The cipher is GOST 28147-89 with feedback (RFC 4357, substitution table CryptoPro-A, no key meshing); the words of a
// block are little-endian in memory. Nothing here reports bad input; only want of memory ends in an MGErr. Any thread
// may call these.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace vorma {

// The eight words of the key. The editor and the service must hold the same.
extern const uint32_t scrambling_key[8];

} // namespace vorma

// The text for a file: base64 of the present time's low four bytes, the same again, and the enciphered password. So
// the result changes from second to second. Empty gives empty.
std::string code_string(const std::string& plain);
// The password, up to its first zero byte. What isn't a result of code_string reads as empty or as other bytes.
std::string decode_string(const std::string& coded);

// Enciphers one block, in place. The words keep their places throughout and are not exchanged at the end.
void encrypt_block(const uint32_t* key, uint32_t& n1, uint32_t& n2);
// Feedback over `blocks` whole blocks of two words; in and out may be one. state, two words, is left ready for the next
// call.
void encrypt_(uint32_t* state, const uint32_t* in, uint32_t* out, size_t blocks, const uint32_t* key);
void decrypt_(uint32_t* state, const uint32_t* in, uint32_t* out, size_t blocks, const uint32_t* key);
// The same over `size` bytes, with scrambling_key and an initial value of 8 bytes; in and out may be one.
void encrypt_buffer(const uint8_t* initial, const uint8_t* in, uint8_t* out, size_t size);
void decrypt_buffer(const uint8_t* initial, const uint8_t* in, uint8_t* out, size_t size);

// Base64 with padding, without line breaks. Decoding skips what isn't of the alphabet, and ends at the first "=".
// text is terminated, and has room for twice the size and 4 bytes more.
void binary_to_base64(const uint8_t* data, size_t size, char* text);
// data has room for as many bytes as text has characters; size takes the number of whole bytes.
void base64_to_binary(const char* text, uint8_t* data, size_t& size);
void vector_data_to_base64_string(const std::vector<uint8_t>& data, std::string& text);
void base64_string_to_vector_data(const std::string& text, std::vector<uint8_t>& data);
