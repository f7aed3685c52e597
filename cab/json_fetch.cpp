#include "cab/json_fetch.h"

#include <algorithm>
#include <new>
#include <vector>

#include "cab/json_escapes.h"
#include "cab/json_number.h"
#include "cab/json_scan.h"
#include "cab/library_allocator.h"

namespace AUX::CAB {
namespace {

using Children = std::vector<JsonNode*>;

/// The text of a piece with its escapes decoded, in the source's memory unless it stays as it is.
WStringView Decode(JsonSource& source, WStringView piece, bool& hasEscapes) {
    hasEscapes = HasBackslash(piece);
    if (!hasEscapes) return piece;
    auto* const out = static_cast<WCHAR*>(source.Allocate(piece.size() * sizeof(WCHAR)));
    const std::size_t length = DecodeEscapes(piece, out);
    return {out, length};
}

void SetText(JsonNode& node, WStringView text) noexcept {
    node.text = text.data();
    node.textLength = static_cast<std::uint32_t>(text.size());
}

JsonNode& MakeParsedNode(JsonSource& source, JsonType type, WStringView raw) {
    auto* const node = new (source.Allocate(sizeof(JsonNode))) JsonNode{};
    node->type = type;
    node->isParsed = true;
    SetText(*node, raw);
    node->place = JsonTextScan::kNoPlace;
    node->refCount = 1;
    node->source = &source;
    return *node;
}

void SetFetched(JsonNode& node, JsonType type, bool value) noexcept {
    node.type = type;
    node.fetched = true;
    if (type == JsonType::Boolean) node.boolean = value;
}

/// Gives a new node the type that its piece has. \param isPlain  No unit of a string in it stands
/// for another one.
void ClassifyPiece(JsonNode& node, WStringView piece, bool isPlain) noexcept {
    const WCHAR first = piece.empty() ? WCHAR{0} : piece.front();
    const WCHAR last = piece.empty() ? WCHAR{0} : piece.back();
    switch (first) {
        case '"':
            if (last != '"' || piece.size() < 2) break;
            node.type = JsonType::String;
            node.isPlain = isPlain;
            return;
        case '[':
            if (last != ']') break;
            node.type = JsonType::Array;
            return;
        case '{':
            if (last != '}') break;
            node.type = JsonType::Object;
            return;
        case 'F':
        case 'f':
            if (piece == WStringView(TEXT("false"))) {
                return SetFetched(node, JsonType::Boolean, false);
            }
            break;
        case 'T':
        case 't':
            if (piece == WStringView(TEXT("true"))) {
                return SetFetched(node, JsonType::Boolean, true);
            }
            break;
        default:
            // Most numbers are short, and known as soon as their units were looked at.
            node.isPlain = ReadShortNumber(piece, node.number);
            if (!node.isPlain && !IsJsonNumber(piece)) break;
            node.type = JsonType::Number;
            return;
    }
    BecomeNull(node);
}

/// The splitting of one container, by either scan.
template <class Scan>
class Splitter {
public:
    Splitter(const JsonNode& node, Scan scan, Children& children) noexcept
        : source_(*node.source),
          scan_(scan),
          children_(children),
          end_(static_cast<std::uint32_t>(node.text + node.textLength - source_.Text()) - 1),
          at_(static_cast<std::uint32_t>(node.text - source_.Text()) + 1),
          hasKeys_(node.type == JsonType::Object) {}

    /// \return false if the container is malformed.
    bool Run() { return hasKeys_ ? SplitObject() : SplitArray(); }

private:
    bool SplitArray() {
        std::uint32_t found = 0;
        bool isColon = false;
        while (scan_.Next(found, isColon)) {
            if (isColon) return false;
            AddChild(NewChild(), found);
            Begin(found);
        }
        AddChild(NewChild(), end_);
        return true;
    }

    bool SplitObject() {
        for (;;) {
            std::uint32_t colon = 0;
            if (!Find(true, colon)) return false;
            JsonNode& child = NewChild();
            SetKey(child, colon);
            Begin(colon);
            std::uint32_t comma = 0;
            const bool isLast = !Find(false, comma);
            AddChild(child, isLast ? end_ : comma);
            if (isLast) return true;
            Begin(comma);
        }
    }

    bool Find(bool wantsColon, std::uint32_t& found) noexcept {
        bool isColon = false;
        while (scan_.Next(found, isColon)) {
            if (isColon == wantsColon) return true;
        }
        return false;
    }
    void Begin(std::uint32_t separator) noexcept {
        at_ = separator + 1;
        scan_.BeginPiece();
    }
    WStringView Piece(std::uint32_t start, std::uint32_t end) const noexcept {
        return {source_.Text() + start, end > start ? end - start : 0};
    }

    JsonNode& NewChild() { return MakeParsedNode(source_, JsonType::Null, {}); }

    void TakeFront(JsonNode& node, WStringView& front) {
        if (!front.empty() && front[0] == '#') node.comment = TakeComments(source_, front);
    }

    void SetKey(JsonNode& node, std::uint32_t colon) {
        // The unit before the colon is taken for the closing quote, and stands right behind.
        WStringView key = Piece(at_, colon - 1);
        const bool isPlain = scan_.IsPlain(colon);
        TakeFront(node, key);
        const bool hasQuotes = !key.empty() && key[0] == '"' && *key.end() == '"';
        bool hasEscapes = false;
        key = key.substr(1);
        const WStringView name = isPlain ? key : Decode(source_, key, hasEscapes);
        node.name = name.data();
        node.nameLength = static_cast<std::uint32_t>(name.size());
        // A name with escapes needs them again when it is written, and one that other units
        // than quotes stood around may have quotes in it.
        node.nameEncoded = hasEscapes || !hasQuotes;
    }

    void AddChild(JsonNode& node, std::uint32_t end) {
        WStringView piece = Piece(at_, end);
        const bool isPlain = scan_.IsPlain(end);
        if (!hasKeys_) TakeFront(node, piece);
        SetText(node, piece);
        ClassifyPiece(node, piece, isPlain);
        if (node.IsContainer()) {
            const auto start = static_cast<std::uint32_t>(piece.data() - source_.Text());
            node.place = scan_.PlaceOf(start);
        }
        children_.push_back(&node);
    }

    JsonSource& source_;
    Scan scan_;
    Children& children_;
    std::uint32_t end_;  // The closing bracket.
    std::uint32_t at_;   // Where the present piece begins.
    bool hasKeys_;
};

/// The marks to go over, if there are any that serve; `place` becomes the opening bracket's.
const JsonMark* MarksFor(JsonSource& source, std::uint32_t start, std::uint32_t length,
                         std::uint64_t& place) {
    // Often little is read: then the marks of all that is not would cost more than they save.
    if (!source.HasMarks() && source.MayScan(start, length)) return nullptr;
    const JsonMark* const marks = source.MarksOfText();
    if (!marks) return nullptr;
    if (place == JsonTextScan::kNoPlace) place = source.MarkAt(start);
    const bool isThere = place < source.MarkCount() && marks[place].position == start;
    return isThere ? marks : nullptr;
}

// The text of the comment that a piece begins with. One that something cut in two is all the piece.
WStringView TakeLine(WStringView& piece) noexcept {
    const std::size_t close = std::min(piece.find(TEXT('#'), 1), piece.size());
    const WStringView line = piece.substr(1, close - 1);
    piece = piece.substr(close + 1);
    return line;
}

bool SplitContainer(JsonNode& node, Children& children) {
    JsonSource& source = *node.source;
    const auto start = static_cast<std::uint32_t>(node.text - source.Text());
    const std::uint32_t end = start + node.textLength;
    std::uint64_t place = node.place;
    if (const JsonMark* const marks = MarksFor(source, start, node.textLength, place)) {
        const JsonMarkScan scan(marks, source.MarkCount(), static_cast<std::uint32_t>(place) + 1,
                                end);
        return Splitter(node, scan, children).Run();
    }
    return Splitter(node, JsonTextScan(source.Text(), start + 1, end), children).Run();
}

/// Puts the children into a list of exactly their number. A node that lies in the source has it
/// there; another one owns its list and counts for each child.
JsonChildren* MakeList(JsonNode& node, const Children& children) {
    if (children.empty()) return nullptr;
    const std::size_t bytes = sizeof(JsonChildren) + children.size() * sizeof(JsonNode*);
    auto* const list = static_cast<JsonChildren*>(node.isParsed ? node.source->Allocate(bytes)
                                                                : AllocateOrThrow(bytes));
    list->count = list->capacity = static_cast<std::uint32_t>(children.size());
    JsonNode** place = list->Items();
    for (JsonNode* const child : children) *place++ = child;  // Mostly few: no call.
    if (!node.isParsed) node.source->AddRef(static_cast<std::int64_t>(children.size()));
    return list;
}

void FetchContainer(JsonNode& node) {
    Children& children = node.source->Scratch();
    if (node.textLength > 2 && !SplitContainer(node, children)) return BecomeNull(node);
    node.children = MakeList(node, children);
    SetText(node, {});
    node.fetched = true;
}

void FetchString(JsonNode& node) {
    const WStringView raw = node.Text().substr(1, node.textLength - 2);
    bool hasEscapes = false;
    SetText(node, Decode(*node.source, raw, hasEscapes));
    node.textEncoded = hasEscapes;
    node.fetched = true;
}

}  // namespace

void BecomeNull(JsonNode& node) noexcept {
    node.type = JsonType::Null;
    SetText(node, TEXT("null"));
    node.number = 0;
    node.fetched = true;
}

JsonNode* NewParsedNode(JsonSource& source, JsonType type, WStringView raw) {
    return &MakeParsedNode(source, type, raw);
}

const JsonComment* TakeComments(JsonSource& source, WStringView& piece) {
    if (piece.empty() || piece[0] != '#') return nullptr;
    const WStringView all = piece;
    std::size_t lines = 0;
    std::size_t length = 0;
    for (; !piece.empty() && piece[0] == '#'; ++lines) length += TakeLine(piece).size() + 1;
    auto* const comment = static_cast<JsonComment*>(source.Allocate(sizeof(JsonComment)));
    WStringView rest = all;
    WStringView text = TakeLine(rest);
    if (lines > 1) {
        auto* const joined = static_cast<WCHAR*>(source.Allocate(length * sizeof(WCHAR)));
        WCHAR* end = std::copy(text.begin(), text.end(), joined);
        for (; lines > 1; --lines) {
            const WStringView line = TakeLine(rest);
            *end++ = '\n';
            end = std::copy(line.begin(), line.end(), end);
        }
        text = {joined, length - 1};
    }
    *comment = {text.data(), static_cast<std::uint32_t>(text.size())};
    return comment;
}

void FetchRawNode(JsonNode& node) {
    switch (node.type) {
        case JsonType::Array:
        case JsonType::Object:
            return FetchContainer(node);
        case JsonType::String:
            return FetchString(node);
        default:
            node.number = ReadPlainNumber(node.Text());
            node.fetched = true;
    }
}

}  // namespace AUX::CAB
