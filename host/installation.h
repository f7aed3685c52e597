#pragma once

#include <string>

namespace host {

/// For whom an installer registers the add-in.
enum class Scope { Machine, User };

/// Registers the add-in that lies beside this program, as an installer would: by the module's own
/// exports. What is there already is replaced.
/// \return false, and a sentence for the user in `error`; the registry is then as it was.
[[nodiscard]] bool RegisterAddin(Scope scope, std::string& error);

/// Takes RegisterAddin back. What is not there is no failure.
[[nodiscard]] bool UnregisterAddin(Scope scope, std::string& error);

}  // namespace host
