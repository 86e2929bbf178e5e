// The table of the six lists.
#include "lists/admit_modes.h"

#include "dialog/open_dialogs.h"

#include <array>

namespace {

using Element = AdmitMode::Element;

const std::array<AdmitMode, 6> modes = {{
    {Element::admit, "admit_list_store", "admit_view", "admit_scrolled", nullptr, &SubjectDialog, "dialog_subject",
     true},
    {Element::admit, "admit_list_store", "admit_view_2", "admit_scrolled_2", nullptr, &SubjectDialog,
     "dialog_subject_2"},
    {Element::queue, "queue_list_store", "queue_view", "admit_scrolled_fc", "Список очередей", &QueueDialog,
     "dialog_queue"},
    {Element::allow, "allow_list_store", "allow_view", "admit_scrolled_fs", "Список клиентов", &AllowDialog,
     "dialog_allow"},
    {Element::admit, "admit_list_store", "admit_view_2", "admit_scrolled_2", nullptr, &SubjectDialog,
     "dialog_subject_2"},
    {Element::queue, "queue_list_store", "queue_view", "admit_scrolled_fc", "Список очередей", &QueueDialog,
     "dialog_queue"},
}};

} // namespace

const AdmitMode& admit_mode(unsigned mode) {
    return modes.at(mode);
}

GtkListStore* get_admit_list_store(MGDialog* dialog, unsigned mode) {
    return GTK_LIST_STORE(dialog->GetObject(admit_mode(mode).store));
}

GtkTreeView* get_admit_tree_view(MGDialog* dialog, unsigned mode) {
    return GTK_TREE_VIEW(dialog->GetObject(admit_mode(mode).view));
}

MGDialog*& get_admit_dialog(unsigned mode) {
    return *admit_mode(mode).record_dialog;
}

OpenDialog make_dialog_admit(unsigned mode, const char* title) {
    return OpenDialog(get_admit_dialog(mode), admit_mode(mode).record_object, title);
}
