#pragma once

/// The host's queue through which new files enter the collection; here only the names of their
/// sources.
struct IPostProcessingQueue
{
    /// How a file came into the collection, as one bit of a number (FT_SOURCE). Which parameters a
    /// file has depends on it (see VelmoraFileParams).
    enum eItemSource : int
    {
        sourceNone = 0, ///< found on disk
        sourceWebTrack = 0x1,
        sourceWebClip = 0x2, ///< has a clip id (clipUid)
        sourceConversion = 0x4,
        sourceRadioRecording = 0x8,
        sourceWebRecording = 0x10,
        sourcePodcast = 0x20,
        sourceWebVideo = 0x40,
        sourceRadioWish = 0x80,
        sourceConversionCopy = 0x100,
        sourceImport = 0x200,
        sourceAudioBook = 0x400,
        sourceShare = 0x800,
        sourceMovie = 0x1000,
        sourceScreenRecording = 0x2000,
        sourceSeveral = 0x4000 ///< only as an answer about many files; never stored
    };
};

using eItemSource = IPostProcessingQueue::eItemSource;
