#include "cab/data_string.h"

#include "cab/store.h"
#include "platform/user.h"

namespace AUX::CAB {

namespace {

// Room beyond the text's own length, in units, that saves most calls of the cipher a second one.
constexpr std::uint32_t kCipherRoom = 256;

// Passes a text through EncryptText or DecryptText.
template <class Pass>
Status PassText(Pass pass, TextCipher* cipher, WStringView text, WString& output) noexcept {
    if (text.size() > WString::kMaxLength - kCipherRoom) return E_INVALIDARG;
    WString result;
    std::uint32_t count = static_cast<std::uint32_t>(text.size()) + kCipherRoom;
    if (!result.SetLength(count)) return E_OUTOFMEMORY;
    Status status = pass(cipher, text, result.Data(), count);
    if (status == kStatusInsufficientBuffer) {
        if (!result.SetLength(count)) return E_OUTOFMEMORY;
        status = pass(cipher, text, result.Data(), count);
    }
    if (IsFailure(status)) return status;
    if (!result.SetLength(count)) return E_OUTOFMEMORY;
    result.Swap(output);
    return kStatusOk;
}

WCHAR Folded(WCHAR unit) noexcept {
    return static_cast<WCHAR>(reinterpret_cast<std::uintptr_t>(
        CharUpperW(reinterpret_cast<WCHAR*>(static_cast<std::uintptr_t>(unit)))));
}

bool IsEqual(WStringView a, WStringView b, bool ignoresCase) noexcept {
    if (!ignoresCase) return a == b;
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (a[i] != b[i] && Folded(a[i]) != Folded(b[i])) return false;
    }
    return true;
}

}  // namespace

bool DataString::Equals(DataItem* other, std::uint32_t equalFlags) noexcept {
    DataItem* const real = other ? other->Cast(Kind::String) : nullptr;
    return real && IsEqual(value, *real->GetString(), (equalFlags & kEqualIgnoreCase) != 0);
}

bool DataString::SetText(WStringView text) noexcept {
    if (value == text) return true;
    if (!value.Assign(text)) return false;
    MarkSet();
    return true;
}

bool DataString::SetString(WString& text, bool swap) noexcept {
    if (!swap) return SetText(text);
    if (&text == &value) return true;
    const bool isSame = value == text;
    value.Swap(text);
    if (!isSame) MarkSet();
    return true;
}

bool DataString::WriteTo(DataWriter& sink, bool) noexcept { return sink.PutString(value); }

WStringView DataString::Default() noexcept {
    const ItemSpec* const own = GetSpec();
    return own ? WStringView(own->defaultString) : WStringView();
}

bool DataString::IsDefault() noexcept { return GetSpec() && value == Default(); }

bool DataString::Reset() noexcept {
    const std::uint32_t oldFlags = flags;
    (void)DataItem::Reset();  // What came of it is seen below.
    if (flags & ItemNoReset || value == Default()) return true;
    flags = oldFlags;
    return false;
}

bool DataString::ResetValue() noexcept {
    const WStringView wanted = Default();
    if (value == wanted) return false;
    if (wanted.empty()) {
        value.Free();
        return true;
    }
    return value.Assign(wanted);  // Without memory the old text stays, and nothing is reported.
}

bool DataString::AssignValue(DataItem& source, bool) noexcept {
    const WString* const text = source.GetString();
    return text && SetText(*text);
}

Status DataString::GetProtected(WString& output) noexcept {
    return PassText(EncryptText, root ? root->GetCipher() : nullptr, value, output);
}

Status DataString::SetProtected(WStringView text) noexcept {
    TextCipher* const cipher = root ? root->GetCipher() : nullptr;
    if (cipher && text.size() == 1 && text[0] == 0) return E_INVALIDARG;
    WString plain;
    const Status status = PassText(DecryptText, cipher, text, plain);
    if (IsFailure(status)) return status;
    return SetString(plain, true) ? kStatusOk : E_OUTOFMEMORY;
}

}  // namespace AUX::CAB
