// The exchange of messages over a TLS session: the session turns bytes into bytes, the socket moves them. On the wire
// stand the session's records and nothing else. A failure ends the session: it is never used again.
#include "app/mg_err.h"
#include "net/exchange.h"
#include "net/mg_socket.h"
#include "net/mg_trelm.h"
#include "runtime/mg_info.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <sys/socket.h>

using namespace vorma;

namespace {

// What an operation does, step by step, in the extended debug log of its socket object.
class Steps {
public:
    Steps(MGSocket& socket, const char* function) : socket_(socket), function_(function) { state("BEGIN"); }

    void state(const char* value) {
        print([&](MGInfo& info) { info.AddRow(function_, value); });
    }
    // "TlsConnSend.out_data.size(): 37"
    void size(const char* data, uint64_t value) {
        print([&](MGInfo& info) { info.AddRow((std::string(function_) + "." + data + ".size()").c_str(), value); });
    }

private:
    template <class Fill>
    void print(Fill&& fill) {
        if (!socket_.GetExtDebugLog()) return;
        MGInfo info;
        fill(info);
        socket_.PrintDebugLogFile(info, true);
    }

    MGSocket& socket_;
    const char* function_;
};

// How many bytes the next read may take: no more than the rest of the present record. What follows stays in the socket,
// where a wait finds it: a message right behind the last flight of a handshake would be swallowed with the flight, and
// two codes in a row would be taken for one. Of bytes that are no TLS record all may be read; the session judges them.
size_t readable(int sock, TlsRecordPosition& at) {
    if (at.left == 0) {
        if (at.known == sizeof at.header) at.known = 0;
        ssize_t got; // waits as the read itself would
        do got = recv(sock, at.header + at.known, sizeof at.header - at.known, MSG_PEEK);
        while (got < 0 && errno == EINTR);
        if (got <= 0) return MGSK_READ_SIZE; // the read itself will tell
        at.known += static_cast<size_t>(got);
        at.left = static_cast<size_t>(got);
        if (at.known == sizeof at.header) {
            const bool record = at.header[0] >= 20 && at.header[0] <= 23 && at.header[1] == 3;
            at.left += record ? at.header[3] << 8 | at.header[4] : MGSK_READ_SIZE;
        }
    }
    return std::min(at.left, MGSK_READ_SIZE);
}

// Runs body; a failure ends the session and goes on. That the session can't be ended is then only worth the log.
template <class Body>
void in_session(MGSocket& socket, MGTrelm& trelm, Steps& steps, Body&& body) {
    try {
        body();
    } catch (...) {
        if (!socket.IsTurnOffTls()) {
            try {
                trelm.TlsDestroy();
            } catch (MGErr& second) {
                socket.PrintErrInLogFile(second);
            }
        }
        steps.state("ERROR");
        throw;
    }
    steps.state("END");
}

// Passes an orderly end on; one that can't come from here becomes err.
[[noreturn]] void pass_on(const MGExit& et, MGErr& err) {
    switch (et.GetCode()) {
    case MGSK_EXIT_CLOSE_CONNECT:
    case MGSK_EXIT_SIGNAL:
    case MGSK_EXIT_CLOSE_TIMEOUT:
    case MGSK_EXIT_LIMIT_AUTH:
    case MGSK_EXIT_LIMIT_INACTIVE:
    case MGSK_EXIT_RESET_TIMEOUT:
        throw et;
    }
    err.err_code = et.GetCode();
    fail(err, "Ошибка в логике программы", "et.GetCode()");
}

// The handshake from the peer's first flight on.
void shake_hands(MGSocket& socket, int sock, MGSignal* signal, MGTrelm& trelm, Steps& steps) {
    std::vector<uint8_t> in_data, out_data;
    socket.ClearBeginTimeForAuth();
    for (;;) {
        socket.RecvPollWait(sock, signal, false, true);
        socket.RecvAuth(sock, trelm, in_data, false);
        steps.size("in_data", in_data.size());
        trelm.TlsHandshake(in_data, out_data);
        steps.size("out_data", out_data.size());
        socket.ConnSend(sock, out_data);
        if (trelm.TlsComplete()) {
            steps.state("OK");
            return;
        }
        steps.state("CONTINUE");
    }
}

} // namespace

void MGSocket::RecvAuth(int sock, MGTrelm& trelm, std::vector<uint8_t>& data, bool is_add, size_t at_most) {
    at_edge("MGSocket::RecvAuth", [&] {
        uint8_t buffer[MGSK_READ_SIZE];
        const size_t wanted = m_turn_off_tls ? std::min(at_most, MGSK_READ_SIZE) : readable(sock, trelm.position);
        mem_blk block;
        block.data = buffer;
        while_connected([&] { block.size = static_cast<uint32_t>(Recv(sock, buffer, wanted)); });
        trelm.position.left -= std::min<size_t>(trelm.position.left, block.size);
        if (block.size == 0) throw MGExit(MGSK_EXIT_CLOSE_CONNECT);
        if (is_add)
            trelm.copy_mem_blk_add_to_data(block, data);
        else
            trelm.copy_mem_blk_to_data(block, data);
    });
}

bool MGSocket::TlsClientAuth(MGSignal* signal, MGTrelm& trelm, const std::string& server, bool option) {
    return at_edge("MGSocket::TlsClientAuth", [&] {
        if (m_turn_off_tls) return true;
        MGErr err = error_of("TlsClientAuth", "Ошибка установки TLS соединения клиента");
        Steps steps(*this, "TlsClientAuth");
        try {
            in_session(*this, trelm, steps, [&] {
                if (server.empty()) fail(err, "Отсутствует имя сервера", "server.empty()");
                std::vector<uint8_t> out_data;
                trelm.TlsCreate(server, option, false);
                trelm.TlsHandshake({}, out_data);
                steps.size("out_data", out_data.size());
                if (!SendPoll(m_sock)) throw MGExit(MGSK_EXIT_WAIT_TIMEOUT);
                if (!SendAll(m_sock, out_data)) throw MGExit(MGSK_EXIT_CLOSE_CONNECT);
                shake_hands(*this, m_sock, signal, trelm, steps);
            });
        } catch (const MGExit& et) {
            if (et.GetCode() == MGSK_EXIT_WAIT_TIMEOUT) return false;
            pass_on(et, err);
        }
        return true;
    });
}

void MGSocket::TlsServerAuth(MGSignal* signal, MGTrelm& trelm, bool option) {
    at_edge("MGSocket::TlsServerAuth", [&] {
        if (m_turn_off_tls) return;
        MGErr err = error_of("TlsServerAuth", "Ошибка установки TLS соединения сервера");
        Steps steps(*this, "TlsServerAuth");
        try {
            in_session(*this, trelm, steps, [&] {
                trelm.TlsCreate("", false, option);
                shake_hands(*this, m_recv_sock, signal, trelm, steps);
            });
        } catch (const MGExit& et) {
            pass_on(et, err);
        }
    });
}

void MGSocket::TlsServerAuthCert(MGTrelm& trelm, std::vector<uint8_t>& cert) {
    at_edge("MGSocket::TlsServerAuthCert", [&] {
        constexpr uint32_t peer_certificate = 1;
        cert.clear();
        if (!m_turn_off_tls) trelm.TlsQuery(peer_certificate, cert);
    });
}

void MGSocket::TlsConnSend(int sock, MGTrelm& trelm, const std::vector<uint8_t>& in_data) {
    at_edge("MGSocket::TlsConnSend", [&] {
        if (in_data.empty()) return;
        MGErr err = error_of("TlsConnSend", "Ошибка TLS зашифрования и отпарвки данных");
        Steps steps(*this, "TlsConnSend");
        try {
            in_session(*this, trelm, steps, [&] {
                steps.size("in_data", in_data.size());
                if (m_turn_off_tls) {
                    ConnSend(sock, in_data);
                    return;
                }
                std::vector<uint8_t> out_data;
                trelm.TlsWrite(in_data, out_data);
                steps.size("out_data", out_data.size());
                ConnSend(sock, out_data);
            });
        } catch (const MGExit& et) {
            pass_on(et, err);
        }
    });
}

void MGSocket::TlsConnRecv(int sock, MGSignal* signal, MGTrelm& trelm, uint64_t only_equal,
                           std::vector<uint8_t>& out_data, bool is_add) {
    at_edge("MGSocket::TlsConnRecv", [&] {
        MGErr err = error_of("TlsConnRecv", "Ошибка получения и TLS расшифрования данных");
        Steps steps(*this, "TlsConnRecv");
        if (!is_add) out_data.clear();
        // Waits, takes what came and gives true if that made data; false if the session needs more, or wants to speak.
        std::vector<uint8_t> in_data;
        const auto received = [&] {
            ClearBeginTimeForInactive();
            TestLimitInactive();
            while (!RecvPollWait(sock, signal, true, false)) TestLimitInactive();
            const uint64_t missing = only_equal - std::min<uint64_t>(only_equal, out_data.size());
            make_room(out_data, std::min<uint64_t>(missing, MGSK_READ_SIZE), missing);
            if (m_turn_off_tls) {
                RecvAuth(sock, trelm, out_data, true, missing == 0 ? MGSK_READ_SIZE : missing);
                return true;
            }
            RecvAuth(sock, trelm, in_data, false);
            steps.size("in_data", in_data.size());
            if (trelm.TlsRead(in_data, out_data, true)) return true;
            if (!trelm.TlsComplete()) { // the peer has begun a new handshake
                std::vector<uint8_t> answer;
                trelm.TlsWrite({}, answer);
                ConnSend(sock, answer);
            }
            steps.state("CONTINUE");
            return false;
        };
        try {
            in_session(*this, trelm, steps, [&] {
                do
                    while (!received()) {
                    }
                while (out_data.size() < only_equal);
                steps.size("out_data", out_data.size());
            });
        } catch (const MGExit& et) {
            pass_on(et, err);
        }
    });
}

void MGSocket::TlsSendCode(MGTrelm& trelm, int sock, uint64_t code) {
    at_edge("MGSocket::TlsSendCode", [&] {
        std::vector<uint8_t> code_data(sizeof code);
        std::memcpy(code_data.data(), &code, sizeof code);
        TlsConnSend(sock, trelm, code_data);
    });
}

uint64_t MGSocket::TlsRecvCode(MGErr& err, MGSignal* signal, MGTrelm& trelm, int sock) {
    return at_edge("MGSocket::TlsRecvCode", [&] {
        uint64_t code = 0;
        std::vector<uint8_t> code_data;
        TlsConnRecv(sock, signal, trelm, sizeof code, code_data, false);
        if (code_data.size() != sizeof code) {
            err.num_param = static_cast<int64_t>(code_data.size());
            fail(err, "Размер кода возврата не равен 8", "(code_data.size() != sizeof(uint64_t))");
        }
        std::memcpy(&code, code_data.data(), sizeof code);
        return code;
    });
}

bool MGSocket::TlsSendData(MGTrelm& trelm, MGSignal* signal, int sock, const std::vector<uint8_t>& data) {
    return at_edge("MGSocket::TlsSendData", [&] {
        MGErr err = error_of("TlsSendData", "Ошибка отправки данных через сетевое соединение по протоколу TLS");
        err.num_param = static_cast<int64_t>(data.size());
        if (data.empty()) return true;
        const auto need_zero = [&](const char* mess_2, const char* func_2) {
            const uint64_t code = TlsRecvCode(err, signal, trelm, sock);
            if (code == 0) return;
            err.num_param = static_cast<int64_t>(code);
            fail(err, mess_2, func_2);
        };
        try {
            TlsSendCode(trelm, sock, data.size());
            need_zero("Первый код возврата не равен нулю", "RecvCode 1");
            TlsConnSend(sock, trelm, data);
            need_zero("Второй код возврата не равен нулю", "RecvCode 2");
        } catch (const MGExit&) {
            return false;
        }
        return true;
    });
}

bool MGSocket::TlsRecvData(MGTrelm& trelm, MGSignal* signal, int sock, std::vector<uint8_t>& data, uint64_t only_equal,
                           uint64_t less_then) {
    return at_edge("MGSocket::TlsRecvData", [&] {
        MGErr err = error_of("TlsRecvData", "Ошибка получения данных из сетевого соединения по протоколу TLS");
        err.num_param = static_cast<int64_t>(only_equal);
        err.uint32_param = static_cast<uint32_t>(less_then);
        data.clear();
        try {
            TestEqualAndLess(err, only_equal, less_then);
            const uint64_t size = TlsRecvCode(err, signal, trelm, sock);
            TestEqualAndLessForRecv(err, only_equal, less_then, size);
            TlsSendCode(trelm, sock, 0);
            TlsConnRecv(sock, signal, trelm, size, data, false);
            if (data.size() > size) fail(err, too_much, "(data.size() > size)");
            TlsSendCode(trelm, sock, 0);
        } catch (const MGExit& et) {
            data.clear();
            if (et.GetCode() == MGSK_EXIT_WAIT_TIMEOUT) return false;
            pass_on(et, err);
        } catch (...) {
            data.clear();
            throw;
        }
        return true;
    });
}
