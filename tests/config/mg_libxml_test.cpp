#include "config/error_of.h"
#include "config/mg_libxml.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>

TEST(MGLibxml, FindsElementsByNameBetweenTextAndComments) {
    const MGLibxml xml("<!--first--><!--second--><root> t <!--c--><b n='1'/> <a n='2'/>x<b n='3'/><c/></root>", 0);
    xmlNode* root = xml.GetRoot();
    EXPECT_STREQ(xml.GetName(root), "root");
    EXPECT_STREQ(xml.GetComment(), "first");
    EXPECT_STREQ(xml.GetVersion(), "1.0");
    xmlNode* b = xml.GetFirstChildren(root, "b");
    EXPECT_EQ(xml.GetNumberProp(b, "n"), 1);
    b = xml.GetNextNode(b, "b");
    EXPECT_EQ(xml.GetNumberProp(b, "n"), 3);
    EXPECT_EQ(xml.GetNextNode(b, "b"), nullptr);
    EXPECT_TRUE(xml.IsChildren(root, "c"));
    EXPECT_FALSE(xml.IsChildren(root, "d"));
    EXPECT_FALSE(xml.IsProp(b, "m"));
    EXPECT_EQ(xml.GetStringContentFromNode(root), " t  x");
}

TEST(MGLibxml, ReadsNumbersAsTheStandardTextConversionsDo) {
    const struct {
        const char* text;
        bool is_64;
        uint64_t value; // of a 32-bit number sign-extended
        bool refused;
    } rows[] = {
        {" \t+7", false, 7, false},
        {"12abc", false, 12, false},
        {"-2147483648", false, static_cast<uint64_t>(std::numeric_limits<int32_t>::min()), false},
        {"4294967295", false, 0, true},
        {"", false, 0, true},
        {"0x10", false, 0, false},
        {"18446744073709551615", true, std::numeric_limits<uint64_t>::max(), false},
        {"18446744073709551616", true, 0, true},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        MGLibxml xml;
        xmlNode* root = xml.AddDocRoot("root");
        xml.SetTextProp(root, "n", row.text);
        EXPECT_TRUE(xml.IsProp(root, "n"));
        uint64_t value = 1;
        const ErrorFields err = error_of([&] {
            value = row.is_64 ? xml.GetNumber64Prop(root, "n") : static_cast<uint64_t>(xml.GetNumberProp(root, "n"));
        });
        const ErrorFields refusal = {"Ошибка получения свойства раздела",
                                     "Свойства не содержит числовое значение",
                                     "GetNumberPropExt",
                                     row.is_64 ? "stolu" : "stoi",
                                     "n",
                                     row.text,
                                     "",
                                     "0"};
        EXPECT_EQ(err, row.refused ? refusal : ErrorFields());
        EXPECT_EQ(value, row.refused ? 1 : row.value);
    }
}

TEST(MGLibxml, WritesWhatItReads) {
    MGLibxml xml;
    xml.AddDocComment("Имя");
    xmlNode* root = xml.AddDocRoot("root");
    xml.SetNumberProp(root, "z", -5);
    xml.SetNumber64Prop(root, "a", 18446744073709551615U);
    xml.SetTextProp(xml.AddChildToNode(root, "empty"), "t", "<&\"'>\nя");
    xml.SetStringContentToNode(xml.AddChildToNode(root, "full"), "текст");
    const std::string body = "<!--Имя-->\n<root z=\"-5\" a=\"18446744073709551615\">\n"
                             "  <empty t=\"&lt;&amp;&quot;'&gt;&#10;я\"></empty>\n  <full>текст</full>\n</root>\n";
    std::string text;
    xml.SaveString(text);
    EXPECT_EQ(text, "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n" + body);

    const TempDir dir;
    xml.SaveFile(dir.path("file.xml").c_str());
    const MGLibxml again(dir.path("file.xml").c_str());
    EXPECT_STREQ(again.GetEncoding(), "UTF-8");
    EXPECT_EQ(again.GetStringProp(again.GetFirstChildren(again.GetRoot(), "empty"), "t"), "<&\"'>\nя");
}

TEST(MGLibxml, SaysWhichStepFailedAndPrintsNothing) {
    const TempDir dir;
    const std::string none = dir.path("none.xml"), saving = "Ошибка сохранения XML документа в файл";
    MGLibxml xml;
    const struct {
        std::function<void()> step;
        ErrorFields want; // without the last three fields, which stay unset
    } rows[] = {
        {[&] { MGLibxml file(none.c_str()); },
         {"Ошибка конструктора класса с чтением XML документа из файла", "Не удалось прочесть XML документ из файла",
          "MGLibxml", "xmlReadFile", none}},
        {[&] { MGLibxml text("<a", 0); },
         {"Ошибка конструктора класса с чтением XML документа из строки", "Не удалось прочесть XML документ из строки",
          "MGLibxml", "xmlReadDoc", ""}},
        {[&] { xml.GetRoot(); },
         {"Ошибка получения корневого раздела", "Не удалось найти корневой раздел", "GetRoot", "", ""}},
        {[&] { xml.SaveFile(dir.path().c_str()); },
         {saving, "Не удалось создать файл", "SaveFile", "xmlSaveFormatFileEnc", dir.path()}},
        {[&] { (xml.AddDocRoot("root"), xml).SaveFile("/dev/full"); },
         {saving, "Не удалось создать файл", "SaveFile", "xmlSaveFormatFileEnc", "/dev/full"}},
    };
    testing::internal::CaptureStderr();
    for (const auto& row : rows) {
        ErrorFields want = row.want;
        want.insert(want.end(), {"", "", "0"});
        EXPECT_EQ(error_of(row.step), want);
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}
