#pragma once

#include <atomic>

/// The doubly linked lists of pages and regions: a head, no tail. They change under their heap's
/// lock. The heads alone are read without it, for a guess, hence atomic.
namespace AUX::memory {

template <class Node>
using ListHead = std::atomic<Node*>;

template <class Node>
[[nodiscard]] Node* First(const ListHead<Node>& list) noexcept {
    return list.load(std::memory_order_relaxed);
}

/// Puts a node before `next`, which follows `previous`; null stands for the list's ends.
template <class Node>
void Insert(ListHead<Node>& list, Node& node, Node* previous, Node* next) noexcept {
    node.previous = previous;
    node.next = next;
    if (next) next->previous = &node;
    if (previous) {
        previous->next = &node;
    } else {
        list.store(&node, std::memory_order_relaxed);
    }
}

template <class Node>
void PushFront(ListHead<Node>& list, Node& node) noexcept {
    Insert(list, node, static_cast<Node*>(nullptr), First(list));
}

template <class Node>
void Unlink(ListHead<Node>& list, Node& node) noexcept {
    if (node.next) node.next->previous = node.previous;
    if (node.previous) {
        node.previous->next = node.next;
    } else {
        list.store(node.next, std::memory_order_relaxed);
    }
    node.next = nullptr;
    node.previous = nullptr;
}

/// Puts all of `from` in front of `list`.
template <class Node>
void Prepend(ListHead<Node>& list, ListHead<Node>& from) noexcept {
    Node* const first = from.exchange(nullptr, std::memory_order_relaxed);
    if (!first) return;
    Node* last = first;
    while (last->next) last = last->next;
    last->next = First(list);
    if (last->next) last->next->previous = last;
    list.store(first, std::memory_order_relaxed);
}

}  // namespace AUX::memory
