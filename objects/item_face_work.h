#pragma once

#include "cab/notice.h"
#include "foundation/memory.h"
#include "foundation/wstring_view.h"
#include "objects/item_face.h"

/// What the operations of ItemFace share.
namespace AUX {

/// The bit of the faces' flags that stands for CAB::ItemTransient.
inline constexpr LONG kFaceTransient = 1;

[[nodiscard]] constexpr HRESULT Accepted(bool isAccepted) noexcept {
    return isAccepted ? S_OK : E_INVALIDARG;
}

/// A terminated text of a client; null is the empty text.
[[nodiscard]] inline WStringView TextAt(LPCWSTR text) noexcept {
    return WStringView(text ? text : TEXT(""));
}

/// Runs an operation on the item. \return its failure, S_FALSE, or the notice that it leaves.
template <class Work>
HRESULT ItemFace::With(Work work) noexcept {
    const std::uint32_t refusedBefore = RefusedRequests();
    CAB::DataItem* const item = Item();
    CAB::ClearNotice();
    if (!item) return E_FAIL;
    const HRESULT result = work(*item);
    if (result == S_OK) return CAB::GetNotice();
    // An item only tells that it refuses.
    return FAILED(result) && RefusedRequests() != refusedBefore ? E_OUTOFMEMORY : result;
}

/// Runs an operation with the item of another face. \return E_INVALIDARG for an object that is no
/// face, E_FAIL for one whose item has gone.
template <class Work>
HRESULT WithOther(IUnknown* object, Work work) noexcept {
    const platform::ComPtr<ItemFace> face = ItemFace::Behind(object);
    if (!face) return E_INVALIDARG;
    CAB::DataItem* const item = face->Item();
    return item ? work(*item) : E_FAIL;
}

}  // namespace AUX
