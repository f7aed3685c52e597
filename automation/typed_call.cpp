#include "automation/typed_call.h"

#include "platform/object_pointer.h"
#include "platform/shell.h"
#include "platform/unique_variant.h"

namespace AUX {
namespace {

constexpr VARTYPE kReferredValue = VT_BYREF | VT_VARIANT;

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
bool IsEmpty(const VARIANT& value) noexcept { return value.vt == VT_EMPTY || value.vt == VT_NULL; }
bool IsOwn(const ResolvedType& type) noexcept { return !IsEqualIID(type.interfaceId, GUID{}); }

bool IsMissing(const VARIANT& value) noexcept {
    return value.vt == VT_ERROR && value.scode == DISP_E_PARAMNOTFOUND;
}

/// What a value can hold for a member to give.
bool CanBeGiven(VARTYPE kind) noexcept {
    return (kind >= VT_I2 && kind <= VT_DECIMAL) || (kind >= VT_I1 && kind <= VT_UI8) ||
           kind == VT_LPWSTR;
}

/// Where a value of a kind has its data.
void* DataOf(VARTYPE kind, VARIANT& value) noexcept {
    return kind == VT_VARIANT || kind == VT_DECIMAL ? static_cast<void*>(&value) : &value.byref;
}

/// Makes `target`, which may be `from`, hold a reference to the wanted interface.
HRESULT ChangeToObject(const ResolvedType& wanted, VARIANT& from, VARIANT& target) noexcept {
    platform::UniqueVariant object;
    if (!IsEmpty(from)) {
        const HRESULT changed = VariantChangeType(object.Change(), &from, 0, VT_UNKNOWN);
        if (FAILED(changed)) return changed;
    }
    IUnknown* asked = IsEmpty(from) ? nullptr : object.Get().punkVal;
    void* found = nullptr;
    if (asked && FAILED(asked->QueryInterface(wanted.interfaceId, &found))) {
        return DISP_E_TYPEMISMATCH;
    }
    (void)VariantClear(&target);
    target.vt = wanted.kind;
    target.punkVal = static_cast<IUnknown*>(found);
    return S_OK;
}

HRESULT Change(const ResolvedType& wanted, VARIANT& from, VARIANT& target) noexcept {
    const bool isReference = (from.vt & VT_BYREF) != 0;
    if (isReference && !from.byref) return DISP_E_TYPEMISMATCH;
    if (IsObject(wanted.kind) && (IsOwn(wanted) || IsEmpty(from))) {
        return ChangeToObject(wanted, from, target);
    }
    return VariantChangeType(&target, &from, 0, wanted.kind);
}

/// Whether what a reference leads to may be handed in as the wanted interface.
bool Holds(IUnknown* object, const ResolvedType& wanted) noexcept {
    if (!object) return true;
    void* found = nullptr;
    if (FAILED(object->QueryInterface(wanted.interfaceId, &found))) return false;
    static_cast<IUnknown*>(found)->Release();
    return found == object;
}

}  // namespace

TypedCall::TypedCall(const CallPlan& plan) noexcept
    : plan_(plan), parameters_(plan.function->cParams), count_(parameters_) {
    if (parameters_ > kMaxParameters) return;
    for (int i = 0; i < parameters_; ++i) {
        given_[i] = nullptr;
        temporaries_[i].vt = VT_EMPTY;
    }
}

TypedCall::~TypedCall() {
    if (parameters_ > kMaxParameters) return;
    for (int i = 0; i < parameters_; ++i) {
        if (temporaries_[i].vt != VT_EMPTY) (void)VariantClear(&temporaries_[i]);
    }
}

USHORT TypedCall::FlagsOf(int place) const noexcept {
    return plan_.function->lprgelemdescParam[place].paramdesc.wParamFlags;
}

void TypedCall::PassPointer(int place, void* pointer) noexcept {
    kinds_[place] = VT_I8;
    passed_[place].vt = VT_I8;
    passed_[place].byref = pointer;
    places_[place] = &passed_[place];
}

void TypedCall::PassValue(int place, VARTYPE kind, const VARIANT& value) noexcept {
    kinds_[place] = kind;
    passed_[place] = value;
    places_[place] = &passed_[place];
}

HRESULT TypedCall::Run(void* instance, const DISPPARAMS& given, VARIANT* result,
                       UINT* argumentError) noexcept {
    if (parameters_ > kMaxParameters) return DISP_E_BADVARTYPE;
    const HRESULT assigned = Assign(given);
    if (FAILED(assigned)) return assigned;
    for (int i = 0; i < parameters_; ++i) {
        if (i == resultPlace_) continue;
        if (!given_[i] && !(FlagsOf(i) & (PARAMFLAG_FOPT | PARAMFLAG_FHASDEFAULT))) {
            return DISP_E_BADPARAMCOUNT;
        }
        const HRESULT taken = given_[i] ? Take(i) : TakeNothing(i);
        if (FAILED(taken)) {
            if (argumentError) *argumentError = static_cast<UINT>(i);
            return taken;
        }
    }
    return SetResultPlace() ? Call(instance, result) : DISP_E_BADVARTYPE;
}

// The unnamed arguments are those of the first parameters. A name is the number of its parameter,
// or says that the argument is the new value, the last one.
HRESULT TypedCall::Assign(const DISPPARAMS& given) noexcept {
    const UINT unnamed = given.cArgs - given.cNamedArgs;
    if (given.cNamedArgs > given.cArgs) return E_INVALIDARG;
    if (unnamed > static_cast<UINT>(parameters_)) return DISP_E_BADPARAMCOUNT;
    for (UINT i = 0; i < unnamed; ++i) given_[i] = &given.rgvarg[given.cArgs - 1 - i];
    const INVOKEKIND kind = plan_.function->invkind;
    const bool isPut = kind == INVOKE_PROPERTYPUT || kind == INVOKE_PROPERTYPUTREF;
    for (UINT i = 0; i < given.cNamedArgs; ++i) {
        const DISPID name = given.rgdispidNamedArgs[i];
        const DISPID place = isPut && name == DISPID_PROPERTYPUT ? parameters_ - 1 : name;
        if (place < 0 || place >= parameters_) return DISP_E_PARAMNOTFOUND;
        if (given_[place]) return place == name ? DISP_E_PARAMNOTFOUND : DISP_E_BADPARAMCOUNT;
        given_[place] = &given.rgvarg[i];
    }
    for (int i = 0; i < parameters_; ++i) {
        if (!given_[i] && (FlagsOf(i) & PARAMFLAG_FRETVAL)) resultPlace_ = i;
    }
    return S_OK;
}

HRESULT TypedCall::Take(int place) noexcept {
    const ResolvedType& wanted = plan_.parameters[place];
    VARIANT& given = *given_[place];
    if (IsMissing(given)) {
        // A caller that says so itself tells it to a VARIANT in the same way.
        const bool isToldOn =
            wanted.kind == VT_VARIANT && !(FlagsOf(place) & PARAMFLAG_FHASDEFAULT);
        const bool isOptional = FlagsOf(place) & (PARAMFLAG_FOPT | PARAMFLAG_FHASDEFAULT);
        if (!isToldOn) return isOptional ? TakeNothing(place) : DISP_E_PARAMNOTOPTIONAL;
    }
    if (wanted.level > 1) return DISP_E_BADVARTYPE;
    return wanted.level == 1 ? FitReference(wanted, given, place) : FitValue(wanted, given, place);
}

HRESULT TypedCall::TakeNothing(int place) noexcept {
    const ResolvedType& wanted = plan_.parameters[place];
    VARIANT& temporary = temporaries_[place];
    if (wanted.level > 1) return DISP_E_BADVARTYPE;
    if (FlagsOf(place) & PARAMFLAG_FHASDEFAULT) {
        const PARAMDESC& about = plan_.function->lprgelemdescParam[place].paramdesc;
        VARIANT& standard = about.pparamdescex->varDefaultValue;
        if (wanted.level != 1) return FitValue(wanted, standard, place);
        if (wanted.kind != VT_VARIANT) return FitReference(wanted, standard, place);
        // The method may change it.
        const HRESULT copied = VariantChangeType(&temporary, &standard, 0, standard.vt);
        if (SUCCEEDED(copied)) PassPointer(place, &temporary);
        return copied;
    }
    if (wanted.level != 1) {
        VARIANT none;
        VariantInit(&none);
        none.vt = VT_NULL;
        return FitValue(wanted, none, place);
    }
    // A place for a result that nobody wants; only the method knows how to free a plain text.
    if (wanted.kind == VT_LPWSTR || !CanBeGiven(wanted.kind)) {
        PassPointer(place, nullptr);
        return S_OK;
    }
    VariantInit(&temporary);
    temporary.vt = wanted.kind == VT_VARIANT ? VARTYPE{VT_NULL} : wanted.kind;
    PassPointer(place, DataOf(wanted.kind, temporary));
    return S_OK;
}

HRESULT TypedCall::FitValue(const ResolvedType& wanted, VARIANT& given, int place) noexcept {
    VARIANT* from = &given;
    if (from->vt == kReferredValue && from->byref) from = static_cast<VARIANT*>(from->byref);
    if (wanted.kind == VT_LPWSTR) return FitText(*from, place);
    if (wanted.kind == VT_VARIANT || (Plain(from->vt) == wanted.kind && !IsOwn(wanted))) {
        PassValue(place, wanted.kind, *from);
        return S_OK;
    }
    VARIANT& temporary = temporaries_[place];
    const HRESULT changed = Change(wanted, *from, temporary);
    if (SUCCEEDED(changed)) PassValue(place, wanted.kind, temporary);
    return changed;
}

HRESULT TypedCall::FitText(const VARIANT& given, int place) noexcept {
    void* text = given.byref;
    switch (given.vt) {
        case VT_NULL:
            text = nullptr;
            break;
        case VT_BSTR:
        case VT_LPWSTR:
            break;
        case VT_BYREF | VT_BSTR:
            if (!text) return DISP_E_TYPEMISMATCH;
            text = *static_cast<BSTR*>(text);
            break;
        case VT_UNKNOWN:
            // Callers that have no kind for plain texts pass them as objects.
            if (platform::IsObjectPointer(text)) return DISP_E_TYPEMISMATCH;
            break;
        default:
            return DISP_E_TYPEMISMATCH;
    }
    PassPointer(place, text);
    return S_OK;
}

HRESULT TypedCall::FitReference(const ResolvedType& wanted, VARIANT& given, int place) noexcept {
    const USHORT flags = FlagsOf(place);
    const bool isInOnly = !(flags & PARAMFLAG_FOUT),
               isOutOnly = !isInOnly && !(flags & PARAMFLAG_FIN);
    const bool isReference = (given.vt & VT_BYREF) != 0;
    if (isReference && !given.byref) return DISP_E_TYPEMISMATCH;
    if (wanted.kind == VT_VARIANT) {
        PassPointer(place, given.vt == kReferredValue ? given.byref : &given);
        return S_OK;
    }
    if (isReference && Plain(given.vt) == (VT_BYREF | wanted.kind)) {
        const bool fits =
            !IsOwn(wanted) || isOutOnly || Holds(*static_cast<IUnknown**>(given.byref), wanted);
        if (fits) PassPointer(place, given.byref);
        return fits ? S_OK : DISP_E_TYPEMISMATCH;
    }
    if (wanted.kind == VT_LPWSTR) {
        if (!isInOnly || given.vt != (VT_BYREF | VT_BSTR)) return DISP_E_TYPEMISMATCH;
        PassPointer(place, given.byref);
        return S_OK;
    }
    if (!CanBeGiven(wanted.kind)) return DISP_E_TYPEMISMATCH;
    VARIANT* from = given.vt == kReferredValue ? static_cast<VARIANT*>(given.byref) : &given;
    // The caller's own value takes the kind, so that it sees the change.
    VARIANT* room = from != &given && !isInOnly ? from : &temporaries_[place];
    HRESULT changed = S_OK;
    if (isOutOnly) {
        changed = room == from ? VariantClear(room) : S_OK;
        VariantInit(room);
        room->vt = wanted.kind;
    } else {
        changed = Change(wanted, *from, *room);
    }
    if (SUCCEEDED(changed)) PassPointer(place, DataOf(wanted.kind, *room));
    return changed;
}

/// \return false for a result that no value can hold.
bool TypedCall::SetResultPlace() noexcept {
    if (resultPlace_ >= 0) {
        const ResolvedType& given = plan_.parameters[resultPlace_];
        resultKind_ = given.kind;
        return given.level == 1 && CanBeGiven(given.kind);
    }
    if (plan_.result.kind == VT_VOID) return true;
    resultKind_ = plan_.result.kind;
    resultPlace_ = count_++;
    return plan_.result.level == 0 && CanBeGiven(resultKind_);
}

HRESULT TypedCall::Call(void* instance, VARIANT* result) noexcept {
    VARIANT made;
    VariantInit(&made);
    if (resultPlace_ >= 0) {
        if (resultKind_ != VT_VARIANT) made.vt = resultKind_;
        PassPointer(resultPlace_, DataOf(resultKind_, made));
    }
    VARIANT returned;
    VariantInit(&returned);
    const auto offset = static_cast<ULONG_PTR>(plan_.function->oVft);
    HRESULT status = DispCallFunc(instance, offset, CC_STDCALL, VT_I4, static_cast<UINT>(count_),
                                  kinds_, places_, &returned);
    if (SUCCEEDED(status)) status = returned.lVal;
    // What lies over the kind may have been written over it.
    if (resultKind_ == VT_DECIMAL) made.vt = VT_DECIMAL;
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
    }
    return status;
}

}  // namespace AUX
