// What moving bytes over a connection needs, whether bare or in TLS records.
#pragma once

#include "app/mg_err.h"
#include "net/mg_socket.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace vorma {

inline constexpr char too_much[] = "Прочитанное количество данных превышает требуемое занчение";

// Whether a call on a connection failed because there is none any more. The same end can show as a hang-up to a wait,
// as one of these errors to the call behind it, or as no bytes at all: wherever it shows, it counts as a close.
inline bool is_connection_end(int error) {
    switch (error) {
    case ECONNRESET:
    case EPIPE:
    case ETIMEDOUT:
    case EHOSTUNREACH:
    case ENETUNREACH:
        return true;
    }
    return false;
}

// Runs step; false if it failed because the connection has ended.
template <class Step>
bool while_connected(Step&& step) {
    try {
        step();
        return true;
    } catch (const MGErr& err) {
        if (is_connection_end(err.err_code)) return false;
        throw;
    }
}

// Refuses a descriptor of -1 with error().
template <class Error>
void if_not_open(const Error& error, int sock) {
    if (sock >= 0) return;
    MGErr err = error();
    MGSocket::IfErrSockExt(err, sock);
}

// The error of MGSocket::Recv, with errno.
[[noreturn]] void fail_recv();

// Something came: the clock of inactivity counts from here, if a test has started it.
void begin_quiet(MGSocket& socket);

// Ends a send through sock that takes nothing for so many seconds.
void limit_sends(int sock, uint32_t seconds);

// Room for `more` bytes of the `missing` ones: grows by doubling, but not beyond what can come.
inline void make_room(std::vector<uint8_t>& data, size_t more, uint64_t missing) {
    if (data.capacity() - data.size() < more)
        data.reserve(data.size() + std::max<uint64_t>(more, std::min<uint64_t>(missing, data.capacity())));
}

} // namespace vorma
