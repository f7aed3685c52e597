#pragma once

#include <atomic>

#include "cab/data_root.h"
#include "objects/frame.h"
#include "platform/sync.h"

namespace AUX {

/// The object of a bag, which it keeps alive. What concerns the bag as a whole takes the bag's
/// lock, so that any thread may call it; the items it gives take none.
///
/// A conversion on the way is no result of an operation here; the calling thread's notice tells it.
class BagFace final : public DualBase<IBag>, public IBagLocker, LiveObject, public Allocated {
public:
    /// \param bag     One reference, which is taken over.
    /// \return null, with the reference given back, when memory runs out.
    [[nodiscard]] static platform::ComPtr<BagFace> Make(CAB::DataRoot* bag) noexcept;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) noexcept override;
    ULONG STDMETHODCALLTYPE AddRef() noexcept override;
    ULONG STDMETHODCALLTYPE Release() noexcept override;

    HRESULT STDMETHODCALLTYPE GetRootItem(IBagItem** item) noexcept override;
    /// Every value back to its default. The old items' objects answer E_FAIL from then on.
    HRESULT STDMETHODCALLTYPE Rebuild() noexcept override;
    /// There is no store format: E_FAIL for a stream that can be read. \return E_INVALIDARG for
    /// null. \param isOwn  The stream may be read itself; else a second one is made of it.
    HRESULT STDMETHODCALLTYPE LoadStream(IStream* stream, VARIANT_BOOL isOwn) noexcept override;
    /// There is no store format: E_NOTIMPL for a stream that can be written.
    HRESULT STDMETHODCALLTYPE SaveStream(IStream* stream) noexcept override;
    /// As the operations of the root item.
    HRESULT STDMETHODCALLTYPE LoadRegistry(LPCWSTR path, LONGLONG key) noexcept override;
    HRESULT STDMETHODCALLTYPE SaveRegistry(LPCWSTR path, LONGLONG key) noexcept override;
    HRESULT STDMETHODCALLTYPE GetChangeCount(LONG* count) noexcept override;
    HRESULT STDMETHODCALLTYPE Reserved1() noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Reserved2() noexcept override { return E_NOTIMPL; }
    /// As CAB::FromJson and CAB::ToJson. A null text is E_INVALIDARG.
    HRESULT STDMETHODCALLTYPE FromJson(BSTR text) noexcept override;
    HRESULT STDMETHODCALLTYPE ToJson(LONG flags, BSTR* text) noexcept override;
    HRESULT STDMETHODCALLTYPE SaveRegistryFlags(LPCWSTR path, LONGLONG key,
                                                LONG flags) noexcept override;

    /// Takes the bag's lock; as often as wanted, each time with one GiveBack by the same thread.
    HRESULT STDMETHODCALLTYPE Borrow() noexcept override;
    /// \return E_FAIL if the calling thread has not borrowed it.
    HRESULT STDMETHODCALLTYPE GiveBack() noexcept override;

private:
    /// What a bag knows of its object, which outlives it: the bag is kept.
    class Link final : public CAB::ItemWrapper {
    public:
        void OnTargetGone() noexcept override {}
    };

    BagFace() noexcept = default;
    ~BagFace();

    template <class Work>
    HRESULT With(Work work) noexcept;

    CAB::DataRoot* bag_ = nullptr;
    std::atomic<ULONG> references_ = 1;
    CRITICAL_SECTION lock_{};  // guards who has borrowed
    bool hasLock_ = false;
    DWORD borrower_ = 0;  // a thread's id, 0 for nobody
    ULONG depth_ = 0;
    Link link_;
};

}  // namespace AUX
