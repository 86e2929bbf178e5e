#include "app/mg_context.h"
#include "config/admit_lookup.h"
#include "config/master_file.h"
#include "config/mg_libxml.h"
#include "config/profile_file.h"
#include "config/recovery.h"
#include "config/tokens.h"
#include "config/xml_tables.h"
#include "support/error_of.h"
#include "support/patterns.h"
#include "support/temp_dir.h"

#include <gmock/gmock.h>

#include <csignal>
#include <random>
#include <sys/resource.h>

namespace {

const std::string good = read_file(GOLDEN "/master.xml");

struct MasterFile : testing::Test {
    TempDir dir;
    MGContext context;

    MasterFile() {
        dir.write("master.xml", good);
        context.config_file = dir.path("master.xml");
        read_config_file(&context);
    }
};

TEST_F(MasterFile, ComesBackByteForByte) {
    write_config_file(&context);
    EXPECT_EQ(dir.read("master.xml"), good);
    context.profiles.pop_back();
    std::filesystem::permissions(context.config_file, std::filesystem::perms(0600));
    write_config_file(&context);
    EXPECT_EQ(context.quantity, 1);
    EXPECT_EQ(dir.read("master.xml~"), good) << "the content before the latest save";
    EXPECT_EQ(std::filesystem::status(dir.path("master.xml~")).permissions(), std::filesystem::perms(0600));
}

TEST_F(MasterFile, ASaveThatFailsHalfWayLosesNothing) {
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit limit;
    getrlimit(RLIMIT_FSIZE, &limit);
    const rlimit small{4096, limit.rlim_max};

    context.profiles.resize(1000);
    for (int attempt = 0; attempt < 2; ++attempt) {
        setrlimit(RLIMIT_FSIZE, &small);
        const std::string err = error_text([&] { write_config_file(&context); });
        setrlimit(RLIMIT_FSIZE, &limit);
        EXPECT_NE(err.find("Не удалось создать файл"), err.npos) << err;
        EXPECT_EQ(dir.read("master.xml"), good);
        EXPECT_EQ(dir.read("master.xml~"), good);
    }
    write_config_file(&context);
    EXPECT_EQ(dir.read("master.xml~"), good);
}

std::string replaced(std::string text, const std::string& what, const std::string& with) {
    const size_t at = text.find(what);
    EXPECT_NE(at, std::string::npos) << what;
    return text.replace(at, what.size(), with);
}

// A file that states every attribute. No two fields of a record have the same number or text, and none its default.
const std::string every_field = [] {
    std::string text = read_file(GOLDEN "/profile.xml");
    for (const auto& [what, with] : {std::pair{"version=\"1\" release=\"1\"", "version=\"3\" release=\"4\""},
                                     {"exist0.content", "a &lt; &quot;b&quot; &amp; д&#10;"}})
        text = replaced(text, what, with);
    return text;
}();

// A stored password changes from second to second.
std::string without_hashes(const std::string& content) {
    return regex_replaced(content, " hash=\"[^\"]+\"", " hash=\"*\"");
}

struct ProfileFile : testing::Test {
    TempDir dir;
    MGContext context;

    MGConfig& config() { return context.profiles[0].config; }

    // Reads a file of this content into a fresh profile.
    std::string read(const std::string& content) {
        dir.write("profile.xml", content);
        context.config_dir = dir.path();
        context.version = 3;
        context.release = 4;
        context.profiles.assign(1, {});
        context.profiles[0].id = "profile";
        return error_text([&] { read_profile_file(&context, 0); });
    }
    std::string written() {
        EXPECT_EQ(error_text([&] { write_profile_file(&context, 0); }), "");
        return dir.read("profile.xml");
    }
};

TEST_F(ProfileFile, WritesEveryAttributeThatItReads) {
    ASSERT_EQ(read(every_field), "");
    EXPECT_EQ(without_hashes(written()), without_hashes(every_field));
    EXPECT_EQ(dir.read("profile.xml~"), every_field);

    EXPECT_EQ(config().fs_allow[0].hash, "allow.пароль0");
    EXPECT_EQ(config().actions[0].exist.content, "a < \"b\" & д\n");
    EXPECT_EQ(config().admit[0].crc_subject, 0x1ca8c846u); // zlib's CRC-32
    EXPECT_EQ(config().fs_allow[1].crc_login, 0x23e02658u);
}

// What a record holds until someone sets it; three choices are filled by the editor's first save.
TEST_F(ProfileFile, OfNewRecordsStatesTheDefaults) {
    read(every_field);
    MGConfig& fresh = config() = {};
    fresh.mode_same_file = "ADD_NUM";
    fresh.ticket_type = "XML";
    fresh.sub_dir = "%%YYYY%%/%%MM%%/%%DD%%/%%LOGIN%%/%%QUEUE%%/%%TIME%%/";
    fresh.actions.emplace_back().active = true;
    fresh.admit = fresh.gw_admit = {{}};
    fresh.fc_queue = {{}};
    fresh.fs_allow.emplace_back().queue = {{}};
    fresh.gw_client.adrs = fresh.gw_client.virt = fresh.gw_server.adrs = fresh.gw_server.virt = {{}};
    const char* const frame = "<[?!].*\n|<profile[^>]*>| quantity=\"\\d\"";
    EXPECT_EQ(regex_replaced(written(), frame, ""),
              regex_replaced(read_file(GOLDEN "/../../../data/defaults.xml"), frame, ""));
}

TEST(Tokens, HaveTheirTexts) {
    const auto texts_of = [](auto text_of, const std::vector<std::string>& tokens) {
        std::string texts;
        for (const std::string& token : tokens) texts += text_of(token) + "|";
        return texts;
    };
    EXPECT_EQ(texts_of(get_same_file_txt_mode, {"ADD_NUM", "REPLACE", "ERROR", "error"}),
              "Сохранить с добавлением номера (*~N.*)|Перезаписать файл|Выдать сообщение об ошибке||");
    EXPECT_EQ(texts_of(get_type_ticket_name, {"TXT", "XML", ""}), "Текстовый файл|XML файл||");
    EXPECT_EQ(texts_of(get_action_txt_type, {"CONSOLE", "SENDFILE", "COPYFILE", "RUNPROG", "EXIST"}),
              "Консольная утилита|Отправка файла|Копирование файла|Запуск программы|Наличие файла|");
}

TEST(AdmitLookup, DisregardsTheCaseAndLooksBeyondTheKey) {
    std::vector<MGAdmit> list(2);
    list[0].subject = "CN=Петров", list[1].subject = "CN=Иванов";
    for (MGAdmit& user : list) user.crc_subject = MGFile::MakeCrc32Lower("CN=Иванов");
    unsigned index = 7;
    EXPECT_FALSE(find_subject_in_admit(list, "CN=Петров", index) || index != 7);
    EXPECT_TRUE(find_subject_in_admit(list, "cn=ИВАНОВ", index) && index == 1);
}

TEST_F(ProfileFile, ReadsWithoutJudgingAndWritesInOneForm) {
    const size_t virt = every_field.find("<gw_client_virtual ") + 32;
    const std::string address = every_field.substr(virt, every_field.find("  <init_gw_server") - 1 - virt);
    const struct {
        std::string what, with; // the change in the file that is read
        std::string then;       // what stands in that place after writing
    } rows[] = {{"send_timeout=\"104\"", "send_timeout=\"0\"", "send_timeout=\"8\""},
                {"port=\"20114\"", "port=\"70000\"", "port=\"4464\""},
                {"<log catalog", "<new a='1'><b/></new><log new='2' catalog", "<log catalog"},
                {"<gw_client_virtual quantity=\"1\">" + address, "<gw_client_virtual quantity=\"-2\">" + address,
                 "<gw_client_virtual quantity=\"0\"/>"}};
    for (const auto& row : rows) {
        ASSERT_EQ(read(replaced(every_field, row.what, row.with)), "");
        EXPECT_EQ(without_hashes(written()), without_hashes(replaced(every_field, row.what, row.then)));
    }
}

TEST_F(ProfileFile, RefusesAndTellsWhy) {
    const std::string root = every_field.substr(every_field.find("<profile "));
    const struct {
        std::string what, with; // the change in the file
        const char* told;
    } rows[] = {{root, "<config/>", "GetRoot\nprofile\n"},
                {"VORQSPRF", "VORQSCFG", "\nVORQSCFG\n"},
                {"id=\"profile\"", "id=\"other\"", "str != id\nother\n"},
                {"<crypto ", "<krypto ", "GetFirstChildren\ncrypto\nЭлемент «profile», строка 3\n"},
                {" time_hour=", " hour=", "xmlGetProp\ntime_hour\nЭлемент «init_timer», строка 9\n"},
                {"time_minute=\"59\"", "time_minute=\"\"", "stoi\ntime_minute\nЭлемент «init_timer», строка 9\n"},
                {"<gw_server_virtual quantity=\"2\"", "<gw_server_virtual quantity=\"4\"", "counter != quantity\n"},
                {"version=\"3\"", "version=\"4\"", "num != version\n"},
                {"release=\"4\"", "release=\"3\"", "num != release\n"},
                {"<fs_allow quantity=\"2\"", "<fs_allow quantity=\"1\"", "counter == quantity\n"}};
    for (const auto& row : rows)
        EXPECT_THAT(read(replaced(every_field, row.what, row.with)), testing::HasSubstr(row.told));
    EXPECT_EQ(config().fs_allow.size(), 1u) << "what was read up to the error stays";
}

TEST(Recovery, NamesWhatHelps) {
    const TempDir dir;
    MGContext context;
    context.config_dir = dir.path();
    context.config_file = dir.path("master.xml");
    context.profiles.resize(2);
    context.profiles[0].id = "one";
    for (int save = 0; save < 2; ++save) {
        write_config_file(&context);
        write_profile_file(&context, 0);
    }
    const auto advice = [&](int index, int error = 0) {
        MGErr err;
        err.err_code = error;
        index < 0 ? advise_on_config_file(err, context) : advise_on_profile_file(err, context, index);
        return err.err_description;
    };
    for (const auto& [name, index] : {std::pair{"master.xml", -1}, {"one.xml", 0}}) {
        dir.write(name, "");
        EXPECT_THAT(advice(index), testing::HasSubstr("цела его резервная копия\n«" + dir.path(name) + "~»"));
        EXPECT_THAT(advice(index), testing::HasSubstr("Переименуйте файл, скопируйте копию"));
        EXPECT_THAT(advice(index, ENOENT), testing::HasSubstr("» нет, но цела его резервная копия\n"));
        EXPECT_THAT(advice(index, EIO), testing::HasSubstr("» сейчас недоступен"));
        EXPECT_THAT(advice(index, EACCES), testing::StartsWith("Проверьте права"));
        dir.write(name + std::string("~"), "<a/>");
        EXPECT_THAT(advice(index), testing::HasSubstr("место или восстановите файл из своего архива"));
    }
    EXPECT_THAT(advice(0), testing::HasSubstr("id=\"one\" …/>», поставьте там quantity=\"1\" и"));
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
        if (!read(content).empty()) continue;
        ++accepted;
        const MGConfig first = config();
        ASSERT_EQ(read(written()), "");
        ASSERT_EQ(config(), first) << round;
    }
    EXPECT_GT(accepted, 100);
}

TEST(StorableText, IsWhatLibxmlReadsFromAnyBytes) {
    std::mt19937 random(2279);
    // Bytes at which the forms of UTF-8 begin and end, beside any others.
    const std::string edges = "\x7F\x80\x8F\x90\x9F\xA0\xBD\xBE\xBF\xC0\xC1\xC2\xDF\xE0\xED\xEF\xF0\xF4\xF5\xFF";
    size_t kept = 0;
    for (int round = 0; round < 20000; ++round) {
        std::string text;
        for (size_t size = random() % 12; size > 0; --size) {
            const char any = static_cast<char>(1 + random() % 255);
            text += random() % 4 ? edges[random() % edges.size()] : any;
        }
        const std::string stored = storable_text(text);
        MGLibxml xml;
        xml.SetTextProp(xml.AddDocRoot("a"), "t", stored.c_str());
        std::string document;
        xml.SaveString(document);
        const MGLibxml again(document.c_str(), 0);
        ASSERT_EQ(again.GetStringProp(again.GetRoot(), "t"), stored) << testing::PrintToString(text);
        if (text.find_first_of("<&\r") != text.npos) continue;
        const std::string as_element = "<a>" + text + "</a>";
        if (!error_text([&] { MGLibxml(as_element.c_str(), 0); }).empty()) continue;
        EXPECT_EQ(stored, text) << "what libxml2 reads as it stands is kept as it stands";
        kept += text.size() > 2;
    }
    EXPECT_GT(kept, 10u);
}

} // namespace
