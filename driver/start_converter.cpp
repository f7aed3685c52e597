#include "driver/start_converter.h"

#include "driver/job_files.h"
#include "foundation/module_folder.h"
#include "platform/shell.h"

namespace {

constexpr WCHAR kConverterName[] = TEXT("PageRenderApp.x86.exe");

// The call's result is no handle but a number; up to this one it is an error.
constexpr UINT_PTR kLastLaunchError = 32;

}  // namespace

bool BuildConverterPath(AUX::WString& path) noexcept {
    if (path.Assign(ModuleFolder()) && path.Append(kConverterName)) return true;
    path.Clear();  // Without its folder the name could be another program's.
    return false;
}

bool StartConverter(HWND owner, const AUX::WString& converterPath, ConversionSettings& settings,
                    const ConversionJob& job) noexcept {
    AUX::WString arguments;
    settings.BuildCommandLine({}, {}, arguments);
    const auto result = reinterpret_cast<UINT_PTR>(
        ShellExecuteW(owner, nullptr, converterPath.Text(), arguments.Text(), nullptr, SW_SHOW));
    if (result > kLastLaunchError) return true;
    settings.DeleteStorageFile();
    RemoveJobFiles(job);
    return false;
}
