#include <cstdlib>
#include <cstring>

#include "platform/com.h"

/// Stands in for the browser's own module: says whether the process is protected, as the
/// environment variable QUVADA_TEST_PROTECTED has it: "1", "0", or "fail:" and a result code in
/// hexadecimal. Without the variable it does not know.
extern "C" HRESULT WINAPI IEIsProtectedModeProcess(BOOL* isProtected) {
    constexpr char kFail[] = "fail:";
    const char* setting = std::getenv("QUVADA_TEST_PROTECTED");
    if (!setting) return E_NOTIMPL;
    if (std::strncmp(setting, kFail, sizeof kFail - 1) == 0) {
        return static_cast<HRESULT>(std::strtoull(setting + sizeof kFail - 1, nullptr, 16));
    }
    *isProtected = setting[0] == '1';
    return S_OK;
}
