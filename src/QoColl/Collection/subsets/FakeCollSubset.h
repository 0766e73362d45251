#pragma once

#include "QoColl/Collection/subsets/QoCollSubset.h"

/// Answers "has" for a view that shows no subset, such as search results: everything is in it.
class QO_API CFakeCollSubset final : public CQoCollSubset
{
public:
    explicit CFakeCollSubset(bool showOwn = true, bool showForeign = true);

    bool hasFile(const File& file) const override;
    bool hasDir(const Dir& dir) const override;
    bool hasGenre(const Genre& genre) const override;
    bool hasArtist(const Artist& artist) const override;
    bool hasAlbum(const Album& album) const override;
    bool hasCheckObject(const CheckObject& object) const override;
};
