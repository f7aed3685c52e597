#include "platform/posix/component_categories.h"

#include "platform/com_library.h"
#include "platform/com_object.h"
#include "platform/registry.h"
#include "platform/text.h"

namespace platform {
namespace {

constexpr HRESULT ResultOf(LSTATUS error) noexcept {
    return error == ERROR_SUCCESS ? S_OK : static_cast<HRESULT>(0x80070000 | error);
}

WideString TextOf(REFGUID id) {
    WCHAR text[39];
    return {text, static_cast<std::size_t>(StringFromGUID2(id, text, 39) - 1)};
}

/// Works on HKEY_CLASSES_ROOT\CLSID\{class}\Implemented Categories\{category}.
class ComponentCategories final : public ComObject<ICatRegister> {
public:
    HRESULT STDMETHODCALLTYPE RegisterClassImplCategories(REFCLSID classId, ULONG count,
                                                          CATID* categories) noexcept override {
        if (count && !categories) return E_INVALIDARG;
        for (ULONG i = 0; i < count; ++i) {
            RegistryKey key;
            const LSTATUS status = RegCreateKeyExW(
                HKEY_CLASSES_ROOT, PathOf(classId, categories[i]).c_str(), 0, nullptr,
                REG_OPTION_NON_VOLATILE, KEY_WRITE, nullptr, key.Put(), nullptr);
            if (status != ERROR_SUCCESS) return ResultOf(status);
        }
        return S_OK;
    }

    HRESULT STDMETHODCALLTYPE UnRegisterClassImplCategories(REFCLSID classId, ULONG count,
                                                            CATID* categories) noexcept override {
        if (count && !categories) return E_INVALIDARG;
        for (ULONG i = 0; i < count; ++i) {
            const LSTATUS status =
                RegDeleteKeyW(HKEY_CLASSES_ROOT, PathOf(classId, categories[i]).c_str());
            if (status != ERROR_SUCCESS && status != ERROR_FILE_NOT_FOUND) return ResultOf(status);
        }
        return S_OK;
    }

private:
    static WideString PathOf(REFCLSID classId, REFGUID category) {
        return TEXT("CLSID\\") + TextOf(classId) + TEXT("\\Implemented Categories\\") +
               TextOf(category);
    }
};

}  // namespace

HRESULT MakeComponentCategories(REFIID id, void** object) noexcept {
    const ComPtr<ComponentCategories> made = MakeObject<ComponentCategories>();
    return made ? made->QueryInterface(id, object) : E_OUTOFMEMORY;
}

}  // namespace platform
