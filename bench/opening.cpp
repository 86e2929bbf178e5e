// Times the opening of the profile editor, from the call to its first drawn frame: ten openings, their median, and
// where the time goes. bench_opening, on a display.
#include "app/mg_context.h"
#include "dialog/make_dialog.h"
#include "dialog/open_dialogs.h"
#include "editor/histories.h"
#include "editor/profile_editor.h"
#include "editor/profile_list.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

Clock::time_point begin;
std::vector<double> shown;    // until the dialog's own loop runs
std::vector<double> openings; // until its first frame is drawn

double since_begin() {
    return Milliseconds(Clock::now() - begin).count();
}

gboolean on_draw(GtkWidget* window, cairo_t*, gpointer) {
    openings.push_back(since_begin());
    g_signal_handlers_disconnect_by_func(window, reinterpret_cast<gpointer>(on_draw), nullptr);
    gtk_dialog_response(GTK_DIALOG(window), GTK_RESPONSE_CANCEL);
    return FALSE;
}

// Runs inside the dialog's own loop, before its first frame.
gboolean watch(gpointer) {
    shown.push_back(since_begin());
    g_signal_connect_after(ConfigDialog->window, "draw", G_CALLBACK(on_draw), nullptr);
    return G_SOURCE_REMOVE;
}

double median(std::vector<double> times) {
    std::nth_element(times.begin(), times.begin() + static_cast<long>(times.size() / 2), times.end());
    return times[times.size() / 2];
}

} // namespace

int main(int argc, char** argv) {
    gtk_init(&argc, &argv);
    Context = new MGContext;
    init_vorma_catalogs(Context, "bench.log");
    ProfileDialog = make_dialog("window_profile");
    init_globsl_combo_box(Context);
    init_profile_dialog();
    ProfileDialog->Show();
    GtkTreeView* view = GTK_TREE_VIEW(ProfileDialog->GetObject("profile_view"));
    while (gtk_events_pending()) gtk_main_iteration();

    std::vector<double> loads;
    for (int i = 0; i < 10; ++i) {
        begin = Clock::now();
        MGDialog* dialog = make_dialog("dialog_config");
        loads.push_back(since_begin());
        delete dialog;

        begin = Clock::now();
        g_idle_add_full(G_PRIORITY_HIGH, watch, nullptr, nullptr);
        profile_configure(view);
    }
    std::printf("profile editor to first frame %7.1f ms\n", median(openings));
    std::printf("of it, until it is shown      %7.1f ms\n", median(shown));
    std::printf("of that, until it is loaded   %7.1f ms\n", median(loads));
    delete ProfileDialog;
    delete Context;
}
