#include "app/mg_context.h"
#include "config/master_file.h"
#include "config/mg_libxml.h"
#include "config/profile_file.h"
#include "config/recovery.h"
#include "config/xml_tables.h"
#include "support/faults.h"
#include "support/temp_dir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <dlfcn.h>
#include <memory>
#include <string>

// libxml2 2.9 itself loses an output buffer if this, the last step of its making, lacks memory: here it never does.
extern "C" void* xmlBufCreateSize(size_t size) {
    const faults::Pause pause;
    return reinterpret_cast<void* (*)(size_t)>(dlsym(RTLD_NEXT, "xmlBufCreateSize"))(size);
}

namespace {

// A home with one profile.
struct World {
    TempDir dir;
    MGContext context;
    const std::string master = dir.path("vormaqs_config.xml"), profile = dir.path("one.xml");
    std::string text, odd = "б\xFF\x01 and all of this", document = "<a n='1'>&amp;<b t='&lt;'/></a>";
    MGErr err;

    World() {
        context.config_dir = dir.path();
        context.config_file = master;
        context.profiles.resize(1);
        context.profiles[0].id = "one";
        context.profiles[0].config.admit.resize(1);
    }
};

// The contents of the two files before and after a save that needs more room.
struct Contents {
    std::string master, profile;
};

Contents saved(World& w) {
    write_config_file(&w.context);
    write_profile_file(&w.context, 0);
    return {w.dir.read("vormaqs_config.xml"), w.dir.read("one.xml")};
}

void change(World& w) {
    w.context.profiles[0].name = std::string(5000, 'n');
    w.context.profiles[0].config.log_catalog = std::string(9000, 'c');
}

} // namespace

TEST(ConfigFaults, LeaveFilesWholeAndNothingElse) {
    const struct {
        const char* name;
        void (*run)(World&);
    } rows[] = {
        {"MGLibxml(file)", [](World& w) { MGLibxml(w.master.c_str()); }},
        {"MGLibxml(text)", [](World& w) { MGLibxml(w.document.c_str(), 0); }},
        {"building and reading",
         [](World& w) {
             MGLibxml xml;
             xml.AddDocComment("comment");
             xmlNode* node = xml.AddChildToNode(xml.AddDocRoot("a"), "b");
             xml.SetTextProp(node, "t", "& and <");
             xml.SetNumberProp(node, "n", -1);
             xml.SetContentToNode(node, "ab");
             xml.SaveString(w.text);
             const MGLibxml again(w.text.c_str(), 0);
             node = again.GetFirstChildren(again.GetRoot(), "b");
             EXPECT_EQ(again.GetStringProp(node, "t") + again.GetStringContentFromNode(node), "& and <ab");
         }},
        {"read_config_file", [](World& w) { read_config_file(&w.context); }},
        {"read_profile_file", [](World& w) { read_profile_file(&w.context, 0); }},
        {"write_config_file", [](World& w) { write_config_file(&w.context); }},
        {"write_profile_file", [](World& w) { write_profile_file(&w.context, 0); }},
        {"make_reserve_copy", [](World& w) { make_reserve_copy(w.master); }},
        {"advise_on_config_file", [](World& w) { advise_on_config_file(w.err, w.context); }},
        {"advise_on_profile_file", [](World& w) { advise_on_profile_file(w.err, w.context, 0); }},
        {"storable_text", [](World& w) { storable_text(w.odd); }},
    };
    World example;
    const Contents before = saved(example);
    change(example);
    const Contents after = saved(example);
    const auto setup = [&] {
        auto w = std::make_unique<World>();
        w->dir.write("vormaqs_config.xml", before.master);
        w->dir.write("one.xml", before.profile);
        change(*w);
        return w;
    };
    const auto check = [&](auto& w, bool) {
        MGLibxml(); // what of libxml2 was left half made goes with the next document
        EXPECT_THAT(w->dir.read("vormaqs_config.xml"), testing::AnyOf(before.master, after.master));
        EXPECT_THAT(w->dir.read("one.xml"), testing::AnyOf(before.profile, after.profile));
    };
    for (const auto& row : rows)
        for_each_fault(
            row.name, setup, [&](auto& w) { row.run(*w); }, check);
}
