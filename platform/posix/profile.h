#pragma once

/// What depends on the profile folder, beside the registry.

#include <string>

#include "platform/base.h"

namespace platform {

/// The host's folder behind `C:\`, in the profile folder; made for the user alone when it is first
/// asked for. Empty with the error code set if it cannot be made.
std::string DriveFolder();

/// Has `reset` called when a test changes the profile folder: for parts that keep something of it
/// open.
void OnProfileReset(void (*reset)() noexcept) noexcept;

/// Forgets the folder, then runs the functions of OnProfileReset.
void ResetProfileFolder() noexcept;

}  // namespace platform
