#include "foundation/urls.h"

#include <utility>

#include "platform/urls.h"

namespace AUX {
namespace {

constexpr DWORD kNoFlags = 0;

const WCHAR* OrEmpty(const WCHAR* text) noexcept { return text ? text : TEXT(""); }

bool Combine(const WCHAR* base, const WCHAR* relative, WString& combined) noexcept {
    DWORD size = 0;
    if (UrlCombineW(base, relative, nullptr, &size, kNoFlags) != E_POINTER || size <= 1) {
        return false;
    }
    if (!combined.SetLength(size - 1)) return false;
    if (FAILED(UrlCombineW(base, relative, combined.Data(), &size, kNoFlags))) return false;
    return combined.SetLength(size);
}

}  // namespace

bool CombineUrl(const WCHAR* base, const WCHAR* relative, WString& combined) noexcept {
    WString joined;  // The texts may be those of `combined`.
    const bool isJoined = Combine(OrEmpty(base), OrEmpty(relative), joined);
    if (!isJoined) joined.Free();
    combined = std::move(joined);
    return isJoined;
}

}  // namespace AUX
