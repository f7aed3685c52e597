#include "platform/posix/paths.h"

#include <cerrno>
#include <cstdlib>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include "platform/posix/last_error.h"
#include "platform/posix/profile.h"

namespace platform {
namespace {

constexpr std::size_t kMaxPathUnits = 32767;

bool IsSeparator(WCHAR unit) { return unit == '\\' || unit == '/'; }
bool IsForbidden(WCHAR unit) {
    return unit < 32 || unit == '<' || unit == '>' || unit == '"' || unit == '|' || unit == '?' ||
           unit == '*' || unit == ':' || unit == '/' || unit == '\\';
}
WCHAR UpperLetter(WCHAR unit) {
    return unit >= 'a' && unit <= 'z' ? static_cast<WCHAR>(unit - 'a' + 'A') : unit;
}
bool IsDriveLetter(WCHAR unit) { return UpperLetter(unit) >= 'A' && UpperLetter(unit) <= 'Z'; }

bool HasLoneSurrogate(WideView text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] < 0xD800 || text[i] > 0xDFFF) continue;
        const bool isPair = text[i] < 0xDC00 && i + 1 < text.size() && text[i + 1] >= 0xDC00 &&
                            text[i + 1] <= 0xDFFF;
        if (!isPair) return true;
        ++i;
    }
    return false;
}

/// A path under way: the host's folder of its drive and the names below it.
struct Location {
    std::string root;  // without a slash at its end; empty for Z:
    std::vector<std::string> names;

    std::string Text() const {
        std::string text = root;
        for (const std::string& name : names) text.append("/").append(name);
        return text.empty() ? "/" : text;
    }
};

DWORD RootOf(WCHAR letter, std::string& root) {
    if (UpperLetter(letter) == 'Z') {
        root.clear();
        return ERROR_SUCCESS;
    }
    if (UpperLetter(letter) != 'C') return ERROR_PATH_NOT_FOUND;
    root = DriveFolder();
    return root.empty() ? GetLastError() : ERROR_SUCCESS;
}

/// Whether `path` lies at or below `folder`; `rest` is then what follows it.
bool IsBelow(const std::string& path, const std::string& folder, std::string& rest) {
    if (folder.empty() || path.compare(0, folder.size(), folder) != 0) return false;
    if (path.size() > folder.size() && path[folder.size()] != '/') return false;
    rest = path.substr(folder.size());
    return true;
}

/// The current folder, on C: if it lies there, else on Z:.
Location CurrentFolder() {
    Location current;
    char* text = getcwd(nullptr, 0);
    std::string path = text ? text : "/";
    std::free(text);
    std::string rest;
    if (const std::string drive = DriveFolder(); IsBelow(path, drive, rest)) {
        current.root = drive;
        path = rest;
    }
    for (std::size_t at = 0; at < path.size();) {
        const std::size_t end = std::min(path.find('/', at), path.size());
        if (end > at) current.names.push_back(path.substr(at, end - at));
        at = end + 1;
    }
    return current;
}

/// How Windows reads a name in a path of the usual form: a full stop at its end does not count, and
/// at the end of the path no full stops and blanks do.
WideView Trimmed(WideView name, bool isLast) {
    if (isLast) {
        while (!name.empty() && (name.back() == '.' || name.back() == ' ')) name.remove_suffix(1);
    } else if (name.size() > 1 && name.back() == '.' && name[name.size() - 2] != '.') {
        name.remove_suffix(1);
    }
    return name;
}

DWORD AppendName(WideView name, Location& location) {
    for (const WCHAR unit : name) {
        if (IsForbidden(unit)) return ERROR_INVALID_NAME;
    }
    location.names.push_back(ToUtf8(name));
    return ERROR_SUCCESS;
}

/// Resolves the names of `rest`, which are separated by `\` and, unless `isVerbatim`, `/`.
DWORD AppendNames(WideView rest, bool isVerbatim, Location& location) {
    const WideView separators = isVerbatim ? TEXT("\\") : TEXT("\\/");
    for (std::size_t at = 0; at < rest.size();) {
        const std::size_t end = std::min(rest.find_first_of(separators, at), rest.size());
        WideView name = rest.substr(at, end - at);
        const bool isLast = end == rest.size();
        at = end + 1;
        const bool isDots = name == TEXT(".") || name == TEXT("..");
        if (isVerbatim) {
            if (isDots) return ERROR_INVALID_NAME;
        } else if (isDots) {
            if (name.size() == 2 && !location.names.empty()) location.names.pop_back();
            continue;
        } else {
            name = Trimmed(name, isLast);
        }
        if (name.empty()) continue;
        if (const DWORD error = AppendName(name, location)) return error;
    }
    return ERROR_SUCCESS;
}

/// Finds where a path without a verbatim prefix starts; `path` keeps the rest.
DWORD StartOf(WideView& path, Location& start) {
    if (path.size() >= 2 && IsSeparator(path[0]) && IsSeparator(path[1])) {
        // Devices have the form \\.\name; there are none here.
        return path.size() > 2 && path[2] == '.' ? ERROR_FILE_NOT_FOUND : ERROR_BAD_NETPATH;
    }
    const bool hasDrive = path.size() >= 2 && IsDriveLetter(path[0]) && path[1] == ':';
    if (hasDrive) {
        if (const DWORD error = RootOf(path[0], start.root)) return error;
        path.remove_prefix(2);
    }
    if (!path.empty() && IsSeparator(path[0])) {
        if (!hasDrive) start.root = CurrentFolder().root;
        return ERROR_SUCCESS;
    }
    Location current = CurrentFolder();
    if (!hasDrive || current.root == start.root) start = std::move(current);
    return ERROR_SUCCESS;
}

DWORD VerbatimStartOf(WideView& path, Location& start) {
    path.remove_prefix(4);
    if (path.size() < 3 || !IsDriveLetter(path[0]) || path[1] != ':' || path[2] != '\\') {
        return path.substr(0, 4) == TEXT("UNC\\") ? ERROR_BAD_NETPATH : ERROR_PATH_NOT_FOUND;
    }
    if (const DWORD error = RootOf(path[0], start.root)) return error;
    path.remove_prefix(2);
    return ERROR_SUCCESS;
}

}  // namespace

DWORD ToHostPath(LPCWSTR text, std::string& host) {
    if (!text || !*text) return ERROR_PATH_NOT_FOUND;
    WideView path(text);
    if (path.size() >= kMaxPathUnits) return ERROR_FILENAME_EXCED_RANGE;
    if (HasLoneSurrogate(path)) return ERROR_INVALID_NAME;
    const bool isVerbatim = path.substr(0, 4) == TEXT("\\\\?\\");
    const bool endsInSeparator = IsSeparator(path.back());
    Location location;
    if (const DWORD error =
            isVerbatim ? VerbatimStartOf(path, location) : StartOf(path, location)) {
        return error;
    }
    if (const DWORD error = AppendNames(path, isVerbatim, location)) return error;
    host = location.Text();
    // The slash keeps a file from passing for a folder of its name.
    if (endsInSeparator && !location.names.empty()) host += '/';
    return ERROR_SUCCESS;
}

bool HostPathOf(LPCWSTR path, std::string& host) {
    const DWORD error = ToHostPath(path, host);
    if (error) SetLastError(error);
    return error == ERROR_SUCCESS;
}

bool ToWindowsName(const char* host, WideString& name) {
    name = FromUtf8(host);
    if (ToUtf8(name) != host) return false;
    for (const WCHAR unit : name) {
        if (IsForbidden(unit)) return false;
    }
    return true;
}

bool ToWindowsPath(const std::string& host, WideString& path) {
    std::string rest = host;
    path = IsBelow(host, DriveFolder(), rest) ? TEXT("C:\\") : TEXT("Z:\\");
    for (std::size_t at = 0; at < rest.size();) {
        const std::size_t end = std::min(rest.find('/', at), rest.size());
        WideString name;
        if (!ToWindowsName(rest.substr(at, end - at).c_str(), name)) return false;
        if (!name.empty()) {
            if (path.size() > 3) path += '\\';
            path += name;
        }
        at = end + 1;
    }
    return true;
}

DWORD PathError(int error, const std::string& host) {
    if (error != ENOENT) return ErrorFromErrno(error);
    std::size_t end = host.find_last_not_of('/');
    end = end == std::string::npos ? end : host.find_last_of('/', end);
    const std::string parent = end == std::string::npos || end == 0 ? "/" : host.substr(0, end);
    struct stat status {};
    const bool hasParent = stat(parent.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
    return hasParent ? ERROR_FILE_NOT_FOUND : ERROR_PATH_NOT_FOUND;
}

BOOL FailPath(const std::string& host) noexcept { return Fail(PathError(errno, host)); }

}  // namespace platform
