#pragma once

#include "cab/template_set.h"
#include "objects/frame.h"

namespace AUX {

/// The object of a template set, of which it holds a reference. Any thread may use it.
class TemplateSetObject final : public DualObject<ITemplateSet> {
public:
    /// Makes an empty set. \return null when memory runs out.
    [[nodiscard]] static platform::ComPtr<TemplateSetObject> Make() noexcept;
    /// What a client's pointer stands for; null for objects of other implementations.
    [[nodiscard]] static platform::ComPtr<TemplateSetObject> Behind(IUnknown* object) noexcept;

    /// For MakeObject. \param set  Taken over.
    explicit TemplateSetObject(CAB::TemplateSet& set) noexcept : set_(set) {}
    ~TemplateSetObject() override { set_.Release(); }

    [[nodiscard]] CAB::TemplateSet& Set() const noexcept { return set_; }

    /// As CAB::TemplateSet::Load.
    HRESULT STDMETHODCALLTYPE Load(VARIANT source) noexcept override;
    /// As CAB::SelectRoot; null is the first root.
    HRESULT STDMETHODCALLTYPE SelectRoot(LPCWSTR name) noexcept override;

private:
    void* AnswersAlso(REFIID id) noexcept override;

    CAB::TemplateSet& set_;
};

}  // namespace AUX

// What an object of this class answers with itself, for code of this module.
QVD_INTERFACE_ID(AUX::TemplateSetObject, 0x3C9A5111, 0x7E0D, 0x4B62,
                 {0x8F, 0x3A, 0xD4, 0x1B, 0x60, 0xC8, 0x2E, 0x57});
