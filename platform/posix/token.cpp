#include "platform/token.h"

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <new>

#include "platform/posix/faults.h"
#include "platform/posix/kernel_object.h"
#include "platform/posix/last_error.h"
#include "platform/testing.h"

namespace platform {
namespace {

constexpr DWORD kHighLevel = 0x3000;

// The level that a test has set; 0 is none.
constinit std::atomic<DWORD> setLevel{0};

class TokenObject : public KernelObject {
public:
    static constexpr KernelObjectKind kKind = KernelObjectKind::Token;
    TokenObject() noexcept : KernelObject(kKind) {}

private:
    ~TokenObject() override = default;
};

/// The security identifier of an integrity level.
struct LevelSid {
    BYTE revision = 1;
    BYTE count = 1;
    SID_IDENTIFIER_AUTHORITY authority = {SECURITY_MANDATORY_LABEL_AUTHORITY};
    DWORD level;
};

struct LabelBlock {
    TOKEN_MANDATORY_LABEL label;
    LevelSid sid;
};

DWORD IntegrityLevel() noexcept {
    if (const DWORD level = setLevel) return level;
    const char* text = std::getenv("QUVADA_INTEGRITY");
    if (!text || !*text) return SECURITY_MANDATORY_MEDIUM_RID;
    if (std::strcmp(text, "low") == 0) return SECURITY_MANDATORY_LOW_RID;
    if (std::strcmp(text, "medium") == 0) return SECURITY_MANDATORY_MEDIUM_RID;
    if (std::strcmp(text, "high") == 0) return kHighLevel;
    return static_cast<DWORD>(std::strtoul(text, nullptr, 0));
}

}  // namespace

namespace testing {

void SetIntegrityLevel(DWORD level) { setLevel = level; }

}  // namespace testing
}  // namespace platform

HANDLE GetCurrentProcess() noexcept { return reinterpret_cast<HANDLE>(INT_PTR{-1}); }
HANDLE GetCurrentThread() noexcept { return reinterpret_cast<HANDLE>(INT_PTR{-2}); }

BOOL OpenThreadToken(HANDLE, DWORD, BOOL, HANDLE* token) noexcept {
    *token = nullptr;
    return platform::Fail(ERROR_NO_TOKEN);
}

BOOL OpenProcessToken(HANDLE process, DWORD, HANDLE* token) noexcept {
    using namespace platform;
    *token = nullptr;
    if (process != GetCurrentProcess()) return Fail(ERROR_INVALID_HANDLE);
    if (InjectFault("OpenProcessToken")) return FALSE;
    *token = OpenHandle(new (std::nothrow) TokenObject);
    return *token != nullptr;
}

BOOL GetTokenInformation(HANDLE handle, TOKEN_INFORMATION_CLASS kind, LPVOID information,
                         DWORD bytes, LPDWORD needed) noexcept {
    using namespace platform;
    *needed = 0;
    if (!FindObject<TokenObject>(handle) || InjectFault("GetTokenInformation")) return FALSE;
    if (kind != TokenIntegrityLevel) return Fail(ERROR_INVALID_PARAMETER);
    *needed = sizeof(LabelBlock);
    if (bytes < sizeof(LabelBlock)) return Fail(ERROR_INSUFFICIENT_BUFFER);
    auto* block = new (information) LabelBlock{{{nullptr, 0}}, {.level = IntegrityLevel()}};
    block->label.Label.Sid = &block->sid;
    return TRUE;
}

PSID_IDENTIFIER_AUTHORITY GetSidIdentifierAuthority(PSID sid) noexcept {
    return &static_cast<platform::LevelSid*>(sid)->authority;
}

LPDWORD GetSidSubAuthority(PSID sid, DWORD) noexcept {
    return &static_cast<platform::LevelSid*>(sid)->level;
}
