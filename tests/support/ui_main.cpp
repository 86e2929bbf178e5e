// Runs the tests of a program that shows windows: starts the toolkit, whose warnings fail tests, then GoogleTest.
#include "support/ui_script.h"

#include <gtest/gtest.h>
#include <gtk/gtk.h>

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    gtk_init(&argc, &argv);
    watch_toolkit_messages();
    return RUN_ALL_TESTS();
}
