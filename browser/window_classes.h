#pragma once

#include "platform/user.h"

/// The window classes of the toolbar, which belong to this module. For any thread.

/// Registers a class, unless it is registered. The system's table of classes is the guard: of two
/// threads that come at once one finds the other's.
/// \return false if it cannot be registered.
[[nodiscard]] bool RegisterWindowClass(const WNDCLASSEXW& info) noexcept;

/// The name of the band's class: made of the module's own address, so that no other module of the
/// process has it.
struct BandClassName {
    WCHAR text[32];

    BandClassName() noexcept;
};

inline constexpr WCHAR kFineToolbarClass[] = TEXT("FineToolbar");

/// Takes the classes back. Called when the module is unloaded: the system would keep them, with
/// procedures that are gone.
void UnregisterWindowClasses() noexcept;
