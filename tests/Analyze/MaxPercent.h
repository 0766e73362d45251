#pragma once

#include "common/Settings.h"
#include "platform/Platform.h"
#include "platform/SpecialFolders.h"
#include "support/MemoryConfig.h"
#include "support/TempDir.h"

/// Sets UnrelMaxPercent while it lives; the other settings have their defaults.
class MaxPercent
{
public:
    explicit MaxPercent(const char16_t* percent)
    {
        qo::specialFolders().setBase(m_folders.collPath());
        CQoSettings::declareCommon(&m_config, nullptr);
        CQoSettings::declareQoSettings();
        CQoSettings::set(CQoSettings::UnrelMaxPercent, percent);
    }
    MaxPercent(const MaxPercent&) = delete;
    MaxPercent& operator=(const MaxPercent&) = delete;
    ~MaxPercent()
    {
        CQoSettings::declareCommon(nullptr, nullptr);
        qo::specialFolders().setBase(CString());
    }

private:
    TempDir m_folders;
    MemoryConfig m_config;
};
