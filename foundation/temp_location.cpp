#include "foundation/temp_location.h"

#include <algorithm>
#include <cstring>
#include <memory>

#include "foundation/allocated.h"
#include "foundation/paths.h"
#include "platform/files.h"
#include "platform/modules.h"
#include "platform/shell.h"
#include "platform/time.h"
#include "platform/token.h"

namespace AUX {
namespace {

constexpr DWORD kPathUnits = MAX_PATH;

bool ReadIsLow(HANDLE token) noexcept {
    constexpr SID_IDENTIFIER_AUTHORITY kLabels = SECURITY_MANDATORY_LABEL_AUTHORITY;
    DWORD size = 0;
    (void)GetTokenInformation(token, TokenIntegrityLevel, nullptr, 0, &size);  // Only measures.
    if (size < sizeof(TOKEN_MANDATORY_LABEL)) return false;
    const std::unique_ptr<void, FreeBlock> block(Alloc(size));
    if (!block || !GetTokenInformation(token, TokenIntegrityLevel, block.get(), size, &size)) {
        return false;
    }
    const PSID sid = static_cast<const TOKEN_MANDATORY_LABEL*>(block.get())->Label.Sid;
    if (std::memcmp(GetSidIdentifierAuthority(sid), &kLabels, sizeof kLabels) != 0) return false;
    return *GetSidSubAuthority(sid, 0) <= SECURITY_MANDATORY_LOW_RID;
}

bool FindIsLow() noexcept {
    platform::KernelHandle token;
    if (!OpenThreadToken(GetCurrentThread(), TOKEN_QUERY, TRUE, token.Put()) &&
        !OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, token.Put())) {
        return false;
    }
    return ReadIsLow(token.Get());
}

// The folder of a process at low integrity, by the call that older systems lack.
bool AppendKnownFolder(WString& output) noexcept {
    const platform::ModuleHandle shell(LoadLibraryW(TEXT("shell32.dll")));
    auto* const getFolder = shell ? platform::ProcedureOf<decltype(SHGetKnownFolderPath)>(
                                        shell.Get(), "SHGetKnownFolderPath")
                                  : nullptr;
    if (!getFolder) return true;
    WCHAR* folder = nullptr;
    const HRESULT result = getFolder(FOLDERID_LocalAppDataLow, 0, nullptr, &folder);
    const bool isGood =
        FAILED(result) || (output.Append(folder) && output.Append(TEXT("\\Temp\\")));
    CoTaskMemFree(folder);
    return isGood;
}

bool AppendOlderFolder(WString& output) noexcept {
    constexpr std::size_t kLimit = 249;
    WCHAR folder[kPathUnits] = {};
    if (FAILED(SHGetFolderPathW(nullptr, CSIDL_LOCAL_APPDATA, nullptr, 0, folder))) return true;
    if (WStringView(folder).size() >= kLimit) return true;
    return output.Append(folder) && output.Append(TEXT("\\Temp\\Low\\"));
}

bool EndInSeparator(WString& path) noexcept {
    if (path.IsEmpty() || path[path.Length() - 1] == TEXT('\\')) return true;
    return path.Append(TEXT("\\"));
}

bool FindTempFolder(WString& output) noexcept {
    if (IsLowIntegrityProcess()) {
        if (!AppendKnownFolder(output)) return false;
        return !output.IsEmpty() || AppendOlderFolder(output);
    }
    WCHAR folder[kPathUnits] = {};
    const DWORD length = GetTempPathW(kPathUnits, folder);
    if (length >= kPathUnits) return true;  // It did not fit, and nothing was written.
    return output.Append(folder, length) && EndInSeparator(output);
}

// Below 6,000,000: the time within the hour, in milliseconds as its digits are read.
std::uint32_t TimeSeed() noexcept {
    SYSTEMTIME time = {};
    GetSystemTime(&time);
    return (time.wMinute * 100u + time.wSecond) * 1000u + time.wMilliseconds;
}

bool FindFreeName(const WString& start, const WString& end, WString& output,
                  std::uint32_t& seed) noexcept {
    constexpr std::uint32_t kLastAttempt = 10000;
    for (std::uint32_t attempt = 0; attempt <= kLastAttempt; ++attempt, ++seed) {
        if (!output.Format(TEXT("%ls%x%ls"), start, seed, end)) return false;
        if (!PathExists(output.Text())) return true;
    }
    return false;
}

}  // namespace

bool IsLowIntegrityProcess() noexcept {
    static const bool isLow = FindIsLow();
    return isLow;
}

bool GetTempFolder(WString& output) noexcept {
    output.Clear();
    WString folder;  // So that a failure halfway leaves no half of a path.
    if (!FindTempFolder(folder) || folder.IsEmpty()) return false;
    output = std::move(folder);
    return true;
}

bool MakeUniqueFileName(WStringView folder, WStringView prefix, WStringView extension,
                        WString& output, WString* stem) noexcept {
    // The texts may be parts of the outputs: they are copied before those are cleared.
    WString start;
    WString end;
    WString name;
    const bool isBuilt = start.Append(folder) && start.Append(prefix) && end.Append(TEXT(".")) &&
                         end.Append(extension) && name.Append(prefix);
    output.Clear();
    if (stem) stem->Clear();
    std::uint32_t seed = TimeSeed();
    if (isBuilt && output.Reserve(kPathUnits) && FindFreeName(start, end, output, seed)) {
        if (!stem || stem->Format(TEXT("%ls%x"), name, seed)) return true;
    }
    output.Clear();
    return false;
}

Status MakeTempFileNameInFolder(WCHAR* buffer, const WCHAR* prefix, const WCHAR* folder) noexcept {
    if (!buffer) return kStatusInvalidArgument;
    constexpr std::size_t kPrefix = 3;
    WCHAR wholePrefix[kPrefix + 1] = {};
    const WStringView given = WStringView(prefix).substr(0, kPrefix);
    std::copy(given.begin(), given.end(), wholePrefix);
    std::copy_n(TEXT("tio"), kPrefix - given.size(), wholePrefix + given.size());
    WString place;
    if (folder && *folder) {
        if (!place.Append(folder) || !EndInSeparator(place)) return kStatusInsufficientMemory;
    } else if (!GetTempFolder(place)) {
        return kStatusFailedToInitialize;
    }
    if (GetTempFileNameW(place.Text(), wholePrefix, 0, buffer)) return kStatusOk;
    return StatusFromFailedCall(GetLastError());
}

}  // namespace AUX
