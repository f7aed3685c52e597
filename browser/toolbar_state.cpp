#include "browser/toolbar_state.h"

#include "platform/registry.h"

namespace {

constexpr WCHAR kKey[] = TEXT("Software\\Norvane Systems\\Quvada 5\\IE Addin");
constexpr WCHAR kName[] = TEXT("ShowToolbar");
constexpr REGSAM kAccess = 0x2001F;  // Reading and writing of keys and values.

platform::RegistryKey OpenKey() noexcept {
    platform::RegistryKey key;
    // Without a key nothing is read or written.
    (void)RegCreateKeyExW(HKEY_CURRENT_USER, kKey, 0, nullptr, REG_OPTION_NON_VOLATILE, kAccess,
                          nullptr, key.Put(), nullptr);
    return key;
}

class Held {
public:
    explicit Held(CRITICAL_SECTION& section) noexcept : section_(section) {
        EnterCriticalSection(&section_);
    }
    ~Held() { LeaveCriticalSection(&section_); }
    Held(const Held&) = delete;
    Held& operator=(const Held&) = delete;

private:
    CRITICAL_SECTION& section_;
};

constinit ToolbarState shared;

}  // namespace

bool ToolbarState::Load() noexcept {
    if (!InitializeCriticalSectionAndSpinCount(&lock_, 0)) return false;
    ShowToolbar = 1;
    ActiveWindow = nullptr;
    const platform::RegistryKey key = OpenKey();
    DWORD number = 0;
    DWORD type = 0;
    DWORD size = sizeof number;
    if (key &&
        RegQueryValueExW(key.Get(), kName, nullptr, &type, reinterpret_cast<BYTE*>(&number),
                         &size) == ERROR_SUCCESS &&
        type == REG_DWORD && size == sizeof number) {
        ShowToolbar = number;
    }
    return true;
}

void ToolbarState::Store() noexcept {
    {
        const Held held(lock_);
        const platform::RegistryKey key = OpenKey();
        if (key) {
            (void)RegSetValueExW(key.Get(), kName, 0, REG_DWORD,
                                 reinterpret_cast<const BYTE*>(&ShowToolbar), sizeof ShowToolbar);
        }
    }
    DeleteCriticalSection(&lock_);
}

DWORD ToolbarState::IsShown() noexcept {
    const Held held(lock_);
    return ShowToolbar;
}

void ToolbarState::SetShown(DWORD shown) noexcept {
    const Held held(lock_);
    ShowToolbar = shown;
}

BandWindow* ToolbarState::GetActive() noexcept {
    const Held held(lock_);
    return ActiveWindow;
}

void ToolbarState::SetActive(BandWindow* band) noexcept {
    const Held held(lock_);
    ActiveWindow = band;
}

ToolbarState& SharedToolbarState() noexcept { return shared; }
