#include "runtime/mg_file.h"
#include "support/error_of.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <random>
#include <zlib.h>

namespace {

using Bytes = std::vector<uint8_t>;

TEST(Encodings, AreThoseOfZlibAndOfTheBase64Program) {
    const TempDir dir;
    std::mt19937 random(7);
    for (size_t size : {0, 1, 2, 3, 57, 65537}) {
        Bytes data(size), back = {1};
        for (uint8_t& byte : data) byte = static_cast<uint8_t>(random());
        EXPECT_EQ(MGFile::MakeCrc32Ext(data), crc32_z(0, data.data(), size)) << size;

        std::string text = "old";
        MGFile::DataToBase64(data, text);
        dir.write("data", std::string(data.begin(), data.end()));
        const std::string files = dir.path("data") + " > " + dir.path("text");
        ASSERT_EQ(std::system(("base64 -w 0 " + files).c_str()), 0);
        EXPECT_EQ(text, dir.read("text"));
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

} // namespace
