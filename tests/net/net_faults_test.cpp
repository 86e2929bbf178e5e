#include "app/log.h"
#include "net/address_syntax.h"
#include "net/mg_ip.h"
#include "net/mg_socket.h"
#include "net/mg_trelm.h"
#include "net/profile_report.h"
#include "net/provider.h"
#include "net/ticket.h"
#include "net/transfer_documents.h"
#include "runtime/owners.h"
#include "support/faults.h"
#include "support/provider/stand_in.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <csignal>
#include <dlfcn.h>
#include <sched.h>
#include <sys/socket.h>
#include <thread>

using namespace vorma;

namespace {

using namespace std::string_literals;

// A connection whose peer has said something already. Making it is no part of what is tested.
struct Ends {
    FileDescriptor ours, peer;

    explicit Ends(const std::string& said) {
        const faults::Pause pause;
        int ends[2] = {};
        EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends), 0);
        ours.reset(ends[0]);
        peer.reset(ends[1]);
        EXPECT_EQ(send(peer.get(), said.data(), said.size(), 0), static_cast<ssize_t>(said.size()));
    }
};

const std::string accepted(16, '\0'); // the two answers of a receiver
const std::string message = "\3\0\0\0\0\0\0\0abc"s;

struct World {
    MGSocket server, client;
    MGTrelm no_tls;
    MGSignal signal;
    TempDir dir;
    std::vector<uint8_t> data{1, 2, 3};
    std::vector<std::string> ips;
    std::vector<MGDevs> devs, printed = std::vector<MGDevs>(1);
    std::string text, other, address = "127.0.0.1", device = "lo";
    MGIp packet;
    std::vector<uint8_t> long_packet = std::vector<uint8_t>(3000); // to ourselves
    MGSend send;
    MGDev dev;
    MGProfile profile;
    MGInfo info;
    const std::string result = dir.path("result");
    std::vector<MGQueue> queue = std::vector<MGQueue>(2);
    MGRecvFile file;
    uint64_t size = 0;

    World() {
        client.TurnOffTls(true);
        client.SetDebugLogFile(dir.path("debug").c_str());
        client.SetDebugLog(true, true);
        dev.adrs.resize(2);
        dev.is_local = true;
        profile.config.gw_client = dev;
        profile.config.fs_allow.resize(1);
        profile.config.gw_client_radio = profile.config.fs_radio = profile.config.timer_radio = true;
        long_packet[0] = 0x45;
        long_packet[16] = 127, long_packet[19] = 1;
        send.file = text = "a text too long to stand in the object of its string";
    }
};

uint16_t port_of(int sock) {
    const faults::Pause pause;
    sockaddr_in address{};
    socklen_t size = sizeof address;
    getsockname(sock, reinterpret_cast<sockaddr*>(&address), &size);
    return ntohs(address.sin_port);
}

void make_texts_and_bytes(World& w) {
    at_edge("results", [&] {
        convert_ip_to_net("10.200.200.200/9", w.other);
        sprintf_buf(w.text.data(), w.text.size());
        MGIp::IpUint32ToStr(0xFFFFFFFF, true);
        MGIp::Append2Vector(w.data, w.text.data(), w.text.size());
        Utf8toAnsi1251(w.text);
    });
}

TEST(NetFaults, OfConnectionsLeaveNothing) {
    std::signal(SIGPIPE, SIG_IGN);
    const Fallible<World> rows[] = {
        OF(w.server.Init(); w.server.BindAndListen(w.address, 0); w.client.Init();
           w.client.Connect(w.address, port_of(w.server.m_sock));
           if (!w.client.SendPoll(w.client.m_sock) || !w.server.RecvAccept()) throw MGExit(0)),
        OF(w.client.SendData(Ends(accepted).ours.get(), w.data)),
        OF(w.client.RecvData(Ends(message).ours.get(), w.data)),
        OF(w.client.TlsSendData(w.no_tls, &w.signal, Ends(accepted).ours.get(), w.data)),
        OF(w.client.TlsRecvData(w.no_tls, &w.signal, Ends(message).ours.get(), w.data, 0, 16)),
        OF(const Ends one(message), other(message); bool from_1, from_2;
           w.client.RecvPollWait2(one.ours.get(), other.ours.get(), &w.signal, from_1, from_2, true, true)),
        OF(w.packet.MakeUdpForExit("10.0.0.1"); w.packet.Parse(); w.packet.Print2String(); w.packet.MakeIp();
           MGIp fragment; MGSocket::MakeFragment(w.packet.m_packet, fragment, 0, true, 16, true);
           fragment.Parse(true, true); fragment.Change(1, 0, 0, 0)),
        OF(bool loopback, up, running; w.client.IsDev(w.device, loopback, up, running, w.ips);
           w.client.GetIps(w.address, w.ips); w.client.GetLocalIps(w.ips); w.client.FindDevs(w.devs);
           w.client.GetMac(w.device); get_dev_ips(w.device, w.ips)),
        OF(MGSocket::PrintDevs(w.printed)),
        OF(MGSocket::ReadTun(Ends(message).ours.get(), w.data.data(), w.data.size())),
        OF(make_texts_and_bytes(w)),
    };
    for_each_fault(rows);
}

TEST(NetFaults, OfDevicesLeaveNothing) {
    const Fallible<World> rows[] = {
        OF(w.client.OpenTun("faulty")),
        OF(w.client.InitRaw(IPPROTO_RAW); MGSocket::SetIpHdrIncl(w.client.GetRawSock());
           MGSocket::SendIp(w.client.GetRawSock(), w.long_packet.data(), w.long_packet.size())),
    };
    bool granted = false;
    std::thread([&] {
        granted = unshare(CLONE_NEWNET) == 0 && access("/dev/net/tun", R_OK | W_OK) == 0 &&
                  std::system("ip link set lo up mtu 1500 2>/dev/null") == 0;
        if (granted) for_each_fault(rows);
    }).join();
    if (!granted) GTEST_SKIP();
}

TEST(NetFaults, OfDocumentsLeaveNothing) {
    const Fallible<World> rows[] = {
        OF(write_file_header(w.send, 1, w.text), read_file_header(w.text, w.file)),
        OF(write_file_crc(1, w.text), read_file_crc(w.text, w.file)),
        OF(write_file2_header(w.send.file, w.send.file, 1, 1, w.text);
           read_file2_header(w.text, w.other, w.other, w.size, w.size)),
        OF(write_gw_client(w.dev, w.text), read_gw_client(w.text, w.dev)),
        OF(write_file_client(w.queue, w.send.file, w.send.file, w.send.file, w.text);
           read_file_client(w.text, w.queue, w.other, w.other, w.other)),
        OF(write_file_ticket("XML", w.send.file, 1, w.data, w.text);
           write_file_ticket("TXT", w.send.file, 1, w.data, w.text)),
        OF(LogFileGlobal.SetResultFile(w.result.c_str()); print_selected_profile(w.profile);
           print_info_dev(w.info, w.dev)),
    };
    for_each_fault(rows);
}

trelm_functions provider_functions;

// A function of the provider, undisturbed: what it does without memory is not ours to say.
template <auto function>
struct Undisturbed;
template <class Result, class... Arguments, Result (*trelm_functions::*function)(Arguments...)>
struct Undisturbed<function> {
    static Result call(Arguments... arguments) {
        const faults::Pause pause;
        return (provider_functions.*function)(arguments...);
    }
};

struct ProviderWorld : World {
    const ProviderTest provider;
    MGTrelm bridge, far_end, copy;
    std::string signed_file = dir.path("file"), signature = dir.path("signature"), none;

    ProviderWorld() { dir.write("file", text); }

    void start(MGTrelm& trelm) {
        trelm.InitLib();
        provider_functions = trelm.functions;
#define UNDISTURBED(name) trelm.functions.name = &Undisturbed<&trelm_functions::name>::call;
        TRELM_FUNCTIONS(UNDISTURBED)
#undef UNDISTURBED
        trelm.InitConnect(0, none, none, none, none);
        trelm.Initialize();
    }
};

TEST(NetFaults, OfTheProviderLeaveNothing) {
    const ProviderTest provider;
    void* const pinned = dlopen(provider_library.c_str(), RTLD_LAZY);
    const Fallible<ProviderWorld> rows[] = {
        OF(w.start(w.bridge), w.bridge.CopyTrelm(w.copy)),
        OF(w.start(w.bridge); w.start(w.far_end); shake_hands(w.bridge, w.far_end); w.bridge.TlsQuery(1, w.data);
           w.bridge.TlsWrite(w.data, w.data); w.far_end.TlsRead(w.data, w.data, false)),
        OF(w.start(w.bridge); w.bridge.SignFileDetached(w.signed_file, w.signature, 20);
           w.bridge.VerifyFileDetached(w.signed_file, w.signature, 20, w.data)),
    };
    for_each_fault(rows);
    dlclose(pinned);
}

} // namespace
