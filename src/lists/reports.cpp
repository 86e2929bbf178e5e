// The rows of each report, the dialog that tells where it lies, and the viewer.
#include "lists/reports.h"

#include "app/log.h"
#include "app/mg_context.h"
#include "app/mg_err.h"
#include "dialog/make_dialog.h"
#include "dialog/open_dialogs.h"
#include "lists/address_list.h"
#include "lists/admit_modes.h"
#include "lists/handlers.h"
#include "net/report_rows.h"
#include "runtime/detached_start.h"
#include "runtime/mg_info.h"

#include <unistd.h>

using namespace vorma;

namespace {

// What dialog_result says about a report.
struct ResultTexts {
    const char* title;
    const char* name;
    const char* message;
};

constexpr ResultTexts user_texts = {"Окно просмотра списка допущенных пользователей",
                                    "Распечатать список всех допущенных пользователей",
                                    "Для просмотра распечатки списка допущенных пользователей нажмите \"Посмотреть\""};
constexpr ResultTexts queue_texts = {"Окно просмотра списка очередей", "Распечатать список всех очередей",
                                     "Для просмотра распечатки списка очередей нажмите \"Посмотреть\""};
constexpr ResultTexts client_texts = {"Окно просмотра списка клиентов", "Распечатать список всех клиентов",
                                      "Для просмотра распечатки списка клиентов нажмите \"Посмотреть\""};
constexpr ResultTexts internal_texts = {"Окно просмотра списка внутренних адресов",
                                        "Распечатать список всех внутренних адресов",
                                        "Для просмотра распечатки списка внутренних адресов нажмите \"Посмотреть\""};
constexpr ResultTexts virtual_texts = {"Окно просмотра списка виртуальных адресов",
                                       "Распечатать список всех виртуальных адресов",
                                       "Для просмотра распечатки списка виртуальных адресов нажмите \"Посмотреть\""};

// The heading and the number of rows.
void add_head(MGInfo& info, const std::string& indent, const char* heading, const char* count_name, size_t count) {
    info.AddRow((indent + heading).c_str(), MGInfo::empty_value);
    info.AddRow((indent + count_name).c_str(), static_cast<unsigned long>(count));
}

// The names of a nested list stand one tab deeper than its heading, those of a list by itself do not.
std::string indent_of_names(const std::string& indent) {
    return indent.empty() ? "" : indent + "\t";
}

void add_users(MGInfo& info, const std::vector<MGAdmit>& list, const std::string& indent, bool with_connection) {
    add_head(info, indent, "Список допущенных пользователей", "Количество пользователей", list.size());
    add_list(info, indent_of_names(indent), subject_label, list, &MGAdmit::subject, [&](const MGAdmit& user) {
        if (with_connection && user.use_server) add_rows(info, user, connection_rows, "\t");
    });
}

void add_queues(MGInfo& info, const std::vector<MGQueue>& list, const std::string& indent) {
    add_head(info, indent, "Список очередей", "Количество очередей", list.size());
    add_list(info, indent_of_names(indent), queue_label, list, &MGQueue::id,
             [&](const MGQueue& queue) { add_rows(info, queue, queue_rows, indent + "\t"); });
}

constexpr auto client_rows = std::to_array<ReportRow<MGAllow>>({
    {"Доступ", InWords{&MGAllow::active}},
    {"Логин", &MGAllow::login},
    {"Пароль", WhetherGiven{&MGAllow::hash}},
});

// Builds a report of its own and appends it to the result file, at the edge of `function`.
template <class Rows>
void append_report(const char* function, Rows&& rows) {
    at_edge(function, [&] {
        MGInfo info;
        rows(info);
        LogFileGlobal.PrintInfoInResultFile(info, false);
    });
}

// Starts a report anew with the moment of its making.
void begin_report(const char* name) {
    MGInfo info;
    info.AddRow("Дата и время создания", LogFileGlobal.SetResultFileDate(name, false, ".result"));
    LogFileGlobal.PrintInfoInResultFile(info, true);
}

// Tells where the report is.
void show_result(const ResultTexts& texts) {
    OpenDialog dialog(ResultDialog, "dialog_result", texts.title);
    dialog->SetLabel("label_result_name", texts.name);
    dialog->SetLabel("label_result_message", texts.message);
    dialog->SetEntry("entry_result_file", LogFileGlobal.GetResultFileName().c_str());
    dialog->SetEntry("entry_result_dir", LogFileGlobal.GetResultFileDir().c_str());
    dialog->work_text = LogFileGlobal.GetResultFile();
    dialog.RunOk();
}

void print_list(const std::vector<MGAdmit>& list, unsigned mode) {
    print_result_admit_list(list, mode);
    show_result(user_texts);
}

void print_list(const std::vector<MGQueue>& list, unsigned mode) {
    print_result_queue_list(list, mode);
    show_result(queue_texts);
}

void print_list(const std::vector<MGAllow>& list, unsigned mode) {
    print_result_allow_list(list, mode);
    show_result(client_texts);
}

} // namespace

void print_result_admit_list(const std::vector<MGAdmit>& list, unsigned list_kind) {
    append_report("print_result_admit_list",
                  [&](MGInfo& info) { add_users(info, list, "", admit_mode(list_kind).has_connection); });
}

void print_result_queue_list(const std::vector<MGQueue>& list, unsigned) {
    append_report("print_result_queue_list", [&](MGInfo& info) { add_queues(info, list, ""); });
}

void print_result_allow_list(const std::vector<MGAllow>& list, unsigned) {
    append_report("print_result_allow_list", [&](MGInfo& info) {
        add_head(info, "", "Список клиентов", "Количество клиентов", list.size());
        add_list(info, "", client_label, list, &MGAllow::name, [&](const MGAllow& client) {
            add_rows(info, client, client_rows, "\t");
            add_users(info, client.admit, "\t", false);
            add_queues(info, client.queue, "\t");
        });
    });
}

void print_result_adrs_list(const std::vector<MGListAdrs>& list, bool is_virtual) {
    append_report("print_result_adrs_list", [&](MGInfo& info) {
        add_head(info, "", is_virtual ? "Список виртуальных адресов" : "Список внутренних адресов",
                 "Количество адресов", list.size());
        add_list(info, "", "Наименование", list, &MGListAdrs::name, [&](const MGListAdrs& address) {
            if (is_virtual)
                add_rows(info, address, virtual_rows, "\t");
            else
                add_rows(info, address, internal_rows, "\t");
        });
    });
}

bool test_exist_start_program(MGDialog* dialog, const std::string& program) {
    if (MGFile::StringIsEmpty(program)) {
        show_message(dialog, "Отсутствует имя запускаемой программы или оно не задано в конфигурации");
        return false;
    }
    if (!MGFile::IsFile(program.c_str())) {
        show_message(dialog, ("В файловой системе нет такой программы: " + program).c_str());
        return false;
    }
    return true;
}

void start_program(const std::string& program, const std::string& argument) {
    at_edge("start_program", [&] {
        MGErr err = error_of("start_program", "Ошибка запуска службы");
        err.str_param = argument;
        if (!start_detached({program, argument}, execv))
            fail_errno(err, "Ошибка запуска дочернего процесса", "fork", program.c_str());
    });
}

extern "C" {

// dialog_admit
void admit_print(GtkButton*, gpointer) {
    MGDialog* dialog = stackAdmitDialog.back();
    at_handler(dialog, [dialog] {
        begin_report("admit_list");
        with_list(admit_mode(dialog->list_kind), dialog->user_data2,
                  [&](const auto& list) { print_list(list, dialog->list_kind); });
    });
}

// dialog_adrs
void adrs_print(GtkButton*, gpointer) {
    at_handler(AdrsDialog, [] {
        begin_report("adrs_list");
        print_result_adrs_list(*static_cast<std::vector<MGListAdrs>*>(AdrsDialog->user_data2), list_is_virtual());
        show_result(list_is_virtual() ? virtual_texts : internal_texts);
    });
}

// dialog_result
void result_view(GtkButton*, gpointer) {
    at_handler(ResultDialog, [] {
        if (test_exist_start_program(ResultDialog, Context->editor_path))
            start_program(Context->editor_path, ResultDialog->work_text);
    });
}
}
