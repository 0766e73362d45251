#pragma once

#include "core/playlist/PlaylistText.h"

namespace qo::host
{
/// The songs of an XSPF document; what is wrong with it, "" if nothing is. Locations become places:
/// relative ones are decoded, addresses stay. The text may be anything.
std::string parseXspf(std::string_view text, std::vector<ListedSong>& songs);

/// Places become locations: paths are percent-encoded, and absolute ones become "file:" addresses.
std::string xspfText(const CString& name, const std::vector<ListedSong>& songs);
} // namespace qo::host
