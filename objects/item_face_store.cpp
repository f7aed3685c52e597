#include "cab/registry_load.h"
#include "cab/registry_save.h"
#include "cab/template_bag.h"
#include "objects/item_face_work.h"
#include "objects/registry_arguments.h"
#include "objects/template_set_object.h"

namespace AUX {

using CAB::DataItem;

HRESULT ItemFace::CopySpec(IBagItem* source) noexcept {
    return With([&](DataItem& item) {
        return WithOther(source, [&](DataItem& its) {
            DataItem* const target = item.Self();
            DataItem* const from = its.Self();
            CAB::DataRoot* const bag = target->GetRoot();
            // The declaration lies in a template that only the other bag may keep.
            if (bag && from->GetRoot() && !bag->KeepTemplatesOf(*from->GetRoot())) {
                return E_OUTOFMEMORY;
            }
            return Accepted(target->SetSpec(from->GetSpec()));
        });
    });
}

HRESULT ItemFace::SetTemplateFromBuffer(const void* buffer, LONG size, LPCWSTR root) noexcept {
    if (!buffer || size < 1) return E_INVALIDARG;
    return With([&](DataItem& item) -> HRESULT {
        const platform::ComPtr<TemplateSetObject> made = TemplateSetObject::Make();
        if (!made) return E_OUTOFMEMORY;
        const HRESULT result = made->Set().LoadFromBuffer(buffer, static_cast<std::size_t>(size));
        if (FAILED(result)) return result;
        return CAB::ShapeByTemplate(*item.Self(), made->Set(), TextAt(root));
    });
}

HRESULT ItemFace::SetTemplate(IUnknown* source, LPCWSTR root) noexcept {
    if (!source) return E_INVALIDARG;
    if (!Item()) return E_FAIL;
    const platform::ComPtr<ItemFace> self(this);  // The client's stream may let go of it.
    platform::ComPtr<TemplateSetObject> set = TemplateSetObject::Behind(source);
    if (!set) {
        platform::ComPtr<IStream> stream;
        if (FAILED(platform::QueryFor(source, stream))) return E_INVALIDARG;
        set = TemplateSetObject::Make();
        if (!set) return E_OUTOFMEMORY;
        const HRESULT result = set->Set().LoadFromStream(stream.Get());
        if (FAILED(result)) return result;
    }
    return With([&](DataItem& item) {
        return CAB::ShapeByTemplate(*item.Self(), set->Set(), TextAt(root));
    });
}

HRESULT ItemFace::LoadRegistry(LPCWSTR path, LONGLONG key) noexcept {
    return With(
        [&](DataItem& item) { return CAB::LoadFromRegistry(*item.Self(), KeyOf(key), path); });
}

HRESULT ItemFace::SaveRegistry(LPCWSTR path, LONGLONG key) noexcept {
    return SaveRegistryFlags(path, key, 0);
}

HRESULT ItemFace::SaveRegistryFlags(LPCWSTR path, LONGLONG key, LONG flags) noexcept {
    return With([&](DataItem& item) { return SaveItem(*item.Self(), path, key, flags); });
}

}  // namespace AUX
