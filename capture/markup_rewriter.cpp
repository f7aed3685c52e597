#include "capture/markup_rewriter.h"

#include "capture/attributes.h"
#include "capture/characters.h"
#include "capture/entities.h"
#include "capture/text_search.h"

namespace {

constexpr std::size_t kCommentStart = 4;  // "<!--"

// Beginnings of tags, behind the '<'; and attributes.
constexpr AUX::WStringView kScript = TEXT("script");
constexpr AUX::WStringView kStyle = TEXT("style");
constexpr AUX::WStringView kImage = TEXT("img ");
constexpr AUX::WStringView kLink = TEXT("link ");
constexpr AUX::WStringView kAnchor = TEXT("a ");
constexpr AUX::WStringView kSource = TEXT("src");
constexpr AUX::WStringView kAddress = TEXT("href");
constexpr AUX::WStringView kType = TEXT("type");

std::optional<AUX::WStringView> Attribute(const WCHAR* begin, const WCHAR* close,
                                          AUX::WStringView name) noexcept {
    return FindAttribute(begin, close, name.data(), name.size());
}

}  // namespace

bool MarkupRewriter::Rewrite(AUX::WStringView baseUrl, AUX::WStringView markup,
                             MarkupUrlResolver& resolver,
                             StyleUrlResolver& styleResolver) noexcept {
    Splicer.Clear();
    if (markup.empty()) return true;
    Resolver = &resolver;
    StyleResolver = &styleResolver;
    Position = markup.data();
    End = markup.data() + markup.size() - 1;
    if (BaseUrl.Assign(baseUrl)) {
        Splicer.Init(Position, End);
        Splicer.ExpectWholeSource();
        while (Splicer.IsComplete() && Step()) {
        }
        Splicer.CopyUpTo(End + 1);
        if (Splicer.IsComplete()) return true;
    }
    Splicer.Output.Free();
    return false;
}

// Does the next piece of work. False: the rest is to be copied as it is.
bool MarkupRewriter::Step() noexcept {
    const TagPlace place = FastestKernels().findTag(Position, End + 1);
    if (!place.open) return false;
    if (!place.close) return SkipComment(place.open + kCommentStart);
    const WCHAR* const tag = place.open + 1;
    Position = place.close + 1;
    if (ToLowerAscii(*tag) == TEXT('s')) {
        if (StartsIgnoringCase(tag, place.close, kScript)) return RemoveScript(place.open);
        if (StartsIgnoringCase(tag, place.close, kStyle)) return RewriteStyleElement(Position);
    }
    RewriteTag(tag, place.close);
    return true;
}

bool MarkupRewriter::SkipComment(const WCHAR* content) noexcept {
    const WCHAR* const last = FindText(kCommentEnd, content, End + 1);
    if (!last) return false;
    Position = last + kCommentEnd.text.size();
    return true;
}

bool MarkupRewriter::RemoveScript(const WCHAR* open) noexcept {
    const WCHAR* const closing = FindText(kScriptEnd, Position, End + 1);
    if (!closing) return false;
    Splicer.CopyUpTo(open);
    Position = closing + kScriptEnd.text.size();
    Splicer.SkipTo(Position);
    return true;
}

bool MarkupRewriter::RewriteStyleElement(const WCHAR* content) noexcept {
    const WCHAR* const closing = FindText(kStyleEnd, Position, End + 1);
    if (!closing) return false;
    Splicer.CopyUpTo(content);
    Position = closing + kStyleEnd.text.size();
    Splicer.SkipTo(closing);
    RewriteStyleText(content, closing, StylePlace::Sheet);
    return true;
}

// The first rule that fits a tag is the only one: a `style` of an image or anchor stays.
void MarkupRewriter::RewriteTag(const WCHAR* tag, const WCHAR* close) noexcept {
    // The first letter spares most tags the other questions.
    const WCHAR first = ToLowerAscii(*tag);
    if (first == TEXT('i') && StartsIgnoringCase(tag, close, kImage)) {
        RewriteImage(tag + kImage.size(), close);
    } else if (first == TEXT('l') && StartsIgnoringCase(tag, close, kLink)) {
        RewriteLink(tag + kLink.size(), close);
    } else if (first == TEXT('a') && StartsIgnoringCase(tag, close, kAnchor)) {
        RewriteAnchor(tag + kAnchor.size(), close);
    } else {
        RewriteStyleAttribute(tag, close);
    }
}

void MarkupRewriter::RewriteImage(const WCHAR* attributes, const WCHAR* close) noexcept {
    const auto value = Attribute(attributes, close, kSource);
    if (!value) return;
    const auto url = Decoded(*value, decoded_);
    Replace(*value, url && Resolver->ResolveImage(*url, resolved_));
}

void MarkupRewriter::RewriteLink(const WCHAR* attributes, const WCHAR* close) noexcept {
    const auto value = Attribute(attributes, close, kAddress);
    if (!value || value->empty()) return;
    const AUX::WStringView type = Attribute(attributes, close, kType).value_or(AUX::WStringView());
    const auto href = Decoded(*value, decoded_);
    Replace(*value, href && Resolver->ResolveLink(*href, type, resolved_));
}

void MarkupRewriter::RewriteAnchor(const WCHAR* attributes, const WCHAR* close) noexcept {
    const auto value = Attribute(attributes, close, kAddress);
    if (!value || value->empty()) return;
    const auto url = Decoded(*value, decoded_);
    Replace(*value, url && Resolver->ResolveAnchor(*url, resolved_));
}

void MarkupRewriter::RewriteStyleAttribute(const WCHAR* tag, const WCHAR* close) noexcept {
    const auto value = Attribute(tag, close, kStyle);
    if (!value || value->empty()) return;
    const WCHAR* const from = value->data();
    const WCHAR* const to = from + value->size();
    Splicer.CopyUpTo(from);
    Splicer.SkipTo(to);
    RewriteStyleText(
        from, to,
        from[-1] == TEXT('"') ? StylePlace::DoubleQuotedValue : StylePlace::SingleQuotedValue);
}

// The result goes right behind the output so far: a page that is one large style element takes no
// copies of it.
void MarkupRewriter::RewriteStyleText(const WCHAR* from, const WCHAR* to,
                                      StylePlace place) noexcept {
    const AUX::WStringView text(from, static_cast<std::size_t>(to - from));
    if (Splicer.IsComplete() &&
        !styleRewriter_.RewriteInto(Splicer.Output, BaseUrl, text, place, *StyleResolver)) {
        Splicer.Fail();
    }
}

void MarkupRewriter::Replace(AUX::WStringView value, bool isResolved) noexcept {
    if (!isResolved) {
        Splicer.Fail();
        return;
    }
    ReplaceQuotedValue(Splicer, value.data(), value.size(), resolved_);
}
