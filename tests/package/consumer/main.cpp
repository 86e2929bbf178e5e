// A service in small, with what the package brings: a failure goes into the log, and the log can be read back.
#include "all_headers.h"

#include <iostream>

int main(int, char** argv) {
    const std::string dir = argv[1];
    MGSocket service;
    service.SetLogFile((dir + "/log").c_str());
    std::vector<uint8_t> data;
    try {
        MGFile::ReadFileVector(dir + "/absent", data);
        return 1;
    } catch (MGErr& err) {
        service.PrintErrInLogFile(err);
    }
    std::string text;
    MGFile::ReadFileString(dir + "/log", text);
    std::cout << text;
    const bool told = text.find(dir + "/absent") != std::string::npos;
    return told && string_is_ip("192.0.2.1") && decode_string(code_string("пароль")) == "пароль" ? 0 : 1;
}
