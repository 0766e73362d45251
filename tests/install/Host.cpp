#include <QoKernel/Kernel.h>

#include <cstdio>
#include <deque>

class KVConfig::Section
{
};
class KVConfig::Key
{
public:
    CString value;
};

/// Settings that last as long as the program.
class MemoryConfig : public KVConfig
{
public:
    Section* addSection(int, const char16_t*) override { return &m_section; }
    Key* addKey(Section*, const char16_t*, const char16_t* value) override
    {
        return &m_keys.emplace_back(Key{value});
    }
    CString getValue(const Key* key) const override { return key->value; }
    void setValue(Key* key, const CString& value) override { key->value = value; }

private:
    Section m_section;
    std::deque<Key> m_keys;
};

int main()
{
    MemoryConfig config;
    CKVModule module;
    initQoKernel(&config, &module);
    CString text;
    text.Format(u"%s from the kernel, %d", u"Grüße", 42);
    std::printf("%s\n", qo::toUtf8(text).c_str());
}
