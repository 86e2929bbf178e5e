// The master file's tables, and the reserve copy that all configuration files share.
#include "config/master_file.h"

#include "app/mg_context.h"
#include "app/mg_err.h"
#include "config/file_checks.h"
#include "config/mg_libxml.h"
#include "config/xml_tables.h"
#include "runtime/descriptor_io.h"
#include "runtime/mg_file.h"

using namespace vorma;

namespace {

constexpr const char* MARK_VORMA_CONFIG = "VORQSCFG";

constexpr XmlAttr<MGContext> root_attrs[] = {
    {"version", &MGContext::version},
    {"release", &MGContext::release},
};

constexpr XmlAttr<MGProfile> profile_attrs[] = {
    {"default", &MGProfile::is_default},
    {"name", &MGProfile::name},
    {"id", &MGProfile::id},
    {"active", &MGProfile::active},
};

constexpr XmlAttr<MGContext> editor_attrs[] = {
    {"path", &MGContext::editor_path},
};

// A file with passwords in it may be for its owner only.
void copy_mode(MGErr& err, const std::string& from, const std::string& to) {
    struct stat original, copy;
    if (stat(from.c_str(), &original) != 0 || stat(to.c_str(), &copy) != 0)
        fail_errno(err, "Ошибка получения сведений о файле", "stat");
    if (original.st_mode != copy.st_mode && chmod(to.c_str(), original.st_mode & 07777) != 0)
        fail_errno(err, "Ошибка установки прав доступа к файлу", "chmod");
}

// Undoes a save that failed half-way, as on a full disk. Otherwise the next save would take the stump for the earlier
// content and copy it over the only whole one. Where the content can't be written back, renaming needs no room.
void put_back(const std::string& file) {
    const std::string reserve = file + "~";
    std::string earlier, now;
    MGFile::ReadFileString(reserve, earlier);
    MGFile::ReadFileString(file, now);
    if (now == earlier) return;
    try {
        MGFile::CopyFile(reserve, file);
    } catch (const MGErr&) {
        MGFile::RenameFile(reserve.c_str(), file.c_str());
    }
}

} // namespace

void read_config_file(MGContext* context) {
    at_edge("read_config_file", [&] {
        MGErr err = error_of("read_config_file", "Ошибка загрузки конфигурационного файла");
        err.opt_param = context->config_file;

        const MGLibxml xml(context->config_file.c_str());
        const xmlNode* root = xml.GetRoot();
        if_root_not_eq_name(err, xml.GetName(root), "config");
        read_attrs(xml, root, *context, root_attrs);
        if_mask_not_eq_value(err, xml.GetStringProp(root, "mark"), MARK_VORMA_CONFIG, "MARK_VORMA_CONFIG",
                             "Резервного копирования");

        const xmlNode* profiles = xml.GetFirstChildren(root, "profiles");
        context->quantity = xml.GetNumberProp(profiles, "quantity");
        read_rows(xml, profiles, "profile", context->quantity, err, context->profiles,
                  [&](const xmlNode* node, MGProfile& profile) { read_attrs(xml, node, profile, profile_attrs); });

        const xmlNode* editor = xml.GetFirstChildren(xml.GetFirstChildren(root, "settings"), "editor");
        read_attrs(xml, editor, *context, editor_attrs);
    });
}

void write_config_file(MGContext* context) {
    at_edge("write_config_file", [&] {
        MGLibxml xml;
        xml.AddDocComment("Список конфигурационных профилей программы Резервного копирования.");
        xmlNode* root = xml.AddDocRoot("config");
        write_attrs(xml, root, *context, root_attrs);
        xml.SetTextProp(root, "mark", MARK_VORMA_CONFIG);

        context->quantity = static_cast<int32_t>(context->profiles.size());
        write_rows(xml, xml.AddChildToNode(root, "profiles"), "profile", context->profiles,
                   [&](xmlNode* node, const MGProfile& profile) { write_attrs(xml, node, profile, profile_attrs); });
        write_attrs(xml, xml.AddChildToNode(xml.AddChildToNode(root, "settings"), "editor"), *context, editor_attrs);

        save_after_reserve_copy(xml, context->config_file);
    });
}

void make_reserve_copy(const std::string& file) {
    at_edge("make_reserve_copy", [&] {
        MGErr err = error_of("make_reserve_copy", "Ошибка создания резервной копии файла");
        if (!is_surely_file(err, file)) return;
        const std::string reserve = file + "~";
        MGFile::CopyFile(file, reserve);
        err.str_param = file;
        err.opt_param = reserve;
        copy_mode(err, file, reserve);
    });
}

void save_after_reserve_copy(MGLibxml& xml, const std::string& file) {
    const bool existed = MGFile::IsFile(file.c_str());
    make_reserve_copy(file);
    try {
        xml.SaveFile(file.c_str());
    } catch (const MGErr&) {
        try {
            if (existed) put_back(file);
        } catch (const MGErr&) { // the first error says what is wrong
        }
        throw;
    }
}
