#pragma once

#include "cli/places/FarPlace.h"

namespace qo::cli
{
/// The plug-in's own spelling of a typed name. Throws HostError when there is none.
CString needPlugin(const std::string& typed);
/// A plug-in, whose artists and albums count as folders. Throws HostError when there is none of
/// that name, or it cannot be browsed.
std::unique_ptr<FarPlace> needPluginPlace(const std::string& typed);
/// "Music/Kino" for "Music\\Kino", as the settings keep folders of plug-ins.
std::string shownPluginFolder(const CString& folder);
/// Why the plug-in could not do it, in the words of the plug-in where it gave some.
std::string pluginCause();
/// Throws HostError with that cause.
[[noreturn]] void failPlugin(const std::string& what);
} // namespace qo::cli
