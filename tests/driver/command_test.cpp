#include "tests/driver/command_test.h"

#include "driver/module_folder.h"
#include "driver/protected_mode.h"
#include "platform/memory.h"

namespace driver_test {

using platform::WideString;

std::string ReadShared(std::size_t bytes) {
    const platform::MappingHandle mapping(
        OpenFileMappingW(FILE_MAP_READ, FALSE, TEXT("QVD:IEP:HTMLData")));
    if (!mapping) return {};
    const platform::MappedView view(MapViewOfFile(mapping.Get(), FILE_MAP_READ, 0, 0, bytes));
    if (!view) return {};
    return {static_cast<const char*>(view.Get()), bytes};
}

void SetProtectedAnswer(const char* answer) {
    platform::testing::SetEnvironment("QUVADA_TEST_PROTECTED", answer);
}

void SetFreshProtectedAnswer(const char* answer) {
    ForgetProtectedModeAnswer();
    SetProtectedAnswer(answer);
}

void CommandTest::SetUp() {
    WCHAR path[MAX_PATH];
    WideString folder(path, GetModuleFileNameW(nullptr, path, MAX_PATH));
    folder.resize(folder.rfind(TEXT('\\')));  // bin
    folder.resize(folder.rfind(TEXT('\\')) + 1);
    const WideString standIn = folder + TEXT("test_modules\\ieframe.dll");
    browserModule_ = platform::ModuleHandle(LoadLibraryW(standIn.c_str()));
    ASSERT_TRUE(browserModule_) << "the stand-in for ieframe.dll is not there";
    SetFreshProtectedAnswer("0");
    // Any module will do as the add-in's own.
    const WideString addin = profile_.Path(TEXT("addin.dll"));
    ASSERT_TRUE(test_support::WriteWholeFile(addin, test_support::ReadWholeFile(standIn)));
    addin_ = platform::ModuleHandle(LoadLibraryW(addin.c_str()));
    ASSERT_TRUE(addin_ && AttachModule(addin_.Get()));
    ASSERT_TRUE(test_support::WriteWholeFile(converter_, "no program"));
}

void CommandTest::TearDown() {
    DetachModule();
    SetFreshProtectedAnswer(nullptr);
}

}  // namespace driver_test
