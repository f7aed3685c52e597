#include "platform/modules.h"

#include <gtest/gtest.h>
#include <vector>

#include "platform/com.h"
#include "platform/shell.h"
#include "platform/testing.h"
#include "tests/support/test_profile.h"

namespace platform {
namespace {

using test_support::TestProfile;

const WideString kModules = FromUtf8(TEST_MODULES "\\");

WideString PathOf(HMODULE module) {
    std::vector<WCHAR> buffer(1024);
    const DWORD length = GetModuleFileNameW(module, buffer.data(), 1024);
    return WideString(buffer.data(), length);
}

TEST(Modules, AreToldOfTheirStartAndEndOnce) {
    int detached = 0;
    HMODULE first = LoadLibraryW((kModules + TEXT("probe.dll")).c_str());
    ASSERT_TRUE(first) << GetLastError();
    EXPECT_EQ(ProcedureOf<HINSTANCE()>(first, "ProbeInstance")(), first);
    for (const char* name : {"NoSuchExport", "strlen", "probeinstance"}) {
        EXPECT_EQ(GetProcAddress(first, name), nullptr) << name;
        EXPECT_EQ(GetLastError(), ERROR_PROC_NOT_FOUND);
    }
    ProcedureOf<void(int*)>(first, "ProbeCountDetach")(&detached);
    {
        const ModuleHandle byName(LoadLibraryW(TEXT("PROBE")));
        EXPECT_EQ(byName.Get(), first) << "a base name finds what is loaded";
        const ModuleHandle byPath(LoadLibraryW((kModules + TEXT("probe.dll")).c_str()));
        EXPECT_EQ(byPath.Get(), first);
        EXPECT_EQ(ProcedureOf<int()>(first, "ProbeAttached")(), 1);
        EXPECT_EQ(GetModuleHandleW(TEXT("probe.dll")), first);
        EXPECT_TRUE(PathOf(first).ends_with(TEXT("\\probe.dll"))) << ToUtf8(PathOf(first));
    }
    EXPECT_EQ(detached, 0);
    EXPECT_TRUE(FreeLibrary(first));
    EXPECT_EQ(detached, 1);
    EXPECT_EQ(GetModuleHandleW(TEXT("probe.dll")), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_MOD_NOT_FOUND);
}

TEST(Modules, TellWhyTheyDoNotLoad) {
    const TestProfile profile;
    ASSERT_TRUE(test_support::WriteWholeFile(profile.Path(TEXT("text.dll")), "no module"));
    const std::pair<WideString, DWORD> kCases[] = {
        {TEXT("no-such-module.dll"), ERROR_MOD_NOT_FOUND},
        {profile.Path(TEXT("none.dll")), ERROR_MOD_NOT_FOUND},
        {profile.Path(TEXT("text.dll")), ERROR_BAD_EXE_FORMAT},
    };
    for (const auto& [name, error] : kCases) {
        EXPECT_EQ(LoadLibraryW(name.c_str()), nullptr) << ToUtf8(name);
        EXPECT_EQ(GetLastError(), error);
    }
    testing::SetEnvironment("QUVADA_TEST_REFUSE", "1");
    EXPECT_EQ(LoadLibraryW((kModules + TEXT("probe.dll")).c_str()), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_DLL_INIT_FAILED);
    testing::SetEnvironment("QUVADA_TEST_REFUSE", nullptr);
    EXPECT_EQ(GetModuleHandleW(TEXT("probe.dll")), nullptr) << "it went again";
    const ModuleHandle now(LoadLibraryW((kModules + TEXT("probe.dll")).c_str()));
    EXPECT_TRUE(now);
}

TEST(Modules, ABrowserModuleThatIsLoadedAnswersToItsBaseName) {
    const ModuleHandle loaded(LoadLibraryW((kModules + TEXT("ieframe.dll")).c_str()));
    ASSERT_TRUE(loaded);
    const ModuleHandle byName(LoadLibraryW(TEXT("ieframe.dll")));
    ASSERT_EQ(byName.Get(), loaded.Get());
    auto* ask = ProcedureOf<HRESULT WINAPI(BOOL*)>(byName.Get(), "IEIsProtectedModeProcess");
    ASSERT_TRUE(ask);
    struct Case {
        const char* set;
        HRESULT result;
        BOOL flag;
    };
    const Case kCases[] = {{"1", S_OK, TRUE},
                           {"0", S_OK, FALSE},
                           {"fail:80070005", E_ACCESSDENIED, 7},
                           {nullptr, E_NOTIMPL, 7}};
    for (const Case& c : kCases) {
        SCOPED_TRACE(c.set ? c.set : "unset");
        testing::SetEnvironment("QUVADA_TEST_PROTECTED", c.set);
        BOOL flag = 7;
        EXPECT_EQ(ask(&flag), c.result);
        EXPECT_EQ(flag, c.flag);
    }
}

TEST(Modules, GiveTheirPathCutToTheBuffer) {
    const WideString whole = PathOf(nullptr);
    ASSERT_GT(whole.size(), 4u);
    EXPECT_TRUE(test_support::Exists(whole)) << ToUtf8(whole);
    const auto length = static_cast<DWORD>(whole.size());
    std::vector<WCHAR> buffer(whole.size() + 1, 'x');
    EXPECT_EQ(GetModuleFileNameW(nullptr, buffer.data(), length + 1), length);
    EXPECT_EQ(GetModuleFileNameW(nullptr, buffer.data(), length), length);
    EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
    if (test_support::RunsUnderWine()) return;  // It leaves the terminator out.
    EXPECT_TRUE(WideString(buffer.data()) == whole.substr(0, length - 1));
    EXPECT_EQ(GetModuleFileNameW(nullptr, buffer.data(), 1), 1u);
    EXPECT_EQ(buffer[0], 0);
}

TEST(KnownFolders, AreFoundByNameInTheShell) {
    const TestProfile profile;
    const ModuleHandle shell(LoadLibraryW(TEXT("shell32.dll")));
    ASSERT_TRUE(shell);
    auto* find = ProcedureOf<HRESULT WINAPI(REFKNOWNFOLDERID, DWORD, HANDLE, LPWSTR*)>(
        shell.Get(), "SHGetKnownFolderPath");
    ASSERT_TRUE(find);
    LPWSTR path = nullptr;
    ASSERT_EQ(find(FOLDERID_LocalAppDataLow, 0, nullptr, &path), S_OK);
    EXPECT_TRUE(WideView(path).ends_with(TEXT("LocalLow"))) << ToUtf8(path);
    EXPECT_TRUE(PathFileExistsW(path));
    CoTaskMemFree(path);
    WCHAR local[MAX_PATH];
    ASSERT_EQ(SHGetFolderPathW(nullptr, CSIDL_LOCAL_APPDATA, nullptr, 0, local), S_OK);
    EXPECT_TRUE(PathFileExistsW(local)) << ToUtf8(local);
    const GUID kUnknown{1, 2, 3, {4}};
    EXPECT_TRUE(FAILED(find(kUnknown, 0, nullptr, &path)));
    EXPECT_EQ(path, nullptr);
}

}  // namespace
}  // namespace platform
