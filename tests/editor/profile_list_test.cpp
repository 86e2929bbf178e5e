// The main window: its list, the memory and the disk after each operation.
#include "editor_fixture.h"

namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::IsSupersetOf;

constexpr int default_column = 0, active_column = 1;

class ProfileList : public EditorTest {
protected:
    Rows rows() const { return main().table("profile_view"); }
    void expect_saved(const Rows& expected) {
        EXPECT_EQ(rows(), expected);
        EXPECT_EQ(on_disk(), context.profiles);
        Rows memory;
        for (const MGProfile& profile : context.profiles)
            memory.push_back({profile.is_default ? "1" : "0", profile.active ? "1" : "0", profile.name, profile.id});
        EXPECT_EQ(memory, expected);
    }
    std::string master_file(const char* reserve = "") const {
        return home.read(std::string(".selunara/vormaqs/config/vormaqs_config.xml") + reserve);
    }
};

TEST_F(ProfileList, CreatesAProfileOnceNameAndIdAreRight) {
    show({"first", "second"});
    main().toggle_cell("profile_view", 1, active_column); // a first save
    const std::string before = master_file();
    UiScript script;
    script.when("dialog_enter_2", [](UiWindow window) {
        EXPECT_EQ(window.label("label_enter_2_profile"), "Создание профиля");
        EXPECT_THAT(window.combo_rows("combo_enter_2_name"), IsSupersetOf({"Имя first", "Имя second"}));
        EXPECT_THAT(window.combo_rows("combo_enter_2_id"), IsSupersetOf({"first", "second"}));
    });
    script.checks("dialog_enter_2", "button_enter_2_ok", checks_of("new profile"));
    main().click("button_profile_create");
    expect_saved(
        {{"1", "0", "Имя first", "first"}, {"0", "1", "Имя second", "second"}, {"0", "0", "Третий", "third_3"}});
    GtkListStore* store = nullptr;
    EXPECT_TRUE(ProfileDialog->TreeViewGetSelection(GTK_TREE_VIEW(main().find("profile_view")), &store));
    EXPECT_EQ(ProfileDialog->TreeModelGetIndex(), 2) << "what is new is at hand";
    EXPECT_EQ(master_file("~"), before);
    EXPECT_EQ(config_files().size(), 4u + 3u) << "of what was new there is no copy";
}

TEST_F(ProfileList, RenamesWithoutTouchingTheId) {
    const std::string long_id(40, 'i'); // made by hand: the entry holds 32 characters
    show({"first", long_id});
    UiScript script;
    script.when("dialog_enter_2", [&](UiWindow window) {
        EXPECT_EQ(window.label("label_enter_2_profile"), "Переименование профиля");
        EXPECT_EQ(window.entry("entry_enter_2_name") + window.entry("entry_enter_2_id"),
                  "Имя " + long_id + long_id.substr(0, 32));
        EXPECT_FALSE(window.sensitive("entry_enter_2_id") || window.sensitive("combo_enter_2_id"));
    });
    script.when("dialog_enter_2", enter("entry_enter_2_name=<Другой & новый>;button_enter_2_ok"));
    main().select("profile_view", {1});
    main().click("button_profile_rename");
    expect_saved({{"1", "0", "Имя first", "first"}, {"0", "0", "<Другой & новый>", long_id}});
}

TEST_F(ProfileList, DeletesAfterAQuestionAndPassesTheDefaultMarkOn) {
    show({"a", "b", "c"});
    main().toggle_cell("profile_view", 2, default_column);
    const std::pair<int, Rows> deletions[] = {// the row, and what is left
                                              {1, {{"0", "0", "Имя a", "a"}, {"1", "0", "Имя c", "c"}}},
                                              {1, {{"1", "0", "Имя a", "a"}}},
                                              {0, {}}};
    for (const auto& [row, left] : deletions) {
        UiScript script;
        script.question("Вы действительно хотите удалить этот профиль (" + rows().at(static_cast<size_t>(row))[3] +
                            ")?",
                        GTK_RESPONSE_YES);
        main().select("profile_view", {row});
        main().click("button_profile_delete");
        expect_saved(left);
    }
    EXPECT_TRUE(config_files().count("c.xml")) << "a deleted profile's file stays";
    for (const char* button : {"rename", "delete", "configure"}) // with nothing selected they say and do nothing
        main().click(std::string("button_profile_") + button);
    UiScript script;
    script.when("dialog_enter_2", enter("entry_enter_2_name=Новый;entry_enter_2_id=d;button_enter_2_ok"));
    main().click("button_profile_create");
    expect_saved({{"1", "0", "Новый", "d"}});
}

TEST_F(ProfileList, CancelLeavesAllAsItWas) {
    show({"first", "second"});
    const std::vector<MGProfile> profiles = context.profiles;
    const Rows shown = rows();
    UiScript script;
    script.when("dialog_enter_2", enter("entry_enter_2_name=Другое;entry_enter_2_id=other;button_enter_2_cancel"));
    script.when("dialog_enter_2", enter("entry_enter_2_name=Другое;button_enter_2_cancel"));
    script.question(HasSubstr("(second)"), GTK_RESPONSE_NO);
    script.when("dialog_settings", enter("entry_log_editor=/other;button_settings_cancel"));
    script.when("dialog_about", [](UiWindow window) { window.close(); });
    main().select("profile_view", {1});
    for (const char* id : {"button_profile_create", "button_profile_rename", "button_profile_delete",
                           "menuitem_settings", "menuitem_about"})
        main().click(id);
    main().toggle_cell("profile_view", 0, default_column); // the default mark can't be clicked away
    EXPECT_EQ(context.profiles, profiles);
    EXPECT_EQ(context.editor_path, "/usr/bin/kate");
    EXPECT_EQ(rows(), shown);
    EXPECT_THAT(config_files(), IsEmpty());
}

TEST_F(ProfileList, SavesOnceForEachRowThatTheDefaultMarkPassesAndKeepsWhatCannotBeSaved) {
    show({"a", "b", "c"});
    const Rows moved = {{"0", "0", "Имя a", "a"}, {"0", "0", "Имя b", "b"}, {"1", "0", "Имя c", "c"}};
    {
        const std::string obstacle = context.config_dir + "/vormaqs_config.xml";
        std::filesystem::create_directory(obstacle);
        UiScript script;
        for (int save = 0; save < 3; ++save) script.refusal(HasSubstr("vormaqs_config.xml"));
        main().toggle_cell("profile_view", 2, default_column);
        EXPECT_TRUE(script.finished());
        EXPECT_EQ(rows(), moved);
        std::filesystem::remove(obstacle);
    }
    EXPECT_THAT(home.read(".selunara/vormaqs/log/vormaqscfg.log"), HasSubstr("____ERROR____"));
    EXPECT_THAT(config_files(), IsEmpty());
    UiScript script;
    script.when("dialog_settings", enter("entry_log_editor=;button_settings_ok"));
    main().click("menuitem_settings"); // the next save, of whatever, writes all of it
    expect_saved(moved);
    EXPECT_THAT(master_file(), HasSubstr("<editor path=\"\"/>"));
}

TEST_F(ProfileList, AsksBeforeItLeavesOnlyIfWhatFailedToBeSavedFailsAgain) {
    show({"a"});
    const std::string obstacle = context.config_dir + "/vormaqs_config.xml";
    std::filesystem::create_directory(obstacle);
    const auto leave = [](UiWindow window) { window.click("menuitem_quit"); };
    UiScript script;
    script.refusal(HasSubstr("vormaqs_config.xml"));
    main().toggle_cell("profile_view", 0, active_column);
    script.when("window_profile", [](UiWindow window) { window.close(); });
    for (const int answer : {GTK_RESPONSE_NO, GTK_RESPONSE_YES})
        script.refusal(HasSubstr("vormaqs_config.xml"))
            .question(HasSubstr("Выйти без сохранения?"), answer)
            .when("window_profile", [&, answer](UiWindow window) {
                if (answer == GTK_RESPONSE_YES) std::filesystem::remove(obstacle);
                leave(window);
            });
    gtk_main();
    EXPECT_TRUE(std::filesystem::is_directory(obstacle)) << "nothing is saved";
    gtk_main();
    expect_saved({{"1", "1", "Имя a", "a"}});
    script.when("window_profile", leave); // all is saved
    gtk_main();
}

} // namespace
