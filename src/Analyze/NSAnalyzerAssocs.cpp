#include "Analyze/BottomUp.h"
#include "Analyze/FolderVotes.h"
#include "Analyze/MakeOwned.h"
#include "Analyze/NSAnalyzer.h"
#include "Analyze/NSUtils.h"
#include "Physical/HDFile.h"
#include "common/Settings.h"

#include <algorithm>
#include <unordered_map>

namespace
{
using AssocMap = CNSAnalyzer::AssocMap;
using ObjectList = CNSAnalyzer::ObjectList;
using DirectoryCounts = std::unordered_map<const CHDObject*, int>;

/// Ends its store with it.
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

CString storeKey(const boost::shared_ptr<CHDObject>& object)
{
    return static_cast<const CHDDirectory&>(*object).getPath().toString(true);
}

AssocMap& assocsOf(const boost::shared_ptr<CHDObject>& directory, CMapStringToPtr& store)
{
    void*& assocs = store[storeKey(directory)];
    if (!assocs)
        assocs = qo::makeOwned<AssocMap>(QO_HERE(u".\\Analyze\\NSAnalyzerAssocs")).release();
    return *static_cast<AssocMap*>(assocs);
}

/// False after a cancel, with nothing written.
bool spreadAgreed(const ObjectList& children,
                  const qo::ItemCounts& itemCounts,
                  CMapStringToPtr& store,
                  IQoProgress* progress)
{
    std::vector<qo::FolderVote> votes;
    if (!qo::countVotes(children, itemCounts, store, progress, votes))
        return false;
    AssocMap accepted;
    for (const qo::FolderVote& vote : votes)
    {
        if (vote.result == qo::EVoteResult::agreed)
            accepted[vote.type] = vote.value;
    }
    if (accepted.IsEmpty())
        return true;
    for (const boost::shared_ptr<CHDObject>& child : children)
        CNSAnalyzer::setHDObjectAssoc(child, accepted, store);
    return true;
}

/// Settles one directory whose sub-directories are settled. counts holds those of the
/// sub-directories, which give way to that of the directory; they would otherwise be counted again
/// at each level above.
bool settleDirectory(const CHDDirectory& directory,
                     DirectoryCounts& counts,
                     CMapStringToPtr& store,
                     IQoProgress* progress)
{
    ObjectList children;
    qo::ItemCounts itemCounts;
    int count = directory.getItemCount();
    for (const auto& subDir : directory.getSubDirs())
    {
        const auto entry = counts.find(subDir.get());
        children.add(subDir);
        itemCounts.push_back(entry->second);
        count += entry->second;
        counts.erase(entry);
    }
    for (const auto& file : directory.getFiles())
    {
        if (qo::isCanceled(progress))
            return false;
        children.add(file);
        itemCounts.push_back(file->getRecItemCount());
    }
    counts[&directory] = count;
    return spreadAgreed(children, itemCounts, store, progress);
}
} // namespace

CString CNSAnalyzer::getHDObjectAssoc(const boost::shared_ptr<CHDObject>& object,
                                      CLTObjectType::EType type,
                                      CMapStringToPtr& store)
{
    if (object->isFile())
        return toFile(object).getLTAssocFromDbFileItem(type);
    void* const* assocs = store.IsEmpty() ? nullptr : store.PLookup(storeKey(object));
    const CString* value = assocs ? static_cast<AssocMap*>(*assocs)->PLookup(type) : nullptr;
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
        assocsOf(object, store).SetAt(type, value);
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
    qo::ItemCounts itemCounts;
    for (const boost::shared_ptr<CHDObject>& object : objects)
        itemCounts.push_back(object->getRecItemCount());
    spreadAgreed(objects, itemCounts, store, progress);
}

void CNSAnalyzer::detectUnrelatedAssocs(const boost::shared_ptr<CHDDirectory>& directory,
                                        CMapStringToPtr& store,
                                        IQoProgress* progress)
{
    DirectoryCounts counts;
    qo::walkBottomUp(directory,
                     progress,
                     [&](const boost::shared_ptr<CHDDirectory>& each)
                     { return settleDirectory(*each, counts, store, progress); });
}

void CNSAnalyzer::detectUnrelatedAssocs(const boost::shared_ptr<CHDDirectory>& directory,
                                        IQoProgress* progress)
{
    OwnStore store;
    detectUnrelatedAssocs(directory, store.map, progress);
}
