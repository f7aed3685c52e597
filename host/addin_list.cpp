#include "host/addin_list.h"

#include "browser/addin_class.h"
#include "host/load_module.h"
#include "host/system.h"
#include "platform/registry.h"
#include "platform/shell.h"
#include "platform/text.h"

namespace host {
namespace {

using platform::RegistryKey;
using platform::WideString;

constexpr WCHAR kHelpers[] =
    TEXT("SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Browser Helper Objects");
constexpr WCHAR kToolbars[] = TEXT("SOFTWARE\\Microsoft\\Internet Explorer\\Toolbar");
constexpr DWORD kClassTextSize = 39;  // With braces and terminator.

using ClassSource = HRESULT STDMETHODCALLTYPE(REFCLSID, REFIID, void**);

WideString ClassText(REFCLSID classId) {
    LPOLESTR text = nullptr;
    if (FAILED(StringFromCLSID(classId, &text))) return {};
    WideString copy(text);
    CoTaskMemFree(text);
    return copy;
}

}  // namespace

bool AddinList::TakeModule(const std::filesystem::path& path, std::string& error) {
    if (!LoadModule(path, "the add-in", module_, error)) return false;
    modulePath_ = PathToUtf8(path);
    if (platform::ProcedureOf<ClassSource>(module_.Get(), "DllGetClassObject")) return true;
    error = modulePath_ + " is no add-in";
    return false;
}

std::vector<CLSID> AddinList::Helpers() const {
    if (module_) return {kAddinClassId};
    std::vector<CLSID> found;
    RegistryKey list;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, kHelpers, 0, KEY_READ, list.Put()) != ERROR_SUCCESS) {
        return found;
    }
    for (DWORD index = 0;; ++index) {
        WCHAR name[kClassTextSize];
        DWORD length = kClassTextSize;
        const LSTATUS status =
            RegEnumKeyExW(list.Get(), index, name, &length, nullptr, nullptr, nullptr, nullptr);
        CLSID classId = {};
        if (status == ERROR_SUCCESS && SUCCEEDED(CLSIDFromString(name, &classId))) {
            found.push_back(classId);
        } else if (status != ERROR_SUCCESS && status != ERROR_MORE_DATA) {
            return found;  // A name that is too long is no class.
        }
    }
}

bool AddinList::OffersToolbar(REFCLSID classId) const {
    if (module_) return true;
    RegistryKey list;
    return RegOpenKeyExW(HKEY_LOCAL_MACHINE, kToolbars, 0, KEY_READ, list.Put()) == ERROR_SUCCESS &&
           RegQueryValueExW(list.Get(), ClassText(classId).c_str(), nullptr, nullptr, nullptr,
                            nullptr) == ERROR_SUCCESS;
}

HRESULT AddinList::Make(REFCLSID classId, REFIID id, void** object) const {
    *object = nullptr;
    if (!module_) return CoCreateInstance(classId, nullptr, CLSCTX_INPROC_SERVER, id, object);
    const auto source = platform::ProcedureOf<ClassSource>(module_.Get(), "DllGetClassObject");
    void* made = nullptr;
    const HRESULT result = source(classId, platform::InterfaceId<IClassFactory>(), &made);
    if (FAILED(result)) return result;
    platform::ComPtr<IClassFactory> factory;
    factory.Attach(static_cast<IClassFactory*>(made));
    return factory->CreateInstance(nullptr, id, object);
}

std::string AddinList::ServerOf(REFCLSID classId) const {
    if (module_) return modulePath_;
    RegistryKey key;
    const WideString path = TEXT("CLSID\\") + ClassText(classId) + TEXT("\\InprocServer32");
    if (RegOpenKeyExW(HKEY_CLASSES_ROOT, path.c_str(), 0, KEY_READ, key.Put()) != ERROR_SUCCESS) {
        return {};
    }
    WCHAR server[MAX_PATH] = {};
    DWORD size = sizeof server - sizeof *server;
    RegQueryValueExW(key.Get(), nullptr, nullptr, nullptr, reinterpret_cast<BYTE*>(server), &size);
    return platform::ToUtf8(server);
}

}  // namespace host
