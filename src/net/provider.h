// The closed crypto provider, as its callers see it: a shared library that is loaded at run time and may be absent.
// Text that comes from it is in CP1251 where told.
#pragma once

#include <cstdint>
#include <string>

// Where the library lies; a test points it to a stand-in.
extern std::string provider_library;

// A block of memory. One that the provider hands out is released by TRELM_FreeMem with its data.
struct mem_blk {
    uint32_t size = 0;
    void* data = nullptr; // zero-terminated where it is a text; null when there is nothing
};

// The text converted from CP1251 to UTF-8, as far as it could be.
std::string Ansi1251toUtf8(std::string text);
