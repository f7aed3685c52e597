#include "driver/save_dialog.h"

#include "foundation/module_folder.h"
#include "platform/dialogs.h"
#include "platform/user.h"

namespace {

constexpr DWORD kFileUnits = 260;
constexpr DWORD kTitleUnits = 256;

/// Does nothing: its presence alone keeps the dialog in the form that hooks are for.
UINT_PTR CALLBACK PassOver(HWND, UINT, WPARAM, LPARAM) noexcept { return 0; }

}  // namespace

bool AskOutputFile(HWND owner, AUX::WStringView suggestedName, AUX::WString& path) noexcept {
    WCHAR file[kFileUnits] = {};
    WCHAR title[kTitleUnits] = {};
    const AUX::WStringView name = suggestedName.substr(0, kFileUnits - 1);
    name.copy(file, name.size());

    OPENFILENAMEW dialog{};
    dialog.lStructSize = sizeof(dialog);
    dialog.hwndOwner = owner ? owner : GetActiveWindow();
    dialog.hInstance = ModuleInstance();
    dialog.lpstrFilter = TEXT("PDF Documents (*.pdf)\0*.pdf\0");
    dialog.lpstrFile = file;
    dialog.nMaxFile = kFileUnits;
    dialog.lpstrFileTitle = title;
    dialog.nMaxFileTitle = kTitleUnits;
    dialog.lpstrDefExt = TEXT("pdf");
    dialog.Flags = OFN_ENABLESIZING | OFN_EXPLORER | OFN_ENABLEHOOK | OFN_OVERWRITEPROMPT;
    dialog.lpfnHook = PassOver;
    return GetSaveFileNameW(&dialog) && path.Assign(file);
}
