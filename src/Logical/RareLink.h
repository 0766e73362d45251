#pragma once

#include <boost/shared_ptr.hpp>

#include <memory>

namespace qo
{
/// A link that most objects do not have, at the cost of a pointer.
template <class X>
class RareLink
{
    using Handle = boost::shared_ptr<X>;

public:
    explicit operator bool() const noexcept { return m_handle != nullptr; }
    /// Null without a link.
    Handle get() const noexcept { return m_handle ? *m_handle : Handle(); }
    /// Strong guarantee; never fails for null.
    void set(const Handle& handle)
    {
        m_handle = handle ? std::make_unique<const Handle>(handle) : nullptr;
    }

private:
    std::unique_ptr<const Handle> m_handle;
};
} // namespace qo
