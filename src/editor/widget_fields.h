// Binds the fields of a record to the widgets of a dialog: a table names each pair once, fill() and read_back() walk
// it in order. Widgets are named by their role, "catalog_log" for the entry "entry_catalog_log"; the kind gives the
// front of the id, and the two sides of a gateway share one table with the side's name between kind and role. On the
// toolkit's thread only.
#pragma once

#include "dialog/kept_value.h"
#include "dialog/mg_dialog.h"
#include "editor/histories.h"

#include <cstdint>
#include <span>
#include <string>
#include <type_traits>
#include <variant>

// One row of a table. The fields behind the kind are those that the kind uses.
template <class Record>
struct WidgetField {
    enum class Kind { spin, entry, toggle, combo, choice, button };

    Kind kind;
    const char* front; // of the id: "adjustment_", "entry_", "check_", "radio_", "combo_", "button_"
    const char* role;
    std::variant<int32_t Record::*, uint32_t Record::*, uint16_t Record::*, bool Record::*, std::string Record::*>
        field;
    int limit = 0;                   // spin: the largest value
    History* history = nullptr;      // combo: the rows of its list
    bool remembered = false;         // combo: what was read goes into the history
    const char* empty_shown_as = ""; // combo, choice: what an empty value is shown as
};

// The rows of a table, one function a kind of widget.
template <class Record>
struct FieldsOf {
    using Field = WidgetField<Record>;
    using Kind = typename Field::Kind;

    template <class Number>
    static constexpr Field spin(const char* role, Number Record::*field, int limit) {
        return {Kind::spin, "adjustment_", role, field, limit};
    }
    static constexpr Field entry(const char* role, std::string Record::*field) {
        return {Kind::entry, "entry_", role, field};
    }
    static constexpr Field check(const char* role, bool Record::*field) {
        return {Kind::toggle, "check_", role, field};
    }
    static constexpr Field radio(const char* role, bool Record::*field) {
        return {Kind::toggle, "radio_", role, field};
    }
    // An editable combo box and its entry, whose values the history remembers.
    static constexpr Field combo(const char* role, std::string Record::*field, History& history) {
        return {Kind::combo, "entry_", role, field, 0, &history, true};
    }
    // The same with a list that only offers.
    static constexpr Field offer(const char* role, std::string Record::*field, History& rows,
                                 const char* empty_shown_as = "") {
        return {Kind::combo, "entry_", role, field, 0, &rows, false, empty_shown_as};
    }
    // A button, which has no field but a place among the others.
    static constexpr Field button(const char* role) { return {Kind::button, "button_", role, {}}; }
    // A combo box with fixed rows, whose row ids are the field's tokens.
    static constexpr Field choice(const char* role, std::string Record::*field, const char* empty_shown_as) {
        return {Kind::choice, "combo_", role, field, 0, nullptr, false, empty_shown_as};
    }
};

inline GtkEntry* spin_button(const MGDialog& dialog, const std::string& role) {
    return GTK_ENTRY(dialog.GetObject(("spin_" + role).c_str()));
}

// Shows the record in the widgets: limits before values, rows before texts.
template <class Record>
void fill(MGDialog& dialog, const Record& record, std::type_identity_t<std::span<const WidgetField<Record>>> table,
          const std::string& side = "") {
    using Kind = typename WidgetField<Record>::Kind;
    for (const WidgetField<Record>& row : table) {
        if (row.kind == Kind::button) continue;
        const std::string id = row.front + side + row.role;
        std::visit(
            [&](auto field) {
                const auto& value = record.*field;
                if constexpr (std::is_same_v<decltype(field), std::string Record::*>) {
                    const char* shown = value.empty() ? row.empty_shown_as : value.c_str();
                    if (row.kind == Kind::choice) {
                        dialog.ComboBoxSetId(id.c_str(), shown);
                        return;
                    }
                    if (row.history) init_combo_box(&dialog, ("combo_" + side + row.role).c_str(), *row.history);
                    dialog.SetEntry(id.c_str(), shown);
                } else if constexpr (std::is_same_v<decltype(field), bool Record::*>) {
                    dialog.ToggleButtonSet(id.c_str(), value);
                } else {
                    dialog.SpinSetMax(id.c_str(), row.limit);
                    dialog.SpinSet(id.c_str(), value);
                    keep_value(spin_button(dialog, side + row.role), std::to_string(value).c_str());
                }
            },
            row.field);
    }
}

// Reads every widget of the table into the record, insensitive ones too. What the user has not touched stays as it was:
// also a number beyond the limits of its spin button, and a token that the rows of a choice lack.
template <class Record>
void read_back(MGDialog& dialog, Record& record, std::type_identity_t<std::span<const WidgetField<Record>>> table,
               const std::string& side = "") {
    using Kind = typename WidgetField<Record>::Kind;
    for (const WidgetField<Record>& row : table) {
        if (row.kind == Kind::button) continue;
        const std::string id = row.front + side + row.role;
        std::visit(
            [&](auto field) {
                auto& value = record.*field;
                if constexpr (std::is_same_v<decltype(field), std::string Record::*>) {
                    if (row.kind != Kind::choice)
                        value = dialog.GetEntry(id.c_str());
                    else if (const std::string token = dialog.ComboBoxGetIdStr(id.c_str()); !token.empty())
                        value = token;
                    if (row.remembered) add_string_to_vector(value, *row.history);
                } else if constexpr (std::is_same_v<decltype(field), bool Record::*>) {
                    value = dialog.ToggleButtonGet(id.c_str());
                } else {
                    const char* untouched = kept_value(spin_button(dialog, side + row.role));
                    const long long number = untouched ? std::stoll(untouched) : dialog.SpinGet(id.c_str());
                    value = static_cast<std::remove_reference_t<decltype(value)>>(number);
                }
            },
            row.field);
    }
}
