#include "tests/support/test_profile.h"

#include <algorithm>

#include "platform/files.h"
#include "platform/modules.h"
#include "platform/shell.h"
#include "platform/testing.h"

namespace test_support {
namespace {

using platform::FileHandle;
using platform::WideString;

WideString CurrentTempFolder() {
    WCHAR buffer[MAX_PATH + 1];
    return WideString(buffer, GetTempPathW(MAX_PATH + 1, buffer));
}

/// Makes a folder that no other test has.
WideString MakeFreshFolder() {
    WCHAR name[MAX_PATH];
    const WideString temp = CurrentTempFolder();
    if (GetTempFileNameW(temp.c_str(), TEXT("qvt"), 0, name) == 0) return {};
    DeleteFileW(name);
    if (!CreateDirectoryW(name, nullptr)) return {};
    return WideString(name) + TEXT("\\");
}

}  // namespace

TestProfile::TestProfile() : folder_(MakeFreshFolder()) {
    platform::testing::EnterProfile(folder_);
}

TestProfile::~TestProfile() {
    platform::testing::LeaveProfile();
    if (!folder_.empty()) RemoveTree(folder_);
}

WideString TestProfile::TempFolder() const { return CurrentTempFolder(); }

WideString TestProfile::Path(platform::WideView name) const {
    return WideString(folder_).append(name);
}

std::filesystem::path LocalPath(WideString path) {
    if (platform::testing::kOwnsTheSystem) {
        path.erase(0, 2);  // The drive; the profile lies on Z:.
        std::replace(path.begin(), path.end(), TEXT('\\'), TEXT('/'));
    }
    return path;
}

bool WriteWholeFile(const WideString& path, const std::string& content) {
    const FileHandle file(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                      FILE_ATTRIBUTE_NORMAL, nullptr));
    DWORD written = 0;
    const auto bytes = static_cast<DWORD>(content.size());
    return file && WriteFile(file.Get(), content.data(), bytes, &written, nullptr) &&
           written == bytes;
}

std::string ReadWholeFile(const WideString& path) {
    const FileHandle file(CreateFileW(path.c_str(), GENERIC_READ,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                      nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    LARGE_INTEGER size{};
    if (!file || !GetFileSizeEx(file.Get(), &size)) return {};
    std::string content(static_cast<std::size_t>(size.QuadPart), '\0');
    DWORD read = 0;
    ReadFile(file.Get(), content.data(), static_cast<DWORD>(content.size()), &read, nullptr);
    content.resize(read);
    return content;
}

bool Exists(const WideString& path) { return PathFileExistsW(path.c_str()) != FALSE; }

std::vector<WideString> ListFolder(const WideString& folder) {
    std::vector<WideString> names;
    WIN32_FIND_DATAW found{};
    const platform::FindHandle search(
        FindFirstFileW(WideString(folder).append(TEXT("*")).c_str(), &found));
    if (!search) return names;
    do {
        const WideString name = found.cFileName;
        if (name != TEXT(".") && name != TEXT("..")) names.push_back(name);
    } while (FindNextFileW(search.Get(), &found));
    std::sort(names.begin(), names.end());
    return names;
}

void RemoveTree(const WideString& folder) {
    for (const WideString& name : ListFolder(folder)) {
        const WideString path = WideString(folder).append(name);
        const DWORD attributes = GetFileAttributesW(path.c_str());
        const bool isFolder = (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
        const bool isLink = (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
        if (isFolder && !isLink) {
            RemoveTree(path + TEXT("\\"));
        } else if (isFolder) {
            RemoveDirectoryW(path.c_str());
        } else {
            SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
            DeleteFileW(path.c_str());
        }
    }
    RemoveDirectoryW(WideString(folder).substr(0, folder.size() - 1).c_str());
}

bool RunsUnderWine() {
    const HMODULE ntdll = GetModuleHandleW(TEXT("ntdll.dll"));
    return ntdll && GetProcAddress(ntdll, "wine_get_version");
}

}  // namespace test_support
