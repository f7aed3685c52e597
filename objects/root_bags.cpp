#include "objects/root_object.h"

namespace AUX {

HRESULT RootObject::NewBag(IBag** bag) noexcept { return CreateBag(bag); }

HRESULT RootObject::NewBagFromTemplateText(const void* text, LONG length, LPCWSTR rootName,
                                           IBag** bag) noexcept {
    return CreateBagFromBuffer(text, length, rootName, bag);
}

HRESULT RootObject::NewBagFromTemplateStream(IUnknown* stream, LPCWSTR rootName,
                                             IBag** bag) noexcept {
    return CreateBagFromStream(stream, rootName, bag);
}

HRESULT RootObject::NewBagFromTemplateSet(IUnknown* set, LPCWSTR rootName, IBag** bag) noexcept {
    return CreateBagFromTemplateSet(set, rootName, bag);
}

HRESULT RootObject::NewTemplateSetFromStream(IUnknown* stream, ITemplateSet** set) noexcept {
    return CreateTemplateSetFromStream(stream, set);
}

HRESULT RootObject::NewTemplateSetFromText(const void* text, LONG length,
                                           ITemplateSet** set) noexcept {
    return CreateTemplateSetFromBuffer(text, length, set);
}

}  // namespace AUX
