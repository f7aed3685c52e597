#pragma once

#include "capture/text_splicer.h"
#include "foundation/wstring.h"

/// Gives the address that stands in a rewritten style text. Borrowed for one run.
class StyleUrlResolver {
public:
    /// Resolves one `url()`.
    /// \param base    The base address that the run was given.
    /// \param url     The address as written, decoded; may be empty.
    /// \param output  Gets the address to write: `url` itself where it can't be resolved.
    /// \return false if memory ran out; the run then fails.
    [[nodiscard]] virtual bool ResolveStyleUrl(AUX::WStringView base, AUX::WStringView url,
                                               AUX::WString& output) noexcept = 0;

protected:
    ~StyleUrlResolver() = default;
};

/// Where a style text stands, which decides the quotes that are put around an address.
enum class StylePlace {
    Sheet,              ///< A sheet or a style element: double quotes.
    DoubleQuotedValue,  ///< An attribute between double quotes: single quotes.
    SingleQuotedValue,  ///< An attribute between single quotes: double quotes.
};

/// Puts a resolved address into each `url()` of a style text. It knows that one token, wherever it
/// stands, and copies all else unchanged, as well as everything behind a `url(` without end. Made
/// for one text; not thread-safe.
class StyleRewriter {
public:
    /// Rewrites a text; the result is Splicer.Output. The text is borrowed for the call.
    /// \return false only if memory ran out; Splicer.Output is then empty.
    [[nodiscard]] bool Rewrite(AUX::WStringView baseUrl, AUX::WStringView text,
                               StyleUrlResolver& resolver) noexcept;

    /// Rewrites a text that stands in markup, and adds the result to `output`. In an attribute
    /// value, which is not decoded first, an address may be quoted by references
    /// (`url(&quot;a.png&quot;)`): it is resolved without them.
    /// \return false only if memory ran out; `output` then holds a part of the result.
    [[nodiscard]] bool RewriteInto(AUX::WString& output, AUX::WStringView baseUrl,
                                   AUX::WStringView text, StylePlace place,
                                   StyleUrlResolver& resolver) noexcept;

private:
    const WCHAR* End = nullptr;  // The last character.
    const WCHAR* Position = nullptr;
    StyleUrlResolver* Resolver = nullptr;
    AUX::WString BaseUrl;

public:
    TextSplicer Splicer;

private:
    void Run(AUX::WStringView text, StyleUrlResolver& resolver) noexcept;
    bool Step() noexcept;
    const WCHAR* ReadValue(const WCHAR* at, WCHAR quote, AUX::WStringView& value) noexcept;
    bool Resolve(AUX::WStringView value, WCHAR quote) noexcept;
    void AppendAddress() noexcept;

    StylePlace place_ = StylePlace::Sheet;
    TextSplicer value_;
    AUX::WString decoded_;
    AUX::WString resolved_;
};
