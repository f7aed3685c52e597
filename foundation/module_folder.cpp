#include "foundation/module_folder.h"

#include "platform/modules.h"

namespace {

/// Holds the folder without a destructor: the module's end is DetachModule.
union FolderPlace {
    constexpr FolderPlace() noexcept : folder() {}
    ~FolderPlace() {}
    AUX::WString folder;
};

constinit FolderPlace place;
constinit HINSTANCE instance = nullptr;

}  // namespace

bool AttachModule(HINSTANCE module) noexcept {
    instance = module;
    WCHAR path[MAX_PATH];
    const DWORD length = GetModuleFileNameW(module, path, MAX_PATH);
    // Of a path too long for the buffer the folder may still have come whole.
    const AUX::WStringView text(path, length);
    return place.folder.Assign(text.substr(0, text.rfind(TEXT('\\')) + 1));
}

void DetachModule() noexcept {
    place.folder.Free();
    instance = nullptr;
}

const AUX::WString& ModuleFolder() noexcept { return place.folder; }

HINSTANCE ModuleInstance() noexcept { return instance; }
