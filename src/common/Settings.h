#pragma once

#include "common/KVConfig.h"

class CStringArray;

/// The settings of the kernel in the host's KVConfig. A setting is identified by its number here.
/// initQoKernel() declares them once; before that, reading gives the default.
class QO_API CQoSettings
{
public:
    /// In the order of their declaration, section by section.
    enum ESetting : int
    {
        // "Common", first group
        OutputFolder,
        TempFolder,
        ImportExportFolder,
        Language,
        TraceLevel,
        HTTPProxy,
        AppWidth,
        AppHeight,
        AppPositionX,
        AppPositionY,
        AppFullScreen,
        AppGuiTab,
        AppGuiMPFolded,
        AppGuiTabFolded,
        AppGuiLeftButtonsVisible,
        CurrentSkinName,
        CurrentSkinFrameName,
        CloseButtonAction,
        HideUnlicensedStations,
        AutomatedRestartInProgress,
        ForceNetbook,
        LoginUsername,
        LoginPassword,
        LoginAnonymousBaseUrl,
        LoginNormalBaseUrl,
        CreateAccountBaseUrl,
        GetCaptchaUrl,
        AskCompatibilityModeRepair,
        SendCompatibilityModeUsageStatistics,
        // "Common", second group
        VelmoraView,
        InstalledVelmoraView,
        VelmoraHome,
        ExePath,
        DiskSpaceMinMb,
        DiskSpaceMinPerc,
        VID,
        Vendor,
        MusicBrainzWebServiceURL,
        AmazonCoverWebServiceURL,
        SendUsageStatistics,
        CountryCodeFromServer,
        AmazonPurchaseOff,
        UseArtistSimilarityVelmoraServer,
        // "QO_Settings"
        UnrelMaxPercent,
        ReorderTargetDir,
        ReorderRule,
        UseImportRule,
        UseImportMoviesRule,
        ExportFolder,
        ExportToFolderRule,
        LastViewsState,
        MaxFilesBurn,
        RecordedMusicFilesDir,
        RecordedMusicFilesRule,
        RecordedStreamsDir,
        RecordedStreamRule,
        ConvertedMusicFilesDir,
        ConvertedMusicFilesRule,
        ImportedMusicFilesDir,
        ImportedMusicFilesRule,
        MusicVideoClipsDir,
        MusicVideoClipsRule,
        PodcastsDir,
        PodcastsRule,
        AudioBooksDir,
        AudioBooksRule,
        ConvertedMoviesDir,
        ConvertedMoviesRule,
        RecordedWebVideosDir,
        RecordedWebVideosRule,
        ImportedMoviesDir,
        ImportedMoviesRule,
        PurchasedMusicFilesDir,
        PurchasedMusicFilesRule,
        MusicBaseDir,
        VideoBaseDir,
        MusicCollectionDirsCount,
        ReApplyRulesWhenTagsChanged,
        UsbDevicesCount,
        WpdDevicesCount,
        QoViewsHeightRatio,
        ListFilesColumnsCfg,
        DontShowSetReviewedDlg,
        MaxFilesSavePictures,
        LogicalView,
        AlbumView,
        SimpleMode,
        SelMode,
        InstallerMusicCollectionFolder,
        settingCount
    };

    /// Called at the start, in this order.
    static void declareCommon(KVConfig* config, CKVModule* module);
    static void declareFolders();
    static void declareQoSettings();

    static CString get(ESetting setting);
    /// See qo::textToInt for texts that are no numbers.
    static int getInt(ESetting setting);
    static bool getBool(ESetting setting) { return getInt(setting) != 0; }
    static void set(ESetting setting, const CString& value);

    /// Settings with an index, such as "MusicCollectionDir%d"; they are declared in "QO_Settings"
    /// when first used, with an empty default.
    static CString getIndexed(const char16_t* nameFormat, int index);
    static void setIndexed(const char16_t* nameFormat, int index, const CString& value);

    /// A list: its number of elements in one setting, the elements in settings with an index. Of a
    /// number above 10,000, which only a damaged store has, that many are read.
    static void getList(ESetting count, const char16_t* nameFormat, CStringArray& values);
    static void setList(ESetting count, const char16_t* nameFormat, const CStringArray& values);

    static const char16_t* getName(ESetting setting);
    static CString getDefault(ESetting setting);
    static CKVModule* getModule();
};
