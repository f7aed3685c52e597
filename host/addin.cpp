#include "host/addin.h"

#include <cstdio>
#include <type_traits>

#include "host/system.h"

namespace host {
namespace {

/// By its whole path, since a bare name would be looked up in other folders too.
bool LoadModule(const std::filesystem::path& path, const char* what, platform::ModuleHandle& module,
                std::string& error) {
    const std::string name = PathToUtf8(path);
    std::error_code code;
    if (!std::filesystem::exists(path, code)) {
        error = std::string(what) + " is missing: there is no " + name;
        return false;
    }
    module.Reset(LoadLibraryW(PlatformPath(path).c_str()));
    if (module) return true;
    error = std::string(what) + " cannot be loaded: " + name + " (error " +
            std::to_string(GetLastError()) + ")";
    return false;
}

}  // namespace

bool Addin::Load(const std::filesystem::path& folder, std::string& error) {
    const std::filesystem::path path = folder / "QVDIEaddin.x64.dll";
    if (!LoadModule(path, "the add-in", module_, error)) return false;
    createBand_ = platform::ProcedureOf<std::remove_pointer_t<QvdCreateBandFunction>>(
        module_.Get(), "QvdCreateBand");
    if (createBand_) return true;
    error = PathToUtf8(path) + " is no add-in that this program can drive";
    return false;
}

bool Addin::MakeBand(IWebBrowser2* browser, HWND window, platform::ComPtr<IAddinBand>& band,
                     std::string& error) const {
    const HRESULT result = createBand_(browser, window, band.Put());
    if (SUCCEEDED(result) && band) return true;
    char code[16];
    std::snprintf(code, sizeof code, "0x%08X", static_cast<unsigned>(result));
    error = std::string("the add-in cannot make its band: ") + code;
    return false;
}

bool LoadProtectedMode(const std::filesystem::path& folder, platform::ModuleHandle& module,
                       std::string& error) {
    return LoadModule(folder / "ieframe.dll", "the browser's module", module, error);
}

}  // namespace host
