#pragma once

#include "cli/places/FarPlace.h"
#include "core/share/Shares.h"

namespace qo::cli
{
/// A friend's share as a place: the files of its last scan. Loads them as the foreign collection;
/// throws HostError. On the kernel's thread.
std::unique_ptr<FarPlace> openSharePlace(const host::Share& share);
} // namespace qo::cli
