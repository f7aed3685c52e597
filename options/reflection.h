#pragma once

#include "platform/user.h"

/// Added to a message that a control sent to its parent and that the parent gives back to it.
inline constexpr UINT kReflected = 0x2000;

/// Gives a message that a control sent back to that control.
/// \param result  Gets the control's answer.
/// \return false if the message is none that a control sends; `result` then stays.
[[nodiscard]] bool Reflect(UINT message, WPARAM wParam, LPARAM lParam, LRESULT& result) noexcept;
