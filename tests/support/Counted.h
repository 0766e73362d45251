#pragma once

#include "types/Relocate.h"

/// An element that counts its living objects, holds a value and knows its own address, so that a
/// container which moves its bytes, ends it twice or never is caught.
class Counted
{
public:
    Counted() noexcept : Counted(0) {}
    Counted(int value) noexcept : m_value(value) { ++s_living; }
    Counted(const Counted& other) noexcept : Counted(other.value()) {}
    Counted(Counted&& other) noexcept : Counted(other.value()) {}
    Counted& operator=(const Counted& other) noexcept
    {
        m_value = other.value();
        return *this;
    }
    ~Counted()
    {
        s_broken += m_self != this;
        m_self = nullptr;
        --s_living;
    }

    int value() const noexcept
    {
        s_broken += m_self != this;
        return m_value;
    }
    bool operator==(const Counted& other) const noexcept { return value() == other.value(); }

    static int living() noexcept { return s_living; }
    static int broken() noexcept { return s_broken; }

private:
    const Counted* m_self = this;
    int m_value;
    static inline int s_living = 0;
    static inline int s_broken = 0;
};

static_assert(!qo::IsRelocatable<Counted>::value);
