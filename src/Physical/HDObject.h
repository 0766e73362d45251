#pragma once

#include "Logical/Forward.h"
#include "Logical/LTObjectType.h"
#include "Physical/Forward.h"
#include "Physical/QoCheckObject.h"

#include <boost/shared_ptr.hpp>

/// A directory or file of a collection. Objects are held by handle and made by the factories of
/// their classes only. Directory and file hold each other, so a tree ends through
/// CQoUtils::releaseHDDir, never by dropping handles alone. No locks: the host keeps calls apart.
class QO_API CHDObject : public CQoCheckObject
{
public:
    enum EHDObjectType : std::uint8_t
    {
        HD_File = 1,
        HD_Directory = 2
    };

    virtual bool isFile() const;
    /// The logical object of that type which hangs on this one; null without one.
    virtual boost::shared_ptr<CLTObject> getLTAssoc(CLTObjectType::EType type) const;
    /// Whether that very object hangs on this one.
    virtual bool hasLTAssoc(const boost::shared_ptr<CLTObject>& object) const;
    /// Files and directories directly below; 1 for a file.
    virtual int getItemCount() const;
    /// The same with everything deeper.
    virtual int getRecItemCount() const;
    /// Only the files, here and deeper.
    virtual int getRecFileCount() const;
    virtual bool hasMusicFilesRec() const;

    EHDObjectType getHDObjectType() const noexcept { return m_hdObjectType; }

protected:
    /// Only the factories can name it, so only they can make objects.
    struct Key
    {
        explicit Key() = default;
    };

    explicit CHDObject(EHDObjectType type) : CQoCheckObject(OT_Physical), m_hdObjectType(type) {}

private:
    EHDObjectType m_hdObjectType;
};
