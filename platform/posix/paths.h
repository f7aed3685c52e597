#pragma once

/// Windows paths over the host's file system. `C:\` is the folder `drive_c` of the profile, `Z:\`
/// is the host's root. Case counts as the host's file system has it.

#include <string>

#include "platform/text.h"

namespace platform {

/// Turns a Windows path into the host's. `/` and `\` both separate; `.` and `..` are resolved in
/// the text, never above the drive's root; full stops and blanks at the end of the path do not
/// count. Behind `\\?\` only
/// `\` separates and names stand as they are. A relative path starts at the current folder, a
/// rooted one at the current folder's drive. \return 0, or ERROR_PATH_NOT_FOUND (null, empty,
/// unknown drive), ERROR_INVALID_NAME (a character that no
///         name may hold, a lone surrogate), ERROR_BAD_NETPATH (a network name),
///         ERROR_FILENAME_EXCED_RANGE (32767 units or more).
[[nodiscard]] DWORD ToHostPath(LPCWSTR path, std::string& host);

/// As ToHostPath, but sets the thread's error code and gives false.
[[nodiscard]] bool HostPathOf(LPCWSTR path, std::string& host);

/// The code for an errno value that came of using `host`: ENOENT is ERROR_FILE_NOT_FOUND if the
/// parent folder is there, else ERROR_PATH_NOT_FOUND.
[[nodiscard]] DWORD PathError(int error, const std::string& host);

/// Sets the code for errno and `host`; gives FALSE.
BOOL FailPath(const std::string& host) noexcept;

/// Turns an absolute path of the host into Windows' form, on C: below the profile's drive_c and on
/// Z: else. \return false if a name in it is not well-formed UTF-8 or holds a character that
/// Windows' names
///         cannot; then no Windows path names the file.
[[nodiscard]] bool ToWindowsPath(const std::string& host, WideString& path);

/// UTF-8 text as a file name on Windows; false as for ToWindowsPath.
[[nodiscard]] bool ToWindowsName(const char* host, WideString& name);

}  // namespace platform
