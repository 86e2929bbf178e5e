// Runs the tests of a program that shows windows: starts the toolkit, then GoogleTest.
#include <gtest/gtest.h>
#include <gtk/gtk.h>

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    gtk_init(&argc, &argv);
    return RUN_ALL_TESTS();
}
