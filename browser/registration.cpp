#include "browser/registration.h"

#include "browser/registry_tree.h"
#include "browser/server_state.h"
#include "browser/type_library.h"
#include "foundation/array.h"
#include "foundation/module_folder.h"
#include "platform/com_ptr.h"
#include "platform/locale.h"
#include "platform/messages.h"
#include "platform/modules.h"
#include "platform/registry.h"
#include "platform/resources.h"
#include "platform/scope_exit.h"
#include "resources/resource_ids.h"

namespace {

constexpr WCHAR kScriptType[] = TEXT("REGISTRY");
constexpr CATID kAppContainerCompatible = {
    0x59FB2056, 0xD625, 0x48D0, {0xA9, 0x44, 0x1A, 0x85, 0xB5, 0xAB, 0x26, 0x40}};

// Set by the installer before any work; nothing else runs meanwhile.
constinit ScriptScope scope = ScriptScope::Machine;

HRESULT LastResult() noexcept {
    const DWORD error = GetLastError();
    return error ? ResultOf(static_cast<LSTATUS>(error)) : E_FAIL;
}

// The module's path, for use between single quotes.
HRESULT QuotedModulePath(AUX::WString& quoted) noexcept {
    WCHAR path[MAX_PATH];
    const DWORD length = GetModuleFileNameW(ModuleInstance(), path, MAX_PATH);
    if (length == 0) return LastResult();
    if (length >= MAX_PATH) return ResultOf(ERROR_INSUFFICIENT_BUFFER);
    for (DWORD i = 0; i < length; ++i) {
        const bool isQuote = path[i] == TEXT('\'');
        if (!quoted.AppendRepeated(path[i], isQuote ? 2 : 1)) return E_OUTOFMEMORY;
    }
    return S_OK;
}

// The script as the module holds it, in the thread's narrow code page.
HRESULT LoadScript(UINT resourceId, AUX::WString& script) noexcept {
    WCHAR path[MAX_PATH];
    if (!GetModuleFileNameW(ModuleInstance(), path, MAX_PATH)) return LastResult();
    const platform::ModuleHandle module(LoadLibraryExW(path, nullptr, LOAD_LIBRARY_AS_DATAFILE));
    if (!module) return LastResult();
    const HRSRC resource = FindResourceW(module.Get(), MAKEINTRESOURCEW(resourceId), kScriptType);
    if (!resource) return LastResult();
    const auto* const bytes =
        static_cast<const char*>(LockResource(LoadResource(module.Get(), resource)));
    const INT size = static_cast<INT>(SizeofResource(module.Get(), resource));
    const INT units = MultiByteToWideChar(CP_THREAD_ACP, 0, bytes, size, nullptr, 0);
    if (units == 0) return LastResult();
    if (!script.SetLength(static_cast<std::uint32_t>(units))) return E_OUTOFMEMORY;
    return MultiByteToWideChar(CP_THREAD_ACP, 0, bytes, size, script.Data(), units) ? S_OK
                                                                                    : LastResult();
}

HRESULT RunApplicationScript(ScriptRunner::Mode mode) noexcept {
    const ScriptVariable extra[] = {{TEXT("APPID"), kApplicationIdText}};
    return RunScript(QVD_SCRIPT_APPLICATION, mode, extra);
}

HRESULT MakeCategories(platform::ComPtr<ICatRegister>& categories) noexcept {
    void* made = nullptr;
    const HRESULT result =
        CoCreateInstance(CLSID_StdComponentCategoriesMgr, nullptr, CLSCTX_INPROC_SERVER,
                         platform::InterfaceId<ICatRegister>(), &made);
    if (SUCCEEDED(result)) categories.Attach(static_cast<ICatRegister*>(made));
    return result;
}

HRESULT RegisterClass() noexcept {
    HRESULT result = RunScript(QVD_SCRIPT_CLASS, ScriptRunner::Mode::Register, {});
    platform::ComPtr<ICatRegister> categories;
    if (SUCCEEDED(result)) result = MakeCategories(categories);
    CATID category = kAppContainerCompatible;
    if (SUCCEEDED(result)) {
        result = categories->RegisterClassImplCategories(kAddinClassId, 1, &category);
    }
    return result;
}

// Deletes a key of the class that nothing is in any more; that it is not there is fine.
void DeleteIfEmpty(HKEY root, AUX::WStringView before, AUX::WStringView behind) noexcept {
    AUX::WString path;
    platform::RegistryKey key;
    DWORD subkeys = 0;
    DWORD values = 0;
    if (!path.Append(before) || !path.Append(kAddinClassText) || !path.Append(behind) ||
        RegOpenKeyExW(root, path.Text(), 0, KEY_READ, key.Put()) != ERROR_SUCCESS ||
        RegQueryInfoKeyW(key.Get(), nullptr, nullptr, nullptr, &subkeys, nullptr, nullptr, &values,
                         nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS ||
        subkeys > 0 || (behind.empty() && values > 0)) {
        return;
    }
    key.Reset();
    // What stays is an empty key.
    (void)DeleteRegistryKey(root, path.Text());
}

bool HasCategories() noexcept {
    AUX::WString path;
    platform::RegistryKey key;
    return !path.Append(TEXT("CLSID\\")) || !path.Append(kAddinClassText) ||
           !path.Append(TEXT("\\Implemented Categories")) ||
           RegOpenKeyExW(HKEY_CLASSES_ROOT, path.Text(), 0, KEY_READ, key.Put()) !=
               ERROR_FILE_NOT_FOUND;
}

HRESULT RemoveCategory() noexcept {
    // Managers differ in what they say of a class that is not there.
    if (!HasCategories()) return S_OK;
    platform::ComPtr<ICatRegister> categories;
    HRESULT result = MakeCategories(categories);
    CATID category = kAppContainerCompatible;
    if (SUCCEEDED(result)) {
        result = categories->UnRegisterClassImplCategories(kAddinClassId, 1, &category);
    }
    // Another category's key may be all there is.
    return result == ResultOf(ERROR_FILE_NOT_FOUND) ? S_OK : result;
}

HRESULT UnregisterClass() noexcept {
    const HRESULT result = RemoveCategory();
    if (FAILED(result)) return result;
    DeleteIfEmpty(HKEY_CLASSES_ROOT, TEXT("CLSID\\"), TEXT("\\Required Categories"));
    DeleteIfEmpty(HKEY_CLASSES_ROOT, TEXT("CLSID\\"), TEXT("\\Implemented Categories"));
    if (scope == ScriptScope::User) {
        // The manager of categories works on the machine's classes, where the class has no key.
        DeleteIfEmpty(HKEY_LOCAL_MACHINE, TEXT("Software\\Classes\\CLSID\\"), {});
    }
    return RunScript(QVD_SCRIPT_CLASS, ScriptRunner::Mode::Remove, {});
}

// Until its end the thread has the locale in which scripts are read.
class ScriptLocale {
public:
    ScriptLocale() noexcept : before_(GetThreadLocale()) { SetThreadLocale(LOCALE_SYSTEM_DEFAULT); }
    ~ScriptLocale() { SetThreadLocale(before_); }
    ScriptLocale(const ScriptLocale&) = delete;
    ScriptLocale& operator=(const ScriptLocale&) = delete;

private:
    const LCID before_;
};

}  // namespace

HRESULT RunScript(UINT resourceId, ScriptRunner::Mode mode,
                  std::span<const ScriptVariable> extra) noexcept {
    AUX::WString path;
    AUX::WString script;
    AUX::WString expanded;
    HRESULT result = QuotedModulePath(path);
    if (FAILED(result)) return result;
    AUX::Array<ScriptVariable> variables;
    bool isComplete = true;
    for (const ScriptVariable& variable : extra) isComplete &= variables.Add(variable);
    for (const ScriptVariable& variable :
         {ScriptVariable{TEXT("APPID"), kApplicationIdText}, ScriptVariable{TEXT("Module"), path},
          ScriptVariable{TEXT("Module_Raw"), path}}) {
        isComplete &= variables.Add(variable);
    }
    if (!isComplete) return E_OUTOFMEMORY;
    result = LoadScript(resourceId, script);
    if (SUCCEEDED(result)) {
        result = ExpandScript(script, {variables.Data(), variables.Count()}, scope, expanded);
    }
    return SUCCEEDED(result) ? ScriptRunner(expanded).Run(mode) : result;
}

HRESULT RegisterServer() noexcept {
    const ScriptLocale locale;
    HRESULT result = RunApplicationScript(ScriptRunner::Mode::Register);
    if (SUCCEEDED(result)) result = RegisterClass();
    if (SUCCEEDED(result)) result = RegisterAddinTypeLibrary(scope);
    return result;
}

HRESULT UnregisterServer() noexcept {
    const ScriptLocale locale;
    HRESULT result = UnregisterClass();
    if (SUCCEEDED(result)) result = UnregisterAddinTypeLibrary(scope);
    if (SUCCEEDED(result)) result = RunApplicationScript(ScriptRunner::Mode::Remove);
    return result;
}

HRESULT InstallServer(bool installs, const WCHAR* commandLine) noexcept {
    if (commandLine && IsSameWord(commandLine, TEXT("user"))) scope = ScriptScope::User;
    if (!installs) return UnregisterServer();
    const HRESULT result = RegisterServer();
    // The first failure is the one to tell.
    if (FAILED(result)) (void)UnregisterServer();
    return result;
}
