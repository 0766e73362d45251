#include "cli/Interrupt.h"
#include "cli/KernelCommand.h"
#include "cli/files/FileRecord.h"
#include "cli/sharing/ShareCommand.h"
#include "cli/shown/Listing.h"
#include "cli/shown/Text.h"
#include "far/FarEnds.h"
#include "share/ShareServer.h"

#include <QoKernel/Collection.h>

#include <chrono>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>

namespace qo::cli
{
namespace
{
using host::Offer;
using host::PeerAddress;
using host::Share;
using host::ShareVisit;

/// Offers what the shares say until a signal ends it, and follows changes of the collection and of
/// the shares within a second or two.
class Serving
{
public:
    Serving(CommandLine& line, const PeerAddress& address)
        : m_line(line), m_address(address), m_session(openKernel(line, KernelUse::look, false))
    {
    }

    void run()
    {
        const LoopGuard guard;
        host::removeLeftLists();
        refresh();
        const host::ShareKey key = m_session->kernel().run(
            [] { return host::farEnds().shareKey(host::Session::folder(), true); });
        noteOtherKeys(key);
        const auto server = host::farEnds().shareServer(
            key, m_offers, m_address, {}, [this](const ShareVisit& visit) { keep(visit); });
        PeerAddress place = m_address;
        place.port = server->port();
        m_line.note("serving at " + place.place() + "; Ctrl-C ends it");
        for (int pauses = 1; !wasInterrupted() && !m_line.out.isClosed(); ++pauses)
        {
            std::this_thread::sleep_for(pause);
            showVisits();
            if (pauses % pausesToLook == 0 && std::chrono::steady_clock::now() >= m_nextLook)
                follow();
        }
    }

private:
    static constexpr std::chrono::milliseconds pause{100};
    static constexpr int pausesToLook = 10;
    static constexpr std::chrono::seconds pauseWhenFailed{10};
    /// Of those that wait to be shown; who reads slowly learns how many there were.
    static constexpr std::size_t mostVisits = 1000;

    /// What the offers are made of.
    struct State
    {
        std::vector<std::pair<CString, CString>> shares; ///< ids and queries
        std::int64_t changed = 0;                        ///< of the collection, in ticks

        bool operator==(const State&) const = default;
    };

    /// On the kernel's thread.
    State read()
    {
        State state;
        if (!m_session->checkDatabase())
            throw HostError(ExitCode::usage,
                            "there is no collection yet: \"qo scan DIR\" makes one");
        m_shares = host::Shares().all();
        std::vector<std::string> ids;
        for (const Share& share : m_shares)
        {
            if (!share.isOwn || !share.query)
                continue;
            state.shares.emplace_back(share.shareId, *share.query);
            ids.push_back(toUtf8(share.shareId));
        }
        // Whatever becomes of the rest, what was revoked ends now.
        m_offers.keepOnly(ids);
        CollInfoDbItem info;
        CQoCollDb(host::Session::databasePath()).getCollInfo(u"", info);
        state.changed = toTicks(info.modifiedTime);
        return state;
    }

    /// Compares sizes and write times of the two databases and of what was last written to them. A
    /// write that is so new that another one could have the same time counts as a change still to
    /// come.
    bool mayHaveChanged()
    {
        constexpr std::int64_t coarsest = std::int64_t(3) * 10'000'000; // three seconds in ticks
        const CString database = host::Session::databasePath();
        const CString store = host::Session::folder() + u"\\host.db";
        std::vector<std::int64_t> marks;
        bool isRecent = false;
        for (const CString& file : {database, database + u"-wal", store, store + u"-wal"})
        {
            FileInfo info;
            const bool isThere = fileSystem().info(file, Spelling::exact, info) == 0;
            marks.push_back(isThere ? info.size : -1);
            marks.push_back(isThere ? toTicks(info.modified) : 0);
            isRecent =
                isRecent ||
                (isThere && toTicks(systemClock().now()) - toTicks(info.modified) < coarsest);
        }
        const bool isOther = marks != m_marks;
        m_marks = std::move(marks);
        return isOther || isRecent || !m_lastFailure.empty();
    }

    void follow()
    {
        if (!mayHaveChanged())
            return;
        try
        {
            refresh();
            m_lastFailure.clear();
        }
        catch (const HostError& error)
        {
            // A database that is busy or being replaced; what was offered before goes on.
            if (m_lastFailure != error.what())
                m_line.note(error.what() + std::string("; what was offered before stays"));
            m_lastFailure = error.what();
            m_nextLook = std::chrono::steady_clock::now() + pauseWhenFailed;
        }
    }

    void refresh()
    {
        const State state = m_session->kernel().run([this] { return read(); });
        if (m_state && *m_state == state)
            return;
        if (state.shares.empty() && !m_state)
            throw HostError(ExitCode::usage,
                            "nothing is offered to anyone yet; \"qo share invite FRIEND\" does");
        loadForReading(m_line, *m_session);
        m_session->kernel().run([this] { makeOffers(); });
        m_state = state;
    }

    /// On the kernel's thread.
    void makeOffers()
    {
        std::vector<std::shared_ptr<Offer>> offers;
        for (const Share& share : m_shares)
        {
            if (!share.isOwn || !share.query)
                continue;
            const std::string peer = oneLine(share.peer);
            // A query that can no longer be looked up ends one offer, and not those of others.
            try
            {
                offers.push_back(Offer::of(share));
                m_line.note(
                    "offering " +
                    countText(static_cast<std::int64_t>(offers.back()->fileCount()), "file") +
                    " to " + peer);
            }
            catch (const HostError& error)
            {
                m_line.note("offering nothing to " + peer + ": " + error.what());
            }
        }
        m_offers.replace(std::move(offers));
        CDummyProgress progress;
        CQoCollection::m_ownCollection.clearCollection(&progress); // nobody asks it any more
    }

    void noteOtherKeys(const host::ShareKey& key) const
    {
        for (const Share& share : m_shares)
        {
            if (share.isOwn && share.query && share.address.keyDigest != key.digest())
                m_line.note("the invitation of " + oneLine(share.peer) +
                            " names another key, so he will not trust this server: revoke it, and "
                            "invite him again");
        }
    }

    /// From the server's threads, which do not wait for whoever reads the output.
    void keep(const ShareVisit& visit)
    {
        const std::lock_guard guard(m_visitsLock);
        if (m_visits.size() < mostVisits)
            m_visits.push_back(visit);
        else
            ++m_untold;
    }

    void showVisits()
    {
        std::vector<ShareVisit> visits;
        int untold = 0;
        {
            const std::lock_guard guard(m_visitsLock);
            visits.swap(m_visits);
            untold = std::exchange(m_untold, 0);
        }
        for (const ShareVisit& visit : visits)
            show(visit);
        if (untold > 0)
            m_line.note(countText(untold, "further visit") + " came too fast to be shown");
        m_line.out.flush();
    }

    void show(const ShareVisit& visit)
    {
        const std::string path = visit.path.IsEmpty() ? "" : host::shownPath(visit.path);
        if (m_line.json)
        {
            Json record;
            record["friend"] = visit.friendName.IsEmpty() ? Json() : Json(toUtf8(visit.friendName));
            record["from"] = visit.from;
            record["times"] = visit.times;
            putPath(record, "path", path);
            record["bytes"] = visit.bytes;
            record["whole"] = visit.isWhole;
            m_line.out.line(host::dump(record));
        }
        else if (visit.friendName.IsEmpty())
            m_line.out.line(
                "refused: " + visit.from + " has a wrong share id" +
                (visit.times > 1 ? " (" + std::to_string(visit.times) + " times)" : std::string()));
        else
            m_line.out.line(oneLine(visit.friendName) + " (" + visit.from + ")  " +
                            sizeText(visit.bytes) + (visit.isWhole ? "" : ", broke off") + "  " +
                            (path.empty() ? "the list of files" : harmless(path)));
    }

    CommandLine& m_line;
    const PeerAddress m_address;
    const std::unique_ptr<host::Session> m_session;
    std::vector<Share> m_shares;
    std::optional<State> m_state;
    host::Offers m_offers;
    std::string m_lastFailure;
    std::vector<std::int64_t> m_marks; ///< what mayHaveChanged() saw last
    std::chrono::steady_clock::time_point m_nextLook;
    std::mutex m_visitsLock; ///< guards the others
    std::vector<ShareVisit> m_visits;
    int m_untold = 0; ///< visits that found no room
};

ExitCode serve(CommandLine& line, const std::string& typed)
{
    const auto address = PeerAddress::ofPlace(typed.empty() ? "127.0.0.1" : typed);
    if (!address)
        throw HostError(ExitCode::usage,
                        "\"" + typed +
                            "\" is no address: write an address of this machine, or "
                            "ADDRESS:PORT; 0.0.0.0 stands for all of them");
    Serving(line, *address).run();
    return ExitCode::done;
}
} // namespace

void addShareServing(CommandLine& line, CLI::App& command)
{
    const auto typed = std::make_shared<std::string>();
    CLI::App* const serving = line.addCommand(command,
                                              "serve",
                                              "Let friends fetch what is offered to them",
                                              [&line, typed] { return serve(line, *typed); });
    addArgument(*serving,
                "--listen",
                *typed,
                "The address to listen at: 127.0.0.1:4747, this machine alone, without it")
        ->type_name("ADDRESS[:PORT]");
}
} // namespace qo::cli
