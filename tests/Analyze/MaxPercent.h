#pragma once

#include "common/KVConfig.h"
#include "common/Settings.h"
#include "platform/Platform.h"
#include "platform/SpecialFolders.h"
#include "support/TempDir.h"

#include <deque>

/// Sets UnrelMaxPercent while it lives; the other settings have their defaults.
class MaxPercent : private KVConfig
{
public:
    explicit MaxPercent(const char16_t* percent)
    {
        qo::specialFolders().setBase(m_folders.collPath());
        CQoSettings::declareCommon(this, nullptr);
        CQoSettings::declareQoSettings();
        CQoSettings::set(CQoSettings::UnrelMaxPercent, percent);
    }
    MaxPercent(const MaxPercent&) = delete;
    MaxPercent& operator=(const MaxPercent&) = delete;
    ~MaxPercent() override
    {
        CQoSettings::declareCommon(nullptr, nullptr);
        qo::specialFolders().setBase(CString());
    }

private:
    Section* addSection(int /*kind*/, const char16_t* /*name*/) override { return nullptr; }
    Key* addKey(Section* /*section*/, const char16_t* /*name*/, const char16_t* value) override
    {
        return reinterpret_cast<Key*>(&m_values.emplace_back(value));
    }
    CString getValue(const Key* key) const override
    {
        return *reinterpret_cast<const CString*>(key);
    }
    void setValue(Key* key, const CString& value) override
    {
        *reinterpret_cast<CString*>(key) = value;
    }

    TempDir m_folders;
    std::deque<CString> m_values;
};
