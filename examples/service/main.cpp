// A service in small: it listens to nothing yet, but a failure of it goes into its log, as the editor's do.
//
//     cmake -S . -B build && cmake --build build
// or  g++ -std=c++20 main.cpp $(pkg-config --cflags --libs vorma_runtime) -o service
#include <vorma/app/log.h>
#include <vorma/app/mg_err.h>
#include <vorma/config/scrambling.h>
#include <vorma/net/address_syntax.h>
#include <vorma/net/mg_socket.h>

#include <iostream>

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: service FOLDER\n";
        return 2;
    }
    const std::string folder = argv[1];
    MGSocket service;
    service.SetLogFile((folder + "/service.log").c_str());
    try {
        std::vector<uint8_t> data;
        MGFile::ReadFileVector(folder + "/absent", data);
        return 1;
    } catch (MGErr& err) {
        service.PrintErrInLogFile(err);
    }
    std::string log;
    MGFile::ReadFileString(folder + "/service.log", log);
    std::cout << log;
    return string_is_ip("192.0.2.1") && decode_string(code_string("пароль")) == "пароль" ? 0 : 1;
}
