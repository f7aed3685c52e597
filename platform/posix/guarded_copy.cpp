#include "platform/guarded_copy.h"

#include <csignal>
#include <dlfcn.h>
#include <ucontext.h>

extern "C" {
int qvd_guarded_copy(void* to, const void* from, std::size_t size) noexcept;
extern const char qvd_guarded_copy_step;
extern const char qvd_guarded_copy_end;
}

// The whole copy is one instruction: a fault of it, and of nothing else, has its address.
asm(R"(
    .text
    .p2align 4
    .globl qvd_guarded_copy
    .globl qvd_guarded_copy_step
    .globl qvd_guarded_copy_end
    .hidden qvd_guarded_copy
    .hidden qvd_guarded_copy_step
    .hidden qvd_guarded_copy_end
    .type qvd_guarded_copy, @function
qvd_guarded_copy:
    .cfi_startproc
    movq %rdx, %rcx
    xorl %eax, %eax
qvd_guarded_copy_step:
    rep movsb
qvd_guarded_copy_end:
    ret
    .cfi_endproc
    .size qvd_guarded_copy, . - qvd_guarded_copy
)");

namespace platform {
namespace {

constexpr int kSignals[] = {SIGBUS, SIGSEGV};

// What the process does with these signals otherwise. Written once, before the handler is in place.
struct sigaction previousActions[2];

// Goes on behind the copy, with the outcome as its result.
bool Recover(const siginfo_t& information, ucontext_t& context) noexcept {
    greg_t* const registers = context.uc_mcontext.gregs;
    const bool isFault = information.si_code > 0;  // Another process may send the signal as well.
    if (!isFault || registers[REG_RIP] != reinterpret_cast<greg_t>(&qvd_guarded_copy_step)) {
        return false;
    }
    constexpr greg_t kWriting = 2;  // of the processor's code for a page fault
    const bool isWriting = (registers[REG_ERR] & kWriting) != 0;
    registers[REG_RAX] =
        static_cast<greg_t>(isWriting ? CopyOutcome::TargetLost : CopyOutcome::SourceLost);
    registers[REG_RIP] = reinterpret_cast<greg_t>(&qvd_guarded_copy_end);
    return true;
}

// Does what would have been done without this handler.
void PassOn(const struct sigaction& previous, int signal, siginfo_t* information, void* context) {
    const bool isFault = information->si_code > 0;
    if (previous.sa_flags & SA_SIGINFO) {
        previous.sa_sigaction(signal, information, context);
    } else if (previous.sa_handler == SIG_DFL || (previous.sa_handler == SIG_IGN && isFault)) {
        // The fault comes again when the handler returns, and ends the process where it happened.
        struct sigaction none {};
        none.sa_handler = SIG_DFL;
        (void)sigaction(signal, &none, nullptr);
        if (!isFault) (void)raise(signal);
    } else if (previous.sa_handler != SIG_IGN) {
        previous.sa_handler(signal);
    }
}

void OnFault(int signal, siginfo_t* information, void* context) {
    if (Recover(*information, *static_cast<ucontext_t*>(context))) return;
    PassOn(previousActions[signal == kSignals[1]], signal, information, context);
}

bool SetHandler() noexcept {
    // The handler's code must stay: others may keep its address and call it.
    Dl_info self{};
    if (dladdr(reinterpret_cast<void*>(&OnFault), &self) && self.dli_fname) {
        (void)dlopen(self.dli_fname, RTLD_LAZY | RTLD_NOLOAD | RTLD_NODELETE);
    }
    for (int i = 0; i < 2; ++i) {
        if (sigaction(kSignals[i], nullptr, &previousActions[i]) != 0) continue;
        struct sigaction action = previousActions[i];  // Its mask, and how it wants to be called.
        action.sa_flags &= SA_NODEFER | SA_RESTART;
        action.sa_flags |= SA_SIGINFO | SA_ONSTACK;
        action.sa_sigaction = OnFault;
        (void)sigaction(kSignals[i], &action, nullptr);
    }
    return true;
}

}  // namespace

CopyOutcome GuardedCopy(void* to, const void* from, std::size_t size) noexcept {
    [[maybe_unused]] static const bool isSet = SetHandler();
    return static_cast<CopyOutcome>(qvd_guarded_copy(to, from, size));
}

}  // namespace platform
