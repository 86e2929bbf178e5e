#include "app/log.h"
#include "app/mg_context.h"
#include "config/profile_file.h"
#include "net/profile_report.h"
#include "net/ticket.h"
#include "net/transfer_documents.h"
#include "support/error_of.h"
#include "support/patterns.h"
#include "support/temp_dir.h"

#include <gmock/gmock.h>

namespace {

std::string golden(const std::string& name) {
    return read_file(GOLDEN "/" + name);
}

using testing::HasSubstr;

constexpr uint64_t huge = 18446744073709551615U;

// All that readers fill.
struct Received {
    MGRecvFile file;
    MGDev dev;
    std::vector<MGQueue> queue;
    std::string que, name, login, hash, type;
    uint64_t size = 0, buf_len = 0;

    void file_header(const std::string& text) { read_file_header(text, file); }
    void file_crc(const std::string& text) { read_file_crc(text, file); }
    void file2_header(const std::string& text) { read_file2_header(text, que, name, size, buf_len); }
    void gw_client(const std::string& text) { read_gw_client(text, dev); }
    void file_client(const std::string& text) { read_file_client(text, queue, login, hash, type); }
};

TEST(TransferFile, ComesBackAsItWasWritten) {
    MGSend send;
    send.file = "отчёт <\"1\">.txt";
    std::string text;
    Received got;
    write_file_header(send, 10485761, text);
    EXPECT_EQ(text, golden("file_header.xml"));
    got.file_header(text);
    write_file_crc(0xFFFFFFFF, text);
    EXPECT_EQ(text, golden("file_crc.xml"));
    got.file_crc(text);
    EXPECT_EQ(std::tie(got.file.name, got.file.size, got.file.buf_len, got.file.crc32),
              std::tuple(send.file, 10485761u, 5242880u, 0xFFFFFFFFu));

    write_file2_header("que", "name", huge, 1024, text);
    EXPECT_EQ(text, golden("file2_header.xml"));
    got.file2_header(text);
    EXPECT_EQ(std::tie(got.que, got.name, got.size, got.buf_len), std::tuple("que", "name", huge, 1024u));

    const auto blocks = [&](int32_t kilobytes, uint64_t size) {
        send.buf_len = kilobytes;
        write_file_header(send, size, text);
        got.file_header(text);
        return std::pair(got.file.full_blocks, got.file.rest);
    };
    EXPECT_EQ(blocks(5120, 10485761), std::pair(2ul, 1ul));
    EXPECT_EQ(blocks(0, huge), std::pair(0ul, huge));
    EXPECT_EQ(blocks(4194304, huge), std::pair(4294967295ul, 4294967295ul));
    EXPECT_EQ(blocks(1, 5), std::pair(0ul, 5ul));
}

TEST(TransferClients, ComeBackAsTheyWereWritten) {
    MGDev full;
    full.device = "tun0";
    full.adrs = {{.ip = "192.168.1.0", .net = "255.255.255.0"}, {.ip = "192.168.2.1"}};
    full.virt = {{.ip = "10.8.0.2"}};
    full.local_adr = "10.0.0.1";
    full.virtual_adr = "10.8.0.1";
    std::string text;
    for (const auto& [is_router, is_local] : {std::pair{false, false}, {false, true}, {true, false}, {true, true}}) {
        full.is_router = is_router;
        full.is_local = is_local;
        write_gw_client(full, text);
        Received got;
        for (int again = 0; again < 2; ++again) got.gw_client(text);
        MGDev want = full;
        if (!is_router) want.adrs = want.virt = {};
        if (!is_local) want.local_adr = want.virtual_adr = "";
        EXPECT_EQ(got.dev, want) << text;
    }
    EXPECT_EQ(text, golden("gw_client.xml"));

    MGQueue first, second;
    first.id = "Первая";
    second.id = "second";
    write_file_client({first, second}, "login", "пароль", "type", text);
    EXPECT_EQ(text, golden("file_client.xml"));
    first.crc_id = 0x8A4E8510; // zlib's CRC-32 of "первая" and "second"
    second.crc_id = 0xB61F1169;
    Received got;
    for (int again = 0; again < 2; ++again) got.file_client(text);
    EXPECT_EQ(got.queue, (std::vector{first, second}));
    EXPECT_EQ(got.type + got.login + got.hash, "typeloginпароль");
    EXPECT_THROW(got.file_client(golden("gw_client.xml")), MGErr);
    EXPECT_TRUE(got.queue.empty());
    EXPECT_EQ(got.type + got.login + got.hash, "");
}

// Each element and attribute under another name, a list one longer, another kind's mark.
TEST(TransferDocuments, RefuseAndTellWhy) {
    const std::pair<const char*, void (Received::*)(const std::string&)> documents[] = {
        {"file_header", &Received::file_header},   {"file_crc", &Received::file_crc},
        {"file2_header", &Received::file2_header}, {"gw_client", &Received::gw_client},
        {"file_client", &Received::file_client},
    };
    for (const auto& [document, read] : documents) {
        std::string whole = golden(document + std::string(".xml"));
        whole.erase(0, whole.find('\n') + 1); // the XML declaration has names too
        const auto expect_refusal = [&, read = read](const std::string& what, const char* with, const auto& told) {
            SCOPED_TRACE(what);
            const std::string changed = regex_replaced(whole, what, with);
            EXPECT_THAT(error_text([&] { (Received().*read)(changed); }), told);
        };
        regex_replaced(whole, "(?:<| )([a-z_]+)\\b(?=[ >=])", [&](const auto& found) {
            const std::string& name = found[1];
            expect_refusal("(</?| )" + name + "(?=[ >=])", ("$1x" + name).c_str(),
                           testing::AnyOf(HasSubstr("\n" + name), HasSubstr("counter != quantity\n")));
            return found[0];
        });
        expect_refusal("mark=\"[^\"]+", "mark=\"VORQSCFG", HasSubstr("\nVORQSCFG\n"));
        if (whole.find("quantity") != whole.npos)
            expect_refusal("quantity=\"2", "quantity=\"1", HasSubstr("counter == quantity\n"));
    }
}

// Each text that a reader would not get as it was meant.
TEST(TransferDocuments, RefuseATextThatTheyWouldAlter) {
    const std::string fine = "строка\t1\r\n<\"&\u2028";
    std::string document;
    MGSend send;
    MGDev router;
    router.adrs.resize(1);
    std::vector<MGQueue> queue(1);
    const std::pair<const char*, std::function<void(const std::string&)>> rows[] = {
        {"name", [&](const std::string& value) { send.file = value, write_file_header(send, 1, document); }},
        {"net", [&](const std::string& value) { router.adrs[0].net = value, write_gw_client(router, document); }},
        {"id", [&](const std::string& value) { queue[0].id = value, write_file_client(queue, "", "", "", document); }},
        {"que", [&](const std::string& value) { write_file2_header(value, "", 1, 1, document); }},
    };
    for (const auto& [attribute, write] : rows) {
        for (const char* part : {"\x01", "\xFF", "\xED\xA0\x80", "\uFFFE"})
            EXPECT_EQ(error_of([&] { write(fine + part); }).str_param, attribute) << testing::PrintToString(part);
        EXPECT_THROW(write({"a\0b", 3}), MGErr);
        write(fine);
    }
    Received got;
    got.file2_header(document);
    EXPECT_EQ(got.que, fine);
}

TEST(Ticket, HasTwoForms) {
    const char* const date = "\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d";
    for (const auto& [token, form] : {std::pair{"XML", ".xml"}, {"TXT", ".txt"}, {"", ".txt"}, {"xml", ".txt"}}) {
        std::string text = "old";
        write_file_ticket(token, "отчёт & 1", huge, {0x00, 0xAB, 0xFF}, text);
        EXPECT_EQ(regex_replaced(text, date, "DATE"), golden(std::string("ticket") + form)) << token;
    }
}

// golden/profile.xml with no start mode on, the server's side of the gateway a router, and an action of each type.
MGProfile the_profile() {
    MGContext context;
    context.config_dir = GOLDEN;
    context.profiles.resize(1);
    MGProfile& profile = context.profiles[0];
    profile.id = "profile";
    profile.name = "profile.name";
    read_profile_file(&context, 0);
    MGConfig& config = profile.config;
    config.fs_radio = config.gw_server.is_local = config.gw_server.ip_select = false;
    config.recv_need_cert = config.server_use_list = false;
    config.gw_server.is_router = config.gw_server.ip_all = true;
    for (const char* type : {"CONSOLE", "COPYFILE", "RUNPROG", "EXIST"}) {
        config.actions.push_back(config.actions[0]);
        config.actions.back().type = type;
    }
    config.actions.emplace_back(); // is not active
    return profile;
}

std::string report_of(const MGProfile& profile) {
    const TempDir dir;
    LogFileGlobal.SetResultFile(dir.path("profile.result").c_str());
    print_selected_profile(profile);
    return dir.read("profile.result");
}

// The whole is in golden/report.txt; the first four modes have actions.
TEST(ProfileReport, ListsTheModesThatAreOnInTheirOrder) {
    bool MGConfig::*const modes[] = {
        &MGConfig::timer_radio,  &MGConfig::file_radio,   &MGConfig::recv_radio,      &MGConfig::modify_radio,
        &MGConfig::client_radio, &MGConfig::server_radio, &MGConfig::gw_client_radio, &MGConfig::gw_server_radio,
        &MGConfig::fc_radio,     &MGConfig::fs_radio,
    };
    const MGProfile none = the_profile();
    MGProfile all = none;
    const std::string general = report_of(none), whole = golden("report.txt");
    EXPECT_TRUE(whole.starts_with(general));
    size_t at = general.size(); // of the mode in the whole
    for (const auto& mode : modes) {
        MGProfile one = none;
        one.config.*mode = all.config.*mode = true;
        const std::string part = report_of(one).substr(general.size());
        at = whole.find(part.substr(0, part.find('\n')), at);
        EXPECT_NE(at, std::string::npos) << part;
        EXPECT_EQ(part.find("Действие: ") != std::string::npos, &mode - modes < 4) << part;
    }
    EXPECT_EQ(report_of(all), whole);

    test_data_crc({'1', '2', '3', '4', '5', '6', '7', '8', '9'}, 0xCBF43926);
    EXPECT_EQ(error_of([] { test_data_crc({'1'}, 0xCBF43926); }).uint32_param, 0xCBF43926);
    MGInfo info;
    for (const MGDev& side : {none.config.gw_client, none.config.gw_server}) print_info_dev(info, side);
    EXPECT_EQ(info.GetString(), golden("devices.txt"));
}

} // namespace
