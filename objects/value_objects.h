#pragma once

#include "foundation/bit_set.h"
#include "foundation/wstring.h"
#include "objects/frame.h"
#include "platform/sync.h"

namespace AUX {

/// A text.
class TextObject final : public DualObject<IText> {
public:
    /// The text itself, for the maker.
    [[nodiscard]] WString& Content() noexcept { return text_; }

    HRESULT STDMETHODCALLTYPE GetText(BSTR* text) noexcept override;
    /// Null empties it.
    HRESULT STDMETHODCALLTYPE SetText(BSTR text) noexcept override;
    HRESULT STDMETHODCALLTYPE IsEmpty(VARIANT_BOOL* result) noexcept override;
    HRESULT STDMETHODCALLTYPE Clear() noexcept override;
    HRESULT STDMETHODCALLTYPE GetLength(ULONG* length) noexcept override;
    /// \return E_INVALIDARG for a null text with a length.
    HRESULT STDMETHODCALLTYPE SetTextOfLength(LPCWSTR text, ULONG length) noexcept override;

private:
    WString text_;
};

/// How the bit sets of the family reach each other's bits.
struct IBitSetContent : IUnknown {
    [[nodiscard]] virtual BitSet& Bits() noexcept = 0;
};

}  // namespace AUX

QVD_INTERFACE_ID(AUX::IBitSetContent, 0xB1E77C02, 0x5C1D, 0x4F0B,
                 {0x8E, 0x39, 0x60, 0x41, 0xD2, 0x7A, 0x95, 0x1E});

namespace AUX {

/// A BitSet. What would change a read-only set gives S_FALSE and changes nothing, as does a fill of
/// nothing; a count past the end is cut. Other sets must be of this class, or E_INVALIDARG.
class BitSetObject final : public DualObject<IBitSet, IBitSetContent> {
public:
    [[nodiscard]] BitSet& Bits() noexcept override { return bits_; }
    /// For the library's own code; no operation of the interface does it.
    void SetReadOnly(bool isReadOnly) noexcept { isReadOnly_ = isReadOnly; }

    HRESULT STDMETHODCALLTYPE GetBit(ULONG index, VARIANT_BOOL* value) noexcept override;
    HRESULT STDMETHODCALLTYPE SetBit(ULONG index, VARIANT_BOOL value) noexcept override;
    HRESULT STDMETHODCALLTYPE GetSize(ULONG* size) noexcept override;
    HRESULT STDMETHODCALLTYPE IsEmpty(VARIANT_BOOL* result) noexcept override;
    HRESULT STDMETHODCALLTYPE IsAny(VARIANT_BOOL* result) noexcept override;
    HRESULT STDMETHODCALLTYPE Create(ULONG size) noexcept override;
    /// \return S_FALSE for a first index past the end.
    HRESULT STDMETHODCALLTYPE Fill(VARIANT_BOOL value, ULONG first, ULONG count) noexcept override;
    HRESULT STDMETHODCALLTYPE SetBitGrow(ULONG index, VARIANT_BOOL value) noexcept override;
    HRESULT STDMETHODCALLTYPE Assign(IBitSet* other) noexcept override;
    HRESULT STDMETHODCALLTYPE Or(IBitSet* other) noexcept override;
    HRESULT STDMETHODCALLTYPE And(IBitSet* other) noexcept override;
    HRESULT STDMETHODCALLTYPE Intersects(IBitSet* other, VARIANT_BOOL* result) noexcept override;
    HRESULT STDMETHODCALLTYPE AndNot(IBitSet* other) noexcept override;
    HRESULT STDMETHODCALLTYPE IsEqual(IBitSet* other, VARIANT_BOOL* result) noexcept override;
    /// From `first` up to, not including, `end`.
    HRESULT STDMETHODCALLTYPE CountRange(ULONG first, ULONG end, ULONG* count) noexcept override;

private:
    template <class Change>
    [[nodiscard]] HRESULT ChangeBy(IBitSet* other, Change change) noexcept;

    BitSet bits_;
    bool isReadOnly_ = false;
};

/// A block of bytes that grows. Sizes, lengths and offsets are bytes.
class MemoryBlock final : public DualObject<IMemoryBlock> {
public:
    MemoryBlock() noexcept = default;

    /// The bytes, until the next call that changes their number; null if there never were any.
    HRESULT STDMETHODCALLTYPE GetData(void** bytes) noexcept override;
    HRESULT STDMETHODCALLTYPE GetSize(LONGLONG* bytes) noexcept override;
    HRESULT STDMETHODCALLTYPE GetCapacity(LONGLONG* bytes) noexcept override;
    /// New bytes are 0. \param exact  The capacity becomes the size as well.
    HRESULT STDMETHODCALLTYPE SetSize(LONGLONG newSize, VARIANT_BOOL exact) noexcept override;
    HRESULT STDMETHODCALLTYPE Compact() noexcept override;
    /// The size becomes 0; the capacity stays.
    HRESULT STDMETHODCALLTYPE Clear() noexcept override;
    /// Bytes may be the block's own. \return E_INVALIDARG for null bytes or a length below 1.
    HRESULT STDMETHODCALLTYPE Append(const void* bytes, LONGLONG length) noexcept override;
    /// Null bytes or a length of 0 change nothing and succeed; a negative one is E_INVALIDARG.
    HRESULT STDMETHODCALLTYPE Assign(const void* bytes, LONGLONG length) noexcept override;
    /// Makes the capacity a multiple of 1024 that holds `bytes`; it never shrinks.
    HRESULT STDMETHODCALLTYPE Reserve(LONGLONG bytes) noexcept override;
    HRESULT STDMETHODCALLTYPE ReserveMore(LONGLONG by) noexcept override;
    /// \return S_FALSE for an offset at or past the size.
    HRESULT STDMETHODCALLTYPE ReadAt(LONGLONG offset, void* buffer, LONGLONG length,
                                     LONGLONG* read) noexcept override;
    /// Bytes that a write leaves out before its offset are 0.
    HRESULT STDMETHODCALLTYPE WriteAt(LONGLONG offset, const void* bytes,
                                      LONGLONG length) noexcept override;

private:
    ~MemoryBlock() override;
    [[nodiscard]] bool Reallocate(LONGLONG bytes) noexcept;

    unsigned char* data = nullptr;
    LONGLONG size = 0;
    LONGLONG capacity = 0;
};

/// An event that stays signalled until it is reset. Any thread.
class SignalObject final : public DualObject<ISignal> {
public:
    /// Makes the event, not signalled. \return the system's error.
    [[nodiscard]] HRESULT Start() noexcept;

    HRESULT STDMETHODCALLTYPE GetState(VARIANT_BOOL* state) noexcept override;
    HRESULT STDMETHODCALLTYPE SetState(VARIANT_BOOL state) noexcept override;
    /// The object keeps the handle and closes it at its end.
    HRESULT STDMETHODCALLTYPE GetHandle(void** handle) noexcept override;

private:
    platform::KernelHandle event_;
};

}  // namespace AUX
