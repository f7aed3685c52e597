#include "browser/screen_scale.h"

#include <atomic>

#include "platform/gdi.h"

namespace {

constexpr int kUnscaled = 96;

// 0 is not read yet. Two threads may both read it; they read the same.
constinit std::atomic<int> screenDpi{0};

}  // namespace

ScreenScale ScreenScale::OfScreen() noexcept {
    int dpi = screenDpi.load(std::memory_order_relaxed);
    if (dpi != 0) return ScreenScale(dpi);
    const platform::WindowDc screen(nullptr);
    dpi = screen.Get() ? GetDeviceCaps(screen.Get(), LOGPIXELSY) : 0;
    if (dpi <= 0) return ScreenScale(kUnscaled);
    screenDpi.store(dpi, std::memory_order_relaxed);
    return ScreenScale(dpi);
}

int ScreenScale::Scale(int n) const noexcept {
    if (dpi_ <= kUnscaled) return n;
    return static_cast<int>(static_cast<float>(dpi_) / 96.0f * static_cast<float>(n) + 0.5f);
}

int ScreenScale::Margin() const noexcept {
    return dpi_ <= kUnscaled ? 1 : static_cast<int>(dpi_ / 96.0 + 0.5);
}

void ScreenScale::Forget() noexcept { screenDpi.store(0, std::memory_order_relaxed); }

int Scale(int n) noexcept { return ScreenScale::OfScreen().Scale(n); }
