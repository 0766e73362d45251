#pragma once

#include <dirent.h>

#include <memory>

namespace qo
{
struct CloseFolder
{
    void operator()(DIR* folder) const { ::closedir(folder); }
};

/// A folder that is being listed; closed when it goes out of scope.
using OpenFolder = std::unique_ptr<DIR, CloseFolder>;
} // namespace qo
