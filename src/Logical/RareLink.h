#pragma once

#include <boost/shared_ptr.hpp>

#include <memory>

namespace qo
{
/// A link that few objects have. A shared_ptr takes two words in every object; this takes one, and
/// allocates the handle only where there is a link.
///
///   A million tracks of which ten thousand have lyrics: 8 MB and 10,000 small blocks, instead of
///   a plain shared_ptr's 16 MB.
template <class X>
class RareLink
{
    using Handle = boost::shared_ptr<X>;

public:
    explicit operator bool() const noexcept { return m_handle != nullptr; }
    /// Null without a link.
    Handle get() const noexcept { return m_handle ? *m_handle : Handle(); }
    /// If it throws (out of memory), the link is as before; clearing with null never throws.
    void set(const Handle& handle)
    {
        m_handle = handle ? std::make_unique<const Handle>(handle) : nullptr;
    }

private:
    std::unique_ptr<const Handle> m_handle;
};
} // namespace qo
