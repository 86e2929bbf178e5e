// The interface definition as a whole: it names only handlers that the program has, leaves no control without its
// handler and no input without a name for assistive technology, and every window fits a small screen.
#include <gmock/gmock.h>
#include <gtk/gtk.h>

#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace {

using testing::IsEmpty;
using testing::SizeIs;

struct Unref {
    void operator()(gpointer object) const { g_object_unref(object); }
};
struct CloseModule {
    void operator()(GModule* module) const { g_module_close(module); }
};

std::string id_of(GObject* object) {
    const char* id = GTK_IS_BUILDABLE(object) ? gtk_buildable_get_name(GTK_BUILDABLE(object)) : nullptr;
    return id ? id : G_OBJECT_TYPE_NAME(object);
}

class Definition : public testing::Test {
protected:
    void SetUp() override {
        builder_.reset(gtk_builder_new());
        GError* error = nullptr;
        ASSERT_TRUE(gtk_builder_add_from_resource(builder_.get(), "/selunara/vorma/vormacfg.glade", &error))
            << error->message;
        GSList* objects = gtk_builder_get_objects(builder_.get());
        for (GSList* item = objects; item; item = item->next) objects_.push_back(G_OBJECT(item->data));
        g_slist_free(objects);
        gtk_builder_connect_signals_full(builder_.get(), &Definition::collect, this);
    }
    void TearDown() override {
        for (GObject* object : objects_) {
            if (GTK_IS_WINDOW(object)) gtk_widget_destroy(GTK_WIDGET(object));
        }
    }

    static void collect(GtkBuilder*, GObject* object, const gchar* signal, const gchar* handler, GObject*,
                        GConnectFlags flags, gpointer self) {
        auto* definition = static_cast<Definition*>(self);
        definition->handlers_.insert(handler);
        definition->connected_[object].insert(signal);
        if (flags & G_CONNECT_SWAPPED) definition->swapped_.push_back(id_of(object) + " " + signal);
    }

    std::unique_ptr<GtkBuilder, Unref> builder_;
    std::vector<GObject*> objects_;
    std::set<std::string> handlers_;
    std::map<GObject*, std::set<std::string>> connected_; // the signals of each object that lead to a handler
    std::vector<std::string> swapped_;                    // signals whose handler would get its arguments exchanged
};

TEST_F(Definition, NamesOnlyHandlersThatTheProgramExports) {
    EXPECT_THAT(handlers_, SizeIs(108));
    EXPECT_THAT(swapped_, IsEmpty());
    std::unique_ptr<GModule, CloseModule> program(g_module_open(nullptr, G_MODULE_BIND_LAZY));
    for (const std::string& handler : handlers_) {
        gpointer symbol = nullptr;
        EXPECT_TRUE(g_module_symbol(program.get(), handler.c_str(), &symbol)) << handler;
    }
}

// The signal by which the user sets the object in motion; null for what has none of its own.
const char* acting_signal(GObject* object) {
    if (G_OBJECT_TYPE(object) == GTK_TYPE_BUTTON) return "clicked";
    if (GTK_IS_CELL_RENDERER_TOGGLE(object)) return "toggled";
    if (GTK_IS_MENU_ITEM(object) && !gtk_menu_item_get_submenu(GTK_MENU_ITEM(object))) return "activate";
    if (GTK_IS_ENTRY(object) && !GTK_IS_SPIN_BUTTON(object) &&
        gtk_entry_get_icon_storage_type(GTK_ENTRY(object), GTK_ENTRY_ICON_SECONDARY) != GTK_IMAGE_EMPTY)
        return "icon-press";
    return nullptr;
}

TEST_F(Definition, ConnectsEveryControlThatActs) {
    for (GObject* object : objects_) {
        if (const char* signal = acting_signal(object)) {
            EXPECT_TRUE(connected_[object].count(signal)) << id_of(object) << " " << signal;
        }
    }
}

// The texts that a screen reader says before the input, joined.
std::string spoken_label(GtkWidget* input) {
    std::unique_ptr<AtkRelationSet, Unref> relations(atk_object_ref_relation_set(gtk_widget_get_accessible(input)));
    AtkRelation* relation = atk_relation_set_get_relation_by_type(relations.get(), ATK_RELATION_LABELLED_BY);
    std::string text;
    if (!relation) return text;
    GPtrArray* targets = atk_relation_get_target(relation);
    for (guint i = 0; i < targets->len; i++) {
        const char* name = atk_object_get_name(ATK_OBJECT(targets->pdata[i]));
        if (name) text += name;
    }
    return text;
}

TEST_F(Definition, NamesEveryInputForAssistiveTechnology) {
    for (GObject* object : objects_) {
        if (GTK_IS_ENTRY(object) || GTK_IS_COMBO_BOX(object) || GTK_IS_TREE_VIEW(object)) {
            EXPECT_NE(spoken_label(GTK_WIDGET(object)), "") << id_of(object);
        }
    }
}

TEST_F(Definition, KeepsEveryWindowWithinASmallScreen) {
    std::vector<GtkWidget*> windows;
    for (GObject* object : objects_) {
        if (GTK_IS_WINDOW(object)) windows.push_back(GTK_WIDGET(object));
    }
    EXPECT_THAT(windows, SizeIs(20));
    for (GtkWidget* window : windows) {
        GtkRequisition minimum;
        gtk_widget_get_preferred_size(window, &minimum, nullptr);
        EXPECT_LE(minimum.width, 800) << id_of(G_OBJECT(window));
        EXPECT_LE(minimum.height, 600) << id_of(G_OBJECT(window));
        EXPECT_FALSE(gtk_widget_get_visible(window)) << id_of(G_OBJECT(window));
    }
}

} // namespace
