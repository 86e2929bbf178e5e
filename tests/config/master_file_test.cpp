#include "app/mg_context.h"
#include "config/error_of.h"
#include "config/master_file.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <csignal>
#include <sys/resource.h>

namespace {

const std::string good = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                         "<!--Список конфигурационных профилей программы Резервного копирования.-->\n"
                         "<config version=\"3\" release=\"9\" mark=\"VORQSCFG\">\n"
                         "  <profiles quantity=\"2\">\n"
                         "    <profile default=\"1\" name=\"Первый &amp; &lt;второй&gt;\" id=\"one\" active=\"0\"/>\n"
                         "    <profile default=\"0\" name=\"\" id=\"two\" active=\"1\"/>\n"
                         "  </profiles>\n"
                         "  <settings>\n"
                         "    <editor path=\"/bin/view\"/>\n"
                         "  </settings>\n"
                         "</config>\n";

struct MasterFile : testing::Test {
    TempDir dir;
    MGContext context;

    ErrorFields read(const std::string& what, const std::string& with) {
        std::string content = good;
        const size_t at = content.find(what);
        EXPECT_NE(at, std::string::npos) << what;
        dir.write("master.xml", content.replace(at, what.size(), with));
        context = MGContext();
        context.config_file = dir.path("master.xml");
        return error_of([&] { read_config_file(&context); });
    }
};

} // namespace

TEST_F(MasterFile, ComesBackByteForByte) {
    ASSERT_EQ(read("", ""), ErrorFields());
    EXPECT_EQ(context.editor_path, "/bin/view");
    MGProfile first;
    first.is_default = true;
    first.name = "Первый & <второй>";
    first.id = "one";
    EXPECT_EQ(context.profiles[0], first);

    write_config_file(&context);
    EXPECT_EQ(dir.read("master.xml"), good);
    context.profiles.pop_back();
    write_config_file(&context);
    EXPECT_EQ(context.quantity, 1);
    EXPECT_EQ(dir.read("master.xml~"), good) << "the content before the latest save";
}

TEST_F(MasterFile, RefusesAndKeepsWhatWasRead) {
    const ReaderErrors told{"Ошибка загрузки конфигурационного файла", "read_config_file", dir.path("master.xml")};
    const struct {
        std::string what, with; // the change in the file
        ErrorFields want;
        size_t profiles;
    } rows[] = {
        {"VORQSCFG", "VORQSPRF",
         told.check("XML файл не является конфигурационным файлом Резервного копирования", "str != MARK_VORMA_CONFIG",
                    "VORQSPRF", "VORQSCFG"),
         0},
        {"quantity=\"2\"", "quantity=\"1\"", told.surplus("profile", "1"), 1},
        {"<editor ", "<viewer ", no_child("editor"), 2},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what + " -> " + row.with);
        EXPECT_EQ(read(row.what, row.with), row.want);
        EXPECT_EQ(context.profiles.size(), row.profiles);
        EXPECT_EQ(context.editor_path, "/usr/bin/kate");
    }
}

TEST_F(MasterFile, ASaveThatFailsHalfWayLosesNothing) {
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit limit;
    getrlimit(RLIMIT_FSIZE, &limit);
    const rlimit small{4096, limit.rlim_max};

    ASSERT_EQ(read("", ""), ErrorFields());
    context.profiles.resize(1000);
    for (const char* attempt : {"first", "second"}) {
        SCOPED_TRACE(attempt);
        setrlimit(RLIMIT_FSIZE, &small);
        const ErrorFields err = error_of([&] { write_config_file(&context); });
        setrlimit(RLIMIT_FSIZE, &limit);
        EXPECT_EQ(err,
                  (ReaderErrors{"Ошибка сохранения XML документа в файл", "SaveFile", dir.path("master.xml")}.check(
                      "Не удалось создать файл", "xmlSaveFormatFileEnc")));
        EXPECT_EQ(dir.read("master.xml"), good);
        EXPECT_EQ(dir.read("master.xml~"), good);
    }
    write_config_file(&context);
    EXPECT_EQ(dir.read("master.xml~"), good);
}
