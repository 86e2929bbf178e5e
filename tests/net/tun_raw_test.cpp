// Whole packets between two network namespaces that this program makes for itself: out of the raw socket of one,
// through its TUN device, into the TUN device of the other, whose kernel puts fragments together for an ordinary UDP
// socket.
#include "net/mg_ip.h"
#include "net/mg_socket.h"
#include "net_namespace.h"
#include "support/error_of.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <gtest/gtest.h>
#include <linux/if_tun.h>
#include <net/if.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace {

using Bytes = std::vector<uint8_t>;

constexpr uint16_t port = 7777;

// Gives the interface its address and MTU and sets it up.
void set_up(const std::string& name, const std::string& ip, int mtu) {
    const std::string set = "ip link set " + name + " up mtu " + std::to_string(mtu);
    ASSERT_EQ(std::system((set + " && ip addr replace " + ip + "/24 dev " + name).c_str()), 0);
}

class TunRaw : public testing::Test {
protected:
    void SetUp() override {
        if (!network.refusal().empty()) GTEST_SKIP() << network.refusal();
        if (access("/dev/net/tun", R_OK | W_OK) < 0) GTEST_SKIP() << "no use of /dev/net/tun: " << std::strerror(errno);
        if (std::system("ip -V > /dev/null 2>&1") != 0) GTEST_SKIP() << "there is no `ip`";
        near.OpenTun("near");
        set_up("near", "10.9.0.1", 1500);
        near.InitRaw(IPPROTO_RAW);
        MGSocket::SetIpHdrIncl(near.GetRawSock());
    }

    // A UDP packet from near to far with `size` bytes in all, its data not alike anywhere.
    static void make_packet(MGIp& ip, size_t size, Bytes& data) {
        data.resize(size - 28);
        for (size_t i = 0; i < data.size(); ++i) data[i] = static_cast<uint8_t>(i * 2654435761u >> 13);
        ip.MakeUdpForExit("10.9.0.1");
        ip.m_dst_ip = MGIp::IpCharToInt(10, 9, 0, 2);
        ip.m_dst_port = port;
        ip.m_len = static_cast<uint16_t>(size);
        ip.m_udp_len = static_cast<uint16_t>(size - 20);
        ip.m_udp_data = data.data();
        ip.MakeIp();
        ip.MakeUdp();
    }

    size_t send(Bytes& packet) { return MGSocket::SendIp(near.GetRawSock(), packet.data(), packet.size()); }

    // The next IPv4 packet that comes out of the device; the kernel has others of its own.
    Bytes read_tun() {
        Bytes packet(0x10000);
        bool is_close;
        do {
            if (!near.RecvPoll(near.GetTunSock(), is_close))
                throw std::runtime_error("nothing comes out of the device");
            packet.resize(0x10000);
            packet.resize(MGSocket::ReadTun(near.GetTunSock(), packet.data(), packet.size()));
        } while (packet[0] >> 4 != 4);
        return packet;
    }

    const NetNamespace network;
    MGSocket near;
};

TEST_F(TunRaw, PacketsArriveWholeOrAreFragmentedSoThatAnotherStackPutsThemTogether) {
    const NetNamespace far_network;
    MGSocket far;
    MGErr err;
    far.OpenTun("far");
    set_up("far", "10.9.0.2", 1500);
    MGSocket::InitSocketExt(err, far.m_sock, AF_INET, SOCK_DGRAM, 0);
    far.BindExt("", port, far.m_sock);
    // Packets and what SendIp gives: the size of one that goes whole, the number of fragments else.
    for (auto [size, result] :
         {std::pair(28u, 28u), {29, 29}, {1500, 1500}, {1501, 2}, {2980, 2}, {3000, 3}, {3020, 3}, {65535, 45}}) {
        SCOPED_TRACE(size);
        MGIp ip;
        Bytes data;
        make_packet(ip, size, data);
        ASSERT_EQ(send(ip.m_buf), result);
        for (size_t rest = result == size ? 1 : result; rest != 0; --rest) {
            const Bytes packet = read_tun();
            EXPECT_TRUE(result != size || packet == ip.m_buf);
            ASSERT_EQ(write(far.GetTunSock(), packet.data(), packet.size()), static_cast<ssize_t>(packet.size()));
        }
        bool is_close;
        ASSERT_TRUE(far.RecvPoll(far.m_sock, is_close));
        Bytes received(0x10000);
        received.resize(MGSocket::Recv(far.m_sock, received.data(), received.size()));
        EXPECT_EQ(received, data);
    }
}

// What `body` threw: function, step, options, errno.
template <class Body>
std::string thrown_by(Body body) {
    const MGErr err = error_of(body);
    return err.func_1 + " " + err.func_2 + "|" + err.opt_param + "|" + std::to_string(err.err_code);
}

TEST_F(TunRaw, RefusesWithNothingSent) {
    MGIp ip;
    Bytes data, short_one(19);
    make_packet(ip, 3000, data);
    Bytes with_options = ip.m_buf, too_long = ip.m_buf, marker(ip.m_buf.begin(), ip.m_buf.begin() + 100);
    with_options[0] = 0x46;
    too_long.resize(65536);
    EXPECT_EQ(thrown_by([&] { send(short_one); }), "SendTo (len_buf < 20)||0");
    EXPECT_EQ(thrown_by([&] { send(with_options); }), "SendTo (ihl != 5)||0");
    EXPECT_EQ(thrown_by([&] { send(too_long); }), "SendTo ( len_buf > 0xFFFF )||" + std::to_string(EMSGSIZE));
    set_up("near", "10.9.0.1", 1000); // now a fragment is too long as well
    EXPECT_EQ(thrown_by([&] { send(ip.m_buf); }), "SendTo sendto||" + std::to_string(EMSGSIZE));
    make_packet(ip, 1500, data);
    EXPECT_EQ(send(ip.m_buf), 0u);
    send(marker);
    EXPECT_EQ(read_tun().size(), marker.size());
}

TEST_F(TunRaw, TellsFailuresAndLeavesNoDescriptorOpen) {
    auto descriptors = [] {
        const std::filesystem::directory_iterator all("/proc/self/fd");
        return std::distance(begin(all), end(all));
    };
    const auto before = descriptors();
    near.InitRaw(IPPROTO_RAW);
    near.OpenTun(nullptr);
    EXPECT_EQ(descriptors(), before);
    ifreq ifr{};
    EXPECT_EQ(ioctl(near.GetTunSock(), TUNGETIFF, &ifr), 0);
    EXPECT_EQ(std::string(ifr.ifr_name).substr(0, 3), "tun");

    EXPECT_EQ(thrown_by([&] { near.OpenTun("a/b"); }), "OpenTun ioctl(m_tun_sock, TUNSETIFF, &ifr)|a/b|22");
    EXPECT_EQ(thrown_by([&] { near.InitSocket(AF_INET, -1, 0); }), "InitSocket socket||22");
    EXPECT_EQ(near.GetTunSock(), -1);
    EXPECT_EQ(near.GetRawSock(), -1);
    EXPECT_EQ(descriptors(), before - 2);
}

} // namespace
