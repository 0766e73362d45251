#include "platform/PortableDevices.h"

#include <algorithm>

namespace qo
{
IByteStream::~IByteStream() = default;
IPortableDevice::~IPortableDevice() = default;
IPortableWatcher::~IPortableWatcher() = default;
IPortableDevices::~IPortableDevices() = default;

const PropertyValue* PropertyBag::find(const PropertyKey& key) const
{
    const auto found = std::find_if(
        m_values.begin(), m_values.end(), [&](const auto& value) { return value.first == key; });
    return found == m_values.end() ? nullptr : &found->second;
}

void PropertyBag::set(const PropertyKey& key, const PropertyValue& value)
{
    const auto known = std::find_if(
        m_values.begin(), m_values.end(), [&](const auto& other) { return other.first == key; });
    if (known == m_values.end())
        m_values.emplace_back(key, value);
    else
        known->second = value;
}
} // namespace qo
