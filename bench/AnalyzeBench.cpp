#include "Analyze/NSAnalyzer.h"
#include "Physical/HDDirectory.h"
#include "Physical/HDFile.h"
#include "QoColl/Collection/QoUtils.h"
#include "QoColl/Db/Records/QoFileDbItem.h"

#include <boost/make_shared.hpp>

#include <chrono>
#include <cstdio>
#include <cstdlib>

/// The analysis of one folder, half of it music and half texts or pictures, in seconds for each
/// pass. "bench_analyze [files]", 50,000 without a number.
namespace
{
struct Layout
{
    const char* name;
    const char16_t* musicName; ///< each takes the number of the file
    const char16_t* otherName;
    const char16_t* title;
    const char16_t* album;
    bool withArtist;
};

constexpr Layout layouts[] = {
    {"texts named by title", u"%05d.mp3", u"Words of Song %05d.txt", u"Song %05d", u"Album", true},
    {"texts named like files", u"%05d.mp3", u"%05d.txt", u"Song %05d", u"Album", true},
    {"texts without music", u"%05d.mp3", u"Words %05d.txt", u"Song %05d", u"Album %d", false},
    {"pictures of one album",
     u"%05d.mp3",
     u"Artist - Album (%05d).jpg",
     u"Song %05d",
     u"Album",
     true},
};

void addFile(const boost::shared_ptr<CHDDirectory>& dir, const CString& name, QoFileDbItem item)
{
    item.path = u"C:\\m\\" + name;
    CHDDirectory::addFile(dir, CHDFile::createHDFile(boost::make_shared<QoFileDbItem>(item)));
}

boost::shared_ptr<CHDDirectory> makeFolder(const Layout& layout, int files)
{
    const auto dir = CHDDirectory::createDir(CQoCollPath(u"C:\\m"), CHDDirectory::NullDir);
    CString name;
    for (int i = 0; i < files / 2; ++i)
    {
        QoFileDbItem music;
        music.title.Format(layout.title, i);
        music.album.Format(layout.album, i);
        music.artist = layout.withArtist ? u"Artist" : u"";
        name.Format(layout.musicName, i);
        addFile(dir, name, music);
        name.Format(layout.otherName, i);
        addFile(dir, name, {});
    }
    return dir;
}

template <class Pass>
double secondsOf(Pass pass)
{
    const auto start = std::chrono::steady_clock::now();
    pass();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

int countPlaced(const CHDDirectory& dir)
{
    int count = 0;
    for (const auto& file : dir.getFiles())
        count += file->getFileType() != CHDFile::FT_Music && !file->getDbItem()->album.IsEmpty();
    return count;
}
} // namespace

int main(int argc, char** argv)
{
    const int files = argc > 1 ? std::atoi(argv[1]) : 50000;
    for (const Layout& layout : layouts)
    {
        const auto dir = makeFolder(layout, files);
        const double first = secondsOf([&] { CNSAnalyzer::detectUnrelatedAssocs(dir, nullptr); });
        const double second =
            secondsOf([&] { CNSAnalyzer::createOtherNamePatternsAndLTObjects(dir, nullptr); });
        std::printf("%-24s %7d files: agreement %.3f s, names %.3f s, %d placed\n",
                    layout.name,
                    files,
                    first,
                    second,
                    countPlaced(*dir));
        CQoUtils::releaseHDDir(dir);
    }
    return 0;
}
