#pragma once

#include <atomic>
#include <memory>

#include "cab/compiled_template.h"
#include "platform/com_ptr.h"
#include "platform/sync.h"
#include "platform/xml.h"

namespace AUX::CAB {

/// Templates of bags: XML documents, merged into one, whose roots are compiled when they are asked
/// for. Counted; made with one reference. Any thread may use it; what is compiled is never changed,
/// and lives as long as the set.
///
/// Loading fails with E_POINTER for a null source, E_INVALIDARG for a document without
/// `CabTemplate`, the parser's code for a text that is not well-formed or has a document type, the
/// status of what fails in COM, E_OUTOFMEMORY, or E_FAIL. The set then has what it had; only if
/// memory runs out in the middle of a merge, it may have got some of the declarations, each whole.
class TemplateSet : public Allocated {
public:
    /// \return null when memory runs out.
    [[nodiscard]] static TemplateSet* Create() noexcept;

    void AddRef() noexcept { references_.fetch_add(1, std::memory_order_relaxed); }
    void Release() noexcept;

    /// Adds the document that a stream holds from its beginning.
    [[nodiscard]] HRESULT LoadFromStream(IStream* stream) noexcept;
    /// \param text  A terminated text, or null.
    [[nodiscard]] HRESULT LoadFromText(const WCHAR* text) noexcept;
    /// Adds a document of bytes, in any encoding that it says it has. One that begins with "<?" in
    /// UTF-16 is a text of size / 2 units. \param size  Bytes.
    [[nodiscard]] HRESULT LoadFromBuffer(const void* data, std::size_t size) noexcept;
    /// Takes a text (VT_BSTR) or an object that answers IStream (VT_UNKNOWN); E_INVALIDARG for
    /// anything else.
    [[nodiscard]] HRESULT Load(const VARIANT& source) noexcept;

    /// Compiles a root, unless it is, and selects it.
    /// \param name  The root's id; empty for the first root. There are no quotes in ids.
    /// \return E_UNEXPECTED while nothing is loaded, E_OUTOFMEMORY, or what the document gives.
    /// \throw std::invalid_argument ("Invalid CAB XML template") as TemplateReader::Read.
    [[nodiscard]] HRESULT SelectRoot(WStringView name);

    /// Compiles a root, unless it is, and gives a handle for a bag, which keeps this set alive.
    /// Fails as SelectRoot.
    [[nodiscard]] HRESULT GetRoot(WStringView name, std::unique_ptr<TemplateHandle>& handle);

    /// A handle on whatever root is selected when it is asked. \return E_UNEXPECTED if none is now.
    [[nodiscard]] HRESULT GetSelectedRoot(std::unique_ptr<TemplateHandle>& handle) noexcept;

private:
    class Handle;
    class Guard;

    TemplateSet() noexcept;
    ~TemplateSet();
    [[nodiscard]] HRESULT LoadDocument(const VARIANT& source, bool isText);
    void Merge(IXMLDOMNode& document);
    [[nodiscard]] const ItemSpec& FindRoot(WStringView name);
    [[nodiscard]] const ItemSpec* SelectedRoot() const noexcept;

    std::atomic<std::int32_t> references_ = 1;
    mutable CRITICAL_SECTION lock_;
    bool hasLock_ = false;
    platform::ComPtr<IXMLDOMNode> element_;  // CabTemplate, null until something is loaded
    TextMap<CompiledTemplate> compiled_;
    const ItemSpec* selected_ = nullptr;
};

}  // namespace AUX::CAB
