#pragma once

#include <optional>

#include "platform/testing.h"

namespace platform {

using testing::ShellRequest;

/// Notes a request with the test's recorder of this thread. \return what the call has to give: 0 or
/// an error; nothing if there is no recorder.
std::optional<DWORD> AnswerOfRecorder(ShellRequest& request);

}  // namespace platform
