#pragma once

#include "cli/CommandLine.h"

#include <QoKernel/Devices.h>

#include <string>
#include <vector>

namespace qo::cli
{
/// The plug-in's own spelling of a typed name. Throws HostError when there is none.
CString needPlugin(const std::string& typed);
/// The same for one that has folders and files.
CString needFolderPlugin(const std::string& typed);

/// "Music/Kino/01.mp3" in the plug-in; "", "/" and "." are its root.
CQoCollPath farPath(const CString& plugin, const std::string& typed);
/// "NAS/Music/Kino": a plug-in, and a folder in it.
CQoCollPath farPlace(const std::string& typed);

/// A path below another one, or from the plug-in's root, as it may be typed; not harmless.
std::string shownFar(const CStringArray& components);
std::string shownFar(const CQoCollPath& path);
/// The same with the plug-in's name before it.
std::string shownPlace(const CQoCollPath& path);

/// Why the plug-in could not do it, in the words of the plug-in where it gave some.
std::string pluginCause();
/// Throws HostError with that cause.
[[noreturn]] void failFar(const std::string& what);

/// What stands at the path. Throws HostError when there is nothing.
boost::shared_ptr<IPhysicalResult> needEntry(const CQoCollPath& path, IQoProgress& progress);
/// The records of files or folders below a folder, so many levels deep, by their paths and sizes
/// alone. False when not all could be listed.
bool listBelow(CQoPluginManager::EPluginItemType type,
               const CQoCollPath& path,
               const boost::shared_ptr<IPhysicalResult>& folder,
               int depth,
               IQoProgress& progress,
               QoFileDbItemArray& records);
/// As a depth: all levels.
constexpr int allLevels = 0xffff;

/// Throws HostError when the user has interrupted the command.
void stopIfCancelled(IQoProgress& progress);
} // namespace qo::cli
