// Blocks of memory with an owner, and byte operations.
#include "cert/der_memory.h"

#include <algorithm>

using namespace vorma;

DerBytes vorma::mem_alloc(size_t n) {
    return std::make_unique_for_overwrite<uint8_t[]>(n + 1);
}

DerBytes vorma::mem_alloc_copy(const uint8_t* source, size_t n) {
    DerBytes copy = mem_alloc(n);
    copy_byte(copy.get(), source, n);
    return copy;
}

DerText vorma::str_alloc_copy(const uint8_t* source, size_t n) {
    DerText text = std::make_unique_for_overwrite<char[]>(n + 2);
    std::copy_n(source, n, text.get());
    text[n] = '\0';
    return text;
}

void vorma::set_mem_val(uint8_t* memory, uint8_t value, size_t n) {
    std::fill_n(memory, n, value);
}

bool vorma::memory_compare(const uint8_t* a, const uint8_t* b, size_t n) {
    return n == 0 || std::equal(a, a + n, b);
}

void vorma::copy_byte(uint8_t* target, const uint8_t* source, size_t n) {
    std::copy_n(source, n, target);
}

void vorma::convert_sign(uint8_t* data, size_t n) {
    if (n > 1) std::reverse(data, data + n);
}
