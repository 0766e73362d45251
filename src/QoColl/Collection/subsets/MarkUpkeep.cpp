#include "QoColl/Collection/subsets/MarkUpkeep.h"

#include "Logical/LTObject.h"
#include "Physical/HDDirectory.h"
#include "Physical/HDFile.h"
#include "QoColl/Collection/subsets/QoCheckHelper.h"
#include "QoColl/Db/Records/QoFileDbItem.h"

namespace qo
{
void MarkUpkeep::leave(const QoUtilsTypes::File& file)
{
    if (CQoCheckObject::wasAnyChecked())
    {
        if (file->isChecked())
            m_checked.insert(file->getDbItem().get());
        touch(file);
    }
    file->setCheckState(CQoCheckState::CS_None);
}

void MarkUpkeep::join(const QoUtilsTypes::Files& files)
{
    if (!CQoCheckObject::wasAnyChecked())
        return;
    for (const QoUtilsTypes::File& file : files)
    {
        if (m_checked.count(file->getDbItem().get()) > 0)
            file->setCheckState(CQoCheckState::CS_Checked);
        touch(file);
    }
    CQoCheckHelper::updateDirsCheckState(m_dirs, m_objects);
    CQoCheckHelper::updateLTAssocsCheckState(m_objects);
    clear();
}

void MarkUpkeep::leaveAll(const QoUtilsTypes::Dir& root)
{
    if (CQoCheckObject::wasAnyChecked())
        CQoCheckHelper::setSubItemsCheckState(root, CQoCheckState::CS_None, m_objects);
    else
        CQoCheckHelper::setObjectsCheckState(root, CQoCheckState::CS_None);
}

void MarkUpkeep::clear()
{
    m_checked.clear();
    m_objects.clear();
    m_dirs.clear();
}

void MarkUpkeep::touch(const QoUtilsTypes::File& file)
{
    CQoCheckHelper::getAssocLTObjects(file, &m_objects);
    // A directory that leaves forgets its parent, so all of them are noted now.
    QoUtilsTypes::Dir dir = file->getParentDir();
    while (dir && m_dirs.addUnique(dir) != -1)
        dir = dir->getParentDir();
}
} // namespace qo
