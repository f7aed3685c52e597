#pragma once

/// What the host needs of the system that the add-in does not: paths as UTF-8, program arguments,
/// the terminal. Errors are sentences for the user.

#include <filesystem>
#include <string>
#include <vector>

#include "platform/text.h"

namespace host {

/// The program's arguments as UTF-8, without its name.
std::vector<std::string> ProgramArguments(int count, char** arguments);

std::filesystem::path PathFromUtf8(const std::string& text);
std::string PathToUtf8(const std::filesystem::path& path);

/// An absolute path as the add-in and the converter know it; natively "/tmp/a" is `Z:\tmp\a`.
platform::WideString PlatformPath(const std::filesystem::path& path);

/// Whether PlatformPath names `path` exactly. Natively a name that holds `\` or is no UTF-8 has no
/// such form.
bool HasPlatformPath(const std::filesystem::path& path);

/// The folder of the running program.
std::filesystem::path ProgramFolder();

/// Makes `folder`, created if need be, the profile of this process and of those that it starts.
/// To be called before anything of platform/ is. \return false, and `error`, if it cannot be used.
[[nodiscard]] bool UseProfile(const std::filesystem::path& folder, std::string& error);

/// The file by which hosts of one profile take turns, as a platform path. It stays when they end.
platform::WideString HandOffLockPath();

/// Whether the standard error output is a terminal that can redraw a line.
bool IsErrorTerminal();

}  // namespace host
