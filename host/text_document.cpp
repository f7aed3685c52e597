#include "host/text_document.h"

#include <algorithm>
#include <utility>

#include "host/html_text.h"
#include "host/markup_scanner.h"
#include "platform/urls.h"

namespace host {

using platform::WideString;
using platform::WideView;

namespace {

// Frames that hold each other would go on for ever.
constexpr unsigned kDeepestFrame = 16;
constexpr std::size_t kNoTag = OutlineElement::kNone;

}  // namespace

/// An element. The root and the body may have no tag in the markup.
class TextElement final : public PageElement {
public:
    enum class Kind { Other, Root, Body };

    TextElement(std::shared_ptr<TextDocument> document, std::size_t index, Kind kind = Kind::Other)
        : document_(std::move(document)), index_(index), kind_(kind) {}

    bool ScrollHeight(LONG& height) override {
        height = document_->height_;
        return true;
    }
    bool Parent(std::shared_ptr<PageElement>& parent) override {
        parent.reset();
        if (kind_ == Kind::Root) return true;
        const std::size_t around = index_ == kNoTag ? kNoTag : document_->elements_[index_].parent;
        if (kind_ == Kind::Body || around == kNoTag) return document_->Root(parent);
        parent = document_->MakeElement(around);
        return true;
    }
    bool Markup(WideString& markup) override {
        if (kind_ == Kind::Root || index_ == kNoTag) {
            markup = document_->RootMarkup();
        } else {
            const OutlineElement& element = document_->elements_[index_];
            markup = document_->MarkupOf(element.open, element.end);
        }
        return true;
    }
    bool Attribute(const WideString& name, std::optional<WideString>& value) override {
        value.reset();
        if (index_ == kNoTag) return true;
        value = document_->AttributeOf(index_, LowerOf(name));
        const bool isAddress = LowerOf(name) == TEXT("src") || LowerOf(name) == TEXT("href");
        if (value && isAddress) value = document_->Resolve(*value);
        return true;
    }
    bool SetAttribute(const WideString& name, const WideString& value) override {
        if (index_ == kNoTag) return true;
        const WideView tag = document_->TagOf(document_->elements_[index_]);
        document_->tags_[index_] = SetTagAttribute(tag, LowerOf(name), value);
        return true;
    }

private:
    std::shared_ptr<TextDocument> document_;
    std::size_t index_;
    Kind kind_;
};

TextDocument::TextDocument(WideString url, WideString markup, LONG height, Read read,
                           unsigned depth)
    : url_(std::move(url)),
      markup_(std::move(markup)),
      height_(height),
      read_(std::move(read)),
      depth_(depth),
      elements_(ReadOutline(markup_)) {}

std::shared_ptr<PageElement> TextDocument::MakeElement(std::size_t index) {
    return std::make_shared<TextElement>(shared_from_this(), index);
}

std::size_t TextDocument::FirstOf(WideView name) const {
    const auto found = std::find_if(elements_.begin(), elements_.end(),
                                    [name](const auto& element) { return element.name == name; });
    return found == elements_.end() ? OutlineElement::kNone
                                    : static_cast<std::size_t>(found - elements_.begin());
}

WideView TextDocument::TagOf(const OutlineElement& element) const {
    const auto changed = tags_.find(static_cast<std::size_t>(&element - elements_.data()));
    if (changed != tags_.end()) return changed->second;
    return WideView(markup_).substr(element.open, element.content - element.open);
}

std::optional<WideString> TextDocument::AttributeOf(std::size_t index, WideView name) const {
    auto place = FindAttributePlace(TagOf(elements_[index]), name);
    if (!place) return std::nullopt;
    return std::move(place->value);
}

/// What cannot be resolved stays as it is written.
WideString TextDocument::Resolve(const WideString& address) const {
    DWORD size = 0;
    WCHAR none = 0;
    (void)UrlCombineW(url_.c_str(), address.c_str(), &none, &size, 0);
    WideString whole(size, TEXT('\0'));
    if (size == 0 || FAILED(UrlCombineW(url_.c_str(), address.c_str(), whole.data(), &size, 0))) {
        return address;
    }
    whole.resize(size);
    return whole;
}

bool TextDocument::Title(WideString& title) {
    title = ReadHtmlFacts(markup_).title;
    return true;
}

bool TextDocument::Body(std::shared_ptr<PageElement>& body) {
    // Every page has one. Without its tag, an element right below the root stands for it.
    const std::size_t index = FirstOf(TEXT("body"));
    body = std::make_shared<TextElement>(shared_from_this(), index, TextElement::Kind::Body);
    return true;
}

bool TextDocument::Root(std::shared_ptr<PageElement>& root) {
    root = std::make_shared<TextElement>(shared_from_this(), FirstOf(TEXT("html")),
                                         TextElement::Kind::Root);
    return true;
}

bool TextDocument::Elements(const WideString& tag,
                            std::vector<std::shared_ptr<PageElement>>& elements) {
    elements.clear();
    const WideString name = LowerOf(tag);
    for (std::size_t i = 0; i < elements_.size(); ++i) {
        if (name == TEXT("*") || elements_[i].name == name) elements.push_back(MakeElement(i));
    }
    return true;
}

bool TextDocument::StyleSheets(std::vector<PageStyleSheet>& sheets) {
    sheets.clear();
    for (std::size_t i = 0; i < elements_.size(); ++i) {
        const OutlineElement& element = elements_[i];
        if (element.name == TEXT("style")) {
            const auto length = element.contentEnd - element.content;
            sheets.push_back({std::nullopt, markup_.substr(element.content, length)});
        } else if (element.name == TEXT("link")) {
            const auto rel = AttributeOf(i, TEXT("rel"));
            const auto href = AttributeOf(i, TEXT("href"));
            if (!rel || !href || LowerOf(*rel).find(TEXT("stylesheet")) == rel->npos) continue;
            sheets.push_back({href, read_(Resolve(*href))});
        }
    }
    return true;
}

std::shared_ptr<PageDocument> TextDocument::MakeFrame(std::size_t index) const {
    if (depth_ >= kDeepestFrame) return nullptr;
    if (auto source = AttributeOf(index, TEXT("srcdoc"))) {
        return std::make_shared<TextDocument>(url_, std::move(*source), height_, read_, depth_ + 1);
    }
    const WideString url = Resolve(AttributeOf(index, TEXT("src")).value_or(WideString()));
    auto text = read_(url);
    if (!text) return nullptr;
    return std::make_shared<TextDocument>(url, std::move(*text), height_, read_, depth_ + 1);
}

bool TextDocument::Frames(std::vector<std::shared_ptr<PageDocument>>& frames) {
    for (std::size_t i = 0; i < elements_.size() && !hasFrames_; ++i) {
        const WideString& name = elements_[i].name;
        if (name == TEXT("frame") || name == TEXT("iframe")) frames_.push_back(MakeFrame(i));
    }
    hasFrames_ = true;
    frames = frames_;
    return true;
}

/// A stretch of the markup with the start tags as they are now.
WideString TextDocument::MarkupOf(std::size_t from, std::size_t to) const {
    WideString out;
    for (const auto& [index, tag] : tags_) {
        const OutlineElement& element = elements_[index];
        if (element.open < from || element.open >= to) continue;
        out.append(markup_, from, element.open - from);
        out += tag;
        from = element.content;
    }
    return out.append(markup_, from, to - from);
}

WideString TextDocument::RootMarkup() const {
    const std::size_t index = FirstOf(TEXT("html"));
    if (index != OutlineElement::kNone) {
        return MarkupOf(elements_[index].open, elements_[index].end);
    }
    return TEXT("<html>") + MarkupOf(0, markup_.size()) + TEXT("</html>");
}

bool TextDocument::IsEditable(std::size_t index) const {
    for (; index != OutlineElement::kNone; index = elements_[index].parent) {
        const auto value = AttributeOf(index, TEXT("contenteditable"));
        if (value) return LowerOf(*value) != TEXT("false");
    }
    return false;
}

bool TextDocument::Selection(PageSelection& selection) {
    selection = {};
    if (!selected_) return true;
    const OutlineElement& element = elements_[*selected_];
    selection.markup = MarkupOf(element.open, element.end);
    selection.text = TextOfMarkup(selection.markup);
    if (element.name == TEXT("img") && IsEditable(*selected_)) {
        selection.kind = PageSelection::Kind::Controls;
    }
    return true;
}

bool TextDocument::Select(const std::string& selector, std::string& error) {
    const WideString wanted = platform::FromUtf8(selector);
    for (std::size_t i = 0; i < elements_.size(); ++i) {
        if (!MatchesSelector(elements_[i].name, TagOf(elements_[i]), wanted)) continue;
        selected_ = i;
        return true;
    }
    error = "nothing in the page matches " + selector;
    return false;
}

}  // namespace host
