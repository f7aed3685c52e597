#include <algorithm>
#include <new>

#include "platform/posix/module_table.h"
#include "platform/posix/typeinfo/call.h"
#include "platform/posix/typeinfo/type_objects.h"

namespace platform::types {
namespace {

constexpr WORD kDispatchSlots = 7;

BSTR Copy(const WideString& text) {
    return SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
}

template <class T, class Description>
HRESULT Give(const Description& description, T** out) {
    *out = new (std::nothrow) T(description);
    return *out ? S_OK : E_OUTOFMEMORY;
}

bool IsPut(INVOKEKIND kind) { return kind == INVOKE_PROPERTYPUT || kind == INVOKE_PROPERTYPUTREF; }

}  // namespace

TypeInfo::TypeInfo(std::shared_ptr<const Library> library, const Type& type, Side side)
    : library_(std::move(library)), type_(type), side_(side) {
    std::vector<const Type*> chain{&type_};
    std::shared_ptr<const Library> at = library_;
    while (chain.back()->kind == TKIND_INTERFACE && !chain.back()->implements.empty()) {
        const Type* base = Resolve(at, chain.back()->implements.front().reference);
        bases_.push_back(at);
        chain.push_back(base);
    }
    std::reverse(chain.begin(), chain.end());
    for (const Type* each : chain) {
        for (const Function& function : each->functions) reachable_.push_back(&function);
    }
}

void* TypeInfo::AnswersAlso(REFIID id) noexcept {
    return id == InterfaceId<ITypeInfo>() ? static_cast<ITypeInfo*>(this) : nullptr;
}

bool TypeInfo::IsDispatchSideOfDual() const { return type_.IsDual() && side_ == Side::Dispatch; }

TypeInfo::Member TypeInfo::Find(MEMBERID member) const {
    for (const Function* function : reachable_) {
        if (function->description.memid == member) return {function, nullptr};
    }
    for (const Variable& variable : type_.variables) {
        if (variable.description.memid == member) return {nullptr, &variable};
    }
    return {};
}

FUNCDESC TypeInfo::Describe(const Function& function) const {
    FUNCDESC made = function.description;
    if (!IsDispatchSideOfDual()) return made;
    made.funckind = FUNC_DISPATCH;
    const ELEMDESC* last = made.cParams ? &made.lprgelemdescParam[made.cParams - 1] : nullptr;
    if (last && (last->paramdesc.wParamFlags & PARAMFLAG_FRETVAL) && last->tdesc.vt == VT_PTR) {
        made.elemdescFunc.tdesc = *last->tdesc.lptdesc;
        --made.cParams;
    } else if (made.elemdescFunc.tdesc.vt == VT_HRESULT) {
        made.elemdescFunc.tdesc.vt = VT_VOID;
    }
    return made;
}

HRESULT TypeInfo::GetTypeAttr(TYPEATTR** attributes) {
    if (!attributes) return E_INVALIDARG;
    TYPEATTR made{};
    const bool isDispatch = type_.kind == TKIND_DISPATCH || IsDispatchSideOfDual();
    made.guid = type_.id;
    made.lcid = library_->language;
    made.memidConstructor = made.memidDestructor = MEMBERID_NIL;
    made.typekind = isDispatch ? TKIND_DISPATCH : type_.kind;
    made.cbSizeInstance = type_.kind == TKIND_ENUM ? sizeof(INT) : sizeof(void*);
    made.cbAlignment = static_cast<WORD>(made.cbSizeInstance);
    made.cFuncs =
        static_cast<WORD>(IsDispatchSideOfDual() ? reachable_.size() : type_.functions.size());
    made.cVars = static_cast<WORD>(type_.variables.size());
    made.cImplTypes = static_cast<WORD>(type_.implements.size());
    made.cbSizeVft = static_cast<WORD>((isDispatch ? kDispatchSlots : type_.slots) * kSlotBytes);
    // Only the interface is called through its table.
    const WORD hidden = IsDispatchSideOfDual() ? TYPEFLAG_FOLEAUTOMATION : WORD{0};
    made.wTypeFlags = static_cast<WORD>(type_.flags & ~hidden);
    made.wMajorVerNum = type_.major;
    made.wMinorVerNum = type_.minor;
    made.tdescAlias = type_.alias;
    return Give(made, attributes);
}

HRESULT TypeInfo::GetFuncDesc(UINT index, FUNCDESC** description) {
    if (!description) return E_INVALIDARG;
    *description = nullptr;
    const bool countsInherited = IsDispatchSideOfDual();
    const std::size_t count = countsInherited ? reachable_.size() : type_.functions.size();
    if (index >= count) return TYPE_E_ELEMENTNOTFOUND;
    return Give(Describe(countsInherited ? *reachable_[index] : type_.functions[index]),
                description);
}

HRESULT TypeInfo::GetVarDesc(UINT index, VARDESC** description) {
    if (!description) return E_INVALIDARG;
    *description = nullptr;
    if (index >= type_.variables.size()) return TYPE_E_ELEMENTNOTFOUND;
    return Give(type_.variables[index].description, description);
}

HRESULT TypeInfo::GetNames(MEMBERID member, BSTR* names, UINT room, UINT* count) {
    if (!names || !count) return E_INVALIDARG;
    *count = 0;
    const Member found = Find(member);
    std::vector<const WideString*> all;
    if (found.variable) {
        all.push_back(&found.variable->name);
    } else if (found.function) {
        const FUNCDESC described = Describe(*found.function);
        // The new value of a property has no name.
        const auto named = static_cast<std::size_t>(described.cParams) - IsPut(described.invkind);
        all.push_back(&found.function->name);
        for (std::size_t i = 0; i < named; ++i) {
            all.push_back(&found.function->parameterNames[i]);
        }
    } else {
        return TYPE_E_ELEMENTNOTFOUND;
    }
    for (; *count < room && *count < all.size(); ++*count) {
        names[*count] = Copy(*all[*count]);
        if (names[*count]) continue;
        while (*count > 0) SysFreeString(names[--*count]);
        return E_OUTOFMEMORY;
    }
    return S_OK;
}

HRESULT TypeInfo::GetRefTypeOfImplType(UINT index, HREFTYPE* reference) {
    if (!reference) return E_INVALIDARG;
    if (index == static_cast<UINT>(-1) && type_.IsDual()) {
        *reference = kOtherSide;
        return S_OK;
    }
    if (index >= type_.implements.size()) return TYPE_E_ELEMENTNOTFOUND;
    // As a dispatch interface it derives from IDispatch alone.
    *reference =
        IsDispatchSideOfDual() ? kBaseLibraryReference | 1 : type_.implements[index].reference;
    return S_OK;
}

HRESULT TypeInfo::GetImplTypeFlags(UINT index, INT* flags) {
    if (!flags) return E_INVALIDARG;
    *flags = 0;
    if (index >= type_.implements.size()) return TYPE_E_ELEMENTNOTFOUND;
    *flags = type_.implements[index].flags;
    return S_OK;
}

HRESULT TypeInfo::GetIDsOfNames(LPOLESTR* names, UINT count, MEMBERID* ids) {
    if (!names || !ids || count == 0) return E_INVALIDARG;
    std::fill_n(ids, count, MEMBERID_NIL);
    const Function* function = nullptr;
    for (const Function* each : reachable_) {
        if (!IsSameName(each->name, names[0])) continue;
        function = each;
        ids[0] = each->description.memid;
        break;
    }
    for (const Variable& each : type_.variables) {
        if (!function && IsSameName(each.name, names[0])) ids[0] = each.description.memid;
    }
    if (ids[0] == MEMBERID_NIL) return DISP_E_UNKNOWNNAME;
    HRESULT result = S_OK;
    for (UINT i = 1; i < count; ++i) {
        const std::size_t known = function ? function->parameterNames.size() : 0;
        for (std::size_t at = 0; at < known; ++at) {
            if (!IsSameName(function->parameterNames[at], names[i])) continue;
            ids[i] = static_cast<MEMBERID>(at);
            break;
        }
        if (ids[i] == MEMBERID_NIL) result = DISP_E_UNKNOWNNAME;
    }
    return result;
}

HRESULT TypeInfo::Invoke(void* instance, MEMBERID member, WORD flags, DISPPARAMS* parameters,
                         VARIANT* result, EXCEPINFO* exception, UINT* argumentError) {
    constexpr WORD kRestricted = 1;
    if (!instance || !parameters) return E_INVALIDARG;
    if (type_.kind == TKIND_DISPATCH) {
        return static_cast<IDispatch*>(instance)->Invoke(member, GUID{}, library_->language, flags,
                                                         parameters, result, exception,
                                                         argumentError);
    }
    for (const Function* each : reachable_) {
        const FUNCDESC& described = each->description;
        if (described.memid != member || (described.invkind & flags) == 0) continue;
        if (described.wFuncFlags & kRestricted) break;
        return CallThroughTable(library_, *each, instance, *parameters, result, exception,
                                argumentError);
    }
    return DISP_E_MEMBERNOTFOUND;
}

HRESULT TypeInfo::GetDocumentation(MEMBERID member, BSTR* name, BSTR* text, DWORD* helpContext,
                                   BSTR* helpFile) {
    if (member == MEMBERID_NIL) {
        return Document(type_.name, type_.help, name, text, helpContext, helpFile);
    }
    const Member found = Find(member);
    if (found.function) {
        return Document(found.function->name, found.function->help, name, text, helpContext,
                        helpFile);
    }
    if (!found.variable) return TYPE_E_ELEMENTNOTFOUND;
    return Document(found.variable->name, found.variable->help, name, text, helpContext, helpFile);
}

HRESULT TypeInfo::GetRefTypeInfo(HREFTYPE reference, ITypeInfo** info) {
    if (!info) return E_INVALIDARG;
    *info = nullptr;
    if (reference == kOtherSide && type_.IsDual()) {
        const Side other = side_ == Side::Dispatch ? Side::Interface : Side::Dispatch;
        return MakeTypeInfo(library_, &type_, other, info);
    }
    std::shared_ptr<const Library> owner = library_;
    const Type* found = Resolve(owner, reference);
    // An interface derives from the interface.
    const bool isBase = type_.kind == TKIND_INTERFACE && side_ == Side::Interface &&
                        !type_.implements.empty() &&
                        reference == type_.implements.front().reference;
    return MakeTypeInfo(owner, found, isBase ? Side::Interface : Side::Dispatch, info);
}

HRESULT TypeInfo::GetContainingTypeLib(ITypeLib** library, UINT* index) {
    if (index) *index = static_cast<UINT>(&type_ - library_->types.data());
    if (!library) return index ? S_OK : E_INVALIDARG;
    *library = MakeObject<TypeLibrary>(library_).Detach();
    return *library ? S_OK : E_OUTOFMEMORY;
}

void TypeInfo::ReleaseTypeAttr(TYPEATTR* attributes) { delete attributes; }
void TypeInfo::ReleaseFuncDesc(FUNCDESC* description) { delete description; }
void TypeInfo::ReleaseVarDesc(VARDESC* description) { delete description; }

HRESULT TypeInfo::GetFuncIndexOfMemId(MEMBERID member, INVOKEKIND kind, UINT* index) {
    if (!index) return E_INVALIDARG;
    for (std::size_t i = 0; i < type_.functions.size(); ++i) {
        const FUNCDESC& each = type_.functions[i].description;
        if (each.memid != member || (each.invkind & kind) == 0) continue;
        *index = static_cast<UINT>(i);
        return S_OK;
    }
    return TYPE_E_ELEMENTNOTFOUND;
}

HRESULT MakeTypeInfo(std::shared_ptr<const Library> library, const Type* type, Side side,
                     ITypeInfo** info) {
    if (!type) return TYPE_E_ELEMENTNOTFOUND;
    *info = MakeObject<TypeInfo>(std::move(library), *type, side).Detach();
    return *info ? S_OK : E_OUTOFMEMORY;
}

}  // namespace platform::types
