// The rows of each report, the dialog that tells where it lies, and the viewer.
#include "lists/reports.h"

#include "app/log.h"
#include "app/mg_context.h"
#include "app/mg_err.h"
#include "dialog/make_dialog.h"
#include "dialog/open_dialogs.h"
#include "lists/admit_modes.h"
#include "lists/handlers.h"
#include "net/profile_report.h"
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

void add_users(MGInfo& info, const std::vector<MGAdmit>& list, const std::string& indent, bool with_connection) {
    add_head(info, indent, "Список допущенных пользователей", "Количество пользователей", list.size());
    const std::string row_indent = indent.empty() ? "" : indent + "\t";
    unsigned number = 0;
    for (const MGAdmit& user : list) {
        info.AddNumRow(row_indent.c_str(), ++number, "Имя владельца сертификата", user.subject);
        if (!with_connection || !user.use_server) continue;
        info.AddRow("\tIP адрес отправки", user.ip);
        info.AddRow("\tДоменное имя отправки", user.domen);
        info.AddRow("\tПорт отправки", static_cast<unsigned>(user.port));
    }
}

void add_queues(MGInfo& info, const std::vector<MGQueue>& list, const std::string& indent) {
    add_head(info, indent, "Список очередей", "Количество очередей", list.size());
    const std::string row_indent = indent.empty() ? "" : indent + "\t";
    unsigned number = 0;
    for (const MGQueue& queue : list) {
        info.AddNumRow(row_indent.c_str(), ++number, "Идентификатор очереди", queue.id);
        add_queue_rows(info, indent + "\t", queue);
    }
}

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
        unsigned number = 0;
        for (const MGAllow& client : list) {
            info.AddNumRow(++number, "Наименование клиента", client.name);
            info.AddRow("\tДоступ", yes_or_no(client.active));
            info.AddRow("\tЛогин", client.login);
            info.AddRow("\tПароль", yes_or_no(!client.hash.empty()));
            add_users(info, client.admit, "\t", false);
            add_queues(info, client.queue, "\t");
        }
    });
}

void print_result_adrs_list(const std::vector<MGListAdrs>& list, bool is_virtual) {
    append_report("print_result_adrs_list", [&](MGInfo& info) {
        add_head(info, "", is_virtual ? "Список виртуальных адресов" : "Список внутренних адресов",
                 "Количество адресов", list.size());
        unsigned number = 0;
        for (const MGListAdrs& address : list) {
            info.AddNumRow(++number, "Наименование", address.name);
            info.AddRow("\tIP адрес", address.ip);
            if (is_virtual) continue;
            info.AddRow("\tДоменное имя", address.domen);
            info.AddRow("\tПодсеть", address.net);
        }
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
        print_result_adrs_list(*static_cast<std::vector<MGListAdrs>*>(AdrsDialog->user_data2), AdrsDialog->find_active);
        show_result(AdrsDialog->find_active ? virtual_texts : internal_texts);
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
