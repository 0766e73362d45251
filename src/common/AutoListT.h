#pragma once

#include "common/ListT.h"

/// A list that owns its objects: clear() and the destructor delete them. An element that is taken
/// out by remove() or an array operation belongs to the caller.
template <class X>
class CAutoListT : public CListT<X>
{
public:
    CAutoListT() noexcept = default;
    CAutoListT(const CAutoListT&) = delete;
    CAutoListT(CAutoListT&& other) noexcept = default;
    CAutoListT& operator=(const CAutoListT&) = delete;
    CAutoListT& operator=(CAutoListT&& other) noexcept
    {
        if (this != &other)
        {
            deleteAll();
            CListT<X>::operator=(std::move(other));
        }
        return *this;
    }
    ~CAutoListT() override { deleteAll(); }

    void clear() override { deleteAll(); }

private:
    void deleteAll() noexcept
    {
        for (X* elem : *this)
            delete elem;
        this->RemoveAll();
    }
};
