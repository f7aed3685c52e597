#include "platform/posix/named_file.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/posix/last_error.h"
#include "platform/posix/profile_folder.h"
#include "platform/scope_exit.h"

namespace platform {
namespace {

constexpr const char* kFolderLock = "lock";
constexpr const char* kPrefix = "object-";
constexpr std::size_t kMaxFileName = 255;

// An open folder that belongs to the user; with `mustBePrivate` closed to all others.
int OpenOwnFolder(const char* path, bool mustBePrivate) {
    const int folder = open(path, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (folder < 0) return -1;
    struct stat info;
    const bool isOwn = fstat(folder, &info) == 0 && info.st_uid == geteuid() &&
                       (!mustBePrivate || (info.st_mode & 077) == 0);
    if (isOwn) return folder;
    close(folder);
    errno = EACCES;
    return -1;
}

std::string RuntimeFolder() {
    const char* const session = std::getenv("XDG_RUNTIME_DIR");
    if (session && session[0] == '/') {
        const int folder = OpenOwnFolder(session, false);
        if (folder >= 0) {
            close(folder);
            return std::string(session) + "/quvada";
        }
    }
    // Not TMPDIR, which may differ between processes that have to meet.
    return "/tmp/quvada-" + std::to_string(geteuid());
}

int OpenRuntimeFolder() {
    const std::string path = RuntimeFolder();
    if (mkdir(path.c_str(), 0700) != 0 && errno != EEXIST) return -1;
    return OpenOwnFolder(path.c_str(), true);
}

int FlockRetrying(int file, int operation) {
    int result = 0;
    do {
        result = flock(file, operation);
    } while (result != 0 && errno == EINTR);
    return result;
}

/// Excludes all other processes (and threads) from changing the folder.
class FolderLock {
public:
    explicit FolderLock(int folder)
        : file_(openat(folder, kFolderLock, O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600)) {
        if (file_ >= 0 && FlockRetrying(file_, LOCK_EX) != 0) {
            close(file_);
            file_ = -1;
        }
    }
    ~FolderLock() {
        if (file_ >= 0) close(file_);
    }
    FolderLock(const FolderLock&) = delete;
    FolderLock& operator=(const FolderLock&) = delete;

    explicit operator bool() const { return file_ >= 0; }

private:
    int file_;
};

// The caller holds the folder's lock, so that a lock gained here means that nobody has the file.
bool IsAbandoned(int file) { return FlockRetrying(file, LOCK_EX | LOCK_NB) == 0; }

int OpenEntry(int folder, const char* name) {
    return openat(folder, name, O_RDWR | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK);
}

// What killed processes left would otherwise stay until its name is used again.
void RemoveAbandoned(int folder) {
    const int copy = openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    DIR* const entries = copy < 0 ? nullptr : fdopendir(copy);
    if (!entries) {
        if (copy >= 0) close(copy);
        return;
    }
    while (const dirent* const entry = readdir(entries)) {
        if (std::strncmp(entry->d_name, kPrefix, std::strlen(kPrefix)) != 0) continue;
        const int file = OpenEntry(folder, entry->d_name);
        if (file < 0) continue;
        if (IsAbandoned(file)) unlinkat(folder, entry->d_name, 0);
        close(file);
    }
    closedir(entries);
}

DWORD FolderError() { return errno == ENOSPC ? ERROR_COMMITMENT_LIMIT : ERROR_ACCESS_DENIED; }

DWORD AllocationError(int error) {
    const bool isSpace = error == ENOSPC || error == EDQUOT || error == EFBIG || error == EINVAL;
    return isSpace ? ERROR_COMMITMENT_LIMIT : ErrorFromErrno(error);
}

// Each profile is a machine of its own; its folder's identity does not depend on how it is spelt.
std::string ProfileTag() {
    const std::string folder = ProfileFolder();
    MakeFolders(folder);
    struct stat info {};
    stat(folder.c_str(), &info);
    char tag[48];
    std::snprintf(tag, sizeof tag, "%jx-%jx-", std::uintmax_t{info.st_dev},
                  std::uintmax_t{info.st_ino});
    return tag;
}

std::string Escape(const std::string& text) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    std::string escaped;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        const bool isPlain = (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') ||
                             (byte >= 'a' && byte <= 'z') || byte == '.' || byte == '-' ||
                             byte == '_';
        if (isPlain) {
            escaped += c;
        } else {
            escaped += {'%', kDigits[byte >> 4], kDigits[byte & 15]};
        }
    }
    return escaped;
}

}  // namespace

DWORD NamedFileName(LPCWSTR name, std::string& fileName) {
    WideView text(name);
    if (text.starts_with(u'\\')) return ERROR_BAD_PATHNAME;
    const bool isGlobal = text.starts_with(TEXT("Global\\"));
    const bool isLocal = text.starts_with(TEXT("Local\\"));
    if (isGlobal || isLocal) {
        text.remove_prefix(text.find(u'\\') + 1);
        if (text.empty()) return ERROR_INVALID_NAME;
    }
    if (text.find(u'\\') != WideView::npos) return ERROR_PATH_NOT_FOUND;
    const std::string utf8 = ToUtf8(text);
    // A lone surrogate would share its replacement character with others.
    if (FromUtf8(utf8) != text) return ERROR_INVALID_NAME;
    fileName = kPrefix + ProfileTag() + (isGlobal ? "g-" : "l-") + Escape(utf8);
    return fileName.size() <= kMaxFileName ? ERROR_SUCCESS : ERROR_FILENAME_EXCED_RANGE;
}

DWORD NamedFile::Create(const std::string& fileName, std::uint64_t size, bool& existed) {
    folder_ = OpenRuntimeFolder();
    if (folder_ < 0) return FolderError();
    const FolderLock lock(folder_);
    if (!lock) return FolderError();
    RemoveAbandoned(folder_);
    const DWORD opened = OpenHeld(fileName);
    existed = opened == ERROR_SUCCESS;
    return opened == ERROR_FILE_NOT_FOUND ? Make(fileName, size) : opened;
}

DWORD NamedFile::Open(const std::string& fileName) {
    folder_ = OpenRuntimeFolder();
    if (folder_ < 0) return FolderError();
    const FolderLock lock(folder_);
    return lock ? OpenHeld(fileName) : FolderError();
}

DWORD NamedFile::OpenHeld(const std::string& fileName) {
    const int file = OpenEntry(folder_, fileName.c_str());
    if (file < 0) return errno == ENOENT ? ERROR_FILE_NOT_FOUND : ERROR_ACCESS_DENIED;
    ScopeExit closeFile([file] { close(file); });
    if (IsAbandoned(file)) {
        return unlinkat(folder_, fileName.c_str(), 0) == 0 ? ERROR_FILE_NOT_FOUND
                                                           : ERROR_ACCESS_DENIED;
    }
    struct stat info;
    if (FlockRetrying(file, LOCK_SH | LOCK_NB) != 0 || fstat(file, &info) != 0 ||
        !S_ISREG(info.st_mode)) {
        return ERROR_ACCESS_DENIED;
    }
    closeFile.Release();
    file_ = file;
    size_ = static_cast<std::uint64_t>(info.st_size);
    fileName_ = fileName;
    return ERROR_SUCCESS;
}

DWORD NamedFile::Make(const std::string& fileName, std::uint64_t size) {
    if (size > static_cast<std::uint64_t>(INT64_MAX)) return ERROR_COMMITMENT_LIMIT;
    const int file =
        openat(folder_, fileName.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
    if (file < 0) return FolderError();
    int error = FlockRetrying(file, LOCK_SH | LOCK_NB) == 0 ? 0 : errno;
    while (!error) {
        error = posix_fallocate(file, 0, static_cast<off_t>(size));
        if (error != EINTR) break;
        error = 0;
    }
    if (error) {
        unlinkat(folder_, fileName.c_str(), 0);
        close(file);
        return AllocationError(error);
    }
    file_ = file;
    size_ = size;
    fileName_ = fileName;
    return ERROR_SUCCESS;
}

void NamedFile::Release() {
    if (file_ >= 0) {
        const FolderLock lock(folder_);
        // Without the folder's lock the file stays and is removed by the next who finds it.
        if (lock && IsAbandoned(file_)) unlinkat(folder_, fileName_.c_str(), 0);
        close(file_);
    }
    if (folder_ >= 0) close(folder_);
    folder_ = file_ = -1;
}

}  // namespace platform
