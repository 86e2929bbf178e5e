#include "app/mg_context.h"
#include "config/master_file.h"
#include "support/error_of.h"
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

    MasterFile() {
        dir.write("master.xml", good);
        context.config_file = dir.path("master.xml");
        read_config_file(&context);
    }
};

} // namespace

TEST_F(MasterFile, ComesBackByteForByte) {
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

TEST_F(MasterFile, ASaveThatFailsHalfWayLosesNothing) {
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit limit;
    getrlimit(RLIMIT_FSIZE, &limit);
    const rlimit small{4096, limit.rlim_max};

    context.profiles.resize(1000);
    for (const char* attempt : {"first", "second"}) {
        SCOPED_TRACE(attempt);
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
