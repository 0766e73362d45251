#include "cli/sharing/SharePlace.h"

#include "cli/places/TransferProgress.h"
#include "core/base/HostFiles.h"
#include "core/session/Session.h"
#include "plugins/base/PluginFailure.h"

#include <QoKernel/Collection.h>
#include <QoKernel/Physical.h>
#include <QoKernel/Sharing.h>

#include <algorithm>

namespace qo::cli
{
namespace
{
/// Ends a transfer that brings more than the friend's list says: it may never come to an end.
class ListedBytes final : public ByteProgress
{
public:
    ListedBytes(IQoProgress& progress, std::int64_t size)
        : ByteProgress(progress), m_size(std::max<std::int64_t>(size, 0))
    {
    }
    void setPosition(std::uintptr_t done) override
    {
        isTooLong = static_cast<std::int64_t>(done) > m_size;
        ByteProgress::setPosition(done);
    }
    bool isCanceled() override { return isTooLong || ByteProgress::isCanceled(); }

    bool isTooLong = false;

private:
    const std::int64_t m_size; ///< bytes, as the list says
};

class SharePlace final : public FarPlace
{
public:
    SharePlace(const host::Share& share, const CQoCollPath& root)
        : FarPlace(toUtf8(share.peer), root)
    {
    }

    bool find(const CQoCollPath& path, IQoProgress&, FarEntry& entry) override
    {
        const CQoCollection& shown = CQoCollection::m_foreignCollection;
        if (const auto file = shown.getFileByPath(path))
        {
            const auto& record = file->getDbItem();
            entry = {CQoCollPath(record->path).getLast(), false, record->size};
            return true;
        }
        const auto folder = shown.getDir(path);
        if (folder)
            entry = {folder->getPath().getLast(), true, 0};
        return folder != nullptr;
    }
    bool list(const CQoCollPath& folder,
              Items items,
              int depth,
              IQoProgress&,
              QoFileDbItemArray& records) override
    {
        QoFileDbItemArray all;
        CQoCollection::m_foreignCollection.copyFiles(all);
        CString lastFolder;
        for (const QoFileDbItemPtr& item : all)
        {
            const CQoCollPath path(item->path);
            if (!path.isSubPathOf(folder))
                continue;
            const CStringArray below = path.relativeTo(folder);
            if (items == Items::files)
            {
                if (below.GetSize() <= depth)
                    records.Add(item);
                continue;
            }
            addFolders(folder, below, depth, lastFolder, records);
        }
        return true;
    }
    std::string takeCause() override { return host::plainWords(host::takePluginFailure()); }

    std::string fetch(const CQoCollPath& path,
                      std::int64_t size,
                      const CString& local,
                      IQoProgress& progress) override
    {
        ListedBytes bytes(progress, size);
        const bool isThere =
            CQoShareManager::getFile(path.toString(), local, 0, &bytes, false, false);
        if (isThere && !bytes.isTooLong)
            return "";
        if (isThere)
            fileSystem().removeFile(local);
        if (bytes.isTooLong)
            return "more bytes come than the friend's list says; a new scan shows what it is now";
        const std::string cause = takeCause();
        return cause.empty() ? "it cannot be fetched" : cause;
    }

private:
    /// Files come in the order of their paths, so those of a folder follow each other.
    static void addFolders(const CQoCollPath& folder,
                           const CStringArray& below,
                           int depth,
                           CString& last,
                           QoFileDbItemArray& records)
    {
        CQoCollPath path = folder;
        for (int i = 0; i + 1 < below.GetSize() && i < depth; ++i)
        {
            path = path.child(below[i]);
            const CString text = path.toString();
            const bool isKnown = last.CompareNoCase(text) == 0 ||
                                 last.Left(text.GetLength() + 1).CompareNoCase(text + u"\\") == 0;
            if (isKnown)
                continue;
            addRecord(path, 0, records);
            last = text;
        }
    }
};

/// The root below which all files lie: that of the friend's system where he has files on no other
/// drive, so that paths look as they do there.
CQoCollPath commonRoot(const host::Share& share)
{
    const CQoCollPath system = share.root().child(u"C:");
    QoFileDbItemArray all;
    CQoCollection::m_foreignCollection.copyFiles(all);
    const bool isOne = std::all_of(all.begin(),
                                   all.end(),
                                   [&](const QoFileDbItemPtr& item)
                                   { return CQoCollPath(item->path).isSubPathOf(system); });
    return isOne ? system : share.root();
}
} // namespace

std::unique_ptr<FarPlace> openSharePlace(const host::Share& share)
{
    CStringArray roots;
    roots.Add(share.root().toString());
    CDummyProgress progress;
    if (!CQoCollection::m_foreignCollection.loadStored(
            host::Session::databasePath(), share.collection(), roots, &progress))
        throw HostError(ExitCode::failed,
                        "the files of " + toUtf8(share.peer) +
                            " cannot be loaded; \"qo log\" has the cause");
    if (CQoCollection::m_foreignCollection.getFileCount() == 0)
        throw HostError(ExitCode::notFound,
                        "no files of " + toUtf8(share.peer) + " are known yet; \"qo share scan " +
                            toUtf8(share.peer) + "\" fetches their list");
    return std::make_unique<SharePlace>(share, commonRoot(share));
}
} // namespace qo::cli
