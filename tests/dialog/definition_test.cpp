// The interface definition as a whole: it leaves no input without a name for assistive technology; every window fits a
// small screen, with a large font too, and is read by keyboard and wheel without harm.
#include "dialog/make_dialog.h"
#include "support/ui_script.h"

#include <gtk/gtk-a11y.h>

#include <algorithm>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace {

using testing::SizeIs;

struct Unref {
    void operator()(gpointer object) const { g_object_unref(object); }
};

class Definition : public testing::Test {
protected:
    void SetUp() override {
        builder_.reset(gtk_builder_new());
        GError* error = nullptr;
        ASSERT_TRUE(gtk_builder_add_from_resource(builder_.get(), "/selunara/vorma/vormacfg.glade", &error))
            << error->message;
        GSList* objects = gtk_builder_get_objects(builder_.get());
        for (GSList* item = objects; item; item = item->next) {
            objects_.push_back(G_OBJECT(item->data));
            if (GTK_IS_WINDOW(item->data)) windows_.push_back(GTK_WIDGET(item->data));
        }
        g_slist_free(objects);
    }
    void TearDown() override {
        for (GtkWidget* window : windows_) gtk_widget_destroy(window);
    }

    std::unique_ptr<GtkBuilder, Unref> builder_;
    std::vector<GObject*> objects_;
    std::vector<GtkWidget*> windows_;
};

struct Spoken {
    int marks = 0;
    std::set<std::string> hints; // labels that describe an input
};

// What a screen reader finds from here on: inputs, lists, frames, marks and icons with a name of their own or a
// label's.
void expect_names(AtkObject* object, Spoken& spoken) {
    static const std::set<AtkRole> inputs{ATK_ROLE_TEXT,      ATK_ROLE_PASSWORD_TEXT, ATK_ROLE_SPIN_BUTTON,
                                          ATK_ROLE_COMBO_BOX, ATK_ROLE_CHECK_BOX,     ATK_ROLE_RADIO_BUTTON,
                                          ATK_ROLE_ICON,      ATK_ROLE_PUSH_BUTTON};
    const bool mark = GTK_IS_BOOLEAN_CELL_ACCESSIBLE(object);
    GtkWidget* widget = GTK_IS_WIDGET_ACCESSIBLE(object) ? gtk_accessible_get_widget(GTK_ACCESSIBLE(object)) : nullptr;
    const char* name = atk_object_get_name(object);
    if (mark || GTK_IS_FRAME_ACCESSIBLE(object) || inputs.count(atk_object_get_role(object)) ||
        (GTK_IS_TREE_VIEW(widget) && id_of(widget).ends_with("view"))) {
        EXPECT_TRUE((name && *name) || (widget && spoken_label(widget) != ""))
            << G_OBJECT_TYPE_NAME(object) << (widget ? id_of(widget) : "");
    }
    spoken.marks += mark;
    if (GTK_IS_ENTRY(widget)) {
        const std::unique_ptr<AtkRelationSet, Unref> relations(atk_object_ref_relation_set(object));
        if (AtkRelation* hint = atk_relation_set_get_relation_by_type(relations.get(), ATK_RELATION_DESCRIBED_BY))
            spoken.hints.insert(
                id_of(gtk_accessible_get_widget(GTK_ACCESSIBLE(atk_relation_get_target(hint)->pdata[0]))));
    }
    for (int i = 0; i < atk_object_get_n_accessible_children(object); ++i) {
        const std::unique_ptr<AtkObject, Unref> child(atk_object_ref_accessible_child(object, i));
        if (child) expect_names(child.get(), spoken);
    }
}

TEST_F(Definition, NamesEveryInputFrameAndMarkForAssistiveTechnology) {
    Spoken spoken;
    for (GtkWidget* window : windows_) {
        SCOPED_TRACE(id_of(window));
        const std::unique_ptr<MGDialog> dialog(make_dialog(id_of(window).c_str()));
        dialog->SetLabel("label_enter_2_profile", "Профиль"); // by the opener
        for (GObject* object : objects_)
            if (GTK_IS_LIST_STORE(object))
                dialog->ListStoreAppend(GTK_LIST_STORE(dialog->GetObject(id_of(object).c_str())));
        dialog->Show();
        settle();
        expect_names(gtk_widget_get_accessible(dialog->window), spoken);
    }
    EXPECT_EQ(spoken.marks, 5); // one row in each list that is in sight
    for (GObject* object : objects_)
        if (GTK_IS_LABEL(object) && id_of(object).ends_with("_hint")) {
            EXPECT_EQ(spoken.hints.count(id_of(object)), 1) << id_of(object);
        }
}

GdkRectangle place_in(GtkWidget* window, GtkWidget* widget) {
    GdkRectangle place{0, 0, gtk_widget_get_allocated_width(widget), gtk_widget_get_allocated_height(widget)};
    gtk_widget_translate_coordinates(widget, window, 0, 0, &place.x, &place.y);
    return place;
}

// Presses Tab once around the window: it never goes left but to something lower, nor up but to something further right.
void expect_reading_order(GtkWidget* window) {
    gtk_window_set_focus(GTK_WINDOW(window), nullptr);
    std::set<GtkWidget*> passed;
    GtkWidget* last = nullptr;
    while (gtk_widget_child_focus(window, GTK_DIR_TAB_FORWARD)) {
        GtkWidget* next = gtk_window_get_focus(GTK_WINDOW(window));
        if (!passed.insert(next).second) return; // around
        if (last) {
            const GdkRectangle from = place_in(window, last), to = place_in(window, next);
            const bool lower = to.y >= from.y + from.height, higher = to.y + to.height <= from.y;
            const bool to_left = to.x + to.width <= from.x, to_right = to.x >= from.x + from.width;
            EXPECT_FALSE((to_left && !lower) || (higher && !to_right)) << id_of(last) << " -> " << id_of(next);
        }
        last = next;
    }
    EXPECT_NE(last, nullptr) << id_of(window);
}

TEST_F(Definition, FitsASmallScreenAndIsReadInOrderByTab) {
    EXPECT_THAT(windows_, SizeIs(20));
    auto* pages = GTK_NOTEBOOK(gtk_builder_get_object(builder_.get(), "notebook_config"));
    for (GtkWidget* window : windows_) {
        SCOPED_TRACE(id_of(window));
        GtkRequisition minimum;
        gtk_widget_get_preferred_size(window, &minimum, nullptr);
        EXPECT_LE(minimum.width, 800);
        EXPECT_LE(minimum.height, 600);
        EXPECT_FALSE(gtk_widget_get_visible(window));

        gtk_widget_show(window);
        const int last_page = gtk_widget_is_ancestor(GTK_WIDGET(pages), window) ? gtk_notebook_get_n_pages(pages) : 1;
        for (int page = 0; page < last_page; ++page) {
            SCOPED_TRACE(page);
            gtk_notebook_set_current_page(pages, page);
            settle();
            expect_reading_order(window);
        }
    }
}

TEST_F(Definition, KeepsTheAnswersInSightWithALargeFont) {
    set_font(36);
    for (GtkWidget* window : windows_) {
        const std::unique_ptr<MGDialog> dialog(make_dialog(id_of(window).c_str()));
        gtk_window_resize(GTK_WINDOW(dialog->window), 1280, 1024);
        dialog->Show();
        settle();
        for (GObject* object : objects_) {
            const std::string id = id_of(object);
            if (!GTK_IS_BUTTON(object) || !gtk_widget_is_ancestor(GTK_WIDGET(object), window) ||
                (id.find("_ok") == id.npos && id.find("_cancel") == id.npos))
                continue;
            const GdkRectangle place = place_in(dialog->window, GTK_WIDGET(dialog->GetObject(id.c_str())));
            EXPECT_GE(std::min(place.x, place.y), 0) << id;
            EXPECT_LE(place.x + place.width, 1280) << id;
            EXPECT_LE(place.y + place.height, 1024) << id;
            EXPECT_GT(place.height, 60) << id; // the font is large indeed
        }
    }
    set_font(0);
}

void count_signal(GtkWidget*, int* count) {
    ++*count;
}
void keep_response(GtkDialog*, int response, int* kept) {
    *kept = response;
}

// The profile editor alone has no answer by Enter: too much is typed there before all of it is meant.
TEST_F(Definition, AnswersByEnterInEachEntryAndCancelsByEscape) {
    for (GtkWidget* window : windows_) {
        if (!GTK_IS_DIALOG(window)) continue;
        SCOPED_TRACE(id_of(window));
        g_signal_connect(window, "delete-event", G_CALLBACK(gtk_widget_hide_on_delete), nullptr);
        gtk_widget_show(window);
        settle();
        GtkWidget* answer = gtk_window_get_default_widget(GTK_WINDOW(window));
        EXPECT_EQ(answer == nullptr, id_of(window) == "dialog_config");
        int answers = 0, expected = 0;
        if (answer) g_signal_connect(answer, "activate", G_CALLBACK(count_signal), &answers);
        for (GObject* object : objects_) {
            if (!answer || !GTK_IS_ENTRY(object) || !gtk_widget_is_ancestor(GTK_WIDGET(object), window)) continue;
            gtk_widget_grab_focus(GTK_WIDGET(object));
            press_key(window, GDK_KEY_Return);
            EXPECT_EQ(answers, ++expected) << id_of(object);
        }
        int response = 0;
        g_signal_connect(window, "response", G_CALLBACK(keep_response), &response);
        press_key(window, GDK_KEY_Escape);
        EXPECT_EQ(response, GTK_RESPONSE_DELETE_EVENT);
    }
}

// One notch of the wheel towards the tail, over the innermost widget of the input, where the pointer would be.
void turn_wheel(GtkWidget* input) {
    GtkWidget* inner = GTK_IS_BIN(input) ? gtk_bin_get_child(GTK_BIN(input)) : input;
    GdkEvent* event = gdk_event_new(GDK_SCROLL);
    event->scroll.window = GDK_WINDOW(g_object_ref(gtk_widget_get_window(inner)));
    event->scroll.direction = GDK_SCROLL_DOWN;
    gdk_event_set_device(event, gdk_seat_get_pointer(gdk_display_get_default_seat(gdk_display_get_default())));
    gtk_propagate_event(inner, event);
    gdk_event_free(event);
}

TEST(OpenWindow, ChangesAnInputByWheelOnlyWithTheFocusAndCountsWhatIsTyped) {
    const std::unique_ptr<MGDialog> dialog(make_dialog("dialog_config"));
    gtk_window_resize(GTK_WINDOW(dialog->window), 700, 300);
    dialog->Show();
    gtk_notebook_set_current_page(GTK_NOTEBOOK(dialog->GetObject("notebook_config")), 1);
    settle();
    auto* spin = GTK_SPIN_BUTTON(dialog->GetObject("spin_tls_limit_auth"));
    auto* combo = GTK_COMBO_BOX(dialog->GetObject("combo_sub_dir"));
    auto* page = gtk_scrolled_window_get_vadjustment(GTK_SCROLLED_WINDOW(dialog->GetObject("scrolled_extra")));
    for (const char* row : {"0", "1"}) dialog->ComboBoxTextAppend("combo_sub_dir", row);
    gtk_combo_box_set_active(combo, 0);
    gtk_spin_button_set_value(spin, 5);
    gtk_window_set_focus(GTK_WINDOW(dialog->window), nullptr);
    for (GtkWidget* input : {GTK_WIDGET(spin), GTK_WIDGET(combo)}) {
        const double before = gtk_adjustment_get_value(page);
        turn_wheel(input);
        EXPECT_GT(gtk_adjustment_get_value(page), before);
    }
    EXPECT_EQ(gtk_spin_button_get_value(spin), 5);
    EXPECT_EQ(gtk_combo_box_get_active(combo), 0);

    gtk_widget_child_focus(GTK_WIDGET(combo), GTK_DIR_TAB_FORWARD);
    turn_wheel(GTK_WIDGET(combo));
    EXPECT_EQ(gtk_combo_box_get_active(combo), 1);
    gtk_widget_grab_focus(GTK_WIDGET(spin));
    turn_wheel(GTK_WIDGET(spin));
    EXPECT_EQ(gtk_spin_button_get_value(spin), 4);
    gtk_entry_set_text(GTK_ENTRY(spin), "77");
    EXPECT_EQ(dialog->SpinGet("adjustment_tls_limit_auth"), 77);
}

TEST(OpenWindow, IsWorkedByKeysAlone) {
    const std::unique_ptr<MGDialog> dialog(make_dialog("dialog_config"));
    dialog->Show();
    auto* pages = GTK_NOTEBOOK(dialog->GetObject("notebook_config"));
    const auto focus = [&] { return id_of(gtk_window_get_focus(GTK_WINDOW(dialog->window))); };
    const auto is_dimmed = [&](const char* label) {
        return !gtk_widget_get_sensitive(GTK_WIDGET(dialog->GetObject(label)));
    };

    // The mode that is chosen lies on a page behind.
    gtk_notebook_set_current_page(pages, gtk_notebook_get_n_pages(pages) - 1);
    settle();
    gtk_widget_grab_focus(GTK_WIDGET(pages));
    gtk_widget_child_focus(dialog->window, GTK_DIR_TAB_FORWARD);
    EXPECT_EQ(focus(), "radio_init_fc");
    dialog->SetSensitive("entry_fc_ip", false);
    EXPECT_TRUE(is_dimmed("label_fc_ip"));
    EXPECT_FALSE(is_dimmed("label_fs_ip"));
    dialog->SetSensitive("spin_time_hour", false);
    EXPECT_TRUE(is_dimmed("label_time_hour_unit"));

    gtk_notebook_set_current_page(pages, 0);
    settle();
    dialog->SpinSet("adjustment_size_log", 5);
    gtk_widget_grab_focus(GTK_WIDGET(dialog->GetObject("spin_size_log")));
    press_key(dialog->window, GDK_KEY_Page_Down, GDK_CONTROL_MASK);
    EXPECT_EQ(gtk_notebook_get_current_page(pages), 1);
    EXPECT_EQ(dialog->SpinGet("adjustment_size_log"), 5);

    dialog->ListStoreAppend(GTK_LIST_STORE(dialog->GetObject("active_list_store")));
    gtk_scrolled_window_set_policy(GTK_SCROLLED_WINDOW(dialog->GetObject("scrolled_init")), GTK_POLICY_ALWAYS,
                                   GTK_POLICY_AUTOMATIC);
    for (int page : {2, 3, 4}) { // the list takes the focus on its page
        press_key(dialog->window, GDK_KEY_Page_Down, GDK_CONTROL_MASK);
        EXPECT_EQ(gtk_notebook_get_current_page(pages), page) << focus();
    }
}

} // namespace
