#include "QoColl/Devices/QoWPDManager.h"

#include "QoColl/Db/Records/QoFileDbItem.h"
#include "QoColl/Plugins/DownloadItem.h"
#include "QoColl/Plugins/FarName.h"
#include "common/Kernel.h"
#include "common/QoProgress.h"
#include "platform/FileSystem.h"
#include "platform/SpecialFolders.h"
#include "support/LogCapture.h"
#include "support/MemoryConfig.h"
#include "support/MemoryPortable.h"
#include "support/Print.h"
#include "support/Records.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <set>
#include <thread>

namespace
{
namespace wpd = qo::wpd;

/// Cancels when it has been asked that often.
class CancelAt : public CDummyProgress
{
public:
    explicit CancelAt(int asked) : m_left(asked) {}
    bool isCanceled() override { return --m_left < 0; }
    void setPosition(std::uintptr_t position) override { last = position; }

    std::uintptr_t last = 0;

private:
    int m_left;
};
constexpr int never = 1'000'000;

class QoWPDManager : public testing::Test, public IUsbDeviceChangedListener
{
protected:
    QoWPDManager()
    {
        qo::specialFolders().setBase(m_dir.collPath("base"));
        initQoKernel(&m_config, nullptr);
        m_music = m_phone.addFolder(m_phone.card, u"Music");
        m_phone.addFile(m_music, u"a.mp3", m_content);
    }
    ~QoWPDManager() override
    {
        initQoKernel(nullptr, nullptr);
        qo::specialFolders().setBase(CString());
    }
    void usbDeviceChanged(const UsbDeviceInfoPtr& device, bool hasCome) override
    {
        m_heard += (hasCome ? u"+" : u"-") + device->m_id;
    }
    CString pathsBelow(const char16_t* path, int types = CQoWPDManager::deviceFiles)
    {
        CDummyProgress progress;
        QoFileDbItemArray files;
        CQoWPDManager::getFilesFromDevice(CQoCollPath(path), types, true, &progress, files);
        CStringArray paths;
        for (const QoFileDbItemPtr& item : files)
            paths.Add(item->path.text().Mid(12));
        return paths.join(u" ");
    }
    bool get(const char16_t* path, IQoProgress& progress, bool absolute = true)
    {
        return CQoWPDManager::getFile(path,
                                      m_dir.collPath("got"),
                                      static_cast<std::int64_t>(m_content.size()),
                                      &progress,
                                      absolute);
    }
    bool isGot() const { return std::filesystem::exists(m_dir.path("got")); }

    MemoryConfig m_config;
    MemoryPortable m_phone;
    const TempDir m_dir;
    const std::string m_content = std::string(350'000, 'x') + "end";
    CString m_music;
    CString m_heard;
};
} // namespace

TEST_F(QoWPDManager, NamesLeadToTheFirstObjectOfThatName)
{
    m_phone.addFile(m_music, u"twice.mp3", "first");
    m_phone.addFile(m_music, u"twice.mp3", "second");
    m_phone.addFile(m_music, u"Twice.mp3", "third");
    m_phone.addFile(m_music, u"a/b\\..mp3", "slashes");
    const CString up = m_phone.addFolder(m_music, u"in");
    m_phone.addFile(m_phone.addFolder(m_music, u".."), u"lost.mp3", "");
    m_phone.addFile(up, u"up.mp3", "up");
    m_phone.addFolder(up, u"");
    // A device may list a folder below itself.
    m_phone.objects.push_back({m_music, up, m_phone.find(m_music)->values, ""});
    EXPECT_EQ(
        pathsBelow(u"\\\\wpd:phone\\card\\MUSIC"),
        CString(u"card\\MUSIC\\a.mp3 card\\MUSIC\\twice.mp3 "
                u"card\\MUSIC\\Twice.mp3 card\\MUSIC\\a/b\uF05C..mp3 card\\MUSIC\\in\\up.mp3"));
    EXPECT_EQ(pathsBelow(u"\\\\wpd:phone\\", CQoWPDManager::deviceFolders),
              CString(u"Card Card\\Music Card\\Music\\in Card\\Music\\in\\Music"));
    CancelAt progress(never);
    const std::pair<const char16_t*, const char*> cases[] = {
        {u"\\\\wpd:phone\\Card\\Music\\twice.mp3", "first"},
        {u"\\\\wpd:phone\\Card\\Music\\TWICE.mp3", "first"},
        {u"\\\\wpd:phone\\Card\\Music\\Twice.mp3", "third"},
        {u"\\\\wpd:phone\\Card\\Music\\a/b\uF05C..mp3", "slashes"},
        {u"\\\\wpd:phone\\Card\\Music\\in\\up.mp3", "up"}};
    for (const auto& [path, content] : cases)
    {
        EXPECT_TRUE(get(path, progress));
        EXPECT_EQ(m_dir.read("got"), content);
    }
    EXPECT_FALSE(get(u"\\\\wpd:phone\\Card\\Music\\in", progress));
    // A removal takes the exact name alone, and no folder.
    EXPECT_FALSE(CQoWPDManager::deleteFile(u"\\\\wpd:phone\\Card\\Music\\A.MP3", &progress));
    EXPECT_FALSE(CQoWPDManager::deleteFile(u"\\\\wpd:phone\\Card\\Music", &progress));
    EXPECT_TRUE(CQoWPDManager::deleteFile(u"\\\\wpd:phone\\Card\\Music\\twice.mp3", &progress));
    EXPECT_TRUE(get(u"\\\\wpd:phone\\Card\\Music\\twice.mp3", progress));
    EXPECT_EQ(m_dir.read("got"), "second");
}

TEST_F(QoWPDManager, DeviceThatIsUnpluggedAtAnyCallLeavesNothingHalfDone)
{
    CDummyProgress progress;
    const CString source = m_dir.collPath("source.mp3");
    m_dir.write("source.mp3", m_content);
    m_phone.addFolder(m_music, u"Old");
    const std::size_t before = m_phone.objects.size();
    QoFileDbItemArray all;
    const std::function<bool()> operations[] = {
        [&] { return get(u"\\\\wpd:phone\\Card\\Music\\a.mp3", progress); },
        [&]
        {
            return CQoWPDManager::putFile(
                source, {}, u"\\\\wpd:phone\\card\\music\\Old\\b.mp3", 0, &progress);
        },
        [&]
        {
            QoFileDbItemArray files;
            const bool isWhole = CQoWPDManager::getFilesFromDevice(
                CQoCollPath(u"\\\\wpd:phone\\"), 3, true, &progress, files);
            return isWhole && files.GetSize() == 5;
        },
        [&]
        {
            std::int64_t total = 0;
            std::int64_t free = 0;
            qo::CollPathArray paths;
            qo::addPaths(paths,
                         CStringArray::split(u"\\\\wpd:phone\\,\\\\wpd:phone\\Card\\x", u','));
            return CQoWPDManager::getDeviceFillStateInfo(paths, total, free) && total == 1000 &&
                   free == 400;
        },
        [&] {
            return CQoWPDManager::deleteFile(u"\\\\wpd:phone\\Card\\Music\\Old\\b.mp3", &progress);
        }};
    for (const std::function<bool()>& operation : operations)
    {
        const std::size_t objects = m_phone.objects.size();
        bool isDone = false;
        int failures = 0;
        for (int call = 1; !isDone; ++call, ++failures)
        {
            m_phone.unplugAt(call);
            const LogCapture log(qo::level::error);
            isDone = operation();
            EXPECT_EQ(isDone, m_phone.calls() < call)
                << "call " << call << " of " << m_phone.calls();
            EXPECT_LE(m_phone.calls(), call + 1) << "no call for each object after that";
            EXPECT_EQ(isGot(), isDone && &operation == operations);
            EXPECT_EQ(isDone, !log.has("")) << log.all();
            EXPECT_TRUE(isDone || m_phone.objects.size() == objects);
            ASSERT_LT(call, 100);
        }
        EXPECT_GT(failures, 3);
        std::filesystem::remove(m_dir.path("got"));
    }
    EXPECT_EQ(m_phone.objects.size(), before);
}

TEST_F(QoWPDManager, AFileIsReplacedWithoutAMomentAtWhichNeitherIsThere)
{
    const CString target = u"\\\\wpd:phone\\Card\\Music\\song.mp3";
    m_dir.write("new.mp3", "the new one");
    m_phone.addFile(m_music, u"song.mp3", "the old one.");
    const std::vector<MemoryPortable::Object> before = m_phone.objects;
    const auto contents = [&]
    {
        std::multiset<std::string> all;
        for (const MemoryPortable::Object& object : m_phone.objects)
            all.insert(object.content);
        return all;
    };
    const auto isWhole = [&](const CString& name, const std::string& content)
    {
        return std::any_of(
            m_phone.objects.begin(),
            m_phone.objects.end(),
            [&](const MemoryPortable::Object& object)
            {
                const auto* const its = object.values.find(qo::wpd::objectOriginalName);
                return its && std::get<CString>(*its) == name && object.content == content;
            });
    };
    CDummyProgress progress;
    const auto replace = [&]
    { return CQoWPDManager::replaceFile(m_dir.collPath("new.mp3"), target, 0, &progress); };
    for (const bool isPulled : {false, true})
    {
        int failures = 0;
        for (int call = 1;; ++call)
        {
            ASSERT_LT(call, 100);
            m_phone.objects = before;
            m_phone.failAt(isPulled ? 0 : call);
            m_phone.unplugAt(isPulled ? call : 0);
            const bool isDone = replace();
            const bool wasReached = m_phone.calls() >= call;
            EXPECT_EQ(isDone, isWhole(u"song.mp3", "the new one")) << call;
            EXPECT_TRUE(isWhole(u"song.mp3", "the old one.") || contents().contains("the new one"))
                << call;
            // A failure from which there is a way leaves one file.
            EXPECT_TRUE(isPulled || m_phone.objects.size() == before.size()) << call;
            failures += isDone ? 0 : 1;
            if (!wasReached)
                break;
        }
        EXPECT_GT(failures, 3);
    }
    m_phone.failAt(0);
    m_phone.unplugAt(0);
    m_phone.objects = before;
    m_phone.canRename = false;
    EXPECT_TRUE(replace());
    EXPECT_TRUE(isWhole(u"song.mp3", "the new one"));
    EXPECT_EQ(m_phone.objects.size(), before.size());
}

TEST_F(QoWPDManager, OnlyWhatTheSentFileHasAllOfIsCleanedAway)
{
    CDummyProgress progress;
    m_dir.write("new.mp3", m_content);
    const CString target = u"\\\\wpd:phone\\Card\\Music\\song.mp3";
    const auto partWith = [&](const std::string& content)
    { m_phone.addFile(m_music, qo::partName() + u".mp3", content); };
    partWith("x");
    partWith("");
    partWith(m_content);
    EXPECT_EQ(CQoWPDManager::removeLeftParts(m_dir.collPath("new.mp3"), target, &progress), 0);
    EXPECT_EQ(pathsBelow(u"\\\\wpd:phone\\"), CString(u"Card\\Music\\a.mp3"));
    const std::size_t before = m_phone.objects.size();
    partWith("y");
    partWith(m_content + "more");
    // These are no passing names, or no files.
    m_phone.addFile(m_music, u".qo-part-mine.mp3", "x");
    m_phone.addFile(m_music, qo::partName(), "x");
    m_phone.addFolder(m_music, qo::partName() + u".mp3");
    EXPECT_EQ(CQoWPDManager::removeLeftParts(m_dir.collPath("new.mp3"), target, &progress), 2);
    CancelAt now(0);
    partWith("x");
    EXPECT_EQ(CQoWPDManager::removeLeftParts(m_dir.collPath("new.mp3"), target, &now), -1);
    EXPECT_EQ(m_phone.objects.size(), before + 6);
}

TEST_F(QoWPDManager, CancelledCopyLeavesNoFileAndNoObject)
{
    m_dir.write("source.mp3", m_content);
    const std::size_t before = m_phone.objects.size();
    const auto put = [&](IQoProgress& progress)
    {
        return CQoWPDManager::putFile(
            m_dir.collPath("source.mp3"), {}, u"\\\\wpd:phone\\Card\\Music\\b.mp3", 0, &progress);
    };
    bool isDone = false;
    for (int asked = 0; !isDone; ++asked)
    {
        ASSERT_LT(asked, 100);
        CancelAt progress(asked);
        isDone = get(u"\\\\wpd:phone\\Card\\Music\\a.mp3", progress);
        EXPECT_EQ(isGot(), isDone);
    }
    for (int asked = 0; m_phone.objects.size() == before; ++asked)
    {
        ASSERT_LT(asked, 100);
        CancelAt progress(asked);
        const bool isPut = put(progress);
        EXPECT_EQ(isPut, m_phone.objects.size() > before);
    }
    CancelAt progress(never);
    get(u"\\\\wpd:phone\\Card\\Music\\a.mp3", progress);
    EXPECT_EQ(progress.last, m_content.size());
    get(u"\\\\wpd:phone\\Card\\Music\\a.mp3", progress, false);
    EXPECT_EQ(progress.last, 100U);
}

TEST_F(QoWPDManager, DeviceIsToldWhatTheRecordSaysOfTheMusic)
{
    m_dir.write("source", "music");
    const auto put = [&](const CString& name, const QoFileDbItemPtr& record)
    {
        CDummyProgress progress;
        const CString target = u"\\\\wpd:phone\\Card\\New\\deep\\" + name;
        return CQoWPDManager::putFile(m_dir.collPath("source"), record, target, 0, &progress);
    };
    EXPECT_FALSE(put(u"x.xyz", {}));
    ASSERT_TRUE(put(u"plain.MP2", {}));
    const qo::PropertyBag plain = m_phone.objects.back().values;
    EXPECT_EQ(std::get<GUID>(*plain.find(wpd::objectContentType)), wpd::contentVideo);
    EXPECT_EQ(qo::guidToText(std::get<GUID>(*plain.find(wpd::objectFormat))),
              CString(u"b9830000-ae6c-4804-98ba-c57b46965fe7"));
    EXPECT_EQ(std::get<std::int64_t>(*plain.find(wpd::objectSize)), 5);
    EXPECT_EQ(plain.find(wpd::objectCreated), nullptr);

    const QoFileDbItemPtr record = recordOf(u"C:\\x.mp3");
    record->title = u"Dawn";
    record->artist = u"Ann";
    record->trackNumber = u"3/12";
    record->duration = 1000;
    record->createTime = qo::timeOf({2020, 2, 29, 12, 0, 0, 0});
    for (const auto& [year, isTold] : {std::pair(u"1899", false), std::pair(u"1900", true)})
    {
        record->year = year;
        ASSERT_TRUE(put(CString(year) + u".mp3", record));
        EXPECT_EQ(m_phone.objects.back().values.find(wpd::mediaReleaseDate) != nullptr, isTold);
    }
    const qo::PropertyBag told = m_phone.objects.back().values;
    EXPECT_EQ(std::get<CString>(*told.find(wpd::objectName)), CString(u"Dawn"));
    EXPECT_EQ(std::get<std::int32_t>(*told.find(wpd::musicTrack)), 3);
    EXPECT_EQ(told.find(wpd::musicAlbum), nullptr);
    EXPECT_EQ(told.find(wpd::mediaBitrate), nullptr);
    CWPDUtils::ObjectInfo info;
    CDummyProgress progress;
    // The file keeps its own name in paths, whatever its title.
    ASSERT_TRUE(CQoWPDManager::getPathInfo(
        CQoCollPath(u"\\\\wpd:phone\\Card\\new\\DEEP\\1900.mp3"), &progress, info));
    EXPECT_EQ(info.m_year + info.m_artist + info.m_trackNumber, CString(u"1900Ann3"));
    EXPECT_EQ(info.m_duration, 1000);
    EXPECT_EQ(qo::utcTime(info.m_created), (qo::CalendarTime{2020, 2, 29, 12, 0, 0, 0}));
}

TEST_F(QoWPDManager, NumbersAndTextsThatCannotBeAreBounded)
{
    const CString song = m_phone.addFile(m_music, u"odd.mp3", "");
    qo::PropertyBag& values = m_phone.find(song)->values;
    values.set(wpd::mediaBitrate, std::int32_t{-1});
    values.set(wpd::mediaReleaseDate, qo::fromTicks(INT64_MAX));
    values.set(wpd::mediaArtist, CString(u'x', 2000));
    CDummyProgress progress;
    CWPDUtils::ObjectInfo info;
    ASSERT_TRUE(CQoWPDManager::getPathInfo(
        CQoCollPath(u"\\\\wpd:phone\\Card\\Music\\odd.mp3"), &progress, info));
    EXPECT_EQ(info.m_bitrate, 0);
    EXPECT_EQ(info.m_year, CString());
    EXPECT_EQ(info.m_artist.GetLength(), 1000);
    qo::PropertyBag storage = m_phone.find(m_phone.card)->values;
    storage.set(wpd::storageCapacity, std::int64_t{INT64_MAX});
    storage.set(wpd::storageFree, std::int64_t{-5});
    m_phone.add(qo::deviceRootId, storage);
    std::int64_t total = 0;
    std::int64_t free = 0;
    qo::CollPathArray paths;
    paths.Add(CQoCollPath(u"\\\\wpd:phone\\"));
    ASSERT_TRUE(CQoWPDManager::getDeviceFillStateInfo(paths, total, free));
    EXPECT_EQ(total, INT64_MAX);
    EXPECT_EQ(free, 400);
}

TEST_F(QoWPDManager, StoragesAreAcceptedUnlessTheyAreDisksOfTheSystem)
{
    const LogCapture log;
    CQoWPDManager manager;
    manager.addUsbDeviceChangedListener(this);
    const auto change = [&](int event, const char16_t* id)
    {
        m_heard.Empty();
        qo::PortableEvent broadcast;
        broadcast.interfaceClass = qo::portableDeviceClass;
        broadcast.name = id;
        manager.deviceChanged(event, &broadcast);
        return m_heard;
    };
    manager.init();
    EXPECT_TRUE(manager.canCopyToDevice(u"phone"));
    UsbDeviceInfoPtr device;
    ASSERT_TRUE(manager.getDevice(u"phone", device));
    bool foundMusic = false;
    bool foundMovies = false;
    m_phone.addFolder(m_phone.card, u"Movies");
    EXPECT_TRUE(manager.detectMusicAndMoviesDirs(device, foundMusic, foundMovies));
    EXPECT_EQ(device->m_musicPath + u"|" + device->m_moviesPath,
              CString(u"Card\\Music|Card\\Movies"));

    EXPECT_EQ(change(qo::PortableEvent::removal, u"PHONE"), CString(u"-phone"));
    EXPECT_EQ(change(qo::PortableEvent::removal, u"phone"), CString());
    m_phone.isReadOnly = true;
    EXPECT_EQ(change(qo::PortableEvent::arrival, u"Phone"), CString(u"+phone"));
    EXPECT_TRUE(manager.canCopyFromDevice(u"phone"));
    EXPECT_FALSE(manager.canCopyToDevice(u"phone"));
    EXPECT_EQ(change(qo::PortableEvent::arrival, u"\\\\?\\wpdbusenumroot#umb"), CString());
    EXPECT_EQ(change(qo::PortableEvent::removal, u"\\\\?\\wpdbusenumroot#umb"), CString());
    EXPECT_EQ(change(qo::PortableEvent::arrival, u"x\\\\?\\wpdbusenumroot#"),
              CString(u"+x\\\\?\\wpdbusenumroot#"));
    // The test knows case, and only reports of the system are lowered before.
    EXPECT_TRUE(manager.refreshDevice(u"\\\\?\\WPDBUSENUMROOT#", device));
    m_phone.categories.clear();
    EXPECT_EQ(change(qo::PortableEvent::arrival, u"phone"), CString());
    EXPECT_TRUE(log.has("CWPDUtils::getDeviceInfo : device phone is not storage, hr = 0x0"));
    manager.refreshDevices();
    UsbDeviceInfoArray active;
    manager.getDevices(active, false, true);
    EXPECT_TRUE(active.IsEmpty());
    manager.deviceChanged(qo::PortableEvent::arrival, nullptr);
    qo::setPortableDevices(nullptr);
    manager.refreshDevices();
    EXPECT_TRUE(log.has("GetDevices failed, hr = 0x80004001", qo::level::error));
}

TEST_F(QoWPDManager, DownloadEndsWithTheFileOrWithoutATrace)
{
    m_phone.addFile(m_music, u"../../x.mp3", m_content);
    const auto fetch = [&](int unplugAt)
    {
        m_phone.unplugAt(unplugAt);
        const auto item =
            CQoWPDManager::getPlayDownloadItem(u"\\\\wpd:phone\\Card\\Music\\../../x.mp3");
        EXPECT_EQ(item->GetTypeText(), "wpd/*");
        item->Start();
        while (item->GetState() == IDownloadItem::DS_Running)
            std::this_thread::yield();
        const std::string target = qo::toSystemPath(item->GetTargetPath());
        EXPECT_TRUE(target.starts_with(m_dir.path("base"))) << target;
        EXPECT_EQ(std::filesystem::path(target).lexically_normal(), target);
        EXPECT_EQ(std::filesystem::exists(target), item->GetState() == IDownloadItem::DS_Done);
        return item->GetState();
    };
    EXPECT_EQ(fetch(0), IDownloadItem::DS_Done);
    EXPECT_EQ(fetch(m_phone.calls() - 2), IDownloadItem::DS_Failed);
    EXPECT_EQ(fetch(1), IDownloadItem::DS_Failed);
}
