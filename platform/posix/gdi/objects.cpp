#include <algorithm>
#include <cstring>

#include "platform/posix/faults.h"
#include "platform/posix/gdi/surface.h"
#include "platform/posix/handle_table.h"
#include "platform/posix/last_error.h"

namespace platform::gdi {
namespace {

constexpr LONG kMostPixels = 1 << 26;
constexpr std::uintptr_t kBitmapTag = std::uintptr_t{1} << 32;  // tells the kinds of handles apart

struct Bitmap {
    std::shared_ptr<Surface> pixels;
};

struct Tables {
    HandleTable<Bitmap> bitmaps;
    HandleTable<DeviceContext> contexts;
    HBITMAP first = nullptr;  // what a memory device context holds at first
};

// Never destroyed: modules may draw while the process ends.
Tables& TheTables() {
    static Tables& tables = *[] {
        auto* made = new Tables;
        made->first = reinterpret_cast<HBITMAP>(
            made->bitmaps.Add(std::make_unique<Bitmap>(Bitmap{Surface::Make(1, 1)})) | kBitmapTag);
        return made;
    }();
    return tables;
}

Bitmap* FindBitmap(HGDIOBJ object) {
    const auto handle = reinterpret_cast<std::uintptr_t>(object);
    return handle & kBitmapTag ? TheTables().bitmaps.Find(handle & ~kBitmapTag) : nullptr;
}

}  // namespace

std::shared_ptr<Surface> Surface::Make(LONG width, LONG height) {
    if (width < 0 || height < 0 || (width > 0 && height > kMostPixels / width)) return nullptr;
    auto made = std::make_shared<Surface>();
    made->width = width;
    made->height = height;
    made->pixels.resize(static_cast<std::size_t>(width * height));
    return made;
}

DeviceContext* FindDc(HDC dc) noexcept {
    DeviceContext* found = TheTables().contexts.Find(reinterpret_cast<std::uintptr_t>(dc));
    if (!found) SetLastError(ERROR_INVALID_HANDLE);
    return found;
}

HDC AddDc(DeviceContext dc) noexcept {
    return reinterpret_cast<HDC>(
        TheTables().contexts.Add(std::make_unique<DeviceContext>(std::move(dc))));
}

bool RemoveDc(HDC dc) noexcept {
    return TheTables().contexts.Remove(reinterpret_cast<std::uintptr_t>(dc));
}

HBITMAP AddBitmap(std::shared_ptr<Surface> pixels) noexcept {
    const std::uintptr_t handle =
        TheTables().bitmaps.Add(std::make_unique<Bitmap>(Bitmap{std::move(pixels)}));
    return reinterpret_cast<HBITMAP>(handle | kBitmapTag);
}

std::size_t CountObjects() noexcept {
    const user::Lock lock(user::UserLock());
    return TheTables().bitmaps.Count() + TheTables().contexts.Count();
}

}  // namespace platform::gdi

using namespace platform::gdi;
using platform::user::Lock;
using platform::user::UserLock;

HDC CreateCompatibleDC(HDC) noexcept {
    if (platform::InjectFault("CreateCompatibleDC")) return nullptr;
    const Lock lock(UserLock());
    DeviceContext dc;
    dc.bitmap = TheTables().first;
    dc.surface = FindBitmap(dc.bitmap)->pixels;
    dc.clip = {dc.surface->Bounds()};
    dc.isMemory = true;
    return AddDc(std::move(dc));
}

BOOL DeleteDC(HDC dc) noexcept {
    const Lock lock(UserLock());
    return RemoveDc(dc) || platform::Fail(ERROR_INVALID_HANDLE);
}

HBITMAP CreateCompatibleBitmap(HDC, int width, int height) noexcept {
    if (platform::InjectFault("CreateCompatibleBitmap")) return nullptr;
    const Lock lock(UserLock());
    const bool isNothing = width == 0 || height == 0;
    auto pixels = isNothing ? Surface::Make(1, 1) : Surface::Make(width, height);
    if (pixels) return AddBitmap(std::move(pixels));
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return nullptr;
}

HGDIOBJ SelectObject(HDC handle, HGDIOBJ object) noexcept {
    const Lock lock(UserLock());
    DeviceContext* dc = FindDc(handle);
    const Bitmap* bitmap = FindBitmap(object);
    if (!dc || !dc->isMemory || !bitmap) {
        SetLastError(ERROR_INVALID_HANDLE);
        return nullptr;
    }
    dc->surface = bitmap->pixels;
    dc->clip = {dc->surface->Bounds()};
    return std::exchange(dc->bitmap, static_cast<HBITMAP>(object));
}

BOOL DeleteObject(HGDIOBJ object) noexcept {
    const Lock lock(UserLock());
    if (object == TheTables().first) return TRUE;
    if (!FindBitmap(object)) return platform::Fail(ERROR_INVALID_HANDLE);
    return TheTables().bitmaps.Remove(reinterpret_cast<std::uintptr_t>(object) & ~kBitmapTag);
}

int GetObjectW(HGDIOBJ object, int size, LPVOID buffer) noexcept {
    const Lock lock(UserLock());
    const Bitmap* bitmap = FindBitmap(object);
    if (!bitmap) return platform::Fail(ERROR_INVALID_HANDLE);
    const BITMAP info{
        0,      bitmap->pixels->width, bitmap->pixels->height, bitmap->pixels->width * 4, 1, 32,
        nullptr};
    const int needed = sizeof info;
    if (!buffer) return needed;
    const int given = std::clamp(size, 0, needed);
    std::memcpy(buffer, &info, static_cast<std::size_t>(given));
    return given;
}
