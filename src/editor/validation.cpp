// Judging what the user typed: one fault at a time, told in a box.
#include "editor/validation.h"

#include "app/globals.h"
#include "dialog/make_dialog.h"
#include "net/address_syntax.h"

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

int error_test_ip_or_domen(MGDialog* dialog, const char* ip_entry, const char* domen_entry) {
    const char* ip = dialog->GetEntry(ip_entry);
    const bool no_ip = string_is_empty(ip);
    const bool no_domen = string_is_empty(dialog->GetEntry(domen_entry));
    if (no_ip == no_domen) return refuse(dialog, ip_entry, "Нужно указать IP адрес или доменное имя");
    return no_ip ? 0 : is_error_ip(dialog, ip_entry, ip);
}
