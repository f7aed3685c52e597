#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
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

/// A map from ids of 32 bits to plain values. At most one entry a bucket on average. Any thread may
/// look an id up while another adds one; only one adds at a time. Pointers to values stay good
/// until the map ends.
template <typename Value>
class IdMap {
public:
    IdMap() noexcept = default;
    IdMap(const IdMap&) = delete;
    IdMap& operator=(const IdMap&) = delete;
    ~IdMap() { delete table_.load(); }

    [[nodiscard]] const Value* Find(std::uint32_t id) const noexcept {
        Table* table = table_.load(std::memory_order_acquire);
        if (!table) return nullptr;
        const Node* node = table->BucketOf(id).load(std::memory_order_acquire);
        while (node && node->id != id) node = node->next;
        return node ? &node->value : nullptr;
    }

    /// Adds an id that is not there yet. \return null if memory runs out; nothing changed then.
    const Value* Add(std::uint32_t id, const Value& value) noexcept {
        Table* table = table_.load(std::memory_order_relaxed);
        if (!table || count_ >= table->size) table = Grow();
        const Value* added = table ? table->Add(id, value) : nullptr;
        if (added) ++count_;
        return added;
    }

    template <typename Visit>
    void ForEach(Visit visit) const {
        if (Table* table = table_.load()) table->ForEach(visit);
    }

private:
    static constexpr std::uint32_t kFirstSize = 8;

    struct Node {
        std::uint32_t id;
        Value value;
        Node* next;
    };
    using Bucket = std::atomic<Node*>;

    struct Table {
        explicit Table(std::uint32_t count) noexcept
            : size(count), buckets(new (std::nothrow) Bucket[count]()) {}
        ~Table() {
            for (std::uint32_t i = 0; buckets && i < size; ++i) {
                while (Node* node = buckets[i].load(std::memory_order_relaxed)) {
                    buckets[i].store(node->next, std::memory_order_relaxed);
                    delete node;
                }
            }
        }

        Bucket& BucketOf(std::uint32_t id) noexcept { return buckets[HashOfId(id) & (size - 1)]; }

        const Value* Add(std::uint32_t id, const Value& value) noexcept {
            Bucket& bucket = BucketOf(id);
            Node* node = new (std::nothrow) Node{id, value, bucket.load(std::memory_order_relaxed)};
            if (!node) return nullptr;
            bucket.store(node, std::memory_order_release);
            return &node->value;
        }

        template <typename Visit>
        void ForEach(Visit visit) const {
            for (std::uint32_t i = 0; i < size; ++i) {
                const Node* node = buckets[i].load();
                for (; node; node = node->next) visit(node->id, node->value);
            }
        }

        const std::uint32_t size;
        std::unique_ptr<Bucket[]> buckets;
        std::unique_ptr<Table> older;  // Somebody may still look there.
    };

    Table* Grow() noexcept {
        Table* old = table_.load(std::memory_order_relaxed);
        std::unique_ptr<Table> made(new (std::nothrow) Table(old ? old->size * 2 : kFirstSize));
        bool isWhole = made && made->buckets;
        if (isWhole && old) {
            old->ForEach([&](std::uint32_t id, const Value& value) {
                isWhole = isWhole && made->Add(id, value);
            });
        }
        if (!isWhole) return nullptr;
        made->older.reset(old);
        table_.store(made.get(), std::memory_order_release);
        return made.release();
    }

    std::atomic<Table*> table_ = nullptr;
    std::uint32_t count_ = 0;
};

}  // namespace AUX
