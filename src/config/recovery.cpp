// The advice, and the trial readings that it depends on.
#include "config/recovery.h"

#include "app/mg_context.h"
#include "app/mg_err.h"
#include "config/master_file.h"
#include "config/profile_file.h"

#include <cerrno>
#include <new>
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

// Whether the file itself may be whole: the system or want of memory kept it from us.
bool is_out_of_reach(const MGErr& err) {
    return err.err_code != 0 || err.err_description == std::bad_alloc().what();
}

// `otherwise` is what helps where there is no reserve copy that can be read. A name of a file ends its line: boxes cut
// the middle of long lines.
std::string advice(const MGErr& err, const std::string& file, bool has_reserve, const std::string& otherwise) {
    if (err.err_code == EACCES) return "Проверьте права доступа к файлу " + quoted(file) + ".";
    const bool missing = err.err_code == ENOENT;
    if (is_out_of_reach(err) && !missing)
        return "Файл " + quoted(file) +
               " сейчас недоступен, хотя сам, может быть, цел.\nУстраните названную выше причину (диск, сеть, нехватка "
               "памяти) и запустите программу снова. Файл не меняйте.";
    const std::string begin = missing ? "Файла " + quoted(file) + " нет" : "Файл " + quoted(file) + " прочесть нельзя";
    if (has_reserve)
        return begin + ", но цела его резервная копия\n" + quoted(file + "~") +
               "\nс содержимым до последнего сохранения.\n" +
               (missing ? "Скопируйте копию на его место" : "Переименуйте файл, скопируйте копию на его место") +
               " и запустите программу снова.";
    return begin + ", и резервной копии, которую можно прочесть, нет.\n" +
           (missing ? "Восстановите файл" : "Исправьте в нём названное выше место или восстановите файл") +
           " из своего архива.\n" + otherwise;
}

void advise(MGErr& err, const std::string& file, bool has_reserve, const std::string& otherwise) {
    if (err.GetDebugString().find(file) == std::string::npos) err.ext_3_param = file;
    const std::string added = advice(err, file, has_reserve, otherwise);
    if (!err.err_description.empty()) err.err_description += "\n";
    err.err_description += added;
}

} // namespace

void advise_on_config_file(MGErr& err, const MGContext& context) {
    at_edge("advise_on_config_file", [&] {
        MGContext trial;
        trial.config_file = context.config_file + "~";
        advise(err, context.config_file, can([&] { read_config_file(&trial); }),
               "Если взять его негде, программа и без него начнёт с одного профиля, а файлы остальных останутся на "
               "своих местах: повреждённый файл тогда переименуйте.");
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
