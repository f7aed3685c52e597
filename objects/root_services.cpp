#include <algorithm>
#include <cstring>
#include <memory>

#include "foundation/open_location.h"
#include "foundation/status_text.h"
#include "foundation/text_cipher.h"
#include "objects/operation_lists.h"
#include "objects/paper_table.h"
#include "objects/root_object.h"
#include "objects/value_objects.h"
#include "platform/unique_bstr.h"

namespace AUX {

namespace {

constexpr ULONG kOwnBit = 1u << 25;
constexpr ULONG kCodeMask = 0xFFFF;

// A status of this failure: as an HRESULT, or as a code of the library.
bool IsFailureOf(ULONG status, HRESULT asResult, ULONG asOwn) noexcept {
    if (!IsFailure(static_cast<Status>(status))) return false;
    return static_cast<HRESULT>(status) == asResult ||
           ((status & kOwnBit) && (status & kCodeMask) == asOwn);
}

HRESULT GiveTest(VARIANT_BOOL* result, bool answer) noexcept {
    return Give(result, ToVariantBool(answer));
}

// Locks the key's bytes into a cipher.
HRESULT SetKeyOf(IMemoryBlock* key, TextCipher& cipher) noexcept {
    void* bytes = nullptr;
    LONGLONG size = 0;
    if (!key || FAILED(key->GetData(&bytes)) || FAILED(key->GetSize(&size))) return E_INVALIDARG;
    if (!bytes || size < 1) return E_INVALIDARG;
    constexpr LONGLONG kMostKeyBytes = 32;
    cipher.SetKey(bytes, static_cast<std::uint32_t>(std::min(size, kMostKeyBytes)));
    return S_OK;
}

using CipherOperation = Status (*)(TextCipher*, WStringView, WCHAR*, std::uint32_t&);

HRESULT RunCipher(CipherOperation run, IMemoryBlock* key, WStringView text,
                  IText** result) noexcept {
    TextCipher cipher;
    if (const HRESULT ready = SetKeyOf(key, cipher); FAILED(ready)) return ready;
    std::uint32_t count = 0;
    Status status = run(&cipher, text, nullptr, count);
    if (IsFailure(status)) return status;
    platform::ComPtr<TextObject> made = platform::MakeObject<TextObject>();
    if (!made) return E_OUTOFMEMORY;
    if (count > 0) {
        WString& content = made->Content();
        if (!content.SetLength(count)) return E_OUTOFMEMORY;
        status = run(&cipher, text, content.Data(), count);
        if (IsFailure(status)) return status;
        if (!content.SetLength(count)) return E_OUTOFMEMORY;
    }
    *result = made.Detach();
    return S_OK;
}

HRESULT RunCipherOn(CipherOperation run, IMemoryBlock* key, IText* text, IText** result) noexcept {
    if (!result) return E_POINTER;
    *result = nullptr;
    if (!text) return E_INVALIDARG;
    platform::UniqueBstr units;
    if (const HRESULT got = text->GetText(units.Put()); FAILED(got)) return got;
    return RunCipher(run, key, WStringView(units.Get(), SysStringLen(units.Get())), result);
}

constexpr const WCHAR* kInput = TEXT("Input");
constexpr const WCHAR* kOutput = TEXT("Output");

}  // namespace

HRESULT RootObject::Alloc(LONGLONG size, void** block) noexcept {
    if (!block) return E_POINTER;
    *block = nullptr;
    if (size < 1) return E_INVALIDARG;
    *block = AUX::Alloc(static_cast<std::size_t>(size));
    return *block ? S_OK : E_OUTOFMEMORY;
}

HRESULT RootObject::Resize(void* block, LONGLONG size, void** result) noexcept {
    if (!result) return E_POINTER;
    *result = block;
    if (size < 0) return E_INVALIDARG;
    void* const moved = AUX::Resize(block, static_cast<std::size_t>(size));
    if (!moved) return E_OUTOFMEMORY;
    *result = moved;
    return S_OK;
}

HRESULT RootObject::Free(void* block) noexcept {
    if (!block) return E_INVALIDARG;
    AUX::Free(block);
    return S_OK;
}

HRESULT RootObject::Reserved() noexcept { return S_OK; }

HRESULT RootObject::GetStatusText(ULONG status, ULONG flags, BSTR* text) noexcept {
    WString sentence;
    StatusToText(static_cast<Status>(status), sentence, (flags & 1) != 0);
    return GiveText(text, sentence.Text(), sentence.Length());
}

HRESULT RootObject::IsCanceledStatus(ULONG status, VARIANT_BOOL* result) noexcept {
    constexpr ULONG kCanceled = 0x4C7, kCategoryMask = 0x1FF0000, kSystemFacility = 0x70000;
    const bool isCode = (status & kCodeMask) == kCanceled;
    const bool isKnown = (status & kOwnBit) || (status & kCategoryMask) == kSystemFacility;
    return GiveTest(result, IsFailure(static_cast<Status>(status)) && isCode && isKnown);
}

HRESULT RootObject::IsInvalidArgStatus(ULONG status, VARIANT_BOOL* result) noexcept {
    return GiveTest(result, IsFailureOf(status, E_INVALIDARG, 1));
}

HRESULT RootObject::IsNotImplementedStatus(ULONG status, VARIANT_BOOL* result) noexcept {
    constexpr ULONG kNotImplemented = 1200;
    return GiveTest(result, IsFailureOf(status, E_NOTIMPL, kNotImplemented));
}

HRESULT RootObject::GetStandardPaper(ULONG key, ULONG* group, double* width,
                                     double* height) noexcept {
    if (key >= kStandardPaperCount) return E_INVALIDARG;
    const StandardPaper& paper = StandardPaperTable[key];
    if (group) *group = paper.group;
    if (width) *width = paper.width;
    if (height) *height = paper.height;
    return S_OK;
}

HRESULT RootObject::GetDefaultPaper(ULONG* key) noexcept {
    return key ? Give(key, DefaultPaperKey()) : E_POINTER;
}

HRESULT RootObject::GetInputCount(IUnknown* operation, ULONG* count) noexcept {
    return OperationList(operation, kInput).GetCount(count);
}
HRESULT RootObject::GetInput(IUnknown* operation, ULONG index, IUnknown** object) noexcept {
    return OperationList(operation, kInput).GetItem(index, object);
}
HRESULT RootObject::AddInput(IUnknown* operation, IUnknown* object) noexcept {
    return OperationList(operation, kInput).Add(object);
}
HRESULT RootObject::ClearInputs(IUnknown* operation) noexcept {
    return OperationList(operation, kInput).Clear();
}
HRESULT RootObject::GetOutputCount(IUnknown* operation, ULONG* count) noexcept {
    return OperationList(operation, kOutput).GetCount(count);
}
HRESULT RootObject::GetOutput(IUnknown* operation, ULONG index, IUnknown** object) noexcept {
    return OperationList(operation, kOutput).GetItem(index, object);
}
HRESULT RootObject::AddOutput(IUnknown* operation, IUnknown* object) noexcept {
    return OperationList(operation, kOutput).Add(object);
}
HRESULT RootObject::ClearOutputs(IUnknown* operation) noexcept {
    return OperationList(operation, kOutput).Clear();
}

HRESULT RootObject::RevealItems(IStringArray* names, VARIANT_BOOL relative) noexcept {
    ULONG count = 0;
    if (!names || FAILED(names->GetCount(&count))) return E_INVALIDARG;
    Array<const WCHAR*> paths;
    HRESULT result = paths.EnsureCapacity(count) ? S_OK : E_OUTOFMEMORY;
    for (ULONG i = 0; i < count && SUCCEEDED(result); ++i) {
        platform::UniqueBstr text;
        result = names->GetItem(i, text.Put());
        if (FAILED(result)) break;
        (void)paths.Add(text.Detach());  // There is room.
    }
    if (SUCCEEDED(result)) {
        const WCHAR* folder = nullptr;
        const bool isRelative = relative != VARIANT_FALSE && !paths.IsEmpty();
        if (isRelative) {
            folder = paths[0];
            paths.RemoveAt(0);
        }
        result = AUX::RevealItems(folder, paths,
                                  relative ? NamesAreRelative::Yes : NamesAreRelative::No);
        if (isRelative) SysFreeString(const_cast<BSTR>(folder));
    }
    for (const WCHAR* path : paths) SysFreeString(const_cast<BSTR>(path));
    return result;
}

HRESULT RootObject::EncryptText(IMemoryBlock* key, IText* text, IText** result) noexcept {
    return RunCipherOn(AUX::EncryptText, key, text, result);
}

HRESULT RootObject::DecryptText(IMemoryBlock* key, IText* text, IText** result) noexcept {
    return RunCipherOn(AUX::DecryptText, key, text, result);
}

HRESULT RootObject::EncryptBytes(IMemoryBlock* key, const void* bytes, ULONG size,
                                 IText** result) noexcept {
    if (!result) return E_POINTER;
    *result = nullptr;
    if ((!bytes && size > 0) || size % sizeof(WCHAR) != 0) return E_INVALIDARG;
    // A text of our own, as the caller's bytes may lie at any address.
    WString units;
    if (!units.SetLength(size / sizeof(WCHAR))) return E_OUTOFMEMORY;
    if (size > 0) std::memcpy(units.Data(), bytes, size);
    return RunCipher(AUX::EncryptText, key, units, result);
}

HRESULT RootObject::DecryptString(IMemoryBlock* key, BSTR text, IText** result) noexcept {
    if (!result) return E_POINTER;
    *result = nullptr;
    TextCipher cipher;
    if (const HRESULT ready = SetKeyOf(key, cipher); FAILED(ready)) return ready;
    if (SysStringLen(text) == 0) return S_OK;
    return RunCipher(AUX::DecryptText, key, WStringView(text, SysStringLen(text)), result);
}

}  // namespace AUX
