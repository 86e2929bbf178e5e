// Runs the tests of a program that shows windows: starts the toolkit, whose warnings fail tests, then GoogleTest.
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

namespace {

GLogWriterOutput write_message(GLogLevelFlags level, const GLogField* fields, gsize count, gpointer) {
    if (!(level & (G_LOG_LEVEL_WARNING | G_LOG_LEVEL_CRITICAL | G_LOG_LEVEL_ERROR)))
        return g_log_writer_default(level, fields, count, nullptr);
    char* text = g_log_writer_format_fields(level, fields, count, FALSE);
    ADD_FAILURE() << "The toolkit says: " << text;
    g_free(text);
    return G_LOG_WRITER_HANDLED;
}

} // namespace

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    gtk_init(&argc, &argv);
    g_log_set_writer_func(write_message, nullptr, nullptr);
    return RUN_ALL_TESTS();
}
