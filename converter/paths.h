#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/text.h"

namespace converter {

/// The host's path of a path in a job; a host path such as /tmp/a.pdf counts as itself. Empty if
/// the text is no path.
std::string HostPath(const platform::WideString& path);

/// The host's path behind a `file:` address without a host name; nothing for any other text.
std::optional<std::string> PathOfFileUrl(std::string_view url);

/// The `file:` address of an absolute host path (RFC 8089).
std::string FileUrlOf(std::string_view path);

/// Whether it is an address with one of the schemes http and https.
bool IsWebUrl(std::string_view url);

/// The last part of a path.
std::string_view NameOf(std::string_view path);

/// The folder of a path, without its slash; "/" for a path in the root.
std::string FolderOf(std::string_view path);

/// The path with all links resolved; empty if there is no such file or folder.
std::string RealPath(const std::string& path);

bool IsRegularFile(const std::string& path);

/// Whether `path` lies below `folder`; both have their links resolved.
bool LiesIn(std::string_view path, std::string_view folder);

}  // namespace converter
