#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/files.h"
#include "platform/posix/faults.h"
#include "platform/posix/last_error.h"
#include "platform/posix/paths.h"
#include "platform/sync.h"

namespace platform {
namespace {

constexpr UINT kNumbers = 0x10000;
constexpr std::size_t kPrefixUnits = 3;
// A folder has to leave room for its separator, `abcFFFF.tmp` and the terminator.
constexpr std::size_t kMaxFolderUnits = MAX_PATH - 14;

WideString HexText(UINT number) {
    WideString text;
    do {
        text.insert(text.begin(), TEXT("0123456789ABCDEF")[number & 0xF]);
        number >>= 4;
    } while (number);
    return text;
}

/// Makes the file if nothing has the name. \return the error code; ERROR_FILE_EXISTS is worth
/// another try.
DWORD MakeEmptyFile(const WideString& path) {
    std::string host;
    if (const DWORD error = ToHostPath(path.c_str(), host)) return error;
    const int descriptor = open(host.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (descriptor < 0) return errno == EEXIST ? DWORD{ERROR_FILE_EXISTS} : PathError(errno, host);
    close(descriptor);
    return ERROR_SUCCESS;
}

UINT FailName(DWORD error) {
    SetLastError(error);
    return 0;
}

}  // namespace
}  // namespace platform

DWORD GetTempPathW(DWORD size, LPWSTR buffer) noexcept {
    using namespace platform;
    if (InjectFault("GetTempPathW")) return 0;
    const char* chosen = std::getenv("TMPDIR");
    std::string host = chosen && *chosen == '/' ? chosen : "/tmp";
    WideString path;
    if (!ToWindowsPath(host, path) && !ToWindowsPath("/tmp", path)) return 0;
    if (path.back() != '\\') path += '\\';
    if (size <= path.size()) return static_cast<DWORD>(path.size() + 1);
    buffer[path.copy(buffer, path.size())] = 0;
    return static_cast<DWORD>(path.size());
}

UINT GetTempFileNameW(LPCWSTR folder, LPCWSTR prefix, UINT unique, LPWSTR name) noexcept {
    using namespace platform;
    if (InjectFault("GetTempFileNameW")) return 0;
    if (!folder || !name) return FailName(ERROR_INVALID_PARAMETER);
    WideString stem = folder;
    if (stem.size() > kMaxFolderUnits) return FailName(ERROR_BUFFER_OVERFLOW);
    std::string host;
    struct stat status {};
    if (ToHostPath(folder, host) != 0 || stat(host.c_str(), &status) != 0 ||
        !S_ISDIR(status.st_mode)) {
        return FailName(ERROR_DIRECTORY);
    }
    if (stem.back() != '\\' && stem.back() != '/') stem += '\\';
    if (prefix) stem += WideView(prefix).substr(0, kPrefixUnits);

    const bool makes = unique == 0;
    // Processes start at different places, so that they seldom meet.
    UINT number = makes ? GetTickCount() + static_cast<UINT>(getpid()) * 0x101 : unique;
    DWORD error = ERROR_FILE_EXISTS;
    for (UINT attempt = 0; attempt < kNumbers && error == ERROR_FILE_EXISTS; ++attempt, ++number) {
        UINT shown = number % kNumbers;
        if (makes && shown == 0) continue;
        const WideString path = stem + HexText(shown) + TEXT(".tmp");
        error = makes ? MakeEmptyFile(path) : DWORD{ERROR_SUCCESS};
        if (error) continue;
        name[path.copy(name, path.size())] = 0;
        return makes ? shown : unique;
    }
    return FailName(error);
}
