#include "browser/class_factory.h"

#include "browser/server_state.h"
#include "platform/com_object.h"

namespace {

/// Does not keep the module loaded by itself: the module keeps it.
class ClassFactory final : public platform::ComObject<IClassFactory> {
public:
    explicit ClassFactory(ObjectMaker maker) noexcept : maker_(maker) {}

    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID id,
                                             void** object) noexcept override {
        if (!object) return E_POINTER;
        *object = nullptr;
        if (outer) return CLASS_E_NOAGGREGATION;
        return maker_(id, object);
    }

    HRESULT STDMETHODCALLTYPE LockServer(BOOL isLocked) noexcept override {
        isLocked ? LockModule() : UnlockModule();
        return S_OK;
    }

private:
    const ObjectMaker maker_;
};

}  // namespace

platform::ComPtr<IClassFactory> MakeClassFactory(ObjectMaker maker) noexcept {
    return platform::ComPtr<IClassFactory>(platform::MakeObject<ClassFactory>(maker).Get());
}
