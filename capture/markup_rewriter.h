#pragma once

#include "capture/style_rewriter.h"
#include "capture/text_splicer.h"
#include "foundation/wstring.h"

/// Gives the addresses that stand in rewritten markup. Each operation gets an address as written,
/// decoded, and puts the one to write into `output`: the same one where it can't be resolved.
/// Each gives false if memory ran out; the run then fails. Borrowed for one run.
class MarkupUrlResolver {
public:
    /// The `src` of an image; may be empty.
    [[nodiscard]] virtual bool ResolveImage(AUX::WStringView url,
                                            AUX::WString& output) noexcept = 0;

    /// The `href` of a link element, never empty as written.
    /// \param type  The value of its `type` as it stands, or empty.
    [[nodiscard]] virtual bool ResolveLink(AUX::WStringView href, AUX::WStringView type,
                                           AUX::WString& output) noexcept = 0;

    /// The `href` of an anchor, never empty as written.
    [[nodiscard]] virtual bool ResolveAnchor(AUX::WStringView url,
                                             AUX::WString& output) noexcept = 0;

protected:
    ~MarkupUrlResolver() = default;
};

/// Makes one pass over a page's markup. Takes script elements out, and puts resolved addresses into
/// images, links, anchors, style elements and `style` attributes; everything else is copied
/// unchanged, as well as all that stands behind something without an end. It is no parser: it knows
/// '<', '>' and a few names behind the '<'. Made for one run; not thread-safe.
class MarkupRewriter {
public:
    /// Rewrites a page; the result is Splicer.Output. The markup is borrowed for the call.
    /// \param baseUrl  The page's address, given to `styleResolver`.
    /// \return false only if memory ran out; Splicer.Output is then empty.
    [[nodiscard]] bool Rewrite(AUX::WStringView baseUrl, AUX::WStringView markup,
                               MarkupUrlResolver& resolver,
                               StyleUrlResolver& styleResolver) noexcept;

private:
    const WCHAR* End = nullptr;  // The last character.
    const WCHAR* Position = nullptr;
    MarkupUrlResolver* Resolver = nullptr;
    StyleUrlResolver* StyleResolver = nullptr;
    AUX::WString BaseUrl;

public:
    TextSplicer Splicer;

private:
    bool Step() noexcept;
    bool SkipComment(const WCHAR* content) noexcept;
    bool RemoveScript(const WCHAR* open) noexcept;
    bool RewriteStyleElement(const WCHAR* content) noexcept;
    void RewriteTag(const WCHAR* tag, const WCHAR* close) noexcept;
    void RewriteImage(const WCHAR* attributes, const WCHAR* close) noexcept;
    void RewriteLink(const WCHAR* attributes, const WCHAR* close) noexcept;
    void RewriteAnchor(const WCHAR* attributes, const WCHAR* close) noexcept;
    void RewriteStyleAttribute(const WCHAR* tag, const WCHAR* close) noexcept;
    void RewriteStyleText(const WCHAR* from, const WCHAR* to, StylePlace place) noexcept;
    void Replace(AUX::WStringView value, bool isResolved) noexcept;

    StyleRewriter styleRewriter_;
    AUX::WString decoded_;
    AUX::WString resolved_;
};
