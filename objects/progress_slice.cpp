#include "objects/progress_slice.h"

#include <algorithm>

namespace AUX {

HRESULT ProgressSlice::Start(IProgress* progress, double share, ULONG mask,
                             ULONG blocking) noexcept {
    isEnded = !(share > 0);
    parent = platform::ComPtr<IProgress>(progress);
    stateMask = mask;
    blockingFlags = blocking;
    if (const HRESULT result = parent->GetState(&parentState); FAILED(result)) return result;
    double range = 0, position = 0;
    if (const HRESULT result = parent->GetRange(&range); FAILED(result)) return result;
    if (const HRESULT result = parent->GetPosition(&position); FAILED(result)) return result;
    if (!(range > 0) || !(position >= 0 && position <= range)) return E_INVALIDARG;
    start = position / range;
    length = std::min(range - position, std::max(share, 0.0)) / range;
    return S_OK;
}

void* ProgressSlice::AnswersAlso(REFIID id) noexcept {
    if (!IsEqualIID(id, platform::InterfaceId<IProgress>())) return nullptr;
    return static_cast<IProgress*>(this);
}

HRESULT ProgressSlice::GetPosition(double* position) noexcept {
    return Give(position, localPosition);
}

HRESULT ProgressSlice::SetPosition(double position) noexcept {
    if (isEnded) return S_OK;
    if (!(position == position)) return E_INVALIDARG;
    position = std::clamp(position, 0.0, localRange);
    if (position == localPosition) return S_OK;
    localPosition = position;
    double range = 0;
    if (FAILED(parent->GetRange(&range)) || !(range > 0)) return S_FALSE;
    return parent->SetPosition((start + length * position / localRange) * range);
}

HRESULT ProgressSlice::GetRange(double* range) noexcept { return Give(range, localRange); }

HRESULT ProgressSlice::SetRange(double range) noexcept {
    if (!(range > 0)) return E_INVALIDARG;
    localRange = range;
    localPosition = std::min(localPosition, range);
    return S_OK;
}

HRESULT ProgressSlice::GetState(ULONG* state) noexcept {
    if (!state) return E_POINTER;
    if (isSuspended) return Give(state, parentState);
    return parent->GetState(state);
}

HRESULT ProgressSlice::SetState(ULONG value, ULONG mask) noexcept {
    mask &= stateMask;
    if (!isSuspended) {
        if (const HRESULT result = parent->GetState(&parentState); FAILED(result)) return result;
    }
    const ULONG changed = (parentState & ~mask) | (value & mask);
    if (changed == parentState) return S_OK;
    parentState = changed;
    if (!isSuspended) return parent->SetState(changed, mask);
    pendingMask_ |= mask;
    isStatePending = true;
    return S_OK;
}

HRESULT ProgressSlice::SetTitle(BSTR text) noexcept {
    return blockingFlags & kBlockTitle ? S_FALSE : parent->SetTitle(text);
}

HRESULT ProgressSlice::SetMessage(BSTR text) noexcept {
    return blockingFlags & kBlockMessage ? S_FALSE : parent->SetMessage(text);
}

HRESULT ProgressSlice::SetDetail(BSTR text) noexcept {
    return blockingFlags & kBlockDetail ? S_FALSE : parent->SetDetail(text);
}

HRESULT ProgressSlice::AddNote(BSTR text) noexcept {
    return blockingFlags & kBlockNote ? S_FALSE : parent->AddNote(text);
}

HRESULT ProgressSlice::IsCanceled(VARIANT_BOOL* result) noexcept {
    return result ? parent->IsCanceled(result) : E_POINTER;
}

HRESULT ProgressSlice::Cancel() noexcept { return parent->Cancel(); }
HRESULT ProgressSlice::Refresh() noexcept { return parent->Refresh(); }

HRESULT ProgressSlice::Suspend() noexcept {
    if (isSuspended) return S_FALSE;
    if (const HRESULT result = parent->GetState(&parentState); FAILED(result)) return result;
    isSuspended = true;
    return S_OK;
}

HRESULT ProgressSlice::Resume() noexcept {
    if (!isSuspended) return S_FALSE;
    isSuspended = false;
    const ULONG mask = pendingMask_;
    pendingMask_ = 0;
    if (!isStatePending) return S_OK;
    isStatePending = false;
    return parent->SetState(parentState, mask);
}

}  // namespace AUX
