#pragma once

#include "Analyze/NSAtom.h"
#include "Physical/Forward.h"
#include "common/PtrListT.h"
#include "types/Map.h"
#include "types/StringArray.h"

#include <map>
#include <memory>
#include <vector>

namespace qo
{
class MusicFileIndex;
}

/// The music files of one directory, by title and by what their records say. A record must not
/// change while its file is in here: the values of a type are collected when they are first asked
/// for, as most names need few types or none. No locks: even a search builds indexes. After
/// a failed allocation it is only good to be destroyed.
class QO_API CNSDirMusicFilesInfo
{
public:
    using FileList = CPtrListT<CHDMusicFile>;

    CNSDirMusicFilesInfo();
    CNSDirMusicFilesInfo(const CNSDirMusicFilesInfo&) = delete;
    CNSDirMusicFilesInfo& operator=(const CNSDirMusicFilesInfo&) = delete;
    ~CNSDirMusicFilesInfo();

    void addMusicFile(const boost::shared_ptr<CHDMusicFile>& musicFile);
    /// Adds those that lie directly in the directory.
    void addMusicFilesOf(const CHDDirectory& directory);
    /// The music file whose title, or title with extension, is the title of that file. Null if the
    /// binary search over the titles meets none.
    boost::shared_ptr<CHDMusicFile> findMusicFile(const boost::shared_ptr<CHDFile>& file) const;
    /// From each value to its FileList*; null for a type without values. Stays this object's.
    const CMapStringToPtr* getAtomValues(CNSAtom::EType type) const;

    /// The values of the type in the order of adding.
    const std::vector<CString>& getValuesInOrder(CNSAtom::EType type) const;
    /// The titles of m_musicFiles, index by index.
    const CStringArray& getTitles() const noexcept { return m_titles; }
    /// Valid until the next file is added.
    qo::MusicFileIndex& getIndex() const;

    /// Sorted by title; only addMusicFile() adds to them.
    FileList m_musicFiles;

private:
    using ValuesInOrder = std::map<CNSAtom::EType, std::vector<CString>>;

    ValuesInOrder::const_iterator collectValues(CNSAtom::EType type) const;
    void addValueOf(const boost::shared_ptr<CHDMusicFile>& musicFile, CNSAtom::EType type) const;
    FileList& filesOf(CNSAtom::EType type, const CString& value) const;

    /// Own their maps and lists; of the types that were asked for.
    mutable CMap<CNSAtom::EType, CMapStringToPtr*> m_atomValues;
    CStringArray m_titles;
    std::vector<boost::shared_ptr<CHDMusicFile>> m_inOrder; ///< the files in the order of adding
    mutable ValuesInOrder m_valuesInOrder; ///< has an entry for each type that was asked for
    mutable std::unique_ptr<qo::MusicFileIndex> m_index;
};
