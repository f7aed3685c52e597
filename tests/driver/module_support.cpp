#include "tests/driver/module_support.h"

#include "platform/testing.h"
#include "tests/support/test_profile.h"

namespace driver_test {

using platform::ModuleHandle;
using platform::WideString;

WideString TestModuleFolder() {
    WCHAR path[MAX_PATH];
    WideString program(path, GetModuleFileNameW(nullptr, path, MAX_PATH));
    program.resize(program.rfind(TEXT('\\')));  // bin
    program.resize(program.rfind(TEXT('\\')) + 1);
    return program + TEXT("test_modules\\");
}

ModuleHandle LoadBrowserModule() {
    return ModuleHandle(LoadLibraryW((TestModuleFolder() + TEXT("ieframe.dll")).c_str()));
}

void SetProtectedAnswer(const char* answer) {
    platform::testing::SetEnvironment("QUVADA_TEST_PROTECTED", answer);
}

ModuleHandle LoadModuleIn(const WideString& folder) {
    const WideString path = folder + TEXT("addin.dll");
    const std::string content =
        test_support::ReadWholeFile(TestModuleFolder() + TEXT("ieframe.dll"));
    if (!test_support::WriteWholeFile(path, content)) return {};
    return ModuleHandle(LoadLibraryW(path.c_str()));
}

}  // namespace driver_test
