#include "converter/run_app.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <string_view>
#include <unistd.h>

#include "converter/paths.h"

extern char** environ;

namespace converter {
namespace {

constexpr std::string_view kFileMark = "%f";

bool IsSet(const char* name) {
    const char* value = std::getenv(name);
    return value && *value;
}

/// Starts a program in a session of its own, without our input and output. 0, or the error.
int Spawn(const std::string& program, const std::vector<std::string>& arguments) {
    std::vector<char*> pointers{const_cast<char*>(program.c_str())};
    for (const std::string& argument : arguments) {
        pointers.push_back(const_cast<char*>(argument.c_str()));
    }
    pointers.push_back(nullptr);
    posix_spawn_file_actions_t files;
    posix_spawnattr_t attributes;
    posix_spawn_file_actions_init(&files);
    posix_spawnattr_init(&attributes);
    for (int fd = 0; fd < 3; ++fd) {
        posix_spawn_file_actions_addopen(&files, fd, "/dev/null", O_RDWR, 0);
    }
    sigset_t all;
    sigfillset(&all);
    posix_spawnattr_setsigdefault(&attributes, &all);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGDEF);
    pid_t pid = -1;
    const int error =
        posix_spawnp(&pid, program.c_str(), &files, &attributes, pointers.data(), environ);
    posix_spawn_file_actions_destroy(&files);
    posix_spawnattr_destroy(&attributes);
    return error;
}

}  // namespace

std::vector<std::string> MakeArguments(const std::string& parameters, const std::string& pdf) {
    std::vector<std::string> arguments;
    bool quoted = false;
    bool open = false;  // an argument has begun
    for (const char c : parameters) {
        if (c == ' ' && !quoted) {
            open = false;
            continue;
        }
        if (!open) arguments.emplace_back();
        open = true;
        if (c == '"') {
            quoted = !quoted;
        } else {
            arguments.back() += c;
        }
    }
    for (std::string& argument : arguments) {
        for (std::size_t at = argument.find(kFileMark); at != std::string::npos;
             at = argument.find(kFileMark, at + pdf.size())) {
            argument.replace(at, kFileMark.size(), pdf);
        }
    }
    return arguments;
}

Outcome StartApp(const RunApp& app, const std::string& pdf) {
    const char* noOpen = std::getenv("QUVADA_NO_OPEN");
    if (noOpen && std::string_view(noOpen) == "1") return Done{};
    if (!app.useCustomApp) {
        // Without a desktop it would be a text browser's turn, or nobody's.
        if (IsSet("DISPLAY") || IsSet("WAYLAND_DISPLAY")) (void)Spawn("xdg-open", {pdf});
        return Done{};
    }
    const std::string named = platform::ToUtf8(app.appPath);
    if (named.empty()) return Error{"No application is named to show the PDF."};
    // A bare name is looked up as the shell does; anything else is a path.
    const bool bare = named.find_first_of("\\/:") == std::string::npos;
    const std::string program = bare ? named : HostPath(app.appPath);
    const int error = program.empty()
                          ? ENOENT
                          : Spawn(program, MakeArguments(platform::ToUtf8(app.appParameters), pdf));
    if (error == 0) return Done{};
    return Error{"The application " + named + " can't be started: " + std::strerror(error) + "."};
}

}  // namespace converter
