#pragma once

#include "types/Export.h"
#include "types/String.h"

/// The host's store of settings. The kernel declares what it knows and keeps the handles; values
/// and defaults are texts, numbers and booleans their decimal text. Values written through a handle
/// are the store's business to persist. The store must outlive the kernel and takes calls from the
/// thread that works with the kernel.
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
    /// The section of that name, made on first call; never null.
    virtual Section* addSection(int kind, const char16_t* name) = 0;
    /// The key of that name in the section; a value that the store already has wins over the
    /// default. Never null; good for the life of the store.
    virtual Key* addKey(Section* section, const char16_t* name, const char16_t* defaultValue) = 0;
    virtual CString getValue(const Key* key) const = 0;
    virtual void setValue(Key* key, const CString& value) = 0;
};

/// The host's module object; the kernel only holds on to it.
class QO_API CKVModule
{
public:
    virtual ~CKVModule();
};
