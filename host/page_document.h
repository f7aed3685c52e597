#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/text.h"

/// A loaded page as the document interfaces ask it, wherever it came from. An operation that gives
/// a Boolean gives false when the page cannot answer any more (its browser died), with its output
/// unspecified. Used by one thread; may throw std::bad_alloc.
namespace host {

/// One element. It keeps its document.
class PageElement {
public:
    virtual ~PageElement() = default;

    /// In pixels, of all content.
    virtual bool ScrollHeight(LONG& height) = 0;
    /// Null for the root.
    virtual bool Parent(std::shared_ptr<PageElement>& parent) = 0;
    /// As the page stands now.
    virtual bool Markup(platform::WideString& markup) = 0;
    /// Addresses come resolved. \param value  Nothing: there is no such attribute.
    virtual bool Attribute(const platform::WideString& name,
                           std::optional<platform::WideString>& value) = 0;
    virtual bool SetAttribute(const platform::WideString& name,
                              const platform::WideString& value) = 0;
};

struct PageStyleSheet {
    std::optional<platform::WideString> href;  // as written; nothing: it stands in the document
    std::optional<platform::WideString> text;  // nothing: it may not be read
};

struct PageSelection {
    /// Controls: an image or the like, taken as a whole in an editable part of the page.
    enum class Kind { Text, Controls };

    Kind kind = Kind::Text;
    platform::WideString text;
    platform::WideString markup;
};

/// One document: the page itself or what a frame of it shows.
class PageDocument {
public:
    virtual ~PageDocument() = default;

    /// The address shown, with its fragment.
    [[nodiscard]] virtual const platform::WideString& Url() const = 0;
    /// As scripts see it: no leading, trailing or doubled blanks.
    virtual bool Title(platform::WideString& title) = 0;
    /// Null: there is no such element.
    virtual bool Body(std::shared_ptr<PageElement>& body) = 0;
    virtual bool Root(std::shared_ptr<PageElement>& root) = 0;
    /// Those with a tag name, whatever its case; "*" is all.
    virtual bool Elements(const platform::WideString& tag,
                          std::vector<std::shared_ptr<PageElement>>& elements) = 0;
    /// The linked and the embedded ones, not those that they import.
    virtual bool StyleSheets(std::vector<PageStyleSheet>& sheets) = 0;
    /// Null: a document that this one may not reach.
    virtual bool Frames(std::vector<std::shared_ptr<PageDocument>>& frames) = 0;
    virtual bool Selection(PageSelection& selection) = 0;

    /// Selects the first element that matches. \param selector  UTF-8, of CSS.
    /// \return false, and a sentence for the user, if there is none.
    virtual bool Select(const std::string& selector, std::string& error) = 0;
};

}  // namespace host
