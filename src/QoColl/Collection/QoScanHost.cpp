#include "QoColl/Collection/QoScanHost.h"

#include "QoColl/Db/QoCollDbUtils.h"
#include "platform/Platform.h"

int IQoScanHost::list(const CString& folder, std::vector<qo::DirEntry>& entries)
{
    return qo::fileSystem().list(folder, entries);
}

bool IQoScanHost::walksItself()
{
    return false;
}

bool IQoScanHost::isGone(const QoFileDbItem&)
{
    return true;
}

bool IQoScanHost::mustRead(const QoFileDbItem&, const qo::FileInfo&)
{
    return false;
}

void IQoScanHost::beforeNames(const QoFileDbItemArray&) {}

KVTagLib::TagsAhead* IQoScanHost::tagsAhead()
{
    return nullptr;
}

bool IQoScanHost::readsAhead()
{
    return false;
}

void IQoScanHost::fileRead(const QoFileDbItem&, const KVTagLib::CTags*) {}

void IQoScanHost::beforeSave() {}

void IQoScanHost::failed(ETrouble, const CString&, const CString&) {}

bool qo::isToBeRead(const QoFileDbItem& item, const FileInfo& seen, IQoScanHost& host)
{
    return CQoCollDbUtils::compareFILETIMEs(seen.modified, item.modifTime) > 0 ||
           host.mustRead(item, seen);
}
