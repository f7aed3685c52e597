#include <algorithm>
#include <cerrno>
#include <dirent.h>
#include <new>
#include <sys/stat.h>
#include <vector>

#include "platform/posix/faults.h"
#include "platform/posix/file_object.h"
#include "platform/posix/last_error.h"
#include "platform/posix/name_pattern.h"
#include "platform/posix/paths.h"

namespace platform {
namespace {

struct FoundName {
    std::string host;
    WideString name;
};

/// A search: the names that matched when it began, in their order by UTF-16 units. Names that
/// vanish meanwhile are left out.
class Search : public KernelObject {
public:
    static constexpr KernelObjectKind kKind = KernelObjectKind::Find;

    explicit Search(std::vector<FoundName> names) noexcept
        : KernelObject(kKind), names_(std::move(names)) {}

    /// Fills the record of the next name; false at the end.
    bool Next(WIN32_FIND_DATAW& found) noexcept;

private:
    ~Search() override = default;

    const std::vector<FoundName> names_;
    std::size_t next_ = 0;
};

bool Search::Next(WIN32_FIND_DATAW& found) noexcept {
    struct stat status {};
    while (next_ < names_.size()) {
        const FoundName& entry = names_[next_++];
        if (lstat(entry.host.c_str(), &status) != 0) continue;
        const auto size = S_ISREG(status.st_mode) ? static_cast<ULONGLONG>(status.st_size) : 0;
        found = {};
        found.dwFileAttributes = AttributesOf(status, entry.host);
        found.ftCreationTime = FileTimeOf(status.st_ctim);
        found.ftLastAccessTime = FileTimeOf(status.st_atim);
        found.ftLastWriteTime = FileTimeOf(status.st_mtim);
        found.nFileSizeHigh = static_cast<DWORD>(size >> 32);
        found.nFileSizeLow = static_cast<DWORD>(size);
        entry.name.copy(found.cFileName, std::size(found.cFileName) - 1);
        return true;
    }
    return false;
}

/// Reads the matching names of a folder. \return the error code, 0 on success.
DWORD ReadFolder(const std::string& folder, WideView pattern, bool isRoot,
                 std::vector<FoundName>& names) {
    DIR* stream = opendir(folder.c_str());
    if (!stream) return errno == ENOENT ? ERROR_PATH_NOT_FOUND : ErrorFromErrno(errno);
    // The end of the folder leaves errno as it is, and so only a fresh zero tells it from an error.
    while (const dirent* entry = (errno = 0, readdir(stream))) {
        const std::string host = entry->d_name;
        WideString name;
        if (isRoot && (host == "." || host == "..")) continue;
        if (!ToWindowsName(host.c_str(), name) || !MatchesPattern(name, pattern)) continue;
        names.push_back({folder + "/" + host, std::move(name)});
    }
    const int error = errno;
    closedir(stream);
    std::sort(names.begin(), names.end(),
              [](const FoundName& a, const FoundName& b) { return a.name < b.name; });
    return ErrorFromErrno(error);
}

/// Finds the one name that a path without `*` and `?` gives.
DWORD ReadName(LPCWSTR path, WideView last, std::vector<FoundName>& names) {
    std::string host;
    struct stat status {};
    if (const DWORD error = ToHostPath(path, host)) return error;
    if (lstat(host.c_str(), &status) != 0) return PathError(errno, host);
    names.push_back({host, WideString(last)});
    return ERROR_SUCCESS;
}

DWORD CollectNames(LPCWSTR text, std::vector<FoundName>& names) {
    if (!text || !*text) return ERROR_PATH_NOT_FOUND;
    const WideView path(text);
    const std::size_t separator = path.find_last_of(TEXT("\\/"));
    const std::size_t start = separator == WideView::npos ? 0 : separator + 1;
    WideView last = path.substr(start);
    // A folder with a separator behind it has no last name, as on Windows.
    if (last.empty()) return ERROR_FILE_NOT_FOUND;
    const bool isDriveOnly = start == 0 && last.size() == 2 && last[1] == ':';
    if (isDriveOnly) return ERROR_FILE_NOT_FOUND;
    if (last.find_first_of(TEXT("*?")) == WideView::npos) return ReadName(text, last, names);

    WideString folder(path.substr(0, start));
    if (start == 0 && last.size() > 2 && last[1] == ':') {
        folder = last.substr(0, 2);
        folder += '.';
        last.remove_prefix(2);
    }
    if (folder.empty()) folder = TEXT(".");
    std::string host;
    if (const DWORD error = ToHostPath(folder.c_str(), host)) return error;
    if (last.find_first_of(TEXT("<>|\":")) != WideView::npos) return ERROR_INVALID_NAME;
    while (host.size() > 1 && host.back() == '/') host.pop_back();
    std::string drive;
    const bool isRoot = host == "/" || (ToHostPath(TEXT("C:\\"), drive) == 0 && host == drive);
    struct stat status {};
    if (stat(host.c_str(), &status) == 0 && !S_ISDIR(status.st_mode)) return ERROR_DIRECTORY;
    if (const DWORD error = ReadFolder(host, last, isRoot, names)) return error;
    return ERROR_SUCCESS;
}

}  // namespace
}  // namespace platform

HANDLE FindFirstFileW(LPCWSTR pattern, WIN32_FIND_DATAW* found) noexcept {
    using namespace platform;
    if (InjectFault("FindFirstFileW")) return INVALID_HANDLE_VALUE;
    std::vector<FoundName> names;
    if (const DWORD error = CollectNames(pattern, names)) {
        SetLastError(error);
        return INVALID_HANDLE_VALUE;
    }
    ObjectRef<Search> search(new (std::nothrow) Search(std::move(names)));
    if (search && !search->Next(*found)) {
        SetLastError(ERROR_FILE_NOT_FOUND);
        return INVALID_HANDLE_VALUE;
    }
    const HANDLE handle = OpenHandle(std::move(search));
    return handle ? handle : INVALID_HANDLE_VALUE;
}

BOOL FindNextFileW(HANDLE handle, WIN32_FIND_DATAW* found) noexcept {
    using namespace platform;
    const ObjectRef<Search> search = FindObject<Search>(handle);
    if (!search || InjectFault("FindNextFileW")) return FALSE;
    return search->Next(*found) || Fail(ERROR_NO_MORE_FILES) ? TRUE : FALSE;
}

BOOL FindClose(HANDLE handle) noexcept {
    return platform::CloseHandleOfKind(handle, platform::KernelObjectKind::Find);
}
