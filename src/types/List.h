#pragma once

#include "types/Forward.h"
#include "types/Position.h"

#include <utility>

/// A doubly linked list with value semantics. A position stays valid while other elements are added
/// and removed. Calls that need an element (GetHead, RemoveTail, GetAt) must not be made on an
/// empty list or with a null position; that is not checked.
template <class T, class ARG = const T&>
class CList
{
public:
    CList() noexcept = default;
    CList(const CList& other) { AddTail(other); }
    CList(CList&& other) noexcept { swap(other); }
    CList& operator=(CList other) noexcept
    {
        swap(other);
        return *this;
    }
    ~CList() { RemoveAll(); }

    int GetCount() const noexcept { return m_count; }
    bool IsEmpty() const noexcept { return m_count == 0; }
    T& GetHead() noexcept { return m_head->value; }
    const T& GetHead() const noexcept { return m_head->value; }
    T& GetTail() noexcept { return m_tail->value; }
    const T& GetTail() const noexcept { return m_tail->value; }
    POSITION GetHeadPosition() const noexcept { return toPosition(m_head); }
    POSITION GetTailPosition() const noexcept { return toPosition(m_tail); }

    T& GetAt(POSITION position) noexcept { return toNode(position)->value; }
    const T& GetAt(POSITION position) const noexcept { return toNode(position)->value; }
    void SetAt(POSITION position, ARG value) { toNode(position)->value = value; }
    /// Returns the element at the position and advances the position; null after the last.
    T& GetNext(POSITION& position) noexcept { return step(position, &Node::next); }
    const T& GetNext(POSITION& position) const noexcept { return step(position, &Node::next); }
    T& GetPrev(POSITION& position) noexcept { return step(position, &Node::prev); }
    const T& GetPrev(POSITION& position) const noexcept { return step(position, &Node::prev); }

    POSITION AddHead(ARG value) { return link(new Node{value, nullptr, nullptr}, nullptr, m_head); }
    POSITION AddTail(ARG value) { return link(new Node{value, nullptr, nullptr}, m_tail, nullptr); }
    void AddTail(const CList& other)
    {
        const Node* node = other.m_head;
        for (int left = other.m_count; left > 0; --left, node = node->next)
            AddTail(node->value);
    }
    POSITION InsertBefore(POSITION position, ARG value)
    {
        Node* node = toNode(position);
        return link(new Node{value, nullptr, nullptr}, node->prev, node);
    }
    POSITION InsertAfter(POSITION position, ARG value)
    {
        Node* node = toNode(position);
        return link(new Node{value, nullptr, nullptr}, node, node->next);
    }

    T RemoveHead() { return take(m_head); }
    T RemoveTail() { return take(m_tail); }
    void RemoveAt(POSITION position) { take(toNode(position)); }
    void RemoveAll() noexcept
    {
        for (Node* node = m_head; node;)
            delete std::exchange(node, node->next);
        m_head = m_tail = nullptr;
        m_count = 0;
    }

    /// The first equal element from the head, or after the given position; null if there is none.
    POSITION Find(ARG value, POSITION after = nullptr) const
    {
        Node* node = after ? toNode(after)->next : m_head;
        while (node && !(node->value == value))
            node = node->next;
        return toPosition(node);
    }

private:
    struct Node
    {
        T value;
        Node* prev;
        Node* next;
    };

    static POSITION toPosition(Node* node) noexcept { return reinterpret_cast<POSITION>(node); }
    static Node* toNode(POSITION position) noexcept { return reinterpret_cast<Node*>(position); }

    static T& step(POSITION& position, Node* Node::*way) noexcept
    {
        Node* node = toNode(position);
        position = toPosition(node->*way);
        return node->value;
    }
    /// Inserts a node between two neighbours, which may be null at the ends.
    POSITION link(Node* node, Node* prev, Node* next) noexcept
    {
        node->prev = prev;
        node->next = next;
        (prev ? prev->next : m_head) = node;
        (next ? next->prev : m_tail) = node;
        ++m_count;
        return toPosition(node);
    }
    /// Removes a node and returns its value.
    T take(Node* node)
    {
        T value = std::move(node->value);
        (node->prev ? node->prev->next : m_head) = node->next;
        (node->next ? node->next->prev : m_tail) = node->prev;
        --m_count;
        delete node;
        return value;
    }
    void swap(CList& other) noexcept
    {
        std::swap(m_head, other.m_head);
        std::swap(m_tail, other.m_tail);
        std::swap(m_count, other.m_count);
    }

    Node* m_head = nullptr;
    Node* m_tail = nullptr;
    int m_count = 0;
};

using CStringList = CList<CString>;
