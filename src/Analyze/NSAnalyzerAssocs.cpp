#include "Analyze/BottomUp.h"
#include "Analyze/FolderVotes.h"
#include "Analyze/MakeOwned.h"
#include "Analyze/NSAnalyzer.h"
#include "Analyze/NSUtils.h"
#include "Physical/HDFile.h"
#include "common/Settings.h"

#include <algorithm>
#include <vector>

// The first question of the analysis: what do the children of a folder agree on? FolderVotes
// counts; this file supplies the voters and spreads what was agreed. Folders are settled bottom up,
// and what is spread to a sub-folder is stored for it but votes only where the caller keeps the
// store for another round: within one walk a folder is settled before its parent gives it a value.

namespace
{
using AssocMap = CNSAnalyzer::AssocMap;
using ObjectList = CNSAnalyzer::ObjectList;

/// A store for associations of directories that deletes its contents at the end.
class OwnStore
{
public:
    OwnStore() = default;
    OwnStore(const OwnStore&) = delete;
    OwnStore& operator=(const OwnStore&) = delete;
    ~OwnStore() { CNSAnalyzer::clearAssocStore(map); }

    CMapStringToPtr map;
};

const CHDFile& toFile(const boost::shared_ptr<CHDObject>& object)
{
    return static_cast<const CHDFile&>(*object);
}

const CHDDirectory& toDirectory(const boost::shared_ptr<CHDObject>& object)
{
    return static_cast<const CHDDirectory&>(*object);
}

/// Stores are keyed by the full path as text.
CString storeKey(const CHDDirectory& directory)
{
    return directory.getPath().toString(true);
}

/// The associations of a directory, made when there are none yet.
AssocMap& assocsOf(const CHDDirectory& directory, CMapStringToPtr& store)
{
    void*& assocs = store[storeKey(directory)];
    if (!assocs)
        assocs = qo::makeOwned<AssocMap>(QO_HERE(u".\\Analyze\\NSAnalyzerAssocs")).release();
    return *static_cast<AssocMap*>(assocs);
}

/// Null when nothing is stored. Most stores are empty; the path is not even built for these.
const AssocMap* findAssocs(const CHDDirectory& directory, const CMapStringToPtr& store)
{
    void* const* assocs = store.IsEmpty() ? nullptr : store.PLookup(storeKey(directory));
    return assocs ? static_cast<const AssocMap*>(*assocs) : nullptr;
}

qo::Voter voterOf(const CHDDirectory& directory, int itemCount, const CMapStringToPtr& store)
{
    return {nullptr, findAssocs(directory, store), itemCount};
}

qo::Voter voterOf(const CHDFile& file)
{
    return {file.getDbItem().get(), nullptr, file.getRecItemCount()};
}

/// Counts the votes and collects the agreed values; false after a cancel.
bool findAgreed(const qo::Voters& voters, IQoProgress* progress, AssocMap& agreed)
{
    std::vector<qo::FolderVote> votes;
    if (!qo::countVotes(voters, qo::EVoteCount::untilContradicted, progress, votes))
        return false;
    for (const qo::FolderVote& vote : votes)
    {
        if (vote.result == qo::EVoteResult::agreed)
            agreed[vote.type] = vote.value;
    }
    return true;
}

template <class List>
void spread(const AssocMap& agreed, const List& children, CMapStringToPtr& store)
{
    if (agreed.IsEmpty())
        return;
    for (const auto& child : children)
        CNSAnalyzer::setHDObjectAssoc(child, agreed, store);
}

/// Settles one directory after the other, each after its sub-directories, and hands the item counts
/// of sub-directories on to their parent, so that no item is counted twice.
///
///   Music/{A (10 files), B (5 files)}: after A and B m_counts is {10, 5}; settling Music takes
///   both off the end and pushes 2 + 10 + 5 = 17.
class Settlement
{
public:
    Settlement(CMapStringToPtr& store, IQoProgress* progress) : m_store(store), m_progress(progress)
    {
    }
    /// Votes and spreads for one directory; false after a cancel, with nothing written.
    bool settle(const CHDDirectory& directory)
    {
        m_voters.clear();
        addSubDirs(directory);
        for (const auto& file : directory.getFiles())
        {
            if (qo::isCanceled(m_progress))
                return false;
            m_voters.push_back(voterOf(*file));
        }
        AssocMap agreed;
        if (!findAgreed(m_voters, m_progress, agreed))
            return false;
        spread(agreed, directory.getSubDirs(), m_store);
        spread(agreed, directory.getFiles(), m_store);
        return true;
    }

private:
    /// Adds the sub-directories as voters and replaces their counts, the last ones of m_counts, by
    /// the count of this directory.
    void addSubDirs(const CHDDirectory& directory)
    {
        const auto first = m_counts.end() - directory.getSubDirs().GetSize();
        auto itemCount = first;
        int count = directory.getItemCount();
        for (const auto& subDir : directory.getSubDirs())
        {
            m_voters.push_back(voterOf(*subDir, *itemCount, m_store));
            count += *itemCount++;
        }
        m_counts.erase(first, m_counts.end());
        m_counts.push_back(count);
    }

    CMapStringToPtr& m_store;
    IQoProgress* m_progress;
    /// The item count of each directory that is settled and whose parent is not, in the walk's
    /// order.
    std::vector<int> m_counts;
    qo::Voters m_voters; ///< of the directory at hand; kept for its memory
};
} // namespace

CString CNSAnalyzer::getHDObjectAssoc(const boost::shared_ptr<CHDObject>& object,
                                      CLTObjectType::EType type,
                                      CMapStringToPtr& store)
{
    if (object->isFile())
        return toFile(object).getLTAssocFromDbFileItem(type);
    const AssocMap* assocs = findAssocs(toDirectory(object), store);
    const CString* value = assocs ? assocs->PLookup(type) : nullptr;
    return value ? *value : CString();
}

void CNSAnalyzer::setHDObjectAssoc(const boost::shared_ptr<CHDObject>& object,
                                   CLTObjectType::EType type,
                                   const CString& value,
                                   CMapStringToPtr& store)
{
    if (object->isFile())
        static_cast<CHDFile&>(*object).setLTAssocToDbFileItem(type, value);
    else
        assocsOf(toDirectory(object), store).SetAt(type, value);
}

void CNSAnalyzer::setHDObjectAssoc(const boost::shared_ptr<CHDObject>& object,
                                   const AssocMap& accepted,
                                   CMapStringToPtr& store)
{
    for (const CLTObjectType::EType type : CNSUtils::m_ltAssocsTypes)
    {
        if (const CString* value = accepted.PLookup(type))
            setHDObjectAssoc(object, type, *value, store);
    }
}

void CNSAnalyzer::clearAssocStore(CMapStringToPtr& store) noexcept
{
    CString path;
    void* assocs = nullptr;
    for (POSITION position = store.GetStartPosition(); position;)
    {
        store.GetNextAssoc(position, path, assocs);
        delete static_cast<AssocMap*>(assocs);
    }
    store.RemoveAll();
}

bool CNSAnalyzer::findContradictingAssocs(CLTObjectType::EType type,
                                          const CString& value,
                                          const ObjectList& objects,
                                          const boost::shared_ptr<CHDObject>& self,
                                          CMapStringToPtr& store)
{
    if (value.IsEmpty())
        return false;
    for (const boost::shared_ptr<CHDObject>& object : objects)
    {
        if (object == self)
            continue;
        const CString other = getHDObjectAssoc(object, type, store);
        if (!other.IsEmpty() && other.CompareNoCase(value) != 0)
            return true;
    }
    return false;
}

bool CNSAnalyzer::isUnrelAssocAccepted(int unrelated, int related)
{
    constexpr int all = 100;
    const int maxPercent = std::clamp(CQoSettings::getInt(CQoSettings::UnrelMaxPercent), 0, all);
    const auto without = static_cast<long long>(unrelated);
    return without * all <= (without + related) * maxPercent;
}

bool CNSAnalyzer::isUnrelAssocAccepted(CLTObjectType::EType type,
                                       const CString& value,
                                       const ObjectList& objects,
                                       CMapStringToPtr& store)
{
    int related = 0;
    int unrelated = 0;
    for (const boost::shared_ptr<CHDObject>& object : objects)
    {
        const bool isRelated = getHDObjectAssoc(object, type, store).CompareNoCase(value) == 0;
        (isRelated ? related : unrelated) += object->getRecItemCount();
    }
    return isUnrelAssocAccepted(unrelated, related);
}

void CNSAnalyzer::detectUnrelatedAssocs(const ObjectList& objects,
                                        CMapStringToPtr& store,
                                        IQoProgress* progress)
{
    qo::Voters voters;
    for (const boost::shared_ptr<CHDObject>& object : objects)
        voters.push_back(object->isFile()
                             ? voterOf(toFile(object))
                             : voterOf(toDirectory(object), object->getRecItemCount(), store));
    AssocMap agreed;
    if (findAgreed(voters, progress, agreed))
        spread(agreed, objects, store);
}

void CNSAnalyzer::detectUnrelatedAssocs(const boost::shared_ptr<CHDDirectory>& directory,
                                        CMapStringToPtr& store,
                                        IQoProgress* progress)
{
    Settlement settlement(store, progress);
    qo::walkBottomUp(directory,
                     progress,
                     [&](const boost::shared_ptr<CHDDirectory>& each)
                     { return settlement.settle(*each); });
}

void CNSAnalyzer::detectUnrelatedAssocs(const boost::shared_ptr<CHDDirectory>& directory,
                                        IQoProgress* progress)
{
    OwnStore store;
    detectUnrelatedAssocs(directory, store.map, progress);
}
