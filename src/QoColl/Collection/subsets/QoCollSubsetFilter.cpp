#include "Logical/LTAlbum.h"
#include "Logical/LTArtist.h"
#include "Logical/LTGenre.h"
#include "Logical/LTTrack.h"
#include "Physical/HDFile.h"
#include "QoColl/Collection/subsets/QoCollSubset.h"
#include "types/StringArray.h"

// Which files a subset chooses, one by one. SubsetNames gives the same answers for all files at
// once.

namespace
{
void addName(const boost::shared_ptr<CLTObject>& object, CStringArray& strings)
{
    if (object && !object->isUnknown())
        strings.Add(object->getName());
}
} // namespace

void CQoCollSubset::fixFilter()
{
    m_filterText.MakeLower();
}

void CQoCollSubset::setFilterText(const CString& text, EFilterType type)
{
    m_filterText = text;
    m_filterType = type;
    fixFilter();
}

void CQoCollSubset::setShowFilterInfo(const ShowFilterInfo& info)
{
    m_showFilterInfo = info;
}

bool CQoCollSubset::filterTypeMatches(EFilterType wanted, EFilterType field)
{
    return wanted == filterAll || wanted == field;
}

void CQoCollSubset::getFileSearchStrings(const File& file, EFilterType type, CStringArray& strings)
{
    Genre genre;
    Artist artist;
    Album album;
    CQoUtils::Track track;
    getLTAssocs(file, genre, artist, album, track);
    if (type == filterAll)
        addName(genre, strings);
    if (filterTypeMatches(type, filterArtist))
        addName(artist, strings);
    if (filterTypeMatches(type, filterAlbum))
        addName(album, strings);
    if (filterTypeMatches(type, filterTrack))
        addName(track, strings);
    if (filterTypeMatches(type, filterAll))
        strings.Add(file->getFileTitle());
}

bool CQoCollSubset::stringStartMatchesFilter(const CString& word) const
{
    return word.view().starts_with(m_filterText.view());
}

bool CQoCollSubset::stringMatchesFilter(const CString& text) const
{
    CString folded = text;
    folded.MakeLower();
    if (folded.Find(m_filterText) == -1)
        return false;
    for (const CString& word : CStringArray::split(folded, u' '))
    {
        if (!word.IsEmpty() && stringStartMatchesFilter(word))
            return true;
    }
    return false;
}

bool CQoCollSubset::stringsMatchFilter(const CStringArray& strings) const
{
    for (const CString& text : strings)
    {
        if (stringMatchesFilter(text))
            return true;
    }
    return false;
}

bool CQoCollSubset::fileMatchesFilter(const File& file) const
{
    if (!m_isTextSubset)
        return CQoUtils::isObjectVisible(file, m_showFilterInfo);
    CStringArray strings;
    getFileSearchStrings(file, m_filterType, strings);
    return stringsMatchFilter(strings);
}

void CQoCollSubset::checkAddFiles(const Files& files)
{
    for (const File& file : files)
    {
        if (fileMatchesFilter(file))
            addRemoveFile(file, true);
    }
}
