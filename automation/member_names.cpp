#include "automation/member_names.h"

#include <new>
#include <string_view>

namespace AUX {

void MemberNames::Read(ITypeInfo& info) noexcept {
    TYPEATTR* type = nullptr;
    if (FAILED(info.GetTypeAttr(&type))) return;
    const UINT functions = type->cFuncs;
    info.ReleaseTypeAttr(type);
    entries_.reset(new (std::nothrow) Entry[functions]);
    for (UINT i = 0; entries_ && i < functions; ++i) {
        FUNCDESC* function = nullptr;
        if (FAILED(info.GetFuncDesc(i, &function))) continue;
        const DISPID id = function->memid;
        info.ReleaseFuncDesc(function);
        // The get and the put of a property lie side by side.
        if (count_ > 0 && entries_[count_ - 1].id == id) continue;
        Entry& entry = entries_[count_];
        const HRESULT told = info.GetDocumentation(id, entry.text.Put(), nullptr, nullptr, nullptr);
        if (FAILED(told) || !entry.text.Get()) continue;
        entry.length = SysStringLen(entry.text.Get());
        entry.id = id;
        ++count_;
    }
}

bool MemberNames::Find(const WCHAR* name, DISPID& id) const noexcept {
    const std::basic_string_view<WCHAR> wanted(name);
    for (UINT i = count_; i-- > 0;) {
        const Entry& entry = entries_[i];
        if (entry.length != wanted.size() || wanted != entry.text.Get()) continue;
        id = entry.id;
        return true;
    }
    return false;
}

}  // namespace AUX
