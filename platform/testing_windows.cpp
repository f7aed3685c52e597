#include <cstdlib>
#include <string>

#include "platform/handles.h"
#include "platform/testing.h"

// clang-format off: this header of the system wants the base types before it.
#include <tlhelp32.h>
// clang-format on

namespace platform::testing {
namespace {

struct KeyTraits {
    using Value = HKEY;
    static Value Invalid() noexcept { return nullptr; }
    static void Close(Value value) noexcept { RegCloseKey(value); }
};
using Key = UniqueHandle<KeyTraits>;

constexpr const char* kTempVariables[] = {"TMP", "TEMP"};

struct Entered {
    Key realUser;  // the user's own root, opened before it is replaced
    WideString keyPath;
    std::string temp[2];  // what the variables were
};
Entered entered;

std::string VariableOf(const char* name) {
    const char* value = std::getenv(name);
    return value ? value : "";
}

/// Whether the system itself lives in the process: the desktop's own programs are started by
/// whoever comes first and never end.
bool IsPartOfTheSystem(HANDLE process) {
    WCHAR folder[MAX_PATH];
    WCHAR image[MAX_PATH];
    DWORD size = MAX_PATH;
    const UINT length = GetWindowsDirectoryW(folder, MAX_PATH);
    if (!QueryFullProcessImageNameW(process, 0, image, &size) || size < length) return false;
    return CompareStringOrdinal(image, static_cast<int>(length), folder, static_cast<int>(length),
                                TRUE) == CSTR_EQUAL;
}

bool IsRunning(HANDLE process) {
    return process && WaitForSingleObject(process, 0) == WAIT_TIMEOUT;
}

/// A running program that this process started; the newest of several.
KernelHandle FindChild() {
    KernelHandle child;
    const FileHandle snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
    PROCESSENTRY32W entry{};
    entry.dwSize = sizeof entry;
    for (BOOL more = Process32FirstW(snapshot.Get(), &entry); more;
         more = Process32NextW(snapshot.Get(), &entry)) {
        if (entry.th32ParentProcessID != GetCurrentProcessId()) continue;
        constexpr DWORD kAccess = SYNCHRONIZE | PROCESS_QUERY_LIMITED_INFORMATION;
        KernelHandle process(OpenProcess(kAccess, FALSE, entry.th32ProcessID));
        if (IsRunning(process.Get()) && !IsPartOfTheSystem(process.Get()))
            child = std::move(process);
    }
    return child;
}

}  // namespace

// The operating system is not ours: nothing to make fail, to hold or to set.
struct InjectedFault::State {};
InjectedFault::InjectedFault(const char*, unsigned, DWORD, unsigned) {}
InjectedFault::~InjectedFault() = default;
unsigned InjectedFault::Times() const { return 0; }
HeldClock::HeldClock(const SYSTEMTIME&) {}
HeldClock::~HeldClock() = default;
void SetIntegrityLevel(DWORD) {}

void SetStartTitle(const WideString&) {}
void ResetProfile() {}

Programs WaitForStartedPrograms(DWORD timeoutMs, DWORD* exitCode) {
    const ULONGLONG end = GetTickCount64() + timeoutMs;
    while (const KernelHandle child = FindChild()) {
        const ULONGLONG now = GetTickCount64();
        const DWORD left = now < end ? static_cast<DWORD>(end - now) : 0;
        if (WaitForSingleObject(child.Get(), left) != WAIT_OBJECT_0) return Programs::StillRunning;
        if (exitCode) GetExitCodeProcess(child.Get(), exitCode);
    }
    return Programs::Ended;
}

unsigned CountStartedPrograms() {
    // A job counts what its processes start, also what has ended long since. It ends with them.
    static const KernelHandle job = [] {
        KernelHandle made(CreateJobObjectW(nullptr, nullptr));
        AssignProcessToJobObject(made.Get(), GetCurrentProcess());
        return made;
    }();
    JOBOBJECT_BASIC_ACCOUNTING_INFORMATION counts{};
    QueryInformationJobObject(job.Get(), JobObjectBasicAccountingInformation, &counts,
                              sizeof counts, nullptr);
    return counts.TotalProcesses;
}

void SetEnvironment(const char* name, const char* value) {
    // By way of the run-time, which keeps a copy of its own and tells the system.
    _putenv_s(name, value ? value : "");
}

void EnterProfile(const WideString& folder) {
    const WideString temp = WideString(folder).append(TEXT("temp"));
    CreateDirectoryW(temp.c_str(), nullptr);
    for (std::size_t i = 0; i < std::size(kTempVariables); ++i) {
        entered.temp[i] = VariableOf(kTempVariables[i]);
        SetEnvironment(kTempVariables[i], ToUtf8(temp).c_str());
    }
    entered.keyPath = TEXT("Software\\QuvadaTests\\");
    entered.keyPath += FromUtf8(std::to_string(GetCurrentProcessId()));
    RegOpenKeyExW(HKEY_CURRENT_USER, nullptr, 0, KEY_ALL_ACCESS, entered.realUser.Put());
    RegDeleteTreeW(entered.realUser.Get(), entered.keyPath.c_str());
    Key own;
    RegCreateKeyExW(entered.realUser.Get(), entered.keyPath.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS,
                    nullptr, own.Put(), nullptr);
    RegOverridePredefKey(HKEY_CURRENT_USER, own.Get());
}

void LeaveProfile() {
    RegOverridePredefKey(HKEY_CURRENT_USER, nullptr);
    RegDeleteTreeW(entered.realUser.Get(), entered.keyPath.c_str());
    entered.realUser.Reset();
    for (std::size_t i = 0; i < std::size(kTempVariables); ++i) {
        SetEnvironment(kTempVariables[i], entered.temp[i].c_str());
    }
}

}  // namespace platform::testing
