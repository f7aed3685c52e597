#include <atomic>
#include <xmmintrin.h>

#include "cab/json_fetch.h"
#include "cab/json_output.h"
#include "cab/json_quotes.h"
#include "cab/json_source.h"
#include "cab/json_text.h"
#include "cab/library_allocator.h"

namespace AUX::CAB {
namespace {

class JsonWriter {
public:
    JsonWriter(WString& out, bool isFormatted) noexcept
        : out_(out),
          isFormatted_(isFormatted),
          restoresQuotes_(escapedQuoteSeen.load(std::memory_order_relaxed)) {}

    /// Without recursion: trees may be deep.
    void Write(JsonNode& root, std::uint32_t indent, JsonPlace place) {
        out_.Expect(LikelyUnits(root));
        Open(root, indent, place);
        while (!open_.empty()) {
            Level& level = open_.back();
            const bool isArray = level.type == JsonType::Array;
            PutPlainLeaves(level);
            if (level.next == level.children.count) {
                if (isFormatted_) out_.PutLine(level.indent);
                out_.Put(isArray ? WCHAR{']'} : WCHAR{'}'});
                open_.pop_back();
                continue;
            }
            if (level.next > 0) out_.Put(',');
            if (isFormatted_) out_.PutLine(level.indent + 1);
            JsonNode& child = *level.children.first[level.next++];
            Open(child, level.indent + 1, isArray ? JsonPlace::InArray : JsonPlace::InObject);
        }
        out_.Finish();
    }

private:
    struct Level {
        JsonChildSpan children;
        std::uint32_t next;
        std::uint32_t indent;
        JsonType type;
    };

    /// Writes the next children for as long as they are leaves with nothing special about them.
    void PutPlainLeaves(Level& level) {
        constexpr std::uint32_t kMostUnits = 4096;
        constexpr std::uint32_t kAhead = 4;
        constexpr std::size_t kSigns = 10;  // A comma, a line feed, four quotes, a colon, blanks.
        const std::uint32_t tabs = isFormatted_ ? level.indent + 1 : 0;
        for (; level.next < level.children.count; ++level.next) {
            const JsonNode& node = *level.children.first[level.next];
            // Large trees lie out of the caches, and nothing of a node is known before it is there.
            if (level.next + kAhead < level.children.count) {
                _mm_prefetch(level.children.first[level.next + kAhead], _MM_HINT_T0);
            }
            if (!node.fetched || node.IsContainer() || node.nameEncoded || node.textEncoded ||
                node.nameLength > kMostUnits || node.textLength > kMostUnits ||
                (isFormatted_ && node.comment)) {
                return;
            }
            WCHAR* at = out_.Room(std::size_t{tabs} + node.nameLength + node.textLength + kSigns);
            if (level.next > 0) *at++ = ',';
            if (isFormatted_) {
                *at++ = '\n';
                for (std::uint32_t i = 0; i < tabs; ++i) *at++ = '\t';
            }
            if (level.type == JsonType::Object) {
                *at++ = '"';
                at = CopyUnits(node.Name(), at);
                *at++ = '"';
                if (isFormatted_) *at++ = ' ';
                *at++ = ':';
                if (isFormatted_) *at++ = ' ';
            }
            const bool isString = node.type == JsonType::String;
            if (isString) *at++ = '"';
            at = CopyUnits(node.Text(), at);
            if (isString) *at++ = '"';
            out_.Advance(at);
        }
    }

    /// What was parsed is about as long again, or half as long again with line feeds and tabs.
    std::size_t LikelyUnits(const JsonNode& root) const noexcept {
        if (!root.fetched) return root.textLength;
        if (!root.isParsed || !root.IsContainer() || root.nameLength > 0) return 0;
        const std::size_t units = root.source->Length();
        return isFormatted_ ? units + units / 2 : units;
    }

    /// Writes all of a leaf, and of a container what stands before its children.
    void Open(JsonNode& node, std::uint32_t indent, JsonPlace place) {
        if (isFormatted_ && node.comment) PutComment(node.Comment(), indent);
        if (place == JsonPlace::InObject) PutName(node);
        if (!isFormatted_ && !node.fetched) return out_.PutRaw(node.Text(), restoresQuotes_);
        if (!node.IsContainer()) return PutLeaf(node);
        // What is malformed is a null from here on.
        const JsonChildSpan children = ChildrenOf(node);
        if (!node.IsContainer()) return PutLeaf(node);
        const bool isArray = node.type == JsonType::Array;
        if (children.count == 0) return out_.PutLiteral(isArray ? TEXT("[]") : TEXT("{}"));
        out_.Put(isArray ? WCHAR{'['} : WCHAR{'{'});
        open_.push_back({children, 0, indent, node.type});
    }

    void PutName(const JsonNode& node) {
        out_.Put('"');
        if (node.nameEncoded) {
            out_.PutEncoded(node.Name());
        } else {
            out_.Put(node.Name());
        }
        if (isFormatted_) {
            out_.PutLiteral(TEXT("\" : "));
        } else {
            out_.PutLiteral(TEXT("\":"));
        }
    }

    void PutLeaf(const JsonNode& node) {
        if (node.type != JsonType::String) return out_.Put(node.Text());
        // The source's own text has its quotes.
        if (!node.fetched) return out_.PutRaw(node.Text(), restoresQuotes_);
        out_.Put('"');
        if (node.textEncoded) {
            out_.PutEncoded(node.Text());
        } else {
            out_.Put(node.Text());
        }
        out_.Put('"');
    }

    /// One line stands behind "//", several between "/*" and "*/".
    void PutComment(WStringView comment, std::uint32_t indent) {
        out_.PutLine(indent);
        if (comment.find(TEXT('\n')) == WStringView::npos) {
            out_.PutLiteral(TEXT("//"));
            out_.Put(comment);
        } else {
            out_.PutLiteral(TEXT("/*"));
            for (std::size_t at = 0; at <= comment.size();) {
                const std::size_t end = std::min(comment.find(TEXT('\n'), at), comment.size());
                WStringView line = comment.substr(at, end - at);
                if (end < comment.size() && !line.empty() && line.back() == '\r') {
                    line = line.substr(0, line.size() - 1);
                }
                out_.PutLine(indent + 1);
                PutCommentLine(line);
                at = end + 1;
            }
            out_.PutLine(indent);
            out_.PutLiteral(TEXT("*/"));
        }
        out_.PutLine(indent);
    }

    /// A blank keeps apart what would end the comment.
    void PutCommentLine(WStringView line) {
        for (std::size_t at = 0; at < line.size(); ++at) {
            if (line[at] == '/' && at > 0 && line[at - 1] == '*') out_.Put(' ');
            out_.Put(line[at]);
        }
    }

    JsonOutput out_;
    bool isFormatted_;
    bool restoresQuotes_;
    Vector<Level> open_;
};

}  // namespace

void WriteJson(JsonNode& node, std::int32_t indent, JsonPlace place, WString& out) {
    const bool isFormatted = indent >= 0;
    JsonWriter(out, isFormatted)
        .Write(node, isFormatted ? static_cast<std::uint32_t>(indent) : 0, place);
}

}  // namespace AUX::CAB
