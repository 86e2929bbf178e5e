// Windows, widgets and boxes of MGDialog, and the edge of handlers, on real widgets.
#include "app/log.h"
#include "dialog/handlers.h"
#include "dialog/make_dialog.h"
#include "support/temp_dir.h"
#include "support/ui_script.h"

#include <cstring>
#include <memory>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::UnorderedElementsAre;

const char* definition = R"(<interface>
  <object class="GtkAdjustment" id="adjustment"><property name="upper">100</property></object>
  <object class="GtkWindow" id="hidden_window"/>
  <object class="GtkDialog" id="dialog"><child internal-child="vbox"><object class="GtkBox"><property name="visible">1</property>
    <child><object class="GtkButton" id="button_ok">
      <property name="visible">1</property><signal name="clicked" handler="button_ok" object="dialog" swapped="no"/></object></child>
    <child><object class="GtkButton" id="button_cancel">
      <property name="visible">1</property><signal name="clicked" handler="button_cancel" object="dialog" swapped="no"/></object></child>
    <child><object class="GtkEntry" id="entry"><property name="visible">1</property></object></child>
    <child><object class="GtkComboBoxText" id="combo"><items><item id="ADD">one</item><item id="ERROR">two</item></items></object></child>
    <child><object class="GtkToggleButton" id="stop"/></child>
    <child><object class="GtkCalendar" id="calendar"/></child>
    <child><object class="GtkProgressBar" id="bar"/></child>
    <child><object class="GtkStack" id="stack"><property name="visible">1</property>
      <child><object class="GtkLabel" id="page_1"><property name="visible">1</property></object></child>
      <child><object class="GtkLabel" id="page_2"><property name="visible">1</property></object></child></object></child>
  </object></child></object>
</interface>)";

std::unique_ptr<MGDialog> make(const char* id = "dialog") {
    return std::make_unique<MGDialog>(definition, std::strlen(definition), id);
}

GtkWindow* parent_of(const MGDialog& dialog) {
    return gtk_window_get_transient_for(GTK_WINDOW(dialog.window));
}

TEST(MGDialog, EachWindowIsTransientForTheOneOpenedLast) {
    ASSERT_TRUE(g_dialog_stack.empty());
    const auto main = make("hidden_window");
    EXPECT_EQ(parent_of(*main), nullptr);
    {
        const auto second = make();
        const auto third = make();
        EXPECT_EQ(parent_of(*second), GTK_WINDOW(main->window));
        EXPECT_EQ(parent_of(*third), GTK_WINDOW(second->window));
    }
    const auto later = make();
    EXPECT_EQ(parent_of(*later), GTK_WINDOW(main->window));
    EXPECT_EQ(g_dialog_stack.size(), 2u);
}

TEST(MGDialog, LeavesNoWindowBehind) {
    GList* before = gtk_window_list_toplevels();
    {
        const auto dialog = make();
        dialog->Destroy();
        dialog->Destroy();
        EXPECT_EQ(dialog->window, nullptr);
    }
    GList* after = gtk_window_list_toplevels();
    EXPECT_EQ(g_list_length(after), g_list_length(before)); // neither the dialog nor the window that was not shown
    EXPECT_TRUE(g_dialog_stack.empty());
    g_list_free(before);
    g_list_free(after);
}

TEST(MGDialog, WithoutAWindowItAnswersCancelAndShowsNothing) {
    const auto main = make("hidden_window");
    testing::internal::CaptureStderr();
    MGDialog file("/nonexistent.glade", "dialog"), resource("/nowhere", "none.glade", "dialog"),
        other_id(definition, std::strlen(definition), "no_such_window");
    const std::string said = testing::internal::GetCapturedStderr();
    EXPECT_THAT(said, HasSubstr("/nonexistent.glade"));
    EXPECT_THAT(said, HasSubstr("/nowhere/none.glade"));
    for (MGDialog* dialog : {&file, &resource, &other_id}) {
        char* name = nullptr;
        std::string folder = "old";
        std::vector<std::string> names = {"old"};
        dialog->Show();
        dialog->WindowSetName("title");
        EXPECT_EQ(dialog->Run(), GTK_RESPONSE_CANCEL);
        EXPECT_EQ(dialog->MessageBox("t", "m", GTK_MESSAGE_INFO, GTK_BUTTONS_OK), -1);
        EXPECT_EQ(dialog->GetFileName("t", nullptr, &name), -1);
        EXPECT_FALSE(dialog->GetFilesFromDir("t", "/", folder, names));
        EXPECT_TRUE(folder.empty() && names.empty());
        dialog->Destroy();
        EXPECT_EQ(g_dialog_stack.size(), 1u);
    }
}

TEST(MGDialog, SharedHandlersEndTheRun) {
    const auto dialog = make();
    for (const auto& [button, response] :
         {std::pair{"button_ok", GTK_RESPONSE_OK}, {"button_cancel", GTK_RESPONSE_CANCEL}}) {
        UiScript script;
        script.when("dialog", [id = button](UiWindow window) { window.click(id); });
        EXPECT_EQ(dialog->Run(), response) << button;
    }
}

TEST(MGDialog, GivesBackWhatWasSet) {
    const auto dialog = make();
    MGDialog& d = *dialog;
    d.SetEntry("entry", "текст");
    d.SetEntry("entry", nullptr);
    EXPECT_STREQ(d.GetEntry("entry"), "текст");

    EXPECT_EQ(d.ComboBoxGetId("combo"), nullptr);
    EXPECT_EQ(d.ComboBoxGetIdStr("combo"), "");
    EXPECT_EQ(d.ComboBoxGetNum("combo"), -1);
    d.ComboBoxSetId("combo", "ERROR");
    EXPECT_EQ(d.ComboBoxGetIdStr("combo"), "ERROR");
    EXPECT_EQ(d.ComboBoxGetNum("combo"), 1);
    d.ComboBoxTextAppend("combo", "three");
    d.ComboBoxSetNum("combo", 2);
    char* text = d.ComboBoxTextGet("combo");
    EXPECT_STREQ(text, "three");
    MGDialog::Free(text);

    d.SpinSet("adjustment", 8760);
    EXPECT_EQ(d.SpinGet("adjustment"), 100); // the definition's limit
    d.SpinSetMax("adjustment", 8760);
    d.SpinSetMin("adjustment", -10);
    for (const auto& [set, read] : {std::pair{8760.0, 8760}, {59.9, 59}, {-2.9, -2}}) {
        d.SpinSet("adjustment", set);
        EXPECT_EQ(d.SpinGet("adjustment"), read);
    }

    d.StackSetVisibleChild("stack", "page_2");
    d.StackSetVisibleChild("stack", "no_such_page");
    EXPECT_EQ(G_OBJECT(gtk_stack_get_visible_child(GTK_STACK(d.GetObject("stack")))), d.GetObject("page_2"));

    int32_t year = 0, month = 0, day = 0;
    d.SetCalendar("calendar", 2024, 2, 29);
    d.GetCalendar("calendar", &year, &month, &day);
    EXPECT_THAT((std::vector<int32_t>{year, month, day}), ElementsAre(2024, 2, 29));

    EXPECT_FALSE(d.SetProgressExt("bar", "stop", 4, 2));
    EXPECT_DOUBLE_EQ(gtk_progress_bar_get_fraction(GTK_PROGRESS_BAR(d.GetObject("bar"))), 0.75);
    d.ToggleButtonSet("stop", true);
    EXPECT_TRUE(d.SetProgressExt("bar", "stop", 4, 3));
    d.SetNullProgressExt("bar", "stop");
    EXPECT_FALSE(d.ToggleButtonGet("stop"));
}

TEST(MGDialog, ANullIdIsNeutralAndAMissingOneIsLoud) {
    const auto dialog = make();
    dialog->SetLabel(nullptr, "text");
    dialog->ToggleButtonSet(nullptr, true);
    dialog->SetFocusToProblemWidget(nullptr);
    EXPECT_STREQ(dialog->GetEntry(nullptr), "");
    EXPECT_EQ(dialog->GetLabel(nullptr), nullptr);
    EXPECT_EQ(dialog->ComboBoxGetNum(nullptr), 0);
    EXPECT_EQ(dialog->SpinGet(nullptr), 0);
    EXPECT_FALSE(dialog->ToggleButtonGet(nullptr));

    ToolkitMessages said;
    dialog->SetEntry("no_such_entry", "text");
    EXPECT_STREQ(dialog->GetEntry("no_such_entry"), "");
    EXPECT_EQ(dialog->SpinGet("no_such_adjustment"), 0);
    EXPECT_EQ(said.texts.size(), 3u);
}

TEST(MGDialog, ABoxShowsItsTextAsItStands) {
    const auto dialog = make();
    const char* text = "%s и %d: 100% <b>";
    UiScript script;
    script.remark(text).refusal(text).question(text, GTK_RESPONSE_YES).question(text, GTK_RESPONSE_NO);
    show_message(dialog.get(), text);
    show_refusal(dialog.get(), text);
    EXPECT_TRUE(ask_yes_no(dialog.get(), text));
    EXPECT_FALSE(ask_yes_no(dialog.get(), text));
    EXPECT_FALSE(ask_yes_no(nullptr, text));
}

TEST(MGDialog, ABoxOfAnyTextFitsTheScreen) {
    const auto dialog = make();
    const std::string megabytes(9 << 20, 'x'), cut = std::string(480, 'x') + "…\n", lines(5000, '\n');
    const struct {
        std::string text, shown;
    } rows[] = {
        {"первая\n" + megabytes + "\nпоследняя\n", "первая\n" + cut + "последняя\n"},
        {lines + "я", std::string(24, '\n') + "…"},
        {cut + cut + cut + cut, cut + cut + cut + "…"},
        {"/home/\xFF", "/home/\uFFFD"},
    };
    for (const auto& row : rows) {
        UiScript script;
        script.refusal(testing::Truly([&](const std::string& shown) {
            int width = 0, height = 0;
            gtk_window_get_size(GTK_WINDOW(modal_window()), &width, &height);
            EXPECT_LT(width, 800);
            EXPECT_LT(height, 700);
            return shown == row.shown;
        }));
        show_refusal(dialog.get(), row.text.c_str());
    }
}

TEST(MGDialog, FileChoosersGiveNamesOnAcceptanceOnly) {
    const auto dialog = make();
    const TempDir dir;
    dir.write("a.txt", "");
    dir.write("b.txt", "");

    char* name = nullptr;
    const auto open = [&] { return dialog->GetFileNameExt("Файл", GTK_FILE_CHOOSER_ACTION_OPEN, nullptr, &name); };
    UiScript script;
    script.cancel_chooser("Файл").choose("Файл", dir.path("a.txt"));
    EXPECT_EQ(open(), GTK_RESPONSE_CANCEL);
    EXPECT_EQ(name, nullptr);
    EXPECT_EQ(open(), GTK_RESPONSE_ACCEPT);
    EXPECT_EQ(name ? name : "", dir.path("a.txt"));
    MGDialog::Free(name);
    script.choose("Каталог", dir.path());
    EXPECT_EQ(dialog->GetFileNameExt("Каталог", GTK_FILE_CHOOSER_ACTION_SELECT_FOLDER, "/", &name),
              GTK_RESPONSE_ACCEPT);
    EXPECT_EQ(name ? name : "", dir.path());
    MGDialog::Free(name);

    std::string folder = dir.path(), file = "old.txt", path = "untouched";
    script.cancel_chooser("Куда").choose("Куда", dir.path("c.txt")).choose("Куда", "/d.txt");
    EXPECT_FALSE(dialog->GetFileNameSave("Куда", folder, "c.txt", path));
    EXPECT_TRUE(dialog->GetFileNameSave("Куда", folder, file, folder, file)); // the proposals take the answer
    EXPECT_EQ(folder, dir.path());
    EXPECT_EQ(file, "c.txt");
    EXPECT_TRUE(dialog->GetFileNameSave("Куда", "", "", path));
    EXPECT_EQ(path, "/d.txt");

    std::vector<std::string> names = {"old"};
    script.cancel_chooser("Файлы").when("GtkFileChooserDialog", [](UiWindow window) {
        GtkFileChooser* chooser = GTK_FILE_CHOOSER(window.widget());
        EXPECT_TRUE(handle_events_until([&] {
            gtk_file_chooser_select_all(chooser);
            GSList* files = gtk_file_chooser_get_filenames(chooser);
            const guint count = g_slist_length(files);
            g_slist_free_full(files, g_free);
            return count == 2;
        }));
        window.respond(GTK_RESPONSE_ACCEPT);
    });
    EXPECT_FALSE(dialog->GetFilesFromDir("Файлы", dir.path(), folder, names));
    EXPECT_TRUE(names.empty());
    EXPECT_TRUE(dialog->GetFilesFromDir("Файлы", dir.path(), folder, names));
    EXPECT_EQ(folder, dir.path());
    EXPECT_THAT(names, UnorderedElementsAre("a.txt", "b.txt"));
}

MGDialog* global = nullptr;
std::deque<MGDialog*> nested;

TEST(OpenDialog, StandsInItsGlobalWhileItIsOpen) {
    try {
        OpenDialog dialog(global, "dialog_about", "Заголовок");
        EXPECT_EQ(global, dialog.get());
        OpenDialog inner(nested, "dialog_admit", "Список");
        EXPECT_THAT(nested, ElementsAre(inner.get()));
        EXPECT_EQ(parent_of(*inner), GTK_WINDOW(dialog->window));
        UiScript script;
        script.when("dialog_admit", [](UiWindow window) {
            EXPECT_EQ(window.title(), "Список");
            window.respond(GTK_RESPONSE_OK);
        });
        EXPECT_TRUE(inner.RunOk());
        throw MGErr();
    } catch (const MGErr&) {
    }
    EXPECT_EQ(global, nullptr);
    EXPECT_TRUE(nested.empty());
    EXPECT_TRUE(g_dialog_stack.empty());
}

void failing_handler(MGDialog* over, const std::function<void()>& body) {
    at_handler(over, body);
}

TEST(AtHandler, WhatIsThrownIsLoggedAndShown) {
    const TempDir dir;
    LogFileGlobal.SetLogFile(dir.path("editor.log").c_str());
    const auto dialog = make();
    const struct {
        const char* what;
        std::function<void()> body;
        const char* text;
    } rows[] = {
        {"our error",
         [] {
             MGErr err;
             err.mess_1 = "Ошибка чтения";
             fail(err, "Нет файла", "open");
         },
         "Ошибка чтения\nНет файла\nopen\n"},
        {"the library's", [] { throw std::runtime_error("out"); },
         "Непонятная ошибка\nИсключение библиотеки STD\nfailing_handler\nout\n"},
        {"an exit", [] { throw MGExit(3); }, "Непонятная ошибка\nЛюбое исключение\nfailing_handler\n"},
        {"a number", [] { throw 5; }, "Непонятная ошибка\nЛюбое исключение\nfailing_handler\n"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        UiScript script;
        script.refusal(row.text);
        failing_handler(dialog.get(), row.body);
        EXPECT_THAT(dir.read("editor.log"), HasSubstr(row.text));
    }
}

} // namespace
