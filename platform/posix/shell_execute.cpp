#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/posix/desktop.h"
#include "platform/posix/faults.h"
#include "platform/posix/last_error.h"
#include "platform/posix/module_table.h"
#include "platform/posix/paths.h"
#include "platform/posix/program_start.h"
#include "platform/posix/shell_recorder.h"
#include "platform/posix/url_parts.h"
#include "platform/shell.h"

namespace platform {
namespace {

constexpr DWORD kStarted = 42;  // any value above 32 says so

WideString TextOf(LPCWSTR text) { return text ? WideString(text) : WideString(); }

/// Whether a file that cannot be run is a program nevertheless, and no document.
bool HasNameOfProgram(WideView path) {
    return path.size() > 4 && IsSameName(path.substr(path.size() - 4), TEXT(".exe"));
}

/// \return 0 or why it was not opened.
DWORD OpenPath(const ShellRequest& request, const std::string& folder) {
    std::string host;
    if (const DWORD error = ToHostPath(request.file.c_str(), host)) {
        return error <= 32 ? error : DWORD{SE_ERR_PNF};
    }
    struct stat status {};
    if (stat(host.c_str(), &status) != 0) return PathError(errno, host);
    if (S_ISDIR(status.st_mode)) return OpenOnDesktop(host);
    if (request.verb == TEXT("explore") || !S_ISREG(status.st_mode)) return SE_ERR_NOASSOC;
    if (access(host.c_str(), X_OK) == 0) {
        return StartProgram(host, ToUtf8(request.parameters), folder);
    }
    return HasNameOfProgram(request.file) ? DWORD{SE_ERR_NOASSOC} : OpenOnDesktop(host);
}

DWORD Open(const ShellRequest& request, LPCWSTR folder) {
    const bool isKnown =
        request.verb.empty() || request.verb == TEXT("open") || request.verb == TEXT("explore");
    if (!isKnown) return SE_ERR_NOASSOC;
    if (SchemeLength(request.file) > 1) return OpenOnDesktop(ToUtf8(request.file));
    std::string startFolder;
    if (folder && *folder && ToHostPath(folder, startFolder) != 0) return SE_ERR_PNF;
    return OpenPath(request, startFolder);
}

/// \return the value of the calls' HINSTANCE; sets the error code of a failure.
INT_PTR Execute(ShellRequest request, LPCWSTR folder) {
    DWORD error = 0;
    if (InjectFault(request.call)) {
        error = GetLastError();
    } else if (const std::optional<DWORD> answer = AnswerOfRecorder(request)) {
        error = *answer;
    } else {
        error = Open(request, folder);
    }
    if (error) SetLastError(error);
    return static_cast<INT_PTR>(error ? error : kStarted);
}

}  // namespace
}  // namespace platform

HINSTANCE ShellExecuteW(HWND, LPCWSTR operation, LPCWSTR file, LPCWSTR parameters, LPCWSTR folder,
                        INT) noexcept {
    using namespace platform;
    return reinterpret_cast<HINSTANCE>(Execute(
        {"ShellExecuteW", TextOf(operation), TextOf(file), TextOf(parameters), 0, {}, nullptr},
        folder));
}

BOOL ShellExecuteExW(SHELLEXECUTEINFOW* information) noexcept {
    using namespace platform;
    if (!information || information->cbSize != sizeof *information) {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    const INT_PTR result = Execute({"ShellExecuteExW",
                                    TextOf(information->lpVerb),
                                    TextOf(information->lpFile),
                                    TextOf(information->lpParameters),
                                    information->fMask,
                                    {},
                                    nullptr},
                                   information->lpDirectory);
    information->hInstApp = reinterpret_cast<HINSTANCE>(result);
    return result > 32 ? TRUE : FALSE;
}
