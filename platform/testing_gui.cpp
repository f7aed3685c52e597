#include "platform/testing_gui.h"

namespace platform::testing {
namespace {

constexpr std::uint32_t kHeadBytes = 54;

void Append(std::string& bytes, std::uint32_t value, int count) {
    for (int i = 0; i < count; ++i) bytes += static_cast<char>(value >> 8 * i & 0xFF);
}

}  // namespace

std::string Picture::FileBytes() const {
    const auto imageBytes = static_cast<std::uint32_t>(pixels.size() * 4);
    std::string bytes = "BM";
    Append(bytes, kHeadBytes + imageBytes, 4);
    Append(bytes, 0, 4);
    Append(bytes, kHeadBytes, 4);
    Append(bytes, kHeadBytes - 14, 4);
    Append(bytes, static_cast<std::uint32_t>(width), 4);
    Append(bytes, static_cast<std::uint32_t>(-height), 4);  // rows from the top
    Append(bytes, 1, 2);
    Append(bytes, 32, 2);
    Append(bytes, 0, 4);
    Append(bytes, imageBytes, 4);
    bytes.append(16, '\0');
    for (const std::uint32_t pixel : pixels) Append(bytes, pixel, 4);
    return bytes;
}

std::vector<ShownMenuItem> ItemsOf(HMENU menu) {
    std::vector<ShownMenuItem> items;
    const int count = GetMenuItemCount(menu);
    for (int i = 0; i < count; ++i) {
        const auto position = static_cast<UINT>(i);
        WCHAR text[256];
        const int length = GetMenuStringW(menu, position, text, 256, MF_BYPOSITION);
        const UINT state = GetMenuState(menu, position, MF_BYPOSITION);
        const bool isSeparator = (state & MF_SEPARATOR) != 0;
        items.push_back({isSeparator ? 0 : GetMenuItemID(menu, i),
                         WideString(text, static_cast<std::size_t>(length)),
                         (state & (MF_GRAYED | MF_DISABLED)) == 0});
    }
    return items;
}

void RunMessages() {
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

}  // namespace platform::testing
