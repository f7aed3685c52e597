#include "cab/registry_value.h"

#include <bit>
#include <cstring>
#include <memory>

#include "cab/exact_number.h"
#include "foundation/allocated.h"
#include "foundation/mem_stream.h"
#include "platform/modules.h"
#include "platform/user.h"

namespace AUX::CAB {

namespace {

constexpr struct {
    Kind kind;
    WCHAR letter;
} kLetters[] = {
    {Kind::Bool, 'b'},   {Kind::Int, 'i'},    {Kind::Int64, 'l'},
    {Kind::Double, 'd'}, {Kind::String, 't'}, {Kind::Stream, 's'},
};
constexpr std::size_t kPrefixUnits = 2;
constexpr DWORD kMarkerBytes = 32;
constexpr DWORD kMinDataBytes = 4;
constexpr DWORD kSpareNameBytes = 16;

// The browser's compatibility layer shows values in an enumeration that it does not let one read.
bool IsShimmed() noexcept {
    static const bool isShimmed = GetModuleHandleW(TEXT("IEShims")) != nullptr;
    return isShimmed;
}

// A text's units without its terminator; a text that was stored without one is all there.
WStringView TextOf(const BYTE* data, DWORD size) noexcept {
    const WStringView text(reinterpret_cast<const WCHAR*>(data), size / sizeof(WCHAR));
    return !text.empty() && text.back() == 0 ? text.substr(0, text.size() - 1) : text;
}

// Takes a string off a list of terminated ones.
WStringView TakeString(WStringView& list) noexcept {
    const std::size_t end = list.find(WCHAR{0});
    const WStringView first = list.substr(0, end);
    list = end == WStringView::npos ? WStringView() : list.substr(end + 1);
    return first;
}

bool ReadList(WStringView list, Kind expected, ReadValue& read) noexcept {
    const WStringView text = TakeString(list);
    const WStringView type = TakeString(list);
    if (expected == Kind::Double) {
        return type == WStringView(TEXT(":double")) && ParseNumber(text, read.number);
    }
    if (expected != Kind::Bool || type != WStringView(TEXT(":bool"))) return false;
    read.boolean = text == WStringView(TEXT("true"));
    return read.boolean || text == WStringView(TEXT("false"));
}

template <class Number>
Number NumberOf(const RegistryValue& value) noexcept {
    Number number;
    std::memcpy(&number, value.data, sizeof number);
    return number;
}

bool SetBytes(DataItem& item, const ReadValue& read) noexcept {
    static BYTE nothing = 0;
    MemStream bytes;
    void* const data = read.size ? const_cast<BYTE*>(read.bytes) : &nothing;
    return !IsFailure(bytes.Open(data, read.size, kAccessRead)) && item.SetStream(&bytes, false);
}

LSTATUS WriteStream(HKEY key, const WCHAR* valueName, Stream* stream) noexcept {
    if (!stream) return ERROR_NOT_ENOUGH_MEMORY;
    const std::int64_t size = stream->GetSize();
    if (size > kMaxTransfer) return ERROR_NOT_ENOUGH_MEMORY;
    const auto write = [&](const void* data) {
        return RegSetValueExW(key, valueName, 0, REG_BINARY, static_cast<const BYTE*>(data),
                              static_cast<DWORD>(size));
    };
    if (size == 0) return write(nullptr);
    if (const void* const data = stream->GetData()) return write(data);
    const std::unique_ptr<void, FreeBlock> copy(Alloc(static_cast<std::size_t>(size)));
    if (!copy) return ERROR_NOT_ENOUGH_MEMORY;
    std::int64_t count = 0;
    const Status read = stream->ReadAt(copy.get(), size, SeekMode::Start, 0, count);
    return IsFailure(read) || count != size ? ERROR_INVALID_DATA : write(copy.get());
}

}  // namespace

bool EqualsIgnoringCase(WStringView a, WStringView b) noexcept {
    if (a.size() != b.size()) return false;
    const auto upper = [](WCHAR unit) {
        CharUpperBuffW(&unit, 1);
        return unit;
    };
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (a[i] != b[i] && upper(a[i]) != upper(b[i])) return false;
    }
    return true;
}

ValueName SplitValueName(WStringView valueName) noexcept {
    if (valueName.size() <= kPrefixUnits || valueName[1] != '.') {
        return {Kind::None, valueName, false};
    }
    ValueName split{Kind::None, valueName.substr(kPrefixUnits), false};
    for (const auto& row : kLetters) {
        if (row.letter == valueName[0]) split = {row.kind, split.name, true};
    }
    return split;
}

bool MakeValueName(Kind kind, WStringView name, WString& valueName) noexcept {
    for (const auto& row : kLetters) {
        if (row.kind != kind) continue;
        valueName.Clear();
        return valueName.AppendRepeated(row.letter, 1) && valueName.AppendRepeated('.', 1) &&
               valueName.Append(name);
    }
    return false;
}

LSTATUS WriteLeaf(HKEY key, const WCHAR* valueName, DataItem& leaf) noexcept {
    const auto write = [&](DWORD type, const void* data, std::size_t size) -> LSTATUS {
        return RegSetValueExW(key, valueName, 0, type, static_cast<const BYTE*>(data),
                              static_cast<DWORD>(size));
    };
    switch (leaf.GetType()) {
        case Kind::Bool: {
            bool value = false;
            const DWORD number = leaf.GetBool(value) && value ? 1 : 0;
            return write(REG_DWORD, &number, sizeof number);
        }
        case Kind::Int: {
            std::int32_t value = 0;
            return leaf.GetInt(value) ? write(REG_DWORD, &value, sizeof value) : ERROR_INVALID_DATA;
        }
        case Kind::Int64: {
            std::int64_t value = 0;
            return leaf.GetInt64(value) ? write(REG_QWORD, &value, sizeof value)
                                        : ERROR_INVALID_DATA;
        }
        case Kind::Double: {
            double value = 0;
            return leaf.GetDouble(value) ? write(REG_QWORD, &value, sizeof value)
                                         : ERROR_INVALID_DATA;
        }
        case Kind::String: {
            const WString& text = *leaf.GetString();
            const std::uint64_t size = (std::uint64_t{text.Length()} + 1) * sizeof(WCHAR);
            return size > 0xFFFFFFFF ? ERROR_NOT_ENOUGH_MEMORY : write(REG_SZ, text.Text(), size);
        }
        case Kind::Stream:
            return WriteStream(key, valueName, leaf.GetStream());
        default:
            return ERROR_INVALID_DATA;
    }
}

ValueReader::~ValueReader() {
    if (name_ != small_) Free(name_);
    Free(data_);
}

LSTATUS ValueReader::Start() noexcept {
    DWORD longestName = 0;
    DWORD longestData = 0;
    const LSTATUS status =
        RegQueryInfoKeyW(key_, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &count_,
                         &longestName, &longestData, nullptr, nullptr);
    if (status != ERROR_SUCCESS) return status;
    const DWORD nameUnits = longestName + 1 + kSpareNameBytes / sizeof(WCHAR);
    if (nameUnits > NameRoom::kUnits) {
        auto* const name = static_cast<WCHAR*>(Alloc(nameUnits * sizeof(WCHAR)));
        if (!name) return ERROR_NOT_ENOUGH_MEMORY;
        name_ = name;
        nameUnits_ = nameUnits;
    }
    if (wanted_ == Data::NamesOnly) return ERROR_SUCCESS;
    dataBytes_ = longestData < kMinDataBytes ? kMinDataBytes : longestData;
    data_ = static_cast<BYTE*>(Alloc(dataBytes_));
    if (!data_) return ERROR_NOT_ENOUGH_MEMORY;
    std::memset(data_, 0, dataBytes_);
    return ERROR_SUCCESS;
}

bool ValueReader::Next(RegistryValue& value) noexcept {
    for (;;) {
        DWORD units = nameUnits_;
        DWORD size = dataBytes_;
        DWORD type = REG_NONE;
        const DWORD index = index_++;
        LSTATUS status = RegEnumValueW(key_, index, name_, &units, nullptr, &type, data_,
                                       data_ ? &size : nullptr);
        if (status == ERROR_NO_MORE_ITEMS) return false;
        if (status == ERROR_SUCCESS && units == 0) continue;  // The marker.
        if (status == ERROR_SUCCESS && IsShimmed()) {
            size = dataBytes_;
            status = RegQueryValueExW(key_, name_, nullptr, &type, data_, data_ ? &size : nullptr);
        }
        if (status == ERROR_SUCCESS) {
            value = {WStringView(name_, units), type, data_, data_ ? size : 0};
            return true;
        }
        hasSkipped_ = true;
        // A key that gives nothing but errors has no end of its own.
        if (status != ERROR_MORE_DATA && index >= count_) return false;
    }
}

bool ReadAs(const RegistryValue& value, Kind expected, ReadValue& read) noexcept {
    const bool isAny = expected == Kind::None;
    read.kind = expected;
    switch (value.type) {
        case REG_SZ:
            read.text = TextOf(value.data, value.size);
            if (expected == Kind::Double) return ParseNumber(read.text, read.number);
            read.kind = Kind::String;
            return isAny || expected == Kind::String;
        case REG_BINARY:
            read.bytes = value.data;
            read.size = value.size;
            read.kind = Kind::Stream;
            return isAny || expected == Kind::Stream;
        case REG_DWORD:
            if (value.size < sizeof(DWORD)) return false;
            if (expected == Kind::Bool) {
                read.boolean = NumberOf<DWORD>(value) != 0;
                return true;
            }
            read.integer = NumberOf<std::int32_t>(value);
            read.kind = Kind::Int;
            return isAny || expected == Kind::Int;
        case REG_QWORD:
            if (value.size < sizeof(std::int64_t)) return false;
            if (expected == Kind::Double) {
                read.number = NumberOf<double>(value);
                return true;
            }
            read.integer64 = NumberOf<std::int64_t>(value);
            read.kind = Kind::Int64;
            return isAny || expected == Kind::Int64;
        case REG_MULTI_SZ:
            return ReadList(
                {reinterpret_cast<const WCHAR*>(value.data), value.size / sizeof(WCHAR)}, expected,
                read);
        default:
            return false;
    }
}

bool TakeValue(DataItem& item, const ReadValue& read) noexcept {
    bool isTaken = false;
    switch (read.kind) {
        case Kind::Bool:
            isTaken = item.SetBool(&read.boolean, 0);
            break;
        case Kind::Int:
            isTaken = item.SetInt(&read.integer, 0);
            break;
        case Kind::Int64:
            isTaken = item.SetInt64(&read.integer64, 0);
            break;
        case Kind::Double:
            isTaken = item.SetDouble(&read.number, 0);
            break;
        case Kind::String:
            isTaken = item.SetText(read.text);
            break;
        case Kind::Stream:
            isTaken = SetBytes(item, read);
            break;
        default:
            break;
    }
    if (isTaken) item.SetFlags(0, ItemDirty);
    return isTaken;
}

Kind LoadKind(HKEY key) noexcept {
    // Room for a text of 15 units; a longer one is no marker.
    alignas(DWORD) BYTE data[kMarkerBytes] = {};
    DWORD type = REG_NONE;
    DWORD size = sizeof data;
    if (RegQueryValueExW(key, nullptr, nullptr, &type, data, &size) != ERROR_SUCCESS) {
        return Kind::Dictionary;
    }
    if (type == REG_DWORD && size >= sizeof(DWORD)) {
        DWORD number = 0;
        std::memcpy(&number, data, sizeof number);
        return static_cast<Kind>(number);
    }
    const WStringView text = type == REG_SZ ? TextOf(data, size) : WStringView();
    const bool isArray = text == WStringView(TEXT("A")) || text == WStringView(TEXT("Array"));
    return isArray ? Kind::Array : Kind::Dictionary;
}

}  // namespace AUX::CAB
