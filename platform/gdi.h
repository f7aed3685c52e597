#pragma once

/// Device contexts and bitmaps.

#include "platform/unique_handle.h"
#include "platform/user.h"

#ifndef _WIN32
#include "platform/posix/gdi/gdi_calls.h"
#endif

namespace platform {

struct BitmapTraits {
    using Value = HBITMAP;
    static Value Invalid() noexcept { return nullptr; }
    static void Close(Value value) noexcept { DeleteObject(value); }
};
using BitmapHandle = UniqueHandle<BitmapTraits>;

struct MemoryDcTraits {
    using Value = HDC;
    static Value Invalid() noexcept { return nullptr; }
    static void Close(Value value) noexcept { DeleteDC(value); }
};
/// A device context from CreateCompatibleDC.
using MemoryDc = UniqueHandle<MemoryDcTraits>;

/// The device context of a window's client area, or of the screen (null), while it lives.
class WindowDc {
public:
    explicit WindowDc(HWND window) noexcept : window_(window), dc_(GetDC(window)) {}
    ~WindowDc() {
        if (dc_) ReleaseDC(window_, dc_);
    }
    WindowDc(const WindowDc&) = delete;
    WindowDc& operator=(const WindowDc&) = delete;

    /// Null if there is none to be had.
    [[nodiscard]] HDC Get() const noexcept { return dc_; }

private:
    HWND window_;
    HDC dc_;
};

/// Holds a bitmap in a device context while it lives, and puts the old one back.
class SelectedBitmap {
public:
    SelectedBitmap(HDC dc, HBITMAP bitmap) noexcept : dc_(dc), old_(SelectObject(dc, bitmap)) {}
    ~SelectedBitmap() {
        if (old_) SelectObject(dc_, old_);
    }
    SelectedBitmap(const SelectedBitmap&) = delete;
    SelectedBitmap& operator=(const SelectedBitmap&) = delete;

private:
    HDC dc_;
    HGDIOBJ old_;
};

}  // namespace platform
