// The fields of the record dialogs, their checks on OK, and the owner's name out of a certificate.
#include "lists/record_dialogs.h"

#include "cert/mg_cert.h"
#include "dialog/make_dialog.h"
#include "dialog/open_dialogs.h"
#include "editor/choosers.h"
#include "editor/histories.h"
#include "editor/validation.h"
#include "editor/widget_fields.h"
#include "lists/admit_modes.h"
#include "lists/handlers.h"
#include "runtime/mg_file.h"

namespace {

using User = FieldsOf<MGAdmit>;
const WidgetField<MGAdmit> connected_user_fields[] = {
    User::entry("subject_name", &MGAdmit::subject),
    User::check("use_next_send", &MGAdmit::use_server),
    User::combo("subject_send_ip", &MGAdmit::ip, init_send_ip),
    User::combo("subject_send_domen", &MGAdmit::domen, init_send_domen),
    User::spin("subject_send_port", &MGAdmit::port, 65535),
};

const WidgetField<MGAdmit> named_user_fields[] = {
    User::entry("subject_name_2", &MGAdmit::subject),
};

std::span<const WidgetField<MGAdmit>> user_fields(unsigned mode) {
    if (admit_mode(mode).has_connection) return connected_user_fields;
    return named_user_fields;
}

const WidgetField<MGQueue> queue_fields[] = {
    FieldsOf<MGQueue>::entry("id_queue", &MGQueue::id),
    FieldsOf<MGQueue>::entry("in_dir", &MGQueue::in_dir),
    FieldsOf<MGQueue>::entry("out_dir", &MGQueue::out_dir),
    FieldsOf<MGQueue>::check("use_out_sign", &MGQueue::out_sign),
    FieldsOf<MGQueue>::check("use_ticket_dir", &MGQueue::save_ticket),
    FieldsOf<MGQueue>::entry("ticket_dir", &MGQueue::ticket_dir),
    FieldsOf<MGQueue>::check("use_out_ticket_sign", &MGQueue::out_ticket_sign),
};

const WidgetField<MGAllow> allow_fields[] = {
    FieldsOf<MGAllow>::check("allow_active", &MGAllow::active),
    FieldsOf<MGAllow>::entry("allow_name", &MGAllow::name),
    FieldsOf<MGAllow>::entry("allow_login", &MGAllow::login),
    FieldsOf<MGAllow>::entry("allow_password", &MGAllow::hash),
};

// Whether a row of the list, but for the one that `row` points to, has exactly this key.
template <class Element>
bool already_exist(const std::vector<Element>& list, std::string Element::*field, const char* key, const int* row) {
    for (size_t index = 0; index < list.size(); ++index)
        if (!(row && static_cast<size_t>(*row) == index) && list[index].*field == key) return true;
    return false;
}

// Refuses the key in the entry where another row of the dialog's list has it.
template <class Element>
bool key_is_taken(MGDialog* dialog, const char* entry, const char* text,
                  bool (*exists)(const std::vector<Element>&, const char*, const int*)) {
    const auto& list = *static_cast<std::vector<Element>*>(dialog->user_data2);
    if (!exists(list, dialog->GetEntry(entry), static_cast<int*>(dialog->user_data))) return false;
    show_refusal(dialog, text);
    dialog->SetFocusToProblemWidget(entry);
    return true;
}

bool connection_is_wrong(MGDialog* dialog) {
    if (!dialog->ToggleButtonGet("check_use_next_send")) return false;
    if (error_test_ip_or_domen(dialog, "entry_subject_send_ip", "entry_subject_send_domen")) return true;
    if (dialog->SpinGet("adjustment_subject_send_port") != 0) return false;
    show_message(dialog, "Необходимо задать номер порта для соединения");
    dialog->SetFocusToProblemWidget("spin_subject_send_port");
    return true;
}

bool queue_is_wrong(MGDialog* dialog) {
    return entry_is_empty(dialog, "entry_id_queue") || entry_not_id(dialog, "entry_id_queue") ||
           key_is_taken<MGQueue>(dialog, "entry_id_queue",
                                 "Такая очередь уже существует.\nИзмените значение идентификатора.",
                                 queue_already_exist) ||
           entry_is_empty(dialog, "entry_in_dir") || entry_is_empty(dialog, "entry_out_dir") ||
           (dialog->ToggleButtonGet("check_use_ticket_dir") && entry_is_empty(dialog, "entry_ticket_dir"));
}

bool client_is_wrong(MGDialog* dialog) {
    return entry_is_empty(dialog, "entry_allow_name") || entry_is_empty(dialog, "entry_allow_login") ||
           entry_not_id(dialog, "entry_allow_login") ||
           key_is_taken<MGAllow>(dialog, "entry_allow_login", "Такой логин уже существует.\nИзмените значение логина.",
                                 allow_already_exist);
}

} // namespace

void load_record(MGDialog* dialog, const MGAdmit& user, unsigned mode) {
    fill(*dialog, user, user_fields(mode));
    if (admit_mode(mode).has_connection) set_sensitive_subject(user.use_server);
}

void load_record(MGDialog* dialog, const MGQueue& queue, unsigned) {
    fill(*dialog, queue, queue_fields);
}

void load_record(MGDialog* dialog, const MGAllow& allow, unsigned) {
    fill(*dialog, allow, allow_fields);
}

void assign_admit_subject(MGDialog* dialog, MGAdmit& user, unsigned mode) {
    read_back(*dialog, user, user_fields(mode));
    user.crc_subject = MGFile::MakeCrc32Lower(user.subject);
}

void assign_admit_queue(MGDialog* dialog, MGQueue& queue, unsigned) {
    read_back(*dialog, queue, queue_fields);
    queue.crc_id = MGFile::MakeCrc32Lower(queue.id);
}

void assign_admit_allow(MGDialog* dialog, MGAllow& allow, unsigned) {
    read_back(*dialog, allow, allow_fields);
    allow.crc_login = MGFile::MakeCrc32Lower(allow.login);
}

void set_sensitive_subject(int state) {
    for (const char* id : {"combo_subject_send_ip", "entry_subject_send_ip", "combo_subject_send_domen",
                           "entry_subject_send_domen", "spin_subject_send_port"})
        SubjectDialog->SetSensitive(id, state);
}

void get_subject_name(const char* entry) {
    at_handler(SubjectDialog, [&] {
        const std::string file =
            choose_path(SubjectDialog, "Окно выбора имени файла с сертификатом", GTK_FILE_CHOOSER_ACTION_OPEN, nullptr);
        if (file.empty()) return;
        const std::string subject = get_subject_from_parsed_cert(file);
        // Cut or changed it would admit somebody else.
        if (!is_error_stored(SubjectDialog, "Имя владельца сертификата", subject, "Выберите другой сертификат."))
            SubjectDialog->SetEntry(entry, subject.c_str());
    });
}

bool queue_already_exist(const std::vector<MGQueue>& list, const char* id, const int* row) {
    return already_exist(list, &MGQueue::id, id, row);
}

bool allow_already_exist(const std::vector<MGAllow>& list, const char* login, const int* row) {
    return already_exist(list, &MGAllow::login, login, row);
}

extern "C" {

// dialog_subject
void press_subject_name(GtkEntry*, GtkEntryIconPosition, GdkEvent*, gpointer) {
    get_subject_name("entry_subject_name");
}

void toggle_use_server(GtkToggleButton*, gpointer) {
    set_sensitive_subject(SubjectDialog->ToggleButtonGet("check_use_next_send"));
}

void subject_ok(GtkButton*, gpointer dialog) {
    at_handler(SubjectDialog, [&] {
        if (!entry_is_empty(SubjectDialog, "entry_subject_name") && !connection_is_wrong(SubjectDialog))
            respond_ok(dialog);
    });
}

// dialog_subject_2
void press_subject_name_2(GtkEntry*, GtkEntryIconPosition, GdkEvent*, gpointer) {
    get_subject_name("entry_subject_name_2");
}

void subject_ok_2(GtkButton*, gpointer dialog) {
    at_handler(SubjectDialog, [&] {
        if (!entry_is_empty(SubjectDialog, "entry_subject_name_2")) respond_ok(dialog);
    });
}

// dialog_queue
void press_in_dir_catalog(GtkEntry*, GtkEntryIconPosition, GdkEvent*, gpointer) {
    choice_catalog(QueueDialog, "entry_in_dir");
}

void press_out_dir_catalog(GtkEntry*, GtkEntryIconPosition, GdkEvent*, gpointer) {
    choice_catalog(QueueDialog, "entry_out_dir");
}

void press_ticket_catalog(GtkEntry*, GtkEntryIconPosition, GdkEvent*, gpointer) {
    choice_catalog(QueueDialog, "entry_ticket_dir");
}

void queue_ok(GtkButton*, gpointer dialog) {
    at_handler(QueueDialog, [&] {
        if (!queue_is_wrong(QueueDialog)) respond_ok(dialog);
    });
}

// dialog_allow
void allow_ok(GtkButton*, gpointer dialog) {
    at_handler(AllowDialog, [&] {
        if (!client_is_wrong(AllowDialog)) respond_ok(dialog);
    });
}
}
