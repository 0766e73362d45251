#pragma once

#include "cli/music/MusicFilter.h"

#include <QoKernel/Collection.h>

#include <string>
#include <vector>

namespace qo::cli
{
/// Which files of the collection a plan is about: those that all options agree on.
struct PlanSelection
{
    std::string root;               ///< those below it; "" for all
    std::vector<std::string> paths; ///< those at or below one of them; none for all
    /// Tracks, with the pictures and texts that lie beside them and belong to nothing else.
    MusicFilter filter;

    /// In the collection's order. Throws HostError when nothing is left. On the kernel's thread.
    QoFileDbItemArray records() const;
};
} // namespace qo::cli
