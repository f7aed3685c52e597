#include "platform/testing_gui.h"

#include <filesystem>
#include <iterator>
#include <malloc.h>

#include "platform/posix/gdi/surface.h"
#include "platform/posix/user/menu.h"

namespace platform::testing {

ScreenResolution::ScreenResolution(int dpi) : old_(gdi::SetScreenDpi(dpi)) {}
ScreenResolution::~ScreenResolution() { gdi::SetScreenDpi(old_); }

Picture PictureOf(HWND handle) {
    const user::Lock lock(user::UserLock());
    user::Window* window = user::FindWindow(handle);
    const auto surface = window && !window->parent ? gdi::SurfaceOf(*window) : nullptr;
    if (!surface) return {};
    return {surface->width, surface->height, surface->pixels};
}

GuiObjects CountGuiObjects() {
    const std::filesystem::directory_iterator files("/proc/self/fd");
    const auto handles = std::distance(begin(files), end(files));
    return {user::CountWindows() + user::CountMenus(), gdi::CountObjects(),
            static_cast<std::size_t>(handles), mallinfo2().uordblks};
}

HWND ActivateOwnWindow(bool (*)(HWND)) { return nullptr; }

}  // namespace platform::testing
