#include <cstring>
#include <span>

#include "platform/posix/faults.h"
#include "platform/posix/gdi/surface.h"
#include "platform/resources.h"

namespace platform::gdi {
namespace {

/// The head of a bitmap without palette, as resources hold it.
struct Header {
    DWORD size;
    LONG width;
    LONG height;  // below 0: the rows come from the top
    WORD planes;
    WORD bits;
    DWORD compression;
    DWORD imageBytes;
    LONG pixelsPerMeter[2];
    DWORD coloursUsed;
    DWORD coloursImportant;
};
static_assert(sizeof(Header) == 40);

constexpr LONG kMostSide = 0x4000;

/// Null if it is not of a kind that is known, or cut short.
std::shared_ptr<Surface> Decode(std::span<const std::byte> bytes) {
    Header header;
    if (bytes.size() < sizeof header) return nullptr;
    std::memcpy(&header, bytes.data(), sizeof header);
    const bool isKnown = header.size >= sizeof header && header.size <= bytes.size() &&
                         header.compression == 0 && header.coloursUsed == 0 &&
                         (header.bits == 24 || header.bits == 32) && header.width > 0 &&
                         header.width <= kMostSide && header.height != 0 &&
                         header.height >= -kMostSide && header.height <= kMostSide;
    if (!isKnown) return nullptr;
    const std::size_t pixelBytes = header.bits / 8u;
    const std::size_t rowBytes =
        (static_cast<std::size_t>(header.width) * pixelBytes + 3) & ~std::size_t{3};
    const LONG height = header.height < 0 ? -header.height : header.height;
    bytes = bytes.subspan(header.size);
    if (bytes.size() / rowBytes < static_cast<std::size_t>(height)) return nullptr;
    std::shared_ptr<Surface> surface = Surface::Make(header.width, height);
    if (!surface) return nullptr;
    for (LONG y = 0; y < height; ++y) {
        std::uint32_t* row = surface->Row(header.height < 0 ? y : height - 1 - y);
        const std::byte* source = bytes.data() + static_cast<std::size_t>(y) * rowBytes;
        for (LONG x = 0; x < header.width; ++x, source += pixelBytes) {
            row[x] = std::to_integer<std::uint32_t>(source[0]) |
                     std::to_integer<std::uint32_t>(source[1]) << 8 |
                     std::to_integer<std::uint32_t>(source[2]) << 16;
        }
    }
    return surface;
}

}  // namespace
}  // namespace platform::gdi

HBITMAP LoadBitmapW(HINSTANCE module, LPCWSTR name) noexcept {
    using namespace platform::gdi;
    if (platform::InjectFault("LoadBitmapW")) return nullptr;
    const std::span<const std::byte> bytes = platform::ResourceBytes(module, name, RT_BITMAP);
    if (bytes.empty()) return nullptr;
    const platform::user::Lock lock(platform::user::UserLock());
    std::shared_ptr<Surface> pixels = Decode(bytes);
    if (pixels) return AddBitmap(std::move(pixels));
    SetLastError(ERROR_INVALID_PARAMETER);
    return nullptr;
}
