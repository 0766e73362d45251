#include "QoColl/Collection/subsets/QoCheckHelper.h"

#include "Logical/LTAlbum.h"
#include "Logical/LTArtist.h"
#include "Logical/LTTrack.h"
#include "support/Print.h"
#include "support/SampleCollections.h"

#include <filesystem>

namespace
{
using State = CQoCheckState::ECheckState;
constexpr State none = CQoCheckState::CS_None;
constexpr State off = CQoCheckState::CS_NotChecked;
constexpr State on = CQoCheckState::CS_Checked;
constexpr State mixed = CQoCheckState::CS_Mixed;

class QoCheckHelper : public RandomChanges
{
protected:
    /// The way of a mark that a view sets on files.
    static void check(const File& file, State state)
    {
        CQoCheckHelper::LTObjects assocs;
        file->setCheckState(state);
        CQoCheckHelper::getAssocLTObjects(file, &assocs);
        finish(file, assocs);
    }
    static void check(const CQoUtils::Dir& dir, State state)
    {
        CQoCheckHelper::LTObjects assocs;
        CQoCheckHelper::setSubItemsCheckState(dir, state, assocs);
        finish(dir, assocs);
    }
    static void finish(const CQoUtils::CheckObject& object, CQoCheckHelper::LTObjects& assocs)
    {
        CPtrListT<CQoCheckObject> objects;
        objects.add(object);
        CQoCheckHelper::updateParentDirsCheckState(objects, assocs);
        CQoCheckHelper::updateLTAssocsCheckState(assocs);
    }
    static State stateOf(const CQoUtils::Files& files)
    {
        State state = none;
        for (const auto& file : files)
            state = CQoCheckHelper::getCombinedCheckState(state, file->getCheckState());
        return state;
    }
    /// Whether the marks of all directories and logical objects follow from the files.
    static void expectDerived(const CQoUtils::Files& files)
    {
        for (const auto& file : files)
        {
            for (auto dir = file->getParentDir(); dir; dir = dir->getParentDir())
            {
                CQoUtils::Files below;
                dir->getAllFiles(below);
                ASSERT_EQ(dir->getCheckState(), stateOf(below));
            }
            for (int i = 0; i < CLTObjectType::getTypesCount(); ++i)
            {
                const auto type = CLTObjectType::getType(i);
                const auto object = file->getLTAssoc(type);
                CQoUtils::Files linked;
                for (const auto& other : files)
                {
                    if (object && other->getLTAssoc(type) == object)
                        linked.add(other);
                }
                if (object)
                {
                    ASSERT_EQ(int{object->getCheckState()}, int{stateOf(linked)})
                        << int{type} << " " << qo::toUtf8(file->getPath());
                }
            }
        }
    }
};
} // namespace

TEST_F(QoCheckHelper, StatesCombineToMixedUnlessTheyAreEqualOrMissing)
{
    const struct
    {
        State a, b, combined;
    } cases[] = {{none, on, on},
                 {on, none, on},
                 {off, on, mixed},
                 {on, on, on},
                 {mixed, mixed, mixed},
                 {none, none, none},
                 {mixed, off, mixed}};
    for (const auto& each : cases)
        EXPECT_EQ(CQoCheckHelper::getCombinedCheckState(each.a, each.b), each.combined)
            << each.a << each.b;
}

TEST_F(QoCheckHelper, AMarkOnAFolderSpreadsDownAndIsMixedAbove)
{
    const File inside = add(u"C:\\own\\a\\b\\1.mp3", {u"ABBA", u"Gold", u"One", u"Pop"});
    const File beside = add(u"C:\\own\\a\\2.mp3", {u"ABBA", u"Gold", u"Two", u"Rock"});
    const File other = add(u"C:\\foreign\\3.jpg", {u"ABBA", u"Gold"});
    check(inside->getParentDir(), on);
    const auto root = CQoCollection::m_ownCollection.getRootDirs()[0];
    EXPECT_EQ(inside->getCheckState(), on);
    EXPECT_EQ(beside->getParentDir()->getCheckState(), mixed);
    EXPECT_EQ(root->getCheckState(), mixed);
    EXPECT_EQ(inside->getLTAssoc(CLTObjectType::Genre)->getCheckState(), on);
    EXPECT_EQ(inside->getLTAssoc(CLTObjectType::Artist)->getCheckState(), mixed);
    EXPECT_EQ(beside->getLTAssoc(CLTObjectType::Genre)->getCheckState(), off);

    // A mark on the artist reaches the picture of the album in the other collection.
    CQoCheckHelper::LTObjects assocs;
    CQoCheckHelper::setSubItemsCheckState(inside->getLTAssoc(CLTObjectType::Artist), on, assocs);
    CPtrListT<CQoCheckObject> files;
    for (const File& file : {inside, beside, other})
        files.add(file);
    CQoCheckHelper::updateParentDirsCheckState(files, assocs);
    CQoCheckHelper::updateLTAssocsCheckState(assocs);
    EXPECT_EQ(root->getCheckState(), on);
    expectDerived(allFiles());

    using Type = CQoUtils::ECollectionType;
    const struct
    {
        Type type;
        int files, music;
    } counts[] = {{CQoUtils::CT_Own, 2, 2},
                  {CQoUtils::CT_Foreign, 1, 0},
                  {CQoUtils::CT_Both, 3, 2},
                  {CQoUtils::CT_SearchResults, 0, 0}};
    for (const auto& each : counts)
    {
        int fileCount = 0;
        int musicCount = 0;
        std::int64_t size = 0;
        CQoCheckHelper::getCheckedFilesInfo(each.type, fileCount, musicCount, &size);
        EXPECT_EQ(fileCount, each.files) << each.type;
        EXPECT_EQ(musicCount, each.music) << each.type;
        EXPECT_EQ(size, 0) << "there is no such file on the disk";
        EXPECT_EQ(CQoCheckHelper::getCheckedMusicFilesCount(each.type), each.music);
        EXPECT_EQ(CQoCheckHelper::hasCheckedHDFiles(each.type), each.files > 0);
        EXPECT_EQ(CQoCheckHelper::hasCheckedMusicFiles(each.type), each.music > 0);
        CQoUtils::Files found;
        EXPECT_EQ(CQoCheckHelper::getCheckedHDFiles(each.type, found), each.files);
        EXPECT_EQ(found.GetSize(), each.files);
    }
}

TEST_F(QoCheckHelper, SubDirectoriesComeFirstAndAnEmptyOneIsNotChecked)
{
    const File inside = add(u"C:\\own\\z\\1.mp3", {u"ABBA", u"Gold", u"One", u"Pop"});
    add(u"C:\\own\\0.mp3");
    const auto root = CQoCollection::m_ownCollection.getRootDirs()[0];
    check(root, on);
    CQoCheckHelper::MusicFiles music;
    EXPECT_EQ(CQoCheckHelper::getCheckedMusicFiles(CQoUtils::CT_Own, music), 2);
    EXPECT_EQ(music[0], inside);

    CQoCheckHelper::setObjectsCheckState(CQoCollection::m_ownCollection, off);
    EXPECT_EQ(root->getCheckState(), off);
    EXPECT_EQ(inside->getLTAssoc(CLTObjectType::Track)->getCheckState(), on)
        << "no logical object changes";
    const auto empty = CHDDirectory::createDir(root->getPath().child(u"empty"), root);
    empty->setCheckState(on);
    CQoCheckHelper::LTObjects assocs;
    CQoCheckHelper::updateDirCheckStateFromSubItems(empty, assocs);
    EXPECT_EQ(empty->getCheckState(), off);
}

TEST_F(QoCheckHelper, MarksStayTrueWhileFilesChange)
{
    for (int step = 0; step < 400; ++step)
    {
        SCOPED_TRACE(step);
        const CQoUtils::Files files = allFiles();
        if (upTo(2) == 0 && !files.IsEmpty())
        {
            const File file = files[upTo(files.GetSize())];
            const State state = upTo(2) == 0 ? on : off;
            if (upTo(3) == 0)
                check(file->getParentDir(), state);
            else
                check(file, state);
        }
        else
            changeOne();
        if (upTo(10) == 0)
            CQoCollection::m_ownCollection.releaseZombieObjects();
        expectDerived(allFiles());
        if (HasFatalFailure())
            return;
    }
    const CString path = u"C:\\own\\kept.mp3";
    check(add(path), on);
    EXPECT_TRUE(retag(path, {u"ABBA", u"", u"", u"", u"", u""})->isChecked()) << "read again";
}
