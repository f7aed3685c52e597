#pragma once

/// Where registered type libraries stand in the registry.

#include "platform/registry.h"
#include "platform/text.h"

namespace platform::types {

/// Whose classes: the machine's, or the current user's, which go first.
enum class Owner { Machine, User };

/// The key of an owner's classes; null and an error code if it cannot be opened or made.
[[nodiscard]] LSTATUS OpenClasses(Owner owner, REGSAM access, RegistryKey& key);

/// An id in braces, its letters capital.
[[nodiscard]] WideString IdText(const GUID& id);
/// The name of a version's key: both numbers hexadecimal.
[[nodiscard]] WideString VersionText(WORD major, WORD minor);
/// The name of a language's key: hexadecimal.
[[nodiscard]] WideString LanguageText(LCID language);

/// The default value of the key at `path`; false if there is none.
[[nodiscard]] bool ReadText(HKEY key, const WideString& path, WideString& text);

}  // namespace platform::types
