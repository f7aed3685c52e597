#include <algorithm>

#include "platform/posix/user/window.h"

using namespace platform::user;

SHORT GetKeyState(int key) noexcept {
    const Lock lock(UserLock());
    const auto& keys = ThisThread().keys;
    const bool isDown = key >= 0 && key < static_cast<int>(keys.size()) &&
                        keys[static_cast<std::size_t>(key)] & 0x80;
    return static_cast<SHORT>(isDown ? -128 : 0);
}

BOOL SetKeyboardState(BYTE* keys) noexcept {
    const Lock lock(UserLock());
    std::copy_n(keys, ThisThread().keys.size(), ThisThread().keys.begin());
    return TRUE;
}

BOOL GetKeyboardState(BYTE* keys) noexcept {
    const Lock lock(UserLock());
    std::copy(ThisThread().keys.begin(), ThisThread().keys.end(), keys);
    return TRUE;
}
