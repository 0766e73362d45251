#pragma once

#include "types/Export.h"
#include "types/String.h"

/// The host's store of settings; "KV" stands for keys and values. The kernel declares the settings
/// that it knows and keeps their handles. Values and defaults are texts; numbers and booleans are
/// decimal numbers. Keeping values beyond the end of the process is up to the store. It must
/// outlive the kernel and is called on the thread that works with the kernel.
///
///   [QO_Settings]            a section
///   UnrelMaxPercent=20       a key with its value
class QO_API KVConfig
{
public:
    class Section;
    class Key;

    enum ESectionKind : int
    {
        ordinarySection = 1
    };

    virtual ~KVConfig();
    /// The section of that name, created at the first call. Never null.
    virtual Section* addSection(int kind, const char16_t* name) = 0;
    /// The key of that name in the section. A value that the store already has goes before the
    /// default. Never null; valid as long as the store.
    virtual Key* addKey(Section* section, const char16_t* name, const char16_t* defaultValue) = 0;
    virtual CString getValue(const Key* key) const = 0;
    virtual void setValue(Key* key, const CString& value) = 0;
};

/// The host's module object; the kernel only keeps a pointer to it.
class QO_API CKVModule
{
public:
    virtual ~CKVModule();
};
