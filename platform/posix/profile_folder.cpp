#include "platform/posix/profile_folder.h"

#include <cerrno>
#include <cstdlib>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {
namespace {

constexpr mode_t kUserOnly = 0700;

std::string FromEnvironment(const char* name) {
    const char* const value = std::getenv(name);
    return value ? value : "";
}

std::string HomeFolder() {
    std::string home = FromEnvironment("HOME");
    if (!home.empty()) return home;
    passwd entry;
    passwd* found = nullptr;
    char buffer[4096];
    if (getpwuid_r(geteuid(), &entry, buffer, sizeof buffer, &found) == 0 && found) {
        return found->pw_dir;
    }
    return "/";
}

std::string MakeAbsolute(std::string path) {
    if (path.front() == '/') return path;
    char* const current = getcwd(nullptr, 0);
    if (current) path = std::string(current) + '/' + path;
    std::free(current);
    return path;
}

bool IsFolder(const std::string& path) {
    struct stat info;
    return stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

}  // namespace

std::string ProfileFolder() {
    std::string folder = FromEnvironment("QUVADA_HOME");
    if (folder.empty()) {
        // The base directory specification ignores relative paths.
        const std::string data = FromEnvironment("XDG_DATA_HOME");
        folder = data.starts_with('/') ? data + "/quvada" : HomeFolder() + "/.local/share/quvada";
    }
    folder = MakeAbsolute(std::move(folder));
    while (folder.size() > 1 && folder.back() == '/') folder.pop_back();
    return folder;
}

int MakeFolders(const std::string& folder) {
    for (std::size_t end = 1; end != std::string::npos;) {
        end = folder.find('/', end);
        const std::string part = folder.substr(0, end);
        if (mkdir(part.c_str(), kUserOnly) != 0) {
            const int error = errno;
            // Where writing is refused, a folder that is there gives EROFS or EACCES.
            if (!IsFolder(part)) return error;
        }
        if (end != std::string::npos) ++end;
    }
    return 0;
}

}  // namespace platform
