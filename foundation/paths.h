#pragma once

#include <cstdint>

#include "foundation/status.h"
#include "foundation/wstring.h"
#include "platform/files.h"

/// Locations in the file system. A null path and an empty one are the same. Both '/' and '\\'
/// separate, except where an operation says otherwise. Any thread may call these.
namespace AUX {

/// Paths of this many characters or more need the long form.
inline constexpr std::uint32_t kLongPathUnits = 248;

/// Whether a path names something that exists. A path with a character that no name can hold
/// (`"*<>|`, a ':' or a '?' out of place) is refused without a look at the disk. Separators at the
/// end do not count. A network name that the file system cannot list is looked up by the shell. Any
/// failure, of memory too, is false.
/// \param found  May be null. Zeroed, then filled with what was found; of a drive's root the
///               attributes, and the drive letter as both names.
[[nodiscard]] bool PathExists(const WCHAR* path, WIN32_FIND_DATAW* found = nullptr) noexcept;

/// Gives the text by which the operating system takes a path: the path itself while it is shorter
/// than kLongPathUnits, else its `\\?\` form, in `scratch`, with '/' turned into '\', since that
/// form is taken as it stands. A path that is empty, has that form, or is the text of `scratch`
/// comes back unchanged; so does one whose long form finds no memory, and the system tells its
/// length.
/// \param length  Characters of the path, or negative for a terminated one.
[[nodiscard]] const WCHAR* ToLongPathForm(const WCHAR* path, WString& scratch,
                                          std::int64_t length = -1) noexcept;

/// Makes a folder and those above it that are missing. Only '\\' separates.
/// \return 0, also if they all exist; the status of ERROR_BAD_PATHNAME for a null or empty path;
///         kStatusInsufficientMemory; the first error that counts. What was made before it stays.
[[nodiscard]] Status CreateDirectoryTree(const WCHAR* path) noexcept;

/// Gives the path up to its last separator, that included: a path that ends in one is its own
/// answer. \param folder  Empty when the result is false. It may own `path`.
/// \param length  Characters of the path, or negative for a terminated one.
/// \return false if the path has no separator or memory runs out.
[[nodiscard]] bool ParentFolderOf(const WCHAR* path, WString& folder,
                                  std::int64_t length = -1) noexcept;

/// Puts a name behind a folder and resolves "." and ".." (PathCombineW). An absolute name stands
/// for itself, one that begins with '\\' starts at the folder's root.
/// \param path  Empty when the result is false. It may own an input.
/// \return false if there is nothing to combine, the path would have 260 characters or more, or
///         memory runs out.
[[nodiscard]] bool CombinePath(const WCHAR* name, const WCHAR* folder, WString& path) noexcept;

}  // namespace AUX
