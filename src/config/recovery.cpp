// The advice, and the trial readings that it depends on.
#include "config/recovery.h"

#include "app/mg_context.h"
#include "app/mg_err.h"
#include "config/master_file.h"
#include "config/profile_file.h"

#include <cerrno>
#include <string>

using namespace vorma;

namespace {

template <class Read>
bool can(Read&& read) {
    try {
        read();
        return true;
    } catch (const MGErr&) {
        return false;
    }
}

std::string quoted(const std::string& name) {
    return "«" + name + "»";
}

// `otherwise` is what helps where there is no reserve copy that can be read. A name of a file ends its line: boxes cut
// the middle of long lines.
void advise(MGErr& err, const std::string& file, bool has_reserve, const std::string& otherwise) {
    if (err.GetDebugString().find(file) == std::string::npos) err.ext_3_param = file;
    std::string& text = err.err_description;
    if (!text.empty()) text += "\n";
    const std::string reserve = quoted(file + "~");
    if (err.err_code == EACCES)
        text += "Проверьте права доступа к файлу " + quoted(file) + ".";
    else if (has_reserve)
        text +=
            "Файл " + quoted(file) + " прочесть нельзя, но цела его резервная копия\n" + reserve +
            "\nс содержимым до последнего сохранения.\nПереименуйте файл, скопируйте копию на его место и запустите "
            "программу снова.";
    else
        text += "Файл " + quoted(file) +
                " прочесть нельзя, и резервной копии, которую можно прочесть, нет.\n"
                "Восстановите файл из своего архива.\n" +
                otherwise;
}

} // namespace

void advise_on_config_file(MGErr& err, const MGContext& context) {
    at_edge("advise_on_config_file", [&] {
        MGContext trial;
        trial.config_file = context.config_file + "~";
        advise(err, context.config_file, can([&] { read_config_file(&trial); }),
               "Если взять его негде, переименуйте этот: программа начнёт с одного профиля, а файлы остальных "
               "останутся на своих местах.");
    });
}

void advise_on_profile_file(MGErr& err, const MGContext& context, int index) {
    at_edge("advise_on_profile_file", [&] {
        const MGProfile& profile = context.profiles.at(static_cast<size_t>(index));
        const std::string file = profile_file_name(context, profile);
        advise(err, file, can([&] { read_profile(context, profile.id, file + "~"); }),
               "Если взять его негде, уберите профиль из списка: удалите в файле\n" + quoted(context.config_file) +
                   "\nстроку «<profile … id=\"" + profile.id + "\" …/>», поставьте там quantity=\"" +
                   std::to_string(context.profiles.size() - 1) + "\" и запустите программу снова.");
    });
}
