#pragma once

#include "core/load/FarScan.h"
#include "core/share/PeerAddress.h"
#include "core/store/HostStore.h"

#include <QoKernel/Collection.h>

#include <string>
#include <utility>
#include <vector>

namespace qo::host
{
/// A share with a friend: what is offered to him, or what he offers.
struct Share
{
    int id = 0;         ///< the row, by which the paths of his files name the share
    bool isOwn = false; ///< offered by this user
    CString peer;       ///< the friend's name
    CString shareId;    ///< whoever has it gets the files
    CString link;
    std::optional<CString> query; ///< which files an own one offers, "" for all; none without it
    int files = 0;                ///< of a friend's, as of the last scan
    PeerAddress address;

    /// The root of the files of a friend's share, and the id of their collection in the database.
    CQoCollPath root() const;
    CString collection() const;
    FarCollection farCollection() const;

    /// What a link says. Throws HostError for one that is no invitation of this program. The
    /// address has no host when the link carries none.
    static Share ofLink(const CString& link);
};

/// What an own share offers and to whom.
struct Invitation
{
    std::string friendName;
    std::string ownName; ///< as the friend knows this user
    CString query;
    PeerAddress address;
};

/// The shares of a collection: rows of its database, and the queries beside them in the host's
/// store. Changes need the lock. On the thread that calls the kernel; throws HostError, and what
/// the database layer throws.
class Shares
{
public:
    /// Of the session's data folder; without a database there are none.
    Shares();

    const std::vector<Share>& all() const& { return m_shares; }
    std::vector<Share> all() && { return std::move(m_shares); }
    /// The own share with a friend, or his. Throws HostError when there is none.
    const Share& need(const std::string& friendName, bool isOwn) const;

    /// The new share of that invitation. Of shares of one kind no two have the same friend's name.
    Share offer(const Invitation& invitation, bool isTrial);
    /// A friend's share by his link; the name is his own unless another one is given.
    Share accept(const CString& link, const std::string& name, bool isTrial);
    /// Forgets the share and, of a friend's, the records of his files.
    void remove(const Share& share);
    void setFiles(const Share& share, int files) const;

private:
    void needFreeName(const CString& name, bool isOwn) const;
    void insert(Share& share) const;

    CString m_database;
    HostStore m_store;
    std::vector<Share> m_shares;
};
} // namespace qo::host
