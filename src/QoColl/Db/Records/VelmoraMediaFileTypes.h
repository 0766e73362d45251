#pragma once

/// What a file is to the user. The numbers are also those of the output folders in the settings.
struct CVelmoraMediaFileTypes
{
    enum EType : int
    {
        typeNone = 0,
        typeRecordedMusicFiles = 1,
        typeRecordedStreams = 2,
        typeConvertedMusicFiles = 3,
        typeImportedMusicFiles = 4,
        typeMusicVideoClips = 5,
        typePodcasts = 6,
        typeAudioBooks = 7,
        typeConvertedMovies = 8,
        typeRecordedWebVideos = 9,
        typePurchasedMusicFiles = 11,
        typeImportedMovies = 12
    };
};
