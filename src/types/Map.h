#pragma once

#include "types/Position.h"
#include "types/String.h"

#include <memory>
#include <type_traits>
#include <utility>

namespace qo
{
/// How a map hashes its keys; texts are compared exactly.
template <class K>
struct MapKey
{
    static std::size_t hash(const K& key) noexcept
    {
        // Consecutive numbers stay close together in memory: ids are mostly used in their order.
        if constexpr (std::is_integral_v<K> || std::is_enum_v<K>)
            return (static_cast<std::size_t>(key) / 8 * 0x9E3779B97F4A7C15U >> 16) +
                   static_cast<std::size_t>(key) % 8;
        else
            return std::hash<K>()(key);
    }
};
} // namespace qo

/// A hash map with value semantics. It grows with its content, whatever size it was started with.
/// The order of a walk is arbitrary but the same until the map changes; during a walk only the
/// element that was reported last may be removed. No locks.
template <class K, class V>
class CMap
{
public:
    CMap() noexcept = default;
    CMap(const CMap& other) { *this = other; }
    CMap(CMap&& other) noexcept { swap(other); }
    CMap& operator=(const CMap& other)
    {
        if (this == &other)
            return *this;
        CMap copy;
        copy.InitHashTable(other.m_bucketCount);
        for (unsigned b = 0; b < other.m_bucketCount; ++b)
        {
            for (const Node* node = other.m_buckets[b]; node; node = node->next)
                copy.SetAt(node->key, node->value);
        }
        swap(copy);
        return *this;
    }
    CMap& operator=(CMap&& other) noexcept
    {
        if (this != &other)
        {
            RemoveAll();
            swap(other);
        }
        return *this;
    }
    virtual ~CMap() { RemoveAll(); }

    int GetCount() const noexcept { return m_count; }
    bool IsEmpty() const noexcept { return m_count == 0; }

    /// The number of buckets to start with; only for an empty map.
    void InitHashTable(unsigned buckets)
    {
        m_bucketCount = buckets;
        m_buckets = buckets ? std::make_unique<Node*[]>(buckets) : nullptr;
    }

    /// Copies the value of the key; false, with value unchanged, if there is none.
    bool Lookup(const K& key, V& value) const
    {
        const V* found = PLookup(key);
        if (found)
            value = *found;
        return found != nullptr;
    }
    /// The stored value, or null; valid until that key is removed.
    const V* PLookup(const K& key) const
    {
        const Node* node = find(key);
        return node ? &node->value : nullptr;
    }
    /// The value of the key; a new default value if there was none.
    V& operator[](const K& key)
    {
        Node* node = find(key);
        return node ? node->value : insert(key)->value;
    }
    void SetAt(const K& key, const V& value) { (*this)[key] = value; }

    /// False if the key is not there.
    bool RemoveKey(const K& key)
    {
        if (m_count == 0)
            return false;
        for (Node** link = &m_buckets[bucketOf(key)]; *link; link = &(*link)->next)
        {
            if ((*link)->key == key)
            {
                delete std::exchange(*link, (*link)->next);
                --m_count;
                return true;
            }
        }
        return false;
    }
    void RemoveAll() noexcept
    {
        for (unsigned b = 0; b < m_bucketCount && m_count > 0; ++b)
        {
            for (Node* node = std::exchange(m_buckets[b], nullptr); node; --m_count)
                delete std::exchange(node, node->next);
        }
        m_count = 0;
    }

    /// The start of a walk; null for an empty map.
    POSITION GetStartPosition() const noexcept
    {
        return toPosition(m_count ? firstFrom(0) : nullptr);
    }
    /// Gives the pair at the position and advances the position; null after the last.
    void GetNextAssoc(POSITION& position, K& key, V& value) const
    {
        const Node* node = reinterpret_cast<const Node*>(position);
        key = node->key;
        value = node->value;
        position = toPosition(node->next ? node->next : firstFrom(bucketOf(node->key) + 1));
    }

private:
    struct Node
    {
        Node* next;
        K key;
        V value;
    };
    static constexpr unsigned startBuckets = 16;

    static POSITION toPosition(const Node* node) noexcept
    {
        return reinterpret_cast<POSITION>(const_cast<Node*>(node));
    }
    unsigned bucketOf(const K& key) const noexcept
    {
        return static_cast<unsigned>(qo::MapKey<K>::hash(key) % m_bucketCount);
    }
    /// The first element in this bucket or a later one; null if there is none.
    const Node* firstFrom(unsigned bucket) const noexcept
    {
        while (bucket < m_bucketCount && !m_buckets[bucket])
            ++bucket;
        return bucket < m_bucketCount ? m_buckets[bucket] : nullptr;
    }
    const Node* find(const K& key) const
    {
        const Node* node = m_count ? m_buckets[bucketOf(key)] : nullptr;
        while (node && !(node->key == key))
            node = node->next;
        return node;
    }
    Node* find(const K& key) { return const_cast<Node*>(std::as_const(*this).find(key)); }
    Node* insert(const K& key)
    {
        if (static_cast<unsigned>(m_count) >= m_bucketCount)
            rehash(m_bucketCount ? m_bucketCount * 2 + 1 : startBuckets);
        Node*& head = m_buckets[bucketOf(key)];
        head = new Node{head, key, V()};
        ++m_count;
        return head;
    }
    /// Moves all elements to a larger table; their addresses stay.
    void rehash(unsigned buckets)
    {
        auto fresh = std::make_unique<Node*[]>(buckets);
        const unsigned oldCount = std::exchange(m_bucketCount, buckets);
        for (unsigned b = 0; b < oldCount; ++b)
        {
            for (Node* node = m_buckets[b]; node;)
            {
                Node* next = node->next;
                Node*& head = fresh[bucketOf(node->key)];
                node->next = std::exchange(head, node);
                node = next;
            }
        }
        m_buckets = std::move(fresh);
    }
    void swap(CMap& other) noexcept
    {
        std::swap(m_buckets, other.m_buckets);
        std::swap(m_bucketCount, other.m_bucketCount);
        std::swap(m_count, other.m_count);
    }

    std::unique_ptr<Node*[]> m_buckets;
    unsigned m_bucketCount = 0;
    int m_count = 0;
};

using CMapStringToPtr = CMap<CString, void*>;
using CMapStringToString = CMap<CString, CString>;
