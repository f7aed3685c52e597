#include <cmath>
#include <new>

#include "cab/bag_text.h"
#include "cab/base64.h"
#include "cab/text_form.h"
#include "foundation/mem_stream.h"

namespace AUX::CAB {
namespace {

/// Counts the levels of nesting while one is gone through.
class Level {
public:
    explicit Level(std::uint32_t& depth) noexcept : depth_(++depth) {}
    ~Level() { --depth_; }
    Level(const Level&) = delete;
    Level& operator=(const Level&) = delete;

private:
    std::uint32_t& depth_;
};

class NodeReader {
public:
    bool Read(ItemSlot& slot, JsonNode& node) {
        if (depth_ > kMaxTextDepth) return false;
        const Level level(depth_);
        // What is malformed is a null, which its fetch finds out.
        if (node.IsContainer()) (void)ChildCount(node);
        switch (node.type) {
            case JsonType::String:
                return ReadString(slot, node);
            case JsonType::Number:
                return ReadNumber(slot, AsNumber(node));
            case JsonType::Boolean: {
                const bool value = AsBool(node);
                return Reach(slot, Kind::Bool) && slot.Find()->SetBool(&value, 1);
            }
            case JsonType::Array:
                return ReadArray(slot, node);
            case JsonType::Object:
                return ReadObject(slot, node);
            default:
                return false;
        }
    }

private:
    /// Makes an item of a kind where none stands. \return whether one of that kind stands there.
    static bool Reach(ItemSlot& slot, Kind kind) noexcept {
        if (!slot.Find() && !slot.Ensure(kind)) return false;
        return slot.Find()->IsType(kind);
    }

    static bool ReadString(ItemSlot& slot, JsonNode& node) {
        const Kind expected = slot.ExpectedKind();
        const Kind kind = expected == Kind::None ? Kind::String : expected;
        if (!Reach(slot, kind)) return false;
        const WStringView text = AsText(node);
        return kind == Kind::Stream ? ReadStream(*slot.Find(), text) : slot.Find()->SetText(text);
    }

    static bool ReadStream(DataItem& item, WStringView text) {
        Base64Bytes bytes;
        if (!Base64Decode(text, bytes)) throw std::bad_alloc();
        std::uint8_t none = 0;
        MemStream stream;
        const Status status = stream.Open(bytes.Size() > 0 ? bytes.Data() : &none,
                                          static_cast<std::int64_t>(bytes.Size()), kAccessRead);
        if (IsFailure(status)) throw std::bad_alloc();
        return item.SetStream(&stream, false);
    }

    static Kind KindOf(double value) noexcept {
        if (value != std::trunc(value)) return Kind::Double;
        return value >= -2147483648.0 && value <= 2147483647.0 ? Kind::Int : Kind::Int64;
    }

    static bool ReadNumber(ItemSlot& slot, double value) noexcept {
        const Kind expected = slot.ExpectedKind();
        if (!Reach(slot, expected == Kind::None ? KindOf(value) : expected)) return false;
        return slot.Find()->SetDouble(&value, 0);
    }

    bool ReadArray(ItemSlot& slot, JsonNode& node) {
        if (!Reach(slot, Kind::Array)) return false;
        DataArray& array = *slot.Find()->AsArray();
        if (!array.GrowTo(ChildCount(node))) throw std::bad_alloc();
        std::uint32_t index = 0;
        for (JsonNode* const child : ChildrenOf(node)) {
            IndexSlot place(array, index++);
            (void)Read(place, *child);  // A value that is refused does not hold up the others.
        }
        return true;
    }

    bool ReadObject(ItemSlot& slot, JsonNode& node) {
        if (slot.ExpectedKind() != Kind::Dictionary && ReadTyped(slot, node)) return true;
        if (!Reach(slot, Kind::Dictionary)) return false;
        DataDictionary& dictionary = *slot.Find()->AsDictionary();
        for (JsonNode* const child : ChildrenOf(node)) {
            const WStringView name = child->Name();
            // Paths could not name a key with a dot.
            if (name.empty() || name.find(TEXT('.')) != WStringView::npos) continue;
            KeySlot place(dictionary, name);
            (void)Read(place, *child);  // Likewise.
        }
        return true;
    }

    /// \return whether the node has the two keys of a typed form, and so is none of the other sort.
    bool ReadTyped(ItemSlot& slot, JsonNode& node) {
        const JsonHandle type = ChildAt(node, FindChild(node, kTypeKey));
        const JsonHandle value = ChildAt(node, FindChild(node, kValueKey));
        if (!type || !value) return false;
        for (const TypedForm& form : kTypedForms) {
            if (AsText(*type) != WStringView(form.name)) continue;
            if (slot.Ensure(form.kind) && slot.Find()->IsType(form.kind)) {
                (void)Read(slot, *value);  // Taken, even if the value is refused.
            }
            break;
        }
        return true;
    }

    std::uint32_t depth_ = 0;
};

}  // namespace

bool NodeToSlot(ItemSlot& slot, JsonNode& node) { return NodeReader().Read(slot, node); }

}  // namespace AUX::CAB
