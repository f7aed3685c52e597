#include "platform/user.h"

namespace {

constexpr UINT_PTR kFirstCursor = 32512;  // the system's own, by number
constexpr UINT_PTR kLastCursor = 32651;

thread_local HCURSOR current = nullptr;

}  // namespace

HCURSOR LoadCursorW(HINSTANCE module, LPCWSTR name) noexcept {
    const auto number = reinterpret_cast<UINT_PTR>(name);
    if (!module && number >= kFirstCursor && number <= kLastCursor) {
        return reinterpret_cast<HCURSOR>(number);
    }
    SetLastError(ERROR_RESOURCE_NAME_NOT_FOUND);
    return nullptr;
}

HCURSOR SetCursor(HCURSOR cursor) noexcept {
    const HCURSOR old = current;
    current = cursor;
    return old;
}
