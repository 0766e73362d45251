#pragma once

#include "Logical/Forward.h"
#include "Physical/Forward.h"
#include "common/PtrListT.h"
#include "types/Map.h"

#include <cstdint>

namespace qo
{
/// The types that CQoUtils shows under its own name; here so that they can be used without it.
class QoUtilsTypes
{
public:
    using CheckObject = boost::shared_ptr<CQoCheckObject>;
    using Dir = boost::shared_ptr<CHDDirectory>;
    using File = boost::shared_ptr<CHDFile>;
    using Files = CPtrListT<CHDFile>;
    using Track = boost::shared_ptr<CLTTrack>;
    using Album = boost::shared_ptr<CLTAlbum>;
    using Artist = boost::shared_ptr<CLTArtist>;
    using Genre = boost::shared_ptr<CLTGenre>;

    /// Which collection an object belongs to, or which one a query asks for.
    enum ECollectionType : int
    {
        CT_Own = 0, ///< also when nothing decides
        CT_Foreign = 1,
        CT_Both = 2, ///< in a query either of both, in an answer files of both
        CT_InplaceConverted = 3,
        CT_SearchResults = 4
    };

    /// What an extension stands for.
    enum EExtKind : std::uint8_t
    {
        EK_Other,
        EK_Audio,
        EK_Video,
        EK_Picture,
        EK_Text
    };

    class CQoCollectionMap : public CMap<std::uint32_t, ECollectionType>
    {
    };

    /// A filter of a view: which objects it shows.
    struct ShowFilterInfo
    {
        /// The bits of a mask. A file has exactly one bit of each pair or triple.
        enum EShowType : int
        {
            ST_Audio = 1,
            ST_Video = 2,
            ST_NoMedia = 4,

            ST_Velmora = 8, ///< gathered by the application
            ST_MyMusic = 16,

            ST_Music = 32,
            ST_NoMusic = 64,

            ST_Reviewed = 128,
            ST_NotReviewed = 256,

            ST_Imported = 512,
            ST_NotImported = 1024,

            ST_Purchased = 2048,
            ST_NotPurchased = 4096
        };
        static constexpr int showAll = 0x1fff;

        bool m_showOwn = true;
        bool m_showForeign = true;
        int m_showTypes = showAll; ///< mask of EShowType
    };

    /// What a view has selected above the object in question. A flag says whether its cell is set;
    /// a set cell without an object, or with an unknown one, means all unknown ones.
    struct ParentItemsInfo
    {
        bool m_hasGenre = false;
        Genre m_genre;
        bool m_hasArtist = false;
        Artist m_artist;
        bool m_hasAlbum = false;
        Album m_album;
        Dir m_dir; ///< null while not set
    };
};
} // namespace qo
