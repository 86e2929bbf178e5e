// Runs the tests of a program that shows windows: starts the toolkit, whose warnings fail tests, then GoogleTest.
#include "support/ui_script.h"

#include <gtest/gtest.h>
#include <gtk/gtk.h>

// What the leak sanitizer is told: the libraries below keep caches until the end of the process, and only full stacks
// tell their memory from what our code forgets to give back.
extern "C" const char* __asan_default_options();
extern "C" const char* __asan_default_options() {
    return "fast_unwind_on_malloc=0:malloc_context_size=10";
}
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libfontconfig\nleak:g_content_type_guess\nleak:call_init\n";
}

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    gtk_init(&argc, &argv);
    watch_toolkit_messages();
    return RUN_ALL_TESTS();
}
