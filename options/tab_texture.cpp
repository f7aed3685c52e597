#include "options/tab_texture.h"

#include "platform/modules.h"

namespace {

constexpr DWORD kEnableTab = 6;  // ETDT_ENABLETAB

using EnableFunction = HRESULT WINAPI(HWND, DWORD);

/// Looked up once. The module stays loaded: the common controls use it to the end, too. Not loaded
/// with this module, since the system holds its lock on modules then.
EnableFunction* FindEnable() noexcept {
    const HMODULE themes = LoadLibraryW(TEXT("UxTheme.DLL"));
    return themes ? platform::ProcedureOf<EnableFunction>(themes, "EnableThemeDialogTexture")
                  : nullptr;
}

}  // namespace

void EnableTabTexture(HWND dialog) noexcept {
    static EnableFunction* const enable = FindEnable();
    if (enable) (void)enable(dialog, kEnableTab);  // Only the looks depend on it.
}
