#pragma once

#include "platform/base.h"

namespace AUX {

/// Deletes a file, a read-only one too.
/// \return 0, or the system's error code; ERROR_PATH_NOT_FOUND for a null or empty path.
DWORD DeleteFileForced(const WCHAR* path) noexcept;

/// Deletes a folder with all that is in it, except what has a name that begins with '.', which
/// makes the folder itself stay with ERROR_DIR_NOT_EMPTY. Of a link inside it the link goes, the
/// target stays. Ends at the first error.
/// \return 0, also if there is no such folder or the path is null or empty; or the system's error
///         code.
DWORD DeleteFolderTree(const WCHAR* path) noexcept;

}  // namespace AUX
