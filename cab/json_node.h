#pragma once

#include <cstdint>
#include <utility>

#include "foundation/wstring.h"

/// The text layer of the bags: a tree of counted nodes that ParseJson reads and WriteJson writes.
/// It knows nothing of items. A tree belongs to one thread at a time. Where memory runs out an
/// operation throws std::bad_alloc, and what it was given is as before.
namespace AUX::CAB {

class JsonSource;

enum class JsonType : std::uint8_t {
    Null = 0,
    String = 1,
    Number = 2,
    Boolean = 3,
    Array = 4,
    Object = 5,
};

/// The child handles of an array or object, which follow in the same block.
struct JsonChildren {
    std::uint32_t count;
    std::uint32_t capacity;

    [[nodiscard]] struct JsonNode** Items() noexcept {
        return reinterpret_cast<JsonNode**>(this + 1);
    }
};

/// Comment lines, joined with LF. Lies where the node's source lies.
struct JsonComment {
    const WCHAR* text;
    std::uint32_t length;
};

/// One value. A node that was parsed lies in its source, which keeps all that its text became,
/// until the last handle to any of it goes; such a node only ever changes by its fetch. All others
/// lie in blocks of their own.
struct JsonNode {
    JsonType type;
    bool nameEncoded;  ///< WriteJson passes the name through string encoding.
    bool textEncoded;  ///< Likewise the text.
    bool fetched;      ///< False while the raw source has not been looked at.
    bool isPlain;      ///< Its fetch has nothing to do but to take off a string's quotes.
    bool isParsed;     ///< Lies in `source`, which counts for it.
    bool ownsName;
    bool ownsText;
    std::uint32_t nameLength;  ///< UTF-16 units.
    std::uint32_t textLength;
    const WCHAR* name;  ///< The key in the parent object.
    /// Until the fetch the raw source. Then the text of a null, boolean or number, and the decoded
    /// text of a string.
    const WCHAR* text;
    union {
        double number;
        bool boolean;
        JsonChildren* children;  ///< Of a fetched array or object; null for none.
        std::uint64_t place;     ///< Of one that is not: where the source's structure has it.
    };
    std::int64_t refCount;
    JsonSource* source;          ///< What the texts lie in; null if in nothing parsed.
    const JsonComment* comment;  ///< Null for none.

    [[nodiscard]] bool IsContainer() const noexcept { return type >= JsonType::Array; }
    [[nodiscard]] WStringView Name() const noexcept { return {name, nameLength}; }
    [[nodiscard]] WStringView Text() const noexcept { return {text, textLength}; }
    [[nodiscard]] WStringView Comment() const noexcept {
        return comment ? WStringView(comment->text, comment->length) : WStringView();
    }
};

/// A counted handle to a node.
class JsonHandle {
public:
    JsonHandle() noexcept = default;
    /// Takes over one count.
    explicit JsonHandle(JsonNode* node) noexcept : node_(node) {}
    JsonHandle(const JsonHandle& other) noexcept;
    JsonHandle(JsonHandle&& other) noexcept : node_(std::exchange(other.node_, nullptr)) {}
    JsonHandle& operator=(JsonHandle other) noexcept {
        std::swap(node_, other.node_);
        return *this;
    }
    ~JsonHandle();

    [[nodiscard]] JsonNode* Get() const noexcept { return node_; }
    [[nodiscard]] JsonNode* Detach() noexcept { return std::exchange(node_, nullptr); }
    [[nodiscard]] JsonNode* operator->() const noexcept { return node_; }
    [[nodiscard]] JsonNode& operator*() const noexcept { return *node_; }
    explicit operator bool() const noexcept { return node_ != nullptr; }

private:
    JsonNode* node_ = nullptr;
};

/// Makes a fetched node with an empty text, or no children.
[[nodiscard]] JsonHandle NewNode(JsonType type);

/// Copies a node; the copy shares its children.
[[nodiscard]] JsonHandle CloneNode(const JsonNode& node);

// The operations that change a node leave its other handles alone: a node that is shared, or was
// parsed, stays as it is, and `node` then names a copy.

void SetNodeString(JsonHandle& node, WStringView text);
void SetNodeInt(JsonHandle& node, std::int32_t value);
void SetNodeInt64(JsonHandle& node, std::int64_t value);
/// With the text of FormatJsonNumber.
void SetNodeDouble(JsonHandle& node, double value);
void SetNodeBool(JsonHandle& node, bool value);
void SetNodeName(JsonHandle& node, WStringView name);
/// Adds a child at the end of an array or object; on any other type nothing happens.
void AppendChild(JsonHandle& node, JsonHandle child);
/// Makes room for children; a list that is empty gets exactly that many.
void ReserveChildren(JsonHandle& node, std::uint32_t count);

// The operations that read fetch a node first: they look at its raw source, which may make it a
// null. That changes the node for all of its handles.

/// 0 for any type but array and object.
[[nodiscard]] std::uint32_t ChildCount(JsonNode& node);
/// Null past the end.
[[nodiscard]] JsonHandle ChildAt(JsonNode& node, std::uint32_t index);
/// The index of the first child of that name, with regard to case; ChildCount if there is none.
[[nodiscard]] std::uint32_t FindChild(JsonNode& node, WStringView name);
/// A number's value, a boolean's 1 or 0, a string's text read as a number; else 0.
[[nodiscard]] double AsNumber(JsonNode& node);
/// A boolean's value; of a number, whether it is 1e-05 at least, of either sign; else false.
[[nodiscard]] bool AsBool(JsonNode& node);
/// The text of a null, boolean or number, a string decoded; empty for an array or object. Valid
/// until the node changes or goes.
[[nodiscard]] WStringView AsText(JsonNode& node);

/// The children themselves, borrowed, for a walk; fetches.
struct JsonChildSpan {
    JsonNode** first = nullptr;
    std::uint32_t count = 0;

    [[nodiscard]] JsonNode** begin() const noexcept { return first; }
    [[nodiscard]] JsonNode** end() const noexcept { return first + count; }
};
[[nodiscard]] JsonChildSpan ChildrenOf(JsonNode& node);

}  // namespace AUX::CAB
