#include "cab/json_node.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>

#include "cab/json_fetch.h"
#include "cab/json_number.h"
#include "cab/json_source.h"
#include "cab/library_allocator.h"

namespace AUX::CAB {
namespace {

constexpr std::uint32_t kFirstCapacity = 8;

constexpr std::size_t kNameRoom = 10;  // Units.
constexpr std::size_t kTextRoom = 14;

/// A node in a block of its own, with room for a short name and text, as most are.
struct OwnNode : JsonNode {
    WCHAR nameRoom[kNameRoom];
    WCHAR textRoom[kTextRoom];
};

OwnNode& Own(JsonNode& node) noexcept { return static_cast<OwnNode&>(node); }

void CountHandle(JsonNode& node) noexcept {
    if (node.isParsed) {
        node.source->AddRef();
    } else {
        ++node.refCount;
    }
}

// The dead are a list through their counts, which they need no more.
JsonNode* NextOf(const JsonNode& dead) noexcept {
    return reinterpret_cast<JsonNode*>(static_cast<std::intptr_t>(dead.refCount));
}

void FreeName(JsonNode& node) noexcept {
    if (node.ownsName && node.name != Own(node).nameRoom) {
        Free(const_cast<WCHAR*>(node.name));
    }
    node.ownsName = false;
}

void FreeText(JsonNode& node) noexcept {
    if (node.ownsText && node.text != Own(node).textRoom) {
        Free(const_cast<WCHAR*>(node.text));
    }
    node.ownsText = false;
}

/// Takes one handle off. A node that nothing holds any more is put into the list of the dead.
void DropHandle(JsonNode& node, JsonNode*& dead) noexcept {
    if (node.isParsed) {
        node.source->Release();
    } else if (--node.refCount == 0) {
        node.refCount = reinterpret_cast<std::intptr_t>(dead);
        dead = &node;
    }
}

JsonChildren* OwnChildren(JsonNode& node) noexcept {
    return node.IsContainer() && node.fetched ? node.children : nullptr;
}

void FreeChildren(JsonNode& node, JsonNode*& dead) noexcept {
    JsonChildren* const list = OwnChildren(node);
    if (!list) return;
    for (std::uint32_t i = 0; i < list->count; ++i) DropHandle(*list->Items()[i], dead);
    Free(list);
    node.children = nullptr;
}

/// Without recursion: trees may be deep.
void FreeNodes(JsonNode* dead) noexcept {
    while (dead) {
        JsonNode* const node = dead;
        dead = NextOf(*node);
        FreeChildren(*node, dead);
        FreeName(*node);
        FreeText(*node);
        if (node->source) node->source->Release();
        Free(&Own(*node));
    }
}

/// Copies a text, which may lie in the room itself, into the room or a new block.
template <std::size_t kRoom>
const WCHAR* CopyText(WStringView text, WCHAR (&room)[kRoom]) {
    if (text.size() > WString::kMaxLength) throw std::bad_alloc();
    auto* const copy = text.size() <= kRoom
                           ? room
                           : static_cast<WCHAR*>(AllocateOrThrow(text.size() * sizeof(WCHAR)));
    if (!text.empty()) std::memmove(copy, text.data(), text.size() * sizeof(WCHAR));
    return copy;
}

/// Makes a node with these fields, which owns no text yet.
JsonHandle MakeNode(const JsonNode& fields) {
    auto* const node = new (AllocateOrThrow(sizeof(OwnNode))) OwnNode;
    static_cast<JsonNode&>(*node) = fields;
    node->isParsed = node->ownsName = node->ownsText = false;
    node->refCount = 1;
    return JsonHandle(node);
}

JsonChildren* MakeChildren(std::uint32_t capacity) {
    auto* const list = static_cast<JsonChildren*>(
        AllocateOrThrow(sizeof(JsonChildren) + std::size_t{capacity} * sizeof(JsonNode*)));
    *list = {0, capacity};
    return list;
}

/// Makes a node that may be changed of one that has other handles, or was parsed.
void MakeOwn(JsonHandle& node) {
    if (node->isParsed || node->refCount > 1) node = CloneNode(*node);
}

/// Gives a node that may be changed another type and text; `copy` is a block that the node owns.
void SetOwnText(JsonNode& node, JsonType type, const WCHAR* text, std::size_t length, bool owns) {
    JsonNode* dead = nullptr;
    FreeChildren(node, dead);
    FreeNodes(dead);
    FreeText(node);
    node.type = type;
    node.text = text;
    node.textLength = static_cast<std::uint32_t>(length);
    node.ownsText = owns;
    node.textEncoded = false;
    node.fetched = true;
    node.number = 0;
}

void SetNumber(JsonHandle& node, double value, WStringView text) {
    MakeOwn(node);
    SetOwnText(*node, JsonType::Number, CopyText(text, Own(*node).textRoom), text.size(), true);
    node->number = value;
}

}  // namespace

JsonHandle::JsonHandle(const JsonHandle& other) noexcept : node_(other.node_) {
    if (node_) CountHandle(*node_);
}

JsonHandle::~JsonHandle() {
    if (!node_) return;
    JsonNode* dead = nullptr;
    DropHandle(*node_, dead);
    FreeNodes(dead);
}

JsonHandle NewNode(JsonType type) {
    JsonNode first{};
    first.type = type;
    first.fetched = true;
    return MakeNode(first);
}

JsonHandle CloneNode(const JsonNode& node) {
    JsonHandle copy = MakeNode(node);
    JsonNode& made = *copy;
    if (made.source) made.source->AddRef();
    JsonChildren* const from = OwnChildren(made);
    if (from) made.children = nullptr;
    if (node.ownsName) {
        made.name = nullptr;
        made.name = CopyText(node.Name(), Own(made).nameRoom);
        made.ownsName = true;
    }
    if (node.ownsText) {
        made.text = nullptr;
        made.text = CopyText(node.Text(), Own(made).textRoom);
        made.ownsText = true;
    }
    if (from && from->count > 0) {
        made.children = MakeChildren(from->count);
        made.children->count = from->count;
        for (std::uint32_t i = 0; i < from->count; ++i) {
            CountHandle(*from->Items()[i]);
            made.children->Items()[i] = from->Items()[i];
        }
    }
    return copy;
}

void SetNodeString(JsonHandle& node, WStringView text) {
    MakeOwn(node);
    SetOwnText(*node, JsonType::String, CopyText(text, Own(*node).textRoom), text.size(), true);
    node->textEncoded = true;
}

void SetNodeInt(JsonHandle& node, std::int32_t value) { SetNodeInt64(node, value); }

void SetNodeInt64(JsonHandle& node, std::int64_t value) {
    WCHAR digits[kMaxNumberUnits];
    SetNumber(node, static_cast<double>(value), {digits, FormatJsonInteger(value, digits)});
}

void SetNodeDouble(JsonHandle& node, double value) {
    WCHAR digits[kMaxNumberUnits];
    SetNumber(node, value, {digits, FormatJsonNumber(value, digits)});
}

void SetNodeBool(JsonHandle& node, bool value) {
    MakeOwn(node);
    const WStringView text = value ? TEXT("true") : TEXT("false");
    SetOwnText(*node, JsonType::Boolean, text.data(), text.size(), false);
    node->boolean = value;
}

void SetNodeName(JsonHandle& node, WStringView name) {
    MakeOwn(node);
    const WCHAR* const copy = CopyText(name, Own(*node).nameRoom);
    FreeName(*node);
    node->name = copy;
    node->nameLength = static_cast<std::uint32_t>(name.size());
    node->ownsName = true;
    node->nameEncoded = true;
}

void ReserveChildren(JsonHandle& node, std::uint32_t count) {
    if (!node->IsContainer()) return;
    FetchNode(*node);
    if (!node->IsContainer()) return;
    MakeOwn(node);
    JsonChildren* const old = node->children;
    if (old && old->capacity >= count) return;
    JsonChildren* const list = MakeChildren(count);
    if (old) {
        std::copy_n(old->Items(), old->count, list->Items());
        list->count = old->count;
    }
    node->children = list;
    Free(old);
}

void AppendChild(JsonHandle& node, JsonHandle child) {
    if (!child || !node->IsContainer()) return;
    FetchNode(*node);
    if (!node->IsContainer()) return;
    MakeOwn(node);
    const JsonChildren* const present = node->children;
    const std::uint32_t count = present ? present->count : 0;
    if (!present || count == present->capacity) {
        if (count > 0x7FFFFFFF) throw std::bad_alloc();
        ReserveChildren(node, present ? std::max(count * 2, kFirstCapacity) : kFirstCapacity);
    }
    node->children->Items()[node->children->count++] = child.Detach();
}

JsonChildSpan ChildrenOf(JsonNode& node) {
    if (!node.IsContainer()) return {};
    FetchNode(node);
    JsonChildren* const list = OwnChildren(node);
    return list ? JsonChildSpan{list->Items(), list->count} : JsonChildSpan{};
}

std::uint32_t ChildCount(JsonNode& node) { return ChildrenOf(node).count; }

JsonHandle ChildAt(JsonNode& node, std::uint32_t index) {
    const JsonChildSpan children = ChildrenOf(node);
    if (index >= children.count) return {};
    CountHandle(*children.first[index]);
    return JsonHandle(children.first[index]);
}

std::uint32_t FindChild(JsonNode& node, WStringView name) {
    const JsonChildSpan children = ChildrenOf(node);
    const auto found = std::find_if(children.begin(), children.end(),
                                    [&](const JsonNode* child) { return child->Name() == name; });
    return static_cast<std::uint32_t>(found - children.begin());
}

double AsNumber(JsonNode& node) {
    FetchNode(node);
    switch (node.type) {
        case JsonType::Number:
            return node.number;
        case JsonType::Boolean:
            return node.boolean ? 1 : 0;
        case JsonType::String:
            return ReadJsonNumber(node.Text());
        default:
            return 0;
    }
}

bool AsBool(JsonNode& node) {
    constexpr double kLeast = 1e-05;
    FetchNode(node);
    if (node.type == JsonType::Number) return std::fabs(node.number) >= kLeast;
    return node.type == JsonType::Boolean && node.boolean;
}

WStringView AsText(JsonNode& node) {
    FetchNode(node);
    return node.Text();
}

}  // namespace AUX::CAB
