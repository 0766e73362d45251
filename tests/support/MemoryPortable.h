#pragma once

#include "QoColl/Devices/WPDKeys.h"
#include "platform/Platform.h"

#include <cstring>
#include <string>

/// The portable devices of the system while it lives: one telephone in memory, which can be made to
/// fail at any of its calls.
class MemoryPortable : public qo::IPortableDevices
{
public:
    struct Object
    {
        CString id;
        CString parent;
        qo::PropertyBag values;
        std::string content;
    };

    MemoryPortable()
    {
        qo::setPortableDevices(this);
        qo::PropertyBag storage;
        storage.set(qo::wpd::objectName, CString(u"Card"));
        storage.set(qo::wpd::objectContentType, qo::wpd::contentFunctional);
        storage.set(qo::wpd::storageCapacity, std::int64_t{1000});
        storage.set(qo::wpd::storageFree, std::int64_t{400});
        card = add(qo::deviceRootId, storage);
    }
    ~MemoryPortable() override { qo::setPortableDevices(nullptr); }
    MemoryPortable(const MemoryPortable&) = delete;
    MemoryPortable& operator=(const MemoryPortable&) = delete;

    CString addFolder(const CString& parent, const CString& name)
    {
        qo::PropertyBag values;
        values.set(qo::wpd::objectName, name);
        values.set(qo::wpd::objectContentType, qo::wpd::contentFolder);
        return add(parent, values);
    }
    CString addFile(const CString& parent, const CString& name, const std::string& content)
    {
        qo::PropertyBag values;
        values.set(qo::wpd::objectName, CString(u"a title"));
        values.set(qo::wpd::objectOriginalName, name);
        values.set(qo::wpd::objectContentType, qo::wpd::contentAudio);
        values.set(qo::wpd::objectSize, static_cast<std::int64_t>(content.size()));
        return add(parent, values, content);
    }
    CString
    add(const CString& parent, const qo::PropertyBag& values, const std::string& content = "")
    {
        CString id;
        id.Format(u"o%d", static_cast<int>(++m_lastId));
        objects.push_back({id, parent, values, content});
        return id;
    }
    Object* find(const CString& id)
    {
        for (Object& object : objects)
        {
            if (object.id == id)
                return &object;
        }
        return nullptr;
    }

    qo::DeviceResult devices(std::vector<CString>& ids) override
    {
        ids = deviceIds;
        return call();
    }
    qo::DeviceResult friendlyName(const CString&, CString& name) override
    {
        name = u"Ann's phone";
        return call();
    }
    qo::DeviceResult
    open(const CString&, bool readOnly, std::unique_ptr<qo::IPortableDevice>& device) override
    {
        if (isReadOnly && !readOnly)
            return qo::deviceResult::accessDenied;
        device = std::make_unique<Device>(*this);
        return call();
    }
    qo::DeviceResult watch(qo::IPortableWatcher*) override { return call(); }

    /// From that call on, counted from 1, it is not connected; 0 for never.
    void unplugAt(int number)
    {
        m_unplugAt = number;
        m_calls = 0;
    }
    /// That call alone fails, likewise.
    void failAt(int number)
    {
        m_failAt = number;
        m_calls = 0;
    }
    int calls() const { return m_calls; }

    std::vector<CString> deviceIds{u"phone"};
    std::vector<GUID> categories{qo::wpd::categoryStorage};
    std::vector<Object> objects;
    CString card;
    CString broken; ///< the id of an object of which the device says nothing
    bool isReadOnly = false;
    bool canRename = true;

private:
    class Stream : public qo::IByteStream
    {
    public:
        Stream(MemoryPortable& portable, std::string content)
            : m_portable(portable), m_content(std::move(content))
        {
        }
        Stream(MemoryPortable& portable, const qo::PropertyBag& values)
            : m_portable(portable), m_values(values)
        {
        }
        qo::DeviceResult read(void* buffer, std::size_t size, std::size_t& done) override
        {
            done = std::min({size, m_content.size() - m_at, std::size_t{100'000}});
            std::memcpy(buffer, m_content.data() + m_at, done);
            m_at += done;
            return m_portable.call();
        }
        qo::DeviceResult write(const void* data, std::size_t size, std::size_t& done) override
        {
            m_content.append(static_cast<const char*>(data), size);
            done = size;
            return m_portable.call();
        }
        qo::DeviceResult commit() override
        {
            const qo::DeviceResult result = m_portable.call();
            if (result == qo::deviceResult::ok)
                m_portable.add(std::get<CString>(*m_values.find(qo::wpd::objectParentId)),
                               m_values,
                               m_content);
            return result;
        }
        std::int64_t size() const override { return static_cast<std::int64_t>(m_content.size()); }

    private:
        MemoryPortable& m_portable;
        std::string m_content;
        qo::PropertyBag m_values;
        std::size_t m_at = 0;
    };

    class Device : public qo::IPortableDevice
    {
    public:
        explicit Device(MemoryPortable& portable) : m_portable(portable) {}
        qo::DeviceResult functionalCategories(std::vector<GUID>& categories) override
        {
            categories = m_portable.categories;
            return m_portable.call();
        }
        qo::DeviceResult children(const CString& objectId, std::vector<CString>& ids) override
        {
            for (const Object& object : m_portable.objects)
            {
                if (object.parent == objectId)
                    ids.push_back(object.id);
            }
            return m_portable.call();
        }
        qo::DeviceResult
        properties(const CString& objectId, qo::PropertySet, qo::PropertyBag& values) override
        {
            if (const Object* const object = m_portable.find(objectId))
                values = object->values;
            const qo::DeviceResult result = m_portable.call();
            return objectId == m_portable.broken ? qo::deviceResult::failed : result;
        }
        qo::DeviceResult read(const CString& objectId,
                              std::unique_ptr<qo::IByteStream>& stream) override
        {
            stream = std::make_unique<Stream>(m_portable, m_portable.find(objectId)->content);
            return m_portable.call();
        }
        qo::DeviceResult createObject(const qo::PropertyBag& values, CString& objectId) override
        {
            const qo::DeviceResult result = m_portable.call();
            if (result == qo::deviceResult::ok)
                objectId = m_portable.add(std::get<CString>(*values.find(qo::wpd::objectParentId)),
                                          values);
            return result;
        }
        qo::DeviceResult createObjectWithData(const qo::PropertyBag& values,
                                              std::unique_ptr<qo::IByteStream>& stream) override
        {
            stream = std::make_unique<Stream>(m_portable, values);
            return m_portable.call();
        }
        bool canRename(const CString& objectId) override
        {
            return m_portable.canRename && m_portable.find(objectId);
        }
        qo::DeviceResult rename(const CString& objectId, const CString& name) override
        {
            const qo::DeviceResult result = m_portable.call();
            if (result == qo::deviceResult::ok)
                m_portable.find(objectId)->values.set(qo::wpd::objectOriginalName, name);
            return result;
        }
        qo::DeviceResult remove(const std::vector<CString>& objectIds) override
        {
            const qo::DeviceResult result = m_portable.call();
            if (result == qo::deviceResult::ok)
                std::erase_if(m_portable.objects,
                              [&](const Object& object) { return object.id == objectIds[0]; });
            return result;
        }

    private:
        MemoryPortable& m_portable;
    };

    qo::DeviceResult call()
    {
        ++m_calls;
        if (m_calls == m_failAt)
            return qo::deviceResult::failed;
        return m_calls >= m_unplugAt && m_unplugAt > 0 ? qo::deviceResult::notConnected
                                                       : qo::deviceResult::ok;
    }

    int m_lastId = 0;
    int m_calls = 0;
    int m_unplugAt = 0;
    int m_failAt = 0;
};
