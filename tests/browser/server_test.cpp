// The module as installers and COM use it: loaded as a file, through its exports and the registry.

#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "browser/browser_helper_object.h"
#include "browser/registry_tree.h"
#include "platform/modules.h"
#include "platform/registry.h"
#include "platform/testing.h"
#include "tests/support/test_profile.h"

namespace {

using platform::ComPtr;
using platform::RegistryKey;
using platform::WideString;

constexpr WCHAR kHelpers[] =
    TEXT("SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Browser Helper Objects");
constexpr WCHAR kToolbars[] = TEXT("SOFTWARE\\Microsoft\\Internet Explorer\\Toolbar");

/// A registry with the keys that a machine with the browser has, the module beside this program,
/// and COM.
class ServerTest : public testing::Test {
protected:
    // Thousands of changes of the registry need not wait for a disk, where there is memory for
    // them.
    static void SetUpTestSuite() {
        std::error_code none;
        if (platform::testing::kOwnsTheSystem && std::filesystem::is_directory("/dev/shm", none)) {
            platform::testing::SetEnvironment("TMPDIR", "/dev/shm");
        }
    }
    static void TearDownTestSuite() {
        if (platform::testing::kOwnsTheSystem) {
            platform::testing::SetEnvironment("TMPDIR", nullptr);
        }
    }
    void SetUp() override {
        ASSERT_TRUE(SUCCEEDED(CoInitialize(nullptr)));
        for (const HKEY root : {HKEY_LOCAL_MACHINE, HKEY_CURRENT_USER}) {
            for (const WCHAR* path :
                 {kHelpers, kToolbars, TEXT("Software\\Classes\\AppID"),
                  TEXT("Software\\Classes\\CLSID"), TEXT("Software\\Classes\\Interface"),
                  TEXT("Software\\Classes\\TypeLib")}) {
                RegistryKey key;
                ASSERT_EQ(RegCreateKeyExW(root, path, 0, nullptr, 0, KEY_WRITE, nullptr, key.Put(),
                                          nullptr),
                          ERROR_SUCCESS);
            }
        }
        WCHAR path[MAX_PATH];
        path_.assign(path, GetModuleFileNameW(nullptr, path, MAX_PATH));
        path_ = path_.substr(0, path_.rfind(TEXT('\\')) + 1) + TEXT("QVDIEaddin.x64.dll");
        module_.Reset(LoadLibraryW(path_.c_str()));
        ASSERT_TRUE(module_);
        before_ = Counts();
    }
    void TearDown() override {
        module_.Reset();
        CoUninitialize();
    }

    template <class Function>
    Function* Export(const char* name) const {
        auto* const found = platform::ProcedureOf<Function>(module_.Get(), name);
        EXPECT_TRUE(found) << name;
        return found;
    }
    HRESULT Register() const { return Export<HRESULT()>("DllRegisterServer")(); }
    HRESULT Unregister() const { return Export<HRESULT()>("DllUnregisterServer")(); }
    HRESULT Install(bool installs, const WCHAR* line) const {
        return Export<HRESULT(BOOL, const WCHAR*)>("DllInstall")(installs, line);
    }
    [[nodiscard]] bool CanUnload() const { return Export<HRESULT()>("DllCanUnloadNow")() == S_OK; }

    /// The subkeys and values of each key that a server may write to.
    static std::vector<DWORD> Counts() {
        std::vector<DWORD> counts;
        for (const HKEY root : {HKEY_LOCAL_MACHINE, HKEY_CURRENT_USER}) {
            for (const WCHAR* path :
                 {kHelpers, kToolbars, TEXT("Software\\Classes"), TEXT("Software\\Classes\\AppID"),
                  TEXT("Software\\Classes\\CLSID"), TEXT("Software\\Classes\\Interface"),
                  TEXT("Software\\Classes\\TypeLib")}) {
                RegistryKey key;
                DWORD subkeys = 0;
                DWORD values = 0;
                EXPECT_EQ(RegOpenKeyExW(root, path, 0, KEY_READ, key.Put()), ERROR_SUCCESS);
                EXPECT_EQ(RegQueryInfoKeyW(key.Get(), nullptr, nullptr, nullptr, &subkeys, nullptr,
                                           nullptr, &values, nullptr, nullptr, nullptr, nullptr),
                          ERROR_SUCCESS);
                counts.push_back(subkeys);
                counts.push_back(values);
            }
        }
        return counts;
    }
    static bool HasKey(HKEY root, const WideString& path) {
        RegistryKey key;
        return RegOpenKeyExW(root, path.c_str(), 0, KEY_READ, key.Put()) == ERROR_SUCCESS;
    }

    const test_support::TestProfile profile_;
    WideString path_;
    platform::ModuleHandle module_;
    std::vector<DWORD> before_;
};

TEST_F(ServerTest, RegistersForTheMachineIsMadeByItsClassAndLeavesNothing) {
    ASSERT_EQ(Register(), S_OK);
    ASSERT_EQ(Register(), S_OK) << "over an old one";
    EXPECT_TRUE(HasKey(HKEY_LOCAL_MACHINE, WideString(kHelpers) + TEXT("\\") + kAddinClassText));
    CLSID classId = {};
    EXPECT_EQ(CLSIDFromProgID(TEXT("QVDIEaddin.QVDIEaddinBHO"), &classId), S_OK);
    EXPECT_TRUE(IsEqualGUID(classId, kAddinClassId));
    EXPECT_TRUE(CanUnload());
    for (const IID& id : {platform::InterfaceId<IObjectWithSite>(),
                          platform::InterfaceId<IDeskBand>(), platform::InterfaceId<IDispatch>()}) {
        void* made = nullptr;
        ASSERT_EQ(CoCreateInstance(kAddinClassId, nullptr, CLSCTX_INPROC_SERVER, id, &made), S_OK);
        ComPtr<IUnknown> object;
        object.Attach(static_cast<IUnknown*>(made));
        EXPECT_FALSE(CanUnload());
    }
    EXPECT_TRUE(CanUnload());
    CoFreeUnusedLibraries();
    EXPECT_EQ(Unregister(), S_OK);
    EXPECT_EQ(Counts(), before_);
}

TEST_F(ServerTest, RegistersForTheUserWhoseClassesThenHaveIt) {
    EXPECT_EQ(Install(true, TEXT("user2")), S_OK);
    const WideString place = WideString(TEXT("Software\\Classes\\CLSID\\")) + kAddinClassText;
    EXPECT_TRUE(HasKey(HKEY_LOCAL_MACHINE, place) && !HasKey(HKEY_CURRENT_USER, place));
    EXPECT_EQ(Install(false, nullptr), S_OK);
    ASSERT_EQ(Install(true, TEXT("USER")), S_OK);
    EXPECT_TRUE(HasKey(HKEY_CURRENT_USER, place + TEXT("\\InprocServer32")));
    EXPECT_FALSE(HasKey(HKEY_LOCAL_MACHINE, place + TEXT("\\InprocServer32")));
    EXPECT_TRUE(HasKey(HKEY_LOCAL_MACHINE, WideString(kHelpers) + TEXT("\\") + kAddinClassText));
    EXPECT_EQ(Install(false, TEXT("user")), S_OK);
    EXPECT_EQ(Counts(), before_);
}

TEST_F(ServerTest, EachFailureOfAnInstallationLeavesNothing) {
    if (!platform::testing::kOwnsTheSystem) GTEST_SKIP() << "nothing can be made to fail here";
    for (const char* call : {"RegOpenKeyExW", "RegCreateKeyExW", "RegSetValueExW"}) {
        unsigned failures = 0;
        for (unsigned nth = 1;; ++nth) {
            SCOPED_TRACE(testing::Message() << call << ' ' << nth);
            HRESULT result = S_OK;
            bool hasFired = false;
            {
                const platform::testing::InjectedFault fault(call, nth, ERROR_ACCESS_DENIED);
                result = Install(true, nullptr);
                hasFired = fault.HasFired();
            }
            if (SUCCEEDED(result)) {
                EXPECT_EQ(Unregister(), S_OK);
            } else {
                ++failures;
            }
            EXPECT_EQ(Counts(), before_);
            if (!hasFired) break;
        }
        EXPECT_GT(failures, 0u) << call;
    }
}

TEST_F(ServerTest, WhatAFailedRemovalLeavesTheNextOneRemoves) {
    if (!platform::testing::kOwnsTheSystem) GTEST_SKIP() << "nothing can be made to fail here";
    for (const char* call : {"RegOpenKeyExW", "RegDeleteKeyW", "RegDeleteValueW", "RegEnumKeyExW",
                             "RegQueryInfoKeyW"}) {
        for (unsigned nth = 1;; ++nth) {
            SCOPED_TRACE(testing::Message() << call << ' ' << nth);
            ASSERT_EQ(Install(true, nullptr), S_OK);
            bool hasFired = false;
            {
                const platform::testing::InjectedFault fault(call, nth, ERROR_ACCESS_DENIED);
                (void)Install(false, nullptr);
                hasFired = fault.HasFired();
            }
            EXPECT_EQ(Install(false, nullptr), S_OK);
            EXPECT_EQ(Counts(), before_);
            if (!hasFired) break;
        }
    }
}

TEST_F(ServerTest, TheFactoryRefusesWhatItCannotMake) {
    using GetClassObject = HRESULT(REFCLSID, REFIID, void**);
    auto* const get = Export<GetClassObject>("DllGetClassObject");
    void* found = &found;
    const IID& factoryId = platform::InterfaceId<IClassFactory>();
    EXPECT_EQ(get(kAddinClassId, factoryId, nullptr), E_POINTER);
    EXPECT_EQ(get(kTypeLibraryId, factoryId, &found), CLASS_E_CLASSNOTAVAILABLE);
    EXPECT_EQ(found, nullptr);
    EXPECT_EQ(get(kAddinClassId, platform::InterfaceId<IDispatch>(), &found), E_NOINTERFACE);
    ComPtr<IClassFactory> factories[2];
    for (ComPtr<IClassFactory>& factory : factories) {
        ASSERT_EQ(get(kAddinClassId, factoryId, &found), S_OK);
        factory.Attach(static_cast<IClassFactory*>(found));
    }
    EXPECT_EQ(factories[0].Get(), factories[1].Get());
    EXPECT_EQ(factories[0]->CreateInstance(factories[0].Get(), factoryId, &found),
              CLASS_E_NOAGGREGATION);
    EXPECT_EQ(factories[0]->CreateInstance(nullptr, factoryId, &found), E_NOINTERFACE);
    EXPECT_EQ(factories[0]->CreateInstance(nullptr, factoryId, nullptr), E_POINTER);
    EXPECT_TRUE(CanUnload());
    EXPECT_EQ(factories[0]->LockServer(TRUE), S_OK);
    EXPECT_FALSE(CanUnload());
    EXPECT_EQ(factories[0]->LockServer(FALSE), S_OK);
    EXPECT_TRUE(CanUnload());
}

TEST_F(ServerTest, AnswersLateBoundCallsFromItsTypeLibrary) {
    void* made = nullptr;
    using GetClassObject = HRESULT(REFCLSID, REFIID, void**);
    ASSERT_EQ(Export<GetClassObject>("DllGetClassObject")(
                  kAddinClassId, platform::InterfaceId<IClassFactory>(), &made),
              S_OK);
    ComPtr<IClassFactory> factory;
    factory.Attach(static_cast<IClassFactory*>(made));
    ASSERT_EQ(factory->CreateInstance(nullptr, platform::InterfaceId<IDispatch>(), &made), S_OK);
    ComPtr<IDispatch> object;
    object.Attach(static_cast<IDispatch*>(made));
    UINT count = 0;
    EXPECT_EQ(object->GetTypeInfoCount(&count), S_OK);
    EXPECT_EQ(count, 1u);
    ComPtr<ITypeInfo> info;
    EXPECT_EQ(object->GetTypeInfo(1, 0, info.Put()), DISP_E_BADINDEX);
    ASSERT_EQ(object->GetTypeInfo(0, 0, info.Put()), S_OK);
    TYPEATTR* attributes = nullptr;
    ASSERT_EQ(info->GetTypeAttr(&attributes), S_OK);
    EXPECT_TRUE(IsEqualGUID(attributes->guid, platform::InterfaceId<IQVDIEaddinBHO>()));
    info->ReleaseTypeAttr(attributes);
    WCHAR name[] = TEXT("none");
    LPOLESTR names[] = {name};
    DISPID id = 0;
    EXPECT_EQ(object->GetIDsOfNames(IID{}, names, 1, 0, &id), DISP_E_UNKNOWNNAME);
    DISPPARAMS none = {};
    EXPECT_EQ(object->Invoke(99, IID{}, 0, DISPATCH_METHOD, &none, nullptr, nullptr, nullptr),
              DISP_E_MEMBERNOTFOUND);
}

// The root is there from the module's start on, and what a host holds of it keeps the module.
TEST_F(ServerTest, OffersTheRootOfTheObjectsThatItsLibraryDescribes) {
    using GetClassObject = HRESULT(REFCLSID, REFIID, void**);
    void* made = nullptr;
    ASSERT_EQ(Export<GetClassObject>("DllGetClassObject")(
                  kRootClassId, platform::InterfaceId<IClassFactory>(), &made),
              S_OK);
    ComPtr<IClassFactory> factory;
    factory.Attach(static_cast<IClassFactory*>(made));
    ASSERT_EQ(factory->CreateInstance(nullptr, platform::InterfaceId<IRootObject>(), &made), S_OK);
    ComPtr<IRootObject> root;
    root.Attach(static_cast<IRootObject*>(made));
    EXPECT_TRUE(CanUnload()) << "the root and its hub are the module's own";
    {
        ComPtr<IIntArray> array;
        ASSERT_EQ(root->NewIntArray(array.Put()), S_OK);
        EXPECT_FALSE(CanUnload());
        WCHAR name[] = TEXT("insert");
        LPOLESTR names[] = {name};
        DISPID id = 0;
        EXPECT_EQ(array->GetIDsOfNames(IID{}, names, 1, 0, &id), S_OK);
    }
    EXPECT_TRUE(CanUnload());
    {
        ComPtr<IUnknown> math;
        ASSERT_EQ(root->GetMath(math.Put()), S_OK);
        EXPECT_FALSE(CanUnload());
    }
    EXPECT_TRUE(CanUnload());
    ComPtr<IMessageHub> hub;
    ASSERT_EQ(root->GetHub(hub.Put()), S_OK);
    EXPECT_FALSE(CanUnload());
    EXPECT_EQ(hub->FireSimple(1, TEXT("text"), 0, 0), S_OK);
    hub.Reset();
    EXPECT_TRUE(CanUnload());
}

TEST_F(ServerTest, LoadsAndUnloadsAThousandTimes) {
    module_.Reset();
    for (int i = 0; i < 1000; ++i) {
        platform::ModuleHandle module(LoadLibraryW(path_.c_str()));
        ASSERT_TRUE(module);
        module.Reset();
        ASSERT_FALSE(GetModuleHandleW(TEXT("QVDIEaddin.x64.dll")));
    }
}

}  // namespace
