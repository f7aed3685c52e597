#include "platform/posix/typeinfo/call.h"

#include <cstring>
#include <ffi.h>
#include <optional>
#include <span>
#include <vector>

#include "platform/automation.h"
#include "platform/com_ptr.h"

namespace platform::types {
namespace {

constexpr int kMaxAliases = 16;

/// What a parameter takes.
struct Wanted {
    VARTYPE kind = VT_EMPTY;
    bool isPointer = false;
    const GUID* interface = nullptr;  // of an object other than IUnknown and IDispatch
};

/// How a call passes a kind; null for one that automation does not pass.
ffi_type* PassedAs(VARTYPE kind) {
    static ffi_type* words[] = {&ffi_type_uint64, &ffi_type_uint64, &ffi_type_uint64, nullptr};
    static ffi_type variant{0, 0, FFI_TYPE_STRUCT, words};
    switch (kind) {
        case VT_I1:
            return &ffi_type_sint8;
        case VT_UI1:
            return &ffi_type_uint8;
        case VT_I2:
        case VT_BOOL:
            return &ffi_type_sint16;
        case VT_UI2:
            return &ffi_type_uint16;
        case VT_I4:
        case VT_ERROR:
            return &ffi_type_sint32;
        case VT_UI4:
            return &ffi_type_uint32;
        case VT_I8:
            return &ffi_type_sint64;
        case VT_UI8:
            return &ffi_type_uint64;
        case VT_R4:
            return &ffi_type_float;
        case VT_R8:
        case VT_DATE:
            return &ffi_type_double;
        case VT_BSTR:
        case VT_DISPATCH:
        case VT_UNKNOWN:
            return &ffi_type_pointer;
        case VT_VARIANT:
            return &variant;
        default:
            return nullptr;
    }
}

VARTYPE Plain(VARTYPE kind) {
    return kind == VT_INT       ? VARTYPE{VT_I4}
           : kind == VT_UINT    ? VARTYPE{VT_UI4}
           : kind == VT_HRESULT ? VARTYPE{VT_ERROR}
                                : kind;
}

/// Nothing for a type that a late-bound call cannot pass.
std::optional<Wanted> WantedBy(std::shared_ptr<const Library> library, const TYPEDESC* type) {
    Wanted wanted;
    int levels = 0;
    for (int aliases = 0; aliases < kMaxAliases; ++aliases) {
        for (; type->vt == VT_PTR; type = type->lptdesc) ++levels;
        if (type->vt != VT_USERDEFINED) {
            wanted.kind = Plain(type->vt);
            break;
        }
        const Type* named = Resolve(library, type->hreftype);
        if (!named) return {};
        if (named->kind == TKIND_ALIAS) {
            type = &named->alias;
            continue;
        }
        if (named->kind == TKIND_ENUM) {
            wanted.kind = VT_I4;
            break;
        }
        const bool isDispatch = (named->flags & TYPEFLAG_FDISPATCHABLE) != 0;
        const bool isObject = isDispatch || named->kind == TKIND_INTERFACE;
        if (!isObject || levels-- == 0) return {};
        wanted.kind = isDispatch ? VT_DISPATCH : VT_UNKNOWN;
        wanted.interface = &named->id;
        break;
    }
    if (!PassedAs(wanted.kind) || levels > 1) return {};
    wanted.isPointer = levels == 1;
    return wanted;
}

bool IsMissing(const VARIANT& argument) {
    return argument.vt == VT_ERROR && argument.scode == DISP_E_PARAMNOTFOUND;
}

/// One argument of the call on its way, and what was made for it.
class Argument {
public:
    Argument() = default;
    Argument(const Argument&) = delete;
    Argument& operator=(const Argument&) = delete;
    ~Argument() {
        if (owns_) (void)VariantClear(&value_);
    }

    HRESULT Set(const Wanted& wanted, VARIANT& given) {
        Expect(wanted);
        if (!isPointer_) return MakeValue(wanted, given);
        if (wanted.kind == VT_VARIANT && given.vt != (VT_BYREF | VT_VARIANT)) {
            pointer_ = &given;
            return S_OK;
        }
        if ((given.vt & VT_BYREF) && Plain(given.vt & ~VT_BYREF) == wanted.kind) {
            pointer_ = given.byref;
            return S_OK;
        }
        if (given.vt == (VT_BYREF | VT_VARIANT)) {
            // The caller's own value takes the kind, so that it sees the change.
            auto* own = static_cast<VARIANT*>(given.byref);
            pointer_ = &own->room;
            return VariantChangeType(own, own, 0, wanted.kind);
        }
        return MakeValue(wanted, given);
    }

    /// For an argument that was left out.
    HRESULT SetMissing(const Wanted& wanted, const PARAMDESC& parameter) {
        if (parameter.wParamFlags & PARAMFLAG_FHASDEFAULT) {
            return Set(wanted, parameter.pparamdescex->varDefaultValue);
        }
        if ((parameter.wParamFlags & PARAMFLAG_FOPT) == 0) return DISP_E_PARAMNOTOPTIONAL;
        Expect(wanted);
        if (wanted.kind != VT_VARIANT) return S_OK;  // zero, or a pointer to it
        value_.vt = VT_ERROR;
        value_.scode = DISP_E_PARAMNOTFOUND;
        return S_OK;
    }

    /// Makes room for the result.
    void SetResult(const Wanted& wanted) {
        Expect(wanted);
        owns_ = true;
        if (wanted.kind != VT_VARIANT) value_.vt = wanted.kind;
    }

    void TakeResult(VARIANT& result) {
        result = value_;
        owns_ = false;
    }

    [[nodiscard]] ffi_type* PassedType() const { return passed_; }
    /// Where the call finds what it passes.
    [[nodiscard]] void* Address() { return isPointer_ ? &pointer_ : pointer_; }

private:
    void Expect(const Wanted& wanted) {
        isPointer_ = wanted.isPointer;
        passed_ = isPointer_ ? &ffi_type_pointer : PassedAs(wanted.kind);
        pointer_ = wanted.kind == VT_VARIANT ? static_cast<void*>(&value_) : &value_.room;
    }

    HRESULT MakeValue(const Wanted& wanted, const VARIANT& given) {
        const VARIANT* from = &given;
        if (from->vt == (VT_BYREF | VT_VARIANT)) from = static_cast<const VARIANT*>(from->byref);
        const bool fits = Plain(from->vt) == wanted.kind && !wanted.interface;
        if (wanted.kind == VT_VARIANT || (fits && !isPointer_)) {
            value_ = *from;  // Lent, as arguments are.
            return S_OK;
        }
        owns_ = true;
        const bool isObject = wanted.kind == VT_DISPATCH || wanted.kind == VT_UNKNOWN;
        const bool isNothing = from->vt == VT_EMPTY || from->vt == VT_NULL;
        if (isObject && isNothing) return S_OK;
        if (!wanted.interface) return VariantChangeType(&value_, from, 0, wanted.kind);
        if (from->vt != VT_DISPATCH && from->vt != VT_UNKNOWN) return DISP_E_TYPEMISMATCH;
        if (!from->punkVal) return S_OK;
        void* found = nullptr;
        if (FAILED(from->punkVal->QueryInterface(*wanted.interface, &found))) {
            return DISP_E_TYPEMISMATCH;
        }
        value_.vt = wanted.kind;
        value_.punkVal = static_cast<IUnknown*>(found);
        return S_OK;
    }

    VARIANT value_{};
    void* pointer_ = nullptr;
    ffi_type* passed_ = nullptr;
    bool isPointer_ = false;
    bool owns_ = false;
};

/// The place in rgvarg of the argument for a parameter; nothing if it was left out.
std::optional<UINT> PlaceOf(std::size_t parameter, bool isNewValue, const DISPPARAMS& given) {
    const auto wanted = isNewValue ? DISPID_PROPERTYPUT : static_cast<DISPID>(parameter);
    for (UINT i = 0; i < given.cNamedArgs; ++i) {
        if (given.rgdispidNamedArgs[i] == wanted) return i;
    }
    const UINT unnamed = given.cArgs - given.cNamedArgs;
    if (isNewValue || parameter >= unnamed) return {};
    return given.cArgs - 1 - static_cast<UINT>(parameter);
}

/// Refuses named arguments that no parameter has, and more arguments than parameters.
HRESULT CheckCount(const DISPPARAMS& given, std::size_t parameters, bool isPut) {
    if (given.cNamedArgs > given.cArgs) return E_INVALIDARG;
    const std::size_t unnamed = given.cArgs - given.cNamedArgs;
    bool hasNewValue = false;
    for (UINT i = 0; i < given.cNamedArgs; ++i) {
        const DISPID name = given.rgdispidNamedArgs[i];
        const bool isNewValue = isPut && name == DISPID_PROPERTYPUT;
        hasNewValue |= isNewValue;
        const bool isKnown =
            name >= static_cast<DISPID>(unnamed) && static_cast<std::size_t>(name) < parameters;
        if (!isNewValue && !isKnown) return DISP_E_PARAMNOTFOUND;
    }
    if (isPut && !hasNewValue) return DISP_E_PARAMNOTFOUND;
    return unnamed > parameters - isPut ? DISP_E_BADPARAMCOUNT : S_OK;
}

/// Calls the entry of the table, and tells of its failure.
HRESULT Call(void* instance, SHORT offset, std::span<Argument> arguments, EXCEPINFO* exception) {
    std::vector<ffi_type*> types{&ffi_type_pointer};
    std::vector<void*> values{&instance};
    for (Argument& each : arguments) {
        types.push_back(each.PassedType());
        values.push_back(each.Address());
    }
    ffi_cif interface;
    if (ffi_prep_cif(&interface, FFI_DEFAULT_ABI, static_cast<unsigned>(types.size()),
                     &ffi_type_sint32, types.data()) != FFI_OK) {
        return E_UNEXPECTED;
    }
    const auto* table = *static_cast<const std::byte* const*>(instance);
    void (*entry)() = nullptr;
    std::memcpy(&entry, table + offset, sizeof entry);
    ffi_arg returned = 0;
    ffi_call(&interface, entry, &returned, values.data());
    const auto result = static_cast<HRESULT>(returned);
    if (SUCCEEDED(result)) return result;
    if (exception) {
        *exception = {};
        exception->scode = result;
    }
    return DISP_E_EXCEPTION;
}

}  // namespace

HRESULT CallThroughTable(const std::shared_ptr<const Library>& library, const Function& function,
                         void* instance, const DISPPARAMS& parameters, VARIANT* result,
                         EXCEPINFO* exception, UINT* argumentError) {
    const FUNCDESC& described = function.description;
    if (described.elemdescFunc.tdesc.vt != VT_HRESULT) return DISP_E_BADVARTYPE;
    std::vector<Argument> arguments(function.parameters.size());
    const bool hasResult =
        !function.parameters.empty() &&
        (function.parameters.back().paramdesc.wParamFlags & PARAMFLAG_FRETVAL) != 0;
    const std::size_t taken = arguments.size() - hasResult;
    const bool isPut = (described.invkind & (INVOKE_PROPERTYPUT | INVOKE_PROPERTYPUTREF)) != 0;
    HRESULT status = CheckCount(parameters, taken, isPut && taken > 0);
    if (FAILED(status)) return status;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const ELEMDESC& each = function.parameters[i];
        const std::optional<Wanted> wanted = WantedBy(library, &each.tdesc);
        if (!wanted) return DISP_E_BADVARTYPE;
        if (i == taken) {
            if (!wanted->isPointer) return DISP_E_BADVARTYPE;
            arguments[i].SetResult(*wanted);
            continue;
        }
        const std::optional<UINT> place = PlaceOf(i, isPut && i + 1 == taken, parameters);
        const bool isGiven = place && !IsMissing(parameters.rgvarg[*place]);
        status = isGiven ? arguments[i].Set(*wanted, parameters.rgvarg[*place])
                         : arguments[i].SetMissing(*wanted, each.paramdesc);
        // An argument that says it is missing is one that does not fit; one too few is a count.
        if (status == DISP_E_PARAMNOTOPTIONAL && !place) return DISP_E_BADPARAMCOUNT;
        if (FAILED(status)) {
            if (argumentError && place) *argumentError = *place;
            return status;
        }
    }
    status = Call(instance, described.oVft, arguments, exception);
    if (SUCCEEDED(status) && hasResult && result) arguments[taken].TakeResult(*result);
    return status;
}

}  // namespace platform::types
