#pragma once

#include "capture/markup_rewriter.h"
#include "platform/text.h"

/// Resolves as a page would whose folder is "http://h/d/" and whose sheet "s.css" has a local copy,
/// and notes each question in a list.
class AddressResolver final : public MarkupUrlResolver, public StyleUrlResolver {
public:
    static constexpr const WCHAR* kPage = TEXT("http://h/d/p.html");

    bool ResolveImage(AUX::WStringView url, AUX::WString& output) noexcept override {
        return Resolve(TEXT("img "), url, output);
    }
    bool ResolveLink(AUX::WStringView href, AUX::WStringView type,
                     AUX::WString& output) noexcept override {
        if (!Resolve(TEXT("link "), href, output)) return false;
        asked += TEXT("|") + platform::WideString(type);
        if (href != TEXT("s.css") || type != TEXT("text/css")) return true;
        return output.Assign(TEXT("file:///C:/T/qvd_1_files/c1.tmp"));
    }
    bool ResolveAnchor(AUX::WStringView url, AUX::WString& output) noexcept override {
        return Resolve(TEXT("a "), url, output);
    }
    bool ResolveStyleUrl(AUX::WStringView base, AUX::WStringView url,
                         AUX::WString& output) noexcept override {
        return Resolve(base == kPage ? TEXT("url ") : TEXT("(other base) url "), url, output);
    }

    platform::WideString asked;  ///< "img x.png; a y.html"

private:
    bool Resolve(AUX::WStringView kind, AUX::WStringView url, AUX::WString& output) {
        asked += asked.empty() ? TEXT("") : TEXT("; ");
        asked += platform::WideString(kind) + platform::WideString(url);
        if (url.empty()) return output.Assign(kPage);
        const bool isAbsolute = url.find(TEXT(':')) != AUX::WStringView::npos;
        return output.Assign(isAbsolute ? TEXT("") : TEXT("http://h/d/")) && output.Append(url);
    }
};
