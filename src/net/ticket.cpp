// Both forms of a ticket.
#include "net/ticket.h"

#include "config/mg_libxml.h"
#include "net/exact_attrs.h"
#include "runtime/mg_file.h"
#include "runtime/mg_info.h"

using namespace vorma;

namespace {

struct Ticket {
    std::string name;
    uint64_t length = 0;
    std::string hash; // hexadecimal
    std::string date;
};

constexpr XmlAttr<Ticket> ticket_attrs[] = {
    {"name", &Ticket::name},
    {"lenght", &Ticket::length}, // spelt so in the tickets that are out
    {"hash", &Ticket::hash},
    {"date", &Ticket::date},
};

void write_xml(const Ticket& ticket, std::string& text) {
    MGErr err = error_of("write_file_ticket", "Ошибка создания квитанции");
    MGLibxml xml;
    write_exact_attrs(xml, xml.AddChildToNode(xml.AddDocRoot("receipt"), "file"), ticket, ticket_attrs, err);
    xml.SaveString(text);
}

void write_text(const Ticket& ticket, std::string& text) {
    MGInfo info;
    info.AddRow("Квитанция на полученный файла", MGInfo::empty_value);
    info.AddRow("Файл", ticket.name);
    info.AddRow("Длина", ticket.length);
    info.AddRow("Хэш", ticket.hash);
    info.AddRow("Дата", ticket.date);
    text = info.GetString();
}

} // namespace

void write_file_ticket(const std::string& ticket_type, const std::string& name, uint64_t length,
                       const std::vector<uint8_t>& hash, std::string& text) {
    at_edge("write_file_ticket", [&] {
        text.clear();
        Ticket ticket{name, length, "", MGFile::GetLocalDateAndTime()};
        MGFile::BinToHex(hash, ticket.hash);
        ticket_type == "XML" ? write_xml(ticket, text) : write_text(ticket, text);
    });
}
