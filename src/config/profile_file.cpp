// The order of a profile's file, walked once for reading and once for writing.
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

// The two directions of the walk below. Both can find or make an element, meet its attributes with a record, and meet
// the rows of a list with a vector: walk_row(node, row) goes on inside a row.
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

// What a direction walks over: an element with attributes only, a list of such rows, and the parts of the file that
// nest deeper. Node is a const pointer for reading; records are const for writing.
template <class Way>
struct Walk {
    const Way& way;

    template <class Node, class Record, class Table>
    void section(Node* parent, const char* name, Record& record, const Table& table) const {
        way.attrs(way.element(parent, name), record, table);
    }

    template <class Node, class Rows, class Table>
    void list(Node* parent, const char* list_name, const char* row_name, Rows& rows, const Table& table) const {
        way.rows(parent, list_name, row_name, rows, [&](Node* node, auto& row) { way.attrs(node, row, table); });
    }

    template <class Node, class Action>
    void action(Node* node, Action& action) const {
        way.attrs(node, action, action_attrs);
        section(node, "console", action.console, console_attrs);
        section(node, "send", action.send, send_attrs);
        section(node, "copy", action.copy, copy_attrs);
        section(node, "runprog", action.runprog, runprog_attrs);
        section(node, "exist", action.exist, exist_attrs);
    }

    template <class Node, class Allow>
    void allow(Node* node, Allow& allow) const {
        way.attrs(node, allow, allow_attrs);
        list(node, "fs_admit", "user", allow.admit, short_user_attrs);
        list(node, "fs_queue", "queue", allow.queue, queue_attrs);
    }

    // One side of a gateway: the device's attributes stand in the side's own element, its lists beside that.
    template <class Node, class Dev>
    void device(Node* root, Node* side, const char* adrs, const char* virt, Dev& dev) const {
        way.attrs(side, dev, device_attrs);
        list(root, adrs, "address", dev.adrs, address_attrs);
        list(root, virt, "address", dev.virt, short_address_attrs);
        way.attrs(side, dev, packet_attrs);
    }

    template <class Node, class Config>
    void gateways(Node* root, Config& config) const {
        Node* client = way.element(root, "init_gw_client");
        way.attrs(client, config, gw_client_mode_attrs);
        device(root, client, "gw_client_adrs", "gw_client_virtual", config.gw_client);
        way.attrs(client, config, gw_client_send_attrs);

        Node* server = way.element(root, "init_gw_server");
        way.attrs(server, config, gw_server_recv_attrs);
        list(root, "gw_admit", "user", config.gw_admit, short_user_attrs);
        device(root, server, "gw_server_adrs", "gw_server_virtual", config.gw_server);
    }

    // The whole file below its root.
    template <class Node, class Config>
    void profile(Node* root, Config& config) const {
        section(root, "settings", config, settings_attrs);
        section(root, "log", config, log_attrs);
        section(root, "error", config, error_attrs);
        section(root, "crypto", config, crypto_attrs);
        section(root, "file_param", config, file_param_attrs);
        section(root, "init_timer", config, timer_attrs);
        section(root, "init_file", config, file_attrs);
        section(root, "init_recv", config, recv_attrs);
        section(root, "init_modify", config, modify_attrs);
        way.rows(root, "actions", "record", config.actions, [&](Node* node, auto& row) { action(node, row); });
        section(root, "init_client", config, client_attrs);
        section(root, "init_server", config, server_attrs);
        list(root, "admit", "user", config.admit, user_attrs);
        gateways(root, config);
        section(root, "init_fc", config, fc_attrs);
        list(root, "fc_queue", "queue", config.fc_queue, queue_attrs);
        section(root, "init_fs", config, fs_attrs);
        way.rows(root, "fs_allow", "allow", config.fs_allow, [&](Node* node, auto& row) { allow(node, row); });
    }
};

} // namespace

namespace {

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
    Walk<Reading>{reading}.profile(root, config);
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
        Walk<Writing>{writing}.profile(root, profile.config);

        save_after_reserve_copy(xml, profile_file_name(*context, profile));
    });
}
