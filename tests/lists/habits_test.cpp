// What keys and clicks do in every list, and what becomes of a number that can't be stored as it was typed.
#include "lists/lists_fixture.h"

namespace {

class HabitsTest : public ListsTest {};

void press(UiWindow window, const std::string& input, guint key, guint state = 0) {
    gtk_widget_grab_focus(window.find(input));
    press_key(window.widget(), key, state);
}

TEST_F(HabitsTest, KeysPressTheButtonsOfAList) {
    config.admit.resize(2);
    config.gw_admit.resize(2);
    config.fc_queue.resize(2);
    config.fs_allow.resize(2);
    config.gw_client.adrs.resize(2);
    const struct {
        const char *opener, *dialog, *view, *record, *ok, *input;
    } lists[] = {
        {"admission_list", "admit", "admit_view", "subject", "subject_ok", "entry_subject_name=x"},
        {"gw_admission_list", "admit", "admit_view_2", "subject_2", "subject_ok_2", "entry_subject_name_2=x"},
        {"fc_queue", "admit", "queue_view", "queue", "subject_ok_1", "entry_id_queue=x;entry_in_dir=x;entry_out_dir=x"},
        {"fs_allow", "admit", "allow_view", "allow", "allow_ok", "entry_allow_name=x;entry_allow_login=x"},
        {"gw_client_list_adrs", "adrs", "adrs_view", "address", "address_ok", "entry_address_domen=x"},
    };
    for (const auto& list : lists) {
        SCOPED_TRACE(list.view);
        const std::string dialog = std::string("dialog_") + list.record, ok = std::string("button_") + list.ok;
        const auto expect_change = [&] {
            script.when(dialog, [](UiWindow record) {
                EXPECT_EQ(record.title(), "Изменение данных пользователя");
                record.close();
            });
        };
        script.when(std::string("dialog_") + list.dialog, [&](UiWindow window) {
            GtkTreeView* view = GTK_TREE_VIEW(window.find(list.view));
            GtkTreePath* row = gtk_tree_path_new_from_indices(1, -1);
            gtk_tree_view_set_cursor(view, row, nullptr, FALSE);
            script.remark("Удаляемые записи нужно отметить в колонке [v]");
            press(window, list.view, GDK_KEY_Delete);
            press(window, list.view, GDK_KEY_space);
            for (const guint key : {GDK_KEY_F2, GDK_KEY_Return}) {
                expect_change();
                press(window, list.view, key);
            }
            gtk_tree_view_row_activated(view, row, gtk_tree_view_get_column(view, 0)); // two clicks on a mark
            expect_change();
            gtk_tree_view_row_activated(view, row, gtk_tree_view_get_column(view, 1));
            gtk_tree_path_free(row);
            script.when(dialog, [&](UiWindow record) {
                record.enter(list.input);
                record.click(ok);
            });
            press(window, list.view, GDK_KEY_Insert);
            EXPECT_EQ(marks(window, list.view), "010");
            EXPECT_EQ(selected_row(window, list.view), 2) << "what is new is at hand";
            window.close();
        });
        open((std::string("button_") + list.opener).c_str());
    }
}

TEST_F(HabitsTest, NoNumberIsStoredThatWasNotTypedOrSeen) {
    config.admit = {{.subject = "CN=x", .use_server = true, .ip = "10.0.0.1", .port = 97}};
    const struct {
        const char *typed, *stored;
        bool seen_first;
    } rows[] = {{"98", "98", false},  {" 098 ", "98", false}, {"70000", "65535", true},
                {"9o97", "97", true}, {"", "97", true},       {"99999999999999999999", "65535", true}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.typed);
        script.when("dialog_admit", [&](UiWindow window) {
            window.select("admit_view", {0});
            script.when("dialog_subject", [&](UiWindow record) {
                const char *number = "spin_subject_send_port", *ok = "button_subject_ok";
                gtk_widget_grab_focus(record.find(number));
                gtk_entry_set_text(GTK_ENTRY(record.find(number)), row.typed);
                if (row.seen_first) {
                    gtk_widget_grab_focus(record.find(ok)); // as a click does
                    record.click(ok);
                    EXPECT_EQ(record.focus(), number);
                    EXPECT_EQ(record.entry(number), row.stored);
                }
                record.click(ok);
            });
            window.click("button_admit_rename");
            EXPECT_EQ(window.table("admit_view")[0][5], row.stored);
            window.close();
        });
        open("button_admission_list");
    }
}

} // namespace
