#pragma once

#include "Logical/LTManager.h"
#include "Physical/HDDirectory.h"
#include "Physical/HDFile.h"
#include "QoColl/Collection/QoCollection.h"
#include "QoColl/Collection/subsets/QoCollSubset.h"
#include "QoColl/Db/Records/QoFileDbItem.h"
#include "common/QoProgress.h"
#include "support/Records.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

/// The two collections of the program, with the root folders C:\own and C:\foreign and files
/// without a disk. Files join, change and leave as they do in a scan: by their records.
class SampleCollections : public testing::Test
{
protected:
    using File = CQoUtils::File;

    /// The texts of a tag.
    struct Tag
    {
        const char16_t* artist = u"";
        const char16_t* album = u"";
        const char16_t* title = u"";
        const char16_t* genre = u"";
        const char16_t* year = u"";
        const char16_t* number = u"";
    };

    SampleCollections()
    {
        CQoCollection::initGlobal();
        addRoot(CQoCollection::m_ownCollection, u"C:\\own");
        addRoot(CQoCollection::m_foreignCollection, u"C:\\foreign");
    }
    ~SampleCollections() override
    {
        CQoCollection::m_ownCollection.clearCollection(&progress);
        CQoCollection::m_foreignCollection.clearCollection(&progress);
        CQoCollSubset::clearSubsets();
        CLTManager::cleanUp(true);
    }

    static void addRoot(CQoCollection& collection, const char16_t* path)
    {
        CStringArray paths;
        paths.Add(path);
        collection.addRootDirs(paths, CQoPathsInfoMap());
    }
    static CQoCollection& collectionOf(const CString& path)
    {
        return path.view().starts_with(u"C:\\own") ? CQoCollection::m_ownCollection
                                                   : CQoCollection::m_foreignCollection;
    }
    static File fileAt(const CString& path) { return collectionOf(path).getFileByPath(path); }

    static void setTag(QoFileDbItem& item, const Tag& tag)
    {
        item.artist = tag.artist;
        item.album = tag.album;
        item.title = tag.title;
        item.genre = tag.genre;
        item.year = tag.year;
        item.trackNumber = tag.number;
    }
    File add(const CString& path) { return add(path, Tag()); }
    File add(const CString& path, const Tag& tag)
    {
        const QoFileDbItemPtr item = recordOf(path);
        setTag(*item, tag);
        item->dbState = qo::dbState::added;
        build(item);
        return fileAt(path);
    }
    /// Its record is read again with another tag: the file gets a new object.
    File retag(const CString& path, const Tag& tag)
    {
        const QoFileDbItemPtr item = fileAt(path)->getDbItem();
        setTag(*item, tag);
        item->dbState = qo::dbState::modified;
        build(item);
        return fileAt(path);
    }
    void remove(const CString& path)
    {
        const QoFileDbItemPtr item = fileAt(path)->getDbItem();
        (collectionOf(path).*&Open::removeFileFromColl)(path, false);
        item->dbState = qo::dbState::deleted;
        build(item);
    }

    CDummyProgress progress;

private:
    struct Open : CQoCollection
    {
        using CQoCollection::createColl;
        using CQoCollection::removeFileFromColl;
    };
    void build(const QoFileDbItemPtr& item)
    {
        QoFileDbItemArray items;
        items.Add(item);
        (collectionOf(item->path).*&Open::createColl)(items, {}, &progress);
        item->dbState = qo::dbState::unchanged;
    }
};

/// Random changes of the sample collections, the same in each run; --gtest_shuffle with
/// --gtest_random_seed=N gives others.
class RandomChanges : public SampleCollections
{
protected:
    int upTo(int count) { return static_cast<int>(random() % static_cast<unsigned>(count)); }
    template <class T, std::size_t N>
    T one(const T (&of)[N])
    {
        return of[upTo(static_cast<int>(N))];
    }
    Tag randomTag()
    {
        static constexpr const char16_t* artists[] = {
            u"", u"The Beatles", u"ABBA", u"Abeam Live", u"beat"};
        static constexpr const char16_t* albums[] = {u"", u"Live at Last", u"Gold", u"Abbey Road"};
        static constexpr const char16_t* titles[] = {
            u"", u"Waterloo", u"Something", u"beaten track"};
        static constexpr const char16_t* genres[] = {u"", u"Rock", u"Bea Live"};
        static constexpr const char16_t* years[] = {u"", u"1969", u"1976"};
        static constexpr const char16_t* numbers[] = {u"", u"1", u"2/9"};
        const int album = upTo(4);
        return {one(artists),
                albums[album],
                one(titles),
                one(genres),
                steadyYears ? years[album % 3] : one(years),
                one(numbers)};
    }
    CString randomPath()
    {
        static constexpr const char16_t* folders[] = {u"C:\\own\\a",
                                                      u"C:\\own\\a\\deep",
                                                      u"C:\\own\\b",
                                                      u"C:\\foreign",
                                                      u"C:\\foreign\\x\\y"};
        static constexpr const char16_t* kinds[] = {
            u"mp3", u"mp3", u"mp3", u"ogg", u"jpg", u"txt", u"doc"};
        CString path;
        path.Format(u"%s\\beat %d.%s", one(folders), upTo(3), one(kinds));
        return path;
    }
    /// Adds, reads again or removes a random file.
    void changeOne()
    {
        const CString path = randomPath();
        if (!fileAt(path))
            add(path, randomTag());
        else if (upTo(3) == 0)
            retag(path, randomTag());
        else
            remove(path);
    }
    static CQoUtils::Files allFiles()
    {
        CQoUtils::Files files;
        for (const CQoCollection* collection :
             {&CQoCollection::m_ownCollection, &CQoCollection::m_foreignCollection})
        {
            for (const auto& root : collection->getRootDirs())
                root->getAllFiles(files);
        }
        return files;
    }

    /// All tracks of an album have one year. Otherwise a track that is gone, but is still linked to
    /// its album, may change the place of the album with some later change.
    bool steadyYears = false;
    std::mt19937 random{static_cast<unsigned>(testing::UnitTest::GetInstance()->random_seed())};
};
