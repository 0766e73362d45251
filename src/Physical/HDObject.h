#pragma once

#include "Logical/Forward.h"
#include "Logical/LTObjectType.h"
#include "Physical/Forward.h"
#include "Physical/QoCheckObject.h"

#include <boost/shared_ptr.hpp>

/// A physical (HD) object: a directory or file of a collection, wherever its source is. Objects are
/// made by the factories of their classes only and held by handles. Directory and file hold each
/// other, so a tree is freed through CQoUtils::releaseHDDir, never by dropping handles alone. No
/// locks: the host keeps calls apart.
class QO_API CHDObject : public CQoCheckObject
{
public:
    enum EHDObjectType : std::uint8_t
    {
        HD_File = 1,
        HD_Directory = 2
    };

    /// False for a directory.
    virtual bool isFile() const;
    /// The logical object of that type that this one is linked to; null without one.
    virtual boost::shared_ptr<CLTObject> getLTAssoc(CLTObjectType::EType type) const;
    /// Whether this one is linked to exactly that object.
    virtual bool hasLTAssoc(const boost::shared_ptr<CLTObject>& object) const;
    /// The number of files and directories directly in it; 1 for a file.
    virtual int getItemCount() const;
    /// The same with everything below.
    virtual int getRecItemCount() const;
    /// The number of files alone, here and below.
    virtual int getRecFileCount() const;
    /// Whether there is music here or below.
    virtual bool hasMusicFilesRec() const;

    EHDObjectType getHDObjectType() const noexcept { return m_hdObjectType; }

protected:
    /// The constructors of derived classes need it, so only the factories can make objects.
    struct Key
    {
        explicit Key() = default;
    };

    explicit CHDObject(EHDObjectType type) : CQoCheckObject(OT_Physical), m_hdObjectType(type) {}

private:
    EHDObjectType m_hdObjectType;
};
