#include "net/address_syntax.h"
#include "net/mg_socket.h"
#include "net_namespace.h"
#include "support/error_of.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <net/if.h>
#include <netdb.h>
#include <sstream>
#include <sys/ioctl.h>
#include <sys/syscall.h>

// The question to the kernel that fails with EIO; 0 for none.
namespace {
unsigned long failing_request = 0;
} // namespace

extern "C" int ioctl(int fd, unsigned long request, ...) noexcept {
    va_list rest;
    va_start(rest, request);
    void* const arg = va_arg(rest, void*);
    va_end(rest);
    if (request == failing_request) {
        errno = EIO;
        return -1;
    }
    return static_cast<int>(syscall(SYS_ioctl, fd, request, arg));
}

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAreArray;

// The output of `ip` in lines of words; empty where it isn't installed.
std::vector<std::vector<std::string>> ip_tool(const std::string& arguments) {
    std::vector<std::vector<std::string>> lines;
    FILE* out = popen(("ip -o " + arguments + " 2>/dev/null").c_str(), "r");
    char line[4096];
    while (out && std::fgets(line, sizeof line, out)) {
        std::istringstream words(line);
        lines.emplace_back(std::istream_iterator<std::string>(words), std::istream_iterator<std::string>());
    }
    if (out) pclose(out);
    return lines;
}

std::string word_after(const std::vector<std::string>& words, const std::string& key) {
    const auto found = std::find(words.begin(), words.end(), key);
    return found == words.end() || found + 1 == words.end() ? "" : *(found + 1);
}

// Compares all that the socket tells with what `ip` tells.
void expect_agreement_with_ip_tool() {
    MGSocket sock;
    std::vector<std::string> told, local_told, links_told, addresses, local, links;
    for (const auto& words : ip_tool("-4 addr")) { // "2: eth0 inet 10.0.0.1/24 brd 10.0.0.255 scope global eth0\..."
        const std::string net = word_after(words, "inet");
        const std::string broadcast = word_after(words, "brd");
        told.push_back(words[1] + " " + net + " " + (broadcast.empty() ? "0.0.0.0" : broadcast));
        local_told.push_back(net.substr(0, net.find('/')));
    }
    for (const auto& words : ip_tool("link")) // "2: eth0: <...> ...\    link/ether 02:00:00:00:00:01 brd ..."
        links_told.push_back(words[0] + " " + words[1].substr(0, words[1].find_first_of(":@")));
    std::vector<MGDevs> devs;
    sock.FindDevs(devs);
    for (const MGDevs& dev : devs) {
        for (const MGDevAddr& address : dev.addrs) {
            uint32_t mask = 0;
            EXPECT_TRUE(string_is_ip_n(address.netmask.c_str(), mask));
            addresses.push_back(dev.name + " " + address.addr + "/" + std::to_string(__builtin_popcount(mask)) + " " +
                                address.broadaddr);
        }
        const auto link = ip_tool("link show dev " + dev.name);
        ASSERT_EQ(link.size(), 1u);
        const bool up = link[0][2].find(",UP") != std::string::npos;
        EXPECT_EQ(dev.if_up, up) << dev.name;
        EXPECT_EQ(dev.f_loopback, link[0][2].find("LOOPBACK") != std::string::npos) << dev.name;
        EXPECT_EQ(dev.if_broadcast, link[0][2].find("BROADCAST") != std::string::npos) << dev.name;
        EXPECT_EQ(dev.if_noarp, link[0][2].find("NOARP") != std::string::npos) << dev.name;
        EXPECT_EQ(sock.GetMac(dev.name), word_after(link[0], dev.f_loopback ? "link/loopback" : "link/ether"));
    }
    std::vector<MGIndexDevs> index;
    sock.FindIndexDevs(index);
    for (const MGIndexDevs& dev : index) links.push_back(std::to_string(dev.index) + ": " + dev.name);
    sock.GetLocalIps(local);
    EXPECT_THAT(addresses, UnorderedElementsAreArray(told));
    EXPECT_THAT(local, UnorderedElementsAreArray(local_told));
    EXPECT_THAT(links, UnorderedElementsAreArray(links_told));
}

} // namespace

TEST(Interfaces, AgreeWithTheSystemsOwnTool) {
    if (ip_tool("link").empty()) GTEST_SKIP() << "there is no `ip`";
    expect_agreement_with_ip_tool();
}

TEST(Interfaces, OfANetworkOfItsOwn) {
    const NetNamespace network;
    if (!network.refusal().empty()) GTEST_SKIP() << network.refusal();
    MGSocket sock;
    std::vector<std::string> ips;
    std::vector<MGDevs> devs(1);
    sock.GetLocalIps(ips);
    EXPECT_THAT(ips, IsEmpty());
    sock.FindDevs(devs);
    EXPECT_THAT(devs, IsEmpty());
    if (std::system("exec 2>/dev/null; ip link set lo up && ip link add two address 02:00:00:00:0a:07 type veth peer "
                    "name bare && ip link set two up && ip addr add 10.7.0.1/24 brd + dev two && "
                    "ip addr add 10.8.1.1/20 brd 10.8.15.254 dev two && ip link add off type veth peer name bare2 && "
                    "ip addr add 10.9.0.1/32 dev off") != 0)
        GTEST_SKIP() << "`ip` can't make a pair of devices here";
    expect_agreement_with_ip_tool();

    sock.GetLocalIps(ips);
    EXPECT_THAT(ips, ElementsAre("127.0.0.1", "10.7.0.1", "10.8.1.1", "10.9.0.1")) << "those that are down too";
    sock.FindDevs(devs);
    ASSERT_EQ(devs.size(), 3u) << "none without an address";
    EXPECT_EQ(devs[1].name, "two");
    ASSERT_EQ(devs[1].addrs.size(), 2u);
    EXPECT_EQ(devs[1].addrs[1].netmask, "255.255.240.0");
    EXPECT_EQ(devs[1].addrs[1].broadaddr, "10.8.15.254") << "the second address's own";
    testing::internal::CaptureStdout();
    MGSocket::PrintDevs({devs[1]});
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "name: two\nmac: 02:00:00:00:0a:07\nif_up: 1\nif_broadcast: 1\nif_debug: 0\nif_p2p: 0\n"
              "if_notrailers: 0\nf_loopback: 0\nif_running: 0\nif_noarp: 0\n"
              "\taddr: 10.7.0.1\n\tnetmask: 255.255.255.0\n\tbroadaddr: 10.7.0.255\n"
              "\taddr: 10.8.1.1\n\tnetmask: 255.255.240.0\n\tbroadaddr: 10.8.15.254\n");

    bool loopback = false, up = false, running = false;
    EXPECT_TRUE(sock.IsDev("lo", loopback, up, running, ips));
    EXPECT_TRUE(loopback && up && running);
    EXPECT_THAT(ips, ElementsAre("127.0.0.1"));
    EXPECT_TRUE(sock.IsDev("off", loopback, up, running, ips));
    EXPECT_FALSE(loopback || up || running);
    get_dev_ips("two", ips);
    EXPECT_THAT(ips, ElementsAre("10.9.0.1", "10.7.0.1", "10.8.1.1"));
    loopback = up = running = true;
    EXPECT_FALSE(sock.IsDev("bare", loopback, up, running, ips));
    EXPECT_FALSE(loopback || up || running);
    EXPECT_THAT(ips, IsEmpty());
}

TEST(Interfaces, NamesResolveToIpv4Only) {
    MGSocket sock;
    std::vector<std::string> ips{"before"};
    sock.GetIps("127.0.0.9", ips);
    sock.GetIps("::1", ips);
    EXPECT_THAT(ips, ElementsAre("before", "127.0.0.9"));
    const std::string too_long(300, 'a');
    const MGErr err = error_of([&] { sock.GetIps(too_long, ips); });
    EXPECT_EQ(err.func_1, "MGSocket::GetIps");
    EXPECT_EQ(err.mess_2, "Ошибка функции получения списка IP адресов");
    EXPECT_EQ(err.func_2, "getaddrinfo");
    EXPECT_EQ(err.str_param, too_long);
    EXPECT_LT(err.err_code, 0);
    EXPECT_EQ(err.err_description, gai_strerror(err.err_code));
}

TEST(Interfaces, AFailedQuestionKeepsWhatWasFoundAndNoDescriptor) {
    const FileDescriptor lowest_free(open("/dev/null", O_RDONLY));
    std::vector<MGDevs> devs;
    for (const unsigned long request :
         {SIOCGIFCONF, SIOCGIFFLAGS, SIOCGIFHWADDR, SIOCGIFADDR, SIOCGIFNETMASK, SIOCGIFBRDADDR}) {
        SCOPED_TRACE(request);
        failing_request = request;
        const MGErr err = error_of([&] { MGSocket().FindDevs(devs); });
        failing_request = 0;
        EXPECT_EQ(err.func_1, "FindDevs");
        EXPECT_EQ(err.err_code, EIO);
        EXPECT_EQ(devs.size(), request >= SIOCGIFADDR && request != SIOCGIFHWADDR ? 1u : 0u);
        const FileDescriptor next(open("/dev/null", O_RDONLY));
        EXPECT_EQ(next.get(), lowest_free.get() + 1) << "a descriptor was left open";
    }
}

TEST(Interfaces, OtherFailuresAreTold) {
    MGSocket sock;
    for (const char* name : {"sixteen-letters-", "fifteen-letters"}) {
        const MGErr err = error_of([&] { sock.GetMac(name); });
        EXPECT_EQ(err.func_1, "MGSocket::GetMac");
        EXPECT_EQ(err.mess_1, "Ошибка получения MAC адреса");
        EXPECT_EQ(err.opt_param, name);
        const bool asked = std::strlen(name) < 16;
        EXPECT_EQ(err.mess_2, asked ? "Не удалось получить MAC адрес"
                                    : "Размер наименования сетевого устройства превосходит предельное значение");
        EXPECT_EQ(err.func_2, asked ? "ioctl(sock, SIOCGIFHWADDR, &ifr)" : "device.size() > (IFNAMSIZ - 1)");
        EXPECT_EQ(err.num_param, asked ? 0 : 16);
        EXPECT_EQ(err.num_2_param, asked ? 0 : 16);
        EXPECT_EQ(err.err_code, asked ? ENODEV : 0);
    }
    MGErr own;
    own.mess_2 = "kept";
    MGErr err = error_of([&] { MGSocket::Ioctl(own, -1, SIOCGIFCONF, nullptr, nullptr, "f"); });
    EXPECT_EQ(err.mess_2, "kept");
    EXPECT_EQ(err.func_2, "f");
    EXPECT_EQ(err.err_code, EBADF);
    int fd = 7;
    err = error_of([&] { MGSocket::InitSocketExt(own, fd, AF_INET, SOCK_STREAM, 255); });
    EXPECT_EQ(fd, -1);
    EXPECT_EQ(err.mess_2, "Не удалось создать сетевое подключение");
    EXPECT_EQ(err.func_2, "socket");
    EXPECT_EQ(err.num_param, AF_INET);
    EXPECT_EQ(err.num_2_param, SOCK_STREAM);
    EXPECT_EQ(err.uint32_param, 255u);
    EXPECT_EQ(err.err_code, EPROTONOSUPPORT);
}
