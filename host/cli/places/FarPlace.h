#pragma once

#include "cli/CommandLine.h"
#include "core/plan/TargetName.h"

#include <QoKernel/Devices.h>

#include <functional>
#include <memory>
#include <string>

namespace qo::host
{
class Session;
} // namespace qo::host

namespace qo::cli
{
/// What stands at a path of a place.
struct FarEntry
{
    CString component; ///< its own spelling, where a path is found without regard to case
    bool isFolder = false;
    std::int64_t size = 0; ///< in bytes; 0 for a folder, and where the place does not say
};

/// How a place wants music and videos sorted that are sent there.
struct UploadRules
{
    CString musicFolder; ///< as the settings keep it, "Music\\Kino"; "" for the root
    CString musicRule;   ///< as keptRule() has it; "" for none
    CString moviesFolder;
    CString moviesRule;

    bool isEmpty() const { return musicRule.IsEmpty() && moviesRule.IsEmpty(); }
};

/// A place with folders and files that is not a folder of this machine's own: a storage service or
/// a device. Its paths are collection paths below its root. For the kernel's thread.
class FarPlace
{
public:
    enum class Items
    {
        files,
        folders
    };
    /// As a depth: all levels.
    static constexpr int allLevels = 0xffff;

    FarPlace(std::string name, CQoCollPath root) : m_name(std::move(name)), m_root(std::move(root))
    {
    }
    virtual ~FarPlace() = default;
    FarPlace(const FarPlace&) = delete;
    FarPlace& operator=(const FarPlace&) = delete;

    /// As the user calls it.
    const std::string& name() const { return m_name; }
    const CQoCollPath& root() const { return m_root; }
    /// "Music/Kino/01.mp3" in the place; "", "/" and "." are its root.
    CQoCollPath path(const std::string& typed) const;
    /// Components, or a path from the root on, as they may be typed; not harmless.
    std::string shown(const CStringArray& components) const;
    std::string shown(const CQoCollPath& path) const { return shown(path.relativeTo(m_root)); }
    /// The same with the name of the place before it.
    std::string shownWhole(const CQoCollPath& path) const { return m_name + "/" + shown(path); }

    /// The component for a name that a user or a local file has, and the name for people.
    virtual CString componentOf(const std::string& name) const;
    virtual std::string nameOf(const CString& component) const;
    /// The name that a copy of the entry gets on the disk.
    virtual CString localNameOf(const CString& component) const;

    /// False when there is nothing, or it cannot be looked up: then takeCause() says why.
    virtual bool find(const CQoCollPath& path, IQoProgress& progress, FarEntry& entry) = 0;
    /// The same; throws HostError.
    FarEntry need(const CQoCollPath& path, IQoProgress& progress);
    /// Appends records with path and size of the files or folders below one that need() has found,
    /// so many levels deep. False when not all could be listed.
    virtual bool list(const CQoCollPath& folder,
                      Items items,
                      int depth,
                      IQoProgress& progress,
                      QoFileDbItemArray& records) = 0;
    /// Why the last call failed, as a clause; "" when there is no cause to tell.
    virtual std::string takeCause() = 0;
    /// Throws HostError with what, and that cause.
    [[noreturn]] void fail(const std::string& what);

    virtual bool takesFiles() { return false; }
    virtual UploadRules uploadRules() const { return {}; }
    /// What names of files and folders in it can be.
    virtual VolumeRules nameRules() const { return {}; }
    /// Removes what transfers that were killed have left in a folder, which may not exist.
    virtual void clearBefore(const CQoCollPath&) {}
    /// How many bytes it can still take; false when it does not say without being asked for long.
    virtual bool room(std::int64_t& bytes);

    // These give the cause of a failure, or "".

    /// Copies a file to a new local one; what fails leaves no part of it.
    virtual std::string fetch(const CQoCollPath& path,
                              std::int64_t size,
                              const CString& local,
                              IQoProgress& progress) = 0;
    /// Copies a local file to a path, whose folders are made. Does not ask what is there already
    /// unless it replaces that. path becomes that of the copy, which may have another name.
    virtual std::string send(const CString& local,
                             std::int64_t size,
                             CQoCollPath& path,
                             bool replaces,
                             IQoProgress& progress);
    /// With all that is in it, where the place lets files be removed by the command.
    virtual std::string remove(const CQoCollPath& path, IQoProgress& progress);

protected:
    /// Appends what list() says of an entry.
    static void addRecord(const CQoCollPath& path, std::int64_t size, QoFileDbItemArray& records);

private:
    const std::string m_name;
    const CQoCollPath m_root;
};

/// How the commands over one kind of places are worded, and how a typed place is found.
struct PlaceKind
{
    const char* noun;  ///< "service"
    const char* fetch; ///< the names of the commands that copy
    const char* send;  ///< null where no place takes files
    /// The place; on the kernel's thread. Throws HostError when there is none. With folder, typed
    /// is "NAME/FOLDER", and folder gets what follows the name.
    std::function<std::unique_ptr<FarPlace>(
        host::Session& session, const std::string& typed, std::string* folder)>
        open;
};

/// "browse", "rm", and the two commands that copy.
void addFarBrowse(CommandLine& line, CLI::App& command, const PlaceKind& kind);
void addFarRemoval(CommandLine& line, CLI::App& command, const PlaceKind& kind);
void addFarTransfers(CommandLine& line, CLI::App& command, const PlaceKind& kind);

/// Throws HostError when the user has interrupted the command.
void stopIfCancelled(IQoProgress& progress);
} // namespace qo::cli
