#include "objects/frame.h"

#include <atomic>

namespace AUX {

namespace {

constinit std::atomic<LONG> liveObjects = 0;

}  // namespace

LONG LiveObjects() noexcept { return liveObjects.load(std::memory_order_acquire); }

LiveObject::LiveObject() noexcept { liveObjects.fetch_add(1, std::memory_order_relaxed); }
LiveObject::~LiveObject() { liveObjects.fetch_sub(1, std::memory_order_acq_rel); }

void SimplifyNumber(VARIANT& number) noexcept {
    constexpr LONGLONG kMostExact = LONGLONG{1} << 53;
    if (number.vt != VT_I8 && number.vt != VT_UI8) return;
    const LONGLONG value = number.llVal;
    if (number.vt == VT_UI8 && value < 0) return;
    if (value == static_cast<LONG>(value)) {
        number.vt = VT_I4;
        number.lVal = static_cast<LONG>(value);
    } else if (value >= -kMostExact && value <= kMostExact) {
        number.vt = VT_R8;
        number.dblVal = static_cast<double>(value);
    }
}

HRESULT GiveText(BSTR* place, const WCHAR* text, UINT length) noexcept {
    if (!place) return E_POINTER;
    *place = SysAllocStringLen(length ? text : TEXT(""), length);
    return *place ? S_OK : E_OUTOFMEMORY;
}

}  // namespace AUX
