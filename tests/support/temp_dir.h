// Files of tests, and a directory of its own for one test, removed with all that it holds.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

inline std::string read_file(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

class TempDir {
public:
    TempDir() {
        std::string name = (std::filesystem::temp_directory_path() / "vorma-test-XXXXXX").string();
        if (!mkdtemp(name.data())) throw std::runtime_error("mkdtemp");
        path_ = name;
    }
    ~TempDir() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    // The directory itself, or the path of NAME in it.
    const std::string& path() const { return path_; }
    std::string path(const std::string& name) const { return path_ + "/" + name; }

    void write(const std::string& name, const std::string& content) const {
        std::ofstream(path(name), std::ios::binary) << content;
    }
    std::string read(const std::string& name) const { return read_file(path(name)); }

private:
    std::string path_;
};
