// Files that tests compare with byte for byte, or begin with.
#pragma once

#include <fstream>
#include <iterator>
#include <string>

inline std::string golden(const std::string& name) {
    std::ifstream file(GOLDEN "/" + name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}
