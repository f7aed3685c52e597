// What browsers and installers call in the module.

#include "browser/registration.h"
#include "browser/server_state.h"

extern "C" {

QVD_EXPORT HRESULT STDMETHODCALLTYPE DllCanUnloadNow() { return IsModuleLocked() ? S_FALSE : S_OK; }

QVD_EXPORT HRESULT STDMETHODCALLTYPE DllGetClassObject(REFCLSID classId, REFIID id, void** object) {
    return GetClassFactory(classId, id, object);
}

QVD_EXPORT HRESULT STDMETHODCALLTYPE DllRegisterServer() { return RegisterServer(); }

QVD_EXPORT HRESULT STDMETHODCALLTYPE DllUnregisterServer() { return UnregisterServer(); }

QVD_EXPORT HRESULT STDMETHODCALLTYPE DllInstall(BOOL installs, const WCHAR* commandLine) {
    return InstallServer(installs != FALSE, commandLine);
}
}
