#pragma once

#include <atomic>

#include "foundation/array.h"
#include "foundation/wstring.h"
#include "objects/frame.h"

namespace AUX {

/// What a step does: the host's own step, or the steps of a closed group. Beside it the history
/// keeps the step's size, as it was when the step came, and three texts that it asks for at need.
class HistoryStep : public Allocated {
public:
    static constexpr ULONG kTexts = 3;

    virtual ~HistoryStep() = default;
    virtual HRESULT Undo(ULONG flag) noexcept = 0;
    virtual HRESULT Redo(ULONG flag) noexcept = 0;
    [[nodiscard]] virtual LONGLONG Size() const noexcept = 0;

    /// The text of that number, kept until RefreshTexts.
    [[nodiscard]] HRESULT Text(ULONG which, BSTR* text) noexcept;
    void RefreshTexts() noexcept { areTextsOld = true; }

protected:
    friend class CompositeStep;
    [[nodiscard]] virtual HRESULT Ask(ULONG which, BSTR* text) noexcept = 0;

private:
    WString texts[kTexts];
    bool areTextsOld = true;
};

/// The steps that can be undone and done again, with a position: that of the last step done, -1
/// before the first. A host does something, then adds the step for it, which takes the steps
/// that were undone out. When the limits are passed the oldest steps go, in the end the new one.
///
/// While the history is locked, and from inside a step, what would change or move it gives
/// kStatusHistoryLocked; lowering a limit does so only if steps would go. Between OpenGroup and
/// CloseGroup, which nest, steps gather to be one step, and nothing moves. The listener gets one
/// call after each outermost change, and may use the history freely. One thread, but Lock and
/// Unlock, which any may call.
class OperationHistory final : public DualObject<IOperationHistory> {
public:
    static constexpr HRESULT kStatusHistoryLocked = static_cast<HRESULT>(0x8200001D);

    HRESULT STDMETHODCALLTYPE GetCount(ULONG* count) noexcept override;
    HRESULT STDMETHODCALLTYPE GetPosition(LONG* position) noexcept override;
    HRESULT STDMETHODCALLTYPE CanUndo(VARIANT_BOOL* result) noexcept override;
    HRESULT STDMETHODCALLTYPE CanRedo(VARIANT_BOOL* result) noexcept override;
    /// Walks at most `count` steps; `flag` is handed to each. A step that fails ends the walk, with
    /// its result; it counts as undone.
    /// \return S_FALSE if there is nothing to undo, for a count of 0, and in an open group.
    HRESULT STDMETHODCALLTYPE Undo(ULONG count, ULONG flag) noexcept override;
    HRESULT STDMETHODCALLTYPE Redo(ULONG count, ULONG flag) noexcept override;
    HRESULT STDMETHODCALLTYPE Add(IHistoryStep* step) noexcept override;
    /// \return S_FALSE in an open group.
    HRESULT STDMETHODCALLTYPE Clear() noexcept override;
    HRESULT STDMETHODCALLTYPE OpenGroup() noexcept override;
    /// A group without steps adds none. \return S_FALSE if none is open.
    HRESULT STDMETHODCALLTYPE CloseGroup() noexcept override;
    /// \param which  0 to 2, as the host gives them a meaning; a group has those of its last step.
    HRESULT STDMETHODCALLTYPE GetStepText(ULONG index, ULONG which, BSTR* text) noexcept override;
    /// Has all texts asked for anew, such as after a change of the language.
    HRESULT STDMETHODCALLTYPE RefreshTexts() noexcept override;
    HRESULT STDMETHODCALLTYPE GetCountLimit(ULONG* limit) noexcept override;
    HRESULT STDMETHODCALLTYPE SetCountLimit(ULONG limit) noexcept override;
    HRESULT STDMETHODCALLTYPE GetSizeLimit(LONGLONG* bytes) noexcept override;
    HRESULT STDMETHODCALLTYPE SetSizeLimit(LONGLONG bytes) noexcept override;
    HRESULT STDMETHODCALLTYPE Lock() noexcept override;
    /// \return S_FALSE if it is not locked.
    HRESULT STDMETHODCALLTYPE Unlock() noexcept override;
    /// An IHistoryListener, or null for none; E_NOINTERFACE for another object.
    HRESULT STDMETHODCALLTYPE SetListener(IUnknown* newListener) noexcept override;

private:
    class ChangeScope;

    ~OperationHistory() override;
    [[nodiscard]] bool IsLocked() const noexcept { return lockCount > 0 || isInStep_; }
    [[nodiscard]] bool IsOverLimits(ULONG count, LONGLONG size) const noexcept {
        return count > countLimit || size > sizeLimit;
    }
    void RemoveFrom(ULONG first) noexcept;
    void KeepLimits() noexcept;
    [[nodiscard]] HRESULT Push(HistoryStep* step) noexcept;

    Array<HistoryStep*> steps;
    Array<HistoryStep*> groupSteps_;
    LONG position = -1;
    ULONG countLimit = 0xFFFFFFFF;
    LONGLONG sizeLimit = 0x7FFFFFFFFFFFFFFF;
    LONGLONG totalSize_ = 0;
    ULONG groupDepth_ = 0;
    ULONG changeDepth = 0;
    std::atomic<LONG> lockCount = 0;
    bool isInStep_ = false;
    platform::ComPtr<IHistoryListener> listener;
};

}  // namespace AUX
