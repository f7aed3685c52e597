#pragma once

#include <filesystem>
#include <string>

#include "platform/modules.h"

namespace host {

/// Loads a module by its whole path, since a bare name would be looked up in other folders too.
/// \param what  What it is, for the message.
/// \return false, and a sentence for the user in `error`.
[[nodiscard]] bool LoadModule(const std::filesystem::path& path, const char* what,
                              platform::ModuleHandle& module, std::string& error);

/// The code of a failure, as messages show it.
std::string CodeText(HRESULT code);

}  // namespace host
