// The copying of a file of any length, with the length of its pieces as an argument.
#pragma once

#include <cstddef>

namespace vorma {

// Copies from to to in pieces of at most piece_max bytes, through one buffer. With test_size, a source that is not size
// bytes long makes it remove the target again. Throws MGErr; any other failure leaves a partial target behind.
void copy_in_pieces(const char* from, const char* to, bool test_size, size_t size, size_t piece_max);

} // namespace vorma
