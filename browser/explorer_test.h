#pragma once

#include "foundation/wstring_view.h"

/// Whether a process with this title at its start is Windows' Explorer: the title is "explorer.exe"
/// or ends in "\explorer.exe", whatever the case. Nothing else is looked at.
[[nodiscard]] bool IsExplorerTitle(AUX::WStringView title) noexcept;

/// Whether this process is. Explorer loads the add-ins of the browser too, where they have no use.
[[nodiscard]] bool IsExplorer() noexcept;
