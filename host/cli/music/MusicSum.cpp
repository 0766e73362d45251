#include "cli/music/MusicSum.h"

#include "cli/shown/Text.h"

#include <QoKernel/Collection.h>
#include <QoKernel/Physical.h>

#include <algorithm>

namespace qo::cli
{
CString nameOf(const CLTObject* object)
{
    return object ? object->getName() : CString();
}

std::string displayName(const CLTObject* object)
{
    return isUnnamed(object) ? "[unknown]" : oneLine(object->getDisplayName());
}

void MusicSum::add(const CLTTrack& track, const CHDMusicFile& file)
{
    ++tracks;
    duration += std::max(file.getDbItem()->duration, 0);
    const int year = textToInt(track.getYear().view());
    if (year <= 0)
        return;
    firstYear = firstYear == 0 ? year : std::min(firstYear, year);
    lastYear = std::max(lastYear, year);
}

std::string MusicSum::years() const
{
    if (firstYear == 0)
        return {};
    const std::string first = std::to_string(firstYear);
    return firstYear == lastYear ? first : first + "-" + std::to_string(lastYear);
}
} // namespace qo::cli
