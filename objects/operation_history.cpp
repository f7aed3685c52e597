#include "objects/operation_history.h"

#include <memory>

#include "platform/unique_bstr.h"

namespace AUX {

HRESULT HistoryStep::Text(ULONG which, BSTR* text) noexcept {
    if (!text) return E_POINTER;
    *text = nullptr;
    if (which >= kTexts) return E_INVALIDARG;
    if (areTextsOld) {
        for (ULONG i = 0; i < kTexts; ++i) {
            platform::UniqueBstr answer;
            if (const HRESULT result = Ask(i, answer.Put()); FAILED(result)) return result;
            if (!texts[i].Assign(answer.Get(), SysStringLen(answer.Get()))) return E_OUTOFMEMORY;
        }
        areTextsOld = false;
    }
    return GiveText(text, texts[which].Text(), texts[which].Length());
}

namespace {

class HostStep final : public HistoryStep {
public:
    HostStep(IHistoryStep* step, LONGLONG size) noexcept : step_(step), size_(size) {}

    HRESULT Undo(ULONG flag) noexcept override { return step_->Undo(flag); }
    HRESULT Redo(ULONG flag) noexcept override { return step_->Redo(flag); }
    [[nodiscard]] LONGLONG Size() const noexcept override { return size_; }

private:
    [[nodiscard]] HRESULT Ask(ULONG which, BSTR* text) noexcept override {
        return step_->GetText(which, text);
    }

    const platform::ComPtr<IHistoryStep> step_;
    const LONGLONG size_;
};

constexpr LONGLONG kMostBytes = 0x7FFFFFFFFFFFFFFF;

LONGLONG AddSizes(LONGLONG one, LONGLONG other) noexcept {
    return other > kMostBytes - one ? kMostBytes : one + other;
}

void DeleteAll(Array<HistoryStep*>& list) noexcept {
    Array<HistoryStep*> gone(std::move(list));  // What ends may look at the history.
    for (HistoryStep* step : gone) delete step;
}

}  // namespace

/// The steps of a group. Each child is moved, whatever those before it said; the first failure is
/// the result.
class CompositeStep final : public HistoryStep {
public:
    /// Takes the steps over; there is one at least.
    explicit CompositeStep(Array<HistoryStep*>& children) noexcept
        : children_(std::move(children)) {
        for (const HistoryStep* child : children_) size_ = AddSizes(size_, child->Size());
    }
    ~CompositeStep() override { DeleteAll(children_); }

    HRESULT Undo(ULONG flag) noexcept override {
        HRESULT first = S_OK;
        for (std::uint32_t i = children_.Count(); i-- > 0;) {
            const HRESULT result = children_[i]->Undo(flag);
            if (FAILED(result) && SUCCEEDED(first)) first = result;
        }
        return first;
    }
    HRESULT Redo(ULONG flag) noexcept override {
        HRESULT first = S_OK;
        for (HistoryStep* child : children_) {
            const HRESULT result = child->Redo(flag);
            if (FAILED(result) && SUCCEEDED(first)) first = result;
        }
        return first;
    }
    [[nodiscard]] LONGLONG Size() const noexcept override { return size_; }

private:
    [[nodiscard]] HRESULT Ask(ULONG which, BSTR* text) noexcept override {
        return children_[children_.Count() - 1]->Ask(which, text);
    }

    Array<HistoryStep*> children_;
    LONGLONG size_ = 0;
};

/// Brackets a change; the end of the outermost one tells the listener.
class OperationHistory::ChangeScope {
public:
    explicit ChangeScope(OperationHistory& history) noexcept : history_(history) {
        ++history_.changeDepth;
    }
    ~ChangeScope() {
        if (--history_.changeDepth > 0) return;
        // The listener may let go of the history, or of itself.
        const platform::ComPtr<OperationHistory> kept(&history_);
        const platform::ComPtr<IHistoryListener> told(history_.listener);
        if (told) (void)told->OnHistoryChanged(&history_);  // It only watches.
    }
    ChangeScope(const ChangeScope&) = delete;
    ChangeScope& operator=(const ChangeScope&) = delete;

private:
    OperationHistory& history_;
};

OperationHistory::~OperationHistory() {
    isInStep_ = true;
    DeleteAll(steps);
    DeleteAll(groupSteps_);
}

HRESULT OperationHistory::GetCount(ULONG* count) noexcept { return Give(count, steps.Count()); }
HRESULT OperationHistory::GetPosition(LONG* place) noexcept { return Give(place, position); }

HRESULT OperationHistory::CanUndo(VARIANT_BOOL* result) noexcept {
    return Give(result, ToVariantBool(position >= 0));
}

HRESULT OperationHistory::CanRedo(VARIANT_BOOL* result) noexcept {
    return Give(result, ToVariantBool(static_cast<ULONG>(position + 1) < steps.Count()));
}

HRESULT OperationHistory::Undo(ULONG count, ULONG flag) noexcept {
    if (IsLocked()) return kStatusHistoryLocked;
    if (position < 0 || count == 0 || groupDepth_ > 0) return S_FALSE;
    const ChangeScope scope(*this);
    HRESULT result = S_OK;
    isInStep_ = true;
    for (; count > 0 && position >= 0 && SUCCEEDED(result); --count) {
        const auto index = static_cast<std::uint32_t>(position--);
        result = steps[index]->Undo(flag);
    }
    isInStep_ = false;
    return FAILED(result) ? result : S_OK;
}

HRESULT OperationHistory::Redo(ULONG count, ULONG flag) noexcept {
    if (IsLocked()) return kStatusHistoryLocked;
    const auto isAtEnd = [this] { return static_cast<ULONG>(position + 1) >= steps.Count(); };
    if (isAtEnd() || count == 0 || groupDepth_ > 0) return S_FALSE;
    const ChangeScope scope(*this);
    HRESULT result = S_OK;
    isInStep_ = true;
    for (; count > 0 && !isAtEnd() && SUCCEEDED(result); --count) {
        const auto index = static_cast<std::uint32_t>(++position);
        result = steps[index]->Redo(flag);
    }
    isInStep_ = false;
    return FAILED(result) ? result : S_OK;
}

// From the end, so that a step goes before those that it stands on.
void OperationHistory::RemoveFrom(ULONG first) noexcept {
    while (steps.Count() > first) {
        HistoryStep* const step = steps[steps.Count() - 1];
        steps.RemoveAt(steps.Count() - 1);
        totalSize_ -= step->Size();
        delete step;
    }
}

void OperationHistory::KeepLimits() noexcept {
    while (!steps.IsEmpty() && IsOverLimits(steps.Count(), totalSize_)) {
        // Steps that were undone can only be done again from the first of them on.
        const std::uint32_t index = position >= 0 ? 0 : steps.Count() - 1;
        if (position >= 0) --position;
        HistoryStep* const step = steps[index];
        steps.RemoveAt(index);
        totalSize_ -= step->Size();
        delete step;
    }
}

// Takes the step over if it succeeds.
HRESULT OperationHistory::Push(HistoryStep* step) noexcept {
    if (!steps.Grow(1) || steps.Count() >= 0x7FFFFFFF) return E_OUTOFMEMORY;
    const ChangeScope scope(*this);
    isInStep_ = true;  // Steps that end are foreign code.
    RemoveFrom(static_cast<ULONG>(position + 1));
    // A sum that would not fit in 64 bits is over any limit: the older steps go at once.
    if (step->Size() > kMostBytes - totalSize_) {
        RemoveFrom(0);
        position = -1;
    }
    (void)steps.Add(step);  // There is room.
    totalSize_ += step->Size();
    ++position;
    KeepLimits();
    isInStep_ = false;
    return S_OK;
}

HRESULT OperationHistory::Add(IHistoryStep* step) noexcept {
    if (!step) return E_INVALIDARG;
    if (IsLocked()) return kStatusHistoryLocked;
    LONGLONG size = 0;
    if (const HRESULT result = step->GetSize(&size); FAILED(result)) return result;
    if (size < 0) return E_INVALIDARG;
    std::unique_ptr<HistoryStep> made(new (std::nothrow) HostStep(step, size));
    if (!made) return E_OUTOFMEMORY;
    HRESULT result = S_OK;
    if (groupDepth_ > 0) {
        result = groupSteps_.Add(made.get()) ? S_OK : E_OUTOFMEMORY;
    } else {
        result = Push(made.get());
    }
    if (SUCCEEDED(result)) (void)made.release();  // The list owns it.
    return result;
}

HRESULT OperationHistory::Clear() noexcept {
    if (IsLocked()) return kStatusHistoryLocked;
    if (groupDepth_ > 0) return S_FALSE;
    const ChangeScope scope(*this);
    isInStep_ = true;
    position = -1;
    RemoveFrom(0);
    isInStep_ = false;
    return S_OK;
}

HRESULT OperationHistory::OpenGroup() noexcept {
    if (IsLocked()) return kStatusHistoryLocked;
    ++groupDepth_;
    return S_OK;
}

HRESULT OperationHistory::CloseGroup() noexcept {
    if (groupDepth_ == 0) return S_FALSE;
    if (IsLocked()) return kStatusHistoryLocked;
    if (groupDepth_ == 1 && !groupSteps_.IsEmpty()) {
        // Room first, so that the group stays open with all its steps if there is none.
        if (!steps.Grow(1)) return E_OUTOFMEMORY;
        std::unique_ptr<HistoryStep> step(new (std::nothrow) CompositeStep(groupSteps_));
        if (!step) return E_OUTOFMEMORY;
        groupDepth_ = 0;
        const HRESULT result = Push(step.get());
        if (SUCCEEDED(result)) (void)step.release();  // The list owns it.
        return result;
    }
    --groupDepth_;
    return S_OK;
}

HRESULT OperationHistory::GetStepText(ULONG index, ULONG which, BSTR* text) noexcept {
    if (!text) return E_POINTER;
    *text = nullptr;
    if (index >= steps.Count()) return E_INVALIDARG;
    if (isInStep_) return kStatusHistoryLocked;
    isInStep_ = true;
    const HRESULT result = steps[index]->Text(which, text);
    isInStep_ = false;
    return result;
}

HRESULT OperationHistory::RefreshTexts() noexcept {
    for (HistoryStep* step : steps) step->RefreshTexts();
    return S_OK;
}

HRESULT OperationHistory::GetCountLimit(ULONG* limit) noexcept { return Give(limit, countLimit); }

HRESULT OperationHistory::SetCountLimit(ULONG limit) noexcept {
    if (IsLocked() && limit < steps.Count()) return kStatusHistoryLocked;
    countLimit = limit;
    if (!IsOverLimits(steps.Count(), totalSize_)) return S_OK;
    const ChangeScope scope(*this);
    isInStep_ = true;
    KeepLimits();
    isInStep_ = false;
    return S_OK;
}

HRESULT OperationHistory::GetSizeLimit(LONGLONG* bytes) noexcept { return Give(bytes, sizeLimit); }

HRESULT OperationHistory::SetSizeLimit(LONGLONG bytes) noexcept {
    if (bytes < 0) return E_INVALIDARG;
    if (IsLocked() && bytes < totalSize_) return kStatusHistoryLocked;
    sizeLimit = bytes;
    if (!IsOverLimits(steps.Count(), totalSize_)) return S_OK;
    const ChangeScope scope(*this);
    isInStep_ = true;
    KeepLimits();
    isInStep_ = false;
    return S_OK;
}

HRESULT OperationHistory::Lock() noexcept {
    ++lockCount;
    return S_OK;
}

HRESULT OperationHistory::Unlock() noexcept {
    LONG count = lockCount;
    while (count > 0 && !lockCount.compare_exchange_weak(count, count - 1)) {
    }
    return count > 0 ? S_OK : S_FALSE;
}

HRESULT OperationHistory::SetListener(IUnknown* newListener) noexcept {
    platform::ComPtr<IHistoryListener> wanted;
    if (newListener) {
        if (const HRESULT result = platform::QueryFor(newListener, wanted); FAILED(result)) {
            return result;
        }
    }
    listener = std::move(wanted);
    return S_OK;
}

}  // namespace AUX
