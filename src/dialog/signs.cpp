// Words for icons, headings, marks and frames.
#include "dialog/signs.h"

#include "dialog/gtk_owner.h"

#include <gtk/gtk-a11y.h>

#include <algorithm>
#include <string_view>

namespace {

struct Heading {
    std::string_view title;
    const char* mark; // what a mark below it is called
    const char* meaning;
};

constexpr Heading headings[] = {
    {"[v]", "Отметка", "Отметка строки: «Удалить» удаляет отмеченные строки"},
    {"[-->]", nullptr, "Знак «-->»: пользователя соединяют со следующим сервером,\nон задан в столбцах справа"},
    {"Умолч", "Профиль по умолчанию", "Профиль, который служба берёт по умолчанию;\nтакой в списке один"},
    {"Актив", "Профиль активен", "Активные профили; их может быть сколько угодно"},
    {"Активное", "Действие активно", "Активные действия; их может быть сколько угодно"},
};

constexpr const char* mark_key = "vorma-mark";

const char* (*usual_cell_name)(AtkObject*);

const char* cell_name(AtkObject* cell) {
    if (const char* name = usual_cell_name(cell)) return name;
    GObject* renderer = nullptr;
    g_object_get(cell, "renderer", &renderer, nullptr);
    if (!renderer) return nullptr;
    const auto* mark = static_cast<const char*>(g_object_get_data(renderer, mark_key));
    g_object_unref(renderer);
    return mark;
}

// The toolkit makes an object for a cell when it is asked for, and names those of texts only.
bool name_cells() {
    auto* marks = ATK_OBJECT_CLASS(g_type_class_ref(GTK_TYPE_BOOLEAN_CELL_ACCESSIBLE)); // kept
    usual_cell_name = marks->get_name;
    marks->get_name = cell_name;
    return true;
}

void explain_heading(GtkTreeViewColumn* column) {
    const auto* heading = std::ranges::find(headings, gtk_tree_view_column_get_title(column), &Heading::title);
    if (heading == std::end(headings)) return;
    gtk_widget_set_tooltip_text(gtk_tree_view_column_get_button(column), heading->meaning);
    GList* cells = gtk_cell_layout_get_cells(GTK_CELL_LAYOUT(column));
    for (GList* cell = cells; cell; cell = cell->next)
        g_object_set_data(G_OBJECT(cell->data), mark_key, const_cast<char*>(heading->mark));
    g_list_free(cells);
}

void explain_headings(GtkTreeView* view) {
    [[maybe_unused]] static const bool named = name_cells();
    GList* columns = gtk_tree_view_get_columns(view);
    for (GList* column = columns; column; column = column->next) explain_heading(GTK_TREE_VIEW_COLUMN(column->data));
    g_list_free(columns);
}

// The icon's object has no name of its own; its description is the tooltip.
void name_icon(GtkEntry* entry) {
    AtkObject* icon = atk_object_ref_accessible_child(gtk_widget_get_accessible(GTK_WIDGET(entry)), 0);
    if (!icon) return;
    const GtkText does(gtk_entry_get_icon_tooltip_text(entry, GTK_ENTRY_ICON_SECONDARY));
    if (does) atk_object_set_name(icon, does.get());
    g_object_unref(icon);
}

// In the definition the icon is one that comes in colours of its own. A theme without the one in the text's colour
// gives its likeness.
void colour_icon(GtkEntry* entry) {
    char* stock = nullptr;
    g_object_get(entry, "secondary-icon-stock", &stock, nullptr);
    const GtkText name(stock);
    if (!name) return;
    const bool catalog = std::string_view(name.get()) == "gtk-directory";
    GIcon* icon = g_themed_icon_new_with_default_fallbacks(catalog ? "folder-symbolic" : "text-x-generic-symbolic");
    gtk_entry_set_icon_from_gicon(entry, GTK_ENTRY_ICON_SECONDARY, icon);
    g_object_unref(icon);
    name_icon(entry);
}

void name_frame(GtkFrame* frame) {
    GtkWidget* title = gtk_frame_get_label_widget(frame);
    if (GTK_IS_BUTTON(title))
        atk_object_set_name(gtk_widget_get_accessible(GTK_WIDGET(frame)), gtk_button_get_label(GTK_BUTTON(title)));
}

} // namespace

void explain_signs(GtkWidget* widget) {
    if (GTK_IS_TREE_VIEW(widget)) explain_headings(GTK_TREE_VIEW(widget));
    if (GTK_IS_ENTRY(widget)) colour_icon(GTK_ENTRY(widget));
    if (GTK_IS_FRAME(widget)) name_frame(GTK_FRAME(widget));
}
