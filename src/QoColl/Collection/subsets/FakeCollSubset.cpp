#include "QoColl/Collection/subsets/FakeCollSubset.h"

#include "Physical/QoCheckObject.h"

CFakeCollSubset::CFakeCollSubset(bool showOwn, bool showForeign) : CQoCollSubset(false)
{
    ShowFilterInfo info;
    info.m_showOwn = showOwn;
    info.m_showForeign = showForeign;
    setShowFilterInfo(info);
}

bool CFakeCollSubset::hasFile(const File& file) const
{
    return file != nullptr;
}

bool CFakeCollSubset::hasDir(const Dir& dir) const
{
    return dir != nullptr;
}

bool CFakeCollSubset::hasGenre(const Genre& genre) const
{
    return genre != nullptr;
}

bool CFakeCollSubset::hasArtist(const Artist& artist) const
{
    return artist != nullptr;
}

bool CFakeCollSubset::hasAlbum(const Album& album) const
{
    return album != nullptr;
}

bool CFakeCollSubset::hasCheckObject(const CheckObject& object) const
{
    return object != nullptr;
}
