#include "config/mg_libxml.h"
#include "support/error_of.h"
#include "support/temp_dir.h"

#include <gmock/gmock.h>

#include <thread>

namespace {

// Each "#" is the number of the piece.
std::string repeated(int count, const std::string& piece) {
    const size_t at = piece.find('#');
    std::string all;
    for (int i = 0; i < count; ++i)
        all += at == piece.npos ? piece : piece.substr(0, at) + std::to_string(i) + piece.substr(at + 1);
    return all;
}

std::string utf16(const std::string& ascii) {
    std::string text = "\xFF\xFE";
    for (const char c : ascii) text += {c, 0};
    return text;
}

const char* const no_type = "(DOCTYPE) не допускается (строка ";

TEST(MGLibxml, RefusesHostileDocumentsAtOnceAndTellsWhy) {
    const TempDir dir;
    const struct {
        std::string content;
        const char* told_of_file;
        const char* told_of_text; // null: no text, since it holds zero bytes
    } rows[] = {
        {"<!DOCTYPE a [<!ENTITY % e ' '>%e;]><a/>", no_type, no_type},
        {"<?xml version='1.0'?><?a b?><!--c-->\n<!DOCTYPE a SYSTEM 'file:///dev/zero'><a/>", no_type, no_type},
        {utf16("<!--c--><!DOCTYPE a [<!ENTITY e 'e'>]><a b='&e;'/>"), no_type, nullptr},
        {repeated(65, "<a>") + repeated(65, "</a>"), "глубокая вложенность", "глубокая вложенность"},
        {"<a" + repeated(257, " a#=''") + "/>", "много атрибутов", "много атрибутов"},
        {"<a" + repeated(20000, " a#=''") + "/>", "много атрибутов в элементе (строка 1)", "элементе (строка 1)"},
        {"<a>" + repeated(50000, "<a#/>\n") + "</a>", "много разных имён", "много разных имён"},
        {"<a b='" + std::string(11 << 20, 'x') + "'/>", "AttValue length too long", "длинный элемент"},
        {"<a>" + repeated((4 << 20) - 1, "<b/>") + "</b>", "mismatch", "длинный документ"},
        {"<a>\n<b></a>", "mismatch: b line 2 and a (строка 2, столбец 8)", "mismatch"},
        {"\x1F\x8B\x08", "xmlReadFile", "xmlReadDoc"},
    };
    testing::internal::CaptureStderr();
    for (const auto& row : rows) {
        SCOPED_TRACE(row.content.substr(0, 50));
        dir.write("file", row.content);
        const std::string err = error_text([&] { MGLibxml(dir.path("file").c_str()); });
        EXPECT_THAT(err, testing::HasSubstr("Не удалось прочесть XML документ из файла"));
        EXPECT_THAT(err, testing::HasSubstr(row.told_of_file));
        if (!row.told_of_text) continue;
        EXPECT_THAT(error_text([&] { MGLibxml(row.content.c_str(), 0); }), testing::HasSubstr(row.told_of_text));
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    const std::string within = repeated(64, "<a>") + "<!--" + repeated(256, " a#=''") + "-->" + repeated(64, "</a>");
    EXPECT_EQ(error_text([&] { MGLibxml(within.c_str(), 0); }), "");
}

TEST(MGLibxml, OpensAndWritesRegularFilesOnly) {
    const TempDir dir;
    ASSERT_EQ(mkfifo(dir.path("fifo").c_str(), 0600), 0);
    ASSERT_EQ(mkdir(dir.path("catalog").c_str(), 0700), 0);

    MGLibxml xml;
    xml.AddDocRoot("a");
    for (const std::string& name : {dir.path("fifo"), dir.path("catalog"), std::string("/dev/null")}) {
        EXPECT_EQ(error_of([&] { MGLibxml(name.c_str()); }).err_description, "Это не обычный файл") << name;
        EXPECT_EQ(error_of([&] { xml.SaveFile(name.c_str()); }).mess_2, "Не удалось создать файл") << name;
    }
    EXPECT_EQ(error_of([&] { MGLibxml(dir.path("none").c_str()); }).err_code, ENOENT);
    EXPECT_EQ(error_of([&] { xml.SaveFile(dir.path("none/a").c_str()); }).err_code, ENOENT);
    const MGLibxml two("<a xmlns:x='u' x:b='1' b='2'/>", 0);
    const MGLibxml headed("<?xml version='1.1' encoding='KOI8-R'?><!--c--><a b=''><d/></a>", 0);
    EXPECT_STREQ(headed.GetVersion(), "1.1");
    EXPECT_STREQ(headed.GetEncoding(), "KOI8-R");
    EXPECT_STREQ(headed.GetComment(), "c");
    EXPECT_TRUE(headed.IsProp(headed.GetRoot(), "b") && !headed.IsProp(headed.GetRoot(), "d"));
    EXPECT_TRUE(headed.IsChildren(headed.GetRoot(), "d") && !headed.IsChildren(headed.GetRoot(), "b"));
    xml.SetContentToNode(xml.GetRoot(), "&lt;");
    EXPECT_EQ(xml.GetStringContentFromNode(xml.GetRoot()), "<");
    for (int time = 0; time < 3; ++time) EXPECT_EQ(two.GetStringProp(two.GetRoot(), "b"), "1") << "as xmlGetProp";
    EXPECT_EQ(error_of([] { MGLibxml("", 0); }).err_code, 0) << "libxml2's number is not errno's";
}

TEST(MGLibxml, TakesANameByteForByte) {
    const TempDir dir;
    const std::vector<std::string> names = {"ab", "a%62", "a%2562", "http:%41", "x?y#z", "\xFF", "a b.gz", "-"};
    const auto root = [](size_t i) { return "r" + std::to_string(i); };
    for (size_t i = 0; i < names.size(); ++i) {
        MGLibxml xml;
        xml.AddDocRoot(root(i).c_str());
        xml.SaveFile(dir.path(names[i]).c_str());
    }
    for (size_t i = 0; i < names.size(); ++i) {
        EXPECT_EQ(dir.read(names[i]), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<" + root(i) + "/>\n");
        const MGLibxml xml(dir.path(names[i]).c_str());
        EXPECT_EQ(xml.GetName(xml.GetRoot()), root(i));
    }
}

TEST(MGLibxml, ServesEachThreadWithDocumentsOfItsOwn) {
    const TempDir dir;
    const auto work = [&](int number) {
        const std::string name = dir.path("file" + std::to_string(number)), value = std::to_string(number);
        for (int round = 0; round < 200; ++round) {
            MGLibxml xml;
            xml.SetTextProp(xml.AddDocRoot("root"), "n", value.c_str());
            std::string text;
            xml.SaveString(text);
            xml.SaveFile(name.c_str());
            EXPECT_NE(error_text([] { MGLibxml("<a", 0); }).find("строка 1"), std::string::npos);
            const MGLibxml from_file(name.c_str()), from_text(text.c_str(), 0);
            for (const MGLibxml* read : {&from_file, &from_text})
                EXPECT_EQ(read->GetNumberProp(read->GetRoot(), "n"), number);
        }
    };
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) threads.emplace_back(work, i);
    for (std::thread& thread : threads) thread.join();
}

} // namespace
