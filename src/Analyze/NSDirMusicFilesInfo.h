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

/// The music files of one directory, ordered by title and indexed by the values of their records
/// (artist, album and so on). It is built once for a directory and then asked for each file without
/// tags. The values of a type are collected when they are first asked for, so a record must not
/// change while its file is in here. No locks: even the const functions build indexes. After a
/// failed allocation it may only be destroyed.
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
    /// The music file with the same name as that file: "song.jpg" and "song.mp3.txt" both find
    /// "song.mp3". Null when the binary search over the titles meets none.
    boost::shared_ptr<CHDMusicFile> findMusicFile(const boost::shared_ptr<CHDFile>& file) const;
    /// A map from each value to the FileList* of its music files; null for a type without values.
    /// The map stays the property of this object.
    const CMapStringToPtr* getAtomValues(CNSAtom::EType type) const;

    /// The distinct values of the type in the order in which their files were added.
    const std::vector<CString>& getValuesInOrder(CNSAtom::EType type) const;
    /// The file titles (names without extension) of m_musicFiles, index by index.
    const CStringArray& getTitles() const noexcept { return m_titles; }
    /// Valid until the next file is added.
    qo::MusicFileIndex& getIndex() const;

    /// Sorted by file title; only addMusicFile() changes it.
    FileList m_musicFiles;

private:
    using ValuesInOrder = std::map<CNSAtom::EType, std::vector<CString>>;

    ValuesInOrder::const_iterator collectValues(CNSAtom::EType type) const;
    void forgetValues(CNSAtom::EType type) const;
    void addValueOf(const boost::shared_ptr<CHDMusicFile>& musicFile, CNSAtom::EType type) const;
    FileList& filesOf(CNSAtom::EType type, const CString& value) const;

    /// Owns the maps and the lists in them; holds the types that were asked for.
    mutable CMap<CNSAtom::EType, CMapStringToPtr*> m_atomValues;
    CStringArray m_titles;
    std::vector<boost::shared_ptr<CHDMusicFile>> m_inOrder; ///< the files in the order of adding
    mutable ValuesInOrder m_valuesInOrder; ///< has an entry for each type that was asked for
    mutable std::unique_ptr<qo::MusicFileIndex> m_index;
};
