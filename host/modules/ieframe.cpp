#include "platform/com.h"

/// What a browser in Protected Mode answers to the question whether it is.
extern "C" QVD_EXPORT HRESULT STDMETHODCALLTYPE IEIsProtectedModeProcess(BOOL* flag) noexcept;

extern "C" HRESULT STDMETHODCALLTYPE IEIsProtectedModeProcess(BOOL* flag) noexcept {
    if (!flag) return E_POINTER;
    *flag = TRUE;
    return S_OK;
}
