#pragma once

#include <string>

#include "platform/base.h"

namespace platform {

/// The desktop's program that opens addresses, folders and documents (xdg-open), as the host's
/// path; empty if PATH has none.
std::string DesktopOpener();

/// Hands an address or a path, in the host's form, to that program. With QUVADA_NO_OPEN=1 in the
/// environment nothing is started and that counts as done.
/// \return 0; SE_ERR_NOASSOC if there is no such program or no display to show anything on; else
/// why it did not start.
[[nodiscard]] DWORD OpenOnDesktop(const std::string& target);

}  // namespace platform
