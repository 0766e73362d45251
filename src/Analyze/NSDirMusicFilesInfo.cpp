#include "Analyze/NSDirMusicFilesInfo.h"

#include "Analyze/MakeOwned.h"
#include "Analyze/MusicFileIndex.h"
#include "Physical/HDDirectory.h"
#include "Physical/HDMusicFile.h"
#include "common/BinarySearch.h"

namespace
{
using FileList = CNSDirMusicFilesInfo::FileList;

/// The order of a file's title and a music file's title, but 0 also for "song.mp3.jpg" beside
/// "song.mp3". This comparison is not transitive, so which music file is found, if any, depends on
/// the positions that the binary search visits: another way of searching would give other answers.
int compareWithMusicFile(const CString& title,
                         const CString& musicTitle,
                         const CHDMusicFile& musicFile)
{
    const int order = title.CompareNoCase(musicTitle);
    const int length = musicTitle.GetLength();
    if (order == 0 || title.GetLength() <= length || title[length] != u'.')
        return order;
    return title.CompareNoCase(musicTitle + u"." + musicFile.getExt()) == 0 ? 0 : order;
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

CNSDirMusicFilesInfo::CNSDirMusicFilesInfo() = default;

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
    const CString title = musicFile->getFileTitle();
    const auto order = [&](int at) { return title.CompareNoCase(m_titles[at]); };
    int place = m_titles.GetSize();
    // Directories list their files nearly in the order of titles: try the end first.
    if (place > 0 && order(place - 1) <= 0)
        qo::searchBinary(0, place, order, place);
    m_titles.InsertAt(place, title);
    m_musicFiles.InsertAt(place, musicFile);
    m_inOrder.push_back(musicFile);
    for (const auto& entry : m_valuesInOrder)
        addValueOf(musicFile, entry.first);
}

void CNSDirMusicFilesInfo::addMusicFilesOf(const CHDDirectory& directory)
{
    for (const auto& file : directory.getFiles())
    {
        if (file->getFileType() == CHDFile::FT_Music)
            addMusicFile(boost::static_pointer_cast<CHDMusicFile>(file));
    }
}

CNSDirMusicFilesInfo::ValuesInOrder::const_iterator
CNSDirMusicFilesInfo::collectValues(CNSAtom::EType type) const
{
    const auto [entry, isNew] = m_valuesInOrder.try_emplace(type);
    if (!isNew)
        return entry;
    try
    {
        for (const auto& musicFile : m_inOrder)
            addValueOf(musicFile, type);
    }
    catch (...)
    {
        // A part of the values would pass for all of them.
        forgetValues(type);
        throw;
    }
    return entry;
}

void CNSDirMusicFilesInfo::forgetValues(CNSAtom::EType type) const
{
    m_valuesInOrder.erase(type);
    CMapStringToPtr* values = nullptr;
    if (!m_atomValues.Lookup(type, values))
        return;
    m_atomValues.RemoveKey(type);
    if (values)
        deleteValueMap(values);
}

void CNSDirMusicFilesInfo::addValueOf(const boost::shared_ptr<CHDMusicFile>& musicFile,
                                      CNSAtom::EType type) const
{
    CString value;
    if (musicFile->getAtomValueFromDbFileItem(type, value))
        filesOf(type, value).add(musicFile);
}

FileList& CNSDirMusicFilesInfo::filesOf(CNSAtom::EType type, const CString& value) const
{
    CMapStringToPtr*& values = m_atomValues[type];
    if (!values)
        values =
            qo::makeOwned<CMapStringToPtr>(QO_HERE(u".\\Analyze\\NSDirMusicFilesInfo")).release();
    void*& files = (*values)[value];
    if (!files)
    {
        files = qo::makeOwned<FileList>(QO_HERE(u".\\Analyze\\NSDirMusicFilesInfo")).release();
        m_valuesInOrder[type].push_back(value);
    }
    return *static_cast<FileList*>(files);
}

boost::shared_ptr<CHDMusicFile>
CNSDirMusicFilesInfo::findMusicFile(const boost::shared_ptr<CHDFile>& file) const
{
    const CString title = file->getFileTitle();
    const auto order = [&](int at)
    { return compareWithMusicFile(title, m_titles[at], *m_musicFiles[at]); };
    int index = 0;
    const bool found = qo::searchBinary(0, m_titles.GetSize(), order, index);
    return found ? m_musicFiles[index] : boost::shared_ptr<CHDMusicFile>();
}

const CMapStringToPtr* CNSDirMusicFilesInfo::getAtomValues(CNSAtom::EType type) const
{
    collectValues(type);
    CMapStringToPtr* const* values = m_atomValues.PLookup(type);
    return values ? *values : nullptr;
}

const std::vector<CString>& CNSDirMusicFilesInfo::getValuesInOrder(CNSAtom::EType type) const
{
    return collectValues(type)->second;
}

qo::MusicFileIndex& CNSDirMusicFilesInfo::getIndex() const
{
    if (!m_index)
        m_index =
            qo::makeOwned<qo::MusicFileIndex>(QO_HERE(u".\\Analyze\\NSDirMusicFilesInfo"), *this);
    return *m_index;
}
