#include "QoColl/Db/QoCollDbUtils.h"
#include "QoColl/Db/Records/QoFileDbItem.h"
#include "QoColl/Plugins/PluginSupport.h"
#include "QoColl/Plugins/PluginWrappers.h"
#include "QoColl/Plugins/QoPluginManager.h"
#include "common/MakeObject.h"

#include <algorithm>
#include <unordered_set>

namespace
{
/// A plug-in whose folders lead back to themselves under ever new names ends here.
constexpr int mostFolderLevels = 64;
constexpr int longestTitle = 1000;

void addRecord(const QoFileDbItemPtr& record, QoFileDbItemArray& files)
{
    QoFileDbItemPtr added = record;
    CQoCollDbUtils::addQoDbFileItem(added, files, true);
}

QoFileDbItemPtr recordAt(const CQoCollPath& path, std::int64_t size)
{
    const auto record =
        qo::makeObject<QoFileDbItem>(QO_HERE(u".\\QoColl\\Plugins\\QoPluginManagerFiles"));
    record->path = path.toString();
    record->size = std::max<std::int64_t>(size, 0);
    return record;
}

/// A walk through the folders of a plug-in, each folder after its name and before its next sibling.
/// It keeps its place in a list of its own, so that no depth of folders can exhaust the stack.
class PhysicalWalk
{
public:
    PhysicalWalk(CQoPluginManager::EPluginItemType type,
                 IPhysicalBrowseWrapper& browse,
                 const boost::shared_ptr<IDownloadWrapper>& download,
                 IQoProgress* progress,
                 QoFileDbItemArray& files,
                 IPluginScan* scan)
        : m_type(type)
        , m_browse(browse)
        , m_download(download)
        , m_progress(progress)
        , m_files(files)
        , m_scan(scan)
    {
    }

    /// Whether everything was listed.
    bool run(const CQoCollPath& path, const PhysicalResultPtr& folder, int depth)
    {
        m_isCapped = depth > mostFolderLevels;
        enter(path, folder, std::min(depth, mostFolderLevels));
        while (!m_levels.empty() && !qo::isStopped(m_progress))
        {
            Level& level = m_levels.back();
            if (level.next == level.entries.size())
            {
                m_levels.pop_back();
                continue;
            }
            const PhysicalResultPtr entry = std::move(level.entries[level.next++]);
            take(entry, level.path, level.depth);
        }
        return m_isComplete && m_levels.empty();
    }

private:
    struct Level
    {
        CQoCollPath path;
        CString place; ///< the plug-in's own name of it
        int depth;     ///< how many levels are left below
        std::vector<PhysicalResultPtr> entries;
        std::size_t next;
    };

    void enter(const CQoCollPath& path, const PhysicalResultPtr& folder, int depth)
    {
        qo::log(qo::level::flow, u"getFilesFromPhysicalPlugin(%s)", path.toString());
        if (!folder->GetPath().IsEmpty() && !m_seen.insert(folder->GetPath()).second)
        {
            qo::log(qo::level::warning,
                    u"getFilesFromPhysicalPlugin : %s is a folder that was listed already",
                    path.toString());
            // A folder within itself hides nothing; the files of a second name may be known by it.
            m_isComplete = m_isComplete && isOpen(folder->GetPath());
            return;
        }
        Level level = {path, folder->GetPath(), depth - 1, {}, 0};
        if (qo::listFarFolder(m_browse,
                              folder,
                              u"CQoPluginManager::getFilesFromPhysicalPlugin : "
                              u"GetSubFoldersAndFiles(%s, %s) failed",
                              m_progress,
                              level.entries))
            m_levels.push_back(std::move(level));
        else
            m_isComplete = false;
    }
    /// Whether the walk is within that place.
    bool isOpen(const CString& place) const
    {
        return std::any_of(m_levels.begin(),
                           m_levels.end(),
                           [&place](const Level& level) { return level.place == place; });
    }
    void take(const PhysicalResultPtr& entry, const CQoCollPath& folder, int depth)
    {
        const CQoCollPath path = folder.child(qo::farEntryName(entry->GetName()));
        if (!entry->IsFolder())
        {
            if (m_type & CQoPluginManager::PI_Files)
                addFile(path, entry);
            return;
        }
        if (m_type & CQoPluginManager::PI_Folders)
        {
            qo::log(qo::level::detail, u"getFilesFromPhysicalPlugin add dir %s", path.toString());
            addRecord(recordAt(path, 0), m_files);
        }
        if (depth > 0)
            return enter(path, entry, depth);
        // What lies deeper than this walk goes is not gone.
        m_isComplete = m_isComplete && !m_isCapped;
    }
    void addFile(const CQoCollPath& path, const PhysicalResultPtr& entry)
    {
        qo::log(qo::level::detail, u"getFilesFromPhysicalPlugin add file %s", path.toString());
        const QoFileDbItemPtr record = recordAt(path, entry->GetSize());
        bool isKnown = false;
        if (!m_scan || m_scan->isToBeRead(*record, isKnown))
            readTag(entry, record, isKnown);
        addRecord(record, m_files);
    }
    void readTag(const PhysicalResultPtr& entry, const QoFileDbItemPtr& record, bool isKnown)
    {
        // Without ranges nothing is read, and a known file keeps what it has.
        if (!m_download)
            return;
        const bool isRead =
            CQoPluginManager::getFileInfoFromPhysicalPlugin(entry, m_download, record, m_progress);
        if (isRead && isKnown)
            record->dbState = qo::dbState::modified;
        else if (!isRead && m_scan && !qo::isStopped(m_progress))
            m_scan->notRead(record->path);
    }

    const CQoPluginManager::EPluginItemType m_type;
    IPhysicalBrowseWrapper& m_browse;
    const boost::shared_ptr<IDownloadWrapper>& m_download;
    IQoProgress* const m_progress;
    QoFileDbItemArray& m_files;
    IPluginScan* const m_scan;
    bool m_isComplete = true;
    bool m_isCapped = false; ///< more levels were asked for than are walked
    std::vector<Level> m_levels;
    std::unordered_set<CString> m_seen; ///< by the plug-in's own names of the places
};

CString nameOrBlank(const CString& name)
{
    const CString component = qo::farComponent(name);
    return component.IsEmpty() ? CString(u" ") : component;
}

/// The record of a track, whose artist and album are those of the path.
void addTrack(const CQoCollPath& album, const IGenericResult& track, QoFileDbItemArray& files)
{
    const CQoCollPath path = CQoCollPath::makeTrack(album,
                                                    album.getFirst(),
                                                    album.getSecond(),
                                                    qo::farComponent(track.GetTitle()),
                                                    qo::farComponent(track.GetExtension()));
    const QoFileDbItemPtr record = recordAt(path, track.GetSize());
    record->artist = album.getFirst();
    record->album = album.getSecond();
    record->title = track.GetTitle().Left(longestTitle);
    record->duration = std::max(track.GetDuration(), 0);
    qo::log(qo::level::detail, u"getFilesFromLogicalPlugin Add(%s)", record->path);
    addRecord(record, files);
}
} // namespace

IPluginScan::~IPluginScan() = default;

bool CQoPluginManager::getFilesFromPhysicalPlugin(EPluginItemType type,
                                                  const CQoCollPath& path,
                                                  int depth,
                                                  IQoProgress* progress,
                                                  QoFileDbItemArray& files,
                                                  IPluginScan* scan)
{
    boost::shared_ptr<IPhysicalBrowseWrapper> browse;
    PhysicalResultPtr folder;
    if (!getPhysicalBrowseFuncFromPlugin(path.getDevice(), browse))
        return false;
    if (!getPathResultFromPhysicalPlugin(path, progress, folder))
    {
        qo::logUnlessStopped(progress,
                             u"CQoPluginManager::getFilesFromPhysicalPlugin : %s not found",
                             path.toString());
        return false;
    }
    boost::shared_ptr<IDownloadWrapper> download;
    checkCanSetDownloadRanges(path.getDevice(), download);
    return getFilesFromPhysicalPlugin(
        type, browse, download, path, folder, depth, progress, files, scan);
}

bool CQoPluginManager::getFilesFromPhysicalPlugin(
    EPluginItemType type,
    const boost::shared_ptr<IPhysicalBrowseWrapper>& browse,
    const boost::shared_ptr<IDownloadWrapper>& download,
    const CQoCollPath& path,
    const PhysicalResultPtr& result,
    int depth,
    IQoProgress* progress,
    QoFileDbItemArray& files,
    IPluginScan* scan)
{
    return browse && result &&
           PhysicalWalk(type, *browse, download, progress, files, scan).run(path, result, depth);
}

bool CQoPluginManager::getFilesFromLogicalPlugin(const CQoCollPath& path,
                                                 IQoProgress* progress,
                                                 QoFileDbItemArray& files)
{
    boost::shared_ptr<ILogicalBrowseWrapper> browse;
    if (!getLogicalBrowseFuncFromPlugin(path.getDevice(), browse))
        return false;
    PluginResultPtr result;
    constexpr int deepest = 3;
    const bool isBelowRoot = !path.isEmpty() && path.getCount() <= deepest;
    return (!isBelowRoot || getPathResultFromLogicalPlugin(browse, path, progress, result)) &&
           getFilesFromLogicalPlugin(browse, path, result, progress, files);
}

bool CQoPluginManager::getFilesFromLogicalPlugin(
    const boost::shared_ptr<ILogicalBrowseWrapper>& browse,
    const CQoCollPath& path,
    const PluginResultPtr& result,
    IQoProgress* progress,
    QoFileDbItemArray& files)
{
    enum ELevel
    {
        root,
        artist,
        album,
        track
    };
    const int level = path.getCount();
    if (level > track)
    {
        qo::log(qo::level::error,
                u"CQoPluginManager::getFilesFromLogicalPlugin : invalid path '%s'",
                path.toString());
        return false;
    }
    if (!browse || (!result && level != root))
        return false;
    if (level == track)
    {
        addTrack(path.getParent(), *result, files);
        return true;
    }
    static constexpr const char16_t* failures[] = {
        u"CQoPluginManager::getFilesFromLogicalPlugin : GetArtists failed",
        u"CQoPluginManager::getFilesFromLogicalPlugin : GetAlbums(%s) failed",
        u"CQoPluginManager::getFilesFromLogicalPlugin : GetTracksForAlbum(%s) failed"};
    PluginResultArray found;
    if (!getResultsSync(qo::listLogicalLevel(*browse, level, result), found, progress))
    {
        qo::logUnlessStopped(progress, failures[level], path.getLast());
        return false;
    }
    bool isComplete = true;
    for (const PluginResultPtr& each : qo::resultsOf<IGenericResult>(found))
    {
        if (qo::isStopped(progress))
            return false;
        if (level == album)
        {
            addTrack(path, *each, files);
            continue;
        }
        const CString name = nameOrBlank(level == root ? each->GetArtist() : each->GetAlbum());
        isComplete &= getFilesFromLogicalPlugin(browse, path.child(name), each, progress, files);
    }
    return isComplete;
}

bool CQoPluginManager::getFilesFromPlugin(EPluginItemType type,
                                          const CQoCollPath& path,
                                          int depth,
                                          IQoProgress* progress,
                                          QoFileDbItemArray& files,
                                          IPluginScan* scan)
{
    if (path.isPhysicalPlugin())
        return getFilesFromPhysicalPlugin(type, path, depth, progress, files, scan);
    return path.isLogicalPlugin() && getFilesFromLogicalPlugin(path, progress, files);
}
