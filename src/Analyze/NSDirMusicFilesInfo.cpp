#include "Analyze/NSDirMusicFilesInfo.h"

#include "Analyze/MakeOwned.h"
#include "Analyze/MusicFileIndex.h"
#include "Physical/HDDirectory.h"
#include "Physical/HDMusicFile.h"

namespace
{
constexpr const char16_t* sourcePath = u".\\Analyze\\NSDirMusicFilesInfo";

using FileList = CNSDirMusicFilesInfo::FileList;

int compareTitles(const boost::shared_ptr<CHDMusicFile>& a,
                  const boost::shared_ptr<CHDMusicFile>& b)
{
    return a->getFileTitle().CompareNoCase(b->getFileTitle());
}

/// Also 0 for "song.mp3.jpg" beside "song.mp3". That makes no order: which music file is met
/// depends on the way the search takes.
int compareWithMusicFile(const CString& title, const boost::shared_ptr<CHDMusicFile>& musicFile)
{
    const CString musicTitle = musicFile->getFileTitle();
    const int order = title.CompareNoCase(musicTitle);
    if (order == 0 || title.GetLength() <= musicTitle.GetLength())
        return order;
    return title.CompareNoCase(musicTitle + u"." + musicFile->getExt()) == 0 ? 0 : order;
}

void deleteValueMap(CMapStringToPtr* values)
{
    CString value;
    void* files = nullptr;
    for (POSITION position = values->GetStartPosition(); position;)
    {
        values->GetNextAssoc(position, value, files);
        delete static_cast<FileList*>(files);
    }
    delete values;
}
} // namespace

CNSDirMusicFilesInfo::CNSDirMusicFilesInfo()
{
    constexpr unsigned typeSlots = 17;
    m_atomValues.InitHashTable(typeSlots);
}

CNSDirMusicFilesInfo::~CNSDirMusicFilesInfo()
{
    CNSAtom::EType type{};
    CMapStringToPtr* values = nullptr;
    for (POSITION position = m_atomValues.GetStartPosition(); position;)
    {
        m_atomValues.GetNextAssoc(position, type, values);
        deleteValueMap(values);
    }
}

void CNSDirMusicFilesInfo::addMusicFile(const boost::shared_ptr<CHDMusicFile>& musicFile)
{
    m_index.reset();
    CString value;
    for (const CNSAtom::AtomTypeName& row : CNSAtom::m_atomTypeNames)
    {
        if (musicFile->getAtomValueFromDbFileItem(row.type, value))
            filesOf(row.type, value).add(musicFile);
    }
    m_musicFiles.addSorted(musicFile, compareTitles, false);
}

void CNSDirMusicFilesInfo::addMusicFilesOf(const CHDDirectory& directory)
{
    for (const auto& file : directory.getFiles())
    {
        if (file->getFileType() == CHDFile::FT_Music)
            addMusicFile(boost::static_pointer_cast<CHDMusicFile>(file));
    }
}

FileList& CNSDirMusicFilesInfo::filesOf(CNSAtom::EType type, const CString& value)
{
    CMapStringToPtr*& values = m_atomValues[type];
    if (!values)
    {
        constexpr unsigned valueSlots = 1001;
        values = qo::makeOwned<CMapStringToPtr>(QO_HERE(sourcePath)).release();
        values->InitHashTable(valueSlots);
    }
    void*& files = (*values)[value];
    if (!files)
    {
        files = qo::makeOwned<FileList>(QO_HERE(sourcePath)).release();
        m_valuesInOrder[type].push_back(value);
    }
    return *static_cast<FileList*>(files);
}

boost::shared_ptr<CHDMusicFile>
CNSDirMusicFilesInfo::findMusicFile(const boost::shared_ptr<CHDFile>& file) const
{
    int index = 0;
    const bool found = m_musicFiles.findByKey(
        file->getFileTitle(), 0, m_musicFiles.GetSize(), compareWithMusicFile, index);
    return found ? m_musicFiles[index] : boost::shared_ptr<CHDMusicFile>();
}

const CMapStringToPtr* CNSDirMusicFilesInfo::getAtomValues(CNSAtom::EType type) const
{
    CMapStringToPtr* const* values = m_atomValues.PLookup(type);
    return values ? *values : nullptr;
}

const std::vector<CString>& CNSDirMusicFilesInfo::getValuesInOrder(CNSAtom::EType type) const
{
    static const std::vector<CString> none;
    const auto entry = m_valuesInOrder.find(type);
    return entry == m_valuesInOrder.end() ? none : entry->second;
}

qo::MusicFileIndex& CNSDirMusicFilesInfo::getIndex() const
{
    if (!m_index)
        m_index = qo::makeOwned<qo::MusicFileIndex>(QO_HERE(sourcePath), *this);
    return *m_index;
}
