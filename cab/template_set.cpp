#include "cab/template_set.h"

#include <cstring>
#include <stdexcept>
#include <utility>

#include "cab/com_stream.h"
#include "cab/template_reader.h"
#include "cab/xml_parser.h"
#include "foundation/mem_stream.h"
#include "platform/unique_variant.h"

namespace AUX::CAB {

namespace {

using platform::ComPtr;

/// What parsers give for a document with a type.
constexpr auto kDocumentTypeProhibited = static_cast<HRESULT>(0xC00CE584);

/// Runs a load, or what else may throw. \return its status.
template <class Work>
HRESULT StatusOf(Work work) noexcept {
    try {
        return work();
    } catch (const ComFailure& failure) {
        return failure.status;
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (...) {
        return E_FAIL;
    }
}

/// What is wrong with a document that did not load.
HRESULT FaultOf(IXMLDOMDocument2& document) {
    ComPtr<IXMLDOMParseError> fault;
    Check(document.get_parseError(fault.Put()));
    LONG code = 0;
    (void)fault->get_errorCode(&code);
    return code < 0 ? static_cast<HRESULT>(code) : E_FAIL;
}

}  // namespace

class TemplateSet::Guard {
public:
    explicit Guard(const TemplateSet& set) noexcept : set_(set) {
        EnterCriticalSection(&set.lock_);
    }
    ~Guard() { LeaveCriticalSection(&set_.lock_); }
    Guard(const Guard&) = delete;
    Guard& operator=(const Guard&) = delete;

private:
    const TemplateSet& set_;
};

/// A counted reference on the set, and which of its roots a bag has.
class TemplateSet::Handle final : public TemplateHandle {
public:
    /// \param name  The root; null for the selected one.
    Handle(TemplateSet& set, const KeyText* name)
        : set_(set), name_(name ? *name : KeyText()), isSelected_(!name) {
        set.AddRef();
    }
    ~Handle() override { set_.Release(); }

    const ItemSpec* GetSpec() noexcept override {
        if (isSelected_) return set_.SelectedRoot();
        const ItemSpec* spec = nullptr;
        (void)StatusOf([&] {
            spec = &set_.FindRoot(name_);
            return S_OK;
        });
        return spec;
    }

    const void* Kept() const noexcept override { return &set_; }
    std::unique_ptr<TemplateHandle> Clone() noexcept override {
        std::unique_ptr<TemplateHandle> copy;
        (void)StatusOf([&] {
            copy.reset(new (std::nothrow) Handle(set_, isSelected_ ? nullptr : &name_));
            return S_OK;
        });
        return copy;
    }

private:
    TemplateSet& set_;
    const KeyText name_;
    const bool isSelected_;
};

TemplateSet::TemplateSet() noexcept
    : hasLock_(InitializeCriticalSectionAndSpinCount(&lock_, 0) != FALSE) {}

TemplateSet::~TemplateSet() {
    if (hasLock_) DeleteCriticalSection(&lock_);
}

TemplateSet* TemplateSet::Create() noexcept {
    auto* const set = new (std::nothrow) TemplateSet;
    if (!set || set->hasLock_) return set;
    delete set;
    return nullptr;
}

void TemplateSet::Release() noexcept {
    if (references_.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
}

HRESULT TemplateSet::LoadFromStream(IStream* stream) noexcept {
    if (!stream) return E_POINTER;
    return StatusOf([&] {
        Check(stream->Seek({}, STREAM_SEEK_SET, nullptr));
        VARIANT source{};
        source.vt = VT_UNKNOWN;
        source.punkVal = stream;  // Borrowed, as is the text below.
        return LoadDocument(source, false);
    });
}

HRESULT TemplateSet::LoadFromText(const WCHAR* text) noexcept {
    if (!text) return E_POINTER;
    return StatusOf([&] {
        const OwnBstr owned{WStringView(text)};
        VARIANT source{};
        source.vt = VT_BSTR;
        source.bstrVal = owned.Get();
        return LoadDocument(source, true);
    });
}

HRESULT TemplateSet::LoadFromBuffer(const void* data, std::size_t size) noexcept {
    if (!data) return E_POINTER;
    constexpr WCHAR kMark[] = {'<', '?'};
    if (size >= sizeof kMark && std::memcmp(data, kMark, sizeof kMark) == 0) {
        return StatusOf([&] {
            KeyText text(size / sizeof(WCHAR), 0);  // The bytes may lie at an odd address.
            std::memcpy(text.data(), data, text.size() * sizeof(WCHAR));
            return LoadFromText(text.c_str());
        });
    }
    std::unique_ptr<MemStream> bytes(new (std::nothrow) MemStream);
    if (!bytes) return E_OUTOFMEMORY;
    // Only read.
    const Status opened =
        bytes->Open(const_cast<void*>(data), static_cast<std::int64_t>(size), kAccessRead);
    if (opened == kStatusInsufficientMemory) return E_OUTOFMEMORY;
    if (IsFailure(opened)) return opened;
    const ComPtr<IStream> stream = MakeComStream(std::move(bytes));
    return stream ? LoadFromStream(stream.Get()) : E_OUTOFMEMORY;
}

HRESULT TemplateSet::Load(const VARIANT& source) noexcept {
    if (source.vt == VT_BSTR) return LoadFromText(source.bstrVal);
    if (source.vt != VT_UNKNOWN) return E_INVALIDARG;
    if (!source.punkVal) return E_POINTER;
    void* found = nullptr;
    if (FAILED(source.punkVal->QueryInterface(platform::InterfaceId<IStream>(), &found))) {
        return E_INVALIDARG;
    }
    ComPtr<IStream> stream;
    stream.Attach(static_cast<IStream*>(found));
    return LoadFromStream(stream.Get());
}

HRESULT TemplateSet::LoadDocument(const VARIANT& source, bool isText) {
    ComPtr<IXMLDOMDocument2> document;
    Check(MakeXmlDocument(document));
    Check(document->put_async(VARIANT_FALSE));
    Check(document->put_validateOnParse(VARIANT_TRUE));
    VARIANT yes{};
    yes.vt = VT_BOOL;
    yes.boolVal = VARIANT_TRUE;
    Check(document->setProperty(OwnBstr(TEXT("ProhibitDTD")).Get(), yes));
    VARIANT_BOOL isLoaded = VARIANT_FALSE;
    const HRESULT result =
        isText ? document->loadXML(source.bstrVal, &isLoaded) : document->load(source, &isLoaded);
    if (result == E_OUTOFMEMORY) return result;
    if (FAILED(result) || !isLoaded) return FaultOf(*document.Get());
    // Not every parser knows the property.
    ComPtr<IXMLDOMDocumentType> type;
    Check(document->get_doctype(type.Put()));
    if (type) return kDocumentTypeProhibited;
    const ElementPtr element = FindChild(*document.Get(), TEXT("/CabTemplate"), {});
    if (!element) return E_INVALIDARG;
    const Guard guard(*this);
    if (element_) {
        Merge(*element.Get());
    } else {
        element_ = ComPtr<IXMLDOMNode>(element.Get());
    }
    return S_OK;
}

void TemplateSet::Merge(IXMLDOMNode& document) {
    for (const auto& node : ChildNodes(document)) Check(element_->appendChild(node.Get(), nullptr));
}

const ItemSpec& TemplateSet::FindRoot(WStringView name) {
    const Guard guard(*this);
    const auto known = compiled_.find(name);
    if (known != compiled_.end()) return known->second.root;
    if (!element_) throw ComFailure{E_UNEXPECTED};
    CompiledTemplate compiled = TemplateReader(*element_.Get()).Read(name);
    return compiled_.emplace(KeyText(name), std::move(compiled)).first->second.root;
}

const ItemSpec* TemplateSet::SelectedRoot() const noexcept {
    const Guard guard(*this);
    return selected_;
}

HRESULT TemplateSet::SelectRoot(WStringView name) {
    try {
        const Guard guard(*this);
        selected_ = &FindRoot(name);
        return S_OK;
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (const ComFailure& failure) {
        return failure.status;
    }
}

HRESULT TemplateSet::GetRoot(WStringView name, std::unique_ptr<TemplateHandle>& handle) {
    try {
        (void)FindRoot(name);
        const KeyText text(name);
        handle.reset(new (std::nothrow) Handle(*this, &text));
        return handle ? S_OK : E_OUTOFMEMORY;
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (const ComFailure& failure) {
        return failure.status;
    }
}

HRESULT TemplateSet::GetSelectedRoot(std::unique_ptr<TemplateHandle>& handle) noexcept {
    if (!SelectedRoot()) return E_UNEXPECTED;
    handle.reset(new (std::nothrow) Handle(*this, nullptr));
    return handle ? S_OK : E_OUTOFMEMORY;
}

}  // namespace AUX::CAB
