// The texts of tokens and flags.
#include "config/tokens.h"

#include "app/mg_err.h"

#include <span>

using namespace vorma;

namespace {

std::string text_of(const std::string& token, std::span<const TokenText> list) {
    for (const TokenText& row : list)
        if (token == row.token) return row.text;
    return "";
}

} // namespace

std::string get_same_file_txt_mode(const std::string& token) {
    return at_edge("get_same_file_txt_mode", [&] { return text_of(token, same_file_modes); });
}

std::string get_type_ticket_name(const std::string& token) {
    return at_edge("get_type_ticket_name", [&] { return text_of(token, ticket_types); });
}

std::string get_action_txt_type(const std::string& token) {
    return at_edge("get_action_txt_type", [&] { return text_of(token, action_types); });
}

const char* yes_or_no(bool value) {
    return value ? "Да" : "Нет";
}
