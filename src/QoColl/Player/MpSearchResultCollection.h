#pragma once

#include "Physical/Forward.h"
#include "QoColl/Db/Records/Forward.h"
#include "common/PtrListT.h"
#include "types/Export.h"
#include "types/String.h"

#include <vector>

class CQoCollDb;
struct CSearchResultDraggableObject;

/// The tracks that searches on the web found and that were kept, as a small collection of its own
/// in the collection's database. A new one is stored at once; a change, and a removal, when
/// saveDbChanges() is called. No locks: as for collections.
class QO_API CMpSearchResultCollection
{
public:
    static CMpSearchResultCollection m_instance;

    /// Takes what that database has in place of what is here. CSQLiteException* goes to the caller.
    void load(const CString& dbPath);
    /// Stores changed records and removes those marked as deleted, in one transaction; the deleted
    /// ones leave the list. A failure leaves a line in the log, and everything as it was.
    void saveDbChanges();
    /// Marks as deleted what no playlist of the user's has; see CMpPlaylistUtils.
    void clearUnusedLinks();
    /// Stores a new one. CSQLiteException* goes to the caller.
    boost::shared_ptr<CHDSearchResult>
    addSearchResultFile(const CSearchResultDraggableObject& object);
    /// The same for several, all or none of them.
    CPtrListT<CHDSearchResult>
    addSearchResultFiles(const std::vector<CSearchResultDraggableObject>& objects);
    /// Marks it as deleted.
    void deleteSearchResultFile(boost::shared_ptr<CHDSearchResult>& result);

    // Linear searches; an empty handle when there is none.
    boost::shared_ptr<CHDSearchResult> getSearchResultByVelmoraID(const CString& velmoraId) const;
    boost::shared_ptr<CHDSearchResult> getSearchResultByID(int id) const;
    boost::shared_ptr<CHDSearchResult> getSearchResultByPath(const CString& path) const;
    const CPtrListT<CHDSearchResult>& getSearchResults() const noexcept { return m_results; }

protected:
    void createColl(QoFileDbItemArray& items);
    /// The path for a further clip of that name. With files of it up to number 3, the new one is
    /// number 4; with none, or with one without a number, it gets none.
    CString getAvailableNewPath(const CString& name) const;

private:
    boost::shared_ptr<CHDSearchResult> add(CQoCollDb& db,
                                           const CSearchResultDraggableObject& object);

    CString m_dbPath;
    CPtrListT<CHDSearchResult> m_results;
};
