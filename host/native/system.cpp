#include "host/system.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <stdlib.h>
#include <unistd.h>

namespace host {

std::vector<std::string> ProgramArguments(int count, char** arguments) {
    return {arguments + std::min(count, 1), arguments + count};
}

std::filesystem::path PathFromUtf8(const std::string& text) { return text; }
std::string PathToUtf8(const std::filesystem::path& path) { return path.string(); }

platform::WideString PlatformPath(const std::filesystem::path& path) {
    std::string text = "Z:" + path.string();
    std::replace(text.begin(), text.end(), '/', '\\');
    return platform::FromUtf8(text);
}

bool HasPlatformPath(const std::filesystem::path& path) {
    const std::string& text = path.native();
    return text.find('\\') == text.npos && platform::ToUtf8(platform::FromUtf8(text)) == text;
}

std::filesystem::path ProgramFolder() {
    std::error_code code;
    return std::filesystem::read_symlink("/proc/self/exe", code).parent_path();
}

bool UseProfile(const std::filesystem::path& folder, std::string& error) {
    std::error_code code;
    const std::filesystem::path absolute = std::filesystem::absolute(folder, code);
    if (!code) std::filesystem::create_directories(absolute, code);
    if (!code && !std::filesystem::is_directory(absolute, code)) {
        code = std::make_error_code(std::errc::not_a_directory);
    }
    if (code) {
        error = "the profile " + folder.string() + " cannot be used: " + code.message();
        return false;
    }
    if (setenv("QUVADA_HOME", absolute.c_str(), 1) != 0) {
        error = std::string("the profile cannot be set: ") + std::strerror(errno);
        return false;
    }
    return true;
}

platform::WideString HandOffLockPath() { return TEXT("C:\\quvada-host.lock"); }

bool IsErrorTerminal() { return isatty(STDERR_FILENO) == 1; }

}  // namespace host
