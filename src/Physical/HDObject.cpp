#include "Physical/HDObject.h"

bool CHDObject::isFile() const
{
    return m_hdObjectType == HD_File;
}

boost::shared_ptr<CLTObject> CHDObject::getLTAssoc(CLTObjectType::EType /*type*/) const
{
    return {};
}

bool CHDObject::hasLTAssoc(const boost::shared_ptr<CLTObject>& /*object*/) const
{
    return false;
}

int CHDObject::getItemCount() const
{
    return 1;
}

int CHDObject::getRecItemCount() const
{
    return 1;
}

int CHDObject::getRecFileCount() const
{
    return 1;
}

bool CHDObject::hasMusicFilesRec() const
{
    return false;
}
