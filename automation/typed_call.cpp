#include "automation/typed_call.h"

#include "platform/object_pointer.h"
#include "platform/shell.h"

namespace AUX {
namespace {

VARTYPE Plain(VARTYPE kind) noexcept {
    switch (kind & ~VT_BYREF) {
        case VT_INT:
            return static_cast<VARTYPE>((kind & VT_BYREF) | VT_I4);
        case VT_UINT:
            return static_cast<VARTYPE>((kind & VT_BYREF) | VT_UI4);
        default:
            return kind;
    }
}

bool IsObject(VARTYPE kind) noexcept { return kind == VT_DISPATCH || kind == VT_UNKNOWN; }

bool IsMissing(const VARIANT& value) noexcept {
    return value.vt == VT_ERROR && value.scode == DISP_E_PARAMNOTFOUND;
}

/// An optional parameter that was left out takes its default, or the value that stands for none.
VARIANT* LeftOut(const PARAMDESC& parameter, VARIANT& none) noexcept {
    if (parameter.wParamFlags & PARAMFLAG_FHASDEFAULT) {
        return &parameter.pparamdescex->varDefaultValue;
    }
    none.vt = VT_NULL;
    return &none;
}

}  // namespace

TypedCall::~TypedCall() {
    for (VARIANT& each : temporaries_) (void)VariantClear(&each);
}

HRESULT TypedCall::Describe(TypeInfoHolder& holder, const FUNCDESC& function) noexcept {
    if (function.cParams < 0 || function.cParams > kMaxParameters) return DISP_E_BADVARTYPE;
    function_ = &function;
    for (int i = 0; i < function.cParams; ++i) {
        const ELEMDESC& each = function.lprgelemdescParam[i];
        Type& type = types_[i];
        if (!holder.Resolve(holder.info_.Get(), each.tdesc, type, 0)) return DISP_E_BADVARTYPE;
        const bool isResult = (each.paramdesc.wParamFlags & PARAMFLAG_FRETVAL) != 0;
        if (isResult) {
            if (type.level != 1) return DISP_E_BADVARTYPE;
            resultType_ = type;
            resultPlace_ = i;
        } else if (type.level > 1) {
            return DISP_E_BADVARTYPE;
        }
    }
    count_ = function.cParams;
    const VARTYPE given = function.elemdescFunc.tdesc.vt;
    if (function.funckind != FUNC_DISPATCH || given == VT_VOID) return S_OK;
    if (!holder.Resolve(holder.info_.Get(), function.elemdescFunc.tdesc, resultType_, 0) ||
        resultType_.level != 0) {
        return DISP_E_BADVARTYPE;
    }
    if (resultType_.kind != VT_VOID) resultPlace_ = count_++;
    return S_OK;
}

void TypedCall::PassPointer(int place, void* pointer) noexcept {
    kinds_[place] = VT_I8;
    passed_[place].byref = pointer;
    places_[place] = &passed_[place];
}

void TypedCall::PassValue(int place, VARTYPE kind, const VARIANT& value) noexcept {
    kinds_[place] = kind;
    passed_[place] = value;
    places_[place] = &passed_[place];
}

HRESULT TypedCall::FitObject(const Type& wanted, VARIANT& given, int place) noexcept {
    VARIANT& temporary = temporaries_[place];
    if (given.vt == VT_EMPTY || given.vt == VT_NULL) {
        PassPointer(place, nullptr);
        return S_OK;
    }
    const bool isAnyObject = IsEqualIID(wanted.interfaceId, GUID{});
    if (isAnyObject && given.vt == wanted.kind) {
        PassPointer(place, given.punkVal);
        return S_OK;
    }
    if (isAnyObject || !IsObject(given.vt)) {
        const HRESULT changed = VariantChangeType(&temporary, &given, 0, wanted.kind);
        if (FAILED(changed)) return changed;
        if (isAnyObject) {
            PassPointer(place, temporary.punkVal);
            return S_OK;
        }
    }
    // The method will call through the table of just this interface.
    IUnknown* object = IsObject(given.vt) ? given.punkVal : temporary.punkVal;
    void* found = nullptr;
    if (object && FAILED(object->QueryInterface(wanted.interfaceId, &found))) {
        return DISP_E_TYPEMISMATCH;
    }
    (void)VariantClear(&temporary);
    temporary.vt = VT_UNKNOWN;
    temporary.punkVal = static_cast<IUnknown*>(found);
    PassPointer(place, found);
    return S_OK;
}

HRESULT TypedCall::Fit(const Type& wanted, bool isInOnly, VARIANT* given, int place) noexcept {
    if (wanted.level == 1) {
        if (wanted.kind == VT_VARIANT) {
            const bool isReference = given->vt == (VT_BYREF | VT_VARIANT);
            PassPointer(place, isReference ? given->byref : given);
            return S_OK;
        }
        if ((given->vt & VT_BYREF) && Plain(given->vt) == (VT_BYREF | wanted.kind)) {
            PassPointer(place, given->byref);
            return S_OK;
        }
        if (wanted.kind == VT_LPWSTR) {
            if (!isInOnly || given->vt != (VT_BYREF | VT_BSTR)) return DISP_E_TYPEMISMATCH;
            PassPointer(place, given->byref);
            return S_OK;
        }
        if (!IsEqualIID(wanted.interfaceId, GUID{})) return DISP_E_TYPEMISMATCH;
        VARIANT* room = &temporaries_[place];
        VARIANT* from = given;
        // The caller's own value takes the kind, so that it sees the change.
        if (given->vt == (VT_BYREF | VT_VARIANT)) from = room = static_cast<VARIANT*>(given->byref);
        const HRESULT changed = VariantChangeType(room, from, 0, wanted.kind);
        if (SUCCEEDED(changed)) PassPointer(place, &room->byref);
        return changed;
    }
    VARIANT* from = given;
    if (from->vt == (VT_BYREF | VT_VARIANT)) from = static_cast<VARIANT*>(from->byref);
    if (wanted.kind == VT_VARIANT) {
        PassValue(place, VT_VARIANT, *from);
        return S_OK;
    }
    if (IsObject(wanted.kind)) return FitObject(wanted, *from, place);
    if (wanted.kind == VT_LPWSTR) {
        const bool isText = from->vt == VT_BSTR || from->vt == VT_LPWSTR || from->vt == VT_NULL ||
                            (from->vt == VT_UNKNOWN && !platform::IsObjectPointer(from->byref));
        if (!isText) return DISP_E_TYPEMISMATCH;
        PassPointer(place, from->vt == VT_NULL ? nullptr : from->byref);
        return S_OK;
    }
    if (Plain(from->vt) == wanted.kind) {
        PassValue(place, wanted.kind, *from);
        return S_OK;
    }
    VARIANT& temporary = temporaries_[place];
    const HRESULT changed = VariantChangeType(&temporary, from, 0, wanted.kind);
    if (SUCCEEDED(changed)) PassValue(place, wanted.kind, temporary);
    return changed;
}

HRESULT TypedCall::Take(int parameter, VARIANT* given) noexcept {
    const PARAMDESC& about = function_->lprgelemdescParam[parameter].paramdesc;
    const Type& wanted = types_[parameter];
    VARIANT none{};
    const bool isOptional = (about.wParamFlags & (PARAMFLAG_FOPT | PARAMFLAG_FHASDEFAULT)) != 0;
    // A caller that says so itself tells it to a VARIANT in the same way.
    const bool saysSo = given && IsMissing(*given) &&
                        ((about.wParamFlags & PARAMFLAG_FHASDEFAULT) || wanted.kind != VT_VARIANT);
    if (!given && !isOptional) return DISP_E_BADPARAMCOUNT;
    if (!given || (saysSo && isOptional)) given = LeftOut(about, none);
    const bool isInOnly = (about.wParamFlags & PARAMFLAG_FOUT) == 0;
    if (given == &none && wanted.level == 1) {
        temporaries_[parameter].vt = VT_NULL;
        PassPointer(parameter, wanted.kind == VT_VARIANT ? &temporaries_[parameter] : nullptr);
        return S_OK;
    }
    return Fit(wanted, isInOnly, given, parameter);
}

HRESULT TypedCall::Run(void* instance, const DISPPARAMS& given, VARIANT* result,
                       UINT* argumentError) noexcept {
    UINT used = 0;
    for (int i = 0; i < function_->cParams; ++i) {
        if (i == resultPlace_) continue;
        VARIANT* argument = used < given.cArgs ? &given.rgvarg[given.cArgs - 1 - used] : nullptr;
        if (argument) ++used;
        const HRESULT taken = Take(i, argument);
        if (FAILED(taken)) {
            if (argumentError && argument) *argumentError = static_cast<UINT>(i);
            return taken;
        }
    }
    return used < given.cArgs ? DISP_E_BADPARAMCOUNT : Call(instance, result);
}

HRESULT TypedCall::Call(void* instance, VARIANT* result) noexcept {
    VARIANT made{};
    if (resultPlace_ >= 0) {
        const bool isVariant = resultType_.kind == VT_VARIANT;
        if (!isVariant) made.vt = resultType_.kind;
        PassPointer(resultPlace_, isVariant ? static_cast<void*>(&made) : &made.byref);
    }
    VARIANT returned{};
    HRESULT status = DispCallFunc(instance, static_cast<ULONG_PTR>(function_->oVft), CC_STDCALL,
                                  VT_I4, static_cast<UINT>(count_), kinds_, places_, &returned);
    if (SUCCEEDED(status)) status = returned.lVal;
    if (made.vt == VT_LPWSTR) {
        auto* text = static_cast<WCHAR*>(made.byref);
        made.vt = text ? VARTYPE{VT_BSTR} : VARTYPE{VT_EMPTY};
        made.bstrVal = text ? SysAllocString(text) : nullptr;
        if (text && !made.bstrVal && SUCCEEDED(status)) status = E_OUTOFMEMORY;
        CoTaskMemFree(text);
    }
    if (SUCCEEDED(status) && result) {
        *result = made;
    } else {
        (void)VariantClear(&made);
        if (result) VariantInit(result);
    }
    return status;
}

}  // namespace AUX
