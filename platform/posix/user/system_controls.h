#pragma once

namespace platform::user {

// Each makes the classes of a family known, unless they are. The lock must be held.

/// Those that are there without a registration.
void RegisterUserClasses() noexcept;
void RegisterButton() noexcept;
void RegisterEdit() noexcept;
void RegisterStatic() noexcept;
void RegisterComboBox() noexcept;
void RegisterUpDown() noexcept;
void RegisterTabControl() noexcept;

}  // namespace platform::user
