#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/markup_outline.h"
#include "host/page_document.h"

namespace host {

/// A document given as text. No script runs and nothing is laid out; what is set on it changes its
/// markup. Frames and style sheets are those that `read` gives, so none of another origin.
class TextDocument final : public PageDocument, public std::enable_shared_from_this<TextDocument> {
public:
    /// Gives the text at an absolute address, or nothing if it may not or cannot be read.
    using Read = std::function<std::optional<platform::WideString>(const platform::WideString&)>;

    /// \param height  Of the body and the root, in pixels.
    /// \param depth   Documents around this one; frames below a certain depth are not reached.
    TextDocument(platform::WideString url, platform::WideString markup, LONG height, Read read,
                 unsigned depth = 0);

    [[nodiscard]] const platform::WideString& Url() const override { return url_; }
    bool Title(platform::WideString& title) override;
    bool Body(std::shared_ptr<PageElement>& body) override;
    bool Root(std::shared_ptr<PageElement>& root) override;
    bool Elements(const platform::WideString& tag,
                  std::vector<std::shared_ptr<PageElement>>& elements) override;
    bool StyleSheets(std::vector<PageStyleSheet>& sheets) override;
    bool Frames(std::vector<std::shared_ptr<PageDocument>>& frames) override;
    bool Selection(PageSelection& selection) override;
    bool Select(const std::string& selector, std::string& error) override;

private:
    friend class TextElement;

    [[nodiscard]] std::shared_ptr<PageElement> MakeElement(std::size_t index);
    [[nodiscard]] std::size_t FirstOf(platform::WideView name) const;
    [[nodiscard]] platform::WideView TagOf(const OutlineElement& element) const;
    [[nodiscard]] std::optional<platform::WideString> AttributeOf(std::size_t index,
                                                                  platform::WideView name) const;
    [[nodiscard]] platform::WideString Resolve(const platform::WideString& address) const;
    [[nodiscard]] std::shared_ptr<PageDocument> MakeFrame(std::size_t index) const;
    [[nodiscard]] platform::WideString MarkupOf(std::size_t from, std::size_t to) const;
    [[nodiscard]] platform::WideString RootMarkup() const;
    [[nodiscard]] bool IsEditable(std::size_t index) const;

    platform::WideString url_;
    platform::WideString markup_;
    LONG height_;
    Read read_;
    unsigned depth_;
    std::vector<OutlineElement> elements_;
    std::map<std::size_t, platform::WideString> tags_;  // start tags that were changed, by element
    std::vector<std::shared_ptr<PageDocument>> frames_;
    bool hasFrames_ = false;
    std::optional<std::size_t> selected_;
};

}  // namespace host
