#include "foundation/memory_threads.h"

#include <algorithm>
#include <new>

#include "platform/memory.h"
#include "platform/sanitizer.h"

namespace AUX::memory {
namespace {

// Where the thread stands in the node, or would have to stand.
std::uint32_t PlaceOf(MemThreadNode& node, std::uint32_t threadId) noexcept {
    const std::uint32_t* const keys = node.Keys();
    return static_cast<std::uint32_t>(std::lower_bound(keys, keys + node.used, threadId) - keys);
}

bool Holds(MemThreadNode& node, std::uint32_t place, std::uint32_t threadId) noexcept {
    return place < node.used && node.Keys()[place] == threadId;
}

MemThreadNode* AddNode(MemThreadNode& last) noexcept {
    void* const memory = VirtualAlloc(nullptr, kOverflowNodeSize, MEM_COMMIT, PAGE_READWRITE);
    if (!memory) return nullptr;
    platform::LookForPointersIn(memory, kOverflowNodeSize);
    void* const values = static_cast<std::byte*>(memory) + kOverflowNodeValues;
    last.next = new (memory)
        MemThreadNode{nullptr, kOverflowNodeThreads, 0, static_cast<MemHeap**>(values)};
    return last.next;
}

}  // namespace

void InitThreads(MemRoot& root) noexcept {
    root.threads = {nullptr, kFirstNodeThreads, 0, root.firstValues};
}

MemHeap* FindThread(MemRoot& root, std::uint32_t threadId) noexcept {
    for (MemThreadNode* node = &root.threads; node; node = node->next) {
        const std::uint32_t place = PlaceOf(*node, threadId);
        if (Holds(*node, place, threadId)) return node->values[place];
    }
    return nullptr;
}

bool EnterThread(MemRoot& root, std::uint32_t threadId, MemHeap* heap) noexcept {
    MemThreadNode* node = &root.threads;
    while (node->used == node->capacity) {
        node = node->next ? node->next : AddNode(*node);
        if (!node) return false;
    }
    const std::uint32_t place = PlaceOf(*node, threadId);
    std::uint32_t* const keys = node->Keys();
    std::copy_backward(keys + place, keys + node->used, keys + node->used + 1);
    std::copy_backward(node->values + place, node->values + node->used,
                       node->values + node->used + 1);
    keys[place] = threadId;
    node->values[place] = heap;
    ++node->used;
    return true;
}

void RemoveThread(MemRoot& root, std::uint32_t threadId) noexcept {
    for (MemThreadNode* node = &root.threads; node; node = node->next) {
        const std::uint32_t place = PlaceOf(*node, threadId);
        if (!Holds(*node, place, threadId)) continue;
        std::uint32_t* const keys = node->Keys();
        std::copy(keys + place + 1, keys + node->used, keys + place);
        std::copy(node->values + place + 1, node->values + node->used, node->values + place);
        --node->used;
        return;
    }
}

void FreeThreadNodes(MemRoot& root) noexcept {
    while (MemThreadNode* const node = root.threads.next) {
        root.threads.next = node->next;
        platform::LookNoMoreIn(node, kOverflowNodeSize);
        (void)VirtualFree(node, 0, MEM_RELEASE);
    }
}

}  // namespace AUX::memory
