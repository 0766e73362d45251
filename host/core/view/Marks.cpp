#include "core/view/Marks.h"

#include "core/collection/CollectionFiles.h"
#include "core/session/Session.h"
#include "core/store/HostStore.h"

#include <QoKernel/Collection.h>
#include <QoKernel/Physical.h>

#include <vector>

namespace qo::host
{
namespace
{
constexpr auto checked = CQoCheckState::CS_Checked;

/// Calls visit with each file of the collection and whether its mark in the trees is the one of
/// `ids`.
template <class Visit>
void compareMarks(const std::unordered_set<LastingId>& ids, Visit visit)
{
    QoFileDbItemArray items;
    ownCollection().copyFiles(items);
    for (const QoFileDbItemPtr& item : items)
    {
        const auto file = ownCollection().getFileByPath(item->path);
        if (file)
            visit(file, ids.contains(item->velmoraId), file->getCheckState() == checked);
    }
}
} // namespace

void applyMarks()
{
    CPtrListT<CQoCheckObject> marked;
    CPtrListT<CQoCheckObject> unmarked;
    const auto ids = HostStore(Session::folder()).checkedFiles();
    compareMarks(ids,
                 [&](const boost::shared_ptr<CHDFile>& file, bool isWanted, bool isChecked)
                 {
                     if (isWanted != isChecked)
                         (isWanted ? marked : unmarked).Add(file);
                 });
    if (!marked.IsEmpty())
        CQoCheckHelper::setCheckState(marked, checked);
    if (!unmarked.IsEmpty())
        CQoCheckHelper::setCheckState(unmarked, CQoCheckState::CS_NotChecked);
}

MarkedFiles markedFiles()
{
    MarkedFiles marked;
    CQoCheckHelper::getCheckedFilesInfo(ownCollection(), marked.files, marked.music, &marked.size);
    return marked;
}

void keepMarks()
{
    std::vector<LastingId> gone;
    std::vector<LastingId> added;
    HostStore store(Session::folder());
    compareMarks(store.checkedFiles(),
                 [&](const boost::shared_ptr<CHDFile>& file, bool wasMarked, bool isChecked)
                 {
                     if (wasMarked != isChecked)
                         (isChecked ? added : gone).push_back(file->getDbItem()->velmoraId);
                 });
    if (!gone.empty() || !added.empty())
        store.changeChecked(gone, added);
}
} // namespace qo::host
