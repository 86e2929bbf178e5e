// The master file's tables, and the reserve copy that all configuration files share.
#include "config/master_file.h"

#include "app/mg_context.h"
#include "app/mg_err.h"
#include "config/file_checks.h"
#include "config/mg_libxml.h"
#include "config/xml_tables.h"
#include "runtime/mg_file.h"

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

} // namespace

void read_config_file(MGContext* context) {
    at_edge("read_config_file", [&] {
        MGErr err;
        err.mess_1 = "Ошибка загрузки конфигурационного файла";
        err.func_1 = "read_config_file";
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

        make_reserve_copy(context->config_file);
        xml.SaveFile(context->config_file.c_str());
    });
}

void make_reserve_copy(const std::string& file) {
    at_edge("make_reserve_copy", [&] {
        if (MGFile::IsFile(file.c_str())) MGFile::CopyFile(file, file + "~");
    });
}
