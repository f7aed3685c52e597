#include "platform/posix/typeinfo/library.h"

#include <cstring>

#include "platform/posix/typeinfo/built_in.h"

namespace platform::types {
namespace {

constexpr WORD kAbsent = 0xFFFF;
constexpr int kMaxLevels = 8;

/// Whether a value of this kind is all in its bits.
bool IsNumber(VARTYPE kind) {
    return (kind >= VT_I2 && kind <= VT_DATE) || kind == VT_ERROR || kind == VT_BOOL ||
           (kind >= VT_I1 && kind <= VT_UINT);
}

/// Takes values off the front of the bytes. After a failure every further value is 0.
class Reader {
public:
    explicit Reader(std::span<const std::byte> bytes) : bytes_(bytes) {}

    [[nodiscard]] bool Failed() const { return failed_; }
    [[nodiscard]] bool AtEnd() const { return !failed_ && bytes_.empty(); }
    void Fail() { failed_ = true; }

    template <class T>
    T Take() {
        T value{};
        if (failed_ || bytes_.size() < sizeof value) {
            failed_ = true;
            return value;
        }
        std::memcpy(&value, bytes_.data(), sizeof value);
        bytes_ = bytes_.subspan(sizeof value);
        return value;
    }

    /// A count of things of at least `least` bytes each.
    template <class T>
    std::size_t Count(std::size_t least) {
        const std::size_t count = Take<T>();
        if (count * least > bytes_.size()) failed_ = true;
        return failed_ ? 0 : count;
    }

    OptionalText Text() {
        OptionalText read;
        const WORD units = Take<WORD>();
        if (failed_ || units == kAbsent) return read;
        const std::size_t size = units * sizeof(WCHAR);
        if (bytes_.size() < size) {
            failed_ = true;
            return read;
        }
        read.isThere = true;
        read.text.resize(units);
        std::memcpy(read.text.data(), bytes_.data(), size);
        bytes_ = bytes_.subspan(size);
        return read;
    }

private:
    std::span<const std::byte> bytes_;
    bool failed_ = false;
};

class LibraryReader {
public:
    LibraryReader(std::span<const std::byte> bytes, Library& library)
        : in_(bytes), library_(library) {}

    bool Read() {
        constexpr DWORD kMagic = 0x314C5451;  // "QTL1"
        if (in_.Take<DWORD>() != kMagic) return false;
        library_.id = in_.Take<GUID>();
        library_.major = in_.Take<WORD>();
        library_.minor = in_.Take<WORD>();
        library_.language = in_.Take<DWORD>();
        library_.flags = in_.Take<WORD>();
        library_.name = in_.Text().text;
        library_.help = in_.Text();
        library_.types.resize(in_.Count<WORD>(33));
        for (Type& type : library_.types) ReadType(type);
        return in_.AtEnd();
    }

private:
    void ReadType(Type& type) {
        const auto kind = in_.Take<BYTE>();
        if (kind > TKIND_UNION) return in_.Fail();
        type.kind = static_cast<TYPEKIND>(kind);
        type.id = in_.Take<GUID>();
        type.flags = in_.Take<WORD>();
        type.major = in_.Take<WORD>();
        type.minor = in_.Take<WORD>();
        type.name = in_.Text().text;
        type.help = in_.Text();
        if (type.kind == TKIND_ALIAS) ReadTypeDescription(type.alias, 0);
        type.implements.resize(in_.Count<WORD>(8));
        for (Implemented& implemented : type.implements) {
            implemented.reference = Reference();
            implemented.flags = in_.Take<INT>();
        }
        type.slots = BaseSlots(type);
        type.variables.resize(in_.Count<WORD>(12));
        for (Variable& variable : type.variables) ReadVariable(variable, type.kind);
        type.functions.resize(in_.Count<WORD>(14));
        for (Function& function : type.functions) ReadFunction(function, type);
    }

    /// Entries of the table of an interface's base. That lies before the interface, so that no
    /// library can make the walk over the bases endless.
    WORD BaseSlots(const Type& type) {
        if (type.kind != TKIND_INTERFACE || type.implements.empty()) return 0;
        const HREFTYPE reference = type.implements.front().reference;
        if (reference & kBaseLibraryReference) {
            return BaseLibrary()->types[reference & ~kBaseLibraryReference].slots;
        }
        const Type& base = library_.types[in_.Failed() ? 0 : reference];
        if (&base >= &type || base.kind != TKIND_INTERFACE) in_.Fail();
        return base.slots;
    }

    HREFTYPE Reference() {
        const auto reference = in_.Take<HREFTYPE>();
        const bool isOurs = reference < library_.types.size();
        // The base library itself refers to its own types only.
        const bool isBase = (reference & kBaseLibraryReference) != 0 &&
                            (reference & ~kBaseLibraryReference) < BaseLibrary()->types.size();
        if (!isOurs && !isBase) in_.Fail();
        return in_.Failed() ? 0 : reference;
    }

    void ReadTypeDescription(TYPEDESC& description, int level) {
        description.vt = in_.Take<VARTYPE>();
        if (description.vt == VT_PTR || description.vt == VT_SAFEARRAY) {
            if (level == kMaxLevels) return in_.Fail();
            description.lptdesc = &library_.targets.emplace_back();
            ReadTypeDescription(*description.lptdesc, level + 1);
        } else if (description.vt == VT_USERDEFINED) {
            description.hreftype = Reference();
        }
    }

    void ReadValue(VARIANT& value) {
        const auto kind = in_.Take<VARTYPE>();
        if (kind != VT_BSTR) {
            if (!IsNumber(kind)) return in_.Fail();
            value.room[0] = in_.Take<ULONGLONG>();
            value.vt = kind;
            return;
        }
        const OptionalText text = in_.Text();
        value.bstrVal = SysAllocStringLen(text.text.data(), static_cast<UINT>(text.text.size()));
        value.vt = VT_BSTR;
    }

    void ReadVariable(Variable& variable, TYPEKIND owner) {
        VARDESC& made = variable.description;
        made.memid = in_.Take<MEMBERID>();
        variable.name = in_.Text().text;
        variable.help = in_.Text();
        ReadTypeDescription(made.elemdescVar.tdesc, 0);
        made.wVarFlags = in_.Take<BYTE>();
        made.varkind = owner == TKIND_DISPATCH ? VAR_DISPATCH : VAR_PERINSTANCE;
        if (in_.Take<BYTE>() == 0) return;
        ReadValue(variable.value);
        made.varkind = VAR_CONST;
        made.lpvarValue = &variable.value;
    }

    void ReadParameter(ELEMDESC& parameter, WideString& name) {
        name = in_.Text().text;
        ReadTypeDescription(parameter.tdesc, 0);
        parameter.paramdesc.wParamFlags = in_.Take<USHORT>();
        if ((parameter.paramdesc.wParamFlags & PARAMFLAG_FHASDEFAULT) == 0) return;
        PARAMDESCEX& made = library_.defaults.emplace_back();
        made.cBytes = sizeof made;
        ReadValue(made.varDefaultValue);
        parameter.paramdesc.pparamdescex = &made;
    }

    void ReadFunction(Function& function, Type& owner) {
        FUNCDESC& made = function.description;
        made.memid = in_.Take<MEMBERID>();
        function.name = in_.Text().text;
        function.help = in_.Text();
        const auto kind = in_.Take<BYTE>();
        if (kind > INVOKE_PROPERTYPUTREF) return in_.Fail();
        made.invkind = static_cast<INVOKEKIND>(kind);
        made.wFuncFlags = in_.Take<WORD>();
        ReadTypeDescription(made.elemdescFunc.tdesc, 0);
        const std::size_t count = in_.Count<BYTE>(6);
        function.parameters.resize(count);
        function.parameterNames.resize(count);
        for (std::size_t i = 0; i < count; ++i) {
            ReadParameter(function.parameters[i], function.parameterNames[i]);
            const USHORT flags = function.parameters[i].paramdesc.wParamFlags;
            const bool isDefaulted = (flags & PARAMFLAG_FHASDEFAULT) != 0;
            if ((flags & PARAMFLAG_FOPT) && !isDefaulted) ++made.cParamsOpt;
        }
        const bool isDispatch = owner.kind == TKIND_DISPATCH;
        made.lprgelemdescParam = function.parameters.data();
        made.funckind = isDispatch ? FUNC_DISPATCH : FUNC_PUREVIRTUAL;
        made.callconv = CC_STDCALL;
        made.cParams = static_cast<SHORT>(count);
        if (isDispatch) return;
        made.oVft = static_cast<SHORT>(owner.slots * kSlotBytes);
        if (++owner.slots > 0xFFF) in_.Fail();
    }

    Reader in_;
    Library& library_;
};

}  // namespace

Library::~Library() {
    for (PARAMDESCEX& each : defaults) (void)VariantClear(&each.varDefaultValue);
    for (Type& type : types) {
        for (Variable& variable : type.variables) (void)VariantClear(&variable.value);
    }
}

std::shared_ptr<const Library> ReadLibrary(std::span<const std::byte> bytes) {
    const auto library = std::make_shared<Library>();
    if (!LibraryReader(bytes, *library).Read()) return nullptr;
    return library;
}

const std::shared_ptr<const Library>& BaseLibrary() {
    static const std::shared_ptr<const Library> library = ReadLibrary(BaseLibraryBytes());
    return library;
}

const Type* Resolve(std::shared_ptr<const Library>& library, HREFTYPE reference) {
    if (reference & kBaseLibraryReference) library = BaseLibrary();
    const HREFTYPE number = reference & ~kBaseLibraryReference;
    return number < library->types.size() ? &library->types[number] : nullptr;
}

}  // namespace platform::types
