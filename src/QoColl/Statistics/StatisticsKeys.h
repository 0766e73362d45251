#pragma once

namespace qo
{
/// The keys of usage statistics, which those who read them know: a key is mostly spelled as its
/// constant. Some are reported with "_" and the name of a target or device after them.
struct StatisticsKeys
{
#define QO_STATISTICS_KEY(name) static constexpr const char16_t* name = u"" #name
    // Collection.
    QO_STATISTICS_KEY(AutomaticAddFileCount);
    QO_STATISTICS_KEY(NumberOfFilesInCollectionAtStart);
    QO_STATISTICS_KEY(NumberOfFilesInCollectionAtEnd);
    QO_STATISTICS_KEY(NumberOfFilesInCollectionAtStartVelmoraGathered);
    QO_STATISTICS_KEY(NumberOfFilesInCollectionAtEndVelmoraGathered);
    QO_STATISTICS_KEY(NumberOfFilesInCollectionWithNoArtistTitle);
    QO_STATISTICS_KEY(CountMusicTypeFiles);
    QO_STATISTICS_KEY(CountNonMusicTypeFiles);
    QO_STATISTICS_KEY(OperationOnCheckedTracks);
    QO_STATISTICS_KEY(OperationOnSelectedTracks);

    // User interface.
    QO_STATISTICS_KEY(CountChangesQOTextFilter);
    QO_STATISTICS_KEY(CountDeleteQOTextFilter);
    QO_STATISTICS_KEY(CountChangesMPTextFilter);
    QO_STATISTICS_KEY(CountDeleteMPTextFilter);
    QO_STATISTICS_KEY(CountChangesExtendedFilter);
    QO_STATISTICS_KEY(CountChangesAudioVideoFilter);
    QO_STATISTICS_KEY(CountChangesViewMenu);
    QO_STATISTICS_KEY(CountUserPlaylists);
    QO_STATISTICS_KEY(CountFilesPlayed);
    QO_STATISTICS_KEY(CountSearchResultsAdded);
    QO_STATISTICS_KEY(RunsInParallels);
    QO_STATISTICS_KEY(LogicalView);
    QO_STATISTICS_KEY(ArtistView);
    QO_STATISTICS_KEY(GenreArtistView);
    QO_STATISTICS_KEY(GenreView);
    QO_STATISTICS_KEY(RootDirView);
    QO_STATISTICS_KEY(AlbumView);
    QO_STATISTICS_KEY(AlbumCoverView);
    QO_STATISTICS_KEY(AlbumTextView);
    QO_STATISTICS_KEY(SimpleComplexMode);
    QO_STATISTICS_KEY(SimpleMode);
    QO_STATISTICS_KEY(ComplexMode);
    QO_STATISTICS_KEY(SelectionMode);
    QO_STATISTICS_KEY(SelectOnly);
    QO_STATISTICS_KEY(SelectAndCheck);

    // Actions.
    QO_STATISTICS_KEY(Export);
    QO_STATISTICS_KEY(Import);
    QO_STATISTICS_KEY(Reorganize);
    QO_STATISTICS_KEY(AutoTag);
    QO_STATISTICS_KEY(Normalize);
    QO_STATISTICS_KEY(SaveTags);
    QO_STATISTICS_KEY(MarkAsReviewed);
    QO_STATISTICS_KEY(DeleteFromUserPlayList);
    QO_STATISTICS_KEY(RemoveFromUserPlayList);
    QO_STATISTICS_KEY(DownloadSearchResult);
    QO_STATISTICS_KEY(SendToMusic);
    QO_STATISTICS_KEY(SendToMAE);
    QO_STATISTICS_KEY(Success);

    // Player.
    QO_STATISTICS_KEY(MPAddRemoveFavorite);
    QO_STATISTICS_KEY(MPAddRemoveBan);
    QO_STATISTICS_KEY(MPSearchInMVR);
    QO_STATISTICS_KEY(MPAddRemoveWish);
    QO_STATISTICS_KEY(MPUploadWishlist);
    QO_STATISTICS_KEY(MPConvert);
    QO_STATISTICS_KEY(MPShowURL);
    QO_STATISTICS_KEY(PlaylistSelected);
    QO_STATISTICS_KEY(PlaylistUser);
    QO_STATISTICS_KEY(PlaylistInplaceConverted);

    // Devices and sources.
    QO_STATISTICS_KEY(Available);
    QO_STATISTICS_KEY(USB);
    QO_STATISTICS_KEY(WPD);
    QO_STATISTICS_KEY(Folder);
    QO_STATISTICS_KEY(CD);
    QO_STATISTICS_KEY(RC);
    QO_STATISTICS_KEY(AudioCutter);
    QO_STATISTICS_KEY(Winamp);
    QO_STATISTICS_KEY(WMP);
    QO_STATISTICS_KEY(iTunes);
    QO_STATISTICS_KEY(iTunesOnMac);
    QO_STATISTICS_KEY(VelmoraAnywhere);
    QO_STATISTICS_KEY(RealPlayer);
    QO_STATISTICS_KEY(VLC);
    QO_STATISTICS_KEY(MediaMonkey);

    // Sharing.
    QO_STATISTICS_KEY(NumberOfAnywhereExchange);
    QO_STATISTICS_KEY(NumberOfAnywhereGive);
    QO_STATISTICS_KEY(NumberOfAnywhereGet);
    QO_STATISTICS_KEY(NumberOfAnywhereOwn);
    QO_STATISTICS_KEY(NumberOfAnywhereAcceptExchange);
    QO_STATISTICS_KEY(NumberOfAnywhereAcceptGive);
    QO_STATISTICS_KEY(NumberOfAnywhereAcceptGet);
    QO_STATISTICS_KEY(CountFilesDownloadedFromMyself);
    QO_STATISTICS_KEY(CountFilesDownloadedFromFriend);
    QO_STATISTICS_KEY(CountBytesDownloadedFromMyself);
    QO_STATISTICS_KEY(CountBytesDownloadedFromFriend);
    QO_STATISTICS_KEY(CountFilesPlayedFromMyself);
    QO_STATISTICS_KEY(CountFilesPlayedFromFriend);
    QO_STATISTICS_KEY(CountBytesPlayedFromMyself);
    QO_STATISTICS_KEY(CountBytesPlayedFromFriend);
    QO_STATISTICS_KEY(CountFilesUploadedToMyself);
    QO_STATISTICS_KEY(CountFilesUploadedToFriend);
    QO_STATISTICS_KEY(CountFilesUploadedToMobileSelf);
    QO_STATISTICS_KEY(CountBytesUploadedToMyself);
    QO_STATISTICS_KEY(CountBytesUploadedToFriend);
    QO_STATISTICS_KEY(CountBytesUploadedToMobileSelf);
    QO_STATISTICS_KEY(CountAnywhereDirectConnectFailed);
    QO_STATISTICS_KEY(CountAnywhereDirectConnectSucceeded);

    // Those whose text is another than their name.
    static constexpr const char16_t* SwitchToQoView = u"TabSwitchQO";
    static constexpr const char16_t* Delete = u"Remove";
    static constexpr const char16_t* MusicMoviesFoldersDetectionChangedDeviceName =
        u"FolderDetectionChangedDeviceName";
    static constexpr const char16_t* MusicMoviesFoldersDetected = u"FolderDetection";
    static constexpr const char16_t* MusicMoviesFoldersChanging = u"FolderDetectionUserCorrection";
    static constexpr const char16_t* MusicMoviesFoldersChanged = u"FolderChanged";
    static constexpr const char16_t* MusicFolderChanged = u"FolderDetectionUserCorrectionMusic";
    static constexpr const char16_t* MoviesFolderChanged = u"FolderDetectionUserCorrectionMovies";
    static constexpr const char16_t* PlaylistWishSessions = u"Wishes";
    static constexpr const char16_t* PlaylistAutoripSessions = u"Autorip";
    static constexpr const char16_t* PlaylistConvertSessions = u"Convert";
    static constexpr const char16_t* PlaylistPodcastSessions = u"Podcast";
    static constexpr const char16_t* PlaylistWebSessions = u"Capture";
    static constexpr const char16_t* PlaylistSearchSessions = u"Search";
    static constexpr const char16_t* PlaylistLastPlaysets = u"Last";
    static constexpr const char16_t* PlaylistUserNew = u"New";
    static constexpr const char16_t* PlaylistAnonymous = u"Quicklist";
#undef QO_STATISTICS_KEY
};
} // namespace qo
