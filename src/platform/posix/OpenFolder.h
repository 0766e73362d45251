#pragma once

#include <dirent.h>

#include <memory>

namespace qo
{
struct CloseFolder
{
    void operator()(DIR* folder) const { ::closedir(folder); }
};

/// A folder that is being listed; closed at the end of its scope.
using OpenFolder = std::unique_ptr<DIR, CloseFolder>;
} // namespace qo
