#pragma once

#include "Analyze/NSAtom.h"
#include "Physical/Forward.h"
#include "common/PtrListT.h"
#include "common/types/Map.h"

#include <map>
#include <memory>
#include <vector>

namespace qo
{
class MusicFileIndex;
}

/// The music files of one directory, by title and by what their records say. A record must not
/// change while its file is in here. No locks: even a search builds indexes.
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
    /// Valid until the next file is added.
    qo::MusicFileIndex& getIndex() const;

    /// Own their maps and lists.
    CMap<CNSAtom::EType, CMapStringToPtr*> m_atomValues;
    /// Sorted by title.
    FileList m_musicFiles;

private:
    FileList& filesOf(CNSAtom::EType type, const CString& value);

    std::map<CNSAtom::EType, std::vector<CString>> m_valuesInOrder;
    mutable std::unique_ptr<qo::MusicFileIndex> m_index;
};
