#pragma once

#include <algorithm>
#include <string>

#include "cab/json_text.h"
#include "platform/text.h"

/// Reading a text the slow way: unit by unit, each level searched anew. Both give a line that shows
/// the tree: null, T, F, #number's text, 'text', [..], {name=..}, and comments as <..> in front.
namespace json_reference {

using Text = platform::WideString;

constexpr std::size_t kNone = Text::npos;

inline Text Strip(const Text& in) {
    Text out;
    const auto comment = [&](std::size_t start, std::size_t end) {
        out += TEXT('#') + in.substr(start, end - start) + TEXT('#');
    };
    for (std::size_t at = 0; at < in.size(); ++at) {
        const WCHAR unit = in[at];
        const WCHAR next = at + 1 < in.size() ? in[at + 1] : WCHAR{0};
        if (unit == '#' || (unit == '/' && next == '/')) {
            const std::size_t end = std::min(in.find('\n', at), in.size());
            comment(at + (unit == '#' ? 1 : 2), end);
            at = end;
        } else if (unit == '/' && next == '*') {
            const std::size_t end = std::min(in.find(TEXT("*/"), at + 2), in.size());
            comment(at + 2, end);
            at = end + 1;
        } else if (unit == '"') {
            out += unit;
            while (++at < in.size() && in[at] != '"') {
                out += in[at];
                if (in[at] == '\\' && ++at < in.size()) out += in[at] == '"' ? WCHAR{1} : in[at];
            }
            if (at < in.size()) out += '"';
        } else if (unit == '/' || unit > 0x7E ||
                   (unit < 0x20 && unit != '\t' && unit != '\n' && unit != '\r')) {
            break;
        } else if (unit > 0x20) {
            out += unit;
        }
    }
    return out;
}

inline std::size_t FindUnit(const Text& text, std::size_t at, WCHAR wanted) {
    for (; at < text.size(); ++at) {
        const WCHAR unit = text[at];
        if (unit == wanted) return at;
        if (unit == ']' || unit == '}') return kNone;
        const bool opens = unit == '[' || unit == '{';
        if (unit != '"' && !opens) continue;
        const WCHAR close = opens ? static_cast<WCHAR>(unit + 2) : unit;
        for (int depth = 1; depth > 0;) {
            if (++at >= text.size() || text[at] == 0) return kNone;
            if (text[at] == close) {
                --depth;
            } else if (text[at] == unit) {
                ++depth;
            } else if (text[at] == '"') {
                do {
                    if (++at >= text.size() || text[at] == 0) return kNone;
                } while (text[at] != '"');
            }
        }
    }
    return kNone;
}

inline std::uint32_t Hex(const Text& text, std::size_t at, std::size_t count) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint32_t unit = text[at + i];
        value = value * 16 + unit - (unit < 0x3A ? 0x30 : unit >= 0x61 ? 0x57 : 0x37);
    }
    return value & 0xFFFF;
}

inline Text Decode(const Text& in) {
    Text out;
    for (std::size_t at = 0; at < in.size(); ++at) {
        if (in[at] != '\\' || at + 1 == in.size()) {
            out += in[at];
            continue;
        }
        const WCHAR unit = in[++at];
        const std::size_t left = in.size() - at - 1;
        const std::size_t simple = Text(TEXT("\1bfnrtv")).find(unit);
        if (simple != kNone) {
            out += TEXT("\"\b\f\n\r\t\v")[simple];
        } else if (unit >= '0' && unit <= '7' && left >= 2) {
            out += static_cast<WCHAR>(((unit - 48) * 8 + in[at + 1] - 48) * 8 + in[at + 2] - 48);
            at += 2;
        } else if (unit == 'x' && left >= 2) {
            out += static_cast<WCHAR>(Hex(in, at + 1, 2));
            at += 2;
        } else if (unit == 'u' && left >= 4) {
            const std::uint32_t first = Hex(in, at + 1, 4);
            at += 4;
            const bool isHalf = first >= 0xD801 && first <= 0xDBFE && left >= 10 &&
                                in[at + 1] == '\\' && in[at + 2] == 'u';
            if (isHalf && (Hex(in, at + 3, 4) & 0xFC00) != 0xDC00) continue;
            out += static_cast<WCHAR>(first);
        } else {
            out += unit;
        }
    }
    return out;
}

inline Text TakeComments(Text& piece) {
    Text comment;
    for (bool isFirst = true; !piece.empty() && piece[0] == '#'; isFirst = false) {
        const std::size_t end = std::min(piece.find('#', 1), piece.size());
        comment += (isFirst ? TEXT("") : TEXT("\n")) + piece.substr(1, end - 1);
        piece.erase(0, end + 1);
    }
    return comment.empty() ? comment : TEXT('<') + comment + TEXT('>');
}

inline bool IsNumber(const Text& text) {
    const auto at = [&](std::size_t i) { return i < text.size() ? text[i] : WCHAR{0}; };
    const auto all = [&](std::size_t from, const WCHAR* set) {
        return text.find_first_not_of(set, from) == kNone;
    };
    const auto isDigit = [](WCHAR unit) { return unit >= '0' && unit <= '9'; };
    const auto isExponent = [](WCHAR unit) { return unit == 'e' || unit == 'E'; };
    bool hasPoint = false;
    bool hasExponent = false;
    std::size_t i = 1;
    if (at(0) == '+' || at(0) == '-') {
        if (text.size() == 1 || at(1) == '.' || isExponent(at(1))) return false;
    } else if (at(0) == '.') {
        hasPoint = true;
    } else if (at(0) == '0' && text.size() > 1) {
        if (at(1) >= '1' && at(1) <= '7') return all(1, TEXT("01234567"));
        if (at(1) == 'x') return all(2, TEXT("0123456789ABCDEFabcdef"));
        hasPoint = at(1) == '.';
        hasExponent = isExponent(at(1));
        if (!hasPoint && !hasExponent) return false;
        if (hasExponent && !isDigit(at(2)) && at(2) != '+' && at(2) != '-') return false;
        i = hasExponent ? 3 : 2;
    } else if (!isDigit(at(0))) {
        return false;
    }
    for (; i < text.size(); ++i) {
        if (isDigit(text[i])) continue;
        if (text[i] == '.' && !hasPoint && !hasExponent) {
            hasPoint = true;
        } else if (isExponent(text[i]) && !hasExponent) {
            hasExponent = true;
            if (at(i + 1) == '+' || at(i + 1) == '-') ++i;
            if (!isDigit(at(i + 1))) return false;
        } else {
            return false;
        }
    }
    return true;
}

inline Text ShowPiece(const Text& piece);

inline Text ShowArray(const Text& text) {
    Text shown = TEXT("[");
    for (std::size_t start = 1; text.size() > 2;) {
        const std::size_t comma = FindUnit(text, start, ',');
        Text piece = text.substr(start, std::min(comma, text.size() - 1) - start);
        if (FindUnit(piece, 0, ':') != kNone) return TEXT("null");
        shown += TakeComments(piece);
        shown += ShowPiece(piece);
        if (comma == kNone) break;
        shown += ',';
        start = comma + 1;
    }
    return shown + TEXT(']');
}

inline Text ShowObject(const Text& text) {
    Text shown = TEXT("{");
    for (std::size_t start = 1; text.size() > 2;) {
        const std::size_t colon = FindUnit(text, start, ':');
        if (colon == kNone) return TEXT("null");
        Text key = colon > start ? text.substr(start, colon - 1 - start) : Text();
        shown += TakeComments(key);
        shown += Decode(key.substr(key.empty() ? 0 : 1)) + TEXT('=');
        const std::size_t comma = FindUnit(text, colon + 1, ',');
        shown += ShowPiece(text.substr(colon + 1, std::min(comma, text.size() - 1) - colon - 1));
        if (comma == kNone) break;
        shown += ',';
        start = comma + 1;
    }
    return shown + TEXT('}');
}

inline Text ShowPiece(const Text& piece) {
    if (piece.size() >= 2 && piece.front() == '"' && piece.back() == '"') {
        return TEXT('\'') + Decode(piece.substr(1, piece.size() - 2)) + TEXT('\'');
    }
    if (piece == TEXT("true")) return TEXT("T");
    if (piece == TEXT("false")) return TEXT("F");
    if (!piece.empty() && piece.front() == '[' && piece.back() == ']') return ShowArray(piece);
    if (!piece.empty() && piece.front() == '{' && piece.back() == '}') return ShowObject(piece);
    return IsNumber(piece) ? TEXT('#') + piece : TEXT("null");
}

/// What ParseJson has to make of a text.
inline Text Expected(const Text& source) {
    Text text = Strip(source);
    const Text comment = TakeComments(text);
    const bool isContainer = !text.empty() && (text[0] == '[' || text[0] == '{') &&
                             text.back() == static_cast<WCHAR>(text[0] + 2);
    return isContainer ? comment + ShowPiece(text) : TEXT("null");
}

/// The tree that a node stands for; reads all of it.
inline Text Show(AUX::CAB::JsonNode& node) {
    using namespace AUX::CAB;
    Text shown;
    if (node.comment && node.comment->length > 0) {
        shown = TEXT('<') + Text(node.Comment()) + TEXT('>');
    }
    const JsonChildSpan children = ChildrenOf(node);
    switch (node.type) {
        case JsonType::Null:
            return shown + TEXT("null");
        case JsonType::Boolean:
            return shown + (AsBool(node) ? TEXT('T') : TEXT('F'));
        case JsonType::Number:
            return shown + TEXT('#') + Text(AsText(node));
        case JsonType::String:
            return shown + TEXT('\'') + Text(AsText(node)) + TEXT('\'');
        default:
            break;
    }
    const bool isArray = node.type == JsonType::Array;
    shown += isArray ? TEXT('[') : TEXT('{');
    for (std::uint32_t i = 0; i < children.count; ++i) {
        if (i > 0) shown += ',';
        JsonNode& child = *children.first[i];
        Text value = Show(child);
        if (!isArray) {
            // The comment stands in front of the name.
            const std::size_t front =
                child.comment && child.comment->length > 0 ? child.comment->length + 2 : 0;
            value.insert(front, Text(child.Name()) + TEXT('='));
        }
        shown += value;
    }
    return shown + (isArray ? TEXT(']') : TEXT('}'));
}

}  // namespace json_reference
