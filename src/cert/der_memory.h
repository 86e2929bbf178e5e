// Memory for what the DER reader and MGCert own: blocks with an owner, and byte operations that bear a length of 0
// with any pointer. An allocation failure is std::bad_alloc. Any thread may use these, on objects of its own.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

using DerBytes = std::unique_ptr<uint8_t[]>;
using DerText = std::unique_ptr<char[]>;

namespace vorma {

// n + 1 bytes, not cleared.
DerBytes mem_alloc(size_t n);
// A copy of n bytes in a block of n + 1; no terminator is written.
DerBytes mem_alloc_copy(const uint8_t* source, size_t n);
// A copy of n bytes in a block of n + 2, with a terminating zero behind them.
DerText str_alloc_copy(const uint8_t* source, size_t n);
// Releases the block; null stays null.
template <class Element>
void mem_free(std::unique_ptr<Element[]>& memory) {
    memory.reset();
}

void set_mem_val(uint8_t* memory, uint8_t value, size_t n);
// Whether n bytes are equal; true for n = 0.
bool memory_compare(const uint8_t* a, const uint8_t* b, size_t n);
void copy_byte(uint8_t* target, const uint8_t* source, size_t n);
// Reverses n bytes in place.
void convert_sign(uint8_t* data, size_t n);

} // namespace vorma
