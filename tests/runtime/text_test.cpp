#include "runtime/mg_file.h"
#include "runtime/mg_info.h"
#include "support/bytes.h"
#include "support/error_of.h"
#include "support/temp_dir.h"

#include <clocale>
#include <cwchar>
#include <cwctype>
#include <fnmatch.h>
#include <zlib.h>

namespace {

TEST(Utf8, WalkEndsAtWhatIsNoCharacter) {
    const std::tuple<std::string, size_t, bool> rows[] = {
        {"aя€\xF0\x9F\x98\x80", 4, true},
        {"\x7F\xDF\xBF\xEF\xBF\xBF\xF7\xBF\xBF\xBF", 4, true},         // the last of each length
        {"\xC0\x80\xE0\x80\x80\xF0\x80\x80\x80\xED\xA0\x80", 4, true}, // overlong forms and a surrogate
        {"Прив\xD0", 4, false},                                        // ends inside a character
        {"a\xF8\x80\x80\x80\x80z", 1, false},
        {"a\xE2\x82zz", 1, false}, // a head without its tail
        {std::string("a\0z", 3), 1, false},
    };
    for (const auto& row : rows) {
        const std::string& text = std::get<0>(row);
        EXPECT_EQ(row, std::tuple(text, MGFile::NumberUtf8(text), MGFile::IsUtf8String(text)));
    }
}

std::string utf8(wint_t c) {
    char bytes[MB_LEN_MAX];
    std::mbstate_t state = {};
    return {bytes, std::wcrtomb(bytes, static_cast<wchar_t>(c), &state)};
}

// Every character of one to three bytes, against the C library's own case table.
TEST(Utf8, CaseIsOfLatinAndRussianLettersOnly) {
    ASSERT_TRUE(std::setlocale(LC_CTYPE, "C.UTF-8"));
    for (wint_t c = 1; c < 0x10000; ++c) {
        if (c >= 0xD800 && c < 0xE000) continue;
        const bool has_case = (c < 0x80 && std::iswalpha(c)) || (c >= L'А' && c <= L'я') || c == L'ё' || c == L'Ё';
        ASSERT_EQ(MGFile::UpperUtf8(utf8(c)), utf8(has_case ? std::towupper(c) : c)) << c;
        ASSERT_EQ(MGFile::LowerUtf8(utf8(c)), utf8(has_case ? std::towlower(c) : c)) << c;
    }
    std::setlocale(LC_CTYPE, "C");
    EXPECT_EQ(MGFile::UpperUtf8("ёлка \xFF abc"), "ЁЛКА \xFF abc");
}

// The C library's matcher knows the same two wildcards; it gets one byte for each of our characters.
TEST(Masks, AgreeWithTheCLibrary) {
    const std::vector<std::string> ours = {"a", "я", "€", "😀", "*", "*", "?"};
    const std::string plain = "abcd**?";
    std::mt19937 random(20240229);
    int matches = 0;
    for (int i = 0; i < 100000; ++i) {
        std::string text, mask, plain_text, plain_mask;
        for (size_t left = random() % 8; left > 0; --left) {
            const size_t at = random() % 4;
            text += ours[at];
            plain_text += plain[at];
        }
        for (size_t left = random() % 7; left > 0; --left) {
            const size_t at = random() % ours.size();
            mask += ours[at];
            plain_mask += plain[at];
        }
        const bool expected = fnmatch(plain_mask.c_str(), plain_text.c_str(), 0) == 0;
        ASSERT_EQ(MGFile::CompareMaskUtf8(text, mask, true), expected) << text << " against " << mask;
        matches += expected;
    }
    EXPECT_GT(matches, 5000);
}

TEST(Masks, CaseAndInvalidText) {
    const auto match = [](const char* text, const char* mask) {
        return MGFile::CompareMaskUtf8(text, mask, true)    ? "exactly"
               : MGFile::CompareMaskUtf8(text, mask, false) ? "but for case"
                                                            : "not";
    };
    EXPECT_STREQ(match("Ёлка.TXT", "ё*.txt"), "but for case");
    EXPECT_STREQ(match("a\xFFz", "a*"), "exactly");
    EXPECT_STREQ(match("abc", "ab\xFF*"), "not") << "the mask is «ab»";
    EXPECT_STREQ(match("\xD0", "?"), "not") << "half a character is none";
}

using Texts = std::vector<std::string>;

TEST(Numbers, AreReadAtTheStartOrRefused) {
    const std::pair<const char*, int32_t> good[] = {
        {nullptr, 0}, {" \r\n", 0}, {"12abc", 12}, {"\t -7 8", -7}, {"-2147483648", INT32_MIN}};
    for (const auto& [text, number] : good) EXPECT_EQ(MGFile::StringToInt32(text), number) << text;
    for (const char* text : {"abc", "- 1", "2147483648"})
        EXPECT_EQ(error_of([&] { MGFile::StringToInt32(text); }).str_param, text);
    EXPECT_EQ(error_of([] { MGFile::StringToInt64("9223372036854775808"); }).func_2, "stoll");
    EXPECT_EQ(MGFile::GetUint32Format(7, "%0200u"), std::string(127, '0')); // the work area's limit
}

TEST(TextHelpers, SplitFromEitherEnd) {
    const auto split = [](auto function, const char* text, const char* separator) {
        Texts parts = {"old"};
        function(text, separator, parts);
        return parts;
    };
    EXPECT_EQ(split(MGFile::SplitStringLeft, ".1..2", "."), (Texts{"", "1", "", "2"}));
    EXPECT_EQ(split(MGFile::SplitStringLeft, "a<|>b<|>", "<|>"), (Texts{"a", "b", ""}));
    EXPECT_EQ(split(MGFile::SplitStringRight, ".1..2", "."), (Texts{"2", "", "1"}));
    EXPECT_EQ(split(MGFile::SplitStringRight, "a<|>b<|>", "<|>"), (Texts{"", "b", "a"}));
}

TEST(TextHelpers, GiveWhatTheirNamesSay) {
    const auto changed = [](std::string text, auto change, auto... arguments) {
        change(text, arguments...);
        return text;
    };
    Texts left, right;
    MGFile::SplitLowerStringLeft("А,Б", ",", left), MGFile::SplitLowerStringRight("А,Б", ",", right);
    EXPECT_EQ(left[0] + left[1] + right[0] + right[1], "абба");
    EXPECT_EQ(Texts({changed("яма", MGFile::ShiftBeginUtf8, 2), changed("яма", MGFile::CuttingEndUtf8, 2),
                     changed("яма", MGFile::CuttingEndUtf8, 4), changed("яма", MGFile::CuttingEndIfMoreUtf8, 2),
                     changed("a/", MGFile::DirDelSlash), changed("/", MGFile::DirDelSlash),
                     changed("a\n\n", MGInfo::DelSlashN)}),
              Texts({"а", "я", "", "ям", "a", "/", "a\n"}));
    EXPECT_EQ(Texts({MGFile::Uint32toString(~0u), MGFile::Int32toString(-1), MGFile::Int16toString(-1),
                     MGInfo::Uint32StringExt(171), MGInfo::Int64String(-1), MGFile::ReceiptFileName("a", 7, ".b"),
                     MGInfo::GetDateAndTime(0)}),
              Texts({"4294967295", "-1", "-1", "171 (0x000000AB)", "-1", "a7.b", "[пусто]"}));
    EXPECT_TRUE(MGFile::IsAnsiString("a~") && MGFile::IsAnsiString(nullptr) && !MGFile::IsAnsiString("ы"));
    EXPECT_TRUE(MGFile::CompareUtf8("ЁЖ", "ёж", false) && MGFile::CompareBinary({1, 2}, {1, 2}));
    EXPECT_FALSE(MGFile::CompareUtf8("ЁЖ", "ёж", true) || MGFile::CompareBinary({1, 2}, {1, 3}));
    EXPECT_TRUE(MGFile::IsOnlyAsterisk("**") && !MGFile::IsOnlyAsterisk("*?") && !MGFile::IsOnlyAsterisk(""));
    EXPECT_TRUE(MGFile::MatchMaskWithEndStr("яма", "?а") && !MGFile::MatchMaskWithEndStr("яма", "?А"));
    std::string line, lines;
    for (size_t pos = 0; MGFile::FindNextLine("a\r\n\nb", pos, line);) lines += line + "|";
    EXPECT_EQ(lines, "a||b|");
    size_t at = 9, matched = 9;
    EXPECT_TRUE(MGFile::FindMaskWithQuestion("яма", "?а", at, matched) && at == 2 && matched == 4);
    EXPECT_TRUE(MGFile::CompareMaskWithQuestion("яма", 2, 2, "?", matched) && matched == 6);
    MGInfo info;
    info.AddNumRow("p", 1, "a", "x"), info.AddNumRow(2, "b", "y"), info.AddNumRow(3, "c", std::string("z")),
        info.AddRow("d", -1L);
    EXPECT_EQ(info.GetString(), "p1 a: x\n2 b: y\n3 c: z\nd: -1\n");
}

TEST(Paths, KeepNamesSafeAndShort) {
    // As it is given, without what a name can't hold, and cut to 5 bytes.
    for (auto [name, safe, cut] : {std::tuple<std::string, const char*, const char*>("\"%'*/:<>?\\|\x01\x1f\x7f ~",
                                                                                     "_____________\x7f ~", "_____"),
                                   {"Привет\n", "Привет_", "Пр"},
                                   {"a*\xff*bcd", "a_\xff*bcd", "a_"}}) {
        MGFile::ReplaceFileNameIllegalSimbos(name);
        EXPECT_EQ(name, safe);
        MGFile::CutFileNameUpToNChars(name, 5);
        EXPECT_EQ(name, cut);
    }
}

TEST(Paths, TryOutADirectoryAndLeaveNothingThere) {
    const TempDir dir;
    EXPECT_TRUE(MGFile::TestDirOnReadAndWriteAccess(dir.path()));
    std::filesystem::create_symlink("/dev/full", dir.path("mgfiletest.tmp"));
    EXPECT_FALSE(MGFile::TestDirOnReadAndWriteAccess(dir.path()));
    EXPECT_TRUE(std::filesystem::is_empty(dir.path()));
    std::filesystem::create_symlink("/none/of/ours", dir.path("mgfiletest.tmp"));
    EXPECT_FALSE(MGFile::TestDirOnReadAndWriteAccess(dir.path()));
    EXPECT_TRUE(std::filesystem::remove(dir.path("mgfiletest.tmp"))) << "what can't be opened stays";

    dir.write("file", "x");
    EXPECT_TRUE(MGFile::IsRenamedFile(dir.path("file")));
    dir.write("file.tmp", "another");
    EXPECT_FALSE(MGFile::IsRenamedFile(dir.path("file")));
    EXPECT_EQ(dir.read("file") + " " + dir.read("file.tmp"), "x another");
}

// Long texts, so that reading one that is gone shows.
TEST(Arguments, MayBeResultsToo) {
    const TempDir dir;
    const std::string stem = "the-stem-of-a-family", plain = stem + ".txt", copy = stem + "~2.txt";
    dir.write(plain, std::string("a text of its own\0", 18));
    dir.write(copy, "");
    MGFile file;
    Texts list = {dir.path(), stem, ".txt"};
    file.GetListFilesFromDir(list[0], list[1], list[2], list);
    EXPECT_EQ(list, (Texts{plain, copy}));
    list = {dir.path(), "the-stem-of-a-family?2*"};
    file.GetListFilesFromDir(list[0], list[1], true, list);
    EXPECT_EQ(list, Texts{copy});
    std::string text = stem;
    EXPECT_EQ(file.GetMaxNameNExtFromDir(dir.path(), text, ".txt", text), 2U);
    EXPECT_EQ(text, copy);
    file.CopySameFile(dir.path(), dir.path(), text, text, "ADD_NUM", false, false, 0, false, false, 0);
    EXPECT_EQ(text, stem + "~2~1.txt");
    text = dir.path(plain);
    file.ReadFileStringEx(text, 5, text);
    EXPECT_EQ(text, "a text of its own");
    file.OpenFileBuf(dir.path(plain));
    file.OpenFileBuf(file.m_file_name), file.CloseFileBuf();
    list = {"the first of three lines \nthe second\n the third\nthe rest"};
    MGFile::SplitBlockOnSubStrings(list[0], list, false);
    EXPECT_EQ(list, (Texts{"the first of three lines", "the second", "the third"}));
    list = {stem};
    MGFile::SplitStringLeft("1" + stem + "2", list[0].c_str(), list);
    EXPECT_EQ(list, (Texts{"1", "2"}));
    list = {stem};
    MGFile::SplitStringRight("1" + stem + "2", list[0].c_str(), list);
    EXPECT_EQ(list, (Texts{"2", "1"}));
}

TEST(TextHelpers, FindTextBetweenMarksOfOneLine) {
    const auto all_found = [](const std::string& text, const char* begin, const char* end, bool escape) {
        std::string all, found;
        for (size_t pos = 0; MGFile::FindSubString(text, pos, begin, end, found, escape);) all += found + "|";
        return all;
    };
    EXPECT_EQ(all_found("<a\n<b> <c>", "<", ">", false), "b|c|");
    EXPECT_EQ(all_found("\\<a> <b\\>c>", "<", ">", true), "b\\>c|");
    EXPECT_EQ(all_found("[[a]] [[\n]] [[b]]", "[[", "]]", false), "a|b|");
    EXPECT_EQ(all_found("a\nb.", "", ".", false), "b|");
    EXPECT_EQ(all_found("<<<\n>", "<", ">", false), "");
}

TEST(Encodings, AreThoseOfZlibAndOfTheBase64Program) {
    const TempDir dir;
    std::mt19937 random(7);
    for (size_t size : {0, 1, 2, 3, 57, 65537}) {
        const Bytes data = random_bytes(random, size);
        Bytes back = {1};
        EXPECT_EQ(MGFile::MakeCrc32Ext(data), crc32_z(0, data.data(), size)) << size;

        std::string coded = "old";
        MGFile::DataToBase64(data, coded);
        dir.write("data", text(data));
        const std::string files = dir.path("data") + " > " + dir.path("text");
        ASSERT_EQ(std::system(("base64 -w 0 " + files).c_str()), 0);
        EXPECT_EQ(coded, dir.read("text"));
        ASSERT_EQ(std::system(("base64 -w 7 " + files).c_str()), 0); // in lines
        MGFile::Base64ToData(dir.read("text"), back);
        EXPECT_EQ(back, data);
    }
    EXPECT_EQ(MGFile::MakeCrc32Lower("ПРИВЕТ, World Ё"), MGFile::MakeCrc32("привет, world ё"));

    const std::pair<std::string, std::string> rows[] = {
        {"YWJj=ZGVm", "abc"}, {std::string("YWJj\0ZGVm", 9), "abc"}, {" Y*W-J_j\xFF", "abc"}, {"YWJ", "ab"}, {"Y", ""}};
    for (const auto& [text, expected] : rows) {
        Bytes data;
        MGFile::Base64ToData(text, data);
        EXPECT_EQ(std::string(data.begin(), data.end()), expected) << text;
    }
}

TEST(Encodings, RefuseAndLeaveNothing) {
    Bytes data;
    std::string text;
    MGFile::String2Binary("0D73d6Ff", data);
    EXPECT_EQ(data, (Bytes{0x0D, 0x73, 0xD6, 0xFF}));
    error_of([&] { MGFile::String2Binary("00g0", data); });
    EXPECT_TRUE(data.empty());

    MGFile::GetUtf8StringFromBinaryExt({0xD0, 0xAF, 'z', 0}, text);
    EXPECT_EQ(text, "Яz");
    for (const Bytes& refused : {Bytes(), Bytes{'a'}, Bytes{'a', 0, 0}, Bytes{0xD0, 0}}) {
        error_of([&] { MGFile::GetUtf8StringFromBinaryExt(refused, text); });
        EXPECT_EQ(text, "");
    }
}

// Central European time, spelled out so that no time zone data are needed. Expected texts are those of date(1).
TEST(Dates, FollowTheLocalClock) {
    setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);
    tzset();
    EXPECT_EQ(MGFile::GetDateAndTime(1711846799), "2024-03-31 01:59:59");
    EXPECT_EQ(MGFile::GetDateAndTime(1711846800), "2024-03-31 03:00:00");
    EXPECT_EQ(MGFile::GetDateAndTimeForFile(1711846800), "_20240331_030000");
    const std::string long_text(64, 'x');
    EXPECT_EQ(MGFile::GetDateAndTimeFormat(1711846800, ("%d" + long_text).c_str()), "2024" + long_text);
    std::string dir = "/d";
    MGFile::DirAddArchiveDateExtTime(1711846800, dir, 42);
    EXPECT_EQ(dir, "/d2024/03/31/030000_0000002a");
    EXPECT_EQ(MGFile::GetDateAndTime(0), "");
    EXPECT_EQ(error_of([] { MGFile::GetDateAndTime(67767976233532799); }).mess_1, "Непонятная ошибка"); // year 2^31

    constexpr time_t new_year = 1704063600, hour = 3600, twice_told = 1729990800;
    for (time_t t = new_year; t < new_year + 366 * 24 * hour; t += hour) {
        if (t == twice_told || t == twice_told - hour) continue;
        ASSERT_EQ(MGFile::StringToTime(MGFile::GetDateAndTime(t)), t);
    }
}

} // namespace
