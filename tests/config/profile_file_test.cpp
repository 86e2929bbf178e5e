#include "app/mg_context.h"
#include "config/error_of.h"
#include "config/profile_file.h"
#include "support/temp_dir.h"

#include <gmock/gmock.h>

#include <random>
#include <regex>

namespace {

// A file that states every attribute, none with its default, no number or text twice.
const std::string every_field = [] {
    std::ifstream file(EVERY_FIELD, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}();

std::string replaced(std::string text, const std::string& what, const std::string& with) {
    const size_t at = text.find(what);
    EXPECT_NE(at, std::string::npos) << what;
    return text.replace(at, what.size(), with);
}

// A stored password changes from second to second.
std::string without_hashes(const std::string& content) {
    return std::regex_replace(content, std::regex(" hash=\"[^\"]+\""), " hash=\"*\"");
}

struct ProfileFile : testing::Test {
    TempDir dir;
    MGContext context;

    MGConfig& config() { return context.profiles[0].config; }

    // Reads a file of this content into a fresh profile.
    ErrorFields read(const std::string& content) {
        dir.write("every_field.xml", content);
        return reread();
    }
    ErrorFields reread() {
        context.config_dir = dir.path();
        context.version = 3;
        context.release = 4;
        context.profiles.assign(1, {});
        context.profiles[0].id = "every_field";
        return error_of([&] { read_profile_file(&context, 0); });
    }
    std::string written() {
        EXPECT_EQ(error_of([&] { write_profile_file(&context, 0); }), ErrorFields());
        return dir.read("every_field.xml");
    }
    size_t files() const {
        return static_cast<size_t>(std::distance(std::filesystem::directory_iterator(dir.path()), {}));
    }
};

} // namespace

TEST_F(ProfileFile, WritesEveryAttributeThatItReads) {
    ASSERT_EQ(read(every_field), ErrorFields());
    EXPECT_EQ(files(), 1u);
    EXPECT_EQ(without_hashes(written()), without_hashes(every_field));
    EXPECT_EQ(dir.read("every_field.xml~"), every_field);

    EXPECT_EQ(config().fc_hash, "init_fc.пароль");
    EXPECT_EQ(config().actions[1].console.hash, "console.пароль1");
    EXPECT_EQ(config().fs_allow[0].hash, "allow.пароль0");
    EXPECT_EQ(config().actions[0].exist.content, "a < \"b\" & д\nexist0");
    EXPECT_EQ(config().admit[0].crc_subject, 0x1CA8C846u); // zlib's CRC-32 of these lower-case texts
    EXPECT_EQ(config().fc_queue[1].crc_id, 0xF4277756u);
    EXPECT_EQ(config().fs_allow[1].crc_login, 0x23E02658u);

    const MGConfig first = config();
    ASSERT_EQ(reread(), ErrorFields());
    EXPECT_EQ(config(), first);
}

TEST_F(ProfileFile, EachFlagHasAFieldOfItsOwn) {
    int flags = 0;
    for (size_t at = 0; (at = every_field.find("=\"", at + 1)) != std::string::npos;) {
        char flag = every_field[at + 2];
        if ((flag != '0' && flag != '1') || every_field[at + 3] != '"' ||
            every_field.compare(at - 8, 8, "quantity") == 0)
            continue;
        std::string content = every_field;
        content[at + 2] = flag == '0' ? '1' : '0';
        SCOPED_TRACE(content.substr(at - 20, 30));
        ASSERT_EQ(read(content), ErrorFields());
        ASSERT_EQ(without_hashes(written()), without_hashes(content));
        ++flags;
    }
    EXPECT_GT(flags, 80);
}

TEST_F(ProfileFile, ReadsWithoutJudgingAndWritesInOneForm) {
    const size_t fs = every_field.find("  <init_fs "), virt = every_field.find("<gw_client_virtual ") + 32;
    const std::string fs_line = every_field.substr(fs, every_field.find('\n', fs) + 1 - fs);
    const std::string address = every_field.substr(virt, every_field.find("  <init_gw_server") - 1 - virt);
    const struct {
        std::string what, with; // the change in the file that is read
        std::string then;       // what stands in that place after writing
    } rows[] = {
        {"send_timeout=\"104\"", "send_timeout=\"0\"", "send_timeout=\"8\""},
        {"limit_auth=\"106\"", "limit_auth=\"-5\"", "limit_auth=\"-5\""},
        {"port=\"20114\"", "port=\"70000\"", "port=\"4464\""},
        {"use_tls_1.2=\"0\"", "use_tls_1.2=\"-7\"", "use_tls_1.2=\"1\""},
        {"syslog=\"1\"", "syslog=\" 00x\"", "syslog=\"0\""},
        {"<log catalog", "<new a='1'><b/></new><log new='2' catalog", "<log catalog"},
        {"<user subject=\"user.gw_admit0.subject\"/>", "<user subject=\"С\" ip=\"1.2.3.4\"/>", "<user subject=\"С\"/>"},
        {"<gw_client_virtual quantity=\"1\">" + address, "<gw_client_virtual quantity=\"-2\">" + address,
         "<gw_client_virtual quantity=\"0\"/>"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.with);
        std::string content = replaced(every_field, row.what, row.with);
        content = replaced(replaced(content, fs_line, ""), "  <settings", fs_line + "  <settings");
        ASSERT_EQ(read(content), ErrorFields());
        EXPECT_EQ(without_hashes(written()), without_hashes(replaced(every_field, row.what, row.then)));
    }
}

TEST_F(ProfileFile, RefusesAndTellsWhy) {
    const ReaderErrors told{"Ошибка загрузки конфигурационных параметров из файла с данными профиля",
                            "read_profile_file", dir.path("every_field.xml")};
    const std::string root = every_field.substr(every_field.find("<profile "));
    const struct {
        std::string what, with; // the change in the file
        ErrorFields want;
    } rows[] = {
        {root, "<config/>", told.check("В XML файле не найден корневой узел", "GetRoot", "profile", "", "0")},
        {"version=\"3\"", "version=\"7\"",
         told.check("Версия файла конфигурации не совпадает с версией файла профиля", "num != version", "profile",
                    "version", "7")},
        {"VORQSPRF", "VORQSCFG",
         told.check("XML файл не является конфигурационным файлом Резервного копирования", "str != MARK_VORMA_PROFILE",
                    "VORQSCFG", "VORQSPRF", "0")},
        {"id=\"every_field\"", "id=\"other\"",
         told.check("Идентификатор профиля не совпадает с именем файла", "str != id", "other", "every_field", "0")},
        {"version=\"3\" ", "", no_prop("GetNumberPropExt", "version")},
        {" mask_file=\"init_file.mask_file\"", "", no_prop("GetTextProp", "mask_file")},
        {"time_hour=\"110\"",
         "time_hour=\"2147483648\"",
         {"Ошибка получения свойства раздела", "Свойства не содержит числовое значение", "GetNumberPropExt", "stoi",
          "time_hour", "2147483648", "", "0"}},
        {"<crypto ", "<krypto ", no_child("crypto")},
        {"<actions quantity=\"2\"", "<actions quantity=\"3\"", told.missing("record", "3")},
        {"<admit quantity=\"2\"", "<admit quantity=\"1\"", told.surplus("user", "1")},
        {"<gw_server_virtual quantity=\"3\"", "<gw_server_virtual quantity=\"4\"", told.missing("address", "4")},
        {"<fs_allow quantity=\"2\"", "<fs_allow quantity=\"1\"", told.surplus("allow", "1")},
        {"<fs_admit quantity=\"0\"/>", "", no_child("fs_admit")},
        {"<actions quantity=\"2\"", "<actions quantity=\"1\"", told.surplus("record", "1")},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what + " -> " + row.with);
        const std::string content = replaced(every_field, row.what, row.with);
        EXPECT_EQ(read(content), row.want);
        EXPECT_EQ(dir.read("every_field.xml"), content);
        EXPECT_EQ(files(), 1u);
    }
    EXPECT_EQ(config().actions.size(), 1u) << "what was read up to the error stays";

    // Of two faults the first in the order of reading is told: a gateway's lists come between its attributes.
    const std::string adrs = replaced(every_field, "<gw_client_adrs quantity=\"2\"", "<gw_client_adrs quantity=\"1\"");
    EXPECT_EQ(read(replaced(adrs, " local_adr=\"init_gw_client", " x=\"")), told.surplus("address", "1"));
    EXPECT_EQ(read(replaced(adrs, " device=\"init_gw_client", " x=\"")), no_prop("GetTextProp", "device"));
    const std::string admit = replaced(every_field, "<gw_admit quantity=\"2\"", "<gw_admit quantity=\"1\"");
    EXPECT_EQ(read(replaced(admit, "internal_device=\"init_gw_server", "x=\"")), told.surplus("user", "1"));
    EXPECT_EQ(read(replaced(admit, " recv_ip=\"init_gw_server", " x=\"")), no_prop("GetTextProp", "recv_ip"));
}

TEST_F(ProfileFile, RefusesHostileFilesQuietly) {
    // 100 KB that stand for 1 GB.
    std::string entities = "<!DOCTYPE profile [<!ENTITY a \"" + std::string(50000, 'a') + "\">]>";
    std::string references;
    for (int i = 0; i < 20000; ++i) references += "&a;";
    std::mt19937 random(64);
    std::string rubbish(100000, '\0');
    for (char& c : rubbish) c = static_cast<char>(random());
    const std::string root = every_field.substr(every_field.find("<profile "));
    std::string deep;
    for (int i = 0; i < 100000; ++i) deep += "<a>";
    const struct {
        const char* name;
        std::string content;
    } rows[] = {
        {"empty", ""},
        {"cut short", every_field.substr(0, every_field.size() - 20)},
        {"binary rubbish", rubbish},
        {"not UTF-8", replaced(every_field, "log.catalog", "\xC3\x28")},
        {"deep nesting", deep},
        {"entities that explode", replaced(entities + root, "log.catalog", references)},
        {"50 MB", std::string("<profile><settings a=\"") + std::string(50 << 20, 'x')},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        testing::internal::CaptureStderr();
        const ErrorFields err = read(row.content);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
        EXPECT_THAT(err, testing::Contains("Не удалось прочесть XML документ из файла"));
        EXPECT_EQ(dir.read("every_field.xml"), row.content);
        EXPECT_EQ(config(), MGConfig());
    }
}

TEST_F(ProfileFile, SurvivesAnyMutation) {
    std::mt19937 random(1);
    int accepted = 0;
    for (int round = 0; round < 1000; ++round) {
        std::string content = every_field;
        const auto any = [&] { return random() % content.size(); };
        if (round % 2)
            content[any()] = static_cast<char>(random() % 2 ? random() : '0' + random() % 10);
        else
            content.replace(any(), random() % 20, content.substr(any(), random() % 20));
        SCOPED_TRACE(round);
        if (!read(content).empty()) continue;
        ++accepted;
        const MGConfig first = config();
        written();
        ASSERT_EQ(reread(), ErrorFields());
        ASSERT_EQ(config(), first);
    }
    EXPECT_GT(accepted, 100);
}

TEST_F(ProfileFile, WritesNothingThatItCannotReadAgain) {
    reread();
    config().fc_login = "a\x01\x1B\tб\xFF\xEF\xBF\xBF\n";
    written();
    EXPECT_EQ(files(), 1u) << "there was nothing to copy";
    ASSERT_EQ(reread(), ErrorFields());
    MGConfig expected; // but for this, a new profile comes back as it was
    expected.fc_login = "a\tб\n";
    EXPECT_EQ(config(), expected);
}

TEST_F(ProfileFile, KeepsTheFileWhereItCannotBeCopiedFirst) {
    read(every_field);
    std::filesystem::create_directory(dir.path("every_field.xml~"));
    EXPECT_NE(error_of([&] { write_profile_file(&context, 0); }), ErrorFields());
    EXPECT_EQ(dir.read("every_field.xml"), every_field);
}
