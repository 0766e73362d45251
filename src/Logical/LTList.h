#pragma once

#include "Logical/LTObject.h"
#include "common/PtrListT.h"

#include <utility>
#include <vector>

namespace qo
{
/// One of CLTManager's lists of logical objects, with what can be done to it whatever their class.
class QO_API LTList
{
public:
    LTList() = default;
    LTList(const LTList&) = delete;
    LTList& operator=(const LTList&) = delete;
    virtual ~LTList();

    virtual int count() const noexcept = 0;
    virtual boost::shared_ptr<CLTObject> at(int index) const = 0;
    /// The same object without counting a reference.
    virtual CLTObject& object(int index) const noexcept = 0;
    /// Compares address by address, so its cost grows with the list; -1 if the list does not hold
    /// the object. The pointer is never dereferenced and may be stale.
    virtual int indexOf(const CLTObject* object) const noexcept = 0;
    /// The indexes of the objects that nothing uses, ascending.
    virtual std::vector<int> findUnused() const = 0;
    /// Removes the objects at these ascending indexes; the others keep their order.
    virtual void remove(const std::vector<int>& indexes) = 0;
    virtual void clear() = 0;
};

/// A list in the order of creation (lyrics and pictures). It works on a list that belongs to
/// CLTManager and outlives it.
template <class X>
class LTListOf : public LTList
{
public:
    explicit LTListOf(CPtrListT<X>& list) noexcept : m_list(list) {}

    int count() const noexcept override { return m_list.GetSize(); }
    boost::shared_ptr<CLTObject> at(int index) const override { return m_list[index]; }
    CLTObject& object(int index) const noexcept override { return *m_list[index]; }
    int indexOf(const CLTObject* object) const noexcept override
    {
        int index = 0;
        for (const boost::shared_ptr<X>& each : m_list)
        {
            if (each.get() == object)
                return index;
            ++index;
        }
        return -1;
    }
    std::vector<int> findUnused() const override
    {
        std::vector<int> unused;
        int index = 0;
        for (const boost::shared_ptr<X>& each : m_list)
        {
            if (!each->isUsed())
                unused.push_back(index);
            ++index;
        }
        return unused;
    }
    void remove(const std::vector<int>& indexes) override
    {
        // Taking out one object moves those after it; taking out many is cheaper by copying the
        // rest once.
        constexpr int manyFrom = 64;
        if (static_cast<int>(indexes.size()) > count() / manyFrom)
            return pack(indexes);
        for (auto index = indexes.rbegin(); index != indexes.rend(); ++index)
            removeAt(*index);
    }
    void clear() override { m_list.clear(); }

protected:
    virtual void removeAt(int index) { m_list.RemoveAt(index); }
    virtual void pack(const std::vector<int>& removed)
    {
        CPtrListT<X> kept;
        forEachKept(removed, [&](int index) { kept.Add(m_list[index]); });
        m_list = std::move(kept);
    }
    template <class VISIT>
    void forEachKept(const std::vector<int>& removed, VISIT visit) const
    {
        auto next = removed.begin();
        for (int index = 0; index < m_list.GetSize(); ++index)
        {
            if (next != removed.end() && *next == index)
                ++next;
            else
                visit(index);
        }
    }

    CPtrListT<X>& m_list;
};
} // namespace qo
