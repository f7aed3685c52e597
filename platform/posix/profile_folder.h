#pragma once

#include <string>

namespace platform {

/// The folder that holds the state of the user's machine (registry.db, drive_c/): $QUVADA_HOME,
/// else $XDG_DATA_HOME/quvada, else ~/.local/share/quvada. UTF-8, absolute, without a slash at the
/// end; it need not exist. Reads the environment on each call.
std::string ProfileFolder();

/// Makes `folder` and the missing ones above it, for the user alone. \return 0 or an errno value.
int MakeFolders(const std::string& folder);

}  // namespace platform
