#include "platform/posix/program_start.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/posix/last_error.h"
#include "platform/posix/paths.h"
#include "platform/posix/started_programs.h"
#include "platform/scope_exit.h"
#include "platform/shell.h"

namespace platform {
namespace {

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

DWORD ResultOf(int error, const std::string& host) {
    switch (error) {
        case 0:
            return ERROR_SUCCESS;
        case ENOEXEC:
            return ERROR_BAD_FORMAT;
        case ENOMEM:
        case EAGAIN:
        case E2BIG:
            return SE_ERR_OOM;
        default:
            return PathError(error, host);
    }
}

}  // namespace

DWORD StartProgram(const std::string& program, const std::string& parameters,
                   const std::string& folder) {
    pid_t child = 0;
    const int error = Spawn(program, parameters, folder, child);
    if (error == 0) WatchProgram(child);
    return ResultOf(error, program);
}

}  // namespace platform
