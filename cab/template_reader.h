#pragma once

#include "cab/compiled_template.h"
#include "cab/template_nodes.h"

namespace AUX::CAB {

/// Compiles one root of a template: from the elements of its document to declarations. Made for one
/// root; after an exception of any operation it is of no use.
class TemplateReader {
public:
    /// Sets within sets, and dictionaries within dictionaries, go so deep at most: bags are built
    /// by recursion.
    static constexpr int kMaxDepth = 256;
    /// A declared dictionary may stand for so many items at most, those of its sub-trees included;
    /// each inclusion of a set counts as one.
    static constexpr std::uint64_t kMaxItems = 1'000'000;

    /// \param element  The document's `CabTemplate`; borrowed.
    explicit TemplateReader(IXMLDOMNode& element) noexcept : element_(element) {}

    /// \param name  The root's id; empty for the first root of the document.
    /// \throw std::invalid_argument ("Invalid CAB XML template") if there is no such root, if it
    ///        has no entries, or beyond the limits; std::bad_alloc; ComFailure.
    [[nodiscard]] CompiledTemplate Read(WStringView name);

private:
    /// A declaration whose entries are those of a set that was still being read.
    struct OpenReference {
        SpecSet* holder;
        std::size_t index;
        const SpecSet* target;
    };

    /// \param open  Gets the set of the entries, if it is still being read; else null.
    [[nodiscard]] ItemSpec ReadItem(IXMLDOMElement& element, WStringView name,
                                    const SpecSet*& open);
    [[nodiscard]] const SpecSet* FindSet(WStringView id);
    void ReadSet(IXMLDOMElement& element, SpecSet& set);
    void AddItem(IXMLDOMElement& element, SpecSet& set);
    [[nodiscard]] SpecSet* StepInto(SpecSet& set, WStringView key);
    void Complete(SpecSet& set);
    void CloseReferences() noexcept;
    void ReadDefault(IXMLDOMElement& element, ItemSpec& spec);
    [[nodiscard]] const ValueSpec* FindValues(WStringView id);
    [[nodiscard]] NamedTableWord* FindTable(WStringView id);

    IXMLDOMNode& element_;
    CompiledTemplate result_;
    Vector<OpenReference> openReferences_;
    int depth_ = 0;
};

/// Whether every declared dictionary can be built within the limits of TemplateReader.
/// \throw std::bad_alloc
[[nodiscard]] bool CanBeBuilt(const CompiledTemplate& compiled);

/// The kind that a template, or a typed text, names: "Int" or "dt_Int", in this case.
/// \return Kind::None for any other text.
[[nodiscard]] Kind KindOfName(WStringView name) noexcept;

}  // namespace AUX::CAB
