#pragma once

#include "platform/modules.h"
#include "platform/text.h"

namespace driver_test {

/// The folder of the modules that only tests load; ends in '\\'.
platform::WideString TestModuleFolder();

/// Loads the stand-in for ieframe.dll, so that its name means it. Null if it is not built.
platform::ModuleHandle LoadBrowserModule();

/// What that stand-in answers: "1", "0", "fail:" and a result code, or nothing at all.
void SetProtectedAnswer(const char* answer);

/// Puts a module into the folder (with '\\' at its end) and loads it from there, as the add-in's
/// own.
platform::ModuleHandle LoadModuleIn(const platform::WideString& folder);

}  // namespace driver_test
