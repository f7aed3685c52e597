#include "host/load_module.h"

#include <cstdio>

#include "host/system.h"

namespace host {

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

std::string CodeText(HRESULT code) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%08X", static_cast<unsigned>(code));
    return text;
}

}  // namespace host
