#include "host/system.h"

#include <algorithm>
#include <shellapi.h>

#include "platform/scope_exit.h"

namespace host {

std::vector<std::string> ProgramArguments(int, char**) {
    // The arguments of main() are in the code page of the machine, which lacks most characters.
    int count = 0;
    LPWSTR* wide = CommandLineToArgvW(GetCommandLineW(), &count);
    if (!wide) return {};
    const platform::ScopeExit freed([wide]() noexcept { LocalFree(wide); });
    std::vector<std::string> arguments;
    for (int i = 1; i < count; ++i) arguments.push_back(platform::ToUtf8(wide[i]));
    return arguments;
}

std::filesystem::path PathFromUtf8(const std::string& text) { return platform::FromUtf8(text); }
std::string PathToUtf8(const std::filesystem::path& path) {
    return platform::ToUtf8(path.native());
}

platform::WideString PlatformPath(const std::filesystem::path& path) {
    return std::filesystem::path(path).make_preferred().native();
}

bool HasPlatformPath(const std::filesystem::path&) { return true; }

std::filesystem::path ProgramFolder() {
    platform::WideString path(32768, TEXT('\0'));
    const DWORD length = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    path.resize(length);
    return std::filesystem::path(path).parent_path();
}

bool UseProfile(const std::filesystem::path&, std::string& error) {
    error = "--profile is for the native build; here the settings are the current user's";
    return false;
}

platform::WideString HandOffLockPath() {
    return (std::filesystem::temp_directory_path() / "quvada-host.lock").native();
}

bool IsErrorTerminal() {
    // One that knows no control sequences is written to as if it were a file.
    const HANDLE output = GetStdHandle(STD_ERROR_HANDLE);
    DWORD mode = 0;
    return GetConsoleMode(output, &mode) &&
           SetConsoleMode(output, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
}

}  // namespace host
