#include "capture/style_rewriter.h"

#include "capture/characters.h"
#include "capture/entities.h"
#include "capture/text_search.h"

namespace {

constexpr std::size_t kTokenLength = 4;  // "url("

// The text between the quotes that an address stands in, or the whole address.
AUX::WStringView WithoutQuotes(AUX::WStringView address) noexcept {
    if (address.empty() || !IsQuote(address.front())) return address;
    const std::size_t close = address.rfind(address.front());
    return close == 0 ? address : address.substr(1, close - 1);
}

}  // namespace

bool StyleRewriter::Rewrite(AUX::WStringView baseUrl, AUX::WStringView text,
                            StyleUrlResolver& resolver) noexcept {
    Splicer.Clear();
    if (text.empty()) return true;
    place_ = StylePlace::Sheet;
    if (BaseUrl.Assign(baseUrl)) {
        Splicer.Init(text.data(), text.data() + text.size() - 1);
        Splicer.ExpectWholeSource();
        Run(text, resolver);
        if (Splicer.IsComplete()) return true;
    }
    Splicer.Output.Free();
    return false;
}

bool StyleRewriter::RewriteInto(AUX::WString& output, AUX::WStringView baseUrl,
                                AUX::WStringView text, StylePlace place,
                                StyleUrlResolver& resolver) noexcept {
    Splicer.Clear();
    if (text.empty()) return true;
    if (!BaseUrl.Assign(baseUrl)) return false;
    place_ = place;
    Splicer.Init(text.data(), text.data() + text.size() - 1);
    Splicer.Output.Swap(output);
    Run(text, resolver);
    Splicer.Output.Swap(output);
    return Splicer.IsComplete();
}

void StyleRewriter::Run(AUX::WStringView text, StyleUrlResolver& resolver) noexcept {
    Resolver = &resolver;
    Position = text.data();
    End = text.data() + text.size() - 1;
    while (Splicer.IsComplete() && Step()) {
    }
    Splicer.CopyUpTo(End + 1);
}

// Rewrites the next `url()`. False: there is none, or it has no end, or memory ran out.
bool StyleRewriter::Step() noexcept {
    const WCHAR* const end = End + 1;
    const WCHAR* const token = FindText(kStyleUrl, Position, end);
    if (!token) return false;
    const WCHAR* const inside = token + kTokenLength;
    Position = inside;
    const WCHAR* at = inside;
    while (at != end && IsSpace(*at)) ++at;
    if (at == end) return false;
    const WCHAR quote = IsQuote(*at) ? *at++ : WCHAR{0};
    AUX::WStringView value;
    at = ReadValue(at, quote, value);
    if (!at) return false;
    const WCHAR* const close =
        *at == TEXT(')') ? at : FastestKernels().findUnit(at, end, TEXT(')'));
    if (close == end) return false;
    if (!value_.IsComplete() || !Resolve(value, quote)) {
        Splicer.Fail();
        return false;
    }
    const std::size_t stretch = static_cast<std::size_t>(inside - Splicer.Cursor);
    Splicer.CopyUpTo(inside);
    AppendAddress();
    // The next stretch is taken to be as long as this one.
    Splicer.FetchRoom(stretch);
    Splicer.SkipTo(close);
    Position = close;
    return true;
}

// Reads a value and gives its end, or null if it has none. A backslash makes the next character a
// plain one; only then the value is put together in value_.
const WCHAR* StyleRewriter::ReadValue(const WCHAR* at, WCHAR quote,
                                      AUX::WStringView& value) noexcept {
    const SearchKernels& kernels = FastestKernels();
    const WCHAR* const end = End + 1;
    const WCHAR* const start = at;
    value_.Clear();
    for (; (at = kernels.findValueEnd(at, end)) < end; ++at) {
        if (*at == TEXT('\\')) {
            if (!value_.Begin) value_.Init(start, End);
            value_.CopyUpTo(at);
            value_.SkipTo(++at);
            if (at == end) return nullptr;
        } else if (*at == TEXT(')') || (quote && *at == quote)) {
            value = {start, static_cast<std::size_t>(at - start)};
            if (value_.Begin) {
                value_.CopyUpTo(at);
                value = value_.Output;
            }
            return at;
        }
    }
    return nullptr;
}

// Resolves a value into resolved_.
bool StyleRewriter::Resolve(AUX::WStringView value, WCHAR quote) noexcept {
    const auto url = Decoded(value, decoded_);
    if (!url) return false;
    const bool startsWithReference =
        place_ != StylePlace::Sheet && !quote && value.starts_with(TEXT('&'));
    return Resolver->ResolveStyleUrl(BaseUrl, startsWithReference ? WithoutQuotes(*url) : *url,
                                     resolved_);
}

// Adds resolved_ in quotes that do not end the attribute. Its own quotes become references, which
// are quotes again where the style text of an attribute is read: there the one that would end the
// address gets a backslash.
void StyleRewriter::AppendAddress() noexcept {
    const WCHAR quote = place_ == StylePlace::DoubleQuotedValue ? TEXT('\'') : TEXT('"');
    Splicer.Append({&quote, 1});
    AUX::WStringView rest = resolved_;
    if (place_ != StylePlace::Sheet) {
        for (std::size_t at; (at = rest.find(quote)) != AUX::WStringView::npos;) {
            AppendEncoded(Splicer, rest.substr(0, at));
            Splicer.Append(TEXT("\\"));
            AppendEncoded(Splicer, rest.substr(at, 1));
            rest = rest.substr(at + 1);
        }
    }
    AppendEncoded(Splicer, rest);
    Splicer.Append({&quote, 1});
}
