// Measures the profile editor while the site knows 0 to 100,000 addresses, in processor time: from the call to the
// first drawn frame, the pop-up of a drop-down list, what typing in its entry offers, the closing. bench_opening, on a
// display; fails where a step grows faster than the addresses do.
#include "app/mg_context.h"
#include "dialog/make_dialog.h"
#include "dialog/open_dialogs.h"
#include "editor/histories.h"
#include "editor/profile_editor.h"
#include "editor/profile_list.h"
#include "measure.h"

#include <string>

namespace {

// Each step's times, one a repetition.
struct Times {
    std::vector<double> frame, pop_up, narrow, close;
};

Times times;
double begin = 0;

void add(std::vector<double>& list) {
    list.push_back(bench::processor_time() - begin);
}

void settle() {
    while (gtk_events_pending()) gtk_main_iteration();
}

// As a window manager would; without one the toolkit gathers what it would offer, but shows none of it.
void give_focus(GtkWidget* entry) {
    gtk_widget_grab_focus(entry);
    GdkEvent* focus = gdk_event_new(GDK_FOCUS_CHANGE);
    focus->focus_change.window = GDK_WINDOW(g_object_ref(gtk_widget_get_window(entry)));
    focus->focus_change.in = TRUE;
    gtk_widget_send_focus_change(entry, focus);
    gdk_event_free(focus);
}

// Runs in the dialog's own loop once it is drawn.
gboolean use(gpointer) {
    GtkComboBox* combo = GTK_COMBO_BOX(ConfigDialog->GetObject("combo_client_send_ip"));
    ConfigDialog->SetFocusToProblemWidget("entry_client_recv_ip"); // shows its page
    settle();
    begin = bench::processor_time();
    gtk_combo_box_popup(combo);
    settle();
    add(times.pop_up);
    gtk_combo_box_popdown(combo);
    GtkWidget* entry = gtk_bin_get_child(GTK_BIN(combo));
    give_focus(entry);
    settle();

    begin = bench::processor_time();
    gtk_editable_delete_text(GTK_EDITABLE(entry), 0, -1);
    int end = 0;
    gtk_editable_insert_text(GTK_EDITABLE(entry), ".1", -1, &end);
    settle();
    add(times.narrow);
    begin = bench::processor_time();
    gtk_dialog_response(GTK_DIALOG(ConfigDialog->window), GTK_RESPONSE_CANCEL);
    return G_SOURCE_REMOVE;
}

gboolean on_draw(GtkWidget* window, cairo_t*, gpointer) {
    add(times.frame);
    g_signal_handlers_disconnect_by_func(window, reinterpret_cast<gpointer>(on_draw), nullptr);
    g_idle_add_full(G_PRIORITY_LOW, use, nullptr, nullptr);
    return FALSE;
}

// Runs inside the dialog's own loop, before its first frame.
gboolean watch(gpointer) {
    g_signal_connect_after(ConfigDialog->window, "draw", G_CALLBACK(on_draw), nullptr);
    return G_SOURCE_REMOVE;
}

void know(int addresses) {
    History known;
    for (int i = 0; i < addresses; ++i)
        known.push_back("10." + std::to_string(i >> 16) + "." + std::to_string(i >> 8 & 255) + "." +
                        std::to_string(i & 255));
    for (History* history : {&init_recv_ip, &init_send_ip, &init_send_domen}) {
        history->clear();
        add_vector_to_vector(known, *history);
    }
}

} // namespace

int main(int argc, char** argv) {
    gtk_init(&argc, &argv);
    Context = new MGContext;
    init_vorma_catalogs(Context, "bench.log");
    ProfileDialog = make_dialog("window_profile");
    init_profile_dialog();
    Context->profiles[0].config.client_radio = true;
    ProfileDialog->Show();
    GtkTreeView* view = GTK_TREE_VIEW(ProfileDialog->GetObject("profile_view"));
    settle();

    std::vector<double> gather, load, frame, pop_up, narrow, close;
    for (const int size : bench::sizes) {
        begin = bench::processor_time();
        know(size);
        add(gather);
        times = {};
        std::vector<double> loads;
        for (int i = 0; i < 5; ++i) {
            begin = bench::processor_time();
            MGDialog* dialog = make_dialog("dialog_config");
            add(loads);
            delete dialog;

            begin = bench::processor_time();
            g_idle_add_full(G_PRIORITY_HIGH, watch, nullptr, nullptr);
            profile_configure(view);
            settle();
            add(times.close);
        }
        load.push_back(bench::median(loads));
        frame.push_back(bench::median(times.frame));
        pop_up.push_back(bench::median(times.pop_up));
        narrow.push_back(bench::median(times.narrow));
        close.push_back(bench::median(times.close));
    }
    bench::print_head("known addresses");
    bool fits = bench::print_growth("three histories gathered", gather);
    fits &= bench::print_growth("profile editor to its first frame", frame);
    fits &= bench::print_growth("of it, the definition loaded", load);
    fits &= bench::print_growth("drop-down list popped up", pop_up);
    fits &= bench::print_growth("rows that contain what is typed", narrow);
    fits &= bench::print_growth("profile editor closed", close);
    delete ProfileDialog;
    delete Context;
    return fits ? 0 : 1;
}
