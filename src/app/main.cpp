// The process: reads what is on disk, shows the list of profiles and leaves the rest to the handlers.
#include "app/log.h"
#include "app/mg_context.h"
#include "app/mg_err.h"
#include "config/master_file.h"
#include "config/profile_file.h"
#include "config/recovery.h"
#include "dialog/make_dialog.h"
#include "dialog/mg_dialog.h"
#include "dialog/open_dialogs.h"
#include "editor/histories.h"
#include "editor/profile_list.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <gtk/gtk.h>
#include <memory>

using namespace vorma;

namespace {

// Runs a reading, and lets `advise` complete what it throws.
template <class Read, class Advise>
void reading(Read&& read, Advise&& advise) {
    try {
        read();
    } catch (MGErr& err) {
        advise(err);
        throw;
    }
}

// Reads the master file and the file of every profile, active or not.
void read_configuration() {
    if (!find_config_file(Context)) return;
    reading([] { read_config_file(Context); }, [](MGErr& err) { advise_on_config_file(err, *Context); });
    const int count = static_cast<int>(Context->profiles.size());
    for (int index = 0; index < count; ++index)
        reading([&] { read_profile_file(Context, index); },
                [&](MGErr& err) { advise_on_profile_file(err, *Context, index); });
}

// Tells the terminal what keeps the program from showing any window: in Russian where the locale's charset has the
// letters, else in English, which every charset has.
void tell(const char* russian, const char* english) {
    const char* charset = nullptr;
    g_get_charset(&charset);
    char* converted = g_convert(russian, -1, charset, "UTF-8", nullptr, nullptr, nullptr);
    std::fprintf(stderr, "vormaqscfg: %s\n", converted ? converted : english);
    g_free(converted);
}

// From an empty context to the end of the main loop.
void run_editor() {
    init_vorma_catalogs(Context, "vormaqscfg.log");
    LogFileGlobal.SetLogFile(Context->log_file.c_str());
    read_configuration();
    init_globsl_combo_box(Context);
    init_profile_dialog();

    ProfileDialog->WindowSetFileIcon("/opt/selunara/vormaqs/icons/vormaqscfg.png");
    ProfileDialog->SetLabel("lable_profile_base_dir", Context->config_dir.c_str());
    ProfileDialog->WindowSetName("Конфигурационная программа Резервного копирования");
    ProfileDialog->Show();
    gtk_main();
}

} // namespace

int main(int argc, char** argv) {
    std::signal(SIGPIPE, SIG_IGN);
    const auto context = std::make_unique<MGContext>();
    Context = context.get();
    if (!gtk_init_check(&argc, &argv)) {
        tell("графический дисплей недоступен: запустите программу в графическом сеансе или задайте переменную DISPLAY",
             "there is no graphical display: start the program in a graphical session, or set the variable DISPLAY");
        return EXIT_FAILURE;
    }
    const std::unique_ptr<MGDialog> window(make_dialog("window_profile"));
    ProfileDialog = window.get();
    if (!ProfileDialog->window) {
        tell("описание главного окна не загружено, программа собрана неправильно",
             "the main window's definition could not be loaded, the program was built wrongly");
    } else {
        try {
            at_edge("main", run_editor);
        } catch (MGErr& err) {
            show_error(ProfileDialog, err);
        }
    }
    // A start that failed was told in a box and in the log; the program itself ended in order.
    return EXIT_SUCCESS;
}
