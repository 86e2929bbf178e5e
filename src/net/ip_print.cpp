// The text form of a packet's parsed fields.
#include "net/mg_ip.h"

#include "app/mg_err.h"

#include <cstdarg>
#include <cstdio>

using namespace vorma;

namespace {

constexpr uint8_t option_timestamps = 8;

[[gnu::format(printf, 2, 3)]] void add_line(std::string& text, const char* format, ...) {
    char line[1024];
    va_list values;
    va_start(values, format);
    std::vsnprintf(line, sizeof line, format, values);
    va_end(values);
    text += line;
}

// A line of `width` characters, dashes but for the word in it.
void add_separator(std::string& text, const std::string& word, size_t width) {
    std::string line = std::string(31, '-') + " " + word + " ";
    line.resize(width, '-');
    text += line + "\n";
}

void add_ip(std::string& text, const MGIp& ip) {
    auto address = [&text](const char* format, uint32_t number) {
        add_line(text, format, number >> 24, number >> 16 & 255, number >> 8 & 255, number & 255);
    };
    add_separator(text, "IP", 70);
    add_line(text, "Версия: %d\n", ip.m_ver);
    add_line(text, "Длина заголовка в байтах: %d\n", ip.m_ihl * 4);
    add_line(text, "Приоритет отбрасывания пакетов: %d\n", ip.m_dscp);
    add_line(text, "Возникновене затора на маршруте: %d\n", ip.m_ecn);
    add_line(text, "Размер пакета в байтах: %d\n", ip.m_len);
    add_line(text, "Идентификатор фрагментированного пакета: %d\n", ip.m_id);
    add_line(text, "Флаг фрагментации: %d\n", ip.m_flags);
    add_line(text, "Смещение фрагментов в байтах: %d\n", ip.m_offset * 8);
    add_line(text, "Число маршрутизаторов: %d\n", ip.m_ttl);
    add_line(text, "Идентификатор сетевого протокола: %d\n", ip.m_protocol);
    add_line(text, "Контрольная сумма заголовка: %d\n", ip.m_checksum);
    address("IP адрес отправителя: %d.%d.%d.%d\n", ip.m_src_ip);
    address("IP адрес получателя: %d.%d.%d.%d\n", ip.m_dst_ip);
}

void add_option(std::string& text, const MGIpOpt& option) {
    add_line(text, "Номер опции: %d\n", option.kind);
    add_line(text, "\tДлина опции: %d\n", option.len);
    add_line(text, "\tРазмер данных: %lu\n", static_cast<unsigned long>(option.data.size()));
    if (option.kind != option_timestamps || option.len != 10 || option.data.size() != 8) return;
    const auto& d = option.data;
    add_line(text, "\t\tМетка времени: %u\n", MGIp::IpCharToInt(d[0], d[1], d[2], d[3]));
    add_line(text, "\t\tМетка ответа : %u\n", MGIp::IpCharToInt(d[4], d[5], d[6], d[7]));
}

void add_tcp(std::string& text, const MGIp& ip) {
    auto flag = [&ip](int mask) { return (ip.m_tcp_flags & mask) != 0 ? 1 : 0; };
    add_line(text, "Порядковый номер: %u\n", ip.m_seq);
    add_line(text, "Номер подтверждения: %u\n", ip.m_ack);
    add_line(text, "Длина заголовка TCP: %d\n", ip.m_tcp_len);
    add_line(text, "Три зарезервированных бита: %d\n", ip.m_tcp_reserved);
    add_line(text, "NS[%d], CWR[%d], ECE[%d], URG[%d], ACK[%d], PSH[%d], RST[%d], SYN[%d], FIN[%d]\n", flag(0x100),
             flag(0x80), flag(0x40), flag(0x20), flag(0x10), flag(0x08), flag(0x04), flag(0x02), flag(0x01));
    add_line(text, "Размер окна: %d\n", ip.m_window);
    add_line(text, "Указатель важности: %d\n", ip.m_urgent);
    for (const MGIpOpt& option : ip.m_options) add_option(text, option);
}

} // namespace

std::string MGIp::Print2String() const {
    return at_edge("MGIp::Print2String", [&] {
        std::string text;
        add_ip(text, *this);
        const bool tcp = m_protocol == 6;
        if (tcp || m_protocol == 17) {
            add_separator(text, tcp ? "TCP" : "UDP", 70);
            add_line(text, "Порт отправителя: %d\n", m_src_port);
            add_line(text, "Порт получателя: %d\n", m_dst_port);
            add_line(text, "Контрольная TCP/UDP: %d\n", m_transport_checksum);
            if (tcp)
                add_tcp(text, *this);
            else
                add_line(text, "Длина заголовка и данных UDP: %d\n", m_udp_len);
        }
        add_separator(text, "END", 72);
        return text;
    });
}

void MGIp::Print() const {
    std::puts(Print2String().c_str());
}
