#include "net/address_syntax.h"
#include "net/mg_ip.h"
#include "net/mg_socket.h"
#include "runtime/owners.h"
#include "support/bytes.h"
#include "support/error_of.h"

#include <gmock/gmock.h>

#include <fcntl.h>
#include <sched.h>

namespace {

// A network of its own for one thread, gone with it: only the loopback at first, and that down.
class NetNamespace {
public:
    NetNamespace() : former_(open("/proc/thread-self/ns/net", O_RDONLY | O_CLOEXEC)) {
        granted_ = unshare(CLONE_NEWNET) == 0;
    }
    ~NetNamespace() {
        if (granted_) setns(former_.get(), CLONE_NEWNET);
    }

    bool granted() const { return granted_; }

private:
    vorma::FileDescriptor former_;
    bool granted_;
};

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using Texts = std::vector<std::string>;

TEST(Interfaces, AreTold) {
    const NetNamespace network;
    if (!network.granted()) GTEST_SKIP() << "no network of its own";
    MGSocket sock;
    std::vector<MGDevs> devs(1);
    sock.FindDevs(devs);
    EXPECT_THAT(devs, IsEmpty()) << "none without an address";
    if (std::system(
            "exec 2>/dev/null; ip link set lo up && ip link add two address 02:00:00:00:0a:07 type veth peer "
            "name bare && ip link set two up && ip addr add 10.7.0.1/24 brd + dev two && "
            "ip addr add 10.8.1.1/20 brd 10.8.15.254 dev two && ip link add off address 02:00:00:00:0a:09 arp off "
            "type veth peer name bare2 && ip addr add 10.9.0.1/32 dev off") != 0)
        GTEST_SKIP() << "`ip` can't make a pair of devices here";

    Texts told, local;
    sock.FindDevs(devs);
    for (const MGDevs& dev : devs) {
        told.push_back(dev.name + " " + sock.GetMac(dev.name));
        for (const auto& [flag, set] : {std::pair(" up", dev.if_up),
                                        {" loopback", dev.f_loopback},
                                        {" broadcast", dev.if_broadcast},
                                        {" noarp", dev.if_noarp}})
            if (set) told.back() += flag;
        for (const MGDevAddr& of : dev.addrs) told.push_back(of.addr + " " + of.netmask + " " + of.broadaddr);
    }
    EXPECT_THAT(told,
                UnorderedElementsAre("lo 00:00:00:00:00:00 up loopback", "127.0.0.1 255.0.0.0 0.0.0.0",
                                     "two 02:00:00:00:0a:07 up broadcast", "10.7.0.1 255.255.255.0 10.7.0.255",
                                     "10.8.1.1 255.255.240.0 10.8.15.254", "off 02:00:00:00:0a:09 broadcast noarp",
                                     "10.9.0.1 255.255.255.255 0.0.0.0"));
    sock.GetLocalIps(local);
    EXPECT_THAT(local, UnorderedElementsAre("127.0.0.1", "10.7.0.1", "10.8.1.1", "10.9.0.1"));
    bool loopback = false, up = false, running = false;
    Texts ips = {"lo"};
    EXPECT_TRUE(sock.IsDev(ips[0], loopback, up, running, ips));
    EXPECT_TRUE(loopback && up && running);
    EXPECT_TRUE(sock.IsDev("off", loopback, up, running, ips));
    EXPECT_FALSE(loopback || up || running);
    get_dev_ips("two", ips);
    EXPECT_THAT(ips, ElementsAre("10.9.0.1", "10.7.0.1", "10.8.1.1"));
    EXPECT_FALSE(sock.IsDev("bare", loopback, up, running, ips));
    EXPECT_THAT(ips, IsEmpty());
}

constexpr uint16_t port = 7777;

void set_up(const std::string& name, const std::string& ip, int mtu) {
    const std::string set = "ip link set " + name + " up mtu " + std::to_string(mtu);
    ASSERT_EQ(std::system((set + " && ip addr replace " + ip + "/24 dev " + name).c_str()), 0);
}

class TunRaw : public testing::Test {
protected:
    void SetUp() override {
        if (!network.granted() || access("/dev/net/tun", R_OK | W_OK) < 0 || std::system("ip -V > /dev/null 2>&1") != 0)
            GTEST_SKIP() << "no network of its own, no /dev/net/tun or no `ip`";
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
        if (result != size) ip.m_id = 0; // the fragments get one of their own
        ip.MakeIp();
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

TEST_F(TunRaw, RefusesWithNothingSent) {
    MGIp ip;
    Bytes data, short_one(19);
    make_packet(ip, 3000, data);
    Bytes with_options = ip.m_buf, too_long = ip.m_buf, marker(ip.m_buf.begin(), ip.m_buf.begin() + 100);
    with_options[0] = 0x46;
    too_long.resize(65536);
    EXPECT_EQ(condition_of([&] { send(short_one); }), "(len_buf < 20)");
    EXPECT_EQ(condition_of([&] { send(with_options); }), "(ihl != 5)");
    EXPECT_EQ(error_of([&] { send(too_long); }).err_code, EMSGSIZE);
    set_up("near", "10.9.0.1", 1000); // now a fragment is too long as well
    EXPECT_EQ(error_of([&] { send(ip.m_buf); }).err_code, EMSGSIZE);
    make_packet(ip, 1500, data);
    EXPECT_EQ(send(ip.m_buf), 0u);
    send(marker);
    EXPECT_EQ(read_tun().size(), marker.size());
}

} // namespace
