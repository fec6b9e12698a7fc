// A doubly linked list of pointers to what others own. It keeps a few freed nodes, so that a list in steady
// use takes no memory, and nodes move from list to list, so that what is on one list can't fail to get onto
// another. One thread at a time.
#pragma once

#include <cstdint>
#include <new>
#include <utility>

template <class T>
class CPointerList {
public:
    CPointerList() = default;
    CPointerList(const CPointerList&) = delete;
    CPointerList& operator=(const CPointerList&) = delete;
    ~CPointerList() {
        Clear();
        while (m_cache) delete std::exchange(m_cache, m_cache->next);
    }

    int32_t Count() const { return m_count; }
    bool IsEmpty() const { return m_count == 0; }
    bool Contains(const T* pointer) const {
        const Node* node = m_head;
        while (node && node->pointer != pointer) node = node->next;
        return node != nullptr;
    }

    // False, and nothing added, where there is no memory.
    [[nodiscard]] bool AddTail(T* pointer) {
        Node* node = TakeKept();
        if (!node) node = new (std::nothrow) Node;
        if (!node) return false;
        node->pointer = pointer;
        LinkTail(node);
        return true;
    }
    // Adds what the other list holds, in its order; false, with a part of it added, where there is no memory.
    [[nodiscard]] bool AddTail(const CPointerList& other) {
        for (const Node* node = other.m_head; node; node = node->next) {
            if (!AddTail(node->pointer)) return false;
        }
        return true;
    }
    // The pointer at the head, which leaves the list; null if there is none.
    T* RemoveHead() {
        if (!m_head) return nullptr;
        Node* node = UnlinkHead();
        T* pointer = node->pointer;
        Keep(node);
        return pointer;
    }
    // Moves the head with its node to the tail of another list, which needs no memory. The pointer, or null
    // if there is none. A freed node of that list comes back, so that the nodes don't all end up there.
    T* MoveHeadTo(CPointerList& other) {
        if (!m_head) return nullptr;
        Node* node = UnlinkHead();
        if (Node* freed = other.TakeKept()) Keep(freed);
        other.LinkTail(node);
        return node->pointer;
    }
    void Clear() {
        while (m_head) RemoveHead();
    }

private:
    static constexpr int32_t kMostCached = 10;

    struct Node {
        T* pointer;
        Node* next;
        Node* previous;
    };

    void LinkTail(Node* node) {
        node->next = nullptr;
        node->previous = std::exchange(m_tail, node);
        (node->previous ? node->previous->next : m_head) = node;
        ++m_count;
    }
    Node* UnlinkHead() {
        Node* node = std::exchange(m_head, m_head->next);
        (m_head ? m_head->previous : m_tail) = nullptr;
        --m_count;
        return node;
    }
    Node* TakeKept() {  // null if there is none
        Node* node = m_cache;
        if (node) {
            m_cache = node->next;
            --m_cached;
        }
        return node;
    }
    void Keep(Node* node) {
        if (m_cached == kMostCached) {
            delete node;
            return;
        }
        node->next = std::exchange(m_cache, node);
        ++m_cached;
    }

    Node* m_head = nullptr;
    Node* m_tail = nullptr;
    int32_t m_count = 0;
    Node* m_cache = nullptr;  // chained by next
    int32_t m_cached = 0;
};
