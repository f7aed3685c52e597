#include "objects/template_set_object.h"

#include "cab/template_bag.h"

namespace AUX {

platform::ComPtr<TemplateSetObject> TemplateSetObject::Make() noexcept {
    CAB::TemplateSet* const set = CAB::TemplateSet::Create();
    if (!set) return {};
    platform::ComPtr<TemplateSetObject> made = platform::MakeObject<TemplateSetObject>(*set);
    if (!made) set->Release();
    return made;
}

platform::ComPtr<TemplateSetObject> TemplateSetObject::Behind(IUnknown* object) noexcept {
    platform::ComPtr<TemplateSetObject> found;
    if (object) (void)platform::QueryFor(object, found);  // A refusal leaves it null.
    return found;
}

HRESULT TemplateSetObject::Load(VARIANT source) noexcept { return set_.Load(source); }

HRESULT TemplateSetObject::SelectRoot(LPCWSTR name) noexcept {
    return CAB::SelectRoot(set_, WStringView(name ? name : TEXT("")));
}

void* TemplateSetObject::AnswersAlso(REFIID id) noexcept {
    return IsEqualIID(id, platform::InterfaceId<TemplateSetObject>()) ? this : nullptr;
}

}  // namespace AUX
