// The list dialog in its six modes, the address lists of a gateway, and the dialogs of one record: what they refuse and
// in which order, and what they take over.
#include "lists/lists_fixture.h"
#include "support/patterns.h"

namespace {

constexpr const char* queue_exists = "Такая очередь уже существует.\nИзмените значение идентификатора.";

struct RecordDialog {
    const char *opener, *view, *dialog, *ok;
    const std::vector<Check> checks, change; // of a new record, and of one that is not in its own way
    const char* changed;                     // its row afterwards
};
const RecordDialog dialogs[] = {
    {"button_admission_list",
     "admit_view",
     "dialog_subject",
     "button_subject_ok",
     checks_of("new user"),
     {{""}},
     "1|CN=Петров,O=ООО Ромашка|-->|10.0.0.1||65535"},
    {"button_gw_admission_list",
     "admit_view_2",
     "dialog_subject_2",
     "button_subject_ok_2",
     checks_of("new name"),
     {{""}},
     "1|CN=new"},
    {"button_fc_queue", "queue_view", "dialog_queue", "button_subject_ok_1", checks_of("new queue"),
     checks_of("changed queue"), "1|123456789|/new|/out|Да|Да|/t|Нет"},
    {"button_fs_allow", "allow_view", "dialog_allow", "button_allow_ok", checks_of("new client"),
     checks_of("changed client"), "1|Нет|Клиент|123456789|Да"},
};

class RecordDialogsTest : public ListsTest {
protected:
    // In the list: adds a record, and takes the list over once the record dialog has ended.
    void add() {
        script.when("dialog_admit", [](UiWindow window) {
            window.click("button_admit_add");
            window.click("button_admit_ok");
        });
    }
};

TEST_F(RecordDialogsTest, TakesARecordOnceAllIsRightAndChangesItInItsPlace) {
    config.fc_queue.emplace_back().id = "taken";
    config.fs_allow.emplace_back().login = "taken";
    config.fs_allow[0].name = "Клиент";
    MGConfig expected = config;
    // The checksums are the published one of "123456789" and zlib's.
    expected.admit = {{.subject = "CN=Петров,O=ООО Ромашка",
                       .use_server = true,
                       .ip = "10.0.0.1",
                       .port = 65535,
                       .crc_subject = 0xdda712a9}};
    expected.gw_admit = {{.subject = "CN=new", .crc_subject = 0x8f43a850}};
    expected.fc_queue.push_back({.id = "123456789",
                                 .in_dir = "/in",
                                 .out_dir = "/out",
                                 .out_sign = true,
                                 .save_ticket = true,
                                 .ticket_dir = "/t",
                                 .crc_id = 0xcbf43926});
    expected.fs_allow.push_back({.name = "Клиент", .login = "123456789", .crc_login = 0xcbf43926});
    for (const RecordDialog& row : dialogs) {
        add();
        script.checks(row.dialog, row.ok, row.checks);
        open(row.opener);
    }
    EXPECT_TRUE(config == expected);

    std::swap(config.fc_queue[0], config.fc_queue[1]);
    std::swap(config.fs_allow[0], config.fs_allow[1]);
    config.fs_allow[0].active = false;
    config.fs_allow[0].hash = "secret";
    config.fs_allow[0].admit = config.admit; // no business of its dialog
    expected = config;
    expected.fc_queue[0].in_dir = "/new";
    for (const RecordDialog& row : dialogs) {
        script.when("dialog_admit", [&](UiWindow window) {
            window.select(row.view, {0});
            window.click("button_admit_select_all");
            window.click("button_admit_rename");
            EXPECT_EQ(rows_of(window, row.view)[0], row.changed); // marked as before
            window.click("button_admit_ok");
        });
        script.checks(row.dialog, row.ok, row.change);
        open(row.opener);
    }
    EXPECT_TRUE(config == expected);
}

TEST_F(RecordDialogsTest, JudgesTheWholeKeyThatTheEntryIsTooShortForUntilItIsTouched) {
    const std::string whole(40, 'q'), shown(32, 'q');
    config.fc_queue = {{.id = whole, .in_dir = "/in", .out_dir = "/out", .out_sign = true, .ticket_dir = "/t"},
                       {.id = shown}};
    const std::vector<Check> rows[] = {
        {{"entry_ticket_dir="}},
        {{"entry_id_queue=;entry_id_queue=" + shown, queue_exists, "entry_id_queue", true}, {"entry_id_queue=q"}}};
    for (const auto& [changes, id] : {std::pair(rows[0], whole), {rows[1], "q"}}) {
        script.when("dialog_admit", [](UiWindow window) {
            window.select("queue_view", {0});
            window.click("button_admit_rename");
            window.click("button_admit_ok");
        });
        script.checks("dialog_queue", "button_subject_ok_1", changes);
        open("button_fc_queue");
        EXPECT_EQ(config.fc_queue[0].id, id);
        EXPECT_EQ(config.fc_queue[0].ticket_dir, "");
    }
}

TEST_F(RecordDialogsTest, TakesTheOwnersNameFromACertificateFile) {
    const std::string whole = read_file(GOLDEN "/certificate.der");
    dir.write("pem.cer", "-----BEGIN CERTIFICATE-----\nAAAA\n");
    // The last letter of "Иванов" in these bytes, and why they are refused.
    const std::pair<std::string, const char*> letters[] = {
        {"в", nullptr}, {"a\n", nullptr}, {"\xD0\xFF", "не в кодировке UTF-8"}};
    const auto choose = [&](const std::string& opener, const std::string& number) {
        add();
        script.when("dialog_subject" + number, [&, number](UiWindow window) {
            const char* const title = "Окно выбора имени файла с сертификатом";
            const std::string entry = "entry_subject_name" + number;
            const std::string rest =
                ",1.2.3.4.5=x,OGRN=1027700132195,Email=a@example.org,O=ООО \"Омега\", склад,OU=Отдел,C=RU";
            std::string chosen;
            for (const auto& [letter, why] : letters) {
                dir.write("der.cer", regex_replaced(whole, "Иванов", "Ивано" + letter));
                script.choose(title, dir.path("der.cer"));
                if (why)
                    script.refusal(testing::HasSubstr(why));
                else
                    chosen = "CN=Ивано" + letter + rest;
                window.press_icon(entry);
                EXPECT_EQ(window.entry(entry), chosen);
            }
            script.choose(title, dir.path("pem.cer"));
            script.refusal(testing::HasSubstr("Не получилось разобрать формат сертификата"));
            window.press_icon(entry);
            window.click("button_subject_cancel" + number);
        });
        open(opener.c_str());
    };
    choose("button_admission_list", "");
    choose("button_gw_admission_list", "_2");
}

using Cells = std::vector<std::string>;
using Addresses = std::vector<MGListAdrs>;

using AddressListTest = ListsTest;

TEST_F(AddressListTest, TakesAnAddressOnceAllIsRightAndChangesItInItsPlace) {
    init_recv_domen = {"a.example"};
    init_sub_net = {"10.0.0.0/24"};
    init_virtual_ip = {"10.9.0.1/16"};
    const auto take = [&](const char* opener, Addresses MGDev::*list, const char* change, const Addresses& after,
                          const Cells& rows) { // what a list does not show stays as it was
        const bool is_virtual = list == &MGDev::virt;
        config.gw_client.*list = {{.ip = "10.0.0.1", .domen = "b.example", .net = "10.0.0.0/24"}};
        MGConfig expected = config;
        expected.gw_client.*list = after;
        script.when("dialog_adrs", [&](UiWindow window) {
            script.when("dialog_address", [&](UiWindow record) {
                EXPECT_EQ(record.title(), "Добавление адреса");
                EXPECT_EQ(record.label("label_address_ip"), is_virtual ? "xxx.xxx.xxx.xxx/nn" : " ");
            });
            script.checks("dialog_address", "button_address_ok",
                          checks_of(is_virtual ? "new virtual address" : "new internal address"));
            window.click("button_adrs_add");
            window.select("adrs_view", {0});
            script.checks("dialog_address", "button_address_ok", {{change}});
            window.click("button_adrs_rename");
            EXPECT_EQ(rows_of(window, "adrs_view"), rows);
            for (const char* all : {"select_all", "unselect_all"}) {
                window.click(std::string("button_adrs_") + all);
                EXPECT_EQ(marks(window, "adrs_view"), *all == 's' ? "11" : "00");
            }
            window.click("button_adrs_ok");
        });
        open(opener);
        EXPECT_TRUE(config == expected) << opener;
    };
    take("button_gw_client_list_adrs", &MGDev::adrs, "entry_address_ip=;entry_address_net=;entry_address_name=новый",
         {{.domen = "b.example", .name = "новый"}, {.net = "10.1.1.0/24", .name = "имя"}},
         {"0||b.example||новый", "0|||10.1.1.0/24|имя"});
    take("button_gw_client_list_virtual", &MGDev::virt, "entry_address_ip=10.0.0.1/8;entry_address_name=новый",
         {{.ip = "10.0.0.1/8", .domen = "b.example", .net = "10.0.0.0/24", .name = "новый"},
          {.ip = "10.1.1.0/24", .name = "имя"}},
         {"0|10.0.0.1/8|||новый", "0|10.1.1.0/24|||имя"});
    EXPECT_EQ(init_recv_domen, (History{"a.example", "b.example"}));
    EXPECT_EQ(init_sub_net, (History{"10.0.0.0/24", "10.1.1.0/24"}));
    EXPECT_EQ(init_virtual_ip, (History{"10.9.0.1/16", "10.1.1.0/24", "10.0.0.1/8"}));
}

template <auto... path>
void delete_first(MGConfig& config) {
    if constexpr (requires { (config.*....*path); })
        (config.*....*path).erase((config.*....*path).begin());
    else
        (config.fs_allow[0].*....*path).erase((config.fs_allow[0].*....*path).begin());
}

// A list, and how a user gets there.
struct ListKind {
    const char* opener; // in the profile editor
    const char* nested; // in the list of clients, on its first row
    void (*delete_first)(MGConfig& config);
    const char *view, *heading = ""; // none in the lists of addresses
    const char* no_client = "";      // what a nested one says where no client is selected
};

constexpr const char *users = "Список допущенных пользователей", *queues = "Список очередей";
const ListKind lists[] = {
    {"button_admission_list", nullptr, delete_first<&MGConfig::admit>, "admit_view", users},
    {"button_gw_admission_list", nullptr, delete_first<&MGConfig::gw_admit>, "admit_view_2", users},
    {"button_fc_queue", nullptr, delete_first<&MGConfig::fc_queue>, "queue_view", queues},
    {"button_fs_allow", nullptr, delete_first<&MGConfig::fs_allow>, "allow_view", "Список клиентов"},
    {"button_fs_allow", "button_admit_cert", delete_first<&MGAllow::admit>, "admit_view_2", users,
     "Для редактирования списка сертификатов необходимо выбрать в списке запись клиента"},
    {"button_fs_allow", "button_admit_queue", delete_first<&MGAllow::queue>, "queue_view", queues,
     "Для редактирования списка очередей необходимо выбрать в списке запись клиента"},
    {"button_gw_client_list_adrs", nullptr, delete_first<&MGConfig::gw_client, &MGDev::adrs>, "adrs_view"},
    {"button_gw_client_list_virtual", nullptr, delete_first<&MGConfig::gw_client, &MGDev::virt>, "adrs_view"},
    {"button_gw_server_list_adrs", nullptr, delete_first<&MGConfig::gw_server, &MGDev::adrs>, "adrs_view"},
    {"button_gw_server_list_virtual", nullptr, delete_first<&MGConfig::gw_server, &MGDev::virt>, "adrs_view"},
};

MGConfig every_list() {
    MGConfig config;
    config.admit = config.gw_admit = {{.subject = "s1"}, {.subject = "s2"}};
    config.fc_queue = {{.id = "q1"}, {.id = "q2"}};
    config.fs_allow = {{.name = "Клиент 1", .login = "one", .admit = config.admit, .queue = config.fc_queue},
                       {.name = "Клиент 2", .login = "two"}};
    config.gw_client.adrs = config.gw_client.virt = config.gw_server.adrs =
        config.gw_server.virt = {{.ip = "10.0.0.1"}, {.ip = "10.0.0.2"}};
    return config;
}

class AdmitListTest : public ListsTest {
protected:
    // Runs the list; `use` is what the user does in it. The list of clients below a nested one keeps its own search,
    // marks and selection meanwhile, and is answered behind it.
    void run(const ListKind& list, const std::function<void(UiWindow)>& use, const char* below = "button_admit_ok") {
        if (list.nested)
            script.when("dialog_admit", [&](UiWindow window) {
                script.remark(list.no_client);
                window.click(list.nested);
                window.set_entry("entry_admit_filter", "*");
                window.click("button_admit_find");
                window.toggle_cell("allow_view", 1);
                script.when("dialog_admit", use);
                window.click(list.nested);
                EXPECT_EQ(selected_row(window, "allow_view"), 0);
                EXPECT_EQ(marks(window, "allow_view"), "01");
                window.click("button_admit_next");
                EXPECT_EQ(selected_row(window, "allow_view"), 1);
                window.click(below);
            });
        else
            script.when(*list.heading ? "dialog_admit" : "dialog_adrs", use);
        open(list.opener);
        EXPECT_TRUE(stackAdmitDialog.empty());
    }
    void run_queues(const std::vector<const char*>& ids, const std::function<void(UiWindow)>& use) {
        config.fc_queue.clear();
        for (const char* id : ids) config.fc_queue.emplace_back().id = id;
        run(lists[2], use);
    }
};

TEST_F(AdmitListTest, HandsOverOnlyWhatEveryLevelConfirmed) {
    const struct {
        const char *answer, *below; // no answer: the window is closed
    } ends[] = {{"ok", "button_admit_ok"}, {"cancel", "button_admit_ok"}, {"ok", "button_admit_cancel"}, {}};
    for (const ListKind& list : lists) {
        const std::string kind = *list.heading ? "admit" : "adrs";
        for (const auto& end : ends) {
            if (&end != ends && !list.nested != !end.below) continue; // closed: those that no other one is below
            SCOPED_TRACE(testing::Message() << &list - lists << ", end " << &end - ends);
            config = every_list();
            MGConfig expected = config;
            if (&end == ends) list.delete_first(expected);
            const auto delete_and_answer = [&](UiWindow window) {
                if (*list.heading) {
                    EXPECT_EQ(window.label("label_admit_name"), list.heading);
                    EXPECT_EQ(gtk_widget_get_visible(window.find("button_box_admit")), &list == &lists[3]);
                    window.enter("entry_admit_filter=*2;button_admit_find"); // by the key of its kind
                    EXPECT_EQ(selected_row(window, list.view), 1);
                }
                const Rows rows = window.table(list.view);
                window.toggle_cell(list.view, 0);
                script.question("Вы действительно хотите удалить (1) записей из списка?", GTK_RESPONSE_YES);
                window.click("button_" + kind + "_delete");
                EXPECT_EQ(window.table(list.view), Rows{rows.at(1)});
                end.answer ? window.click("button_" + kind + "_" + end.answer) : window.close();
            };
            run(list, delete_and_answer, end.below);
            EXPECT_TRUE(config == expected);
        }
    }
}

TEST_F(AdmitListTest, WalksFromMatchToMatchUntilTheLast) {
    constexpr const char *find = "button_admit_find", *next = "button_admit_next";
    const struct {
        const char *filter, *button;
        int row; // that is then selected
        bool active;
    } steps[] = {{"", find, -1, false},  {"АБ*", next, -1, false},                          // starts nothing
                 {"АБ*", find, 0, true}, {"АБ*", next, 2, true},   {"АБ*", next, 2, false}, // behind the last one
                 {"АБ*", find, 0, true}, {"*", next, 0, false}, // another text ends the walk
                 {"*", find, 0, true},   {"*", next, 1, true},     {"нет", find, 1, false}};
    init_admit_filter.clear();
    run_queues({"абв", "я", "аб"}, [&](UiWindow window) {
        for (const auto& step : steps) {
            SCOPED_TRACE(testing::Message() << &step - steps);
            window.enter(std::string("entry_admit_filter=") + step.filter + ";" + step.button);
            EXPECT_EQ(selected_row(window, "queue_view"), step.row);
            EXPECT_EQ(stackAdmitDialog.back()->find_active, step.active);
        }
        EXPECT_EQ(window.combo_rows("combo_admit_filter"), (History{"АБ*", "*"})); // what found
        window.click("button_admit_cancel");
    });
}

TEST_F(AdmitListTest, DeletesWhatIsMarkedAndNotWhatIsSelected) {
    run_queues({"a1", "b1", "a2", "b2", ""}, [&](UiWindow window) {
        window.click("button_admit_rename"); // nothing is selected
        window.select("queue_view", {1});
        script.remark("Удаляемые записи нужно отметить в колонке [v]");
        window.click("button_admit_delete");
        window.toggle_cell("queue_view", 3);
        const auto click_and_look = [&](const char* filter, const char* button, const char* expected) {
            window.enter(std::string("entry_admit_filter=") + filter + ";" + button);
            EXPECT_EQ(marks(window, "queue_view"), expected) << filter << button;
        };
        click_and_look("A?", "button_admit_select_find", "10110"); // adds to the marks
        click_and_look("", "button_admit_select_find", "10111");
        EXPECT_EQ(selected_row(window, "queue_view"), 1); // and is no search
        click_and_look("", "button_admit_unselect_all", "00000");
        click_and_look("", "button_admit_select_all", "11111");
        window.toggle_cell("queue_view", 1);
        for (const int answer : {GTK_RESPONSE_NO, GTK_RESPONSE_YES}) {
            script.question("Вы действительно хотите удалить (4) записей из списка?", answer);
            window.click("button_admit_delete");
            EXPECT_EQ(marks(window, "queue_view"), answer == GTK_RESPONSE_NO ? "10111" : "0");
        }
        window.click("button_admit_ok");
    });
    ASSERT_EQ(config.fc_queue.size(), 1);
    EXPECT_EQ(config.fc_queue[0].id, "b1");
}

} // namespace
