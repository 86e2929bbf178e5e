// The one road from the editor's memory to the disk.
#include "config/saving.h"

#include "app/mg_context.h"
#include "app/mg_err.h"
#include "config/master_file.h"
#include "config/profile_file.h"
#include "dialog/busy.h"
#include "dialog/make_dialog.h"
#include "runtime/mg_file.h"

using namespace vorma;

namespace {

bool last_save_failed = false;

// Runs a step whose failure is the user's to know; whether it succeeded.
template <class Step>
bool told_over(MGDialog* dialog, const char* function, Step&& step) {
    try {
        at_edge(function, step);
        return true;
    } catch (MGErr& err) {
        show_error(dialog, err);
        return false;
    }
}

} // namespace

void save_all_config_data(MGDialog* dialog) {
    last_save_failed = !told_over(dialog, "save_all_config_data", [] {
        const Busy busy;
        write_config_file(Context);
        const int count = static_cast<int>(Context->profiles.size());
        for (int index = 0; index < count; ++index) {
            Busy::step();
            write_profile_file(Context, index);
        }
    });
}

bool save_failed() {
    return last_save_failed;
}

void make_vorma_catalog(MGDialog* dialog, const std::string& path) {
    told_over(dialog, "make_vorma_catalog", [&] { MGFile::IfNotExistMakeDirRecursive(path); });
}
