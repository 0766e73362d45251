#pragma once

#include "core/store/StoreRows.h"

#include <QoKernel/Collection.h>

#include <optional>
#include <set>
#include <string>
#include <vector>

namespace qo::host
{
/// This host's end of the kernel's door: says which known files are read again, and keeps what the
/// kernel could not do, for whoever has to explain it. On the kernel's thread.
class ScanHost final : public IQoScanHost
{
public:
    /// Whether known files are read whatever their size and time.
    void setReadAll(bool readAll) { m_readAll = readAll; }
    /// Files that could not be read before: each is read as soon as this user may read it.
    void setReadAgain(const CStringArray& files);
    const std::set<CString>& readAgain() const { return m_readAgain; }
    /// Extensions in small letters: their files are read, as they count as something else now.
    void setReadExts(const std::set<std::string>& exts) { m_readExts = exts; }

    bool walksItself() override { return true; }
    bool readsAhead() override { return m_readsAhead; }
    void setReadsAhead(bool readsAhead) { m_readsAhead = readsAhead; }
    /// True for a file of another size or another write time, be it an older one, and for one that
    /// may be read at last.
    bool mustRead(const QoFileDbItem& record, const FileInfo& seen) override;
    /// Not owned; null for none.
    void setTagsAhead(KVTagLib::TagsAhead* ahead) { m_ahead = ahead; }
    KVTagLib::TagsAhead* tagsAhead() override { return m_ahead; }
    void failed(ETrouble trouble, const CString& path, const CString& cause) override;

    /// Who follows what the analysis makes of the records.
    class INames
    {
    public:
        virtual ~INames() = default;
        virtual void beforeNames(const QoFileDbItemArray& records) = 0;
        virtual void beforeSave() = 0;
    };
    /// Not owned; null for nobody.
    void setNames(INames* names) { m_names = names; }
    void beforeNames(const QoFileDbItemArray& records) override;
    /// Keeps what the tag says beyond the record, and who took a new file in, until the save.
    void fileRead(const QoFileDbItem& record, const KVTagLib::CTags* tags) override;
    void beforeSave() override;

    /// What follows is about the time since forget().
    void forget();
    /// Why the collection could not be loaded or saved last, as a clause; empty when it could.
    const std::string& lastFailure() const { return m_lastFailure; }
    /// Files that were to be read and could not.
    const CStringArray& unreadFiles() const { return m_unread; }
    /// Of those, what is no longer a trouble since its record has gone.
    void forgetFile(const CString& path);
    /// A sentence for each way in which files could not be taken in, or not with their tags.
    std::vector<std::string> fileRemarks() const;

private:
    bool isOfOtherKind(const QoFileDbItem& record) const;
    void storeNotes();

    bool m_readAll = false;
    bool m_readsAhead = true;
    INames* m_names = nullptr;
    KVTagLib::TagsAhead* m_ahead = nullptr;
    std::set<CString> m_readAgain;
    std::set<std::string> m_readExts;
    int m_ofOtherKind = 0;
    std::string m_lastFailure;
    CStringArray m_unread;
    CStringArray m_givenUp;
    CStringArray m_twins;
    std::vector<TagNotes> m_tagNotes; ///< of files that were read since the last save
    std::vector<LastingId> m_added;   ///< lasting ids of the new ones among them
    std::optional<CString> m_addedBy; ///< "" for the owner of the data folder
    std::string m_notesFailure;
};
} // namespace qo::host
