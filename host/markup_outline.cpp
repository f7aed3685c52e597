#include "host/markup_outline.h"

#include <algorithm>

#include "host/html_text.h"
#include "host/markup_scanner.h"

namespace host {
namespace {

using platform::WideString;
using platform::WideView;

constexpr WideView kVoids[] = {TEXT("area"),  TEXT("base"), TEXT("br"),     TEXT("col"),
                               TEXT("embed"), TEXT("hr"),   TEXT("img"),    TEXT("input"),
                               TEXT("link"),  TEXT("meta"), TEXT("source"), TEXT("track"),
                               TEXT("wbr"),   TEXT("frame")};
constexpr WideView kRawTexts[] = {TEXT("script"), TEXT("style"), TEXT("title"), TEXT("textarea")};

template <std::size_t N>
bool IsOneOf(const WideView (&names)[N], WideView name) {
    return std::find(std::begin(names), std::end(names), name) != std::end(names);
}

/// Walks the attributes of a start tag.
class AttributeWalk {
public:
    explicit AttributeWalk(WideView tag) : tag_(tag) {
        ++at_;
        while (at_ < tag_.size() && (IsLetter(tag_[at_]) || IsDigit(tag_[at_]))) ++at_;
    }

    bool Next(WideString& name, AttributePlace& place) {
        while (at_ < tag_.size() && (IsBlank(tag_[at_]) || tag_[at_] == '/')) ++at_;
        if (at_ >= tag_.size() || tag_[at_] == '>') return false;
        name.clear();
        // A '=' in front belongs to the name.
        do {
            name.push_back(LowerOf(tag_[at_++]));
        } while (at_ < tag_.size() && !IsBlank(tag_[at_]) && tag_[at_] != '=' && tag_[at_] != '>' &&
                 tag_[at_] != '/');
        place = {at_, at_, {}};
        std::size_t next = at_;
        while (next < tag_.size() && IsBlank(tag_[next])) ++next;
        if (next >= tag_.size() || tag_[next] != '=') return true;
        at_ = next + 1;
        while (at_ < tag_.size() && IsBlank(tag_[at_])) ++at_;
        TakeValue(place);
        return true;
    }

private:
    void TakeValue(AttributePlace& place) {
        place.start = at_;
        std::size_t from = at_;
        std::size_t to = at_;
        if (at_ < tag_.size() && (tag_[at_] == '"' || tag_[at_] == '\'')) {
            from = at_ + 1;
            to = std::min(tag_.find(tag_[at_], from), tag_.size());
            at_ = std::min(to + 1, tag_.size());
        } else {
            while (at_ < tag_.size() && !IsBlank(tag_[at_]) && tag_[at_] != '>') ++at_;
            to = at_;
        }
        place.end = at_;
        place.value = DecodeReferences(tag_.substr(from, to - from));
    }

    WideView tag_;
    std::size_t at_ = 0;
};

WideString EncodeValue(WideView value) {
    WideString out;
    for (const WCHAR c : value) {
        if (c == '&') {
            out += TEXT("&amp;");
        } else if (c == '"') {
            out += TEXT("&quot;");
        } else {
            out += c;
        }
    }
    return out;
}

bool HasWord(WideView words, WideView word) {
    for (std::size_t at = words.find(word); at != WideView::npos; at = words.find(word, at + 1)) {
        const bool starts = at == 0 || IsBlank(words[at - 1]);
        const std::size_t end = at + word.size();
        if (starts && (end == words.size() || IsBlank(words[end]))) return true;
    }
    return false;
}

}  // namespace

std::vector<OutlineElement> ReadOutline(WideView markup) {
    std::vector<OutlineElement> elements;
    std::vector<std::size_t> open;
    MarkupScanner scanner(markup);
    WideView text;
    WideString name;
    WideView tag;
    const auto close = [&](std::size_t contentEnd, std::size_t end) {
        elements[open.back()].contentEnd = contentEnd;
        elements[open.back()].end = end;
        open.pop_back();
    };
    while (scanner.Next(text, name, tag)) {
        const std::size_t at =
            tag.empty() ? 0 : static_cast<std::size_t>(tag.data() - markup.data());
        if (name.starts_with('/')) {
            const auto same = [&](std::size_t i) {
                return WideView(name).substr(1) == elements[i].name;
            };
            if (std::none_of(open.begin(), open.end(), same)) continue;
            while (!same(open.back())) close(at, at);
            close(at, at + tag.size());
        } else if (!name.empty()) {
            OutlineElement element;
            element.name = name;
            element.open = at;
            element.content = element.contentEnd = element.end = at + tag.size();
            if (!open.empty()) element.parent = open.back();
            elements.push_back(std::move(element));
            if (IsOneOf(kVoids, name)) continue;
            open.push_back(elements.size() - 1);
            if (IsOneOf(kRawTexts, name)) (void)scanner.TakeRaw(name);
        }
    }
    while (!open.empty()) close(markup.size(), markup.size());
    return elements;
}

std::optional<AttributePlace> FindAttributePlace(WideView tag, WideView name) {
    AttributeWalk walk(tag);
    WideString found;
    AttributePlace place;
    while (walk.Next(found, place)) {
        if (found == name) return place;
    }
    return std::nullopt;
}

WideString SetTagAttribute(WideView tag, WideView name, WideView value) {
    WideString quoted(TEXT("\""));
    quoted += EncodeValue(value);
    quoted += TEXT('"');
    const auto place = FindAttributePlace(tag, name);
    WideString out(tag);
    if (place && place->end > place->start) {
        return out.replace(place->start, place->end - place->start, quoted);
    }
    quoted.insert(quoted.begin(), TEXT('='));
    if (place) return out.insert(place->start, quoted);
    const std::size_t close = out.find_last_not_of(TEXT("/> \t\r\n"));
    WideString attribute(TEXT(" "));
    attribute.append(name).append(quoted);
    return out.insert(close + 1, attribute);
}

WideString TextOfMarkup(WideView markup) {
    WideString all;
    MarkupScanner scanner(markup);
    WideView text;
    WideString name;
    WideView tag;
    bool more = true;
    while (more) {
        more = scanner.Next(text, name, tag);
        all += text;
        if (!more) break;
        if (name == TEXT("script") || name == TEXT("style")) (void)scanner.TakeRaw(name);
        if (name == TEXT("br") || name == TEXT("/p") || name == TEXT("/div")) all += ' ';
    }
    return CollapseBlanks(DecodeReferences(all));
}

bool MatchesSelector(WideView elementName, WideView tag, WideView selector) {
    const std::size_t mark = selector.find_first_of(TEXT("#."));
    const WideView name = selector.substr(0, mark);
    if (!name.empty() && name != TEXT("*") && LowerOf(name) != elementName) return false;
    if (mark == WideView::npos) return !name.empty();
    const auto place = FindAttributePlace(tag, selector[mark] == '#' ? TEXT("id") : TEXT("class"));
    if (!place) return false;
    const WideView wanted = selector.substr(mark + 1);
    return selector[mark] == '#' ? place->value == wanted : HasWord(place->value, wanted);
}

}  // namespace host
