#include "core/moved/MovedFiles.h"

#include "core/base/HostError.h"
#include "core/collection/CollectionChanges.h"
#include "core/collection/CollectionFiles.h"
#include "core/moved/HeadStore.h"
#include "core/moved/MovedTwins.h"
#include "core/roots/RootLister.h"
#include "core/session/Session.h"

#include <QoKernel/Physical.h>
#include <QoKernel/Tags.h>

#include <algorithm>
#include <cerrno>
#include <initializer_list>
#include <set>
#include <string>
#include <unordered_map>

namespace qo::host
{
namespace
{
/// Nobody chooses from a longer list.
constexpr std::size_t mostCandidates = 10;

struct DiskFile
{
    CString path;
    FileInfo info;
    std::vector<int> features;
};

std::string keyOf(const char* kind, std::int64_t size, std::initializer_list<std::string> parts)
{
    std::string key = kind + std::to_string(size);
    for (const std::string& part : parts)
        key += '\0' + part;
    return key;
}

std::string headKey(std::int64_t size, std::uint64_t head)
{
    return keyOf("head ", size, {std::to_string(head)});
}

std::string nameKey(std::int64_t size, const FILETIME& modified, const CString& path)
{
    return keyOf(
        "name ", size, {std::to_string(toTicks(modified)), toUtf8(CQoCollPath(path).getLast())});
}

std::string timeKey(const QoFileDbItem& facts)
{
    return keyOf("time ",
                 facts.size,
                 {std::to_string(facts.duration),
                  std::to_string(facts.bitrate),
                  std::to_string(toTicks(facts.modifTime))});
}

/// Empty for an untagged file, which is like all others of its length.
std::string tagKey(const QoFileDbItem& facts)
{
    if (facts.title.IsEmpty())
        return {};
    return keyOf("tag ",
                 facts.size,
                 {std::to_string(facts.duration),
                  std::to_string(facts.bitrate),
                  toUtf8(facts.title),
                  toUtf8(facts.artist),
                  toUtf8(facts.album),
                  toUtf8(facts.trackNumber)});
}

/// The text that distinguishes files of the same size and sound; empty for an untagged file.
CString titleOf(const QoFileDbItem& facts)
{
    CString text;
    if (!facts.title.IsEmpty())
        text.Format(u"%s\n%s\n%s\n%s", facts.title, facts.artist, facts.album, facts.trackNumber);
    return text;
}

boost::shared_ptr<QoFileDbItem> factsOf(const CString& path)
{
    boost::shared_ptr<QoFileDbItem> facts(new QoFileDbItem);
    CMusicTagEx tag;
    if (CMusicTagEx::fileSupportsTags(path) && tag.readTag(path))
        tag.getTag(facts);
    return facts;
}

bool isFolderGone(const CString& folder)
{
    FileInfo info;
    return fileSystem().info(CQoUtils::getRealPath(folder), Spelling::exact, info) == ENOENT;
}

void stopIfAsked(IQoProgress& progress)
{
    if (progress.isCanceled())
        throw HostError(ExitCode::interrupted, "interrupted; nothing was changed");
}

class MoveSearch
{
public:
    MoveSearch(const HeadStore& heads, RootLister& lister, IQoProgress& progress)
        : m_heads(heads), m_lister(lister), m_progress(progress)
    {
    }

    MovedFiles run()
    {
        CQoCollection::m_ownCollection.copyFiles(m_records);
        compareWithDisk();
        MovedFiles result;
        result.vanished = static_cast<int>(m_vanished.size());
        result.unknown = static_cast<int>(m_unknown.size());
        findFeatures();
        sortOut(result);
        return result;
    }

private:
    void compareWithDisk()
    {
        std::unordered_map<std::u16string, bool> isMet;
        for (const QoFileDbItemPtr& record : m_records)
            isMet.emplace(pathKey(record->path), false);
        const auto visit = [&](const CString& path, const FileInfo& info)
        {
            stopIfAsked(m_progress);
            const auto found = isMet.find(pathKey(path));
            if (found != isMet.end())
                found->second = true;
            else if (info.size > 0)
                m_unknown.push_back({path, info, {}});
            return true;
        };
        m_progress.setStage(IQoProgress::stageScan);
        m_progress.setRange(IQoProgress::rangeUnknown, 0);
        for (const auto& root : CQoCollection::m_ownCollection.getRootDirs())
        {
            const CString real = CQoUtils::getRealPath(root->getPath());
            if (!real.IsEmpty())
                m_lister.forEachFile(real, visit);
        }
        for (const QoFileDbItemPtr& record : m_records)
        {
            if (!isMet[pathKey(record->path)] && isGone(record->path))
                m_vanished.push_back(record);
        }
    }

    /// A file that the walk did not find may still be there, in a folder that cannot be listed. A
    /// file of a root folder that is away has not moved.
    static bool isGone(const CString& file)
    {
        const CQoCollPath path(file);
        const auto root = CQoCollection::m_ownCollection.getRootDir(path);
        FileInfo info;
        return path.isLocalDisk() && root &&
               fileSystem().isDirectory(CQoUtils::getRealPath(root->getPath())) &&
               fileSystem().info(CQoUtils::getRealPath(file), Spelling::exact, info) == ENOENT;
    }

    /// Files are found by keys: if many have the same size, comparing each with each would take too
    /// long.
    void findFeatures()
    {
        for (std::size_t i = 0; i < m_unknown.size(); ++i)
            m_bySize[m_unknown[i].info.size].push_back(i);
        m_progress.setStage(IQoProgress::stageCheck);
        m_progress.setRange(IQoProgress::rangeKnown, static_cast<int>(m_vanished.size()));
        m_featuresOfVanished.resize(m_vanished.size());
        for (std::size_t i = 0; i < m_vanished.size(); ++i)
        {
            m_progress.step(1);
            const QoFileDbItem& record = *m_vanished[i];
            if (!m_bySize.contains(record.size))
                continue;
            for (const std::string& key : keysOf(record))
                addFeature(m_featuresOfVanished[i], key);
        }
    }

    void addFeature(std::vector<int>& features, const std::string& key)
    {
        if (!key.empty())
            features.push_back(
                m_features.try_emplace(key, static_cast<int>(m_features.size())).first->second);
    }

    /// The feature by which the record's file is to be recognised. Adds all found files of this
    /// size to the candidates.
    std::vector<std::string> keysOf(const QoFileDbItem& record)
    {
        if (const auto head = m_heads.headOf(record))
        {
            enter(m_withHeads, record.size, [this](std::size_t file) { enterHead(file); });
            return {headKey(record.size, *head)};
        }
        enter(m_withFacts, record.size, [this](std::size_t file) { enterFacts(file); });
        if (!CMusicTagEx::fileSupportsTags(record.path))
            return {nameKey(record.size, record.modifTime, record.path)};
        return {timeKey(record), tagKey(record)};
    }

    template <class Enter>
    void enter(std::set<std::int64_t>& done, std::int64_t size, Enter enterFile)
    {
        if (!done.insert(size).second)
            return;
        for (const std::size_t file : m_bySize.at(size))
        {
            stopIfAsked(m_progress);
            enterFile(file);
        }
    }

    void enterHead(std::size_t file)
    {
        DiskFile& found = m_unknown[file];
        if (const auto head = KVTagLib::digestOfSoundHead(found.path))
            addFeature(found.features, headKey(found.info.size, *head));
    }

    void enterFacts(std::size_t file)
    {
        DiskFile& found = m_unknown[file];
        if (!CMusicTagEx::fileSupportsTags(found.path))
            return addFeature(found.features,
                              nameKey(found.info.size, found.info.modified, found.path));
        const auto facts = factsOf(found.path);
        facts->size = found.info.size;
        facts->modifTime = found.info.modified;
        addFeature(found.features, timeKey(*facts));
        addFeature(found.features, tagKey(*facts));
    }

    MovedTwins makeTwins()
    {
        std::vector<FeaturedFile> gone;
        for (std::size_t i = 0; i < m_vanished.size(); ++i)
            gone.push_back({m_vanished[i]->path, std::move(m_featuresOfVanished[i])});
        std::vector<FeaturedFile> found;
        for (DiskFile& file : m_unknown)
            found.push_back({file.path, std::move(file.features)});
        MovedTwins::Questions questions;
        questions.isFolderGone = isFolderGone;
        questions.titleOfGone = [this](std::size_t i) { return titleOf(*m_vanished[i]); };
        questions.titleOfFound = [this](std::size_t i)
        {
            stopIfAsked(m_progress);
            return titleOf(*factsOf(m_unknown[i].path));
        };
        return {std::move(gone), std::move(found), std::move(questions)};
    }

    void sortOut(MovedFiles& result)
    {
        MovedTwins twins = makeTwins();
        twins.pair();
        for (std::size_t i = 0; i < m_vanished.size(); ++i)
        {
            const QoFileDbItem& record = *m_vanished[i];
            if (const std::size_t twin = twins.twinOf(i); twin != MovedTwins::none)
            {
                result.offers.push_back({record.path, m_unknown[twin].path, record.velmoraId});
                continue;
            }
            UnclearMove unclear{record.path, {}};
            for (const std::size_t file : twins.candidatesFor(i, mostCandidates))
                unclear.candidates.push_back(m_unknown[file].path);
            if (!unclear.candidates.empty())
                result.unclear.push_back(std::move(unclear));
        }
    }

    const HeadStore& m_heads;
    RootLister& m_lister;
    IQoProgress& m_progress;
    QoFileDbItemArray m_records;
    std::vector<QoFileDbItemPtr> m_vanished;
    std::vector<DiskFile> m_unknown;
    std::unordered_map<std::int64_t, std::vector<std::size_t>> m_bySize;
    std::set<std::int64_t> m_withHeads; ///< sizes whose files were entered by their heads
    std::set<std::int64_t> m_withFacts;
    std::unordered_map<std::string, int> m_features;
    std::vector<std::vector<int>> m_featuresOfVanished;
};
} // namespace

MovedFiles findMoved(const HeadStore& heads, RootLister& lister, IQoProgress& progress)
{
    return MoveSearch(heads, lister, progress).run();
}

void applyMoves(Session& session, const std::vector<MoveOffer>& offers, IQoProgress& progress)
{
    CollectionChanges changes(session);
    for (const MoveOffer& offer : offers)
    {
        changes.move(offer.from, offer.to, true);
    }
    if (!changes.isEmpty())
        changes.apply(progress);
}
} // namespace qo::host
