// The catalog tree and the master file's place in it.
#include "app/mg_context.h"

#include "app/mg_err.h"
#include "runtime/descriptor_io.h"
#include "runtime/mg_file.h"

using namespace vorma;

MGContext* Context = nullptr;

void init_vorma_catalogs(MGContext* context, const char* log_file_name) {
    at_edge("init_vorma_catalogs", [&] {
        MGFile::GetEnv("HOME", context->base_dir);
        context->base_dir += "/.selunara/vormaqs";

        const struct {
            std::string MGContext::*field;
            const char* tail;
        } catalogs[] = {
            {&MGContext::base_dir, ""},
            {&MGContext::config_dir, "/config"},
            {&MGContext::signal_dir, "/signal"},
            {&MGContext::log_dir, "/log"},
            {&MGContext::result_dir, "/result"},
            {&MGContext::archive_in_dir, "/archive/in"},
            {&MGContext::archive_out_dir, "/archive/out"},
            {&MGContext::error_in_dir, "/error/in"},
            {&MGContext::tmp_dir, "/tmp"},
        };
        for (const auto& catalog : catalogs) {
            std::string path = context->base_dir + catalog.tail;
            context->*catalog.field = path;
            MGFile::IfNotExistMakeDirRecursive(path);
        }
        context->log_file = context->log_dir + "/" + log_file_name;
        context->editor_path = MGContext().editor_path;
    });
}

bool find_config_file(MGContext* context) {
    return at_edge("find_config_file", [&] {
        context->config_file = context->config_dir + "/vormaqs_config.xml";
        MGErr err = error_of("find_config_file", "Ошибка поиска конфигурационного файла");
        const bool found = is_surely_file(err, context->config_file);
        if (found) context->config_found = true;
        return found;
    });
}
