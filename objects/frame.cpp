#include "objects/frame.h"

#include <atomic>

namespace AUX {

namespace {

constinit std::atomic<LONG> liveObjects = 0;

}  // namespace

LONG LiveObjects() noexcept { return liveObjects.load(std::memory_order_acquire); }

LiveObject::LiveObject() noexcept { liveObjects.fetch_add(1, std::memory_order_relaxed); }
LiveObject::~LiveObject() { liveObjects.fetch_sub(1, std::memory_order_acq_rel); }

HRESULT GiveText(BSTR* place, const WCHAR* text, UINT length) noexcept {
    if (!place) return E_POINTER;
    *place = SysAllocStringLen(length ? text : TEXT(""), length);
    return *place ? S_OK : E_OUTOFMEMORY;
}

}  // namespace AUX
