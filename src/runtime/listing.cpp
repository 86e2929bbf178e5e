// Reading directories and files piece by piece, listing by mask and by family, sorting out what isn't ready, and
// waiting for what still grows.
#include "app/mg_err.h"
#include "runtime/descriptor_io.h"
#include "runtime/mg_file.h"
#include "runtime/numbered_names.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <ctime>
#include <fcntl.h>
#include <functional>
#include <unistd.h>
#include <unordered_map>

using namespace vorma;

namespace {

// Closes the object's directory, or its sequentially read file, when the walk ends in whatever way.
template <void (MGFile::*close)()>
class Closing {
public:
    explicit Closing(MGFile& file) : file_(file) {}
    ~Closing() { (file_.*close)(); }
    Closing(const Closing&) = delete;
    Closing& operator=(const Closing&) = delete;

private:
    MGFile& file_;
};

// Calls take(name, path) for each plain file of dir whose bare name is wanted, in the directory's own order.
void for_each_file(MGFile& file, const std::string& dir, const std::function<bool(const std::string& name)>& wanted,
                   const std::function<void(const std::string& name, const std::string& path)>& take) {
    file.OpenDir(dir.c_str());
    const Closing<&MGFile::CloseDir> closing(file);
    MGErr err = error_of("GetListFilesFromDir", "Ошибка функции получения списка файлов каталога");
    while (const char* entry = file.ReadDir()) {
        const std::string name = entry;
        if (!wanted(name)) continue;
        const std::string path = file.JoinDirAndFileName(dir, entry);
        if (is_surely_file(err, path)) take(name, path);
    }
}

// The same for the names that match mask.
void for_each_file(MGFile& file, const std::string& dir, const std::string& mask, bool case_sensitive,
                   const std::function<void(const std::string& name, const std::string& path)>& take) {
    const auto matches = [&](const std::string& name) { return file.CompareMaskUtf8(name, mask, case_sensitive); };
    for_each_file(file, dir, matches, take);
}

// Judges each name before any is taken out: a judgement may throw.
template <class Judge>
void take_out(std::vector<std::string>& list, Judge&& goes) {
    std::vector<std::string> kept;
    for (const std::string& name : list)
        if (!goes(name)) kept.push_back(name);
    list = std::move(kept);
}

} // namespace

void MGFile::OpenDir(const char* dir) {
    at_edge("MGFile::OpenDir", [&] {
        MGErr err = error_of("OpenDir", "Ошибка функции открытия каталога");
        err.str_param = dir;
        CloseDir();
        m_dir = opendir(dir);
        if (!m_dir) fail_errno(err, "Ошибка открытия каталога", "opendir");
    });
}

const char* MGFile::ReadDir() {
    return at_edge("MGFile::ReadDir", [&]() -> const char* {
        MGErr err = error_of("ReadDir", "Ошибка функции чтения имен файлов из открытого каталога");
        if (!m_dir) fail(err, "Нет открытого каталога", "m_dir == NULL");
        errno = 0;
        m_dir_entry = readdir(m_dir);
        if (!m_dir_entry && errno != 0) fail_errno(err, "Ошибка чтения каталога", "readdir");
        return m_dir_entry ? m_dir_entry->d_name : nullptr;
    });
}

void MGFile::CloseDir() {
    if (m_dir) closedir(m_dir);
    m_dir = nullptr;
    m_dir_entry = nullptr;
}

void MGFile::OpenFileBuf(std::string file) {
    at_edge("MGFile::OpenFileBuf", [&] {
        MGErr err = error_of("OpenFileBuf", "Ошибка открытия файла для чтения данных");
        err.str_param = file;
        CloseFileBuf();
        m_file_handle =
            open_regular(err, file.c_str(), "Ошибка выполнения открытия файла", "open", "O_RDONLY").release();
        m_file_name = std::move(file);
    });
}

size_t MGFile::ReadFileBufEx(uint8_t* buf, size_t size) {
    return at_edge("MGFile::ReadFileBufEx", [&] {
        MGErr err = error_of("ReadFileBufEx", "Ошибка чтения данных из файла без определения размера файла");
        if (m_file_handle < 0) fail(err, "Файл не был открыт", "( m_file_handle < 0 )");
        err.num_param = static_cast<int64_t>(size);
        const ssize_t got = read_some(m_file_handle, buf, size);
        if (got < 0) fail_errno(err, "Ошибка чтения данных", "read");
        return static_cast<size_t>(got);
    });
}

void MGFile::ReadFileBuf(size_t size, std::vector<uint8_t>& data) {
    at_edge("MGFile::ReadFileBuf", [&] {
        MGErr err = error_of("ReadFileBuf", "Ошибка чтения данных из файла");
        data.clear();
        if (m_file_handle < 0) fail(err, "Файл не был открыт", "( m_file_handle < 0 )");
        err.num_param = static_cast<int64_t>(size);
        data.resize(size);
        if (read_whole(m_file_handle, data.data(), size)) return;
        data.clear();
        fail_short(err, "Ошибка чтения данных", "read");
    });
}

void MGFile::CloseFileBuf() {
    if (m_file_handle >= 0) close(m_file_handle);
    m_file_handle = -1;
    m_file_name.clear();
}

void MGFile::ReadFileVectorEx(std::string file, size_t piece, std::vector<uint8_t>& data) {
    at_edge("MGFile::ReadFileVectorEx", [&] {
        data.clear();
        OpenFileBuf(std::move(file));
        const Closing<&MGFile::CloseFileBuf> closing(*this);
        std::vector<uint8_t> buffer(piece);
        std::vector<uint8_t> whole;
        while (const size_t got = ReadFileBufEx(buffer.data(), piece))
            whole.insert(whole.end(), buffer.begin(), buffer.begin() + static_cast<ptrdiff_t>(got));
        data = std::move(whole);
    });
}

void MGFile::ReadFileStringEx(std::string file, size_t piece, std::string& text) {
    at_edge("MGFile::ReadFileStringEx", [&] {
        std::vector<uint8_t> data;
        ReadFileVectorEx(std::move(file), piece, data);
        GetUtf8StringFromBinaryExt(data, text);
    });
}

void MGFile::GetListFilesFromDirExt2(std::string dir, std::string mask, bool case_sensitive,
                                     std::vector<MGFileAndSize>& list, bool full) {
    at_edge("MGFile::GetListFilesFromDirExt2", [&] {
        list.clear();
        for_each_file(*this, dir, mask, case_sensitive, [&](const std::string& name, const std::string& path) {
            const std::string& shown = full ? path : name;
            list.push_back({shown, static_cast<uint64_t>(SizeFile(path.c_str())), MakeCrc32Ext(shown)});
        });
    });
}

void MGFile::GetListFilesFromDirExt(std::string dir, std::string mask, bool case_sensitive,
                                    std::vector<std::string>& list, bool full) {
    at_edge("MGFile::GetListFilesFromDirExt", [&] {
        list.clear();
        for_each_file(*this, dir, mask, case_sensitive,
                      [&](const std::string& name, const std::string& path) { list.push_back(full ? path : name); });
    });
}

void MGFile::GetListFilesFromDir(std::string dir, std::string mask, bool case_sensitive,
                                 std::vector<std::string>& list) {
    GetListFilesFromDirExt(std::move(dir), std::move(mask), case_sensitive, list, false);
}

void MGFile::GetListFullFilesFromDir(std::string dir, std::string mask, bool case_sensitive,
                                     std::vector<std::string>& list) {
    GetListFilesFromDirExt(std::move(dir), std::move(mask), case_sensitive, list, true);
}

void MGFile::GetListFilesFromDirTimeout(std::string dir, std::string mask, bool case_sensitive,
                                        std::vector<std::string>& list, unsigned seconds, unsigned milliseconds) {
    at_edge("MGFile::GetListFilesFromDirTimeout", [&] {
        list.clear();
        std::vector<MGFileAndSize> before, after;
        GetListFilesFromDirExt2(dir, mask, case_sensitive, before, false);
        SleepTimeout(seconds, milliseconds);
        GetListFilesFromDirExt2(dir, mask, case_sensitive, after, false);

        std::unordered_multimap<uint32_t, const MGFileAndSize*> by_crc;
        for (const MGFileAndSize& file : after) by_crc.emplace(file.crc, &file);
        for (const MGFileAndSize& file : before) {
            const auto [first, last] = by_crc.equal_range(file.crc);
            const auto same = std::find_if(first, last, [&](const auto& row) { return row.second->name == file.name; });
            if (same != last && same->second->size == file.size) list.push_back(file.name);
        }
    });
}

void MGFile::GetListFilesFromDir(std::string dir, std::string stem, std::string ext, std::vector<std::string>& list) {
    at_edge("MGFile::GetListFilesFromDir", [&] {
        MGErr err = error_of("GetListFilesFromDir", "Ошибка функции получения списка файлов каталога");
        list.clear();
        if (is_surely_file(err, JoinDirAndFileNameExt(dir, stem.c_str(), ext.c_str()))) list.push_back(stem + ext);
        const std::vector<MGFileNumExt> copies = numbered_copies(*this, dir, stem, ext);
        for (auto copy = copies.rbegin(); copy != copies.rend(); ++copy) list.push_back(copy->name);
    });
}

void MGFile::GetListFilesFromDir(std::string dir, std::string stem, const char* ext, std::vector<std::string>& list) {
    at_edge("MGFile::GetListFilesFromDir",
            [&] { GetListFilesFromDir(std::move(dir), std::move(stem), std::string(ext), list); });
}

uint32_t MGFile::GetMaxNameNExtFromDir(std::string dir, std::string stem, std::string ext, std::string& name) {
    return at_edge("MGFile::GetMaxNameNExtFromDir", [&]() -> uint32_t {
        name.clear();
        const std::vector<MGFileNumExt> copies = numbered_copies(*this, dir, stem, ext);
        if (copies.empty()) return 0;
        name = copies.back().name;
        return copies.back().num;
    });
}

std::vector<MGFileNumExt> vorma::numbered_copies(MGFile& file, const std::string& dir, const std::string& stem,
                                                 const std::string& ext) {
    std::vector<MGFileNumExt> copies;
    // Not by a mask: a stem may hold "*" and "?" or be no UTF-8, and what is found here is what a rotation removes.
    const std::string begin = stem + "~";
    const auto number_of = [&](const std::string& name) -> uint32_t {
        if (!name.starts_with(begin) || !name.ends_with(ext)) return 0;
        const size_t no_digit = name.find_first_not_of("0123456789", begin.size());
        return std::min(no_digit, name.size()) + ext.size() < name.size() ? 0
                                                                          : file.GetNumberFromFileName(name, stem, ext);
    };
    for_each_file(
        file, dir, [&](const std::string& name) { return number_of(name) != 0; },
        [&](const std::string& name, const std::string&) {
            copies.push_back({name, number_of(name)});
        });
    std::sort(copies.begin(), copies.end(), MGFileNumExtCompare());
    return copies;
}

void MGFile::CopyListFileToListNumFile(const std::vector<std::string>& files, std::string stem, std::string ext,
                                       std::vector<MGFileNumExt>& list) {
    at_edge("MGFile::CopyListFileToListNumFile", [&] {
        list.clear();
        for (const std::string& name : files) list.push_back({name, GetNumberFromFileName(name, stem, ext)});
    });
}

uint32_t MGFile::GetMaxNumFromListNumFile(const std::vector<MGFileNumExt>& list) {
    const auto highest = std::max_element(list.begin(), list.end(), MGFileNumExtCompare());
    return highest == list.end() ? 0 : highest->num;
}

void MGFile::DelListFilesExt(std::vector<std::string>& list, const char* ext, bool case_sensitive) {
    at_edge("MGFile::DelListFilesExt",
            [&] { take_out(list, [&](const std::string& name) { return IsFileExt(name, ext, case_sensitive); }); });
}

void MGFile::DelWithoutDetachedSign(std::vector<std::string>& list, const char* ext, const std::string& dir) {
    at_edge("MGFile::DelWithoutDetachedSign", [&] {
        MGErr err = error_of("DelWithoutDetachedSign", "Ошибка поиска отсоединенных подписей");
        take_out(list, [&](const std::string& name) {
            return !is_surely_file(err, JoinDirAndFileNameExt(dir, name.c_str(), ext));
        });
    });
}

void MGFile::DelNotRenamedFiles(const std::string& dir, std::vector<std::string>& list) {
    at_edge("MGFile::DelNotRenamedFiles", [&] {
        take_out(list, [&](const std::string& name) { return !IsRenamedFile(JoinDirAndFileName(dir, name.c_str())); });
    });
}

void MGFile::DelNullSizeFilesFromList(const std::string& dir, std::vector<std::string>& list) {
    at_edge("MGFile::DelNullSizeFilesFromList", [&] {
        take_out(list,
                 [&](const std::string& name) { return SizeFile(JoinDirAndFileName(dir, name.c_str()).c_str()) == 0; });
    });
}

void MGFile::DelFilesFromDir(const std::string& dir, const std::vector<std::string>& list) {
    at_edge("MGFile::DelFilesFromDir", [&] {
        for (const std::string& name : list) RemoveFile(JoinDirAndFileName(dir, name.c_str()).c_str());
    });
}

void MGFile::DelFilesFromDirExt(const std::string& dir, const std::vector<MGFileNumExt>& list) {
    at_edge("MGFile::DelFilesFromDirExt", [&] {
        for (const MGFileNumExt& file : list) RemoveFile(JoinDirAndFileName(dir, file.name.c_str()).c_str());
    });
}

void MGFile::DelAllFilesFromDir(const std::string& dir) {
    at_edge("MGFile::DelAllFilesFromDir", [&] {
        std::vector<std::string> names;
        GetListFilesFromDir(dir, "*", true, names);
        DelFilesFromDir(dir, names);
    });
}

void MGFile::SleepTimeout(unsigned seconds, unsigned milliseconds) {
    at_edge("MGFile::SleepTimeout", [&] {
        MGErr err = error_of("MGFile::SleepTimeout", "Ошибка выполнения задержки на заданное время");
        err.num_param = seconds;
        err.uint32_param = std::min(milliseconds, 1000U);
        // A signal doesn't cut the wait short: what is left of it is waited for too.
        timespec left{static_cast<time_t>(seconds), 0};
        while (left.tv_sec + left.tv_nsec > 0 && nanosleep(&left, &left) != 0 && errno == EINTR) {
        }
        using std::chrono::steady_clock, std::chrono::microseconds;
        microseconds rest = std::chrono::milliseconds(err.uint32_param);
        const auto end = steady_clock::now() + rest;
        while (rest.count() > 0 && usleep(static_cast<useconds_t>(rest.count())) != 0) {
            if (errno != EINTR) fail_errno(err, "Ошибка функции ожидания в миллисекундах", "usleep(N*1000)");
            rest = std::chrono::duration_cast<microseconds>(end - steady_clock::now());
        }
    });
}

bool MGFile::IsFileCopiedForEnd(const std::string& file, unsigned seconds, unsigned milliseconds) {
    return at_edge("MGFile::IsFileCopiedForEnd", [&] {
        const int64_t before = SizeFile(file.c_str());
        SleepTimeout(seconds, milliseconds);
        return SizeFile(file.c_str()) == before;
    });
}
