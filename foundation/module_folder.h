#pragma once

#include "foundation/wstring.h"

/// The module that this code is part of. Set when the module is attached to the process, before
/// any other thread can be in it; only read afterwards.

/// Notes the module's handle and reads its folder. Called once, at the module's attachment.
/// \return false, with an empty ModuleFolder, when memory runs out.
[[nodiscard]] bool AttachModule(HINSTANCE module) noexcept;

/// Gives back what AttachModule took.
void DetachModule() noexcept;

/// The module's own folder; ends in '\\'. Empty before AttachModule.
[[nodiscard]] const AUX::WString& ModuleFolder() noexcept;

/// The module's handle; null before AttachModule.
[[nodiscard]] HINSTANCE ModuleInstance() noexcept;
