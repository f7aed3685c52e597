#include <cmath>
#include <memory>
#include <new>
#include <stdexcept>

#include "cab/bag_text.h"
#include "cab/base64.h"
#include "cab/exact_number.h"
#include "cab/library_allocator.h"
#include "cab/text_form.h"
#include "foundation/allocated.h"
#include "foundation/stream.h"

namespace AUX::CAB {
namespace {

constexpr std::int64_t kMostBytes = WString::kMaxLength / 4 * 3;

class NodeMaker {
public:
    bool Make(DataItem& item, JsonHandle& node, std::uint32_t options) {
        if (item.GetFlags() & ItemTransient) return false;
        if (options & TextOmitDefaults && item.IsDefault()) return false;
        switch (item.GetType()) {
            case Kind::Bool: {
                bool value = false;
                (void)item.GetBool(value);  // Its own kind: it cannot fail.
                SetNodeBool(node, value);
                return true;
            }
            case Kind::Int:
            case Kind::Int64:
            case Kind::Double:
                return MakeNumber(item, node, options);
            case Kind::String:
                SetNodeString(node, *item.GetString());
                return true;
            case Kind::Stream:
                return options & TextTyped ? MakeTyped(item, node, options)
                                           : MakeStream(item, node);
            case Kind::Array:
            case Kind::Dictionary:
                return MakeContainer(item, node, options);
            default:
                return false;
        }
    }

private:
    bool MakeNumber(DataItem& item, JsonHandle& node, std::uint32_t options) {
        const WCHAR* const name = options & TextValueNames ? item.GetValueName() : nullptr;
        if (name) {
            SetNodeString(node, name);
            return true;
        }
        const Kind kind = item.GetType();
        if (kind != Kind::Int && options & TextTyped) return MakeTyped(item, node, options);
        std::int64_t integer = 0;
        double number = 0;
        if (kind == Kind::Double) {
            (void)item.GetDouble(number);  // Its own kind: it cannot fail.
            MakeDouble(number, node);
            return true;
        }
        (void)item.GetInt64(integer);  // Likewise, and every integer is a long one.
        if (integer == static_cast<std::int32_t>(integer)) {
            SetNodeInt64(node, integer);
        } else {
            WString digits;
            if (!FormatNumber(integer, digits)) throw std::bad_alloc();
            SetNodeString(node, digits);
        }
        return true;
    }

    // JSON has no word for what is not finite; as a text it finds its way back.
    static void MakeDouble(double number, JsonHandle& node) {
        if (std::isfinite(number)) {
            SetNodeDouble(node, number);
        } else {
            SetNodeString(node, std::isnan(number) ? TEXT("nan")
                                : number < 0       ? TEXT("-inf")
                                                   : TEXT("inf"));
        }
    }

    bool MakeTyped(DataItem& item, JsonHandle& node, std::uint32_t options) {
        JsonHandle value = NewNode(JsonType::Null);
        if (!Make(item, value, options & ~TextTyped)) return false;
        JsonHandle typed = NewNode(JsonType::Object);
        for (const TypedForm& form : kTypedForms) {
            if (form.kind != item.GetType()) continue;
            JsonHandle type = NewNode(JsonType::String);
            SetNodeString(type, form.name);
            SetNodeName(type, kTypeKey);
            AppendChild(typed, std::move(type));
        }
        SetNodeName(value, kValueKey);
        AppendChild(typed, std::move(value));
        Replace(node, std::move(typed));
        return true;
    }

    static bool MakeStream(DataItem& item, JsonHandle& node) {
        Stream* const stream = item.GetStream();
        if (!stream) throw std::bad_alloc();
        const std::int64_t size = stream->GetSize();
        if (size > kMostBytes) throw std::bad_alloc();
        WString text;
        const void* bytes = stream->GetData();
        std::unique_ptr<void, FreeBlock> copy;
        if (!bytes && size > 0) {
            copy.reset(AllocateOrThrow(static_cast<std::size_t>(size)));
            std::int64_t count = 0;
            // Leaves the position alone.
            const Status status = stream->ReadAt(copy.get(), size, SeekMode::Start, 0, count);
            if (IsFailure(status) || count != size) return false;
            bytes = copy.get();
        }
        if (!Base64Encode(bytes, static_cast<std::size_t>(size), text)) throw std::bad_alloc();
        SetNodeString(node, text);
        return true;
    }

    bool MakeContainer(DataItem& item, JsonHandle& node, std::uint32_t options) {
        if (depth_ > kMaxTextDepth) throw std::length_error("bag nested too deep");
        DataContainer& container = *item.AsContainer();
        DataDictionary* const dictionary = item.AsDictionary();
        const std::uint32_t count = container.GetCount();
        JsonHandle made = NewNode(dictionary ? JsonType::Object : JsonType::Array);
        if (count > 0) ReserveChildren(made, count);
        ++depth_;
        for (std::uint32_t i = 0; i < count; ++i) {
            DataItem* const child = container.ItemAt(i);
            JsonHandle value = NewNode(JsonType::Null);
            if (!child || !Make(*child, value, options)) continue;
            if (dictionary) SetNodeName(value, dictionary->KeyAt(i));
            AppendChild(made, std::move(value));
        }
        --depth_;
        if (count > 0 && ChildCount(*made) == 0) return false;
        Replace(node, std::move(made));
        return true;
    }

    static void Replace(JsonHandle& node, JsonHandle made) noexcept { node = std::move(made); }

    std::uint32_t depth_ = 0;
};

}  // namespace

bool ItemToNode(DataItem& item, JsonHandle& node, std::uint32_t options) {
    return NodeMaker().Make(item, node, options);
}

}  // namespace AUX::CAB
