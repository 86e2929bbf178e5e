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
using Texts = std::vector<std::string>;

// The output of `ip` in lines of words; empty where it isn't installed.
std::vector<Texts> ip_tool(const std::string& arguments) {
    std::vector<Texts> lines;
    FILE* out = popen(("ip -o " + arguments + " 2>/dev/null").c_str(), "r");
    char line[4096];
    while (out && std::fgets(line, sizeof line, out)) {
        std::istringstream words(line);
        lines.emplace_back(std::istream_iterator<std::string>(words), std::istream_iterator<std::string>());
    }
    if (out) pclose(out);
    return lines;
}

std::string word_after(const Texts& words, const std::string& key) {
    const auto found = std::find(words.begin(), words.end(), key);
    return found == words.end() || found + 1 == words.end() ? "" : *(found + 1);
}

// Compares all that the socket tells with what `ip` tells.
void expect_agreement_with_ip_tool() {
    MGSocket sock;
    Texts told, local_told, links_told, addresses, local, links;
    for (const Texts& words : ip_tool("-4 addr")) { // "2: eth0 inet 10.0.0.1/24 brd 10.0.0.255 scope global eth0\..."
        const std::string net = word_after(words, "inet"), broadcast = word_after(words, "brd");
        told.push_back(words[1] + " " + net + " " + (broadcast.empty() ? "0.0.0.0" : broadcast));
        local_told.push_back(net.substr(0, net.find('/')));
    }
    for (const Texts& words : ip_tool("link")) // "2: eth0: <...> ...\    link/ether 02:00:00:00:00:01 brd ..."
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
        for (const auto& [flag, set] : {std::pair(",UP", dev.if_up),
                                        {"LOOPBACK", dev.f_loopback},
                                        {"BROADCAST", dev.if_broadcast},
                                        {"NOARP", dev.if_noarp}})
            EXPECT_EQ(set, link[0][2].find(flag) != std::string::npos) << dev.name << flag;
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

TEST(Interfaces, AgreeWithTheSystemsOwnTool) {
    if (ip_tool("link").empty()) GTEST_SKIP() << "there is no `ip`";
    expect_agreement_with_ip_tool();
    const NetNamespace network;
    if (!network.refusal().empty()) GTEST_SKIP() << network.refusal();
    expect_agreement_with_ip_tool(); // no address at all
    if (std::system("exec 2>/dev/null; ip link set lo up && ip link add two address 02:00:00:00:0a:07 type veth peer "
                    "name bare && ip link set two up && ip addr add 10.7.0.1/24 brd + dev two && "
                    "ip addr add 10.8.1.1/20 brd 10.8.15.254 dev two && ip link add off type veth peer name bare2 && "
                    "ip addr add 10.9.0.1/32 dev off") != 0)
        GTEST_SKIP() << "`ip` can't make a pair of devices here";
    expect_agreement_with_ip_tool();

    MGSocket sock;
    std::vector<MGDevs> devs(1);
    sock.FindDevs(devs);
    ASSERT_EQ(devs.size(), 3u) << "none without an address";
    testing::internal::CaptureStdout();
    MGSocket::PrintDevs({devs[1]});
    EXPECT_THAT(testing::internal::GetCapturedStdout(),
                testing::AllOf(testing::HasSubstr("name: two\nmac: 02:00:00:00:0a:07\nif_up: 1\n"),
                               testing::EndsWith("\taddr: 10.8.1.1\n\tnetmask: 255.255.240.0\n"
                                                 "\tbroadaddr: 10.8.15.254\n")));

    bool loopback = false, up = false, running = false;
    Texts ips;
    EXPECT_TRUE(sock.IsDev("lo", loopback, up, running, ips));
    EXPECT_TRUE(loopback && up && running);
    EXPECT_TRUE(sock.IsDev("off", loopback, up, running, ips));
    EXPECT_FALSE(loopback || up || running);
    get_dev_ips("two", ips);
    EXPECT_THAT(ips, ElementsAre("10.9.0.1", "10.7.0.1", "10.8.1.1"));
    EXPECT_FALSE(sock.IsDev("bare", loopback, up, running, ips));
    EXPECT_THAT(ips, IsEmpty());
}

TEST(Interfaces, NamesResolveToIpv4Only) {
    MGSocket sock;
    Texts ips{"before"};
    sock.GetIps("127.0.0.9", ips);
    sock.GetIps("::1", ips);
    EXPECT_THAT(ips, ElementsAre("before", "127.0.0.9"));
    const std::string too_long(300, 'a');
    const MGErr err = error_of([&] { sock.GetIps(too_long, ips); });
    EXPECT_EQ(err.func_1 + " " + err.func_2 + " " + err.str_param, "MGSocket::GetIps getaddrinfo " + too_long);
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
        EXPECT_EQ(err.func_1 + " " + std::to_string(err.err_code), "FindDevs " + std::to_string(EIO));
        EXPECT_EQ(devs.size(), request >= SIOCGIFADDR && request != SIOCGIFHWADDR ? 1u : 0u);
        const FileDescriptor next(open("/dev/null", O_RDONLY));
        EXPECT_EQ(next.get(), lowest_free.get() + 1) << "a descriptor was left open";
    }
}

TEST(Interfaces, OtherFailuresAreTold) {
    const MGErr long_name = error_of([] { MGSocket().GetMac("sixteen-letters-"); });
    EXPECT_EQ(long_name.func_2 + " " + long_name.opt_param, "device.size() > (IFNAMSIZ - 1) sixteen-letters-");
    EXPECT_EQ(error_of([] { MGSocket().GetMac("fifteen-letters"); }).err_code, ENODEV);
    MGErr own;
    int fd = 7;
    EXPECT_EQ(error_of([&] { MGSocket::InitSocketExt(own, fd, AF_INET, SOCK_STREAM, 255); }).err_code, EPROTONOSUPPORT);
    EXPECT_EQ(fd, -1);
}

} // namespace
