// Interfaces and addresses of the machine, asked of the kernel and of the resolver.
#include "app/mg_err.h"
#include "net/mg_socket.h"
#include "runtime/owners.h"

#include <arpa/inet.h>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ifaddrs.h>
#include <memory>
#include <net/if.h>
#include <netdb.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

using namespace vorma;

namespace {

constexpr size_t requests_per_device = 128;

// Each question goes out on a copy of the record: an answer overwrites the record's address, by which the kernel tells
// one address of an interface from another.
ifreq ask(MGErr& err, int sock, unsigned long request, ifreq record, const char* mess, const char* func) {
    MGSocket::Ioctl(err, sock, request, &record, mess, func);
    return record;
}

// A datagram socket of family AF_INET, on which the kernel answers the questions.
FileDescriptor question_socket(MGErr& err) {
    int sock = -1;
    MGSocket::InitSocketExt(err, sock, AF_INET, SOCK_DGRAM, 0);
    return FileDescriptor(sock);
}

std::vector<ifreq> read_records(MGErr& err, int sock, size_t devices) {
    std::vector<ifreq> records(devices * requests_per_device);
    ifconf room{};
    room.ifc_len = static_cast<int>(records.size() * sizeof(ifreq));
    room.ifc_req = records.data();
    MGSocket::Ioctl(err, sock, SIOCGIFCONF, &room, "Не удалось получить структуру сетевых устройств с их адресами",
                    "ioctl(sock, SIOCGIFCONF, &Ifc)");
    records.resize(static_cast<size_t>(room.ifc_len) / sizeof(ifreq));
    return records;
}

MGDevs read_device(MGErr& err, int sock, const ifreq& record) {
    MGDevs dev;
    dev.name = record.ifr_name;
    const int flags = ask(err, sock, SIOCGIFFLAGS, record, "Не удалось получить флаги сетевого устройства",
                          "ioctl(sock, SIOCGIFFLAGS, &Ifc.ifc_req[i])")
                          .ifr_flags;
    dev.if_up = flags & IFF_UP;
    dev.if_broadcast = flags & IFF_BROADCAST;
    dev.if_debug = flags & IFF_DEBUG;
    dev.if_p2p = flags & IFF_POINTOPOINT;
    dev.if_notrailers = flags & IFF_NOTRAILERS;
    dev.f_loopback = flags & IFF_LOOPBACK;
    dev.if_running = flags & IFF_RUNNING;
    dev.if_noarp = flags & IFF_NOARP;
    const ifreq mac = ask(err, sock, SIOCGIFHWADDR, record, "Не удалось получить MAC адрес сетевого устройства",
                          "ioctl(sock, SIOCGIFHWADDR, &Ifc.ifc_req[i])");
    std::memcpy(dev.mac.data(), mac.ifr_hwaddr.sa_data, dev.mac.size());
    return dev;
}

std::string address_in(const ifreq& answer) {
    sockaddr_in addr;
    std::memcpy(&addr, &answer.ifr_addr, sizeof addr);
    return MGSocket::IpSockAddrToStr(&addr);
}

MGDevAddr read_address(MGErr& err, int sock, const ifreq& record) {
    MGDevAddr address;
    address.addr = address_in(ask(err, sock, SIOCGIFADDR, record, "Не удалось получить адрес сетевого устройства",
                                  "ioctl(sock, SIOCGIFADDR, &Ifc.ifc_req[i])"));
    address.netmask =
        address_in(ask(err, sock, SIOCGIFNETMASK, record, "Не удалось получить маску адреса сетевого устройства",
                       "ioctl(sock, SIOCGIFNETMASK, &Ifc.ifc_req[i])"));
    address.broadaddr =
        address_in(ask(err, sock, SIOCGIFBRDADDR, record, "Не удалось получить broad адрес сетевого устройства",
                       "ioctl(sock, SIOCGIFBRDADDR, &Ifc.ifc_req[i])"));
    return address;
}

template <class Bytes>
std::string mac_text(const Bytes& mac) {
    char text[sizeof "00:00:00:00:00:00"];
    const auto byte = [&](int i) { return static_cast<unsigned>(static_cast<uint8_t>(mac[i])); };
    std::snprintf(text, sizeof text, "%02x:%02x:%02x:%02x:%02x:%02x", byte(0), byte(1), byte(2), byte(3), byte(4),
                  byte(5));
    return text;
}

void append_addresses(const MGDevs& dev, std::vector<std::string>& ips) {
    for (const MGDevAddr& address : dev.addrs)
        if (!address.addr.empty()) ips.push_back(address.addr);
}

} // namespace

void MGSocket::GetLocalIps(std::vector<std::string>& ips) {
    at_edge("MGSocket::GetLocalIps", [&] {
        MGErr err = error_of("MGSocket::GetLocalIps", "Ошибка получения IP адресов своего компьютера");
        ifaddrs* list = nullptr;
        if (getifaddrs(&list) < 0)
            fail_errno(err, "Ошибка функции получения списка структур сетевых интерфейсов", "getifaddrs");
        const std::unique_ptr<ifaddrs, decltype(&freeifaddrs)> owner(list, freeifaddrs);
        for (const ifaddrs* entry = list; entry; entry = entry->ifa_next)
            if (entry->ifa_addr && entry->ifa_addr->sa_family == AF_INET)
                ips.push_back(IpSockAddrToStr(reinterpret_cast<const sockaddr_in*>(entry->ifa_addr)));
    });
}

void MGSocket::GetIps(std::string domain, std::vector<std::string>& ips) {
    at_edge("MGSocket::GetIps", [&] {
        MGErr err = error_of("MGSocket::GetIps", "Ошибка получения IP адресов из доменного имени");
        err.str_param = domain;
        addrinfo hints{};
        hints.ai_family = AF_UNSPEC;
        hints.ai_socktype = SOCK_STREAM;
        addrinfo* list = nullptr;
        if (const int code = getaddrinfo(domain.c_str(), nullptr, &hints, &list); code != 0) {
            err.err_code = code;
            err.err_description = system_text([&] { return gai_strerror(code); });
            fail(err, "Ошибка функции получения списка IP адресов", "getaddrinfo");
        }
        const std::unique_ptr<addrinfo, decltype(&freeaddrinfo)> owner(list, freeaddrinfo);
        for (const addrinfo* entry = list; entry; entry = entry->ai_next) {
            if (entry->ai_family != AF_INET) continue; // the system knows no other addresses
            const char* text = inet_ntoa(reinterpret_cast<const sockaddr_in*>(entry->ai_addr)->sin_addr);
            if (!text) fail(err, "Ошибка функции преобразования IP адреса в строку", "inet_ntoa");
            ips.emplace_back(text);
        }
    });
}

void MGSocket::FindIndexDevs(std::vector<MGIndexDevs>& devs) {
    at_edge("MGSocket::FindIndexDevs", [&] {
        MGErr err = error_of("FindIndexDevs", "Ошибка получения индексированного списка сетевых устройств");
        devs.clear();
        using Rows = struct if_nameindex;
        const std::unique_ptr<Rows, decltype(&if_freenameindex)> rows(if_nameindex(), if_freenameindex);
        if (!rows) fail_errno(err, "Ошибка получения списка сетевых устройств", "if_nameindex");
        for (const Rows* row = rows.get(); row->if_index != 0 && row->if_name; ++row)
            devs.push_back({row->if_index, row->if_name});
    });
}

void MGSocket::FindDevs(std::vector<MGDevs>& devs) {
    at_edge("MGSocket::FindDevs", [&] {
        MGErr err = error_of("FindDevs", "Ошибка получения списка сетевых устройств с адресами");
        devs.clear();
        std::vector<MGIndexDevs> index;
        FindIndexDevs(index);
        const FileDescriptor sock = question_socket(err);
        std::string current;
        for (const ifreq& record : read_records(err, sock.get(), index.size())) {
            if (record.ifr_addr.sa_family != AF_INET) continue;
            if (record.ifr_name != current) {
                current = record.ifr_name;
                devs.push_back(read_device(err, sock.get(), record));
            }
            if (!devs.empty()) devs.back().addrs.push_back(read_address(err, sock.get(), record));
        }
    });
}

bool MGSocket::IsDev(std::string dev, bool& loopback, bool& up, bool& running, std::vector<std::string>& ips) {
    return at_edge("MGSocket::IsDev", [&] {
        loopback = up = running = false;
        ips.clear();
        std::vector<MGDevs> devs;
        FindDevs(devs);
        for (const MGDevs& found : devs) {
            if (found.name != dev) continue;
            loopback = found.f_loopback;
            up = found.if_up;
            running = found.if_running;
            append_addresses(found, ips);
            return true;
        }
        return false;
    });
}

std::string MGSocket::GetMac(const std::string& dev) {
    return at_edge("MGSocket::GetMac", [&] {
        MGErr err = error_of("MGSocket::GetMac", "Ошибка получения MAC адреса");
        err.opt_param = dev;
        if (dev.size() > IFNAMSIZ - 1) {
            err.num_param = static_cast<int64_t>(dev.size());
            err.num_2_param = IFNAMSIZ;
            fail(err, "Размер наименования сетевого устройства превосходит предельное значение",
                 "device.size() > (IFNAMSIZ - 1)");
        }
        const FileDescriptor sock = question_socket(err);
        ifreq request{};
        dev.copy(request.ifr_name, IFNAMSIZ - 1);
        request = ask(err, sock.get(), SIOCGIFHWADDR, request, "Не удалось получить MAC адрес",
                      "ioctl(sock, SIOCGIFHWADDR, &ifr)");
        return mac_text(request.ifr_hwaddr.sa_data);
    });
}

void MGSocket::Ioctl(MGErr& err, int sock, unsigned long request, void* arg, const char* mess, const char* func) {
    at_edge("MGSocket::Ioctl", [&] {
        IfErrSockExt(err, sock);
        if (ioctl(sock, request, arg) >= 0) return;
        fail_errno(err, mess ? mess : err.mess_2.c_str(), func ? func : err.func_2.c_str());
    });
}

std::string MGSocket::IpSockAddrToStr(const sockaddr_in* addr) {
    return at_edge("MGSocket::IpSockAddrToStr", [&] {
        MGErr err = error_of("MGSocket::IpSockAddrToStr",
                             "Ошибка преобразования IP адреса из сетевого представления struct sockaddr_in в строку");
        char text[INET_ADDRSTRLEN];
        if (!inet_ntop(AF_INET, &addr->sin_addr, text, sizeof text))
            fail_errno(err, "Ошибка функции преобразования IP адреса", "inet_ntop");
        return std::string(text);
    });
}

void MGSocket::InitSocketExt(MGErr& err, int& sock, int domain, int type, int protocol) {
    at_edge("MGSocket::InitSocketExt", [&] {
        // Closed on exec: a program that the service starts must not keep a port or a connection of it.
        sock = socket(domain, type | SOCK_CLOEXEC, protocol);
        if (sock >= 0) return;
        err.num_param = domain;
        err.num_2_param = type;
        err.uint32_param = static_cast<uint32_t>(protocol);
        fail_errno(err, "Не удалось создать сетевое подключение", "socket");
    });
}

void MGSocket::PrintIndexDevs(const std::vector<MGIndexDevs>& devs) {
    for (const MGIndexDevs& dev : devs) {
        std::printf("index: %u\n", dev.index);
        std::printf("name : %s\n", dev.name.c_str());
    }
}

void MGSocket::PrintDevs(const std::vector<MGDevs>& devs) {
    at_edge("MGSocket::PrintDevs", [&] {
        for (const MGDevs& dev : devs) {
            std::printf("name: %s\n", dev.name.c_str());
            std::printf("mac: %s\n", mac_text(dev.mac).c_str());
            std::printf("if_up: %d\n", dev.if_up);
            std::printf("if_broadcast: %d\n", dev.if_broadcast);
            std::printf("if_debug: %d\n", dev.if_debug);
            std::printf("if_p2p: %d\n", dev.if_p2p);
            std::printf("if_notrailers: %d\n", dev.if_notrailers);
            std::printf("f_loopback: %d\n", dev.f_loopback);
            std::printf("if_running: %d\n", dev.if_running);
            std::printf("if_noarp: %d\n", dev.if_noarp);
            for (const MGDevAddr& address : dev.addrs) {
                std::printf("\taddr: %s\n", address.addr.c_str());
                std::printf("\tnetmask: %s\n", address.netmask.c_str());
                std::printf("\tbroadaddr: %s\n", address.broadaddr.c_str());
            }
        }
    });
}

void get_dev_ips(std::string dev, std::vector<std::string>& ips) {
    at_edge("get_dev_ips", [&] {
        std::vector<MGDevs> devs;
        MGSocket().FindDevs(devs);
        for (const MGDevs& found : devs)
            if (found.name == dev) append_addresses(found, ips);
    });
}
