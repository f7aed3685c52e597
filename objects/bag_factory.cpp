#include "objects/bag_factory.h"

#include "cab/template_bag.h"
#include "objects/bag_face.h"
#include "objects/template_set_object.h"
#include "platform/com_stream.h"

namespace AUX {
namespace {

using SetPointer = platform::ComPtr<TemplateSetObject>;

WStringView RootName(LPCWSTR root) noexcept { return WStringView(root ? root : TEXT("")); }

/// Hands a bag to the client. \param root  One reference, which is taken over.
HRESULT Wrap(CAB::DataRoot* root, IBag** bag) noexcept {
    if (root) *bag = BagFace::Make(root).Detach();
    return *bag ? S_OK : E_OUTOFMEMORY;
}

HRESULT MakeSelected(CAB::TemplateSet& set, WStringView root, IBag** bag) noexcept {
    CAB::DataRoot* made = nullptr;
    const HRESULT result = CAB::MakeBag(set, root, made);
    return FAILED(result) ? result : Wrap(made, bag);
}

HRESULT AskForStream(IUnknown* object, platform::ComPtr<IStream>& stream) noexcept {
    if (!object) return E_INVALIDARG;
    return FAILED(platform::QueryFor(object, stream)) ? E_NOINTERFACE : S_OK;
}

/// Makes a bag of a set that `load` fills.
template <class Load>
HRESULT MakeLoaded(LPCWSTR root, IBag** bag, Load load) noexcept {
    const SetPointer set = TemplateSetObject::Make();
    if (!set) return E_OUTOFMEMORY;
    HRESULT result = load(set->Set());
    if (SUCCEEDED(result)) result = CAB::SelectRoot(set->Set(), RootName(root));
    return FAILED(result) ? result : MakeSelected(set->Set(), {}, bag);
}

}  // namespace

HRESULT CreateBagFromTemplateSet(IUnknown* set, LPCWSTR root, IBag** bag) noexcept {
    if (!bag) return E_POINTER;
    *bag = nullptr;
    if (!set) return E_INVALIDARG;
    const SetPointer own = TemplateSetObject::Behind(set);
    return own ? MakeSelected(own->Set(), RootName(root), bag) : E_NOINTERFACE;
}

HRESULT CreateBagFromStream(IUnknown* stream, LPCWSTR root, IBag** bag) noexcept {
    if (!bag) return E_POINTER;
    *bag = nullptr;
    platform::ComPtr<IStream> source;
    const HRESULT result = AskForStream(stream, source);
    if (FAILED(result)) return result;
    return MakeLoaded(root, bag, [&](CAB::TemplateSet& set) noexcept {
        return set.LoadFromStream(source.Get());
    });
}

HRESULT CreateBagFromBuffer(const void* buffer, LONG size, LPCWSTR root, IBag** bag) noexcept {
    if (!bag) return E_POINTER;
    *bag = nullptr;
    if (!buffer || size < 1) return E_INVALIDARG;
    return MakeLoaded(root, bag, [&](CAB::TemplateSet& set) noexcept {
        return set.LoadFromBuffer(buffer, static_cast<std::size_t>(size));
    });
}

HRESULT CreateBag(IBag** bag) noexcept {
    if (!bag) return E_POINTER;
    *bag = nullptr;
    return Wrap(CAB::DataRoot::Create(), bag);
}

HRESULT CreateTemplateSetFromBuffer(const void* buffer, LONG size, ITemplateSet** set) noexcept {
    if (!set) return E_POINTER;
    *set = nullptr;
    if (!buffer || size < 1) return E_INVALIDARG;
    SetPointer made = TemplateSetObject::Make();
    if (!made) return E_OUTOFMEMORY;
    (void)made->Set().LoadFromBuffer(buffer, static_cast<std::size_t>(size));
    *set = made.Detach();
    return S_OK;
}

HRESULT CreateTemplateSetFromStream(IUnknown* stream, ITemplateSet** set) noexcept {
    if (!set) return E_POINTER;
    *set = nullptr;
    platform::ComPtr<IStream> source;
    const HRESULT result = AskForStream(stream, source);
    if (FAILED(result)) return result;
    SetPointer made = TemplateSetObject::Make();
    if (!made) return E_OUTOFMEMORY;
    (void)made->Set().LoadFromStream(source.Get());
    *set = made.Detach();
    return S_OK;
}

HRESULT BagFactory::CreateBagFromStream(IStream* stream, LPCWSTR root, IBag** bag) noexcept {
    return AUX::CreateBagFromStream(stream, root, bag);
}

HRESULT BagFactory::CreateTemplateSetFromStream(IStream* stream, ITemplateSet** set) noexcept {
    return AUX::CreateTemplateSetFromStream(stream, set);
}

}  // namespace AUX
