#include "runtime/mg_file.h"
#include "support/error_of.h"

#include <gtest/gtest.h>

namespace {

TEST(Numbers, AreReadAtTheStartOrRefused) {
    const std::pair<const char*, int32_t> good[] = {{nullptr, 0},    {" \r\n", 0}, {"12abc", 12},
                                                    {"\t -7 8", -7}, {"+08", 8},   {"-2147483648", INT32_MIN}};
    for (const auto& [text, number] : good) EXPECT_EQ(MGFile::StringToInt32(text), number) << text;
    for (const char* text : {"abc", "- 1", "2147483648"}) {
        const MGErr err = error_of([&] { MGFile::StringToInt32(text); });
        EXPECT_EQ(err.func_1 + " " + err.func_2 + " " + err.str_param,
                  std::string("MGFile::StringToInt32 stoi ") + text);
    }
    EXPECT_EQ(MGFile::StringToInt64("9223372036854775807"), INT64_MAX);
    EXPECT_EQ(error_of([] { MGFile::StringToInt64("9223372036854775808"); }).func_2, "stoll");

    std::string text = "10<>-2<>x";
    EXPECT_EQ(MGFile::GetNextInt32(text, "<>"), 10);
    EXPECT_EQ(MGFile::GetNextInt32(text, "<>"), -2);
    const MGErr err = error_of([&] { MGFile::GetNextInt32(text, "<>"); });
    EXPECT_EQ(err.opt_param + " " + err.str_param, "x <>");
    EXPECT_EQ(MGFile::GetUint32Format(7, "%0200u"), std::string(127, '0')); // the work area's limit
}

} // namespace
