// Reads and writes a profile's file, each by a walk over its elements.
#include "config/profile_file.h"

#include "app/mg_context.h"
#include "app/mg_err.h"
#include "config/file_checks.h"
#include "config/master_file.h"
#include "config/mg_libxml.h"
#include "config/profile_tables.h"
#include "config/xml_tables.h"

using namespace vorma;

namespace {

constexpr const char* MARK_VORMA_PROFILE = "VORQSPRF";

// The two directions of the walk over a profile's elements.
struct Reading {
    const MGLibxml& xml;
    MGErr& err; // what the count checks complete

    const xmlNode* element(const xmlNode* parent, const char* name) const { return xml.GetFirstChildren(parent, name); }

    template <class Record, class Table>
    void attrs(const xmlNode* node, Record& record, const Table& table) const {
        read_attrs(xml, node, record, table);
    }

    template <class Row, class WalkRow>
    void rows(const xmlNode* parent, const char* list_name, const char* row_name, std::vector<Row>& rows,
              WalkRow&& walk_row) const {
        const xmlNode* list = element(parent, list_name);
        read_rows(xml, list, row_name, xml.GetNumberProp(list, "quantity"), err, rows, walk_row);
    }
};

struct Writing {
    MGLibxml& xml;

    xmlNode* element(xmlNode* parent, const char* name) const { return xml.AddChildToNode(parent, name); }

    template <class Record, class Table>
    void attrs(xmlNode* node, const Record& record, const Table& table) const {
        write_attrs(xml, node, record, table);
    }

    template <class Row, class WalkRow>
    void rows(xmlNode* parent, const char* list_name, const char* row_name, const std::vector<Row>& rows,
              WalkRow&& walk_row) const {
        write_rows(xml, element(parent, list_name), row_name, rows, walk_row);
    }
};

// The errors of either reader bear the name of the one that the system knows.
void read_into(MGConfig& config, const MGContext& context, const std::string& id, const std::string& file) {
    MGErr err = error_of("read_profile_file", "Ошибка загрузки конфигурационных параметров из файла с данными профиля");
    err.opt_param = file;

    const MGLibxml xml(file.c_str());
    const xmlNode* root = xml.GetRoot();
    if_root_not_eq_name(err, xml.GetName(root), "profile");
    if_version_not_eq_value(err, xml.GetNumberProp(root, "version"), context.version, "profile");
    if_release_not_eq_value(err, xml.GetNumberProp(root, "release"), context.release, "profile");
    if_mask_not_eq_value(err, xml.GetStringProp(root, "mark"), MARK_VORMA_PROFILE, "MARK_VORMA_PROFILE",
                         "Резервного копирования");
    if_id_not_eq_value(err, xml.GetStringProp(root, "id"), id);

    const Reading reading{xml, err};
    ProfileWalk<Reading>{reading}.profile(root, config);
}

} // namespace

std::string profile_file_name(const MGContext& context, const MGProfile& profile) {
    return at_edge("profile_file_name", [&] { return context.config_dir + "/" + profile.id + ".xml"; });
}

MGConfig read_profile(const MGContext& context, const std::string& id, const std::string& file) {
    return at_edge("read_profile", [&] {
        MGConfig config;
        read_into(config, context, id, file);
        return config;
    });
}

void read_profile_file(MGContext* context, int index) {
    at_edge("read_profile_file", [&] {
        MGProfile& profile = context->profiles.at(static_cast<size_t>(index));
        read_into(profile.config, *context, profile.id, profile_file_name(*context, profile));
    });
}

void write_profile_file(MGContext* context, int index) {
    at_edge("write_profile_file", [&] {
        const MGProfile& profile = context->profiles.at(static_cast<size_t>(index));
        MGLibxml xml;
        xml.AddDocComment("Конфигурационные параметры профиля программы Резервного копирования.");
        xmlNode* root = xml.AddDocRoot("profile");
        xml.SetNumberProp(root, "version", context->version);
        xml.SetNumberProp(root, "release", context->release);
        xml.SetTextProp(root, "mark", MARK_VORMA_PROFILE);
        xml.SetTextProp(root, "id", profile.id.c_str());
        const Writing writing{xml};
        ProfileWalk<Writing>{writing}.profile(root, profile.config);

        save_after_reserve_copy(xml, profile_file_name(*context, profile));
    });
}
