// Process control: the guard against a second run, pid file, signal files, external programs, the shared library.
#include "app/mg_err.h"
#include "runtime/descriptor_io.h"
#include "runtime/detached_start.h"
#include "runtime/mg_file.h"
#include "runtime/owners.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <mutex>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

using namespace vorma;

namespace {

// The abstract address of a guard: a zero byte, up to 106 bytes of the name, zero bytes up to the end of the field.
sockaddr_un guard_address(const std::string& name) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    constexpr size_t most = sizeof address.sun_path - 2;
    std::memcpy(address.sun_path + 1, name.data(), std::min(name.size(), most));
    return address;
}

// Test and taking are one bind, so two processes can't both succeed. The descriptor doesn't pass to programs that are
// started later: they would hold the guard beyond the life of this process.
void take_guard(const char* function, const std::string& name, bool release) {
    MGErr err = error_of(function, "Ошибка повторного запуска программы с одинаковым идентификатором профиля");
    err.str_param = name;
    if (name.empty()) fail(err, "Не задан идентификатор профиля", "m_socket_name.empty()");

    FileDescriptor guard(socket(PF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (!guard) fail_errno(err, "Ошибка функции установки сокета", "socket", "(PF_UNIX, SOCK_STREAM, 0)");
    const sockaddr_un address = guard_address(name);
    if (bind(guard.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        fail_errno(err, "Ошибка функции привязки сокета к адресу", "bind", "AF_UNIX");
    if (!release) guard.release(); // stays open, and nobody knows it any more: it only occupies the name
}

// While one of these lives, SIGCHLD has its default, so that its holder can wait for a child. Starts without waiting
// want the signal ignored: the last one to go does that, since it would take the child of another thread away from it.
class WaitForChild {
public:
    WaitForChild() {
        const std::lock_guard lock(mutex);
        ++holders;
        signal(SIGCHLD, SIG_DFL);
    }
    ~WaitForChild() {
        const std::lock_guard lock(mutex);
        if (--holders == 0 && std::exchange(to_ignore, false)) signal(SIGCHLD, SIG_IGN);
    }
    WaitForChild(const WaitForChild&) = delete;
    WaitForChild& operator=(const WaitForChild&) = delete;

    static void leave_ignored() {
        const std::lock_guard lock(mutex);
        to_ignore = true;
    }

private:
    static inline std::mutex mutex;
    static inline int holders = 0;
    static inline bool to_ignore = false;
};

// errno is cleared before the call: a failure need not set it.
[[noreturn]] void fail_dl(MGErr& err, const char* mess_2, const char* func_2) {
    err.err_code = errno;
    err.err_description = system_text(dlerror);
    if (err.err_description.empty()) err.err_description = "(null)";
    fail(err, mess_2, func_2);
}

} // namespace

bool vorma::start_detached(std::vector<std::string> arguments,
                           int (*execute)(const char* program, char* const arguments[])) {
    std::vector<char*> pointers; // made before the fork: the child of a process with threads must not allocate
    for (std::string& argument : arguments) pointers.push_back(argument.data());
    pointers.push_back(nullptr);

    const WaitForChild waiting;
    WaitForChild::leave_ignored();
    const pid_t child = fork();
    if (child < 0) return false;
    if (child == 0) { // lives only to leave the program behind as nobody's child
        const pid_t detached = _Fork();
        if (detached != 0) _exit(detached < 0 ? errno : 0);
        signal(SIGCHLD, SIG_DFL); // the program may want to wait for children of its own
        signal(SIGPIPE, SIG_DFL); // and to end with a pipe that nobody reads; we ignore it for our sockets' sake
        signal(SIGHUP, SIG_IGN);
        execute(pointers.front(), pointers.data());
        _exit(0); // without our exit handlers: they would give back what we still use
    }
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    errno = WEXITSTATUS(status);
    return errno == 0;
}

void protection_reloading(const std::string& name, bool release) {
    at_edge("protection_reloading", [&] { take_guard("protection_reloading", name, release); });
}

bool is_run_program(const std::string& profile_id) {
    return at_edge("is_run_program", [&] { return MGFile::IsRunProgram("VQP" + profile_id); });
}

void MGFile::ProtectionReloading(const std::string& name, bool release) {
    at_edge("MGFile::ProtectionReloading", [&] { take_guard("ProtectionReloading", name, release); });
}

void MGFile::Reloading(const std::string& name) {
    at_edge("MGFile::Reloading", [&] { ProtectionReloading(name, false); });
}

bool MGFile::IsRunProgram(const std::string& name) {
    return at_edge("MGFile::IsRunProgram", [&] {
        try {
            ProtectionReloading(name, true);
            return false;
        } catch (const MGErr&) {
            return true;
        }
    });
}

void MGFile::SetPidFile(const char* file) {
    at_edge("MGFile::SetPidFile", [&] {
        if (file) m_pid_file = file;
    });
}

void MGFile::WritePid() {
    at_edge("MGFile::WritePid", [&] {
        MGErr err = error_of("WritePid", "Ошибка записи файла с номером программы PID");
        if (m_pid_file.empty()) fail(err, "Отсутствует имя файла", "m_pid_file.empty()");
        const std::string text = std::to_string(getpid()) + "\n";
        WriteFile(m_pid_file.c_str(), reinterpret_cast<const uint8_t*>(text.data()), text.size());
    });
}

void MGFile::DeletePid() {
    at_edge("MGFile::DeletePid", [&] {
        if (!m_pid_file.empty()) IfIsFileDelIt(m_pid_file);
    });
}

void MGFile::SetSignalFile(const char* input, const char* output) {
    at_edge("MGFile::SetSignalFile", [&] {
        if (input) m_input_signal_file = input;
        if (output) m_output_signal_file = output;
    });
}

std::string MGFile::GetInputSignalFile() const {
    return at_edge("MGFile::GetInputSignalFile", [&] { return m_input_signal_file; });
}

std::string MGFile::GetOutputSignalFile() const {
    return at_edge("MGFile::GetOutputSignalFile", [&] { return m_output_signal_file; });
}

bool MGFile::WriteSignal(const std::string& text) {
    return at_edge("MGFile::WriteSignal", [&] {
        if (m_output_signal_file.empty() || text.empty()) return false;
        std::lock_guard lock(m_output_signal_mutex);
        WriteFile(m_output_signal_file.c_str(), reinterpret_cast<const uint8_t*>(text.data()), text.size());
        return true;
    });
}

bool MGFile::ReadSignal(std::string& text, bool keep) {
    return at_edge("MGFile::ReadSignal", [&] {
        if (m_input_signal_file.empty()) return false;
        {
            std::lock_guard lock(m_input_signal_mutex);
            if (!IsFile(m_input_signal_file.c_str())) return false;
            const std::string taken = m_input_signal_file + ".tmp"; // frees the name for the next signal
            RenameFile(m_input_signal_file.c_str(), taken.c_str());
            ReadFileString(taken, text);
            if (keep)
                RenameFile(taken.c_str(), m_input_signal_file.c_str());
            else
                RemoveFile(taken.c_str());
        }
        TrancatedAll(text);
        text = UpperUtf8(text);
        return true;
    });
}

bool MGFile::ReadSignal(std::string& text) {
    return ReadSignal(text, false);
}

int MGFile::RunExtenProgAndWaitExitCode(const std::string& command, bool hide) {
    return at_edge("MGFile::RunExtenProgAndWaitExitCode", [&] {
        MGErr err = error_of("RunExtenProgAndWaitExitCode", "Ошибка запуска внешней программы");
        if (!hide) err.opt_param = command;
        if (StringIsEmpty(command)) fail(err, "Не задано имя программы", "StringIsEmpty");

        const WaitForChild waiting;
        const int status = system(command.c_str());
        if (status == -1) fail_errno(err, "Ошибка функции выполнения системных команд", "system");
        if (!WIFEXITED(status)) fail(err, "Ошибка получения кода возврата командой процедуры", "!WIFEXITED(ret)");
        const int ret = WEXITSTATUS(status);
        if (ret >= 255) {
            err.err_code = ret;
            fail(err, "Ошибка кода возврата командой процедуры", "(ret < 0) || (ret >= 255)");
        }
        return ret;
    });
}

void MGFile::RunExtenProgNoWait(const std::string& program, const std::string& params) {
    at_edge("MGFile::RunExtenProgNoWait", [&] {
        MGErr err = error_of("RunExtenProgNoWait", "Ошибка запуска внешней программы");
        err.opt_param = program;
        err.str_param = params;

        std::vector<std::string> words;
        SplitStringLeft(params, "<|>", words);
        for (std::string& word : words) TrancatedAll(word);
        std::erase(words, "");
        words.insert(words.begin(), program);
        TrancatedAll(words.front());
        if (!start_detached(std::move(words), execvp)) fail_errno(err, "Ошибка запуска дочернего процесса", "fork");
    });
}

int MGFile::GetNumProc(const std::string& file) {
    return at_edge("MGFile::GetNumProc", [&] {
        MGErr err = error_of("GetNumProc", "Ошибка чтения данных из файла", file.c_str());
        const FileDescriptor fd =
            open_regular(err, file.c_str(), "Ошибка выполнения открытия файла", "open", "O_RDONLY");
        uint8_t first = 0; // what follows may be of any length
        if (read_some(fd.get(), &first, sizeof first) < 0) fail_errno(err, "Ошибка чтения данных", "read");
        return first == '0' ? 0 : first == '1' ? 1 : -1;
    });
}

void MGFile::LoadLib(const char* file) {
    at_edge("MGFile::LoadLib", [&] {
        MGErr err = error_of("LoadLibrary", "Ошибка функции загрузки внешней библиотеки");
        err.str_param = file;
        UnloadLib();
        errno = 0;
        m_lib = dlopen(file, RTLD_LAZY);
        if (!m_lib) fail_dl(err, "Ошибка подключения динамической библиотеки", "dlopen");
    });
}

void* MGFile::GetLibFunc(const char* name) {
    return at_edge("MGFile::GetLibFunc", [&] {
        MGErr err = error_of("GetLibFunc", "Ошибка получения функции из внешней библиотеки");
        err.str_param = name;
        dlerror(); // forgets an earlier failure
        errno = 0;
        // A null handle would stand for the whole process, not for "no library".
        void* function = m_lib ? dlsym(m_lib, name) : nullptr;
        if (!function) fail_dl(err, "Ошибка получения доступа к функции динамической библиотеки", "dlsym");
        return function;
    });
}

void MGFile::UnloadLib() {
    if (m_lib) dlclose(m_lib);
    m_lib = nullptr;
}
