#include "driver/protected_mode.h"

#include <atomic>

#include "platform/modules.h"

namespace {

struct Answer {
    HRESULT result;
    BOOL flag;
};

// Two threads may both ask; they store the same answer.
constinit std::atomic<Answer> keptAnswer{};
constinit std::atomic<bool> isKept{false};
static_assert(std::atomic<Answer>::is_always_lock_free);

using IsProtectedModeProcess = HRESULT WINAPI(BOOL* flag);

Answer AskBrowser() noexcept {
    Answer answer{E_NOTIMPL, FALSE};
    const platform::ModuleHandle library(LoadLibraryW(TEXT("ieframe.dll")));
    if (!library) return answer;
    auto* const ask =
        platform::ProcedureOf<IsProtectedModeProcess>(library.Get(), "IEIsProtectedModeProcess");
    if (ask) answer.result = ask(&answer.flag);
    return answer;
}

}  // namespace

HRESULT IsProtectedMode(BOOL& flag) noexcept {
    if (isKept.load(std::memory_order_acquire)) {
        const Answer kept = keptAnswer.load(std::memory_order_relaxed);
        flag = kept.flag;
        return kept.result;
    }
    const Answer answer = AskBrowser();
    if (answer.result == S_OK || answer.result == E_NOTIMPL) {
        keptAnswer.store(answer, std::memory_order_relaxed);
        isKept.store(true, std::memory_order_release);
    }
    flag = answer.flag;
    return answer.result;
}

void ForgetProtectedModeAnswer() noexcept { isKept.store(false, std::memory_order_release); }
