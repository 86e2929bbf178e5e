// What reports about a configuration are made of: tables of label and field, walked by add_rows(), numbered lists, and
// the tables that several reports share. A label of a shared table is not indented; the walk puts the tabs in front.
// Used by several threads at once, each with reports and records of its own.
#pragma once

#include "config/list_records.h"
#include "config/tokens.h"
#include "runtime/mg_info.h"

#include <array>
#include <span>
#include <string>
#include <type_traits>
#include <variant>
#include <vector>

// A flag as "Да" or "Нет"; without it a flag reads "true" or "false".
template <class Record>
struct InWords {
    bool Record::*flag;
};
// The same of whether there is a text, in place of the text.
template <class Record>
struct WhetherGiven {
    std::string Record::*text;
};

// One row: what `field` holds under `label`, or for a token the words that stand for it.
template <class Record>
struct ReportRow {
    const char* label;
    std::variant<std::string Record::*, bool Record::*, int32_t Record::*, uint32_t Record::*, uint16_t Record::*,
                 InWords<Record>, WhetherGiven<Record>>
        field;
    std::string (*words)(const std::string& token) = nullptr;
};

enum class EmptyTexts { shown, left_out };

// Adds the rows of the table, each label behind `indent`.
template <class Record>
void add_rows(MGInfo& info, const Record& record, std::type_identity_t<std::span<const ReportRow<Record>>> rows,
              const std::string& indent = "", EmptyTexts empty = EmptyTexts::shown) {
    for (const ReportRow<Record>& row : rows)
        std::visit(
            [&](auto field) {
                const std::string label = indent + row.label;
                if constexpr (std::is_same_v<decltype(field), InWords<Record>>) {
                    info.AddRow(label.c_str(), yes_or_no(record.*field.flag));
                } else if constexpr (std::is_same_v<decltype(field), WhetherGiven<Record>>) {
                    info.AddRow(label.c_str(), yes_or_no(!(record.*field.text).empty()));
                } else if constexpr (std::is_same_v<decltype(field), std::string Record::*>) {
                    const std::string text = row.words ? row.words(record.*field) : record.*field;
                    if (empty == EmptyTexts::shown || !text.empty()) info.AddRow(label.c_str(), text);
                } else {
                    info.AddRow(label.c_str(), record.*field);
                }
            },
            row.field);
}

// Adds a numbered row for each of `list`, from 1, with its `name` as value, and below it what add_rest(row) adds.
template <class Row, class AddRest>
void add_list(MGInfo& info, const std::string& indent, const char* label, const std::vector<Row>& list,
              std::string Row::*name, AddRest&& add_rest) {
    unsigned number = 0;
    for (const Row& row : list) {
        info.AddNumRow(indent.c_str(), ++number, label, row.*name);
        add_rest(row);
    }
}

// --- Rows that several reports show ---

inline constexpr const char* subject_label = "Имя владельца сертификата";
inline constexpr const char* queue_label = "Идентификатор очереди";
inline constexpr const char* client_label = "Наименование клиента";

// The server that a user is connected to.
inline constexpr auto connection_rows = std::to_array<ReportRow<MGAdmit>>({
    {"IP адрес отправки", &MGAdmit::ip},
    {"Доменное имя отправки", &MGAdmit::domen},
    {"Порт отправки", &MGAdmit::port},
});
inline constexpr auto queue_rows = std::to_array<ReportRow<MGQueue>>({
    {"Каталог входящих", &MGQueue::in_dir},
    {"Каталог исходящих", &MGQueue::out_dir},
    {"Выдавать подпись", InWords{&MGQueue::out_sign}},
    {"Сохранять квитанции в каталог", InWords{&MGQueue::save_ticket}},
    {"Каталог квитанций", &MGQueue::ticket_dir},
    {"Выдавать подпись квитанций", InWords{&MGQueue::out_ticket_sign}},
});
inline constexpr auto internal_rows = std::to_array<ReportRow<MGListAdrs>>({
    {"IP адрес", &MGListAdrs::ip},
    {"Доменное имя", &MGListAdrs::domen},
    {"Подсеть", &MGListAdrs::net},
});
inline constexpr auto virtual_rows = std::to_array<ReportRow<MGListAdrs>>({
    {"IP адрес", &MGListAdrs::ip},
});
