#include "platform/base.h"
#include "platform/guarded_copy.h"

extern "C" {
int qvd_guarded_copy(void* to, const void* from, std::size_t size) noexcept;
extern const char qvd_guarded_copy_step;
extern const char qvd_guarded_copy_end;
EXCEPTION_DISPOSITION qvd_guarded_copy_fault(EXCEPTION_RECORD* record, void* frame,
                                             CONTEXT* context, void* dispatcher) noexcept;
}

// The whole copy is one instruction: a fault of it, and of nothing else, has its address. The
// function's own entry of the exception table names the handler.
asm(R"(
    .text
    .p2align 4
    .globl qvd_guarded_copy
    .globl qvd_guarded_copy_step
    .globl qvd_guarded_copy_end
    .def qvd_guarded_copy; .scl 2; .type 32; .endef
    .seh_proc qvd_guarded_copy
qvd_guarded_copy:
    pushq %rsi
    .seh_pushreg %rsi
    pushq %rdi
    .seh_pushreg %rdi
    .seh_endprologue
    .seh_handler qvd_guarded_copy_fault, @except
    movq %rcx, %rdi
    movq %rdx, %rsi
    movq %r8, %rcx
    xorl %eax, %eax
qvd_guarded_copy_step:
    rep movsb
qvd_guarded_copy_end:
    popq %rdi
    popq %rsi
    ret
    .seh_endproc
)");

// Goes on behind the copy, with the outcome as its result.
[[gnu::used]] EXCEPTION_DISPOSITION qvd_guarded_copy_fault(EXCEPTION_RECORD* record, void*,
                                                           CONTEXT* context, void*) noexcept {
    const bool isFault = record->ExceptionCode == EXCEPTION_ACCESS_VIOLATION ||
                         record->ExceptionCode == EXCEPTION_IN_PAGE_ERROR;
    if (!isFault || context->Rip != reinterpret_cast<DWORD64>(&qvd_guarded_copy_step)) {
        return ExceptionContinueSearch;
    }
    const bool isWriting = record->ExceptionInformation[0] == 1;
    context->Rax = static_cast<DWORD64>(isWriting ? platform::CopyOutcome::TargetLost
                                                  : platform::CopyOutcome::SourceLost);
    context->Rip = reinterpret_cast<DWORD64>(&qvd_guarded_copy_end);
    return ExceptionContinueExecution;
}

namespace platform {

CopyOutcome GuardedCopy(void* to, const void* from, std::size_t size) noexcept {
    return static_cast<CopyOutcome>(qvd_guarded_copy(to, from, size));
}

}  // namespace platform
