#include "runtime/mg_file.h"
#include "support/faults.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

namespace {

struct World {
    TempDir dir;
    MGFile file;
    const std::string a = dir.path("a"), b = dir.path("b");
    std::string text;
};

TEST(Faults, LeaveNothingBehind) {
    const struct {
        const char* name;
        void (*run)(World&);
    } rows[] = {
        {"ReadFileString", [](World& w) { w.file.ReadFileString(w.a, w.text); }},
        {"CopyLongFile", [](World& w) { w.file.CopyLongFile(w.a, w.b); }},
    };
    for (const auto& row : rows)
        for_each_fault(
            row.name,
            [] {
                auto w = std::make_unique<World>();
                w->dir.write("a", "content");
                return w;
            },
            [&](auto& w) { row.run(*w); });
}

} // namespace
