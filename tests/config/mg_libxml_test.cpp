#include "config/mg_libxml.h"
#include "support/error_of.h"
#include "support/temp_dir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <string>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <thread>
#include <vector>

TEST(MGLibxml, FindsElementsByNameBetweenTextAndComments) {
    const MGLibxml xml("<!--first--><!--second--><root> t <!--c--><b n='1'/> <a n='2'/>x<b n='3'/></root>", 0);
    xmlNode* root = xml.GetRoot();
    EXPECT_STREQ(xml.GetComment(), "first");
    xmlNode* b = xml.GetFirstChildren(root, "b");
    EXPECT_EQ(xml.GetNumberProp(b, "n"), 1);
    b = xml.GetNextNode(b, "b");
    EXPECT_EQ(xml.GetNumberProp(b, "n"), 3);
    EXPECT_EQ(xml.GetNextNode(b, "b"), nullptr);
    EXPECT_EQ(xml.GetStringContentFromNode(root), " t  x");
}

TEST(MGLibxml, ReadsNumbersAsTheStandardTextConversionsDo) {
    const struct {
        const char* text;
        const char* refused_by; // null: it is a number
        uint64_t value;         // of a 32-bit number sign-extended
        bool is_64;
    } rows[] = {
        {" \t+7", nullptr, 7, false},
        {"12abc", nullptr, 12, false},
        {"-2147483648", nullptr, static_cast<uint64_t>(std::numeric_limits<int32_t>::min()), false},
        {"4294967295", "stoi", 0, false},
        {"", "stoi", 0, false},
        {"18446744073709551615", nullptr, std::numeric_limits<uint64_t>::max(), true},
        {"18446744073709551616", "stolu", 0, true},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        MGLibxml xml;
        xmlNode* root = xml.AddDocRoot("root");
        xml.SetTextProp(root, "n", row.text);
        uint64_t value = 0;
        const std::string err = error_text([&] {
            value = row.is_64 ? xml.GetNumber64Prop(root, "n") : static_cast<uint64_t>(xml.GetNumberProp(root, "n"));
        });
        EXPECT_EQ(err.empty(), !row.refused_by);
        EXPECT_THAT(err, testing::HasSubstr(row.refused_by ? row.refused_by : ""));
        EXPECT_EQ(value, row.value);
    }
}

namespace {

std::string repeated(int count, const std::string& piece) {
    std::string all;
    for (int i = 0; i < count; ++i) all += piece;
    return all;
}

std::string numbered_attributes(int count) {
    std::string all;
    for (int i = 0; i < count; ++i) all += " a" + std::to_string(i) + "=''";
    return all;
}

// Each entity calls the one before it twice; without a refusal, none of it ends.
std::string nested_entities() {
    std::string text = "<!DOCTYPE a [<!ENTITY % e0 ' '>";
    for (int i = 1; i < 64; ++i) {
        const std::string before = "%e" + std::to_string(i - 1) + ";";
        text += "<!ENTITY % e" + std::to_string(i) + " '" + before + before + "'>";
    }
    return text + "%e63;]><a/>";
}

std::string utf16(const std::string& ascii) {
    std::string text = "\xFF\xFE";
    for (const char c : ascii) text += {c, 0};
    return text;
}

const char* const no_type = "(DOCTYPE) не допускается (строка ";

} // namespace

TEST(MGLibxml, RefusesHostileDocumentsAtOnceAndTellsWhy) {
    const TempDir dir;
    const struct {
        std::string content;
        const char* told_of_file;
        const char* told_of_text; // null: no text, since it holds zero bytes
    } rows[] = {
        {nested_entities(), no_type, no_type},
        {"<?xml version='1.0'?><?a b?><!--c-->\n<!DOCTYPE a SYSTEM 'file:///dev/zero'><a/>", no_type, no_type},
        {utf16("<!--c--><!DOCTYPE a [<!ENTITY e 'e'>]><a b='&e;'/>"), no_type, nullptr},
        {repeated(65, "<a>") + repeated(65, "</a>"), "глубокая вложенность", "глубокая вложенность"},
        {"<a" + numbered_attributes(257) + "/>", "много атрибутов", "много атрибутов"},
        {"<a" + numbered_attributes(20000) + "/>", "много атрибутов", "длинный элемент"},
        {"<a b='" + std::string(11 << 20, 'x') + "'/>", "AttValue length too long", "длинный элемент"},
        {"<a>" + repeated(5 << 20, "<b/>") + "</b>", "mismatch", "длинный документ"},
        {"<a>\n<b></a>", "mismatch: b line 2 and a (строка 2, столбец 8)", "mismatch"},
        {"<a b='\xC3\x28'/>", "xmlReadFile", "xmlReadDoc"},
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
    const std::string within = repeated(64, "<a>") + "<!--" + numbered_attributes(256) + "-->" + repeated(64, "</a>");
    EXPECT_EQ(error_text([&] { MGLibxml(within.c_str(), 0); }), "");
}

TEST(MGLibxml, OpensAndWritesRegularFilesOnly) {
    const TempDir dir;
    const std::string socket_name = dir.path("socket");
    sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
    std::strcpy(address.sun_path, socket_name.c_str());
    const int fd = socket(AF_UNIX, SOCK_STREAM, 0);
    ASSERT_EQ(bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    ASSERT_EQ(mkfifo(dir.path("fifo").c_str(), 0600), 0);
    ASSERT_EQ(mkdir(dir.path("catalog").c_str(), 0700), 0);

    MGLibxml xml;
    xml.AddDocRoot("a");
    for (const std::string& name : {socket_name, dir.path("fifo"), dir.path("catalog"), std::string("/dev/null")}) {
        SCOPED_TRACE(name);
        EXPECT_EQ(error_of([&] { MGLibxml(name.c_str()); }).err_description, "Это не обычный файл");
        EXPECT_EQ(error_of([&] { xml.SaveFile(name.c_str()); }).mess_2, "Не удалось создать файл");
    }
    close(fd);
    EXPECT_EQ(error_of([&] { MGLibxml(dir.path("none").c_str()); }).err_code, ENOENT);
    EXPECT_EQ(error_of([&] { xml.SaveFile(dir.path("none/a").c_str()); }).err_code, ENOENT);
}

TEST(MGLibxml, TakesANameByteForByte) {
    const TempDir dir;
    const auto save = [&](const std::string& name, const char* root) {
        MGLibxml xml;
        xml.AddDocRoot(root);
        xml.SaveFile(dir.path(name).c_str());
    };
    const std::vector<std::string> names = {"ab", "a%62", "a%2562", "http:%41", "x?y#z", "\xFF", "a b.gz", "-"};
    for (size_t i = 0; i < names.size(); ++i) save(names[i], ("r" + std::to_string(i)).c_str());
    for (size_t i = 0; i < names.size(); ++i) {
        SCOPED_TRACE(names[i]);
        const std::string root = "r" + std::to_string(i);
        EXPECT_EQ(dir.read(names[i]), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<" + root + "/>\n");
        const MGLibxml xml(dir.path(names[i]).c_str());
        EXPECT_EQ(xml.GetName(xml.GetRoot()), root);
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
