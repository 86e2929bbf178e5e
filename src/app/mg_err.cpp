// Text forms of MGErr, and the throw sites.
#include "app/mg_err.h"

#include <atomic>
#include <cerrno>
#include <cinttypes>
#include <clocale>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <new>

using namespace vorma;

namespace {

void add_line(std::string& text, const std::string& value) {
    if (!value.empty()) text += value + "\n";
}

void dump(const char* field, const std::string& value) {
    if (!value.empty()) std::printf("err.%s = %s\n", field, value.c_str());
}

void dump(const char* field, int64_t value) {
    if (value != 0) std::printf("err.%s = %" PRId64 "\n", field, value);
}

void dump(const char* field, uint32_t value) {
    if (value != 0) std::printf("err.%s = %u\n", field, value);
}

constexpr char foreign[] = "Непонятная ошибка";

MGErr foreign_error(const char* function, const char* mess_2, const char* what) {
    MGErr err;
    err.mess_1 = foreign;
    err.mess_2 = mess_2;
    err.func_1 = function;
    err.err_description = what;
    return err;
}

// Room for the texts of an error for which there is no memory: made beforehand, lent to one error at a time.
struct Room {
    std::string mess_1, mess_2, func_1, err_description;
    std::atomic<const MGErr*> holder = nullptr;

    Room() {
        for (std::string* text : {&mess_1, &mess_2, &func_1, &err_description}) text->reserve(96);
    }
    void exchange_texts(MGErr& err) {
        mess_1.swap(err.mess_1);
        mess_2.swap(err.mess_2);
        func_1.swap(err.func_1);
        err_description.swap(err.err_description);
    }
};
Room rooms[8];

// An error like any other to who catches it, also to one that writes into it; its room goes back with it.
class LentError : public MGErr {
public:
    LentError(const char* function, const char* step, const char* what) {
        for (Room& room : rooms) {
            const MGErr* nobody = nullptr;
            if (!room.holder.compare_exchange_strong(nobody, this)) continue;
            room.exchange_texts(*this);
            put(mess_1, foreign);
            put(mess_2, step);
            put(func_1, function);
            put(err_description, what);
            return;
        }
        err_code = ENOMEM;
    }
    ~LentError() {
        for (Room& room : rooms) {
            if (room.holder != this) continue;
            room.exchange_texts(*this);
            room.holder = nullptr;
        }
    }
    LentError(const LentError&) = delete;
    LentError& operator=(const LentError&) = delete;

private:
    static void put(std::string& text, const char* value) {
        text.clear();
        if (std::strlen(value) <= text.capacity()) text = value;
    }
};
// It takes the place of an error that could not be copied in the C++ runtime's reserve for exceptions: something larger
// would cut that into pieces, which are not joined again.
static_assert(sizeof(LentError) == sizeof(MGErr));

// While it lives, the C library gives this thread its texts in UTF-8. The language stays the locale's: a charset
// without the letters of the language would turn them into question marks before we could convert them. The locale for
// it is kept, and made anew when the process has chosen another one; one thread has it at a time.
class Utf8Texts {
public:
    Utf8Texts() : lock_(mutex) {
        const char* const chosen = std::setlocale(LC_MESSAGES, nullptr);
        if (!kept || !chosen || std::strncmp(chosen, name, sizeof name) != 0) renew(chosen ? chosen : "");
        if (kept) former_ = uselocale(kept);
    }
    ~Utf8Texts() {
        if (former_) uselocale(former_);
    }
    Utf8Texts(const Utf8Texts&) = delete;
    Utf8Texts& operator=(const Utf8Texts&) = delete;

private:
    static void renew(const char* chosen) {
        if (kept) freelocale(std::exchange(kept, locale_t{}));
        std::strncpy(name, chosen, sizeof name);
        const locale_t global = duplocale(LC_GLOBAL_LOCALE);
        kept = global ? newlocale(LC_CTYPE_MASK, "C.UTF-8", global) : locale_t{};
        if (!kept && global) freelocale(global);
    }

    static inline std::mutex mutex;
    static inline locale_t kept{};
    static inline char name[64]; // of the locale that `kept` was made for, its first bytes

    const std::lock_guard<std::mutex> lock_;
    locale_t former_{};
};

} // namespace

void MGErr::Clear() {
    *this = MGErr();
}

std::string MGErr::GetTextString() const {
    std::string text;
    add_line(text, mess_1);
    add_line(text, mess_2);
    return text;
}

std::string MGErr::GetDebugString() const {
    std::string text;
    for (const std::string* value : {&func_1, &func_2, &str_param, &opt_param, &ext_param, &ext_2_param, &ext_3_param})
        add_line(text, *value);
    for (int64_t number : {num_param, num_2_param, num_3_param})
        if (number != 0) add_line(text, Uint64String(static_cast<uint64_t>(number)));
    for (uint32_t number : {uint32_param, uint32_2_param})
        if (number != 0) add_line(text, Uint32String(number));
    if (err_code != 0) add_line(text, Int2String(err_code));
    add_line(text, err_description);
    return text;
}

std::string MGErr::GetString() const {
    return GetTextString() + GetDebugString();
}

std::string MGErr::GetSyslogString() const {
    return mess_1.empty() ? mess_2 : mess_1 + " " + mess_2;
}

std::string MGErr::Int2String(int number) {
    return std::to_string(number);
}

std::string MGErr::Uint32String(uint32_t number) {
    char text[64];
    std::snprintf(text, sizeof text, "%d [0x%08X]", static_cast<int>(number), number);
    return text;
}

std::string MGErr::Uint64String(uint64_t number) {
    return std::to_string(number);
}

bool MGErr::RepeatCompare(MGErr other) const {
    return same_error(*this, other);
}

bool vorma::same_error(const MGErr& a, const MGErr& b) {
    return a.crc_mess_1 == b.crc_mess_1 && a.crc_mess_2 == b.crc_mess_2 && a.crc_func_1 == b.crc_func_1 &&
           a.crc_func_2 == b.crc_func_2 && a.opt_param == b.opt_param && a.str_param == b.str_param &&
           a.ext_param == b.ext_param && a.ext_2_param == b.ext_2_param && a.ext_3_param == b.ext_3_param;
}

void MGErr::Printf() const {
    dump("mess_1", mess_1);
    dump("mess_2", mess_2);
    dump("func_1", func_1);
    dump("func_2", func_2);
    dump("str_param", str_param);
    dump("opt_param", opt_param);
    dump("ext_param", ext_param);
    dump("ext_2_param", ext_2_param);
    dump("ext_3_param", ext_3_param);
    dump("num_param", num_param);
    dump("num_2_param", num_2_param);
    dump("num_3_param", num_3_param);
    dump("uint32_param", uint32_param);
    dump("uint32_2_param", uint32_2_param);
    if (err_code != 0) std::printf("err.err_code = %d [0x%08X]\n", err_code, static_cast<uint32_t>(err_code));
    dump("err_description", err_description);
}

MGErr vorma::error_of(const char* func_1, const char* mess_1, const char* str_param) {
    MGErr err;
    err.pending_func_1 = func_1;
    err.pending_mess_1 = mess_1;
    err.pending_str_param = str_param;
    return err;
}

std::string vorma::system_error_text(int code) {
    char buffer[256];
    return system_text([&] { return strerror_r(code, buffer, sizeof buffer); });
}

std::string vorma::system_text(const std::function<const char*()>& text) {
    const Utf8Texts utf8;
    const char* found = text();
    return found ? found : "";
}

void vorma::fail(MGErr& err, const char* mess_2, const char* func_2) {
    if (err.pending_func_1) err.func_1 = std::exchange(err.pending_func_1, nullptr);
    if (err.pending_mess_1) err.mess_1 = std::exchange(err.pending_mess_1, nullptr);
    if (err.pending_str_param) err.str_param = std::exchange(err.pending_str_param, nullptr);
    err.mess_2 = mess_2;
    err.func_2 = func_2;
    throw err;
}

void vorma::fail_errno(MGErr& err, const char* mess_2, const char* func_2, const char* opt_param) {
    const int code = errno;
    err.err_code = code;
    err.err_description = system_error_text(code);
    if (*opt_param) err.opt_param = opt_param;
    fail(err, mess_2, func_2);
}

void vorma::throw_foreign(const char* function, const char* mess_2, const char* what) {
    try {
        throw foreign_error(function, mess_2, what);
    } catch (const std::bad_alloc&) {
        throw LentError(function, mess_2, what);
    }
}
