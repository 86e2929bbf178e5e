#include "app/mg_context.h"
#include "config/admit_lookup.h"
#include "config/master_file.h"
#include "config/mg_libxml.h"
#include "config/profile_file.h"
#include "config/recovery.h"
#include "config/scrambling.h"
#include "config/tokens.h"
#include "config/xml_tables.h"
#include "support/faults.h"
#include "support/temp_dir.h"

#include <gmock/gmock.h>

#include <dlfcn.h>

// libxml2 2.9 itself loses an output buffer if this, the last step of its making, lacks memory: here it never does.
extern "C" void* xmlBufCreateSize(size_t size) {
    const faults::Pause pause;
    return reinterpret_cast<void* (*)(size_t)>(dlsym(RTLD_NEXT, "xmlBufCreateSize"))(size);
}

namespace {

struct World {
    TempDir dir;
    MGContext context;
    const std::string master = dir.path("vormaqs_config.xml"), profile = dir.path("one.xml");
    std::string text, odd = "б\xFF\x01 and all of this", document = "<a n='1'>&amp;<b t='&lt;'/></a>";
    MGErr err;
    std::string mode = "REPLACE", type = "CONSOLE";
    unsigned index = 0;

    World() {
        context.config_dir = dir.path();
        context.config_file = master;
        context.profiles.resize(1);
        context.profiles[0].id = "one";
        context.profiles[0].config.admit.resize(1);
    }

    // The contents of the master file and of the profile's.
    std::pair<std::string, std::string> saved() {
        write_config_file(&context);
        write_profile_file(&context, 0);
        return {dir.read("vormaqs_config.xml"), dir.read("one.xml")};
    }
    // To what needs more room.
    void change() {
        context.profiles[0].name = std::string(5000, 'n');
        context.profiles[0].config.log_catalog = std::string(9000, 'c');
    }
};

std::pair<std::string, std::string> before, after; // the change

struct ChangedWorld : World {
    ChangedWorld() {
        dir.write("vormaqs_config.xml", before.first);
        dir.write("one.xml", before.second);
        change();
    }
};

void build_and_read(World& w) {
    MGLibxml xml;
    xml.AddDocComment("comment");
    xmlNode* node = xml.AddChildToNode(xml.AddDocRoot("a"), "b");
    xml.SetTextProp(node, "t", "& and <");
    xml.SetNumberProp(node, "n", -1);
    xml.SetStringContentToNode(node, w.mode);
    xml.SetLenContentToNode(node, "abc", 2);
    xml.SaveString(w.text);
    const MGLibxml again(w.text.c_str(), 0);
    node = again.GetFirstChildren(again.GetRoot(), "b");
    EXPECT_EQ(*again.GetTextProp(node, "n"), '-');
    EXPECT_EQ(again.GetStringProp(node, "t") + again.GetStringContentFromNode(node), "& and <ab");
}

} // namespace

TEST(ConfigFaults, LeaveFilesWholeAndNothingElse) {
    World example;
    before = example.saved();
    example.change();
    after = example.saved();
    const Fallible<ChangedWorld> rows[] = {
        OF(MGLibxml(w.master.c_str())),
        OF(MGLibxml(w.document.c_str(), 0)),
        OF(build_and_read(w)),
        OF(read_config_file(&w.context)),
        OF(read_profile_file(&w.context, 0)),
        OF(write_config_file(&w.context)),
        OF(write_profile_file(&w.context, 0)),
        OF(make_reserve_copy(w.master)),
        OF(advise_on_config_file(w.err, w.context)),
        OF(advise_on_profile_file(w.err, w.context, 0)),
        OF(storable_text(w.odd)),
        OF(decode_string(code_string(w.odd))),
        OF(find_subject_in_admit(w.context.profiles[0].config.admit, w.document, w.index)),
        OF(get_same_file_txt_mode(w.mode), get_action_txt_type(w.type)),
    };
    for_each_fault(rows, [](World& w, bool) {
        MGLibxml(); // what of libxml2 was left half made goes with the next document
        EXPECT_THAT(w.dir.read("vormaqs_config.xml"), testing::AnyOf(before.first, after.first));
        EXPECT_THAT(w.dir.read("one.xml"), testing::AnyOf(before.second, after.second));
    });
}
