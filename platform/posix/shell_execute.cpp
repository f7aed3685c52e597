#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/posix/faults.h"
#include "platform/posix/last_error.h"
#include "platform/posix/paths.h"
#include "platform/posix/started_programs.h"
#include "platform/scope_exit.h"
#include "platform/shell.h"

namespace platform {
namespace {

constexpr INT_PTR kStarted = 42;  // any value above 32 says so

bool IsOpenVerb(LPCWSTR operation) {
    return !operation || !*operation || WideView(operation) == TEXT("open");
}

/// Why a file cannot be started, or 0.
DWORD ErrorOfProgram(const std::string& host) {
    struct stat status {};
    if (stat(host.c_str(), &status) != 0) return PathError(errno, host);
    const bool isProgram = S_ISREG(status.st_mode) && access(host.c_str(), X_OK) == 0;
    return isProgram ? ERROR_SUCCESS : DWORD{SE_ERR_NOASSOC};
}

/// Starts the program. \return errno's value, 0 on success.
int Spawn(const std::string& program, const std::string& parameters, const std::string& folder,
          pid_t& child) {
    posix_spawnattr_t attributes;
    posix_spawn_file_actions_t actions;
    posix_spawnattr_init(&attributes);
    posix_spawn_file_actions_init(&actions);
    const ScopeExit cleanUp([&] {
        posix_spawnattr_destroy(&attributes);
        posix_spawn_file_actions_destroy(&actions);
    });
    // It shall outlive us and our terminal, and find all signals as at a login.
    sigset_t none;
    sigset_t changed;
    sigemptyset(&none);
    sigemptyset(&changed);
    for (const int signal : {SIGPIPE, SIGXFSZ, SIGINT, SIGQUIT, SIGHUP})
        sigaddset(&changed, signal);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setsigdefault(&attributes, &changed);
    posix_spawnattr_setflags(
        &attributes,
        static_cast<short>(POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF));
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    if (!folder.empty()) posix_spawn_file_actions_addchdir_np(&actions, folder.c_str());

    std::string name = program;
    std::string text = parameters;
    char* arguments[] = {name.data(), text.empty() ? nullptr : text.data(), nullptr};
    return posix_spawn(&child, program.c_str(), &actions, &attributes, arguments, environ);
}

INT_PTR ResultOf(int error, const std::string& host) {
    switch (error) {
        case 0:
            return kStarted;
        case ENOEXEC:
            return ERROR_BAD_FORMAT;
        case ENOMEM:
        case EAGAIN:
        case E2BIG:
            return SE_ERR_OOM;
        default:
            return static_cast<INT_PTR>(PathError(error, host));
    }
}

INT_PTR Start(LPCWSTR file, LPCWSTR parameters, LPCWSTR folder) {
    std::string program;
    std::string startFolder;
    if (const DWORD error = ToHostPath(file, program)) {
        return error <= 32 ? static_cast<INT_PTR>(error) : SE_ERR_PNF;
    }
    if (folder && *folder && ToHostPath(folder, startFolder) != 0) return SE_ERR_PNF;
    if (const DWORD error = ErrorOfProgram(program)) return static_cast<INT_PTR>(error);
    pid_t child = 0;
    const std::string text = parameters ? ToUtf8(parameters) : std::string();
    const int error = Spawn(program, text, startFolder, child);
    if (error == 0) WatchProgram(child);
    return ResultOf(error, program);
}

}  // namespace
}  // namespace platform

HINSTANCE ShellExecuteW(HWND, LPCWSTR operation, LPCWSTR file, LPCWSTR parameters, LPCWSTR folder,
                        INT) noexcept {
    using namespace platform;
    INT_PTR result = SE_ERR_NOASSOC;
    if (InjectFault("ShellExecuteW")) {
        result = static_cast<INT_PTR>(GetLastError());
    } else if (IsOpenVerb(operation)) {
        result = Start(file, parameters, folder);
    }
    if (result <= 32) SetLastError(static_cast<DWORD>(result));
    return reinterpret_cast<HINSTANCE>(result);
}
