#include "host/markup_scanner.h"

#include <algorithm>

namespace host {

using platform::WideString;
using platform::WideView;

WideString LowerOf(WideView text) {
    WideString lower(text);
    for (WCHAR& c : lower) c = LowerOf(c);
    return lower;
}

bool MarkupScanner::Next(WideView& text, WideString& name, WideView& tag) {
    std::size_t open = rest_.find('<');
    while (open != WideView::npos && !IsTagAt(open)) open = rest_.find('<', open + 1);
    text = rest_.substr(0, open);
    if (open == WideView::npos) return Stop();
    rest_.remove_prefix(open);
    if (rest_.starts_with(TEXT("<!--"))) {
        const std::size_t close = rest_.find(TEXT("-->"), 4);
        if (close == WideView::npos) return Stop();
        rest_.remove_prefix(close + 3);
        name.clear();
        tag = {};
        return true;
    }
    name.clear();
    std::size_t i = 1;
    if (i < rest_.size() && rest_[i] == '/') name.push_back(rest_[i++]);
    while (i < rest_.size() && (IsLetter(rest_[i]) || IsDigit(rest_[i]))) {
        name.push_back(LowerOf(rest_[i++]));
    }
    const std::size_t close = EndOfTag(i);
    if (close == WideView::npos) return Stop();
    tag = rest_.substr(0, close);
    rest_.remove_prefix(close);
    return true;
}

WideView MarkupScanner::TakeRaw(WideView name) {
    for (std::size_t at = 0; at < rest_.size(); ++at) {
        at = rest_.find(TEXT("</"), at);
        if (at == WideView::npos) break;
        const WideView found = rest_.substr(at + 2, name.size());
        if (found.size() == name.size() &&
            std::equal(found.begin(), found.end(), name.begin(),
                       [](WCHAR a, WCHAR b) { return LowerOf(a) == b; })) {
            const WideView raw = rest_.substr(0, at);
            rest_.remove_prefix(at);
            return raw;
        }
    }
    const WideView raw = rest_;
    rest_ = {};
    return raw;
}

bool MarkupScanner::Stop() {
    rest_ = {};
    return false;
}

/// Whether the '<' there opens a tag or a comment; in "1 < 2" it is text.
bool MarkupScanner::IsTagAt(std::size_t open) const {
    const WCHAR next = open + 1 < rest_.size() ? rest_[open + 1] : WCHAR{0};
    return IsLetter(next) || next == '/' || next == '!' || next == '?';
}

/// Behind the '>' that ends the tag; one in a quoted value does not count.
std::size_t MarkupScanner::EndOfTag(std::size_t i) const {
    WCHAR quote = 0;
    for (; i < rest_.size(); ++i) {
        const WCHAR c = rest_[i];
        if (quote) {
            if (c == quote) quote = 0;
        } else if (c == '"' || c == '\'') {
            quote = c;
        } else if (c == '>') {
            return i + 1;
        }
    }
    return WideView::npos;
}

}  // namespace host
