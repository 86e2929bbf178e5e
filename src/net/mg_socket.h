// The TCP layer of the service, and what the kernel knows of interfaces and addresses. One object belongs to one
// thread; MGSignal alone is shared with another. Any thread may call what is static. IPv4 only.
//
// A conversation lives by one idea: time-outs are short, the waiting loops around them are long, and between two waits
// a loop looks at the exit flag and at the limits. An orderly end is thrown as MGExit with an MGSK_EXIT_* code, a
// failure as MGErr. A signal that interrupts a call breaks nothing: a wait goes on for what is left of its time. A
// connection that was reset or given up counts as closed, wherever that shows. A descriptor of -1 is refused at once.
// SIGPIPE is the process's affair: it is to be ignored where a peer may close while we send.
//
// A default-constructed object serves for the questions about interfaces. The sections bear the names of the source
// files that hold them.
#pragma once

#include "../app/mg_err.h"
#include "../runtime/mg_file.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <mutex>
#include <netinet/in.h>
#include <poll.h>
#include <string>
#include <vector>

// The codes of MGExit.
inline constexpr int32_t MGSK_EXIT_CLOSE_CONNECT = 1;  // the peer closed the connection
inline constexpr int32_t MGSK_EXIT_SIGNAL = 2;         // the exit flag was set
inline constexpr int32_t MGSK_EXIT_WAIT_TIMEOUT = 3;   // the connection to the server has failed
inline constexpr int32_t MGSK_EXIT_CLOSE_TIMEOUT = 4;  // a socket error was found before a send
inline constexpr int32_t MGSK_EXIT_LIMIT_AUTH = 5;     // the time for authentication is up
inline constexpr int32_t MGSK_EXIT_LIMIT_INACTIVE = 6; // the time of inactivity is up
inline constexpr int32_t MGSK_EXIT_RESET_TIMEOUT = 7;  // the life of the connection is up

// Bytes asked of one Recv, whatever the size of a message or record.
inline constexpr size_t MGSK_READ_SIZE = 17408;

class MGIp;
class MGTrelm;

// The flag by which another thread tells a conversation to end.
class MGSignal {
public:
    void SetSignalExit(bool exit) {
        std::lock_guard lock(mutex_);
        exit_ = exit;
    }
    bool GetSignalExit() {
        std::lock_guard lock(mutex_);
        return exit_;
    }

private:
    std::mutex mutex_;
    bool exit_ = false;
};

// One row of the kernel's interface index.
struct MGIndexDevs {
    uint32_t index = 0;
    std::string name;
};

// One address of an interface, dotted; 0.0.0.0 where the interface has no broadcast address.
struct MGDevAddr {
    std::string addr;
    std::string netmask;
    std::string broadaddr;
};

// One interface that has at least one IPv4 address.
struct MGDevs {
    std::string name;
    bool if_up = false;
    bool if_broadcast = false;
    bool if_debug = false;
    bool if_p2p = false;
    bool if_notrailers = false;
    bool f_loopback = false;
    bool if_running = false;
    bool if_noarp = false;
    std::array<uint8_t, 6> mac{};
    std::vector<MGDevAddr> addrs;
};

class MGSocket : public MGFile {
public:
    MGSocket() = default;
    // Clear.
    ~MGSocket();

    int32_t m_connect_error = 0;    // the socket error that SendPoll last found, 0 if none
    bool m_turn_off_tls = false;    // the TLS operations move plain bytes
    int32_t m_sock = -1;            // the listening or connecting socket
    int32_t m_recv_sock = -1;       // the accepted socket
    bool m_is_listen = false;       // m_sock or another socket was made to listen
    uint32_t m_input_timeout = 15;  // seconds of one wait for reading
    uint32_t m_output_timeout = 15; // seconds of one wait for writing
    int32_t m_raw_sock = -1;        // sends whole IP packets
    // Limits in seconds, 0 for none, each with the time since which it counts, 0 until the first test starts it.
    int64_t m_limit_auth = 0;
    time_t m_begin_auth = 0;
    int64_t m_limit_inactive = 0;
    time_t m_begin_inactive = 0;
    int64_t m_reset_timeout = 0;
    time_t m_begin_reset = 0;
    int32_t m_tun_sock = -1; // the TUN device

    // --- interfaces: what the kernel knows. IPv4 only; no connection is used. ---

    // Appends the machine's addresses in the order of getifaddrs, the loopback's and those of interfaces that are down
    // too. ips isn't emptied, here and in GetIps and get_dev_ips.
    void GetLocalIps(std::vector<std::string>& ips);
    // Appends the IPv4 addresses of a name, by getaddrinfo. A name that has only others gives none.
    void GetIps(std::string domain, std::vector<std::string>& ips);
    // All interfaces, in the kernel's order.
    void FindIndexDevs(std::vector<MGIndexDevs>& devs);
    // The interfaces that have an address, each with all its addresses that the kernel lists next to each other. After
    // a failure devs holds what was found up to there.
    void FindDevs(std::vector<MGDevs>& devs);
    // Whether there is such an interface with an address; its state and addresses, or all false and empty.
    bool IsDev(std::string dev, bool& loopback, bool& up, bool& running, std::vector<std::string>& ips);
    // The hardware address, "%02x:%02x:%02x:%02x:%02x:%02x".
    std::string GetMac(const std::string& dev);
    // ioctl; on failure completes err with mess and func, each unless null, and with errno, and throws it.
    static void Ioctl(MGErr& err, int sock, unsigned long request, void* arg, const char* mess, const char* func);
    // The dotted form, by inet_ntop.
    static std::string IpSockAddrToStr(const sockaddr_in* addr);
    // socket(); the descriptor is closed on exec. On failure sock is -1 and err is completed and thrown.
    static void InitSocketExt(MGErr& err, int& sock, int domain, int type, int protocol);
    // Diagnostic dumps to standard output.
    static void PrintIndexDevs(const std::vector<MGIndexDevs>& devs);
    static void PrintDevs(const std::vector<MGDevs>& devs);

    // --- socket_connect: sockets, their settings, binding and connecting. ---

    // Closes m_sock and m_recv_sock and opens a new TCP socket as m_sock, which sends small pieces at once.
    void Init();
    // Closes all four descriptors; nothing listens any more.
    void Clear();
    void ClearRecvSock();
    // If sock is open: shutdown both ways, close, -1.
    static void ClearSock(int& sock);

    int GetSendSock() const { return m_sock; }
    void SetSendSock(int sock) { m_sock = sock; }
    int GetRecvSock() const { return m_recv_sock; }
    void SetRecvSock(int sock) { m_recv_sock = sock; }
    void TurnOffTls(bool off) { m_turn_off_tls = off; }
    bool IsTurnOffTls() const { return m_turn_off_tls; }
    void SetInputTimeout(unsigned seconds) { m_input_timeout = seconds; }
    void SetOutputTimeout(unsigned seconds) { m_output_timeout = seconds; }

    // Sets or clears O_NONBLOCK and gives the former file status flags. The first fills an err of its own.
    static int SetNonBlock(int sock, bool non_block);
    static int SetNonBlock(MGErr& err, int sock, bool non_block);
    // The file status flags.
    static int GetFcntl(MGErr& err, int sock);
    static void SetFcntl(MGErr& err, int sock, int flags);
    // inet_aton decides what is an address; an empty ip is any address. port is in host order.
    static void SetAddress(MGErr& err, const std::string& ip, uint16_t port, sockaddr_in& addr);
    // Throw err if the socket isn't open.
    void IfErrSock(MGErr& err) const;
    static void IfErrSockExt(MGErr& err, int sock);
    // Binds, and leaves sock non-blocking. While the address is in use it tries again every 10 seconds for two minutes,
    // so that a restarted service gets its port back.
    void BindExt(const std::string& ip, uint16_t port, int sock);
    void ListenExt(int sock, int queue);
    // Both on m_sock, with a queue of 64.
    void BindAndListen(const std::string& ip, uint16_t port);
    // Begins to connect m_sock, which becomes non-blocking, and returns at once: SendPoll tells what came of it.
    void Connect(const std::string& ip, uint16_t port);

    // --- socket_wait: waits of one time-out, the loops around them, and the limits. ---

    // Waits m_input_timeout seconds for something to read. False on a time-out. is_close: the peer has closed, and what
    // it sent has been read, or the connection is reset; the result is true then. A socket in error throws. What came
    // starts the clock of inactivity anew.
    bool RecvPoll(int sock, bool& is_close);
    // The same on two sockets; from_1 and from_2 tell where there is something to read.
    bool RecvPoll2(int sock_1, int sock_2, bool& is_close, bool& from_1, bool& from_2);
    // Waits through time-outs until there is something to read, and gives true; with exit_if_timeout one time-out gives
    // false. Looks at signal, which may be null, before and between waits, and with is_auth at the limit on
    // authentication. MGExit 1 when the peer has closed, 2 for the flag, 5 for the limit.
    bool RecvPollWait(int sock, MGSignal* signal, bool exit_if_timeout, bool is_auth);
    // The same on two sockets until either has something, under the limits on inactivity and on the connection's life
    // if asked for. MGExit 1, 2, 6, 7.
    void RecvPollWait2(int sock_1, int sock_2, MGSignal* signal, bool& from_1, bool& from_2, bool is_inactive,
                       bool is_reset);
    // Makes sock blocking and waits m_output_timeout seconds until it can be written to; a time-out throws. False if
    // the socket has an error, which is in m_connect_error then; otherwise that is 0. From then on a send through sock
    // that takes nothing for so long fails with EAGAIN; one through an accepted socket does from the beginning.
    bool SendPoll(int sock);
    // Waits as RecvPoll for a connection to m_sock, which becomes m_recv_sock in place of the former one. False if none
    // came. Throws if nothing listens.
    bool RecvAccept();

    // 0 turns a limit off.
    void SetLimitAuth(int64_t seconds) { m_limit_auth = seconds; }
    void SetLimitInactive(int64_t seconds) { m_limit_inactive = seconds; }
    void SetResetTimeout(int64_t seconds) { m_reset_timeout = seconds; }
    // The next test starts the count anew.
    void ClearBeginTimeForAuth() { m_begin_auth = 0; }
    void ClearBeginTimeForInactive() { m_begin_inactive = 0; }
    // The first call starts the clock; once more seconds than the limit have passed, a call stops it and throws MGExit
    // 5, 6 or 7.
    void TestLimitAuth();
    void TestLimitInactive();
    void TestResetTimeout();

    // --- socket_io: reading and writing. ---

    // One recv or one send, repeated only after EINTR; Recv gives 0 when the peer has closed.
    static size_t Recv(int sock, void* buf, size_t size);
    static size_t Send(int sock, const void* buf, size_t size);
    // Send until all is gone. False if the connection has ended.
    static bool SendAll(int sock, const std::vector<uint8_t>& data);
    // SendPoll and SendAll; nothing at all for empty data. MGExit 4 for a socket error, 1 for a connection that broke.
    void ConnSend(int sock, const std::vector<uint8_t>& data);
    // One Recv of up to size bytes; data is what came. After a failure data is empty.
    static size_t RecvInVector(int sock, std::vector<uint8_t>& data, size_t size);

    // --- framed_exchange: one message is four steps, each waits for the one before:
    //       sender    code: the size of the body
    //       receiver  code 0: the size is accepted
    //       sender    the body
    //       receiver  code 0: the body has arrived
    //     A code is an unsigned 64-bit number in 8 bytes of the host's order. A receiver that dislikes the size throws
    //     and never answers. ---

    static void SendCode(int sock, uint64_t code);
    // Waits through time-outs. With a limit on inactivity set, MGExit 6 ends the wait, the limit counting from its
    // beginning; without one a silent peer is waited for.
    uint64_t RecvCode(int sock);
    // Appends to data exactly only_equal bytes, or, with 0, whatever comes until a time-out or the peer's close, but
    // not more than less_then, if that is set: one byte more throws and stays in data. False: a wait timed out, and the
    // caller may call again. A peer that closes after a part of only_equal throws; one that closes before it gives
    // true. Neither data nor its capacity grows beyond what is asked for, whatever the peer sends.
    bool RecvAll(int sock, std::vector<uint8_t>& data, uint64_t only_equal, uint64_t less_then);
    // One message as sender. False, with nothing sent, if the socket has an error; a connection that ends later throws.
    bool SendData(int sock, const std::vector<uint8_t>& data);
    // One message as receiver; gives true. The size must be only_equal, or not above less_then, where that isn't 0;
    // not both may be set. The limit on inactivity ends the wait for the body too, and counts anew whenever a part of
    // it has come. Room is made as it comes. What follows the body stays in the socket; only after a time-out within
    // it, and behind a size of 0, a byte more is refused. After a failure data is empty.
    bool RecvData(int sock, std::vector<uint8_t>& data, uint64_t only_equal, uint64_t less_then);
    bool RecvData(int sock, std::vector<uint8_t>& data);
    // Throw err: both limits are set; the size recv_byte breaks one.
    static void TestEqualAndLess(MGErr& err, uint64_t only_equal, uint64_t less_then);
    static void TestEqualAndLessForRecv(MGErr& err, uint64_t only_equal, uint64_t less_then, uint64_t recv_byte);
    // Hexadecimal dump for the debug logs, as sprintf_buf.
    static std::string SprintfBuf(const void* buf, size_t size);
    // Replaces out with a copy of the bytes.
    static void Data2Vector(const void* data, size_t size, std::vector<uint8_t>& out);
    // memset to 0 and memcpy.
    static void ClearMem(void* data, size_t size);
    static void CopyMem(void* to, const void* from, size_t size);

    // --- tls_transport: the framed exchange over the TLS session of an MGTrelm; with TLS turned off, over the bare
    //     connection. After any failure a new connection and a new handshake are needed; one of a handshake, of
    //     TlsConnSend or of TlsConnRecv has ended the session, otherwise the next handshake does. To end a
    //     wait there are the peer's close (MGExit 1), the exit flag (2; signal may be null), and the limits. A client
    //     calls Connect and TlsClientAuth, a server RecvAccept and TlsServerAuth, then each as many messages as it
    //     likes. ---

    // Makes the session and shakes hands on m_sock with the server of that name, or returns true at once when TLS is
    // off. False if the connection to the server has failed. MGExit 1, 2, 4, 5; the clock of the limit on
    // authentication starts with the first wait.
    bool TlsClientAuth(MGSignal* signal, MGTrelm& trelm, const std::string& server, bool option);
    // The same as server on m_recv_sock.
    void TlsServerAuth(MGSignal* signal, MGTrelm& trelm, bool option);
    // The peer's certificate; empty when TLS is off.
    void TlsServerAuthCert(MGTrelm& trelm, std::vector<uint8_t>& cert);
    // Encrypts and sends; nothing for empty data. MGExit 1, 4.
    void TlsConnSend(int sock, MGTrelm& trelm, const std::vector<uint8_t>& in_data);
    // Receives and decrypts until out_data holds at least only_equal bytes, with 0 until data came once. Empties
    // out_data first unless is_add. The limit on inactivity counts from the beginning and anew whenever something came.
    // MGExit 1, 2, 4, 6.
    void TlsConnRecv(int sock, MGSignal* signal, MGTrelm& trelm, uint64_t only_equal, std::vector<uint8_t>& out_data,
                     bool is_add);
    void TlsSendCode(MGTrelm& trelm, int sock, uint64_t code);
    // Throws err if what came isn't a code.
    uint64_t TlsRecvCode(MGErr& err, MGSignal* signal, MGTrelm& trelm, int sock);
    // One message as sender. Sends nothing for empty data. False instead of an MGExit.
    bool TlsSendData(MGTrelm& trelm, MGSignal* signal, int sock, const std::vector<uint8_t>& data);
    // One message as receiver, with the limits of RecvData; gives true. A record with more than the size is refused.
    // After a failure data is empty.
    bool TlsRecvData(MGTrelm& trelm, MGSignal* signal, int sock, std::vector<uint8_t>& data, uint64_t only_equal,
                     uint64_t less_then);
    // One Recv of at most MGSK_READ_SIZE bytes, with TLS of one record only, otherwise of no more than at_most, which
    // replace data or, with is_add, go to its end. MGExit 1 when the peer has closed.
    void RecvAuth(int sock, MGTrelm& trelm, std::vector<uint8_t>& data, bool is_add, size_t at_most = MGSK_READ_SIZE);

    // --- tun_raw: whole IP packets, read from a TUN device and sent through a raw socket. ---

    int GetRawSock() const { return m_raw_sock; }
    void SetRawSock(int sock) { m_raw_sock = sock; }
    int GetTunSock() const { return m_tun_sock; }
    void SetTunSock(int sock) { m_tun_sock = sock; }

    // Closes m_raw_sock and opens such a socket as m_raw_sock; InitRaw one of AF_INET and SOCK_RAW.
    void InitSocket(int domain, int type, int protocol);
    void InitRaw(int protocol);
    // setsockopt. SetIpHdrIncl sets IP_HDRINCL, so that packets go out with the headers that they bring along.
    static void SetSockOpt(int sock, int level, int optname, const void* optval, unsigned optlen);
    static void SetIpHdrIncl(int sock);
    // Closes m_tun_sock and opens a TUN device as m_tun_sock, made if it isn't there; a read gives the bare packet.
    // With null the kernel chooses the name. On failure m_tun_sock is -1.
    void OpenTun(const char* dev);
    // One packet, by one read, which blocks as the descriptor does; what buf can't take is lost.
    static size_t ReadTun(int sock, void* buf, size_t len_buf);
    // Sends the packet to its own destination; where the way is too narrow for it, in fragments, whether or not it
    // allows that. Gives len_buf, or the number of fragments, or 0 for a packet of up to 1500 bytes that is refused as
    // too long. Throws, with nothing sent: a packet below 20 bytes or above 65535, or one to be fragmented that has IP
    // options; and on a failure to send, when fragments may be out already. A packet to be fragmented needs an
    // identification other than 0: for 0 the kernel would give each fragment one of its own.
    static size_t SendIp(int sock, void* buf, size_t len_buf);
    // Builds one fragment of the packet at data, whose header is 20 bytes long: part_len bytes, at most 1480, if
    // partial, otherwise 1480, which must be there, from index * 1480 behind the header.
    static void MakeFragment(unsigned char* data, MGIp& fragment, uint16_t index, bool partial, uint16_t part_len,
                             bool last);
};

// Appends the addresses of the interface dev, or none if there is no such interface with an address.
void get_dev_ips(std::string dev, std::vector<std::string>& ips);
