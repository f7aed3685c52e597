#pragma once

#include "cab/data_item.h"
#include "cab/item_path.h"
#include "objects/frame.h"

namespace AUX {

/// The object of an item of a bag. An item has one at most, from the first request until its last
/// reference goes. It doesn't keep the item or the bag alive: when the item has gone, every
/// operation gives E_FAIL. Takes no lock: a client that shares a bag between threads serialises its
/// calls, and reference counting is plain.
///
/// Operations give the notice of the calling thread, which is 0 or the success code
/// CAB::ConversionNotice; E_POINTER for a null place for a result; E_INVALIDARG for what the item
/// refuses, and for an argument that doesn't fit; E_OUTOFMEMORY, with the bag as it was.
class ItemFace final : public DualBase<IBagItem>, LiveObject, public Allocated {
public:
    /// The object of an item, made if there is none. A face that forwards owns its forwarder.
    /// \return null when memory runs out.
    [[nodiscard]] static platform::ComPtr<ItemFace> Of(CAB::DataItem& item) noexcept;
    /// What a client's pointer stands for.
    /// \return null for null, and for objects of other implementations.
    [[nodiscard]] static platform::ComPtr<ItemFace> Behind(IUnknown* object) noexcept;

    /// Null when the item has gone, or that which it leads to.
    [[nodiscard]] CAB::DataItem* Item() const noexcept;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) noexcept override;
    ULONG STDMETHODCALLTYPE AddRef() noexcept override { return ++references_; }
    ULONG STDMETHODCALLTYPE Release() noexcept override;

    HRESULT STDMETHODCALLTYPE GetKind(LONG* kind) noexcept override;
    HRESULT STDMETHODCALLTYPE IsKind(LONG kind) noexcept override;
    HRESULT STDMETHODCALLTYPE IsPresent(LONG* isPresent) noexcept override;
    HRESULT STDMETHODCALLTYPE GetBool(VARIANT_BOOL* value) noexcept override;
    HRESULT STDMETHODCALLTYPE PutBool(VARIANT_BOOL value) noexcept override;
    HRESULT STDMETHODCALLTYPE GetInt(LONG* value) noexcept override;
    HRESULT STDMETHODCALLTYPE PutInt(LONG value) noexcept override;
    HRESULT STDMETHODCALLTYPE GetInt64(LONGLONG* value) noexcept override;
    HRESULT STDMETHODCALLTYPE PutInt64(LONGLONG value) noexcept override;
    HRESULT STDMETHODCALLTYPE GetDouble(double* value) noexcept override;
    HRESULT STDMETHODCALLTYPE PutDouble(double value) noexcept override;
    HRESULT STDMETHODCALLTYPE GetString(BSTR* value) noexcept override;
    HRESULT STDMETHODCALLTYPE PutString(BSTR value) noexcept override;
    /// A stream over the item's bytes as they are now, with a position of its own.
    HRESULT STDMETHODCALLTYPE GetStream(IStream** value) noexcept override;
    /// Copies all bytes of the stream. \return its code if it fails.
    HRESULT STDMETHODCALLTYPE PutStream(IStream* value) noexcept override;
    HRESULT STDMETHODCALLTYPE GetObject(IUnknown** value) noexcept override;
    HRESULT STDMETHODCALLTYPE PutObject(IUnknown* value) noexcept override;
    /// As GiveVariant. \param value  Overwritten, not cleared.
    HRESULT STDMETHODCALLTYPE GetValue(VARIANT* value) noexcept override;
    HRESULT STDMETHODCALLTYPE PutValue(VARIANT value) noexcept override;

    /// The value of the item at a path, or `missing` when there is none or it cannot give that
    /// type. Containers on the way are made. \return S_OK, whatever was converted.
    HRESULT STDMETHODCALLTYPE GetBoolAt(LPCWSTR path, VARIANT_BOOL missing,
                                        VARIANT_BOOL* value) noexcept override;
    HRESULT STDMETHODCALLTYPE GetIntAt(LPCWSTR path, LONG missing, LONG* value) noexcept override;
    HRESULT STDMETHODCALLTYPE GetInt64At(LPCWSTR path, LONGLONG missing,
                                         LONGLONG* value) noexcept override;
    HRESULT STDMETHODCALLTYPE GetDoubleAt(LPCWSTR path, double missing,
                                          double* value) noexcept override;
    HRESULT STDMETHODCALLTYPE GetStringAt(LPCWSTR path, BSTR missing,
                                          BSTR* value) noexcept override;
    HRESULT STDMETHODCALLTYPE GetStreamAt(LPCWSTR path, IStream* missing,
                                          IStream** value) noexcept override;
    HRESULT STDMETHODCALLTYPE GetObjectAt(LPCWSTR path, IUnknown* missing,
                                          IUnknown** value) noexcept override;
    /// Makes what is missing at a path, of the kind that belongs to the type, and sets it; makes
    /// nothing for a value that is refused.
    HRESULT STDMETHODCALLTYPE SetBoolAt(LPCWSTR path, VARIANT_BOOL value) noexcept override;
    HRESULT STDMETHODCALLTYPE SetIntAt(LPCWSTR path, LONG value) noexcept override;
    HRESULT STDMETHODCALLTYPE SetInt64At(LPCWSTR path, LONGLONG value) noexcept override;
    HRESULT STDMETHODCALLTYPE SetDoubleAt(LPCWSTR path, double value) noexcept override;
    HRESULT STDMETHODCALLTYPE SetStringAt(LPCWSTR path, BSTR value) noexcept override;
    HRESULT STDMETHODCALLTYPE SetStreamAt(LPCWSTR path, IStream* value) noexcept override;
    HRESULT STDMETHODCALLTYPE SetObjectAt(LPCWSTR path, IUnknown* value) noexcept override;
    HRESULT STDMETHODCALLTYPE Reserved() noexcept override { return E_NOTIMPL; }

    /// The item itself for VT_EMPTY and VT_NULL, else the one at a path or an index; containers on
    /// the way are made. One that is missing comes into being when it is first written.
    /// \return S_FALSE for an item that is missing yet; E_INVALIDARG for an empty path.
    HRESULT STDMETHODCALLTYPE Item(VARIANT path, IBagItem** item) noexcept override;
    HRESULT STDMETHODCALLTYPE GetCount(LONG* count) noexcept override;
    HRESULT STDMETHODCALLTYPE Remove(VARIANT keyOrIndex) noexcept override;
    /// \return E_FAIL if the item refuses.
    HRESULT STDMETHODCALLTYPE Reset() noexcept override;
    /// A new element of an array, before the one at an index, or else the item at a path.
    HRESULT STDMETHODCALLTYPE GetOrAdd(VARIANT key, LONG kind, IBagItem** item) noexcept override;
    HRESULT STDMETHODCALLTYPE Append(LONG kind, IBagItem** item) noexcept override;
    /// Takes over the value, of containers what the source has. After E_OUTOFMEMORY what was taken
    /// up to there stays.
    HRESULT STDMETHODCALLTYPE Assign(IBagItem* source) noexcept override;
    /// As DataArray::Move.
    HRESULT STDMETHODCALLTYPE Move(LONG first, LONG to, LONG count) noexcept override;
    HRESULT STDMETHODCALLTYPE RemoveRange(LONG first, LONG count) noexcept override;
    HRESULT STDMETHODCALLTYPE GetLastStatus(LONG* status) noexcept override;
    HRESULT STDMETHODCALLTYPE GetFlags(LONG* flags) noexcept override;
    HRESULT STDMETHODCALLTYPE SetFlags(LONG flags) noexcept override;
    HRESULT STDMETHODCALLTYPE CopySpec(IBagItem* source) noexcept override;
    HRESULT STDMETHODCALLTYPE SetTemplateFromBuffer(const void* buffer, LONG size,
                                                    LPCWSTR root) noexcept override;
    HRESULT STDMETHODCALLTYPE KeyAt(LONG index, BSTR* key) noexcept override;
    /// GetOrAdd, then the value; kind 0 means the value's own. Nothing is made for a value that is
    /// refused.
    HRESULT STDMETHODCALLTYPE GetOrAddWithValue(VARIANT key, LONG kind, VARIANT value,
                                                IBagItem** item) noexcept override;
    HRESULT STDMETHODCALLTYPE EnsureItem(VARIANT path, LONG kind,
                                         IBagItem** item) noexcept override;
    /// The item's own text, terminated, until the item changes.
    HRESULT STDMETHODCALLTYPE GetStringPointer(LPCWSTR* text) noexcept override;
    /// Whether a path gives an item of a kind; a kind other than 0 makes it.
    HRESULT STDMETHODCALLTYPE Exists(LPCWSTR path, LONG kind,
                                     VARIANT_BOOL* exists) noexcept override;
    HRESULT STDMETHODCALLTYPE IsEqual(IBagItem* other, VARIANT_BOOL* isEqual) noexcept override;
    /// \param source  A template set of this library, or an IStream with a document.
    HRESULT STDMETHODCALLTYPE SetTemplate(IUnknown* source, LPCWSTR root) noexcept override;
    /// As CAB::LoadFromRegistry and CAB::SaveToRegistry, 1 of the latter being a success.
    /// \param key  A registry key's handle; 0 means that the path begins with a root.
    HRESULT STDMETHODCALLTYPE LoadRegistry(LPCWSTR path, LONGLONG key) noexcept override;
    HRESULT STDMETHODCALLTYPE SaveRegistry(LPCWSTR path, LONGLONG key) noexcept override;
    HRESULT STDMETHODCALLTYPE SaveRegistryFlags(LPCWSTR path, LONGLONG key,
                                                LONG flags) noexcept override;
    HRESULT STDMETHODCALLTYPE IsAtDefault(VARIANT_BOOL* isDefault) noexcept override;
    HRESULT STDMETHODCALLTYPE GetValueByPointer(VARIANT* value) noexcept override;
    HRESULT STDMETHODCALLTYPE PutValueByPointer(VARIANT* value) noexcept override;
    /// The plain item, owned by its bag; for code of this module.
    HRESULT STDMETHODCALLTYPE GetOrAddRaw(VARIANT key, LONG kind, void** item) noexcept override;

private:
    /// What the item knows of its face.
    class Link final : public CAB::ItemWrapper {
    public:
        explicit Link(ItemFace& face) noexcept : face_(face) {}
        void OnTargetGone() noexcept override { face_.item_ = nullptr; }
        [[nodiscard]] ItemFace& Face() const noexcept { return face_; }

    private:
        ItemFace& face_;
    };

    ItemFace() noexcept : link_(*this) {}
    ~ItemFace() = default;

    enum class Way : std::uint8_t { Made, AsItIs };
    /// As Item. \param way  What happens to containers that are missing on the way.
    HRESULT Lookup(const VARIANT& path, Way way, IBagItem** item) noexcept;
    /// A face without an item, so that memory runs out before anything is changed.
    [[nodiscard]] static platform::ComPtr<ItemFace> MakeSpare() noexcept;
    /// The object of an item; `spare` becomes it if there is none.
    [[nodiscard]] static platform::ComPtr<ItemFace> Bind(CAB::DataItem& item,
                                                         platform::ComPtr<ItemFace> spare) noexcept;
    [[nodiscard]] CAB::DataItem* AddChild(const VARIANT& key, CAB::Kind kind,
                                          CAB::Growth& growth) noexcept;
    template <class Work>
    HRESULT With(Work work) noexcept;
    template <class Work>
    HRESULT Adding(IBagItem** item, Work work) noexcept;
    template <class Value>
    using Give = HRESULT (*)(CAB::DataItem& item, Value& value) noexcept;
    template <class Value>
    using Take = HRESULT (*)(CAB::DataItem& item, Value value) noexcept;
    template <class Value>
    HRESULT Get(Value* value, Give<Value> give) noexcept;
    template <class Value>
    HRESULT Put(Value value, Take<Value> take) noexcept;
    template <class Value>
    HRESULT GetAt(LPCWSTR path, Value missing, Value* value, Give<Value> give) noexcept;
    template <class Value>
    HRESULT SetAt(LPCWSTR path, CAB::Kind kind, Value value, Take<Value> take) noexcept;

    CAB::DataItem* item_ = nullptr;
    ULONG references_ = 1;
    void* guard_ = nullptr;  // a place that clients of other modules know of; unused
    Link link_;
};

/// Remembers an item for as long as it lives.
class ItemWatch {
public:
    ItemWatch() noexcept = default;
    /// \return false, watching nothing, when memory runs out.
    [[nodiscard]] bool Watch(CAB::DataItem& item) noexcept {
        face_ = ItemFace::Of(item);
        return static_cast<bool>(face_);
    }
    void Drop() noexcept { face_.Reset(); }
    [[nodiscard]] bool IsSet() const noexcept { return static_cast<bool>(face_); }
    /// Null when the item has gone, or none is watched.
    [[nodiscard]] CAB::DataItem* Get() const noexcept { return face_ ? face_->Item() : nullptr; }

private:
    platform::ComPtr<ItemFace> face_;
};

}  // namespace AUX

// What an object of this class answers with itself, for code of this module.
QVD_INTERFACE_ID(AUX::ItemFace, 0x3C9A5110, 0x7E0D, 0x4B62,
                 {0x8F, 0x3A, 0xD4, 0x1B, 0x60, 0xC8, 0x2E, 0x57});
