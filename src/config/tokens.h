// The tokens that some fields of the records hold, and the texts that stand for them on the screen.
#pragma once

#include <array>
#include <string>

// What a string-coded field may hold, in the order of its drop-down list, and the text shown for it.
struct TokenText {
    const char* token;
    const char* text;
};

// MGConfig::mode_same_file and MGCopy::mode.
inline constexpr auto same_file_modes = std::to_array<TokenText>({
    {"ADD_NUM", "Сохранить с добавлением номера (*~N.*)"},
    {"REPLACE", "Перезаписать файл"},
    {"ERROR", "Выдать сообщение об ошибке"},
});

// MGConfig::ticket_type.
inline constexpr auto ticket_types = std::to_array<TokenText>({
    {"TXT", "Текстовый файл"},
    {"XML", "XML файл"},
});

// MGAction::type.
inline constexpr auto action_types = std::to_array<TokenText>({
    {"CONSOLE", "Консольная утилита"},
    {"SENDFILE", "Отправка файла"},
    {"COPYFILE", "Копирование файла"},
    {"RUNPROG", "Запуск программы"},
    {"EXIST", "Наличие файла"},
});

// The text shown for a token; empty for an unknown or empty token.
std::string get_same_file_txt_mode(const std::string& token);
std::string get_type_ticket_name(const std::string& token);
std::string get_action_txt_type(const std::string& token);

// "Да" or "Нет", as lists and reports show a flag.
const char* yes_or_no(bool value);
