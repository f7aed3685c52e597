#pragma once

#include "platform/dialogs.h"
#include "platform/text.h"

namespace platform {

/// What one source of answers says.
struct SaveAnswer {
    enum class Kind { None, Cancelled, Chosen } kind = Kind::None;
    WideString path;  // as typed; empty takes the suggestion
};

/// The answer that a test has installed, if any; notes what was asked.
[[nodiscard]] SaveAnswer ScriptedAnswer(const OPENFILENAMEW& dialog);

/// Turns what was typed into the full path, with the dialog's default extension. False if it is no
/// path.
[[nodiscard]] bool CompleteSavePath(const OPENFILENAMEW& dialog, const WideString& typed,
                                    WideString& path);

/// Asks on the terminal until there is an answer; None without a terminal.
[[nodiscard]] SaveAnswer TerminalAnswer(const OPENFILENAMEW& dialog);

}  // namespace platform
