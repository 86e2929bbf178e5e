// The list dialog in its six modes: what it shows, how it searches, marks and deletes, and whom OK gives the list to.
#include "lists/lists_fixture.h"

namespace {

using Rows = std::vector<std::string>;

template <auto list>
void delete_first(MGConfig& config) {
    (config.*list).erase((config.*list).begin());
}
template <auto list>
void delete_first_of_client(MGConfig& config) {
    (config.fs_allow[0].*list).erase((config.fs_allow[0].*list).begin());
}

// One of the six lists: how a user gets there, and what the window then is.
struct ListKind {
    const char* opener; // in the profile editor
    const char* nested; // in the list of clients, on its first row
    void (*delete_first)(MGConfig& config);
    const char *heading, *page, *view, *row_1, *row_2;
    const char* no_client = ""; // what a nested one says where no client is selected
};

constexpr const char* users = "Список допущенных пользователей";
const ListKind lists[] = {
    {"button_admission_list", nullptr, delete_first<&MGConfig::admit>, users, "admit_scrolled", "admit_view",
     "0|s1|-->|10.0.0.1|a.example|65535", "0|s2||10.0.0.2||"},
    {"button_gw_admission_list", nullptr, delete_first<&MGConfig::gw_admit>, users, "admit_scrolled_2", "admit_view_2",
     "0|s1||||", "0|s2||||"},
    {"button_fc_queue", nullptr, delete_first<&MGConfig::fc_queue>, "Список очередей", "admit_scrolled_fc",
     "queue_view", "0|q1|/in|/out|Да|Нет|/t|Нет", "0|q2|/i|/o|Нет|Да||Да"},
    {"button_fs_allow", nullptr, delete_first<&MGConfig::fs_allow>, "Список клиентов", "admit_scrolled_fs",
     "allow_view", "0|Клиент 1|one|Да|Да", "0|Клиент 2|two|Нет|Нет"},
    {"button_fs_allow", "button_admit_cert", delete_first_of_client<&MGAllow::admit>, users, "admit_scrolled_2",
     "admit_view_2", "0|s1||||", "0|s2||||",
     "Для редактирования списка сертификатов необходимо выбрать в списке запись клиента"},
    {"button_fs_allow", "button_admit_queue", delete_first_of_client<&MGAllow::queue>, "Список очередей",
     "admit_scrolled_fc", "queue_view", "0|q1|/in|/out|Да|Нет|/t|Нет", "0|q2|/i|/o|Нет|Да||Да",
     "Для редактирования списка очередей необходимо выбрать в списке запись клиента"},
};

MGConfig every_list() {
    MGConfig config;
    config.admit = {{"s1", true, "10.0.0.1", "a.example", 65535}, {"s2", false, "10.0.0.2", "", 0}};
    config.gw_admit = config.admit;
    config.fc_queue = {{"q1", "/in", "/out", true, false, "/t", false}, {"q2", "/i", "/o", false, true, "", true}};
    config.fs_allow = {{true, "Клиент 1", "one", "secret", config.admit, config.fc_queue},
                       {false, "Клиент 2", "two", "", {}, {}}};
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
            script.when("dialog_admit", use);
        open(list.opener);
        EXPECT_TRUE(stackAdmitDialog.empty());
    }
    void run_queues(const std::vector<const char*>& ids, const std::function<void(UiWindow)>& use) {
        config.fc_queue.clear();
        for (const char* id : ids) config.fc_queue.emplace_back().id = id;
        run(lists[2], use);
    }
};

TEST_F(AdmitListTest, ShowsEachListAndHandsOverOnlyWhatEveryLevelConfirmed) {
    const struct {
        const char *answer, *below; // no answer: the window is closed
    } ends[] = {{"button_admit_ok", "button_admit_ok"},
                {"button_admit_cancel", "button_admit_ok"},
                {"button_admit_ok", "button_admit_cancel"},
                {nullptr, nullptr}};
    for (const ListKind& list : lists) {
        for (const auto& end : ends) {
            if (&end != ends && !list.nested != !end.below) continue; // closed: those that no other one is below
            SCOPED_TRACE(testing::Message() << &list - lists << ", end " << &end - ends);
            config = every_list();
            MGConfig expected = config;
            if (&end == ends) list.delete_first(expected);
            const auto look_delete_and_answer = [&](UiWindow window) {
                EXPECT_EQ(window.title(), "Список допуска");
                EXPECT_EQ(window.label("label_admit_name"), list.heading);
                EXPECT_EQ(gtk_stack_get_visible_child(GTK_STACK(window.find("admit_stack"))), window.find(list.page));
                EXPECT_EQ(rows_of(window, list.view), (Rows{list.row_1, list.row_2}));
                EXPECT_EQ(gtk_widget_get_visible(window.find("button_box_admit")), &list == &lists[3]);
                window.set_entry("entry_admit_filter", "*2"); // by the key of its kind
                window.click("button_admit_find");
                EXPECT_EQ(selected_row(window, list.view), 1);
                window.toggle_cell(list.view, 0);
                script.question("Вы действительно хотите удалить (1) записей из списка?", GTK_RESPONSE_YES);
                window.click("button_admit_delete");
                EXPECT_EQ(rows_of(window, list.view), Rows{list.row_2});
                end.answer ? window.click(end.answer) : window.close();
            };
            run(list, look_delete_and_answer, end.below);
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
    } steps[] = {{"", find, -1, false},   {"АБ*", next, -1, false}, // starts nothing
                 {"АБ*", find, 0, true},  {"АБ*", next, 2, true},
                 {"АБ*", next, 2, false}, {"АБ*", next, 2, false}, // behind the last one
                 {"АБ*", find, 0, true},  {"*", next, 0, false},   // another text ends the walk
                 {"*", find, 0, true},    {"*", next, 1, true},
                 {"нет", find, 1, false}, {"?бв", find, 0, true}};
    init_admit_filter.clear();
    run_queues({"абв", "я", "аб"}, [&](UiWindow window) {
        for (const auto& step : steps) {
            SCOPED_TRACE(testing::Message() << &step - steps);
            window.set_entry("entry_admit_filter", step.filter);
            window.click(step.button);
            EXPECT_EQ(selected_row(window, "queue_view"), step.row);
            const MGDialog& dialog = *stackAdmitDialog.back();
            EXPECT_EQ(dialog.find_active, step.active);
            EXPECT_EQ(dialog.find_index, step.active ? step.row : 0);
            EXPECT_EQ(dialog.work_text, step.active ? step.filter : "");
        }
        EXPECT_EQ(window.combo_rows("combo_admit_filter"), (History{"АБ*", "*", "?бв"})); // what found
        window.click("button_admit_cancel");
    });
    run_queues({}, [](UiWindow window) {
        EXPECT_EQ(window.combo_rows("combo_admit_filter"), (History{"АБ*", "*", "?бв"}));
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
            window.set_entry("entry_admit_filter", filter);
            window.click(button);
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
