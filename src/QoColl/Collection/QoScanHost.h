#pragma once

#include "KVTagLib/Forward.h"
#include "QoColl/Db/Forward.h"
#include "QoColl/Db/Records/QoFileDbItem.h"
#include "platform/FolderLister.h"

/// What a host decides while a collection looks at its files, and what it hears of. One object,
/// handed over with CQoCollection::setScanHost(), is the only way in which a host changes what a
/// load or a change of files does. The calls come on the thread that called the collection, in the
/// middle of its work: they must not call the collection.
class QO_API IQoScanHost : public qo::IFolderLister
{
public:
    enum class ETrouble : std::uint8_t
    {
        load,     ///< the collection could not be loaded; the path is that of the database
        save,     ///< nor saved
        readTag,  ///< the file is in the collection, without tags
        givenUp,  ///< nor is its tag, as its disk did not give the file: the next scan reads it
        absent,   ///< the file's attributes cannot be had; its record stays as it is
        unlisted, ///< a source did not list all below the folder; what it left out keeps its
                  ///< records
        twin      ///< another file has that name but for its case; this one is left out
    };

    /// Entries of a folder that a load walks. This one asks the file system.
    int list(const CString& folder, std::vector<qo::DirEntry>& entries) override;
    /// Whether the host looks through the root folders itself, by
    /// CQoCollection::applyQoFileChanges(): a load then walks none, be they others than stored or
    /// never scanned, and only drops the records that lie below none of them. This one says no.
    virtual bool walksItself();
    /// Whether the record of a file that a walk did not meet leaves the collection. This one says
    /// yes. Example: a folder that could not be read hides its files, which are not gone.
    virtual bool isGone(const QoFileDbItem& record);
    /// Whether a known file is read although its write time is not newer than the stored one, which
    /// is all that the collection itself goes by. This one says no.
    virtual bool mustRead(const QoFileDbItem& record, const qo::FileInfo& seen);
    /// What reads the tags of files before their turn comes; it must have been given these files,
    /// by their system's paths (see CQoUtils::getRealPath) and in the order in which the collection
    /// goes through them. This one has null: each file is read when its turn comes.
    virtual KVTagLib::TagsAhead* tagsAhead();
    /// Whether a load reads the rows of the database on a thread of its own, while the trees are
    /// built. The collection is the same without. This one says no.
    virtual bool readsAhead();
    /// Called when a file was read, before its record is saved. tags is null for a file without
    /// readable tags. The record has its lasting id and, if it is new, dbState::added.
    virtual void fileRead(const QoFileDbItem& record, const KVTagLib::CTags* tags);
    /// Called before the trees are built and names are analysed, with all records. A load that
    /// neither walks nor analyses does without.
    virtual void beforeNames(const QoFileDbItemArray& records);
    /// Called before a save begins. The analysis spreads values over folders without marking the
    /// records that it changes: those that shall be saved with them get dbState::modified here.
    virtual void beforeSave();
    /// The cause is a text without a closing stop, such as "Permission denied".
    virtual void failed(ETrouble trouble, const CString& path, const CString& cause);
};

namespace qo
{
/// Whether a known file is read again: for a newer write time, or when the host says so.
bool isToBeRead(const QoFileDbItem& item, const FileInfo& seen, IQoScanHost& host);
} // namespace qo
