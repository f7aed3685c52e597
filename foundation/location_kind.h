#pragma once

#include <cstdint>

#include "foundation/wstring.h"

namespace AUX {

/// What kind of location a text is; a set of flags.
enum class LocationKind : std::uint32_t {
    None = 0,      ///< no location
    Location = 1,  ///< alone: a plain word or name
    LocalPath = 2,
    Relative = 4,
    HasScheme = 8,
};

[[nodiscard]] constexpr LocationKind operator|(LocationKind a, LocationKind b) noexcept {
    return static_cast<LocationKind>(static_cast<std::uint32_t>(a) | static_cast<std::uint32_t>(b));
}
/// Whether `kind` has the flag.
[[nodiscard]] constexpr bool HasFlag(LocationKind kind, LocationKind flag) noexcept {
    return (static_cast<std::uint32_t>(kind) & static_cast<std::uint32_t>(flag)) != 0;
}

/// Tells what kind of location a text is, without a look at the disk:
/// - Location | LocalPath: what LocalPathFromText takes;
/// - Location | Relative: begins with '.', '/' or '\' and PathIsRelativeW calls it relative;
/// - Location | HasScheme: a scheme of at most 16 characters, then `:` and two separators and
///   something that can begin a host's name, or `:` alone for the schemes that go without;
/// - Location: no scheme could be read;
/// - None: empty, blanks only, a path that is neither local nor relative, a scheme that does not
///   fit what follows it. A failure of memory too.
/// Any thread may call it.
/// \param scheme  May be null. Gets the scheme as written, or nothing. It may own `text`.
[[nodiscard]] LocationKind ClassifyLocation(const WCHAR* text, WString* scheme = nullptr) noexcept;

}  // namespace AUX
