// Files that hold what is written, whole; GOLDEN is their directory.
#pragma once

#include <gmock/gmock.h>

#include <fstream>
#include <iterator>
#include <string>

inline std::string golden(const std::string& name) {
    std::ifstream file(GOLDEN "/" + name, std::ios::binary);
    EXPECT_TRUE(file) << name;
    return {std::istreambuf_iterator<char>(file), {}};
}
