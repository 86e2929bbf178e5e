// Binds the attributes of an element to the fields of a record: one table, in the file's order, which reading and
// writing both walk. A field's type says how it stands in the file: a number, a size and a port as decimal text, a flag
// as 0 or 1, a text as it is. What is special about one attribute stands in its row.
// Reading checks no range: a port keeps the low 16 bits of its number, a flag is any number but 0.
#pragma once

#include "config/file_checks.h"
#include "config/mg_libxml.h"
#include "config/scrambling.h"
#include "runtime/mg_file.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

enum class Form {
    plain,
    scrambled, // a password: clear text in the record, the result of code_string in the file
};

// The number that a stored 0 is read as; it is written as it stands.
struct ZeroReadsAs {
    int32_t number;
};

template <class Record>
struct XmlAttr {
    using Text = std::string Record::*;
    using Key = uint32_t Record::*;
    using Field = std::variant<Text, bool Record::*, int32_t Record::*, uint32_t Record::*, uint16_t Record::*,
                               uint64_t Record::*>;

    const char* name;
    Field field;
    Form form = Form::plain;
    ZeroReadsAs zero = {0};
    Key key = nullptr; // takes MakeCrc32Lower of the text that was read; never written

    constexpr XmlAttr(const char* attribute, Field value, Form as = Form::plain)
        : name(attribute), field(value), form(as) {}
    constexpr XmlAttr(const char* attribute, Field value, ZeroReadsAs default_number)
        : name(attribute), field(value), zero(default_number) {}
    constexpr XmlAttr(const char* attribute, Text value, Key crc) : name(attribute), field(value), key(crc) {}
};

// Whether an XML document can hold the text as it is, and the text without the bytes and characters that it can't hold,
// so that what is written can be read again.
bool is_storable(const std::string& text);
std::string storable_text(const std::string& text);

template <class Record>
void read_attr(const MGLibxml& xml, const xmlNode* node, Record& record, const XmlAttr<Record>& attr) {
    std::visit(
        [&](auto field) {
            auto& value = record.*field;
            using Value = std::remove_reference_t<decltype(value)>;
            if constexpr (std::is_same_v<Value, std::string>) {
                value = xml.GetStringProp(node, attr.name);
                if (attr.form == Form::scrambled) value = decode_string(value);
                if (attr.key) record.*attr.key = MGFile::MakeCrc32Lower(value);
            } else if constexpr (std::is_same_v<Value, uint64_t>) {
                value = xml.GetNumber64Prop(node, attr.name);
            } else {
                const int32_t number = xml.GetNumberProp(node, attr.name);
                value = static_cast<Value>(number ? number : attr.zero.number);
            }
        },
        attr.field);
}

template <class Record>
void write_attr(MGLibxml& xml, xmlNode* node, const Record& record, const XmlAttr<Record>& attr) {
    std::visit(
        [&](auto field) {
            const auto& value = record.*field;
            using Value = std::remove_cvref_t<decltype(value)>;
            if constexpr (std::is_same_v<Value, std::string>) {
                if (attr.form == Form::scrambled)
                    xml.SetTextProp(node, attr.name, code_string(value).c_str());
                else if (is_storable(value))
                    xml.SetTextProp(node, attr.name, value.c_str());
                else
                    xml.SetTextProp(node, attr.name, storable_text(value).c_str());
            } else if constexpr (std::is_same_v<Value, uint64_t>) {
                xml.SetNumber64Prop(node, attr.name, value);
            } else {
                xml.SetNumberProp(node, attr.name, static_cast<int32_t>(value));
            }
        },
        attr.field);
}

// Every attribute of the table, in its order. `attrs` is a range of XmlAttr<Record>.
template <class Record, class Table>
void read_attrs(const MGLibxml& xml, const xmlNode* node, Record& record, const Table& attrs) {
    for (const XmlAttr<Record>& attr : attrs) read_attr(xml, node, record, attr);
}

template <class Record, class Table>
void write_attrs(MGLibxml& xml, xmlNode* node, const Record& record, const Table& attrs) {
    for (const XmlAttr<Record>& attr : attrs) write_attr(xml, node, record, attr);
}

// Appends the `quantity` children `name` of `list` to `rows`: read_row(node, row) fills each, from a default row.
// A quantity below 1 leaves the children unread. Any other number of children than `quantity` completes err and throws
// it; the rows read up to then stay.
template <class Row, class ReadRow>
void read_rows(const MGLibxml& xml, const xmlNode* list, const char* name, int32_t quantity, MGErr& err,
               std::vector<Row>& rows, ReadRow&& read_row) {
    if (quantity < 1) return;
    constexpr int32_t most_believed = 1000; // a file may claim any number
    rows.reserve(rows.size() + static_cast<size_t>(std::min(quantity, most_believed)));
    int32_t counter = 0;
    for (xmlNode* node = xml.GetFirstChildren(list, name); node; node = xml.GetNextNode(node, name)) {
        if_counter_eq_quantity_throw_err(err, counter, quantity, name);
        Row row;
        read_row(node, row);
        rows.push_back(std::move(row));
        ++counter;
    }
    if_counter_not_eq_quantity_throw_err(err, counter, quantity, name);
}

// Sets `quantity` of `list` and adds a child `name` for each row, which write_row(node, row) fills.
template <class Row, class WriteRow>
void write_rows(MGLibxml& xml, xmlNode* list, const char* name, const std::vector<Row>& rows, WriteRow&& write_row) {
    xml.SetNumberProp(list, "quantity", static_cast<int32_t>(rows.size()));
    for (const Row& row : rows) write_row(xml.AddChildToNode(list, name), row);
}
