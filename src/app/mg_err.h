// The thrown values of the system and the frame in which they travel. Every failure is an MGErr, thrown by value:
// functions return no error codes. MGExit is the orderly end of a network conversation, not an error.
// Knows nothing of the rest of the system; every file may include it. Values of one's own, and functions without
// state: any thread may use them.
#pragma once

#include <cstdint>
#include <exception>
#include <functional>
#include <string>
#include <utility>

// What failed, for the user (mess_1, mess_2) and for the log (the rest). A field that was not filled is empty or 0.
class MGErr {
public:
    std::string mess_1;    // which operation failed, in the user's language
    std::string mess_2;    // which step of it failed
    std::string func_1;    // the function that failed
    std::string func_2;    // the call that failed, or the condition that did not hold
    std::string opt_param; // the call's options as the source has them, or a second file name
    std::string str_param; // the main argument, as a rule a file name
    std::string ext_param; // further arguments
    std::string ext_2_param;
    std::string ext_3_param;
    int64_t num_param = 0; // a size or a count
    int64_t num_2_param = 0;
    int64_t num_3_param = 0;
    uint32_t uint32_param = 0; // numbers that are also worth reading in hexadecimal
    uint32_t uint32_2_param = 0;
    int32_t err_code = 0;        // errno or a library's code, 0 where there is none
    std::string err_description; // the text of err_code, of a library or of a standard exception
    bool debug_only = false;     // logged only while debug logging is on

    // Repeat suppression: CRC-32 of the four fields, filled by MGFile::IsRepeatError, and the number of times seen.
    uint32_t crc_mess_1 = 0;
    uint32_t crc_mess_2 = 0;
    uint32_t crc_func_1 = 0;
    uint32_t crc_func_2 = 0;
    uint64_t repeat_count = 0;

    // What error_of was given, until the error is thrown.
    const char* pending_func_1 = nullptr;
    const char* pending_mess_1 = nullptr;
    const char* pending_str_param = nullptr;

    // Back to the state of a new object.
    void Clear();

    // mess_1 and mess_2, each that is set in a line of its own that ends in a line feed.
    std::string GetTextString() const;
    // The technical fields that are set, one bare value a line, in a fixed order.
    std::string GetDebugString() const;
    // GetTextString, then GetDebugString: the text of every error box and of every error entry in the log.
    std::string GetString() const;
    // One line without a line feed: "mess_1 mess_2", or mess_2 alone where mess_1 is empty.
    std::string GetSyslogString() const;

    static std::string Int2String(int number);        // "%d"
    static std::string Uint32String(uint32_t number); // "%d [0x%08X]"
    static std::string Uint64String(uint64_t number); // "%lu"

    // Whether repeat suppression counts the two as one: equal CRCs and string arguments; numbers and codes may differ.
    bool RepeatCompare(MGErr other) const;

    // Diagnostic dump of the fields that are set to standard output, "err.field = value" a line.
    void Printf() const;
};

// The code of an orderly end of a network conversation.
class MGExit {
public:
    explicit MGExit(int32_t code) : code_(code) {}
    int32_t GetCode() const { return code_; }

private:
    int32_t code_;
};

// Helpers whose names others may bear too. A source file of ours says `using namespace vorma`.
namespace vorma {

// The error that an operation fills on entry. The texts must outlive it, as literals and the operation's arguments do:
// they are copied only when fail throws it. errno stays as it is.
MGErr error_of(const char* func_1, const char* mess_1, const char* str_param = nullptr);
// The text of a code of errno. Like all texts of the system that an error takes, it is in the user's language, and in
// UTF-8 whatever the charset of the locale.
std::string system_error_text(int code);
// The text that `text` gets from the C library, in the same way: of dlerror or gai_strerror. Empty for null.
std::string system_text(const std::function<const char*()>& text);
// Completes err with the failing step and throws it.
[[noreturn]] void fail(MGErr& err, const char* mess_2, const char* func_2);
// The same for a failed system call: takes errno and its text too, errno before anything else can change it.
[[noreturn]] void fail_errno(MGErr& err, const char* mess_2, const char* func_2, const char* opt_param = "");
[[noreturn]] inline void fail(MGErr&& err, const char* mess_2, const char* func_2) {
    fail(err, mess_2, func_2);
}
[[noreturn]] inline void fail_errno(MGErr&& err, const char* mess_2, const char* func_2) {
    fail_errno(err, mess_2, func_2);
}
// MGErr::RepeatCompare, in place.
bool same_error(const MGErr& a, const MGErr& b);
// Throws the MGErr into which the edge of `function` turns an exception that is not ours. Without memory for its texts
// they stand in room that is kept for that; with all of it lent, to eight errors at once, err_code alone tells ENOMEM.
// Catch by reference: a copy needs memory.
[[noreturn]] void throw_foreign(const char* function, const char* mess_2, const char* what);

// Runs body at the edge of the operation `function` (full name, "MGFile::ReadFile"): MGErr and MGExit pass unchanged,
// any other exception becomes an MGErr. Gives back what body returns.
template <class Body>
decltype(auto) at_edge(const char* function, Body&& body) {
    try {
        return std::forward<Body>(body)();
    } catch (const MGExit&) {
        throw;
    } catch (const MGErr&) {
        throw;
    } catch (const std::exception& e) {
        throw_foreign(function, "Исключение библиотеки STD", e.what());
    } catch (...) {
        throw_foreign(function, "Любое исключение", "");
    }
}

} // namespace vorma
