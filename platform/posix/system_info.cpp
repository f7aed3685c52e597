#include <sys/syscall.h>
#include <thread>
#include <unistd.h>

#include "platform/posix/last_error.h"
#include "platform/security.h"
#include "platform/system.h"
#include "platform/testing.h"

namespace {

platform::WideString startTitle;

}  // namespace

DWORD GetCurrentProcessId() noexcept { return static_cast<DWORD>(getpid()); }
DWORD GetCurrentThreadId() noexcept { return static_cast<DWORD>(syscall(SYS_gettid)); }

BOOL GetVersionExA(OSVERSIONINFOA* version) noexcept {
    const DWORD size = version->dwOSVersionInfoSize;
    if (size < sizeof(OSVERSIONINFOA)) return platform::Fail(ERROR_INSUFFICIENT_BUFFER);
    *version = {size, 10, 0, 19045, VER_PLATFORM_WIN32_NT, {}};
    return TRUE;
}

void GetStartupInfoW(STARTUPINFOW* info) noexcept {
    *info = {sizeof(STARTUPINFOW), startTitle.empty() ? nullptr : startTitle.data()};
}

void platform::testing::SetStartTitle(const WideString& title) { startTitle = title; }

void GetSystemInfo(SYSTEM_INFO* info) noexcept {
    constexpr DWORD kGranularity = 0x10000;  // of VirtualAlloc
    *info = {PROCESSOR_ARCHITECTURE_AMD64, static_cast<DWORD>(sysconf(_SC_PAGESIZE)),
             std::thread::hardware_concurrency(), kGranularity};
}

BOOL InitializeSecurityDescriptor(PSECURITY_DESCRIPTOR descriptor, DWORD revision) noexcept {
    if (!descriptor || revision != SECURITY_DESCRIPTOR_REVISION) {
        return platform::Fail(ERROR_INVALID_PARAMETER);
    }
    static_cast<SECURITY_DESCRIPTOR*>(descriptor)->Revision = static_cast<BYTE>(revision);
    return TRUE;
}

BOOL SetSecurityDescriptorDacl(PSECURITY_DESCRIPTOR descriptor, BOOL, ACL*, BOOL) noexcept {
    return descriptor ? TRUE : platform::Fail(ERROR_INVALID_PARAMETER);
}
