#include "host/installation.h"

#include "host/load_module.h"
#include "host/system.h"
#include "platform/com_library.h"
#include "platform/scope_exit.h"

namespace host {
namespace {

using Export = HRESULT STDMETHODCALLTYPE();
using InstallExport = HRESULT STDMETHODCALLTYPE(BOOL, LPCWSTR);

bool Call(bool installs, Scope scope, std::string& error) {
    platform::ModuleHandle module;
    if (!LoadModule(ProgramFolder() / "QVDIEaddin.x64.dll", "the add-in", module, error)) {
        return false;
    }
    if (FAILED(CoInitialize(nullptr))) {
        error = "COM cannot be used";
        return false;
    }
    const platform::ScopeExit ended([]() noexcept { CoUninitialize(); });
    HRESULT result = E_FAIL;
    if (scope == Scope::User) {
        auto* const install = platform::ProcedureOf<InstallExport>(module.Get(), "DllInstall");
        if (install) result = install(installs ? TRUE : FALSE, TEXT("user"));
    } else {
        auto* const install = platform::ProcedureOf<Export>(
            module.Get(), installs ? "DllRegisterServer" : "DllUnregisterServer");
        if (install) result = install();
    }
    if (SUCCEEDED(result)) return true;
    error = std::string("the add-in cannot be ") + (installs ? "registered: " : "unregistered: ") +
            CodeText(result);
    return false;
}

}  // namespace

bool RegisterAddin(Scope scope, std::string& error) { return Call(true, scope, error); }
bool UnregisterAddin(Scope scope, std::string& error) { return Call(false, scope, error); }

}  // namespace host
