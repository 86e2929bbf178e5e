// Each operation of the runtime's files and of the log with each of its calls and allocations failing.
#include "support/faults.h"

#include "app/log.h"
#include "runtime/descriptor_io.h"
#include "runtime/mg_info.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

namespace {

using namespace std::string_literals;

const std::string content = "delivered", old = "what was there before";

// "from" holds what is delivered and its signature, "to" an old copy and a numbered one.
struct World {
    TempDir dir;
    MGFile file;
    MGErr err;
    MGInfo info;
    const std::string from = dir.path("from"), to = dir.path("to"), source = from + "/file.txt",
                      target = to + "/file.txt", other = to + "/other", file_name = "file.txt", ext = ".txt",
                      stem = "file", mask = "*", mode_add = "ADD_NUM", mode_replace = "REPLACE", missing = to + "/a/b",
                      text = "text of the test, long enough to be allocated", log = dir.path("log"),
                      program = "/no/such/program", words = "a<|>b", guard = "vorma-test-" + dir.path(),
                      linked = dir.path("linked"), link = linked + "/file.txt", date = "2024-12-31 23:59:59",
                      block = "a line that is long\n== a header [that is long too]\nand what follows, long as well\n";
    std::string result, second;
    std::vector<uint8_t> data = {0x41, 0x42, 0};
    std::vector<std::string> names = {"file.txt", "none.txt"};
    std::vector<MGFileAndSize> sizes;
    std::vector<MGFileNumExt> numbered = {{file_name, 1}};

    World() {
        for (const std::string& name : {from, to, linked}) std::filesystem::create_directory(name);
        dir.write("from/file.txt", content);
        dir.write("from/file.txt.p7d", "signature");
        dir.write("to/file.txt", old);
        dir.write("to/file~1.txt", "older");
        std::filesystem::create_symlink(dir.path("behind"), link);
        err.mess_1 = err.str_param = text;
        info.AddRow("row", text);
        for (MGFile* logging : {&file, &LogFileGlobal}) logging->SetLogFile(log.c_str());
        file.SetResultDir(to.c_str());
        file.SetResultFile("result");
        file.SetSignalFile(source.c_str(), other.c_str());
        file.SetPidFile(other.c_str());
    }

    const uint8_t* bytes() const { return data.data(); }

    // The contents of all files that the test knows.
    std::multiset<std::string> contents() const {
        std::multiset<std::string> all;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(dir.path()))
            if (entry.is_regular_file()) all.insert(dir.read(entry.path().lexically_relative(dir.path())));
        return all;
    }
};

using Row = Fallible<World>;
// For arguments that are taken by value: making them is the caller's affair.
#define OF_VALUES(...) OF(vorma::at_edge("arguments", [&] { __VA_ARGS__; }))

size_t failed_closes = 0; // that an operation told

// The source and the old copy are there under some name.
void expect_nothing_lost(World& w, bool done) {
    const auto all = w.contents();
    EXPECT_TRUE(all.contains(content) && all.contains(old) && all.contains("older"));
    failed_closes += !done && faults::last_point().starts_with("close");
    const std::string renamed = w.target + ".tmp";
    const bool told = w.dir.read("log").find(renamed + "\n" + w.target + "\n") != std::string::npos;
    EXPECT_TRUE(told || !std::filesystem::exists(renamed));
    if (!done) w.file.CloseFileBuf();
}

TEST(Delivery, LosesNothingWhateverFails) {
    const Row moves[] = {
        OF(w.file.CopyLongFile(w.source, w.other)),
        OF(w.file.MoveLongFile(w.source, w.other)),
        OF(w.file.MoveFile(w.source, w.other)),
        OF(w.file.CopyFile(w.source, w.other)),
        OF(w.file.RenameFile(w.target.c_str(), w.other.c_str())),
        OF(w.file.IsRenamedFile(w.target)),
        OF(w.file.ReadFileString(w.source, w.result)),
        OF_VALUES(w.file.ReadFileVectorEx(w.source, 4, w.data)),
        OF_VALUES(w.file.OpenFileBuf(w.source); w.file.ReadFileBuf(4, w.data); w.file.CloseFileBuf()),
    };
    const Row deliveries[] = {OF_VALUES(w.file.CopySameFile(w.from, w.to, w.file_name, w.result, w.mode_add, true, true,
                                                            content.size(), false, false, 0)),
                              OF_VALUES(w.file.CopySameFile(w.from, w.to, w.file_name, w.result, w.mode_add, true, true,
                                                            content.size(), false, true, 9)),
                              OF_VALUES(w.file.WriteSameFile(w.target, w.bytes(), 3, w.mode_add, false))};
    for_each_fault(moves, expect_nothing_lost);
    for_each_fault(deliveries, [](World& w, bool done) {
        expect_nothing_lost(w, done);
        EXPECT_TRUE(done || w.contents() == std::multiset({content, "signature"s, old, "older"s})) << "a stump";
    });
    const Row onto_link[] = {OF_VALUES(
        w.file.CopySameFile(w.from, w.linked, w.file_name, w.result, w.mode_replace, true, false, 0, false, false, 0))};
    for_each_fault(onto_link, [](World& w, bool) { EXPECT_TRUE(std::filesystem::is_symlink(w.link)); });
    EXPECT_EQ(failed_closes, 9U); // one for each file that is written above
}

// Until the bytes themselves are written, the old ones stand.
TEST(Overwriting, KeepsTheOldContentOnAFullDisk) {
    const Row rows[] = {{"overwrite_file", [](World& w) {
                             const auto* data = reinterpret_cast<const uint8_t*>(content.data());
                             MGErr err = vorma::error_of("overwrite_file", "");
                             const char* failed = vorma::overwrite_file(w.target.c_str(), data, content.size());
                             if (failed) vorma::fail_errno(err, "", failed);
                         }}};
    for_each_fault(rows, [](World& w, bool done) {
        const std::string point = faults::last_point();
        const bool begun = point.starts_with("write") || point.starts_with("ftruncate") || point.starts_with("close");
        EXPECT_TRUE(w.dir.read("to/file.txt") == (done ? content : old) || (begun && !done)) << point;
    });
}

// Two errors at once: also without memory each has its texts, and who writes into one writes into no other.
void fail_twice(World& w) {
    const auto operation = [&] { vorma::at_edge("MGFile::Operation", [&] { w.data = std::vector<uint8_t>(1000); }); };
    try {
        operation();
    } catch (MGErr& first) {
        first.mess_1[0] = '!';
        try {
            operation();
        } catch (const MGErr& second) {
            EXPECT_TRUE(second.mess_1 == "Непонятная ошибка" && second.func_1 == "MGFile::Operation");
        }
        throw;
    }
}

TEST(FilesAndText, LeaveNothingBehindWhateverFails) {
    const Row rows[] = {
        OF(fail_twice(w)),
        OF(w.file.WriteFile(w.other.c_str(), w.bytes(), 3)),
        OF(w.file.AddFile(w.other.c_str(), w.bytes(), 3)),
        OF(w.file.IfNotExistMakeDirRecursive(w.missing)),
        OF(w.file.IfIsFileDelIt(w.other)),
        OF(w.file.MakeDir(w.other.c_str()); w.file.RemoveDir(w.other.c_str())),
        OF_VALUES(w.file.GetEnv("PATH", w.result)),
        OF_VALUES(w.file.WriteFile(w.other.c_str(), w.bytes(), 3); w.file.ReadFileStringEx(w.other, 2, w.result)),
        OF(w.file.GetNumProc(w.source)),
        OF(w.file.DelFilesFromDirExt(w.to, w.numbered)),
        OF(w.file.TestDirOnReadAndWriteAccess(w.to)),
        OF_VALUES(w.file.GetListFilesFromDirExt2(w.to, w.mask, false, w.sizes, true)),
        OF_VALUES(w.file.GetListFilesFromDir(w.to, w.stem, w.ext, w.names)),
        OF_VALUES(w.file.GetListFilesFromDirTimeout(w.to, w.mask, true, w.names, 0, 1)),
        OF_VALUES(w.file.GetMaxNameNExtFromDir(w.to, w.stem, w.ext, w.result)),
        OF_VALUES(w.file.CopyListFileToListNumFile(w.names, w.stem, w.ext, w.numbered)),
        OF(w.file.DelWithoutDetachedSign(w.names, ".p7d", w.from)),
        OF(w.file.DelNotRenamedFiles(w.to, w.names)),
        OF(w.file.DelNullSizeFilesFromList(w.to, w.names)),
        OF(w.file.DelListFilesExt(w.names, ".txt", false)),
        OF(w.file.DelAllFilesFromDir(w.to)),
        OF_VALUES(w.file.IsFileCopiedForEnd(w.source, 0, 1)),
        OF(w.file.SetResultFileDate("a name that is long", true, ".result")),
        OF(w.file.PrintInfoInResultFile(w.info, true)),
        OF(w.file.ReadSignal(w.result, true)),
        OF(w.file.WriteSignal(w.text)),
        OF(w.file.WritePid(); w.file.DeletePid()),
        OF(w.file.SetSignalFile(w.log.c_str(), w.log.c_str()); w.file.SetPidFile(w.log.c_str())),
        OF_VALUES(w.file.ProtectionReloading(w.guard, true); is_run_program(w.guard)),
        OF(w.file.GetInputSignalFile(); w.file.GetOutputSignalFile(); w.file.GetResultFile()),
        OF_VALUES(w.file.RunExtenProgAndWaitExitCode("exit 3", false)),
        OF_VALUES(w.file.RunExtenProgNoWait(w.program, w.words)),
        OF(w.file.LoadLib("libm.so.6"); w.file.GetLibFunc("cos"); w.file.UnloadLib()),
        OF(w.file.UpperUtf8(w.text); w.file.LowerUtf8(w.text)),
        OF(w.file.CompareMaskUtf8(w.text, w.mask, false); w.file.CompareMaskUtf8(w.text, w.file_name, false)),
        OF_VALUES(w.file.SplitStringLeft(w.text, " ", w.names); w.file.SplitStringRight(w.text, " ", w.names)),
        OF_VALUES(w.file.SplitBlockOnSubStrings(w.text + "\n", w.names, true)),
        OF_VALUES(w.second = w.block; w.file.GetInfoBlockFromEnd(w.second, "==", w.result, w.result)),
        OF_VALUES(size_t pos = 0; w.file.FindSubString(w.block, pos, "[", "]", w.result, true)),
        OF_VALUES(size_t pos = 0; w.file.FindNextLine(w.block, pos, w.result)),
        OF_VALUES(w.second = w.text; w.file.StrReplaceSrcOnDstLeft(w.second, "of", w.block)),
        OF_VALUES(w.file.SplitSubStringLeft(w.block, "==", w.result, w.second)),
        OF_VALUES(w.file.DelAllSimbolsFromString(w.text, 'e'); w.file.InsertSepToString(w.text, "long", 2)),
        OF(w.file.DelBeginMaskFromLeftStr(w.text.c_str(), w.result);
           w.file.ConvertStringWithNullToBinary(w.text, w.data)),
        OF(w.file.DataToBase64(w.data, w.result); w.file.Base64ToData(w.text, w.data)),
        OF(w.file.BinToHex(w.data, w.result); w.file.String2Binary(w.result, w.data)),
        OF(w.file.GetUtf8StringFromBinaryExt(w.data, w.result)),
        OF(w.file.StringToInt32("77"); w.file.GetUint32Format(7, "%030u"); w.file.Int64toString(1L << 60)),
        OF_VALUES(w.file.StringToTime(w.date)),
        OF(w.file.GetDateAndTimeForFile(1); w.file.AddYearMonDayToDir(w.result, true, true, true)),
        OF(w.file.GetCurrentDateTimeStr(w.result, w.result, w.result, w.result); w.file.GetCurrentYear()),
        OF(w.file.DirAddArchiveDate(w.result, 1)),
        OF(w.file.SetLogFileInput(w.log.c_str()); w.file.SetDebugLogFileOutput(w.log.c_str())),
        OF(w.file.SetProfileId(w.text)),
        OF_VALUES(w.file.SplitFileNameToNameAndExt(w.text, w.result, w.second)),
    };
    for_each_fault(rows);
}

struct FullLog : World {
    FullLog() {
        dir.write("log", std::string(1025, 'x'));
        file.SetLogMaxSize(1);
        file.SetProtectRepeat(true);
        file.SetProgVersion("version\n");
    }
};

// The caller goes on, whatever fails.
TEST(Log, ThrowsNothingWhateverFails) {
    const Row rows[] = {
        OF(w.file.PrintErrInLogFile(w.err)),
        OF(w.file.PrintInfoInLogFile(w.info)),
        OF(w.file.SetDebugLog(true, true); w.file.PrintDebugLogFileInput(w.info, true)),
    };
    for_each_fault(rows, [](World&, bool done) { EXPECT_TRUE(done); });
    const Fallible<FullLog> rotation[] = {{"rotation", [](World& w) { w.file.PrintErrInLogFile(w.err); }}};
    for_each_fault(rotation, [](World& w, bool done) {
        EXPECT_TRUE(done);
        const std::string full(1025, 'x');
        EXPECT_TRUE(w.dir.read("log").starts_with(full) != (w.dir.read("log~1") == full)) << "lost";
    });
}

} // namespace
