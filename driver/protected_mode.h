#pragma once

#include "platform/base.h"

/// Asks the browser whether this process runs in Protected Mode. An answer of S_OK or E_NOTIMPL is
/// kept for the life of the process; after any other the next call asks again. Any thread may ask.
/// \param flag  Not 0 in Protected Mode, if the call succeeds.
/// \return what the browser said; E_NOTIMPL if it does not know the question.
HRESULT IsProtectedMode(BOOL& flag) noexcept;

/// For tests: the next call asks the browser.
void ForgetProtectedModeAnswer() noexcept;
