#include "cab/xml_parser.h"

#include "platform/com_library.h"
#include "platform/modules.h"

namespace AUX::CAB {
namespace {

using platform::ComPtr;

using GetClassObjectFunction = HRESULT STDMETHODCALLTYPE(REFCLSID, REFIID, void**);

/// A class that is registered with the system, for where its module cannot be asked directly.
class RegisteredClass {
public:
    explicit RegisteredClass(REFCLSID classId) noexcept {
        const HRESULT initialized = CoInitialize(nullptr);
        void* factory = nullptr;
        status_ = CoGetClassObject(classId, CLSCTX_INPROC_SERVER, nullptr,
                                   platform::InterfaceId<IClassFactory>(), &factory);
        if (SUCCEEDED(status_)) factory_.Attach(static_cast<IClassFactory*>(factory));
        if (SUCCEEDED(initialized)) CoUninitialize();
    }

    [[nodiscard]] HRESULT Status() const noexcept { return status_; }
    [[nodiscard]] IClassFactory* Factory() const noexcept { return factory_.Get(); }

private:
    HRESULT status_;
    ComPtr<IClassFactory> factory_;
};

/// The parser of one module.
class Parser {
public:
    Parser(const WCHAR* module, REFCLSID classId) noexcept
        : classId_(classId), module_(LoadLibraryW(module)) {
        if (!module_) return;
        getClassObject_ =
            platform::ProcedureOf<GetClassObjectFunction>(module_, "DllGetClassObject");
    }
    ~Parser() {
        // This may run under the loader's lock, and the module's end is its own affair.
        if (module_) platform::FreeLibraryOnThread(module_);
    }
    Parser(const Parser&) = delete;
    Parser& operator=(const Parser&) = delete;

    /// \return E_FAIL if the module has no such class.
    [[nodiscard]] HRESULT MakeDocument(ComPtr<IXMLDOMDocument2>& document) const noexcept {
        ComPtr<IClassFactory> factory;
        void* found = nullptr;
        if (getClassObject_ &&
            SUCCEEDED(getClassObject_(classId_, platform::InterfaceId<IClassFactory>(), &found))) {
            factory.Attach(static_cast<IClassFactory*>(found));
        }
        return factory ? MakeBy(*factory.Get(), document) : E_FAIL;
    }

    [[nodiscard]] static HRESULT MakeBy(IClassFactory& factory,
                                        ComPtr<IXMLDOMDocument2>& document) noexcept {
        void* made = nullptr;
        const HRESULT result =
            factory.CreateInstance(nullptr, platform::InterfaceId<IXMLDOMDocument2>(), &made);
        if (SUCCEEDED(result)) document.Attach(static_cast<IXMLDOMDocument2*>(made));
        return result;
    }

private:
    const CLSID classId_;
    const HMODULE module_;
    GetClassObjectFunction* getClassObject_ = nullptr;
};

HRESULT MakeBy(const Parser& parser, const RegisteredClass& (*registered)() noexcept,
               ComPtr<IXMLDOMDocument2>& document) noexcept {
    if (SUCCEEDED(parser.MakeDocument(document))) return S_OK;
    const RegisteredClass& known = registered();
    return known.Factory() ? Parser::MakeBy(*known.Factory(), document) : known.Status();
}

// Asked for only where they are needed.
const RegisteredClass& Registered60() noexcept {
    static const RegisteredClass found(platform::kDomDocument60);
    return found;
}
const RegisteredClass& Registered30() noexcept {
    static const RegisteredClass found(platform::kDomDocument30);
    return found;
}

HRESULT MakeBy60(ComPtr<IXMLDOMDocument2>& document) noexcept {
    static const Parser parser(TEXT("msxml6.dll"), platform::kDomDocument60);
    return MakeBy(parser, Registered60, document);
}
HRESULT MakeBy30(ComPtr<IXMLDOMDocument2>& document) noexcept {
    static const Parser parser(TEXT("msxml3.dll"), platform::kDomDocument30);
    return MakeBy(parser, Registered30, document);
}

}  // namespace

HRESULT MakeXmlDocument(ComPtr<IXMLDOMDocument2>& document) noexcept {
    return SUCCEEDED(MakeBy60(document)) ? S_OK : MakeBy30(document);
}

}  // namespace AUX::CAB
