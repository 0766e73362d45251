#pragma once

#include "common/KVConfig.h"
#include "types/StringArray.h"

#include <map>
#include <utility>

/// A store in memory that remembers the order of declaration.
class MemoryConfig : public KVConfig
{
public:
    Section* addSection(int, const char16_t* name) override
    {
        return reinterpret_cast<Section*>(&*sections.try_emplace(CString(name)).first);
    }
    Key* addKey(Section* section, const char16_t* name, const char16_t* defaultValue) override
    {
        auto& entry =
            *reinterpret_cast<std::pair<const CString, std::map<CString, CString>>*>(section);
        declared.Add(entry.first + u"/" + name);
        return reinterpret_cast<Key*>(
            &entry.second.try_emplace(CString(name), defaultValue).first->second);
    }
    CString getValue(const Key* key) const override
    {
        return *reinterpret_cast<const CString*>(key);
    }
    void setValue(Key* key, const CString& value) override
    {
        *reinterpret_cast<CString*>(key) = value;
    }

    std::map<CString, std::map<CString, CString>> sections;
    CStringArray declared;
};
