#include "Physical/HDSearchResult.h"

#include "QoColl/Db/Records/QoFileDbItem.h"
#include "QoColl/Db/Records/VelmoraFileParamsUtils.h"
#include "QoColl/Tags/SimpleMusicTag.h"
#include "common/FilePathParts.h"
#include "common/MakeObject.h"
#include "types/CharClass.h"

namespace
{
constexpr const char16_t* sourceEnd = u"::";
} // namespace

CHDSearchResult::TrackSource CHDSearchResult::s_trackSource = nullptr;

boost::shared_ptr<CHDSearchResult>
CHDSearchResult::createSearchResult(const boost::shared_ptr<QoFileDbItem>& item)
{
    return qo::makeObject<CHDSearchResult>(QO_HERE(u".\\Physical\\HDSearchResult"), Key(), item);
}

CHDSearchResult::CHDSearchResult(Key, const boost::shared_ptr<QoFileDbItem>& item)
    : CQoCheckObject(OT_SearchResult)
    , m_title(item->title)
    , m_isVideo((item->flags & qo::fileFlag::video) != 0)
    , m_dbItem(item)
{
}

CHDSearchResult::~CHDSearchResult() = default;

CString CHDSearchResult::toString(bool /*full*/) const
{
    return m_dbItem->path;
}

const qo::FilePath& CHDSearchResult::getPath() const noexcept
{
    return m_dbItem->path;
}

void CHDSearchResult::getSimpleTag(SimpleMusicTag& tag) const
{
    qo::fillSimpleTag(*m_dbItem, tag);
}

CString CHDSearchResult::getXML() const
{
    // A search result has the plug-in's text where other files have the name of a share.
    constexpr int xmlParam = 39;
    return CVelmoraFileParamsUtils::ExtractParam(m_dbItem->params, xmlParam);
}

CString CHDSearchResult::getSource() const
{
    const CString source = s_trackSource ? s_trackSource(getXML()) : CString();
    if (!source.IsEmpty())
        return source;
    const CString name = qo::fileNameOf(m_dbItem->path);
    const int end = name.Find(sourceEnd);
    return end == -1 ? name : name.Left(end);
}

CString CHDSearchResult::getClipUID() const
{
    int index = 0;
    return getClipUID(index);
}

CString CHDSearchResult::getClipUID(int& index) const
{
    const CString name = qo::fileNameOf(m_dbItem->path);
    const int clip = name.Find(sourceEnd);
    const int end = clip == -1 ? -1 : name.Find(u'_', clip);
    index = end == -1 ? 0 : qo::textToInt(name.Mid(end + 1).view());
    return end == -1 ? name : name.Left(end);
}

bool CHDSearchResult::isSameClip(const CString& uid, int& index) const
{
    return getClipUID(index) == uid;
}

bool CHDSearchResult::isDownloading() const noexcept
{
    return !m_dbItem->velmoraId.IsEmpty();
}
