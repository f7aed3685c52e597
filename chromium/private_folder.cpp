#include "chromium/private_folder.h"

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <ftw.h>
#include <string_view>
#include <sys/file.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace chromium {
namespace {

constexpr std::string_view kPrefix = "quvada-browser-";
constexpr const char* kLockName = "/lock";
constexpr int kOpenFolders = 16;
constexpr std::chrono::seconds kRemoveLimit{5};

int RemoveEntry(const char* path, const struct stat*, int, struct FTW*) {
    return std::remove(path) == 0 || errno == ENOENT ? 0 : -1;
}

bool RemoveTree(const std::string& path) {
    return nftw(path.c_str(), RemoveEntry, kOpenFolders, FTW_DEPTH | FTW_PHYS) == 0 ||
           errno == ENOENT;
}

std::string TemporaryFolder() {
    const char* folder = std::getenv("TMPDIR");
    return folder && *folder ? folder : "/tmp";
}

/// Removes folders whose owner is gone: nobody holds their lock any more.
void ClearAbandoned(const std::string& parent) {
    DIR* names = opendir(parent.c_str());
    if (!names) return;
    while (const dirent* name = readdir(names)) {
        if (!std::string_view(name->d_name).starts_with(kPrefix)) continue;
        const std::string path = parent + "/" + name->d_name;
        struct stat about {};
        if (lstat(path.c_str(), &about) != 0 || !S_ISDIR(about.st_mode) ||
            about.st_uid != geteuid()) {
            continue;
        }
        const int lock = open((path + kLockName).c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW);
        if (lock >= 0 && flock(lock, LOCK_EX | LOCK_NB) == 0) RemoveTree(path);
        if (lock >= 0) close(lock);
    }
    closedir(names);
}

}  // namespace

PrivateFolder::PrivateFolder(PrivateFolder&& other) noexcept
    : path_(std::exchange(other.path_, {})), lock_(std::exchange(other.lock_, -1)) {}

PrivateFolder::~PrivateFolder() { Remove(); }

Result<PrivateFolder> PrivateFolder::Create() {
    const std::string parent = TemporaryFolder();
    ClearAbandoned(parent);
    // The name under which others look for abandoned folders comes last, when the lock is held.
    std::string path = parent + "/.quvada-new-XXXXXX";
    if (!mkdtemp(path.data())) {
        return Error{"No folder can be made in " + parent + ": " + std::strerror(errno) + "."};
    }
    PrivateFolder folder;
    folder.path_ = path;
    folder.lock_ = open((path + kLockName).c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    const std::string last = parent + "/" + std::string(kPrefix) + path.substr(path.size() - 6);
    if (folder.lock_ < 0 || flock(folder.lock_, LOCK_EX | LOCK_NB) != 0 ||
        std::rename(path.c_str(), last.c_str()) != 0) {
        return Error{"The folder " + path + " can't be set up: " + std::strerror(errno) + "."};
    }
    folder.path_ = last;
    return folder;
}

void PrivateFolder::Remove() {
    if (path_.empty()) return;
    // Helper processes of a browser outlive it by some 100 ms and may still write.
    const auto end = std::chrono::steady_clock::now() + kRemoveLimit;
    while (!RemoveTree(path_) && std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    path_.clear();
    if (lock_ >= 0) close(lock_);
    lock_ = -1;
}

}  // namespace chromium
