#pragma once

#include <QoKernel/Kernel.h>

#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace qo::host
{
/// Memory that is overwritten before it is given back.
template <class T>
struct WipingAllocator
{
    using value_type = T;

    WipingAllocator() = default;
    template <class Other>
    explicit WipingAllocator(const WipingAllocator<Other>&)
    {
    }
    T* allocate(std::size_t count) { return std::allocator<T>().allocate(count); }
    void deallocate(T* bytes, std::size_t count)
    {
        ::explicit_bzero(bytes, count * sizeof(T));
        std::allocator<T>().deallocate(bytes, count);
    }
    bool operator==(const WipingAllocator&) const { return true; }
};

/// Overwrites a text that held a secret, and empties it.
inline void wipe(std::string& text)
{
    ::explicit_bzero(text.data(), text.size());
    text.clear();
}

/// A password or what is made of one, as UTF-8: every place in memory where it was is overwritten.
class Secret
{
public:
    Secret() = default;
    explicit Secret(std::string_view bytes) { append(bytes); }
    explicit Secret(const CString& text)
    {
        std::string bytes = toUtf8(text);
        append(bytes);
        wipe(bytes);
    }

    void append(std::string_view bytes)
    {
        m_bytes.insert(m_bytes.end() - 1, bytes.begin(), bytes.end());
    }
    bool empty() const { return view().empty(); }
    std::string_view view() const { return {m_bytes.data(), m_bytes.size() - 1}; }
    const char* c_str() const { return m_bytes.data(); }
    /// For the kernel, whose texts have to be overwritten by PassingSecret.
    CString text() const { return fromUtf8(view()); }

private:
    std::vector<char, WipingAllocator<char>> m_bytes = {'\0'};
};
} // namespace qo::host
