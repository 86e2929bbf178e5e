// The parameter dialogs of the five types of action: their fields, their checks and their handlers.
#include "editor/action_dialogs.h"

#include "dialog/make_dialog.h"
#include "dialog/open_dialogs.h"
#include "editor/choosers.h"
#include "editor/handlers.h"
#include "editor/histories.h"
#include "editor/validation.h"
#include "editor/widget_fields.h"
#include "net/address_syntax.h"

namespace {

const WidgetField<MGConsole> console_fields[] = {
    FieldsOf<MGConsole>::combo("console_prog", &MGConsole::prog, init_console_prog),
    FieldsOf<MGConsole>::check("console_use_password", &MGConsole::use_hash),
    FieldsOf<MGConsole>::entry("console_password", &MGConsole::hash),
    FieldsOf<MGConsole>::check("console_no_code", &MGConsole::no_code),
};

const WidgetField<MGSend> send_fields[] = {
    FieldsOf<MGSend>::combo("send_ip", &MGSend::ip, init_send_ip),
    FieldsOf<MGSend>::combo("send_domen", &MGSend::domen, init_send_domen),
    FieldsOf<MGSend>::spin("send_port", &MGSend::port, 65535),
    FieldsOf<MGSend>::entry("send_catalog", &MGSend::catalog),
    FieldsOf<MGSend>::combo("send_file", &MGSend::file, init_active_file),
    FieldsOf<MGSend>::spin("send_buf_size", &MGSend::buf_len, 1048576),
    FieldsOf<MGSend>::spin("send_inactivity", &MGSend::inactivity, 3600),
    FieldsOf<MGSend>::check("tls_send", &MGSend::tls),
    FieldsOf<MGSend>::entry("tls_server", &MGSend::tls_server),
};

const WidgetField<MGCopy> copy_fields[] = {
    FieldsOf<MGCopy>::entry("copy_catalog", &MGCopy::catalog),
    FieldsOf<MGCopy>::combo("copy_file", &MGCopy::file, init_active_file),
    FieldsOf<MGCopy>::entry("copy_catalog_to", &MGCopy::catalog_to),
    FieldsOf<MGCopy>::choice("mode_same_file_name", &MGCopy::mode, "REPLACE"),
    FieldsOf<MGCopy>::check("mk_sub_dir", &MGCopy::sub_dir),
    FieldsOf<MGCopy>::check("is_save_last_n_files", &MGCopy::save_last_n_files),
    FieldsOf<MGCopy>::spin("n_saved_files", &MGCopy::n_saved_files, 65535),
};

const WidgetField<MGRunprog> runprog_fields[] = {
    FieldsOf<MGRunprog>::combo("run_prog", &MGRunprog::prog, init_run_prog),
    FieldsOf<MGRunprog>::combo("run_param", &MGRunprog::param, init_run_param),
};

const WidgetField<MGExist> exist_fields[] = {
    FieldsOf<MGExist>::entry("exist_catalog", &MGExist::catalog),
    FieldsOf<MGExist>::combo("exist_file", &MGExist::file, init_active_file),
    FieldsOf<MGExist>::combo("exist_content", &MGExist::content, init_exist_content),
    FieldsOf<MGExist>::spin("exist_timeout", &MGExist::timeout, 86400),
};

// The course that the five share.
template <class Record, size_t Size>
bool edit(OpenDialog& dialog, Record& record, const WidgetField<Record> (&fields)[Size]) {
    fill(*dialog, record, fields);
    if (!dialog.RunOk()) return false;
    read_back(*dialog, record, fields);
    return true;
}

// Exactly one of address and domain must be given, and an address must be one.
bool receiver_is_wrong(MGDialog* dialog) {
    const char* ip = dialog->GetEntry("entry_send_ip");
    const bool no_ip = string_is_empty(ip);
    if (no_ip != string_is_empty(dialog->GetEntry("entry_send_domen")))
        return !no_ip && is_error_ip(dialog, "entry_send_ip", ip);
    show_message(dialog, no_ip ? "Необходимо задать IP адрес или домен."
                               : "Нельзя задавать IP адрес и домен одновременно. Нужен только один из двух.");
    dialog->SetFocusToProblemWidget("entry_send_ip");
    return true;
}

} // namespace

bool set_action_console(MGConsole& console) {
    OpenDialog dialog(ConsoleDialog, "dialog_console", "Окно установки параметров консольной утилиты");
    return edit(dialog, console, console_fields);
}

bool set_action_send(MGSend& send) {
    OpenDialog dialog(SendDialog, "dialog_send", "Окно установки параметров отправки файла");
    dialog->SetSensitive("entry_tls_server", send.tls);
    return edit(dialog, send, send_fields);
}

bool set_action_copy(MGCopy& copy) {
    OpenDialog dialog(CopyDialog, "dialog_copy", "Окно установки параметров копирования файла");
    return edit(dialog, copy, copy_fields);
}

bool set_action_runprog(MGRunprog& runprog) {
    OpenDialog dialog(RunprogDialog, "dialog_runprog", "Окно установки параметров запуска программы");
    return edit(dialog, runprog, runprog_fields);
}

bool set_action_exist(MGExist& exist) {
    OpenDialog dialog(ExistDialog, "dialog_exist", "Окно установки параметров проверки наличия файла");
    return edit(dialog, exist, exist_fields);
}

extern "C" {

// dialog_console
void console_ok(GtkButton*, gpointer dialog) {
    at_handler(ConsoleDialog, [&] {
        if (!entry_is_empty(ConsoleDialog, "entry_console_prog")) respond_ok(dialog);
    });
}

// dialog_send
void toggle_tls(GtkToggleButton*, gpointer) {
    SendDialog->SetSensitive("entry_tls_server", SendDialog->ToggleButtonGet("check_tls_send"));
}

void press_send_catalog(GtkEntry*, GtkEntryIconPosition, GdkEvent*, gpointer) {
    choice_catalog(SendDialog, "entry_send_catalog");
}

void press_send_file(GtkEntry*, GtkEntryIconPosition, GdkEvent*, gpointer) {
    choice_file(SendDialog, "entry_send_catalog", "entry_send_file");
}

void send_ok(GtkButton*, gpointer dialog) {
    at_handler(SendDialog, [&] {
        if (receiver_is_wrong(SendDialog) || entry_is_empty(SendDialog, "entry_send_catalog") ||
            entry_is_empty(SendDialog, "entry_send_file"))
            return;
        respond_ok(dialog);
    });
}

// dialog_copy
void press_copy_catalog(GtkEntry*, GtkEntryIconPosition, GdkEvent*, gpointer) {
    choice_catalog(CopyDialog, "entry_copy_catalog");
}

void press_copy_file(GtkEntry*, GtkEntryIconPosition, GdkEvent*, gpointer) {
    choice_file(CopyDialog, "entry_copy_catalog", "entry_copy_file");
}

void press_copy_catalog_to(GtkEntry*, GtkEntryIconPosition, GdkEvent*, gpointer) {
    choice_catalog(CopyDialog, "entry_copy_catalog_to");
}

void copy_ok(GtkButton*, gpointer dialog) {
    at_handler(CopyDialog, [&] {
        for (const char* entry : {"entry_copy_catalog", "entry_copy_file", "entry_copy_catalog_to"})
            if (entry_is_empty(CopyDialog, entry)) return;
        respond_ok(dialog);
    });
}

// dialog_runprog
void runprog_ok(GtkButton*, gpointer dialog) {
    at_handler(RunprogDialog, [&] {
        if (!entry_is_empty(RunprogDialog, "entry_run_prog")) respond_ok(dialog);
    });
}

// dialog_exist
void press_exist_catalog(GtkEntry*, GtkEntryIconPosition, GdkEvent*, gpointer) {
    choice_catalog(ExistDialog, "entry_exist_catalog");
}

void press_exist_file(GtkEntry*, GtkEntryIconPosition, GdkEvent*, gpointer) {
    choice_file(ExistDialog, "entry_exist_catalog", "entry_exist_file");
}

void exist_ok(GtkButton*, gpointer dialog) {
    at_handler(ExistDialog, [&] {
        if (entry_is_empty(ExistDialog, "entry_exist_catalog") || entry_is_empty(ExistDialog, "entry_exist_file") ||
            entry_is_spam(ExistDialog, "entry_exist_content"))
            return;
        respond_ok(dialog);
    });
}
}
