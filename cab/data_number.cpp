#include "cab/data_number.h"

#include <initializer_list>

#include "cab/notice.h"
#include "cab/store.h"

namespace AUX::CAB {

namespace {

// The number kinds are 1 to 4. A bit of a row stands for a kind that the row's kind is read as, and
// written from: whichever way a value goes, a truth value and a fraction have no common ground.
constexpr std::uint8_t Bits(std::initializer_list<Kind> kinds) noexcept {
    std::uint8_t bits = 0;
    for (const Kind kind : kinds) {
        bits = static_cast<std::uint8_t>(bits | 1u << static_cast<std::uint32_t>(kind));
    }
    return bits;
}

using enum Kind;
constexpr std::uint8_t kConvertible[] = {
    0,
    Bits({Bool, Int}),
    Bits({Bool, Int, Int64, Double}),
    Bits({Bool, Int, Int64, Double}),
    Bits({Int, Int64, Double}),
};
constexpr bool Converts(Kind own, Kind other) noexcept {
    return kConvertible[static_cast<std::uint32_t>(own)] >> static_cast<std::uint32_t>(other) & 1;
}

template <class T>
constexpr Kind kKindOf = std::is_same_v<T, bool>           ? Bool
                         : std::is_same_v<T, std::int32_t> ? Int
                         : std::is_same_v<T, std::int64_t> ? Int64
                                                           : Double;

template <class Value>
Value DefaultOf(const ItemSpec& spec) noexcept {
    if constexpr (std::is_same_v<Value, bool>) return spec.defaultBool != 0;
    if constexpr (std::is_same_v<Value, std::int32_t>) return spec.defaultInt;
    if constexpr (std::is_same_v<Value, std::int64_t>) return spec.defaultInt64;
    if constexpr (std::is_same_v<Value, double>) return spec.defaultDouble;
}

}  // namespace

template <class Value, Kind kKind>
template <class To>
const To* DataNumber<Value, kKind>::Read(To& out) noexcept {
    if constexpr (kKindOf<To> == kKind) {
        out = value;
        return &value;
    } else {
        if (!Converts(kKind, kKindOf<To>) || !ConvertExactly(value, out)) return nullptr;
        SetNotice(ConversionNotice);
        return &out;
    }
}

template <class Value, Kind kKind>
template <class From>
bool DataNumber<Value, kKind>::Write(const From* from) noexcept {
    if (!from) return false;
    if constexpr (kKindOf<From> == kKind) {
        return SetOwn(*from);
    } else {
        Value converted{};
        if (!Converts(kKind, kKindOf<From>) || !ConvertExactly(*from, converted) ||
            !Accepts(converted)) {
            return false;
        }
        // A conversion counts as a change even if the value is the present one.
        MarkSet();
        value = converted;
        SetNotice(ConversionNotice);
        return true;
    }
}

template <class Value, Kind kKind>
const ValueSpec* DataNumber<Value, kKind>::Values() noexcept {
    const ItemSpec* const own = GetSpec();
    return own ? own->values : nullptr;
}

template <class Value, Kind kKind>
bool DataNumber<Value, kKind>::Accepts(Value newValue) noexcept {
    const ValueSpec* const values = Values();
    return !values || values->Accepts(static_cast<double>(newValue));
}

template <class Value, Kind kKind>
bool DataNumber<Value, kKind>::SetOwn(Value newValue) noexcept {
    if (!Accepts(newValue)) return false;
    if (IsSame(value, newValue)) return true;
    value = newValue;
    MarkSet();
    return true;
}

template <class Value, Kind kKind>
bool DataNumber<Value, kKind>::SetNamed(WStringView name, bool& isSet) noexcept {
    const ValueSpec* const values = Values();
    const NamedTable* const names = values ? values->Names() : nullptr;
    const double* const number = names ? names->Find(name) : nullptr;
    if (!number) return false;
    Value converted{};
    isSet = ConvertExactly(*number, converted) && SetOwn(converted);
    if (isSet) SetNotice(ConversionNotice);
    return true;
}

template <class Value, Kind kKind>
bool DataNumber<Value, kKind>::SetText(WStringView text) noexcept {
    bool isSet = false;
    if (SetNamed(text, isSet)) return isSet;
    Value parsed{};
    if (!ParseNumber(text, parsed) || !SetOwn(parsed)) return false;
    SetNotice(ConversionNotice);
    return true;
}

template <class Value, Kind kKind>
bool DataNumber<Value, kKind>::SetString(WString& text, bool) noexcept {
    bool isSet = false;
    return SetNamed(text, isSet) && isSet;
}

template <class Value, Kind kKind>
const WCHAR* DataNumber<Value, kKind>::GetValueName() noexcept {
    const ValueSpec* const values = Values();
    const NamedTable* const names = values ? values->Names() : nullptr;
    return names ? names->NameOf(static_cast<double>(value)) : nullptr;
}

template <class Value, Kind kKind>
bool DataNumber<Value, kKind>::Equals(DataItem* other, std::uint32_t) noexcept {
    DataItem* const real = other ? other->Cast(kKind) : nullptr;
    return real && static_cast<DataNumber*>(real)->value == value;
}

template <class Value, Kind kKind>
Value DataNumber<Value, kKind>::Default() noexcept {
    const ItemSpec* const own = GetSpec();
    return own ? DefaultOf<Value>(*own) : Value{};
}

template <class Value, Kind kKind>
bool DataNumber<Value, kKind>::IsDefault() noexcept {
    return GetSpec() && (value == Default() || IsSame(value, Default()));
}

template <class Value, Kind kKind>
bool DataNumber<Value, kKind>::ResetValue() noexcept {
    const Value old = value;
    value = Default();
    return !IsSame(old, value);
}

template <class Value, Kind kKind>
bool DataNumber<Value, kKind>::AssignValue(DataItem& source, bool) noexcept {
    Value taken{};
    if constexpr (kKind == Bool) return source.GetBool(taken) && SetOwn(taken);
    if constexpr (kKind == Int) return source.GetInt(taken) && SetOwn(taken);
    if constexpr (kKind == Int64) return source.GetInt64(taken) && SetOwn(taken);
    if constexpr (kKind == Double) return source.GetDouble(taken) && SetOwn(taken);
}

template <class Value, Kind kKind>
bool DataNumber<Value, kKind>::WriteTo(DataWriter& sink, bool) noexcept {
    if constexpr (kKind == Bool) return sink.PutBool(value);
    if constexpr (kKind == Int) return sink.PutInt(value);
    if constexpr (kKind == Int64) return sink.PutInt64(value);
    if constexpr (kKind == Double) return sink.PutDouble(value);
}

template <class Value, Kind kKind>
Status DataNumber<Value, kKind>::GetProtected(WString& output) noexcept {
    WString text;
    if (const WCHAR* const name = GetValueName()) {
        if (!text.Assign(name)) return E_OUTOFMEMORY;
    } else if (!FormatNumber(value, text)) {
        return E_OUTOFMEMORY;
    }
    output.Swap(text);
    return kStatusOk;
}

template class DataNumber<bool, Kind::Bool>;
template class DataNumber<std::int32_t, Kind::Int>;
template class DataNumber<std::int64_t, Kind::Int64>;
template class DataNumber<double, Kind::Double>;

}  // namespace AUX::CAB
