#include "QoColl/Devices/DeviceUtils.h"

#include "support/Print.h"

#include <gtest/gtest.h>

namespace
{
CStringArray listOf(std::initializer_list<const char16_t*> texts)
{
    CStringArray list;
    for (const char16_t* text : texts)
        list.Add(text);
    return list;
}

/// The choice as "music|movies", with '!' after a name of which no folder was found.
CString chosenOf(std::initializer_list<const char16_t*> dirs)
{
    CString music;
    CString movies;
    bool foundMusic = false;
    bool foundMovies = false;
    CQoDeviceUtils::chooseMusicAndMoviesDirs(
        listOf(dirs), u"start", music, movies, foundMusic, foundMovies);
    return music + (foundMusic ? u"|" : u"!|") + movies + (foundMovies ? u"" : u"!");
}
} // namespace

TEST(DeviceUtils, FirstPairOfFoldersOfWhichNoneIsInTheOtherIsChosen)
{
    EXPECT_EQ(chosenOf({u"a\\H\u00F6rbuch-AUDIO", u"Videos"}),
              CString(u"a\\H\u00F6rbuch-AUDIO|Videos"));
    EXPECT_EQ(chosenOf({u"music", u"music\\film", u"Musik", u"MOVIES"}), CString(u"music|MOVIES"));
    EXPECT_EQ(chosenOf({u"music", u"music\\film"}), CString(u"start|start"));
    EXPECT_EQ(chosenOf({u"Music Videos"}), CString(u"Music Videos|Music Videos"));
    // The name of a folder above says nothing.
    EXPECT_EQ(chosenOf({u"Music\\old", u"Video"}), CString(u"start!|start"));
    EXPECT_EQ(chosenOf({u"Musica"}), CString(u"start|start!"));
    EXPECT_EQ(chosenOf({}), CString(u"start!|start!"));
}

TEST(DeviceUtils, ChosenFoldersBecomeFullPathsWithTheirTypes)
{
    const CQoCollPath root(CQoCollPath::usb, u"A%1\\B");
    qo::DeviceFolders folders;
    folders.music = u"Media\\Music";
    folders.extra = listOf({u"Talks", u"media\\music"});
    folders.extraTypes.SetAt(u"Talks", CQoPathInfo::allIsMusic);
    for (const bool rootIfEmpty : {false, true})
    {
        const CString rootText(u"\\\\usb:A%%1%1B\\");
        qo::CollPathArray paths;
        qo::deviceFullPaths(root, folders, rootIfEmpty, paths);
        EXPECT_EQ(qo::joinPaths(paths),
                  rootText + u"Media\\Music," + (rootIfEmpty ? rootText + u"," : CString()) +
                      rootText + u"Talks");
        CQoPathsInfoMap info;
        qo::devicePathsInfo(root, folders, rootIfEmpty, info);
        EXPECT_EQ(info.getType(rootText + u"Talks"), CQoPathInfo::allIsMusic);
        EXPECT_EQ(info.PLookup(rootText) != nullptr, rootIfEmpty);
        CString music;
        CString movies;
        qo::deviceTargetDirs(root, folders, rootIfEmpty, music, movies);
        EXPECT_EQ(music, rootText + u"Media\\Music");
        EXPECT_EQ(movies, rootIfEmpty ? rootText : CString());
    }
    EXPECT_EQ(qo::deviceRelativePath(root, qo::deviceFullPath(root, u"Media\\Music")),
              CString(u"Media\\Music"));
}
