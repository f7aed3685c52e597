#include "cab/bag_text.h"

#include <new>

#include "cab/json_text.h"
#include "cab/text_form.h"
#include "foundation/memory.h"
#include "platform/unique_bstr.h"

namespace AUX::CAB {
namespace {

constexpr std::uint32_t kFirstUnits = 1031;

/// Turns what a call throws into its result.
template <class Work>
HRESULT Guarded(HRESULT other, Work work) noexcept {
    try {
        return work();
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (...) {
        return other;
    }
}

bool MakeRootNode(DataRoot& bag, std::uint32_t flags, JsonHandle& node) {
    std::uint32_t options = TextTyped;
    if (flags & kJsonOmitDefaults) options |= TextOmitDefaults;
    if (flags & kJsonValueNames) options |= TextValueNames;
    node = NewNode(JsonType::Object);
    const BagLockScope scope(bag);
    return ItemToNode(*scope.Root(), node, options);
}

}  // namespace

HRESULT ToJson(DataRoot* bag, std::uint32_t flags, BSTR* text) noexcept {
    if (!text) return E_POINTER;
    *text = nullptr;
    if (!bag) return E_FAIL;
    return Guarded(E_FAIL, [&]() -> HRESULT {
        JsonHandle node;
        if (!MakeRootNode(*bag, flags, node)) return S_OK;
        WString written;
        if (!written.Reserve(kFirstUnits)) return E_OUTOFMEMORY;
        if (node->IsContainer()) WriteJson(*node, kJsonCompact, JsonPlace::InArray, written);
        if (written.IsEmpty()) return S_OK;
        *text = SysAllocStringLen(written.Text(), written.Length());
        return *text ? S_OK : E_OUTOFMEMORY;
    });
}

HRESULT FromJson(DataRoot* bag, WStringView text) noexcept {
    if (!bag) return E_FAIL;
    if (!text.data()) return E_INVALIDARG;
    return Guarded(E_INVALIDARG, [&] {
        const JsonHandle node = ParseJson(text);
        const BagLockScope scope(*bag);
        RootSlot slot(*scope.Root());
        const std::uint32_t refusedBefore = RefusedRequests();
        const HRESULT result = NodeToSlot(slot, *node) ? S_OK : E_FAIL;
        // An item only tells that it refuses, which its neighbours get over.
        return RefusedRequests() == refusedBefore ? result : E_OUTOFMEMORY;
    });
}

}  // namespace AUX::CAB
