// Judging what the user typed: one fault at a time, told in a box.
#include "editor/validation.h"

#include "config/xml_tables.h"
#include "dialog/make_dialog.h"
#include "dialog/open_dialogs.h"
#include "net/address_syntax.h"

#include <algorithm>
#include <cstdio>
#include <string>

namespace {

// Tells of a fault in a box and puts the focus where it is to be mended.
int refuse(MGDialog* dialog, const char* entry, const char* text, void (*box)(MGDialog*, const char*) = show_message) {
    box(dialog, text);
    dialog->SetFocusToProblemWidget(entry);
    return 1;
}

int refuse_in_section(MGDialog* dialog, const char* tab, const char* section, const char* entry, const char* demand) {
    const std::string text = "В закладке (" + std::string(tab) + ") в разделе (" + section + ") " + demand;
    return refuse(dialog, entry, text.c_str());
}

// Of a text that can't be stored.
std::string why_not_stored(const std::string& text) {
    if (text.find('\0') != std::string::npos) return "содержит нулевой байт";
    if (!g_utf8_validate(text.c_str(), -1, nullptr)) return "не в кодировке UTF-8";
    const std::string kept = storable_text(text);
    const char* odd = text.c_str() + (std::ranges::mismatch(kept, text).in2 - text.begin());
    char code[sizeof "U+10FFFF"];
    std::snprintf(code, sizeof code, "U+%04X", g_utf8_get_char(odd));
    return "содержит недопустимый символ " + std::string(code);
}

} // namespace

int entry_is_empty(MGDialog* dialog, const char* entry) {
    if (!string_is_empty(dialog->GetEntry(entry))) return 0;
    return refuse(dialog, entry, "Запещен ввод пустых строк.");
}

int entry_is_spam(MGDialog* dialog, const char* entry) {
    const char* text = dialog->GetEntry(entry);
    if (*text == '\0' || !string_is_empty(text)) return 0;
    return refuse(dialog, entry, "Пустая строка не должна содержать некорректные символы заполнения.");
}

int entry_not_id(MGDialog* dialog, const char* entry) {
    if (string_is_id(dialog->GetEntry(entry))) return 0;
    return refuse(dialog, entry,
                  "Идентификатор содержит недопустимые символы или нарушен его формат.\n"
                  "Разрешается латинский алфавита в нижнем регистре, цифры и символ подчеркивания.",
                  show_refusal);
}

int is_error_config_ip(MGDialog* dialog, const char* tab, const char* section, const char* entry) {
    const char* text = ConfigDialog->GetEntry(entry);
    if (string_is_empty(text) || string_is_ip(text)) return 0;
    return refuse_in_section(dialog, tab, section, entry, "необходимо задать IP адрес в формате xxx.xxx.xxx.xxx");
}

int is_error_config_ip_net(MGDialog* dialog, const char* tab, const char* section, const char* entry) {
    const char* text = ConfigDialog->GetEntry(entry);
    if (string_is_empty(text) || string_is_ip_net(text)) return 0;
    return refuse_in_section(dialog, tab, section, entry,
                             "необходимо задать IP адрес и подсеть в формате xxx.xxx.xxx.xxx/nn");
}

int is_error_ip(MGDialog* dialog, const char* entry, const char* text) {
    if (string_is_ip(text)) return 0;
    return refuse(dialog, entry, "Необходимо задать IP адрес в формате NNN.NNN.NNN.NNN");
}

int is_error_net(MGDialog* dialog, const char* entry, const char* text) {
    if (string_is_net(text)) return 0;
    return refuse(dialog, entry, "Необходимо задать подсеть в формате NNN.NNN.NNN.0/24");
}

int is_error_ip_net(MGDialog* dialog, const char* entry, const char* text) {
    if (string_is_ip_net(text)) return 0;
    return refuse(dialog, entry, "Необходимо задать IP адрес и подсеть в формате NNN.NNN.NNN.NNN/24");
}

int is_error_stored(MGDialog* dialog, const char* name, const std::string& text, const char* advice) {
    if (is_storable(text)) return 0;
    std::string shown = text;
    std::ranges::replace(shown, '\0', '?'); // the box would end there
    const std::string box = std::string(name) + " " + why_not_stored(text) +
                            ", записать его в файл конфигурации без искажения нельзя.\n" + advice + "\n" + shown;
    show_refusal(dialog, box.c_str());
    return 1;
}

int error_test_ip_or_domen(MGDialog* dialog, const char* ip_entry, const char* domen_entry) {
    const char* ip = dialog->GetEntry(ip_entry);
    const bool no_ip = string_is_empty(ip);
    const bool no_domen = string_is_empty(dialog->GetEntry(domen_entry));
    if (no_ip == no_domen) return refuse(dialog, ip_entry, "Нужно указать IP адрес или доменное имя");
    return no_ip ? 0 : is_error_ip(dialog, ip_entry, ip);
}
