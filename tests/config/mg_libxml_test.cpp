#include "config/mg_libxml.h"
#include "support/error_of.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>

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
        EXPECT_EQ(err, row.refused_by
                           ? "Ошибка получения свойства раздела\nСвойства не содержит числовое значение\n"
                             "GetNumberPropExt\n" +
                                 std::string(row.refused_by) + "\n" + row.text + (*row.text ? "\nn\n" : "n\n")
                           : "");
        EXPECT_EQ(value, row.value);
    }
}

TEST(MGLibxml, SaysWhichStepFailedAndPrintsNothing) {
    MGLibxml xml, full;
    full.AddDocRoot("root");
    const std::pair<std::function<void()>, const char*> rows[] = {
        {[] { MGLibxml file("/none"); }, "Ошибка конструктора класса с чтением XML документа из файла\n"
                                         "Не удалось прочесть XML документ из файла\nMGLibxml\nxmlReadFile\n/none\n"},
        {[] { MGLibxml text("<a", 0); }, "Ошибка конструктора класса с чтением XML документа из строки\n"
                                         "Не удалось прочесть XML документ из строки\nMGLibxml\nxmlReadDoc\n"},
        {[&] { xml.GetRoot(); }, "Ошибка получения корневого раздела\nНе удалось найти корневой раздел\nGetRoot\n"},
        {[&] { full.SaveFile("/dev/full"); }, "Ошибка сохранения XML документа в файл\nНе удалось создать файл\n"
                                              "SaveFile\nxmlSaveFormatFileEnc\n/dev/full\n"},
    };
    testing::internal::CaptureStderr();
    for (const auto& [step, text] : rows) EXPECT_EQ(error_text(step), text);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}
