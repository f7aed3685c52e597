#pragma once

#include <cstdint>
#include <new>

namespace AUX {

/// FNV-1a over the four bytes of an id, the low one first.
constexpr std::uint64_t HashOfId(std::uint32_t id) noexcept {
    std::uint64_t hash = 0xCBF29CE484222325;
    for (int shift = 0; shift < 32; shift += 8) {
        hash = (hash ^ ((id >> shift) & 0xFF)) * 0x100000001B3;
    }
    return hash;
}

/// A map from ids of 32 bits to plain values. At most one entry a bucket on average. Not
/// thread-safe; pointers to values stay good until the map ends.
template <typename Value>
class IdMap {
public:
    IdMap() noexcept = default;
    IdMap(const IdMap&) = delete;
    IdMap& operator=(const IdMap&) = delete;
    ~IdMap() { Clear(); }

    [[nodiscard]] const Value* Find(std::uint32_t id) const noexcept {
        if (!buckets_) return nullptr;
        for (const Node* node = *BucketOf(id); node; node = node->next) {
            if (node->id == id) return &node->value;
        }
        return nullptr;
    }

    /// Adds an id that is not there yet. \return null if memory runs out; nothing changed then.
    const Value* Add(std::uint32_t id, const Value& value) noexcept {
        if (count_ >= size_ && !Grow()) return nullptr;
        Node* node = new (std::nothrow) Node{id, value, nullptr};
        if (!node) return nullptr;
        Link(*node);
        ++count_;
        return &node->value;
    }

    template <typename Visit>
    void ForEach(Visit visit) const {
        for (std::uint32_t i = 0; i < size_; ++i) {
            for (const Node* node = buckets_[i]; node; node = node->next) visit(node->value);
        }
    }

    void Clear() noexcept {
        for (std::uint32_t i = 0; i < size_; ++i) {
            while (Node* node = buckets_[i]) {
                buckets_[i] = node->next;
                delete node;
            }
        }
        delete[] buckets_;
        buckets_ = nullptr;
        size_ = count_ = 0;
    }

private:
    struct Node {
        std::uint32_t id;
        Value value;
        Node* next;
    };
    static constexpr std::uint32_t kFirstSize = 8;

    [[nodiscard]] Node** BucketOf(std::uint32_t id) const noexcept {
        return &buckets_[HashOfId(id) & (size_ - 1)];
    }
    void Link(Node& node) noexcept {
        Node** bucket = BucketOf(node.id);
        node.next = *bucket;
        *bucket = &node;
    }
    bool Grow() noexcept {
        const std::uint32_t oldSize = size_, newSize = size_ ? size_ * 2 : kFirstSize;
        Node** replacement = new (std::nothrow) Node* [newSize] {};
        if (!replacement) return false;
        Node** old = buckets_;
        buckets_ = replacement;
        size_ = newSize;
        for (std::uint32_t i = 0; i < oldSize; ++i) {
            for (Node* node = old[i]; node;) {
                Node* next = node->next;
                Link(*node);
                node = next;
            }
        }
        delete[] old;
        return true;
    }

    Node** buckets_ = nullptr;
    std::uint32_t size_ = 0;
    std::uint32_t count_ = 0;
};

}  // namespace AUX
