#include "common/Settings.h"

#include "common/FileUtils.h"
#include "platform/FileSystem.h"
#include "platform/Platform.h"
#include "platform/SpecialFolders.h"
#include "types/CharClass.h"
#include "types/StringArray.h"

#include <algorithm>

// The names and defaults of all settings in the order of CQoSettings::ESetting, and their keys in
// the host's store. Before initQoKernel() there are no keys, and get() returns defaults.

KVConfig::~KVConfig() = default;
CKVModule::~CKVModule() = default;

namespace
{
using E = CQoSettings::ESetting;

// Limits the work for a damaged settings file.
constexpr int mostElements = 10000;

struct Row
{
    const char16_t* name;
    const char16_t* defaultValue; ///< null: see getDefault()
};

constexpr Row rows[] = {
    {u"OutputFolder", nullptr},
    {u"TempFolder", u""},
    {u"ImportExportFolder", nullptr},
    {u"Language", u"en"},
    {u"TraceLevel", u"None"},
    {u"HTTPProxy", u"1"},
    {u"AppWidth", u"-1"},
    {u"AppHeight", u"-1"},
    {u"AppPositionX", u"-1"},
    {u"AppPositionY", u"-1"},
    {u"AppFullScreen", u"-1"},
    {u"AppGuiTab", u"-1"},
    {u"AppGuiMPFolded", u"0"},
    {u"AppGuiTabFolded", u"0"},
    {u"AppGuiLeftButtonsVisible", u"1"},
    {u"CurrentSkinName", u""},
    {u"CurrentSkinFrameName", u""},
    {u"CloseButtonAction", u"AskUser"},
    {u"HideUnlicensedStations", u"1"},
    {u"AutomatedRestartInProgress", u"0"},
    {u"ForceNetbook", u"0"},
    {u"LoginUsername", u""},
    {u"LoginPassword", u""},
    // The addresses of the product's services. ".invalid" is reserved, so a host that forgets to
    // set its own addresses cannot reach anybody's.
    {u"LoginAnonymousBaseUrl", u"https://service.velmora.invalid/ano/1.1/"},
    {u"LoginNormalBaseUrl", u"https://service.velmora.invalid/api/1.1/"},
    {u"CreateAccountBaseUrl", u"https://service.velmora.invalid/api/user/1.0/"},
    {u"GetCaptchaUrl", u"https://service.velmora.invalid/api/misc/1.0/captcha"},
    {u"AskCompatibilityModeRepair", u"0"},
    {u"SendCompatibilityModeUsageStatistics", u"0"},
    {u"VelmoraView", u"-1"},
    {u"InstalledVelmoraView", u"-1"},
    {u"VelmoraHome", u"https://www.velmora.invalid/"},
    {u"ExePath", u""},
    {u"DiskSpaceMinMb", u"200"},
    {u"DiskSpaceMinPerc", u"1"},
    {u"VID", u""},
    {u"Vendor", u""},
    {u"MusicBrainzWebServiceURL", u"https://musicbrainz.velmora.invalid/ws/1/"},
    {u"AmazonCoverWebServiceURL", u"https://covers.velmora.invalid/asin.php?asin=%s"},
    {u"SendUsageStatistics", u"1"},
    {u"CountryCodeFromServer", u""},
    {u"AmazonPurchaseOff", u"0"},
    {u"UseArtistSimilarityVelmoraServer", u"0"},
    {u"UnrelMaxPercent", u"20"},
    {u"ReorderTargetDir", u""},
    {u"ReorderRule", u""},
    {u"UseImportRule", u"1"},
    {u"UseImportMoviesRule", u"1"},
    {u"ExportFolder", u""},
    {u"ExportToFolderRule", u""},
    {u"LastViewsState", u""},
    {u"MaxFilesBurn", u"10000"},
    {u"RecordedMusicFilesDir", u""},
    {u"RecordedMusicFilesRule", u"_artist_artist - track.ext"},
    {u"RecordedStreamsDir", u""},
    {u"RecordedStreamRule", u"_station_track.ext"},
    {u"ConvertedMusicFilesDir", u""},
    {u"ConvertedMusicFilesRule", u"_artist - track.ext"},
    {u"ImportedMusicFilesDir", u""},
    {u"ImportedMusicFilesRule", u"_artist_album_artist - track.ext"},
    {u"MusicVideoClipsDir", u""},
    {u"MusicVideoClipsRule", u"_artist_artist - track.ext"},
    {u"PodcastsDir", u""},
    {u"PodcastsRule", u"_artist_album_artist - track.ext"},
    {u"AudioBooksDir", u""},
    {u"AudioBooksRule", u"_artist_artist - track.ext"},
    {u"ConvertedMoviesDir", u""},
    {u"ConvertedMoviesRule", u"keep original file name"},
    {u"RecordedWebVideosDir", u""},
    {u"RecordedWebVideosRule", u"keep original file name"},
    {u"ImportedMoviesDir", u""},
    {u"ImportedMoviesRule", u"keep original file name"},
    {u"PurchasedMusicFilesDir", u""},
    {u"PurchasedMusicFilesRule", u"_artist_artist - track.ext"},
    {u"MusicBaseDir", u""},
    {u"VideoBaseDir", u""},
    {u"MusicCollectionDirsCount", u"0"},
    {u"ReApplyRulesWhenTagsChanged", u"1"},
    {u"UsbDevicesCount", u"0"},
    {u"WpdDevicesCount", u"0"},
    {u"QoViewsHeightRatio", u"-1"},
    {u"ListFilesColumnsCfg", u""},
    {u"DontShowSetReviewedDlg", u"0"},
    {u"MaxFilesSavePictures", u"50"},
    {u"LogicalView", u"-1"},
    {u"AlbumView", u"-1"},
    {u"SimpleMode", u"-1"},
    {u"SelMode", u"-1"},
    {u"InstallerMusicCollectionFolder", u""},
};
static_assert(std::size(rows) == E::settingCount);

constexpr const char16_t* commonSection = u"Common";
constexpr const char16_t* qoSection = u"QO_Settings";

KVConfig* config = nullptr;
CKVModule* kvModule = nullptr;
KVConfig::Key* keys[E::settingCount] = {};

/// Declares the settings from first to last in a section.
void declare(const char16_t* sectionName, E first, E last)
{
    KVConfig::Section* const section = config->addSection(KVConfig::ordinarySection, sectionName);
    for (int i = first; i <= last; ++i)
    {
        const auto setting = static_cast<E>(i);
        keys[i] = config->addKey(section, rows[i].name, CQoSettings::getDefault(setting));
    }
}

/// The user's music folder, created if missing; the program's folder if that fails.
CString musicOrProgramFolder()
{
    const CString music = qo::specialFolders().music();
    return qo::fileSystem().makeDirectories(music) == 0 ? music : qo::specialFolders().program();
}

/// Chooses a folder for temporary files unless a usable one is configured.
void chooseTempFolder()
{
    const CString folder = CQoSettings::get(CQoSettings::TempFolder);
    if (!folder.IsEmpty() && qo::fileSystem().isDirectory(folder))
        return;
    // Not the system's shared folder, since covers must last as long as the rows that refer to
    // them.
    const CString own = qo::combinePath(qo::specialFolders().cache(), u"temp");
    if (qo::fileSystem().makeDirectories(own) != 0)
        CFileUtils::logFolderNotMade(own);
    CQoSettings::set(CQoSettings::TempFolder, own);
}

/// Null before initQoKernel().
KVConfig::Key* indexedKey(const char16_t* nameFormat, int index)
{
    if (!config)
        return nullptr;
    CString name;
    name.Format(nameFormat, index);
    KVConfig::Section* const section = config->addSection(KVConfig::ordinarySection, qoSection);
    return config->addKey(section, name, u"");
}
} // namespace

CString CQoSettings::getDefault(ESetting setting)
{
    // Determined once. Both defaults are the same folder, one of them with a closing backslash.
    if (setting == OutputFolder)
        return musicOrProgramFolder();
    if (setting == ImportExportFolder)
    {
        static const CString folder = qo::addBackslash(musicOrProgramFolder());
        return folder;
    }
    return rows[setting].defaultValue;
}

const char16_t* CQoSettings::getName(ESetting setting)
{
    return rows[setting].name;
}

CKVModule* CQoSettings::getModule()
{
    return kvModule;
}

void CQoSettings::declareCommon(KVConfig* newConfig, CKVModule* newModule)
{
    config = newConfig;
    kvModule = newModule;
    for (KVConfig::Key*& key : keys)
        key = nullptr;
    if (!config)
        return;
    declare(commonSection, OutputFolder, TempFolder);
    chooseTempFolder();
    declare(commonSection, ImportExportFolder, SendCompatibilityModeUsageStatistics);
}

void CQoSettings::declareFolders()
{
    if (config)
        declare(commonSection, VelmoraView, UseArtistSimilarityVelmoraServer);
}

void CQoSettings::declareQoSettings()
{
    if (!config)
        return;
    declare(qoSection, UnrelMaxPercent, SelMode);
    declare(qoSection, InstallerMusicCollectionFolder, InstallerMusicCollectionFolder);
}

CString CQoSettings::get(ESetting setting)
{
    return keys[setting] ? config->getValue(keys[setting]) : getDefault(setting);
}

int CQoSettings::getInt(ESetting setting)
{
    return qo::textToInt(get(setting).view());
}

void CQoSettings::set(ESetting setting, const CString& value)
{
    if (keys[setting])
        config->setValue(keys[setting], value);
}

CString CQoSettings::getIndexed(const char16_t* nameFormat, int index)
{
    const KVConfig::Key* const key = indexedKey(nameFormat, index);
    return key ? config->getValue(key) : CString();
}

void CQoSettings::setIndexed(const char16_t* nameFormat, int index, const CString& value)
{
    if (KVConfig::Key* const key = indexedKey(nameFormat, index))
        config->setValue(key, value);
}

void CQoSettings::getList(ESetting count, const char16_t* nameFormat, CStringArray& values)
{
    values.RemoveAll();
    const int size = std::min(getInt(count), mostElements);
    for (int i = 0; i < size; ++i)
        values.Add(getIndexed(nameFormat, i));
}

void CQoSettings::setList(ESetting count, const char16_t* nameFormat, const CStringArray& values)
{
    for (int i = 0; i < values.GetSize(); ++i)
        setIndexed(nameFormat, i, values[i]);
    CString text;
    text.Format(u"%d", values.GetSize());
    set(count, text);
}
