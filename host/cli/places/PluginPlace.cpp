#include "cli/places/PluginPlace.h"

#include "cli/places/TrackPlace.h"
#include "core/base/HostFiles.h"
#include "plugins/base/PluginFailure.h"

namespace qo::cli
{
namespace
{
class PluginPlace final : public FarPlace
{
public:
    explicit PluginPlace(const CString& id)
        : FarPlace(toUtf8(id), CQoPluginManager::createPath(id)), m_id(id)
    {
    }

    bool find(const CQoCollPath& path, IQoProgress& progress, FarEntry& entry) override
    {
        m_found.reset();
        if (!CQoPluginManager::getPathResultFromPhysicalPlugin(path, &progress, m_found))
            return false;
        m_foundPath = path;
        entry = {farComponent(m_found->GetName()), m_found->IsFolder(), m_found->GetSize()};
        return true;
    }
    bool list(const CQoCollPath& folder,
              Items items,
              int depth,
              IQoProgress& progress,
              QoFileDbItemArray& records) override
    {
        boost::shared_ptr<IPhysicalBrowseWrapper> browse;
        FarEntry entry;
        // Without a way to fetch bytes no tag is read.
        return ((m_found && m_foundPath == folder) || find(folder, progress, entry)) &&
               CQoPluginManager::getPhysicalBrowseFuncFromPlugin(m_id, browse) &&
               CQoPluginManager::getFilesFromPhysicalPlugin(items == Items::files
                                                                ? CQoPluginManager::PI_Files
                                                                : CQoPluginManager::PI_Folders,
                                                            browse,
                                                            {},
                                                            folder,
                                                            m_found,
                                                            depth,
                                                            &progress,
                                                            records);
    }
    std::string takeCause() override { return host::plainWords(host::takePluginFailure()); }

    bool takesFiles() override { return CQoPluginManager::canUploadToPlugin(m_id); }
    UploadRules uploadRules() const override
    {
        UploadRules rules;
        rules.musicFolder = CQoPluginManager::getPluginMusicPath(m_id);
        rules.moviesFolder = CQoPluginManager::getPluginMoviesPath(m_id);
        CQoPluginManager::getPluginUploadRules(m_id, rules.musicRule, rules.moviesRule);
        return rules;
    }

    std::string fetch(const CQoCollPath& path,
                      std::int64_t,
                      const CString& local,
                      IQoProgress& progress) override
    {
        return CQoPluginManager::downloadFile(path, local, true, &progress) ? "" : pluginCause();
    }
    std::string send(const CString& local,
                     std::int64_t size,
                     CQoCollPath& path,
                     bool replaces,
                     IQoProgress& progress) override
    {
        return CQoPluginManager::uploadFile(local, path, size, replaces, &progress) ? ""
                                                                                    : pluginCause();
    }
    std::string remove(const CQoCollPath& path, IQoProgress& progress) override
    {
        return CQoPluginManager::deleteFile(path, &progress) ? "" : pluginCause();
    }

private:
    const CString m_id;
    /// What was looked up last; a listing needs it.
    CQoCollPath m_foundPath;
    boost::shared_ptr<IPhysicalResult> m_found;
};
} // namespace

CString needPlugin(const std::string& typed)
{
    boost::shared_ptr<IPlugin> plugin;
    if (!CQoPluginManager::getPlugin(fromUtf8(typed), plugin))
        throw HostError(ExitCode::notFound,
                        "there is no plug-in \"" + typed + "\"; \"qo plugin ls\" lists them");
    return plugin->GetId();
}

std::unique_ptr<FarPlace> needPluginPlace(const std::string& typed)
{
    const CString id = needPlugin(typed);
    if (CQoPluginManager::isLogicalBrowsePlugin(id))
        return std::make_unique<TrackPlace>(id);
    if (!CQoPluginManager::isPhysicalBrowsePlugin(id))
        throw HostError(ExitCode::usage, "the plug-in " + toUtf8(id) + " cannot be browsed");
    return std::make_unique<PluginPlace>(id);
}

std::string shownPluginFolder(const CString& folder)
{
    std::string text;
    for (const CString& component : CStringArray::split(folder, u'\\'))
        text += (text.empty() ? "" : "/") + toUtf8(farNameOf(component));
    return text;
}

std::string pluginCause()
{
    const std::string cause = host::plainWords(host::takePluginFailure());
    return cause.empty() ? "the plug-in gave no cause" : cause;
}

void failPlugin(const std::string& what)
{
    throw HostError(ExitCode::failed, what + ": " + pluginCause());
}
} // namespace qo::cli
