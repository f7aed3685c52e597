#pragma once

#include <atomic>

#include "automation/geometry_math.h"
#include "automation/keyword_table.h"
#include "objects/bag_factory.h"
#include "objects/message_hub.h"
#include "platform/sync.h"

namespace AUX {

/// The way into the family: one static object that makes the others and offers the library's
/// services. It isn't counted: AddRef and Release give 1. Any thread, from StartObjects to
/// EndObjects.
class RootObject final : public DualBase<IRootObject> {
public:
    constexpr RootObject() noexcept = default;

    /// Makes the lock and the hub. \return false if memory runs out; End need not be called then.
    [[nodiscard]] bool Start() noexcept;
    /// Gives the lock back, then the hub and the geometry.
    void End() noexcept;
    /// Whether others hold an object of the family, beside those that the root keeps for itself.
    [[nodiscard]] bool AreObjectsInUse() noexcept;
    /// Says how hashed keyword tables that are made from now on hash; null for not at all. Belongs
    /// to the start of a module that wants another hash than HashKeyword.
    void SetKeywordHash(KeywordHash hash) noexcept { keywordHash = hash; }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) noexcept override;
    ULONG STDMETHODCALLTYPE AddRef() noexcept override { return 1; }
    ULONG STDMETHODCALLTYPE Release() noexcept override { return 1; }

    /// Sizes are bytes. \return E_INVALIDARG for a size below 1.
    HRESULT STDMETHODCALLTYPE Alloc(LONGLONG size, void** block) noexcept override;
    /// After a failure `result` is the old block, which is still the caller's.
    HRESULT STDMETHODCALLTYPE Resize(void* block, LONGLONG size, void** result) noexcept override;
    HRESULT STDMETHODCALLTYPE Free(void* block) noexcept override;
    HRESULT STDMETHODCALLTYPE Reserved() noexcept override;
    HRESULT STDMETHODCALLTYPE NewBag(IBag** bag) noexcept override;
    /// A size above 0 is set at once.
    HRESULT STDMETHODCALLTYPE NewMemoryBlock(LONGLONG size, IMemoryBlock** block) noexcept override;
    /// \param size  1 to 99,999,999 bits.
    HRESULT STDMETHODCALLTYPE NewBitSet(ULONG size, IBitSet** set) noexcept override;
    /// \return E_INVALIDARG for what is no kind.
    HRESULT STDMETHODCALLTYPE NewColor(LONG kind, IColorValue** color) noexcept override;
    HRESULT STDMETHODCALLTYPE NewObjectList(IObjectList** list) noexcept override;
    HRESULT STDMETHODCALLTYPE NewOperationHistory(IOperationHistory** history) noexcept override;
    HRESULT STDMETHODCALLTYPE NewObjectArray(IObjectsArray** array) noexcept override;
    HRESULT STDMETHODCALLTYPE NewStringArray(IStringArray** array) noexcept override;
    HRESULT STDMETHODCALLTYPE NewValueArray(IValueArray** array) noexcept override;
    HRESULT STDMETHODCALLTYPE NewProgressSliceAll(IProgress* parent, double range,
                                                  IProgressSlice** slice) noexcept override;
    HRESULT STDMETHODCALLTYPE NewBagFromTemplateText(const void* text, LONG length, LPCWSTR root,
                                                     IBag** bag) noexcept override;
    HRESULT STDMETHODCALLTYPE NewText(BSTR text, IText** result) noexcept override;
    HRESULT STDMETHODCALLTYPE NewSignal(ISignal** signal) noexcept override;
    HRESULT STDMETHODCALLTYPE NewIntArray(IIntArray** array) noexcept override;
    HRESULT STDMETHODCALLTYPE NewPageRange(IPageRange** range) noexcept override;
    /// Words as AUX::SplitWords cuts them. \return S_FALSE, and null, for an empty text.
    HRESULT STDMETHODCALLTYPE SplitWords(BSTR text, IStringArray** words) noexcept override;
    HRESULT STDMETHODCALLTYPE NewBagFromTemplateStream(IUnknown* stream, LPCWSTR root,
                                                       IBag** bag) noexcept override;
    /// \param flags  Bit 0: the message only.
    HRESULT STDMETHODCALLTYPE GetStatusText(ULONG status, ULONG flags,
                                            BSTR* text) noexcept override;
    HRESULT STDMETHODCALLTYPE IsCanceledStatus(ULONG status,
                                               VARIANT_BOOL* result) noexcept override;
    HRESULT STDMETHODCALLTYPE IsInvalidArgStatus(ULONG status,
                                                 VARIANT_BOOL* result) noexcept override;
    HRESULT STDMETHODCALLTYPE IsNotImplementedStatus(ULONG status,
                                                     VARIANT_BOOL* result) noexcept override;
    /// A row of StandardPaperTable, sizes in points; each place may be null.
    HRESULT STDMETHODCALLTYPE GetStandardPaper(ULONG key, ULONG* group, double* width,
                                               double* height) noexcept override;
    /// The lists of an operation are told at OperationList.
    HRESULT STDMETHODCALLTYPE GetInputCount(IUnknown* operation, ULONG* count) noexcept override;
    HRESULT STDMETHODCALLTYPE GetInput(IUnknown* operation, ULONG index,
                                       IUnknown** object) noexcept override;
    HRESULT STDMETHODCALLTYPE AddInput(IUnknown* operation, IUnknown* object) noexcept override;
    HRESULT STDMETHODCALLTYPE ClearInputs(IUnknown* operation) noexcept override;
    HRESULT STDMETHODCALLTYPE GetOutputCount(IUnknown* operation, ULONG* count) noexcept override;
    HRESULT STDMETHODCALLTYPE GetOutput(IUnknown* operation, ULONG index,
                                        IUnknown** object) noexcept override;
    HRESULT STDMETHODCALLTYPE AddOutput(IUnknown* operation, IUnknown* object) noexcept override;
    HRESULT STDMETHODCALLTYPE ClearOutputs(IUnknown* operation) noexcept override;
    /// \param relative  The first text is the folder then, and the others are names in it.
    HRESULT STDMETHODCALLTYPE RevealItems(IStringArray* names,
                                          VARIANT_BOOL relative) noexcept override;
    HRESULT STDMETHODCALLTYPE NewDoubleArray(IDoubleArray** array) noexcept override;
    /// \return E_FAIL before StartObjects and after EndObjects.
    HRESULT STDMETHODCALLTYPE GetHub(IMessageHub** hub) noexcept override;
    HRESULT STDMETHODCALLTYPE GetMath(IUnknown** math) noexcept override;
    /// The text is told at KeywordTable::Parse. A table for which memory ran out is shorter.
    HRESULT STDMETHODCALLTYPE NewKeywordTable(BSTR spec, LONG minValue, LONG maxValue,
                                              LONG defaultValue, BSTR prefix,
                                              VARIANT_BOOL caseSensitive,
                                              IKeywordTable** table) noexcept override;
    /// \return E_NOTIMPL if the root has no hash.
    HRESULT STDMETHODCALLTYPE NewHashedKeywordTable(BSTR spec, LONG minValue, LONG maxValue,
                                                    LONG defaultValue, BSTR prefix,
                                                    VARIANT_BOOL caseSensitive,
                                                    IHashedKeywordTable** table) noexcept override;
    /// \return E_INVALIDARG for a null parent or a negative range, or as ProgressSlice::Start.
    HRESULT STDMETHODCALLTYPE NewProgressSlice(IProgress* parent, double range, ULONG stateMask,
                                               ULONG blocking,
                                               IProgressSlice** slice) noexcept override;
    HRESULT STDMETHODCALLTYPE NewTemplateSetFromStream(IUnknown* stream,
                                                       ITemplateSet** set) noexcept override;
    HRESULT STDMETHODCALLTYPE NewBagFromTemplateSet(IUnknown* set, LPCWSTR root,
                                                    IBag** bag) noexcept override;
    HRESULT STDMETHODCALLTYPE GetDefaultPaper(ULONG* key) noexcept override;
    /// The key is the block's bytes, by the rules of TextCipher. \return E_INVALIDARG for a null or
    /// empty key or a null text; as AUX::EncryptText.
    HRESULT STDMETHODCALLTYPE EncryptText(IMemoryBlock* key, IText* text,
                                          IText** result) noexcept override;
    HRESULT STDMETHODCALLTYPE DecryptText(IMemoryBlock* key, IText* text,
                                          IText** result) noexcept override;
    /// Takes the bytes as UTF-16 units. \return E_INVALIDARG for an odd size, or null with one.
    HRESULT STDMETHODCALLTYPE EncryptBytes(IMemoryBlock* key, const void* bytes, ULONG size,
                                           IText** result) noexcept override;
    /// An empty text gives S_OK and null.
    HRESULT STDMETHODCALLTYPE DecryptString(IMemoryBlock* key, BSTR text,
                                            IText** result) noexcept override;
    HRESULT STDMETHODCALLTYPE NewTemplateSetFromText(const void* text, LONG length,
                                                     ITemplateSet** set) noexcept override;

private:
    CRITICAL_SECTION lock{};  // guards the lazy geometry
    platform::ComPtr<MessageHub> hub;
    platform::ComPtr<GeometryMath> math;
    KeywordHash keywordHash = nullptr;
    bool isStarted = false;
    BagFactory bags{*this};
};

/// The one root.
[[nodiscard]] RootObject& Root() noexcept;

/// Builds the root and its hub, and says where type information comes from. Called when the module
/// is loaded. \return false if memory or the system's locks run out.
[[nodiscard]] bool StartObjects(TypeLibraryLoader loader) noexcept;
/// Gives back what the root holds, in order. Called when the module is unloaded.
void EndObjects() noexcept;

}  // namespace AUX
