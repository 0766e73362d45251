#include "core/share/Shares.h"

#include "core/base/HostError.h"
#include "core/base/Trimmed.h"
#include "core/roots/StoredRoots.h"
#include "core/session/Session.h"

#include <QoKernel/Sharing.h>

#include <boost/make_shared.hpp>

#include <algorithm>
#include <map>
#include <mutex>

namespace qo::host
{
namespace
{
/// The type of all shares; the two directions of a friendship are two shares.
constexpr int plainType = 1;

boost::shared_ptr<QoShareDbItem> rowOf(const Share& share)
{
    auto row = boost::make_shared<QoShareDbItem>();
    row->id = share.id;
    row->type = plainType;
    row->peer = share.peer;
    row->files = share.files;
    row->enable = true;
    row->shareId = share.shareId;
    row->invitation = share.link;
    row->initiator = share.isOwn;
    return row;
}
} // namespace

CQoCollPath Share::root() const
{
    CString text;
    text.Format(u"%d", id);
    return {CQoCollPath::share, text};
}

CString Share::collection() const
{
    CString text;
    text.Format(u"share:%d", id);
    return text;
}

namespace
{
/// What a link of the database says; nothing for one that cannot be read. Each is parsed once in a
/// process, since the kernel writes a line to the log for a link that it cannot read.
std::optional<Share> knownLink(const CString& link)
{
    static std::mutex lock;
    static std::map<CString, std::optional<Share>> links;
    const std::lock_guard guard(lock);
    const auto [entry, isNew] = links.try_emplace(link);
    if (isNew && CShareInvitation::IsShareInvitation(link) == CShareInvitation::SHARE_INVITATION_OK)
        entry->second = Share::ofLink(link);
    return entry->second;
}
} // namespace

FarCollection Share::farCollection() const
{
    FarCollection far;
    far.name = toUtf8(peer);
    far.id = collection();
    far.folders.Add(root().toString());
    return far;
}

Share Share::ofLink(const CString& link)
{
    Share share;
    CMapStringToString params;
    const int result = CShareInvitation::IsShareInvitation(link);
    if (result == CShareInvitation::SHARE_INVITATION_NEWER_VERSION)
        throw HostError(ExitCode::failed,
                        "the invitation was made by a newer version of the program: update qo to "
                        "take it up");
    if (result != CShareInvitation::SHARE_INVITATION_OK ||
        CShareInvitation::ParseShareLink(link, share.shareId, params) != result)
        throw HostError(ExitCode::failed,
                        "this is no valid invitation: it is not whole, or somebody changed it; ask "
                        "for a new one");
    share.link = link;
    share.peer = params[u"u"];
    if (auto address = PeerAddress::ofLinkText(toUtf8(params[u"w"])))
        share.address = std::move(*address);
    return share;
}

Shares::Shares() : m_database(Session::databasePath()), m_store(Session::folder())
{
    if (!isCollection(m_database))
        return;
    const std::map<CString, CString> queries = m_store.offers();
    DbItemArray<QoShareDbItem> rows;
    CQoCollDb(m_database).getAllShares(rows);
    for (const auto& row : rows)
    {
        // A row of another program, whose links this one cannot read, is listed all the same.
        Share share = knownLink(row->invitation).value_or(Share());
        share.id = row->id;
        share.isOwn = row->initiator;
        share.peer = row->peer;
        share.shareId = row->shareId;
        share.link = row->invitation;
        share.files = row->files;
        if (const auto query = queries.find(share.shareId); query != queries.end())
            share.query = query->second;
        m_shares.push_back(share);
    }
}

const Share& Shares::need(const std::string& friendName, bool isOwn) const
{
    const CString name = fromUtf8(friendName);
    const auto found =
        std::ranges::find_if(m_shares,
                             [&](const Share& share) {
                                 return share.isOwn == isOwn && share.peer.CompareNoCase(name) == 0;
                             });
    if (found != m_shares.end())
        return *found;
    throw HostError(ExitCode::notFound,
                    isOwn ? "nothing is offered to \"" + friendName + "\""
                          : "no share of \"" + friendName +
                                "\" is known; \"qo share accept LINK\" takes his invitation");
}

void Shares::needFreeName(const CString& name, bool isOwn) const
{
    const std::string typed = toUtf8(name);
    const bool isName = !trimmed(typed).empty() && !typed.starts_with('-') &&
                        std::ranges::none_of(typed,
                                             [](char c)
                                             {
                                                 const auto byte = static_cast<unsigned char>(c);
                                                 return byte < 0x20 || byte == 0x7F || c == '/';
                                             });
    if (!isName)
        throw HostError(ExitCode::usage,
                        isOwn ? "a friend's name is a word or more, without slashes"
                              : "the friend's name in the invitation is none that can be typed; "
                                "give another one with --as");
    for (const Share& share : m_shares)
    {
        if (share.isOwn == isOwn && share.peer.CompareNoCase(name) == 0)
            throw HostError(
                ExitCode::usage,
                isOwn ? "something is offered to \"" + toUtf8(share.peer) +
                            "\" already; \"qo share revoke\" ends that, \"qo share ls --json\" "
                            "has the link"
                      : "there is a share of \"" + toUtf8(share.peer) +
                            "\" already; give this one another name with --as");
    }
}

void Shares::insert(Share& share) const
{
    auto row = rowOf(share);
    CQoCollDb(m_database).insertShare(row);
    share.id = row->id;
}

Share Shares::offer(const Invitation& invitation, bool isTrial)
{
    Share share;
    share.isOwn = true;
    share.peer = fromUtf8(invitation.friendName);
    needFreeName(share.peer, true);
    CMapStringToString params;
    params.SetAt(u"t", fromUtf8(std::to_string(plainType)));
    params.SetAt(u"u", fromUtf8(invitation.ownName));
    params.SetAt(u"w", fromUtf8(invitation.address.linkText()));
    params.SetAt(u"v", CShareInvitation::LINK_VERSION);
    share.shareId = CShareInvitation::GenerateShareID(params);
    share.link = CShareInvitation::GenerateShareLink(share.shareId, params);
    share.query = invitation.query;
    share.address = invitation.address;
    if (isTrial)
        return share;
    // A share without a query offers nothing, so one that is cut short here does no harm.
    m_store.setOffer(share.shareId, invitation.query);
    insert(share);
    m_shares.push_back(share);
    return share;
}

Share Shares::accept(const CString& link, const std::string& name, bool isTrial)
{
    Share share = Share::ofLink(link);
    if (share.address.host.empty())
        throw HostError(ExitCode::failed,
                        "the invitation does not say where the files are served; ask for a new "
                        "one");
    for (const Share& known : m_shares)
    {
        if (known.shareId == share.shareId)
            throw HostError(ExitCode::usage,
                            known.isOwn
                                ? "this is your own invitation, for " + toUtf8(known.peer)
                                : "this invitation was accepted before, as " + toUtf8(known.peer));
    }
    if (!name.empty())
        share.peer = fromUtf8(name);
    needFreeName(share.peer, false);
    if (isTrial)
        return share;
    insert(share);
    m_shares.push_back(share);
    return share;
}

void Shares::remove(const Share& share)
{
    CQoCollDb db(m_database);
    auto row = rowOf(share);
    // The rows of the friend's files first: without their share nobody would find them.
    if (!share.isOwn)
        db.deleteColl(share.collection());
    // A share without a query offers nothing, whatever becomes of its row.
    if (share.isOwn)
        m_store.forgetOffer(share.shareId);
    db.deleteShare(row);
}

void Shares::setFiles(const Share& share, int files) const
{
    CQoCollDb db(m_database);
    DbItemArray<QoShareDbItem> rows;
    db.getAllShares(rows);
    for (auto& row : rows)
    {
        if (row->id != share.id)
            continue;
        row->files = files;
        db.updateShare(row);
    }
}
} // namespace qo::host
