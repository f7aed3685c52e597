#pragma once

#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "capture/markup_rewriter.h"
#include "platform/text.h"

/// What the fuzz targets of the rewriters share.
namespace rewriter_fuzz {

inline void Require(bool holds) {
    if (!holds) std::abort();
}

/// A text whose block ends where it does: of single bytes, or where the first byte is odd of units.
inline std::vector<WCHAR> MakeText(const std::uint8_t* data, std::size_t size) {
    std::vector<WCHAR> text;
    if (size == 0) return text;
    const std::size_t step = 1 + data[0] % 2;
    for (std::size_t at = 1; at + step <= size; at += step) {
        text.push_back(static_cast<WCHAR>(step == 1 ? data[at] : data[at] | data[at + 1] << 8));
    }
    text.shrink_to_fit();
    return text;
}

inline AUX::WStringView View(const std::vector<WCHAR>& text) { return {text.data(), text.size()}; }

/// Gives a mark for each address.
class Marker final : public MarkupUrlResolver, public StyleUrlResolver {
public:
    static constexpr const WCHAR* kMark = TEXT("@mark@");

    bool ResolveImage(AUX::WStringView, AUX::WString& output) noexcept override {
        ++count;
        return output.Assign(kMark);
    }
    bool ResolveLink(AUX::WStringView href, AUX::WStringView,
                     AUX::WString& output) noexcept override {
        return ResolveImage(href, output);
    }
    bool ResolveAnchor(AUX::WStringView url, AUX::WString& output) noexcept override {
        return ResolveImage(url, output);
    }
    bool ResolveStyleUrl(AUX::WStringView, AUX::WStringView url,
                         AUX::WString& output) noexcept override {
        return ResolveImage(url, output);
    }

    int count = 0;
};

/// Requires that what lies between the marks stands in the source in the same order, with the first
/// stretch at its beginning and the last one at its end.
inline void RequireOnlyMarksAreNew(AUX::WStringView source, AUX::WStringView output, int marks) {
    const platform::WideView mark(Marker::kMark);
    if (source.find(mark) != AUX::WStringView::npos) return;
    std::size_t from = 0;
    for (; marks > 0; --marks) {
        const std::size_t at = output.find(mark);
        Require(at != AUX::WStringView::npos && at > 0 && at + mark.size() < output.size());
        const WCHAR quote = output[at - 1];
        Require((quote == '"' || quote == '\'') && output[at + mark.size()] == quote);
        const AUX::WStringView stretch = output.substr(0, at - 1);
        const std::size_t place = from == 0 ? 0 : source.find(stretch, from);
        Require(source.substr(place).starts_with(stretch));
        from = place + stretch.size();
        output = output.substr(at + mark.size() + 1);
    }
    Require(from + output.size() <= source.size() && source.ends_with(output));
    Require(from > 0 || output.size() == source.size());
}

}  // namespace rewriter_fuzz
