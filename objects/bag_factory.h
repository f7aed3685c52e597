#pragma once

#include "objects/frame.h"

/// What makes bags and template sets. Every maker checks its place for the result first (E_POINTER)
/// and sets it to null; a null source, a size below 1 and an invalid template are E_INVALIDARG.
/// A null root is an empty one.
namespace AUX {

/// \param set   An object that CreateTemplateSet... has given.
/// \param root  Empty: the root that is selected.
[[nodiscard]] HRESULT CreateBagFromTemplateSet(IUnknown* set, LPCWSTR root, IBag** bag) noexcept;
/// Of a document; an empty root is its first one. \return what the parser says of a malformed one.
[[nodiscard]] HRESULT CreateBagFromStream(IUnknown* stream, LPCWSTR root, IBag** bag) noexcept;
[[nodiscard]] HRESULT CreateBagFromBuffer(const void* buffer, LONG size, LPCWSTR root,
                                          IBag** bag) noexcept;
/// A free bag.
[[nodiscard]] HRESULT CreateBag(IBag** bag) noexcept;
/// What is wrong with the document is not told here: the set then has no root to select.
[[nodiscard]] HRESULT CreateTemplateSetFromBuffer(const void* buffer, LONG size,
                                                  ITemplateSet** set) noexcept;
[[nodiscard]] HRESULT CreateTemplateSetFromStream(IUnknown* stream, ITemplateSet** set) noexcept;

/// The makers as the second interface of the root, which counts and answers for it.
class BagFactory final : public DualBase<IBagFactory> {
public:
    explicit constexpr BagFactory(IUnknown& owner) noexcept : owner_(owner) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) noexcept override {
        return owner_.QueryInterface(id, object);
    }
    ULONG STDMETHODCALLTYPE AddRef() noexcept override { return owner_.AddRef(); }
    ULONG STDMETHODCALLTYPE Release() noexcept override { return owner_.Release(); }

    HRESULT STDMETHODCALLTYPE CreateBagFromTemplateSet(IUnknown* set, LPCWSTR root,
                                                       IBag** bag) noexcept override {
        return AUX::CreateBagFromTemplateSet(set, root, bag);
    }
    HRESULT STDMETHODCALLTYPE CreateBagFromStream(IStream* stream, LPCWSTR root,
                                                  IBag** bag) noexcept override;
    HRESULT STDMETHODCALLTYPE CreateBagFromBuffer(const void* buffer, LONG size, LPCWSTR root,
                                                  IBag** bag) noexcept override {
        return AUX::CreateBagFromBuffer(buffer, size, root, bag);
    }
    HRESULT STDMETHODCALLTYPE CreateBag(IBag** bag) noexcept override {
        return AUX::CreateBag(bag);
    }
    HRESULT STDMETHODCALLTYPE CreateTemplateSetFromBuffer(const void* buffer, LONG size,
                                                          ITemplateSet** set) noexcept override {
        return AUX::CreateTemplateSetFromBuffer(buffer, size, set);
    }
    HRESULT STDMETHODCALLTYPE CreateTemplateSetFromStream(IStream* stream,
                                                          ITemplateSet** set) noexcept override;

private:
    IUnknown& owner_;
};

}  // namespace AUX
