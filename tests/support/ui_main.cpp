// Runs the tests of a program that shows windows: starts the toolkit, whose warnings fail tests, then GoogleTest.
#include "support/ui_script.h"

#include <gtest/gtest.h>
#include <gtk/gtk.h>

// What the leak sanitizer is told: these keep caches until the end of the process, or lose rows of a file chooser that
// is closed while it reads its folder. Only full stacks tell their memory from what our code forgets to give back.
extern "C" const char* __asan_default_options();
extern "C" const char* __asan_default_options() {
    return "fast_unwind_on_malloc=0:malloc_context_size=14";
}
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libfontconfig\n"
           "leak:call_init\n"
           "leak:g_content_type_guess\n"
           "leak:g_utf8_collate_key_for_filename\n"
           "leak:g_hash_table_foreach\n";
}

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    gtk_init(&argc, &argv);
    watch_toolkit_messages();
    return RUN_ALL_TESTS();
}
