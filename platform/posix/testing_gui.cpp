#include "platform/testing_gui.h"

#include "platform/posix/gdi/surface.h"

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

GuiObjects CountGuiObjects() { return {user::CountWindows(), gdi::CountObjects()}; }

}  // namespace platform::testing
