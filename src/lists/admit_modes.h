// The six lists that one window edits. A mode is a number kept in the dialog (list_kind); this table tells what goes
// with it, and everything that depends on the mode is looked up here. On the toolkit's thread only.
#pragma once

#include "config/list_records.h"
#include "dialog/make_dialog.h"

#include <deque>
#include <vector>

enum AdmitModeNumber : unsigned {
    MODE_SERVER_USERS,  // users admitted to the TLS server, each with an onward connection if wanted
    MODE_GATEWAY_USERS, // users admitted to the gateway server
    MODE_FC_QUEUES,     // queues of the file client
    MODE_FS_CLIENTS,    // clients of the file server
    MODE_CLIENT_USERS,  // certificates of one of these clients
    MODE_CLIENT_QUEUES, // queues of one of these clients
};

struct AdmitMode {
    enum class Element { admit, queue, allow };

    Element element;
    const char* store; // ids in dialog_admit
    const char* view;
    const char* page;
    const char* label;           // heading; null keeps that of the definition
    MGDialog** record_dialog;    // the global of the dialog of one record
    const char* record_object;   // and what it is made of
    bool has_connection = false; // the rows show an onward connection
};

// The row of the table; modes out of range don't occur.
const AdmitMode& admit_mode(unsigned mode);

// Calls function with the vector behind `list`, whose type the mode tells.
template <class Function>
decltype(auto) with_list(const AdmitMode& mode, void* list, Function&& function) {
    switch (mode.element) {
    case AdmitMode::Element::admit:
        return function(*static_cast<std::vector<MGAdmit>*>(list));
    case AdmitMode::Element::queue:
        return function(*static_cast<std::vector<MGQueue>*>(list));
    default:
        return function(*static_cast<std::vector<MGAllow>*>(list));
    }
}

// The store and the view of the mode in the dialog's own window.
GtkListStore* get_admit_list_store(MGDialog* dialog, unsigned mode);
GtkTreeView* get_admit_tree_view(MGDialog* dialog, unsigned mode);

// The global that holds the record dialog of the mode, and the dialog itself, opened in that global.
MGDialog*& get_admit_dialog(unsigned mode);
OpenDialog make_dialog_admit(unsigned mode, const char* title);
