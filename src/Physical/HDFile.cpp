#include "Physical/HDFile.h"

#include "Physical/HDMusicFile.h"
#include "Physical/HDOtherFile.h"
#include "Physical/HDPictureFile.h"
#include "Physical/HDTextFile.h"
#include "QoColl/Collection/QoUtils.h"
#include "QoColl/Db/Records/QoFileDbItem.h"
#include "QoColl/Db/Records/VelmoraFileParams.h"
#include "QoColl/Db/Records/VelmoraFileParamsUtils.h"
#include "QoColl/Tags/SimpleMusicTag.h"
#include "common/FilePathParts.h"
#include "common/MakeObject.h"
#include "types/CharClass.h"

#include <iterator>

// What all files share, and the choice of the class by extension.

boost::shared_ptr<CHDFile> CHDFile::createHDFile(const boost::shared_ptr<QoFileDbItem>& item)
{
    const CString ext = qo::fileExtOf(item->path);
    boost::shared_ptr<CHDFile> file;
    // The order of the questions matters if an extension is ever in two lists.
    if (CQoUtils::isMusicExt(ext))
        file = qo::makeObject<CHDMusicFile>(QO_HERE(u".\\Physical\\HDFile"), Key(), item);
    else if (isPictureFile(ext))
        file = qo::makeObject<CHDPictureFile>(QO_HERE(u".\\Physical\\HDFile"), Key(), item);
    else if (isTextFile(ext))
        file = qo::makeObject<CHDTextFile>(QO_HERE(u".\\Physical\\HDFile"), Key(), item);
    else
        file = qo::makeObject<CHDOtherFile>(QO_HERE(u".\\Physical\\HDFile"), Key(), item);
    file->setFileInfo();
    return file;
}

CHDFile::CHDFile(EHDFileType type, const boost::shared_ptr<QoFileDbItem>& item)
    : CHDObject(HD_File), m_fileType(type), m_dbItem(item)
{
    setFileTitle(item->path);
}

CHDFile::~CHDFile() = default;

void CHDFile::setFileTitle(const qo::FilePath& path)
{
    // Paths in other forms, or names beyond 65,535 units, get the title as a text of its own.
    const std::u16string_view name = qo::plainFileName(path);
    if (name.size() != path.name().view().size() || name.empty() || name.size() >= wholeText)
    {
        m_titleText = qo::fileTitleOf(path);
        return;
    }
    m_titleText = path.name();
    m_titleLength = static_cast<std::uint16_t>(name.substr(0, name.rfind(u'.')).size());
}

CString CHDFile::getFileTitle() const
{
    return m_titleLength == wholeText ? m_titleText : m_titleText.Left(m_titleLength);
}

CString CHDFile::toString(bool /*full*/) const
{
    return m_dbItem->path;
}

void CHDFile::clearLTObjects() {}

void CHDFile::setFileInfo() {}

int CHDFile::getAudioVideoType() const
{
    return AV_None;
}

void CHDFile::setParentDir(const boost::shared_ptr<CHDDirectory>& dir)
{
    m_parent = dir;
}

const qo::FilePath& CHDFile::getPath() const noexcept
{
    return m_dbItem->path;
}

CString CHDFile::getFileName() const
{
    return qo::fileNameOf(m_dbItem->path);
}

CString CHDFile::getExt() const
{
    return qo::fileExtOf(m_dbItem->path);
}

std::int64_t CHDFile::getSize() const noexcept
{
    return m_dbItem->size;
}

void CHDFile::getSimpleTag(SimpleMusicTag& tag) const
{
    qo::fillSimpleTag(*m_dbItem, tag);
}

bool CHDFile::isLongStream() const
{
    QorganizerDef::VelmoraFileParams params;
    return CVelmoraFileParamsUtils::FromDbParam(m_dbItem->params, params) &&
           (params.longStreamLength != 0 || params.longStreamPartLength != 0);
}

bool CHDFile::getAtomValueFromDbFileItem(int atomType, CString& value) const
{
    // Artist to genre are the atom types 2 to 7, in the order of the table below.
    constexpr int firstType = 1;
    constexpr int lastType = 22;
    if (atomType < firstType || atomType > lastType)
        return false;
    const QoFileDbItem& item = *m_dbItem;
    const CString* const texts[] = {
        &item.artist, &item.album, &item.title, &item.trackNumber, &item.year, &item.genre};
    constexpr int firstText = 2;
    if (atomType < firstText || atomType >= firstText + static_cast<int>(std::size(texts)))
        return false;
    value = *texts[atomType - firstText];
    return !value.IsEmpty();
}

CString QoFileDbItem::*CHDFile::getLTAssocField(CLTObjectType::EType type) noexcept
{
    switch (type)
    {
    case CLTObjectType::Album:
        return &QoFileDbItem::album;
    case CLTObjectType::Artist:
        return &QoFileDbItem::artist;
    case CLTObjectType::Genre:
        return &QoFileDbItem::genre;
    case CLTObjectType::Track:
        return &QoFileDbItem::title;
    default:
        return nullptr;
    }
}

CString CHDFile::getLTAssocFromDbFileItem(CLTObjectType::EType type) const
{
    CString QoFileDbItem::*const field = getLTAssocField(type);
    return field ? (*m_dbItem).*field : CString();
}

void CHDFile::setLTAssocToDbFileItem(CLTObjectType::EType type, const CString& value)
{
    CString QoFileDbItem::*const field = getLTAssocField(type);
    if (!field || (*m_dbItem).*field == value)
        return;
    keepTag();
    (*m_dbItem).*field = value;
}

void CHDFile::keepTag()
{
    if (m_fileType == FT_Music)
        static_cast<CHDMusicFile&>(*this).getTag().keepTexts();
}

int CHDFile::cmpFilePath(const CString& path, const boost::shared_ptr<CHDFile>& file)
{
    return -file->getPath().CompareNoCase(path);
}

int CHDFile::cmpFilePath(const qo::FilePath& path, const boost::shared_ptr<CHDFile>& file)
{
    return path.CompareNoCase(file->getPath());
}

bool CHDFile::isOneOfExt(const char16_t* ext, const char16_t* const* table, int count)
{
    for (int i = 0; i < count; ++i)
    {
        if (qo::compareNoCase(ext, table[i]) == 0)
            return true;
    }
    return false;
}

bool CHDFile::isPictureFile(const CString& ext)
{
    static constexpr const char16_t* extensions[] = {u"jpg", u"gif", u"bmp", u"png"};
    return isOneOfExt(ext, extensions, static_cast<int>(std::size(extensions))) ||
           CQoUtils::getFurtherExtKind(ext) == CQoUtils::EK_Picture;
}

bool CHDFile::isTextFile(const CString& ext)
{
    static constexpr const char16_t* extensions[] = {u"txt", u"pdf"};
    return isOneOfExt(ext, extensions, static_cast<int>(std::size(extensions))) ||
           CQoUtils::getFurtherExtKind(ext) == CQoUtils::EK_Text;
}
