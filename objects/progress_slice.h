#pragma once

#include "objects/frame.h"

namespace AUX {

/// A part of a parent's progress, itself a progress object, so that tasks nest. The parent is held.
///
/// Of a slice 0 to its range stands for the share of the parent's range that it was made with, from
/// the parent's position at that time on. Texts and notes go on to the parent unless a blocking
/// flag keeps them: 2 SetTitle, 1 SetMessage, 4 SetDetail, 8 AddNote; a blocked one gives S_FALSE.
/// IsCanceled, Cancel and Refresh always go on. The state is the parent's word, of which a slice
/// changes the bits of its mask alone.
class ProgressSlice final : public DualObject<IProgressSlice> {
public:
    enum Blocking : ULONG { kBlockMessage = 1, kBlockTitle = 2, kBlockDetail = 4, kBlockNote = 8 };

    /// Takes its share. \param share  In the parent's units; with 0 or less the slice has ended.
    /// \return E_INVALIDARG for a parent without a range or with a position outside it.
    [[nodiscard]] HRESULT Start(IProgress* progress, double share, ULONG mask,
                                ULONG blocking) noexcept;

    HRESULT STDMETHODCALLTYPE GetPosition(double* position) noexcept override;
    /// Positions outside are cut. \return S_FALSE if the parent has no range now.
    HRESULT STDMETHODCALLTYPE SetPosition(double position) noexcept override;
    HRESULT STDMETHODCALLTYPE GetRange(double* range) noexcept override;
    HRESULT STDMETHODCALLTYPE SetRange(double range) noexcept override;
    /// While suspended, the state that Resume will write.
    HRESULT STDMETHODCALLTYPE GetState(ULONG* state) noexcept override;
    HRESULT STDMETHODCALLTYPE SetState(ULONG value, ULONG mask) noexcept override;
    HRESULT STDMETHODCALLTYPE SetTitle(BSTR text) noexcept override;
    HRESULT STDMETHODCALLTYPE SetMessage(BSTR text) noexcept override;
    HRESULT STDMETHODCALLTYPE SetDetail(BSTR text) noexcept override;
    HRESULT STDMETHODCALLTYPE AddNote(BSTR text) noexcept override;
    HRESULT STDMETHODCALLTYPE IsCanceled(VARIANT_BOOL* result) noexcept override;
    HRESULT STDMETHODCALLTYPE Cancel() noexcept override;
    HRESULT STDMETHODCALLTYPE Refresh() noexcept override;
    HRESULT STDMETHODCALLTYPE Suspend() noexcept override;
    HRESULT STDMETHODCALLTYPE Resume() noexcept override;

protected:
    void* AnswersAlso(REFIID id) noexcept override;

private:
    double start = 0;
    double length = 0;
    double localPosition = 0;
    double localRange = 1.0;
    platform::ComPtr<IProgress> parent;
    ULONG parentState = 0;
    ULONG stateMask = 0;
    ULONG blockingFlags = 0;
    ULONG pendingMask_ = 0;  // the bits that a suspended slice was told
    bool isSuspended = false;
    bool isEnded = false;
    bool isStatePending = false;
};

}  // namespace AUX
