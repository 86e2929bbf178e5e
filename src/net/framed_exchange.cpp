// The exchange of messages: a size, an answer, the bytes, an answer.
#include "app/mg_err.h"
#include "net/address_syntax.h"
#include "net/exchange.h"
#include "net/mg_ip.h"
#include "net/mg_socket.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <sys/socket.h>

using namespace vorma;

namespace {

constexpr uint64_t no_limit = UINT64_MAX;

constexpr char too_little[] = "Требуемое количество данных не было получено";

struct Piece {
    size_t size; // 0 if nothing has come yet
    bool closed; // nothing will come any more
};

// Appends what has come without waiting for it, at most MGSK_READ_SIZE bytes of the `missing` ones.
Piece append_piece(int sock, std::vector<uint8_t>& data, uint64_t missing) {
    const size_t had = data.size(), wanted = std::min<uint64_t>(missing, MGSK_READ_SIZE);
    make_room(data, wanted, missing);
    data.resize(had + wanted);
    ssize_t got;
    do got = recv(sock, data.data() + had, wanted, MSG_DONTWAIT);
    while (got < 0 && errno == EINTR);
    data.resize(had + static_cast<size_t>(std::max<ssize_t>(got, 0)));
    if (got < 0 && errno == EAGAIN) return {0, false};
    if (got < 0 && !is_connection_end(errno)) fail_recv();
    return {static_cast<size_t>(std::max<ssize_t>(got, 0)), got <= 0};
}

} // namespace

void MGSocket::SendCode(int sock, uint64_t code) {
    at_edge("MGSocket::SendCode", [&] {
        if (Send(sock, &code, sizeof code) != sizeof code)
            fail(error_of("SendCode", "Ошибка отправки кода возврата"), "Ошибка количества отправленных байт",
                 "( bytes_write != sizeof(int64_t) )");
    });
}

uint64_t MGSocket::RecvCode(int sock) {
    return at_edge("MGSocket::RecvCode", [&] {
        uint64_t code = 0;
        std::vector<uint8_t> in_data;
        ClearBeginTimeForInactive();
        TestLimitInactive();
        // A time-out may fall into the middle of the code: only the rest of it is still to come.
        while (!RecvAll(sock, in_data, sizeof code - in_data.size(), 0)) TestLimitInactive();
        if (in_data.size() != sizeof code) {
            MGErr err = error_of("RecvCode", "Ошибка полчения кода возврата");
            err.num_param = static_cast<int64_t>(in_data.size());
            err.uint32_param = sizeof code;
            fail(err, "Ошибка количества полученных байт", "(in_data.size() != sizeof(uint64_t))");
        }
        std::memcpy(&code, in_data.data(), sizeof code);
        return code;
    });
}

bool MGSocket::RecvAll(int sock, std::vector<uint8_t>& data, uint64_t only_equal, uint64_t less_then) {
    return at_edge("MGSocket::RecvAll", [&] {
        const auto error = [] { return error_of("RecvAll", "Ошибка получения данных из сетевого соединения"); };
        if (only_equal != 0 && less_then != 0) {
            MGErr err = error();
            TestEqualAndLess(err, only_equal, less_then);
        }
        // No more is read than is missing; the first byte above a limit ends it.
        const uint64_t most = only_equal != 0  ? only_equal
                              : less_then != 0 ? less_then + (less_then < no_limit)
                                               : no_limit;
        uint64_t read_all = 0;
        for (;;) {
            bool is_close = false;
            if (!RecvPoll(sock, is_close)) return false;
            // Whoever waits for the beginning of something may find the peer gone, but half of it is a fault.
            if (is_close && (only_equal == 0 || read_all == 0)) return true;
            // While pieces come whole there is more to read, and no need to wait for it.
            for (bool whole = true; whole;) {
                const Piece piece = is_close ? Piece{0, true} : append_piece(sock, data, most - read_all);
                if (piece.closed) {
                    if (only_equal != 0) fail(error(), too_little, "(last_equal > 0)");
                    return true;
                }
                read_all += piece.size;
                if (only_equal != 0 && read_all == only_equal) return true;
                if (less_then != 0 && read_all > less_then) fail(error(), too_much, "(read_all > less_then)");
                whole = piece.size == MGSK_READ_SIZE;
                if (whole) begin_quiet(*this);
            }
        }
    });
}

bool MGSocket::SendData(int sock, const std::vector<uint8_t>& data) {
    return at_edge("MGSocket::SendData", [&] {
        const auto error = [&] {
            MGErr err = error_of("SendData", "Ошибка отправки данных через сетевое соединение");
            err.num_param = static_cast<int64_t>(data.size());
            return err;
        };
        if (!SendPoll(sock)) return false;
        SendCode(sock, data.size());
        if (RecvCode(sock) != 0) fail(error(), "Первый код возврата не равен нулю", "RecvCode 1");
        if (!SendAll(sock, data)) fail(error(), "Данные не отправлены из-за разрыва соединения", "SendAll");
        if (RecvCode(sock) != 0) fail(error(), "Второй код возврата не равен нулю", "RecvCode 2");
        return true;
    });
}

bool MGSocket::RecvData(int sock, std::vector<uint8_t>& data, uint64_t only_equal, uint64_t less_then) {
    return at_edge("MGSocket::RecvData", [&] {
        MGErr err = error_of("RecvData", "Ошибка получения данных из сетевого соединения");
        err.num_param = static_cast<int64_t>(only_equal);
        err.uint32_param = static_cast<uint32_t>(less_then);
        data.clear();
        try {
            TestEqualAndLess(err, only_equal, less_then);
            const uint64_t size = RecvCode(sock);
            TestEqualAndLessForRecv(err, only_equal, less_then, size);
            SendCode(sock, 0);
            ClearBeginTimeForInactive();
            TestLimitInactive();
            bool is_close = false;
            if (size == 0) {
                if (RecvPoll(sock, is_close) && !is_close) fail(err, too_much, "(data.size() > size)");
            } else if (!RecvAll(sock, data, size, 0)) {
                // The sender sends nothing further before our answer: a time-out ends what came in parts.
                while (data.size() < size) {
                    TestLimitInactive();
                    if (RecvAll(sock, data, 0, size - data.size())) break;
                }
            }
            if (data.size() < size) fail(err, too_little, "(data.size() < size)");
            SendCode(sock, 0);
        } catch (...) {
            data.clear();
            throw;
        }
        return true;
    });
}

bool MGSocket::RecvData(int sock, std::vector<uint8_t>& data) {
    return RecvData(sock, data, 0, 0);
}

void MGSocket::TestEqualAndLess(MGErr& err, uint64_t only_equal, uint64_t less_then) {
    at_edge("MGSocket::TestEqualAndLess", [&] {
        if (only_equal != 0 && less_then != 0)
            fail(err, "Нельзя задавать два параметра одновременно", "(only_equal != 0) && (less_then != 0)");
    });
}

void MGSocket::TestEqualAndLessForRecv(MGErr& err, uint64_t only_equal, uint64_t less_then, uint64_t recv_byte) {
    at_edge("MGSocket::TestEqualAndLessForRecv", [&] {
        if (only_equal != 0) {
            if (recv_byte != only_equal)
                fail(err,
                     "Количество полученных байт не совпадает с количеством байт, заданным параметром с точным "
                     "значением",
                     "( recv_byte != only_equal )");
        } else if (less_then != 0 && recv_byte > less_then) {
            fail(err,
                 "Количество полученных байт превысило количество байт, заданное ограничением, которое нельзя "
                 "превышать",
                 "( recv_byte > less_then )");
        }
    });
}

std::string MGSocket::SprintfBuf(const void* buf, size_t size) {
    return at_edge("MGSocket::SprintfBuf", [&] { return sprintf_buf(buf, size); });
}

void MGSocket::Data2Vector(const void* data, size_t size, std::vector<uint8_t>& out) {
    at_edge("MGSocket::Data2Vector", [&] { MGIp::Data2Vector(data, size, out); });
}

void MGSocket::ClearMem(void* data, size_t size) {
    std::memset(data, 0, size);
}

void MGSocket::CopyMem(void* to, const void* from, size_t size) {
    std::memcpy(to, from, size);
}
