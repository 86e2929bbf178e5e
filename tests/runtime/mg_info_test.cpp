#include "runtime/mg_info.h"

#include "runtime/mg_file.h"
#include "support/error_of.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <numeric>

namespace {

TEST(MGInfo, PrintsOneLineForEachRow) {
    MGInfo info;
    info.AddRow("unsigned long", 18446744073709551615UL);
    info.AddNumRow("\t", 7U, "Имя", "x");
    for (size_t size : {16, 17}) {
        std::vector<uint8_t> bytes(size);
        std::iota(bytes.begin(), bytes.end(), uint8_t{0xF8});
        info.AddRow("dump", bytes);
    }
    EXPECT_EQ(info.GetString(), "unsigned long: 18446744073709551615\n\t7 Имя: x\n"
                                "dump: (16) [F8 F9 FA FB FC FD FE FF 00 01 02 03 04 05 06 07]\n"
                                "dump: (17) [F8 F9 FA FB FC FD FE FF ... 01 02 03 04 05 06 07 08]\n");
}

TEST(ResultFile, StartsAnewOrGrows) {
    const TempDir dir;
    MGFile file;
    file.SetResultDir(dir.path().c_str());
    file.SetResultFileDate("list", false, ".result");
    MGInfo info;
    info.AddRow("a", 1);
    file.PrintInfoInResultFile(info, true);
    file.PrintInfoInResultFile(info, false);
    EXPECT_EQ(dir.read("list.result"), "a: 1\na: 1\n");
    file.SetResultFile("absent/list.result");
    for (int again = 0; again < 2; ++again) // the second time only ends if the first has given the mutex back
        EXPECT_EQ(error_of([&] { file.PrintInfoInResultFile(info, true); }).func_1, "AddFile");
}

} // namespace
