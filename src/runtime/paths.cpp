// MGFile: file names taken apart and put together, as text.
#include "app/log.h"
#include "runtime/descriptor_io.h"
#include "runtime/mg_file.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

using namespace vorma;

namespace {

// What a file name should not hold, besides control characters.
constexpr std::string_view illegal_characters = "\"%'*/:<>?\\|";

// The log tells a failure: the file now bears a name under which nobody looks for it.
bool rename_back(const std::string& renamed, const std::string& file) {
    if (rename(renamed.c_str(), file.c_str()) == 0) return true;
    try {
        MGErr err = error_of("IsRenamedFile", "Ошибка возвращения файлу его имени");
        err.str_param = renamed;
        err.ext_param = file;
        fail_errno(err, "Ошибка переименования файла", "rename");
    } catch (MGErr& err) {
        LogFileGlobal.PrintErrInLogFile(err);
    }
    return false;
}

} // namespace

std::string MGFile::GetDirFromFile(const std::string& file) {
    return at_edge("MGFile::GetDirFromFile", [&] {
        const size_t slash = file.rfind('/');
        return slash == std::string::npos ? std::string() : file.substr(0, slash);
    });
}

std::string MGFile::GetNameFromFile(const std::string& file) {
    return at_edge("MGFile::GetNameFromFile", [&] {
        const size_t slash = file.rfind('/');
        return slash == std::string::npos ? std::string() : file.substr(slash + 1);
    });
}

void MGFile::SplitFileNameToNameAndExt(std::string file, std::string& name, std::string& ext) {
    at_edge("MGFile::SplitFileNameToNameAndExt", [&] {
        const size_t dot = std::min(file.rfind('.'), file.size());
        name = file.substr(0, dot);
        ext = file.substr(dot);
    });
}

std::string MGFile::JoinDirAndFileNameExt(const std::string& dir, const char* name, const char* ext) {
    return at_edge("MGFile::JoinDirAndFileNameExt", [&] {
        std::string path = dir;
        DirAddSlash(path);
        path += name;
        path += ext;
        return path;
    });
}

void MGFile::DirDelSlash(std::string& dir) {
    if (dir.size() > 1 && dir.back() == '/') dir.pop_back();
}

bool MGFile::IsFileExt(const std::string& file, const std::string& ext, bool case_sensitive) {
    return case_sensitive ? file.ends_with(ext) : UpperUtf8(file).ends_with(UpperUtf8(ext));
}

void MGFile::IfIsFileDelIt(const std::string& file) {
    at_edge("MGFile::IfIsFileDelIt", [&] {
        MGErr err = error_of("IfIsFileDelIt", "Ошибка функции удаления файла");
        if (is_surely_file(err, file)) RemoveFile(file.c_str());
    });
}

std::string MGFile::ReceiptFileName(const char* name, unsigned num, const char* ext) {
    return at_edge("MGFile::ReceiptFileName", [&] { return std::string(name) + std::to_string(num) + ext; });
}

std::string MGFile::GetNameNExt(const char* name, unsigned num, const char* ext) {
    return at_edge("MGFile::GetNameNExt", [&] { return std::string(name) + "~" + std::to_string(num) + ext; });
}

uint32_t MGFile::GetNumberFromFileNameExt(const std::string& file, const std::string& prefix, const std::string& ext) {
    return at_edge("MGFile::GetNumberFromFileNameExt", [&] {
        const size_t around = prefix.size() + ext.size();
        return file.size() <= around ? 0 : StrToUint32(file.substr(prefix.size(), file.size() - around));
    });
}

uint32_t MGFile::GetNumberFromFileName(const std::string& file, const std::string& stem, const std::string& ext) {
    return at_edge("MGFile::GetNumberFromFileName", [&] { return GetNumberFromFileNameExt(file, stem + "~", ext); });
}

uint32_t MGFile::StrToUint32(const std::string& text) {
    const long long number = std::strtoll(text.c_str(), nullptr, 10); // at its limits, if out of range
    const bool fits = number >= 0 && number <= std::numeric_limits<uint32_t>::max();
    return fits ? static_cast<uint32_t>(number) : 0;
}

bool MGFile::DelBeginMaskFromLeftStr(std::string mask, std::string& text) {
    const bool begins = text.starts_with(mask);
    if (begins) text.erase(0, mask.size());
    return begins;
}

bool MGFile::DelBeginMaskFromLeftStr(const char* mask, std::string& text) {
    return at_edge("MGFile::DelBeginMaskFromLeftStr", [&] { return DelBeginMaskFromLeftStr(std::string(mask), text); });
}

void MGFile::ReplaceFileNameIllegalSimbos(std::string& name) {
    for (size_t pos = 0, len = 0; NextUtf8(name, pos, len);) {
        const bool control = static_cast<unsigned char>(name[pos]) < 32;
        if (control || illegal_characters.find(name[pos]) != std::string_view::npos) name[pos] = '_';
    }
}

void MGFile::CutFileNameUpToNChars(std::string& name, size_t n) {
    at_edge("MGFile::CutFileNameUpToNChars", [&] {
        if (name.size() <= n) return;
        size_t end = 0;
        for (size_t pos = 0, len = 0; NextUtf8(name, pos, len) && pos + len <= n;) end = pos + len;
        name.resize(end);
    });
}

bool MGFile::TestDirOnReadAndWriteAccess(const std::string& dir) {
    try {
        const std::string file = JoinDirAndFileName(dir, "mgfiletest.tmp");
        const std::vector<uint8_t> written = {'1', '2', '3', '4', '5', '6', '7', '8'};
        std::vector<uint8_t> read;
        FileDescriptor fd(open(file.c_str(), O_CREAT | O_RDWR | O_TRUNC | O_CLOEXEC | O_NONBLOCK, file_mode));
        if (!fd) return false; // what can't be opened is not ours to remove
        const bool kept = write_whole(fd.get(), written.data(), written.size()) && fd.finish();
        try {
            if (kept) ReadFileVector(file, read);
        } catch (const MGErr&) { // told by what was read
        }
        return unlink(file.c_str()) == 0 && read == written;
    } catch (...) {
        return false;
    }
}

bool MGFile::IsRenamedFile(const std::string& file) {
    try {
        const std::string renamed = file + ".tmp";
        struct stat taken;
        // Perhaps another file, which the rename would destroy.
        if (lstat(renamed.c_str(), &taken) == 0 || errno != ENOENT) return false;
        RenameFile(file.c_str(), renamed.c_str());
        return rename_back(renamed, file);
    } catch (...) {
        return false;
    }
}
