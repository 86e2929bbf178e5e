// Packets of any content: what is read, changed, made anew or printed stays inside the bytes, and fails with MGErr
// alone.
#include "net/mg_ip.h"

#include "app/mg_err.h"

#include <cstdlib>

namespace {

// Whether body passes; MGErr is the one thing that it may throw.
template <class Body>
bool passes(Body body) {
    try {
        body();
    } catch (const MGErr&) {
        return false;
    }
    return true;
}

void require(bool holds) {
    if (!holds) std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    passes([&] { require(MGIp::GetIpLen(data, size) <= size); });

    MGIp ip;
    ip.Init(data, size);
    const std::vector<uint8_t> before = ip.m_buf;
    const bool header_checks = passes([&] { ip.Parse(true, true); });
    require(!header_checks || ip.IsIp());
    const bool checks = passes([&] { ip.Parse(); });
    const bool parses = passes([&] { ip.Parse(false); });
    require(parses || !checks);
    require(ip.m_buf == before);
    ip.Print2String();

    // What was refused is tried as well: Change and the makers stand on the fields, whatever they hold.
    const bool changes = passes([&] { ip.Change(0x01020304, 5, 0x06070809, 10); });
    require(changes || !parses);
    if (checks) require(passes([&] { ip.Parse(true, true); }));
    passes([&] { ip.Parse(false); });
    const std::vector<uint8_t> udp_data(ip.m_udp_len);
    ip.m_udp_data = udp_data.data();
    passes([&] {
        ip.MakeIp();
        ip.MakeUdp();
    });
    passes([&] {
        ip.SkipEthernet();
        ip.Parse(false);
    });
    return 0;
}
