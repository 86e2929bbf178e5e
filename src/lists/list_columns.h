// Binds the columns of a list on the screen to the fields of its records: a table names each pair once, fill_row()
// walks it. Column 0 is the [v] mark, which is no field. On the toolkit's thread only.
#pragma once

#include "config/tokens.h"
#include "dialog/mg_dialog.h"

#include <span>
#include <string>
#include <type_traits>
#include <variant>

inline constexpr int mark_column = 0;
inline constexpr int key_column = 1; // what names a record; searches look here

// One column: a text as it is, a flag in words, or what a function makes of the record.
template <class Record>
struct ListColumn {
    int column; // of the store
    std::variant<std::string Record::*, bool Record::*, std::string (*)(const Record&)> shown;
};

// Writes the record into the current row; reset_mark takes its [v] mark off, else the mark stays.
template <class Record>
void fill_row(MGDialog* dialog, GtkListStore* store, bool reset_mark, const Record& record,
              std::type_identity_t<std::span<const ListColumn<Record>>> columns) {
    if (reset_mark) dialog->ListStoreSetBoolean(store, mark_column, false);
    for (const ListColumn<Record>& row : columns)
        std::visit(
            [&](auto shown) {
                if constexpr (std::is_same_v<decltype(shown), std::string Record::*>)
                    dialog->ListStoreSetString(store, row.column, (record.*shown).c_str());
                else if constexpr (std::is_same_v<decltype(shown), bool Record::*>)
                    dialog->ListStoreSetString(store, row.column, yes_or_no(record.*shown));
                else
                    dialog->ListStoreSetString(store, row.column, shown(record).c_str());
            },
            row.shown);
}
