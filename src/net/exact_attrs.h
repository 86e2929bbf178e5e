// Writing the attributes of a transfer document, whose reader must get what was meant: a text that the document would
// alter, as one with a control character or one that is no UTF-8, is refused.
#pragma once

#include "app/mg_err.h"
#include "config/xml_tables.h"

#include <string>
#include <variant>

template <class Record, class Table>
void write_exact_attrs(MGLibxml& xml, xmlNode* node, const Record& record, const Table& attrs, MGErr& err) {
    for (const XmlAttr<Record>& attr : attrs) {
        const auto* text = std::get_if<std::string Record::*>(&attr.field);
        if (text && !is_storable(record.**text)) {
            err.str_param = attr.name;
            vorma::fail(err, "Текст содержит символы, которые нельзя передать в документе XML", "is_storable");
        }
    }
    write_attrs(xml, node, record, attrs);
}
